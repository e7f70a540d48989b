#include <fakemodule.h>
#include <simulatorfixtures.h>

#include <frontend.h>
#include <logview.h>
#include <windowtexts.h>

#include <deliverysealing.h>
#include <fixturefiles.h>
#include <fulldisk.h>
#include <modaldriver.h>
#include <programfolder.h>
#include <reasons.h>
#include <sealfixtures.h>
#include <widgettestmain.h>

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>

namespace {

Options optionsFor(const FixtureFolder& folder)
{
    Options options;
    options.stateDir = folder.path("state");
    options.pluginFile = QStringLiteral(FAKE_MODULE);
    options.fast = true;
    return options;
}

/// A scenario with a restart that a test can wait for.
Scenario scenarioNamed(const QString& name)
{
    Scenario scenario = shippedScenario(name);
    scenario.timing.bootMs = 300;
    return scenario;
}

bool isModuleThere()
{
    return FakeModule::calls().contains("get_gui_elements");
}

/// Runs @p steps inside of the frontend's event loop as soon as the module is there.
template <typename Steps>
void runWith(Frontend& frontend, const Steps& steps)
{
    FakeModule::forgetCalls();
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        if (!isModuleThere())
            return;
        timer.stop();
        steps();
    });
    timer.start(10);
    frontend.run();
}

/// Counts how often a widget is painted.
class PaintCounter : public QObject
{
public:
    explicit PaintCounter(QWidget* widget) { widget->installEventFilter(this); }
    int count() const { return m_count; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        m_count += event->type() == QEvent::Paint ? 1 : 0;
        return QObject::eventFilter(watched, event);
    }

private:
    int m_count = 0;
};

const QStringList beginning = {"set_param CommandManager: IOManager*",
                               "set_param ModuleParent: QWidget*",
                               "set_param BackendVersions: v3.1.0 v1.2 v1.23 ZAN",
                               "set_param ObserverMode: bool",
                               "no observer",
                               "get_gui_elements",
                               "message of Main_Window: v3.3.0",
                               "message of Main_Window: DarkThemeDisabled"};
const QStringList ending = {"about_to_exit_module", "exit_module, the window is there"};

} // namespace

class TestFrontend : public QObject
{
    Q_OBJECT

private slots:
    void moduleIsTreatedAsHostsDo();
    void themeIsToldAtEachChange();
    void observerIsToldByOptionOrScenario_data();
    void observerIsToldByOptionOrScenario();
    void quittingFromADialogKeepsTheOrder();
    void frontendWaitsForControllersThatRestart();
    void moduleLeavesAndComesBackWithTheControllers();
    void lossIsToldWhileAWindowIsOpen();
    void silentControllersAreLostAndFoundAgain();
    void dialogIsNotOpenedOnADeadLine();
    void headingTellsWholeVersions();
    void hardwareIsSearchedForOnTheUsersWord();
    void hardwareIsSearchedForByOperatorsAtRestOnly_data();
    void hardwareIsSearchedForByOperatorsAtRestOnly();
    void windowsArePaintedWhileAReplyIsAwaited();
    void failuresOfARunAreLogged();
    void quitComesAfterTheRun();
    void shutdownOfTheModuleIsTold();
    void stateIsKeptAndForgotten();
    void windowAndLogGoOnAtTheNextStart();
    void moduleStaysAwayWhileAnotherHostUpdates();
    void startDoesWithoutWhatCannotBeKept();
    void damagedStateIsSetAside();
    void whatPreventsTheStartIsTold();
    void moduleOfAnUnprovenDeliveryIsNotLoaded();
    void deliveryIsCheckedAgainWhenTheControllersComeBack();
};

void TestFrontend::moduleIsTreatedAsHostsDo()
{
    const FixtureFolder folder;
    Frontend frontend(scenarioNamed("cascade"), optionsFor(folder));
    QString error;
    QVERIFY2(frontend.prepare(&error), qPrintable(error));
    runWith(frontend, [] { QApplication::quit(); });
    QCOMPARE(FakeModule::calls(), beginning + ending);
    // Its last word came through, and nothing is posted to it any more.
    QVERIFY(frontend.window().log().toPlainText().contains("Fake        leaving"));
    frontend.window().setDarkTheme(true);
    frontend.window().setDarkTheme(false);
    QCOMPARE(FakeModule::calls(), beginning + ending);
}

void TestFrontend::themeIsToldAtEachChange()
{
    const FixtureFolder folder;
    Options options = optionsFor(folder);
    options.dark = true;
    Frontend frontend(scenarioNamed("cascade"), options);
    QString error;
    QVERIFY(frontend.prepare(&error));
    runWith(frontend, [&] {
        frontend.window().setDarkTheme(false);
        frontend.window().setDarkTheme(true);
        frontend.window().setDarkTheme(false);
        QApplication::quit();
    });
    QCOMPARE(FakeModule::calls().filter("Theme"),
             (QStringList{"message of Main_Window: DarkThemeEnabled",
                          "message of Main_Window: DarkThemeDisabled",
                          "message of Main_Window: DarkThemeEnabled",
                          "message of Main_Window: DarkThemeDisabled"}));
}

void TestFrontend::observerIsToldByOptionOrScenario_data()
{
    QTest::addColumn<QString>("scenario");
    QTest::addColumn<bool>("option");
    QTest::addColumn<bool>("observer");
    QTest::newRow("neither") << "cascade" << false << false;
    QTest::newRow("the option") << "cascade" << true << true;
    QTest::newRow("the scenario") << "observer" << false << true;
}

void TestFrontend::observerIsToldByOptionOrScenario()
{
    QFETCH(const QString, scenario);
    QFETCH(const bool, option);
    const FixtureFolder folder;
    Options options = optionsFor(folder);
    options.observer = option;
    Frontend frontend(scenarioNamed(scenario), options);
    QString error;
    QVERIFY(frontend.prepare(&error));
    runWith(frontend, [] { QApplication::quit(); });
    QTEST(FakeModule::calls().contains("observer"), "observer");
}

void TestFrontend::quittingFromADialogKeepsTheOrder()
{
    const FixtureFolder folder;
    Frontend frontend(scenarioNamed("cascade"), optionsFor(folder));
    QString error;
    QVERIFY(frontend.prepare(&error));
    bool wasOpen = false;
    runWith(frontend, [&] {
        auto* dialog = frontend.window().findChild<QDialog*>("fakeDialog");
        QTimer::singleShot(0, dialog, [&, dialog] {
            wasOpen = dialog->isVisible();
            QApplication::quit();
        });
        dialog->exec();
    });
    QVERIFY(wasOpen);
    QCOMPARE(FakeModule::calls(), beginning + ending);
}

void TestFrontend::frontendWaitsForControllersThatRestart()
{
    const FixtureFolder folder;
    Scenario scenario = scenarioNamed("cascade");
    scenario.timing.bootMs = 2500;
    {
        SimulatedSystem before(scenario);
        QString error;
        before.loadState(folder.path("state/system.json"), &error);
        before.restart();
    }
    Frontend frontend(scenario, optionsFor(folder));
    QString error;
    QVERIFY(frontend.prepare(&error));
    bool hasWaited = false;
    QTimer::singleShot(0, &frontend, [&] {
        hasWaited =
            frontend.window().findChild<QWidget*>("waitingPage")->isVisible() && !isModuleThere();
    });
    runWith(frontend, [&] {
        QVERIFY(!frontend.window().findChild<QWidget*>("waitingPage")->isVisible());
        QApplication::quit();
    });
    QVERIFY(hasWaited);
}

void TestFrontend::moduleLeavesAndComesBackWithTheControllers()
{
    const FixtureFolder folder;
    Frontend frontend(scenarioNamed("cascade"), optionsFor(folder));
    QString error;
    QVERIFY(frontend.prepare(&error));
    QTimer timer;
    connect(&timer, &QTimer::timeout, &frontend, [&] {
        if (FakeModule::calls().count("get_gui_elements") == 2)
            QApplication::quit();
    });
    timer.start(10);
    runWith(frontend, [&] {
        frontend.window().findChild<QPushButton*>("pushButton_powerCycleControllers")->click();
    });
    QCOMPARE(FakeModule::calls(), beginning + ending + beginning + ending);
}

namespace {

QStringList headOf(const MainWindow& window)
{
    return windowTexts(window).mid(0, 2);
}

QString logOf(Frontend& frontend)
{
    return frontend.window().log().toPlainText();
}

/// A fault that leaves every question of the frontend's own without an answer.
Fault silence()
{
    Fault fault;
    fault.mode = FaultMode::StaySilent;
    fault.request = "system hostname";
    fault.times = 0;
    return fault;
}

QAction* entryOf(const MainWindow& window, const QString& text)
{
    for (QAction* menu : window.menuBar()->actions()) {
        for (QAction* action : menu->menu()->actions()) {
            if (action->text() == text)
                return action;
        }
    }
    return nullptr;
}

} // namespace

// The module cannot leave as long as its window is open; what the frontend shows does not wait.
void TestFrontend::lossIsToldWhileAWindowIsOpen()
{
    const FixtureFolder folder;
    Frontend frontend(scenarioNamed("cascade"), optionsFor(folder));
    QString error;
    QVERIFY(frontend.prepare(&error));
    MainWindow& window = frontend.window();
    runWith(frontend, [&] {
        auto* dialog = window.findChild<QDialog*>("fakeDialog");
        QTimer::singleShot(0, dialog, [&, dialog] {
            window.findChild<QPushButton*>("pushButton_powerCycleControllers")->click();
            QTRY_VERIFY(window.findChild<QWidget*>("waitingPage")->isVisible());
            QCOMPARE(window.windowTitle(), QString("VORNIX3 v3.3.0 - 192.168.7.20 (no answer)"));
            QVERIFY(headOf(window).constFirst().startsWith("No answer since "));
            QVERIFY(!entryOf(window, "Not while measuring")->isEnabled());
            QTRY_COMPARE(headOf(window),
                         (QStringList{"Connected to 192.168.7.20",
                                      "The controllers answer again. The update module is loaded "
                                      "anew when no other window is open."}));
            QCOMPARE(window.windowTitle(), QString("VORNIX3 v3.3.0 - 192.168.7.20"));
            QCOMPARE(FakeModule::calls(), beginning);
            dialog->accept();
        });
        dialog->exec();
        QTimer::singleShot(0, &frontend, [&] {
            QTRY_COMPARE(FakeModule::calls().count("get_gui_elements"), 2);
            QVERIFY(headOf(window).constLast().startsWith("Model ZAN"));
            QApplication::quit();
        });
    });
    QCOMPARE(FakeModule::calls(), beginning + ending + beginning + ending);
    const QString log = logOf(frontend);
    QVERIFY(log.contains("Frontend    The controllers do not answer any more."));
    QVERIFY(log.contains("Frontend    The controllers answer again."));
}

// As when a cable is pulled: the line stands, and nothing comes. Takes the 6 s until that is sure.
void TestFrontend::silentControllersAreLostAndFoundAgain()
{
    const FixtureFolder folder;
    Frontend frontend(scenarioNamed("cascade"), optionsFor(folder));
    QString error;
    QVERIFY(frontend.prepare(&error));
    MainWindow& window = frontend.window();
    runWith(frontend, [&] {
        QTimer::singleShot(0, &frontend, [&] {
            const EquipmentCommand arm{EquipmentCommand::Kind::ArmFault, 0, silence()};
            frontend.equipment().perform(arm);
            QTRY_VERIFY(window.findChild<QWidget*>("waitingPage")->isVisible());
            QCOMPARE(headOf(window).constLast(), QString("They have power, but do not answer."));
            frontend.equipment().perform({EquipmentCommand::Kind::DisarmFaults});
            QTRY_COMPARE(FakeModule::calls().count("get_gui_elements"), 2);
            QVERIFY(!window.findChild<QWidget*>("waitingPage")->isVisible());
            QApplication::quit();
        });
    });
    QCOMPARE(FakeModule::calls(), beginning + ending + beginning + ending);
}

void TestFrontend::dialogIsNotOpenedOnADeadLine()
{
    const FixtureFolder folder;
    Frontend frontend(scenarioNamed("cascade"), optionsFor(folder));
    QString error;
    QVERIFY(frontend.prepare(&error));
    ModalDriver driver;
    ExpectedBox box;
    box.title = "VORNIX3";
    box.text = "The controllers do not answer, so nothing was opened. Choose this again when they "
               "are connected.";
    box.icon = QMessageBox::Warning;
    box.defaultButton = QMessageBox::NoButton;
    driver.expect(box);
    driver.expect(box);
    runWith(frontend, [&] {
        frontend.equipment().perform({EquipmentCommand::Kind::ArmFault, 0, silence()});
        entryOf(frontend.window(), "Not while measuring")->trigger();
        frontend.window().findChild<QAction*>("actionSearchHardware")->setEnabled(true);
        frontend.window().findChild<QAction*>("actionSearchHardware")->trigger();
        QApplication::quit();
    });
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
    const QString log = logOf(frontend);
    QVERIFY2(!log.contains("the frontend shuts down"), qPrintable(log)); // what the entry does
    QVERIFY2(!log.contains("Search for new hardware"), qPrintable(log));
}

void TestFrontend::headingTellsWholeVersions()
{
    const FixtureFolder folder;
    Scenario scenario = scenarioNamed("cascade");
    scenario.controllers[0].pt = "v3.1.0-beta.4 2024-02-29";
    scenario.controllers[0].ct = "v1.2-rc.1";
    Frontend frontend(scenario, optionsFor(folder));
    QString error;
    QVERIFY(frontend.prepare(&error));
    runWith(frontend, [] { QApplication::quit(); });
    QCOMPARE(headOf(frontend.window()),
             (QStringList{"Connected to 192.168.7.20",
                          "Model ZAN, tracking software v3.1.0-beta.4, controller firmware "
                          "v1.2-rc.1, command protocol v1.23"}));
}

void TestFrontend::hardwareIsSearchedForOnTheUsersWord()
{
    const FixtureFolder folder;
    Frontend frontend(scenarioNamed("cameras"), optionsFor(folder));
    QString error;
    QVERIFY(frontend.prepare(&error));
    QStringList texts;
    runWith(frontend, [&] {
        QTimer::singleShot(0, &frontend, [&] {
            QWidget* dialog = QApplication::activeModalWidget();
            texts += dialog->windowTitle();
            dialog->findChild<QPushButton*>("pushButton_ok")->click();
        });
        frontend.window().findChild<QAction*>("actionSearchHardware")->trigger();
        QApplication::quit();
    });
    QCOMPARE(texts, QStringList{"Search for new hardware"});
    QVERIFY(frontend.window().log().toPlainText().contains("Search for new hardware...done"));
}

void TestFrontend::hardwareIsSearchedForByOperatorsAtRestOnly_data()
{
    QTest::addColumn<QString>("scenario");
    QTest::addColumn<bool>("observer");
    QTest::addColumn<bool>("enabled");
    QTest::newRow("an operator without a measurement may") << "cascade" << false << true;
    QTest::newRow("an observer may not") << "cascade" << true << false;
    QTest::newRow("nobody may during a measurement") << "measuring" << false << false;
}

void TestFrontend::hardwareIsSearchedForByOperatorsAtRestOnly()
{
    QFETCH(const QString, scenario);
    QFETCH(const bool, observer);
    QFETCH(const bool, enabled);
    const FixtureFolder folder;
    Options options = optionsFor(folder);
    options.observer = observer;
    Frontend frontend(scenarioNamed(scenario), options);
    QCOMPARE(frontend.window().findChild<QAction*>("actionSearchHardware")->isEnabled(), enabled);
}

void TestFrontend::windowsArePaintedWhileAReplyIsAwaited()
{
    const FixtureFolder folder;
    Options options = optionsFor(folder);
    options.fast = false;
    Scenario scenario = scenarioNamed("cascade");
    Fault late;
    late.mode = FaultMode::AnswerLate;
    late.delayMs = 1000;
    scenario.faults = {late};
    Frontend frontend(scenario, options);
    QString error;
    QVERIFY(frontend.prepare(&error));
    int painted = 0;
    runWith(frontend, [&] {
        FakeModule::channel()->prepare_reply(1, 20000, 1);
        FakeModule::channel()->set_value("system update 1 1 AB");
        QWidget* banner = frontend.window().findChild<QWidget*>("banner");
        PaintCounter counter(banner);
        QTimer change;
        connect(&change, &QTimer::timeout, banner, [banner] { banner->update(); });
        change.start(10);
        FakeModule::channel()->poll_reply(3);
        painted = counter.count();
        QApplication::quit();
    });
    QVERIFY(painted > 1);
}

void TestFrontend::failuresOfARunAreLogged()
{
    const FixtureFolder folder;
    Scenario scenario = scenarioNamed("cascade");
    const QString master = scenario.controllers.constFirst().hostName;
    Fault refused;
    refused.mode = FaultMode::RefuseRecord;
    refused.record = 1;
    scenario.faults = {refused};
    Frontend frontend(scenario, optionsFor(folder));
    QString error;
    QVERIFY(frontend.prepare(&error));
    runWith(frontend, [&] {
        char name[replyBytes] = {};
        FakeModule::channel()->get_string(name, "system hostname");
        FakeModule::channel()->set_value("system update 9 1 AB");
        QApplication::quit();
    });
    const QString expected =
        "Failed: tracking software of " + master + ", record 1 of 9: error -20 (refused on demand)";
    QVERIFY2(frontend.window().log().toPlainText().contains(expected),
             qPrintable(frontend.window().log().toPlainText()));
}

void TestFrontend::quitComesAfterTheRun()
{
    const FixtureFolder folder;
    Frontend frontend(scenarioNamed("cascade"), optionsFor(folder));
    QString error;
    QVERIFY(frontend.prepare(&error));
    runWith(frontend, [&] {
        FakeModule::channel()->set_value("system update 9 1 AB");
        frontend.quit();
        QCoreApplication::processEvents();
        QVERIFY(frontend.window().isVisible());
        QVERIFY(frontend.window().findChild<QWidget*>("banner")->isVisible());
        QVERIFY(!FakeModule::calls().contains("about_to_exit_module"));
    });
    QVERIFY(frontend.window().log().toPlainText().contains(
        "The frontend quits when the update is over."));
    QCOMPARE(FakeModule::calls().mid(FakeModule::calls().size() - 2), ending);
}

void TestFrontend::shutdownOfTheModuleIsTold()
{
    const FixtureFolder folder;
    Frontend frontend(scenarioNamed("cascade"), optionsFor(folder));
    QString error;
    QVERIFY(frontend.prepare(&error));
    runWith(frontend, [&] {
        for (QAction* menu : frontend.window().menuBar()->actions()) {
            for (QAction* action : menu->menu()->actions()) {
                if (action->text() == "Not while measuring")
                    action->trigger();
            }
        }
    });
    QVERIFY(frontend.window().log().toPlainText().contains("the frontend shuts down"));
}

void TestFrontend::stateIsKeptAndForgotten()
{
    const FixtureFolder folder;
    const QString preferences = Frontend::homeFolder(folder.path("state")) + "/preferences";
    Options options = optionsFor(folder);
    QString error;
    {
        SimulatedSystem before(scenarioNamed("cameras"));
        before.loadState(folder.path("state/system.json"), &error);
        before.powerCycleCamera(0);
    }
    {
        Frontend frontend(scenarioNamed("cameras"), options);
        QVERIFY(frontend.prepare(&error));
        QVERIFY(!frontend.equipment().state().cameras.constFirst().found);
        QFile file(preferences);
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    options.fresh = true;
    Frontend frontend(scenarioNamed("cameras"), options);
    QVERIFY(frontend.prepare(&error));
    QVERIFY(frontend.equipment().state().cameras.constFirst().found);
    QVERIFY(!QFile::exists(preferences));
    QVERIFY(QFile::exists(Frontend::homeFolder(options.stateDir)));
}

void TestFrontend::windowAndLogGoOnAtTheNextStart()
{
    const FixtureFolder folder;
    Options options = optionsFor(folder);
    QString error;
    {
        Frontend first(scenarioNamed("cascade"), options);
        QVERIFY2(first.prepare(&error), qPrintable(error));
        runWith(first, [&] {
            first.window().setDarkTheme(true);
            first.window().resize(1001, 777);
            QApplication::quit();
        });
        // Its last words are kept, too.
        QVERIFY(first.window().log().toPlainText().contains("Fake        leaving"));
    }
    {
        Frontend second(scenarioNamed("cascade"), options);
        QVERIFY2(second.prepare(&error), qPrintable(error));
        QVERIFY(second.window().isDarkTheme());
        QCOMPARE(second.window().size(), QSize(1001, 777));
        const QString log = second.window().log().toPlainText();
        QVERIFY2(log.contains("Connected to 192.168.7.20") && log.contains("Fake        leaving"),
                 qPrintable(log));
        QCOMPARE(log.count("Frontend    Started: "), 2);
        runWith(second, [&] {
            second.window().setDarkTheme(false);
            QApplication::quit();
        });
    }
    // The option stands above what was kept.
    options.dark = true;
    {
        Frontend third(scenarioNamed("cascade"), options);
        QVERIFY2(third.prepare(&error), qPrintable(error));
        QVERIFY(third.window().isDarkTheme());
        QCOMPARE(third.window().size(), QSize(1001, 777));
    }
    options.dark = false;
    options.fresh = true;
    Frontend fresh(scenarioNamed("cascade"), options);
    QVERIFY2(fresh.prepare(&error), qPrintable(error));
    QVERIFY(!fresh.window().isDarkTheme());
    QVERIFY(fresh.window().size() != QSize(1001, 777));
    QCOMPARE(fresh.window().log().toPlainText().count("Started: "), 1);
}

void TestFrontend::moduleStaysAwayWhileAnotherHostUpdates()
{
    const FixtureFolder folder;
    Frontend frontend(scenarioNamed("cascade"), optionsFor(folder));
    QString error;
    QVERIFY2(frontend.prepare(&error), qPrintable(error));
    auto& system = dynamic_cast<SimulatedSystem&>(frontend.equipment());
    QTimer timer;
    connect(&timer, &QTimer::timeout, &frontend, [&] {
        if (FakeModule::calls().count("exit_module, the window is there") == 1)
            system.setUpdatedBy(QString());
        if (FakeModule::calls().count("get_gui_elements") == 2)
            QApplication::quit();
    });
    timer.start(10);
    runWith(frontend, [&] { system.setUpdatedBy("ann@console"); });
    QCOMPARE(FakeModule::calls(), beginning + ending + beginning + ending);
    const QString log = frontend.window().log().toPlainText();
    QVERIFY2(log.contains("ann@console updates this system.") &&
                 log.contains("The other host is through with its update."),
             qPrintable(log));

    // Whoever comes in the middle of it looks on from the beginning.
    const FixtureFolder elsewhere;
    Frontend late(scenarioNamed("cascade"), optionsFor(elsewhere));
    QVERIFY2(late.prepare(&error), qPrintable(error));
    dynamic_cast<SimulatedSystem&>(late.equipment()).setUpdatedBy("ann@console");
    FakeModule::forgetCalls();
    connect(&late.window().log(), &LogView::added, &late,
            [](const QString& /*sender*/, const QString& text) {
                if (text == "ann@console updates this system.")
                    QTimer::singleShot(300, qApp, &QApplication::quit);
            });
    late.run();
    QCOMPARE(FakeModule::calls(), QStringList());
}

void TestFrontend::startDoesWithoutWhatCannotBeKept()
{
    const FixtureFolder folder;
    const Options options = optionsFor(folder);
    QString error;
    QVERIFY(Frontend::claimStateFolder(options.stateDir, &error));
    const QString look = folder.write("state/window.json", "{}");
    QVERIFY(QDir().mkpath(folder.path("state/log.jsonl")));
    Frontend frontend(scenarioNamed("cascade"), options);
    QVERIFY2(frontend.prepare(&error), qPrintable(error));
    const QString log = frontend.window().log().toPlainText();
    QVERIFY2(log.contains("The log cannot be kept: " + folder.path("state/log.jsonl: ")),
             qPrintable(log));
    QVERIFY2(log.contains("The window looks as at the first start: " + look + ": "),
             qPrintable(log));
}

void TestFrontend::damagedStateIsSetAside()
{
    const FixtureFolder folder;
    const QString state = folder.write("state/system.json", "{ \"simulated-system-state-");
    Frontend frontend(scenarioNamed("cascade"), optionsFor(folder));
    QString error;
    QVERIFY(frontend.prepare(&error));
    QVERIFY(frontend.window().log().toPlainText().contains("The state was set aside: " + state));
    QVERIFY(QFile::exists(state + ".damaged"));
}

void TestFrontend::whatPreventsTheStartIsTold()
{
    const FixtureFolder folder;
    Options options = optionsFor(folder);
    Frontend first(scenarioNamed("cascade"), options);
    QString error;
    QVERIFY(first.prepare(&error));
    Frontend second(scenarioNamed("cascade"), options);
    QVERIFY(!second.prepare(&error));
    QVERIFY2(error.startsWith(options.stateDir + ": tst_frontend uses this folder, process "),
             qPrintable(error));

    options.stateDir = folder.write("file", "in the way");
    Frontend third(scenarioNamed("cascade"), options);
    QVERIFY(!third.prepare(&error));
    QCOMPARE(error, options.stateDir + ": the folder cannot be made: " + systemReason(ENOTDIR));

    options.stateDir = folder.path("full");
    {
        const FullDisk disk(10);
        Frontend onFullDisk(scenarioNamed("cascade"), options);
        QVERIFY(!onFullDisk.prepare(&error));
    }
    QCOMPARE(error, options.stateDir + ": " + systemReason(EFBIG));

    const QString foreign = folder.write("foreign/system.json", "{}");
    options.stateDir = folder.path("foreign");
    options.fresh = true;
    Frontend beside(scenarioNamed("cascade"), options);
    QVERIFY(!beside.prepare(&error));
    QCOMPARE(error, options.stateDir +
                        ": the folder holds what is not of this program, so nothing in it is "
                        "touched; name a new or an empty folder");
    QVERIFY(QFile::exists(foreign));
    options.fresh = false;

    options.stateDir = folder.path("other");
    options.pluginFile = "/nowhere/libmodule.so";
    Frontend fourth(scenarioNamed("cascade"), options);
    QVERIFY(!fourth.prepare(&error));
    QVERIFY2(error.contains("/nowhere/libmodule.so"), qPrintable(error));
}

namespace {

void sealDelivery()
{
    QString error;
    int files = 0;
    const auto key = MinisignSecretKey::parse(sample::secretKeyFile, nullptr, &error);
    const QString updates = QCoreApplication::applicationDirPath() + "/controller_update";
    if (DeliverySealing(key, "3.3.0").seal(updates, &files, &error) !=
        DeliverySealing::Outcome::Done)
        qFatal("%s", qPrintable(error));
}

} // namespace

void TestFrontend::moduleOfAnUnprovenDeliveryIsNotLoaded()
{
    const FixtureFolder folder;
    const ProgramFolder program;
    program.deliverUpdate("a.vx3img", "first");
    Options options = optionsFor(folder);
    // Not even looked at.
    options.pluginFile = "/nowhere/libmodule.so";
    options.publicKey = sample::publicKey;
    Frontend frontend(scenarioNamed("cascade"), options);
    QString error;
    QVERIFY2(frontend.prepare(&error), qPrintable(error));
    FakeModule::forgetCalls();
    ModalDriver driver;
    ExpectedBox box;
    box.title = "VORNIX3";
    box.text = QString("The update files in %1/controller_update are not sealed.\n\n"
                       "SHA256SUMS: is missing\n\n"
                       "The update module was not loaded.")
                   .arg(QCoreApplication::applicationDirPath());
    box.icon = QMessageBox::Warning;
    box.defaultButton = QMessageBox::NoButton;
    box.inspect = [&](QMessageBox&) {
        QTimer::singleShot(500, qApp, &QApplication::quit);
    };
    driver.expect(box);
    frontend.run();
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
    QVERIFY(frontend.isModuleRefused());
    QCOMPARE(FakeModule::calls(), QStringList());
    const QString log = frontend.window().log().toPlainText();
    QVERIFY2(log.contains("SHA256SUMS: is missing"), qPrintable(log));
    QVERIFY2(!log.contains("nowhere"), qPrintable(log));

    options.publicKey = folder.path("none.pub");
    Frontend without(scenarioNamed("cascade"), options);
    QVERIFY(!without.prepare(&error));
    QCOMPARE(error, options.publicKey + ": " + systemReason(ENOENT));
}

void TestFrontend::deliveryIsCheckedAgainWhenTheControllersComeBack()
{
    const FixtureFolder folder;
    const ProgramFolder program;
    program.deliverUpdate("a.vx3img", "first");
    sealDelivery();
    Options options = optionsFor(folder);
    options.publicKey = sample::publicKey;
    Frontend frontend(scenarioNamed("cascade"), options);
    QString error;
    QVERIFY2(frontend.prepare(&error), qPrintable(error));
    ModalDriver driver;
    ExpectedBox box;
    box.title = "VORNIX3";
    box.text = QString("The update files in %1/controller_update are not as they were sealed.\n\n"
                       "a.vx3img: is not what was sealed\n\n"
                       "The update module was not loaded.")
                   .arg(QCoreApplication::applicationDirPath());
    box.icon = QMessageBox::Warning;
    box.defaultButton = QMessageBox::NoButton;
    box.inspect = [&](QMessageBox&) {
        QTimer::singleShot(0, qApp, &QApplication::quit);
    };
    driver.expect(box);
    runWith(frontend, [&] {
        program.deliverUpdate("a.vx3img", "other");
        frontend.window().findChild<QPushButton*>("pushButton_powerCycleControllers")->click();
    });
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
    QCOMPARE(FakeModule::calls(), beginning + ending);
    QVERIFY(frontend.isModuleRefused());
}

ZAN_WIDGET_TEST_MAIN(TestFrontend)
#include "tst_frontend.moc"
