#include <simulatorfixtures.h>

#include <logview.h>
#include <mainwindow.h>
#include <runmonitor.h>
#include <systemview.h>

#include <cuttexts.h>
#include <widgettestmain.h>

#include <QAction>
#include <QCloseEvent>
#include <QDialog>
#include <QEventLoop>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTableView>

namespace {

QStringList menuTexts(const MainWindow& window)
{
    QStringList texts;
    for (const QAction* menu : window.menuBar()->actions()) {
        for (const QAction* action : menu->menu()->actions())
            texts += menu->text() + ": " + action->text();
    }
    return texts;
}

QAction* actionWith(const MainWindow& window, const QString& text)
{
    for (QAction* menu : window.menuBar()->actions()) {
        for (QAction* action : menu->menu()->actions()) {
            if (action->text() == text)
                return action;
        }
    }
    return nullptr;
}

/// Two entries of a module: one for any time, one that a measurement forbids.
struct ModuleEntries
{
    QAction anytime{QStringLiteral("Anytime")};
    QAction noMeasurement{QStringLiteral("Not while measuring")};
    GuiElement first{&noMeasurement, 31, "&Help", 700, nullptr, 0};
    GuiElement second{&anytime, 30, "&Help", 700, nullptr, 1};
    QList<GuiElement*> elements = {&first, &second};
};

/// Runs @p steps in the middle of a run that a click in @p window has started, and returns when the
/// run is over.
template <typename Steps>
void inARunOf(QDialog& window, RunMonitor& runs, const Steps& steps)
{
    QEventLoop loop;
    QObject::connect(&runs, &RunMonitor::ended, &loop, &QEventLoop::quit);
    QTimer::singleShot(0, [&] {
        QTimer::singleShot(0, &window, [&] {
            runs.sent(Operation::SetValue, "system update 9 1 AB");
            steps();
            window.accept();
        });
        window.exec();
    });
    loop.exec();
}

} // namespace

class TestMainWindow : public QObject
{
    Q_OBJECT

private slots:
    void titleTellsVersionAndSystem();
    void lossIsToldEverywhere();
    void entriesThatNeedTheControllersAreAskedFor();
    void moduleEntriesStandAmongTheFrontends();
    void measurementForbidsSomeEntries();
    void observerOnlyLooksOn();
    void hardwareIsSearchedForBetweenMeasurements();
    void measurementIsStartedAndStopped();
    void themeReallyChanges();
    void themeIsTold();
    void windowStaysOpenBehindADialog();
    void nothingDisturbsARun();
    void windowOfARunIsFoundAgain();
    void windowOfARunThatWasOnlyLeftStaysAway();
    void quittingWaitsForTheRun_data();
    void quittingWaitsForTheRun();
    void desktopCannotCloseAllWindowsInARun();
    void questionGoesWithTheRun();
    void boxesDoNotHoldUpARun();
    void dialogsOpenBelowTheEquipment();
    void nothingIsCutOff_data();
    void nothingIsCutOff();
    void everythingIsReachedByKeyboard();
};

void TestMainWindow::titleTellsVersionAndSystem()
{
    SimulatedSystem system(shippedScenario("cascade"));
    const MainWindow window(system, false);
    QCOMPARE(window.windowTitle(), QString("VORNIX3 v3.3.0 - 192.168.7.20"));
}

void TestMainWindow::lossIsToldEverywhere()
{
    SimulatedSystem system(shippedScenario("cascade"));
    MainWindow window(system, false);
    const ModuleEntries module;
    window.addModuleEntries(module.elements);
    const QString stop = "S&top: No measurement runs.";
    const QStringList possible = {"Search for &hardware...: yes", "&Start: yes", stop,
                                  "Anytime: yes", "Not while measuring: yes"};
    const auto permissions = [&] {
        QStringList texts;
        for (const char* text :
             {"Search for &hardware...", "&Start", "S&top", "Anytime", "Not while measuring"}) {
            const QAction* action = actionWith(window, text);
            texts += QString("%1: %2").arg(text, action->isEnabled() ? QString("yes")
                                                                     : action->toolTip());
        }
        return texts;
    };
    QCOMPARE(permissions(), possible);
    const auto* table = window.findChild<QTableView*>();
    const auto isGrey = [&] {
        return table->model()->index(0, 0).data(Qt::ForegroundRole).isValid();
    };

    window.showLost(QDateTime::currentDateTime());
    const QString gone = "The controllers do not answer.";
    QCOMPARE(permissions(),
             (QStringList{"Search for &hardware...: " + gone, "&Start: " + gone, "S&top: " + gone,
                          "Anytime: yes", "Not while measuring: " + gone}));
    QCOMPARE(window.windowTitle(), QString("VORNIX3 v3.3.0 - 192.168.7.20 (no answer)"));
    QVERIFY(isGrey());
    window.show();
    QVERIFY(window.findChild<QWidget*>("waitingPage")->isVisible());

    window.showConnected("details");
    QCOMPARE(permissions(), possible);
    QCOMPARE(window.windowTitle(), QString("VORNIX3 v3.3.0 - 192.168.7.20"));
    QVERIFY(!isGrey());
    QVERIFY(!window.findChild<QWidget*>("waitingPage")->isVisible());
    window.removeModuleEntries();
}

void TestMainWindow::entriesThatNeedTheControllersAreAskedFor()
{
    SimulatedSystem system(shippedScenario("cascade"));
    MainWindow window(system, false);
    ModuleEntries module;
    window.addModuleEntries(module.elements);
    QStringList happened;
    connect(&window, &MainWindow::moduleEntryWanted, &window,
            [&](QAction* entry) { happened += "wanted: " + entry->text(); });
    connect(&module.noMeasurement, &QAction::triggered, &window, [&] { happened += "opened"; });
    connect(&module.anytime, &QAction::triggered, &window, [&] { happened += "opened anyway"; });
    actionWith(window, "Not while measuring")->trigger();
    actionWith(window, "Anytime")->trigger();
    QCOMPARE(happened, (QStringList{"wanted: Not while measuring", "opened anyway"}));

    // What stands in for an entry follows it.
    module.noMeasurement.setText("Other text");
    module.noMeasurement.setStatusTip("tip");
    QCOMPARE(actionWith(window, "Other text")->statusTip(), QString("tip"));
    window.removeModuleEntries();
    QVERIFY(!actionWith(window, "Other text"));
}

void TestMainWindow::moduleEntriesStandAmongTheFrontends()
{
    SimulatedSystem system(shippedScenario("cascade"));
    MainWindow window(system, false);
    const QStringList own = {"&VORNIX3: Search for &hardware...",
                             "&VORNIX3: &Results of the last update...",
                             "&VORNIX3: &Quit",
                             "&Measurement: &Start",
                             "&Measurement: S&top",
                             "V&iew: &Dark theme",
                             "&Help: &About"};
    QCOMPARE(menuTexts(window), own);
    const ModuleEntries module;
    window.addModuleEntries(module.elements);
    QCOMPARE(menuTexts(window), (own.mid(0, 6) << "&Help: Anytime"
                                               << "&Help: Not while measuring"
                                               << "&Help: &About"));
    window.removeModuleEntries();
    QCOMPARE(menuTexts(window), own);
}

void TestMainWindow::measurementForbidsSomeEntries()
{
    SimulatedSystem system(shippedScenario("cascade"));
    MainWindow window(system, false);
    const ModuleEntries module;
    system.setMeasuring(true);
    window.addModuleEntries(module.elements);
    QVERIFY(module.anytime.isEnabled());
    QVERIFY(!module.noMeasurement.isEnabled());
    system.setMeasuring(false);
    QVERIFY(module.anytime.isEnabled());
    QVERIFY(module.noMeasurement.isEnabled());
    system.setMeasuring(true);
    QVERIFY(!module.noMeasurement.isEnabled());
    window.removeModuleEntries();
}

void TestMainWindow::observerOnlyLooksOn()
{
    SimulatedSystem system(shippedScenario("cascade"));
    const MainWindow window(system, true);
    QVERIFY(!actionWith(window, "&Start")->isEnabled());
    QVERIFY(!actionWith(window, "Search for &hardware...")->isEnabled());
    system.setMeasuring(true);
    QVERIFY(!actionWith(window, "S&top")->isEnabled());
}

void TestMainWindow::hardwareIsSearchedForBetweenMeasurements()
{
    SimulatedSystem system(shippedScenario("cascade"));
    const MainWindow window(system, false);
    QSignalSpy wanted(&window, &MainWindow::hardwareSearchWanted);
    QAction* search = actionWith(window, "Search for &hardware...");
    system.setMeasuring(true);
    QVERIFY(!search->isEnabled());
    system.setMeasuring(false);
    search->trigger();
    QCOMPARE(wanted.size(), 1);
    system.restart();
    QVERIFY(!search->isEnabled());
}

void TestMainWindow::measurementIsStartedAndStopped()
{
    SimulatedSystem system(shippedScenario("cascade"));
    const MainWindow window(system, false);
    QVERIFY(!actionWith(window, "S&top")->isEnabled());
    actionWith(window, "&Start")->trigger();
    QVERIFY(system.measurement() == Measurement::Running);
    QVERIFY(!actionWith(window, "&Start")->isEnabled());
    actionWith(window, "S&top")->trigger();
    QVERIFY(system.measurement() == Measurement::Off);
    system.restart();
    QVERIFY(!actionWith(window, "&Start")->isEnabled());
}

void TestMainWindow::themeReallyChanges()
{
    SimulatedSystem system(shippedScenario("cascade"));
    MainWindow window(system, false);
    for (const bool dark : {true, false, true}) {
        window.setDarkTheme(dark);
        const QPalette palette = window.palette();
        QCOMPARE(palette.color(QPalette::Window).lightnessF() < 0.5, dark);
        QCOMPARE(palette.color(QPalette::Base).lightnessF() < 0.5, dark);
        QCOMPARE(palette.color(QPalette::WindowText).lightnessF() < 0.5, !dark);
        QCOMPARE(QDialog().palette().color(QPalette::Window), palette.color(QPalette::Window));
    }
    window.setDarkTheme(false);
}

void TestMainWindow::themeIsTold()
{
    SimulatedSystem system(shippedScenario("cascade"));
    MainWindow window(system, false);
    QSignalSpy told(&window, &MainWindow::themeChanged);
    actionWith(window, "&Dark theme")->trigger();
    QVERIFY(window.isDarkTheme());
    window.setDarkTheme(true);
    actionWith(window, "&Dark theme")->trigger();
    QCOMPARE(told, (QList<QList<QVariant>>{{true}, {false}}));
}

void TestMainWindow::windowStaysOpenBehindADialog()
{
    SimulatedSystem system(shippedScenario("cascade"));
    MainWindow window(system, false);
    window.show();
    QDialog dialog(&window);
    dialog.setWindowTitle("Front");
    QTimer::singleShot(0, &dialog, [&] {
        QVERIFY(!window.close());
        QCOMPARE(window.statusBar()->currentMessage(),
                 QString("Please close the window \"Front\" first."));
        dialog.accept();
    });
    dialog.exec();
    QVERIFY(window.isVisible());
    QVERIFY(window.close());
    QVERIFY(!window.isVisible());
}

void TestMainWindow::nothingDisturbsARun()
{
    SimulatedSystem system(shippedScenario("controllers-and-cameras"));
    RunMonitor runs;
    MainWindow window(system, false);
    window.followRuns(runs);
    window.show();
    const ModuleEntries module;
    window.addModuleEntries(module.elements);
    auto* cameras = window.findChild<QTableView*>("tableView_cameras");
    cameras->selectAll();
    const QAction* search = actionWith(window, "Search for &hardware...");
    const QAction* start = actionWith(window, "&Start");
    const auto* power = window.findChild<QPushButton*>("pushButton_powerCycleControllers");
    const auto* cameraPower = window.findChild<QPushButton*>("pushButton_powerCycleCameras");
    const auto usable = [&] {
        return QVector<bool>{search->isEnabled(),        start->isEnabled(),
                             power->isEnabled(),         cameraPower->isEnabled(),
                             module.anytime.isEnabled(), module.noMeasurement.isEnabled()};
    };
    const QVector<bool> all(6, true);
    const QVector<bool> none(6, false);
    QCOMPARE(usable(), all);
    const QString usualTip = search->toolTip();

    QDialog dialog(&window);
    inARunOf(dialog, runs, [&] {
        QCOMPARE(usable(), none);
        cameras->clearSelection();
        cameras->selectAll();
        system.armFault(Fault());
        system.disarmFaults();
        QCOMPARE(usable(), none);
        QCOMPARE(search->toolTip(), QString("Not as long as an update is under way."));
        QCOMPARE(start->toolTip(), QString("Not as long as an update is under way."));
        QCOMPARE(power->toolTip(),
                 QString("Not as long as an update is under way. To see what a loss of power does "
                         "to it, arm that fault."));
        QCOMPARE(cameraPower->toolTip(), power->toolTip());
        QVERIFY(window.findChild<QPushButton*>("pushButton_faults")->isEnabled());

        // Nothing is sent as long as a window of the module waits for an answer.
        QDialog question(&dialog);
        connect(&runs, &RunMonitor::heldUp, &question, [&] {
            QCOMPARE(usable(), all);
            question.accept();
        });
        question.exec();
        runs.sent(Operation::SetValue, "system update 9 2 AB");
        while (usable() != none)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    });
    QCOMPARE(usable(), all);
    QCOMPARE(search->toolTip(), usualTip);
    QCOMPARE(power->toolTip(), QString());
    window.removeModuleEntries();
}

void TestMainWindow::windowOfARunIsFoundAgain()
{
    SimulatedSystem system(shippedScenario("cascade"));
    RunMonitor runs;
    MainWindow window(system, false);
    window.followRuns(runs);
    window.show();
    QDialog dialog(&window);
    ModuleEntries module;
    module.first.content = &dialog;
    window.addModuleEntries(module.elements);
    const auto* back = window.findChild<QPushButton*>("pushButton_banner");
    int results = 0;
    connect(&dialog, &QDialog::finished, [&] { ++results; });
    inARunOf(dialog, runs, [&] {
        QVERIFY(!back->isVisible());
        QTest::keyClick(&dialog, Qt::Key_Escape);
        QVERIFY(!dialog.isVisible());
        QVERIFY(back->isVisible());
        window.findChild<QPushButton*>("pushButton_banner")->click();
        QVERIFY(dialog.isVisible());
        QVERIFY(!back->isVisible());
        dialog.close(); // as by its close button
        QVERIFY(back->isVisible());
        window.findChild<QPushButton*>("pushButton_banner")->click();
        QVERIFY(dialog.isVisible());
    });
    // It has no event loop of its own any more.
    QVERIFY(!dialog.isVisible());
    QVERIFY(!window.findChild<QFrame*>("banner")->isVisible());
    QVERIFY(!QApplication::activeModalWidget());
    QVERIFY(window.close());
    window.removeModuleEntries();
}

void TestMainWindow::windowOfARunThatWasOnlyLeftStaysAway()
{
    SimulatedSystem system(shippedScenario("cascade"));
    RunMonitor runs;
    MainWindow window(system, false);
    window.followRuns(runs);
    window.show();
    QDialog dialog(&window);
    ModuleEntries module;
    module.first.content = &dialog;
    window.addModuleEntries(module.elements);
    inARunOf(dialog, runs, [&] { dialog.reject(); });
    QVERIFY(!dialog.isVisible());
    // Outside of a run its coming and going is nobody's matter.
    dialog.show();
    dialog.hide();
    QVERIFY(!window.findChild<QPushButton*>("pushButton_banner")->isVisible());
    window.removeModuleEntries();
}

void TestMainWindow::quittingWaitsForTheRun_data()
{
    QTest::addColumn<QString>("press");
    QTest::addColumn<bool>("quits");
    QTest::newRow("the user lets it be") << "&Do not quit" << false;
    QTest::newRow("the user has the frontend quit afterwards") << "&Quit when it is over" << true;
}

void TestMainWindow::quittingWaitsForTheRun()
{
    QFETCH(const QString, press);
    QFETCH(const bool, quits);
    SimulatedSystem system(shippedScenario("cascade"));
    RunMonitor runs;
    MainWindow window(system, false);
    window.followRuns(runs);
    window.show();
    QDialog dialog(&window);
    bool hasQuit = false;
    connect(qApp, &QCoreApplication::aboutToQuit, &window, [&] { hasQuit = true; });
    QTimer::singleShot(0, &window, [&] {
        inARunOf(dialog, runs, [&] {
            dialog.reject();
            actionWith(window, "&Quit")->trigger();
            QVERIFY(window.isVisible());
            auto* box = window.findChild<QMessageBox*>();
            QVERIFY(box->isVisible());
            QCOMPARE(box->windowTitle(), QString("Quit VORNIX3"));
            QCOMPARE(box->text(),
                     QString("An update is under way. The frontend does not quit before it is "
                             "over."));
            QCOMPARE(box->informativeText(), QString("Shall it quit by itself then?"));
            QCOMPARE(box->defaultButton()->text(), QString("&Do not quit"));
            for (QAbstractButton* button : box->buttons()) {
                if (button->text() == press)
                    button->click();
            }
            QVERIFY(window.isVisible());
            QVERIFY(!hasQuit);
        });
        // What was to come by a quit has come by now.
        QTimer::singleShot(0, &window, [] { QApplication::exit(17); });
    });
    QCOMPARE(QApplication::exec() == 0, quits);
    QVERIFY(hasQuit);
}

// As Qt does when the user is about to be logged out.
void TestMainWindow::desktopCannotCloseAllWindowsInARun()
{
    SimulatedSystem system(shippedScenario("cascade"));
    RunMonitor runs;
    MainWindow window(system, false);
    window.followRuns(runs);
    window.show();
    QDialog dialog(&window);
    inARunOf(dialog, runs, [&] {
        QApplication::closeAllWindows();
        QVERIFY(!dialog.isVisible());
        QVERIFY(window.isVisible());
        QCOMPARE(window.findChildren<QMessageBox*>().size(), 1);
    });
}

void TestMainWindow::questionGoesWithTheRun()
{
    SimulatedSystem system(shippedScenario("cascade"));
    RunMonitor runs;
    MainWindow window(system, false);
    window.followRuns(runs);
    window.show();
    QDialog dialog(&window);
    inARunOf(dialog, runs, [&] {
        dialog.reject();
        window.close();
        window.close(); // the question itself is in the way now
        QCOMPARE(window.findChildren<QMessageBox*>().size(), 1);
        QCOMPARE(window.statusBar()->currentMessage(),
                 QString("Please close the window \"Quit VORNIX3\" first."));
    });
    QCOMPARE(window.findChildren<QMessageBox*>().size(), 0);
    QVERIFY(window.close());
}

void TestMainWindow::boxesDoNotHoldUpARun()
{
    SimulatedSystem system(shippedScenario("cascade"));
    MainWindow window(system, false);
    window.show();
    actionWith(window, "&About")->trigger(); // returns at once
    auto* box = window.findChild<QMessageBox*>();
    QVERIFY(box->isVisible());
    QCOMPARE(box->windowTitle(), QString("About VORNIX3"));
    QCOMPARE(box->text(), QString("VORNIX3 demo frontend v3.3.0\n\n"));
    box->button(QMessageBox::Ok)->click();
    QTRY_VERIFY(!window.findChild<QMessageBox*>());
}

void TestMainWindow::dialogsOpenBelowTheEquipment()
{
    SimulatedSystem system(shippedScenario("single"));
    MainWindow window(system, false);
    window.resize(500, 300);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    auto* equipment = window.findChild<SystemView*>();
    const int below = equipment->mapToGlobal(QPoint(0, equipment->height())).y();

    QDialog dialog(&window);
    dialog.resize(300, 60);
    dialog.show();
    QVERIFY2(dialog.pos().y() >= below - 1, qPrintable(QString::number(dialog.pos().y())));
    dialog.hide();

    QDialog tall(&window);
    const QRect room = window.screen()->availableGeometry();
    tall.resize(300, room.height() - 10);
    tall.show();
    QVERIFY(room.contains(tall.geometry()));
    tall.hide();

    dialog.move(5, 6); // as a user would
    dialog.show();
    QCOMPARE(dialog.pos(), QPoint(5, 6));
}

void TestMainWindow::nothingIsCutOff_data()
{
    QTest::addColumn<bool>("isConnected");
    QTest::addColumn<bool>("isUpdating");
    QTest::newRow("connected") << true << false;
    QTest::newRow("waiting for power") << false << false;
    QTest::newRow("an update is under way") << true << true;
}

// Run at 100 %, 125 % and 150 %, of the scale and of the fonts.
void TestMainWindow::nothingIsCutOff()
{
    QFETCH(const bool, isConnected);
    QFETCH(const bool, isUpdating);
    SimulatedSystem system(shippedScenario("controllers-and-cameras"));
    RunMonitor runs;
    MainWindow window(system, true);
    window.followRuns(runs);
    if (isUpdating)
        runs.sent(Operation::SetValue, "system update 9 1 AB");
    system.armFault(Fault());
    system.shutDown();
    if (isConnected)
        window.showConnected("Model ZAN, tracking software v3.1.0, controller "
                             "firmware v1.2, command protocol v1.23");
    else
        window.showLost(QDateTime::currentDateTime());
    // 150 % of it fits on a screen of 1600 by 1000; larger fonts alone may ask for more.
    const QSize small(1013, 632);
    window.resize(small);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    const QSize expected = qEnvironmentVariableIsSet("QT_FONT_DPI")
                               ? small.expandedTo(window.minimumSizeHint())
                               : small;
    if (!isUpdating) // the banner needs room above all that there is
        QCOMPARE(window.size(), expected);
    QTRY_COMPARE(window.findChild<QPushButton*>("pushButton_faults")->text(),
                 QString("Fa&ults on demand (1 armed)..."));
    QTRY_COMPARE(cutTexts(window), QStringList()); // longer texts are laid out a moment later
}

void TestMainWindow::everythingIsReachedByKeyboard()
{
    SimulatedSystem system(shippedScenario("controllers-and-cameras"));
    MainWindow window(system, false);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    QSet<QWidget*> reached;
    for (int i = 0; i < 20; ++i) {
        QTest::keyClick(window.focusWidget() ? window.focusWidget() : &window, Qt::Key_Tab);
        reached.insert(window.focusWidget());
    }
    QVERIFY(reached.contains(&window.log()));
    QVERIFY(reached.contains(window.findChild<QWidget*>("tableView_cameras")));
    QVERIFY(reached.contains(window.findChild<QWidget*>("pushButton_powerCycleControllers")));
    for (const QWidget* widget : qAsConst(reached)) {
        const auto* button = qobject_cast<const QPushButton*>(widget);
        QVERIFY2(!widget->accessibleName().isEmpty() || (button && !button->text().isEmpty()),
                 widget->metaObject()->className());
    }
}

ZAN_WIDGET_TEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
