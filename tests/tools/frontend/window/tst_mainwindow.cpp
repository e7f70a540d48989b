#include <simulatorfixtures.h>

#include <connectionpanel.h>
#include <logview.h>
#include <mainwindow.h>
#include <systemview.h>

#include <cuttexts.h>
#include <widgettestmain.h>

#include <QAction>
#include <QCloseEvent>
#include <QDialog>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QStatusBar>

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

} // namespace

class TestMainWindow : public QObject
{
    Q_OBJECT

private slots:
    void titleTellsVersionAndScenario();
    void moduleEntriesStandAmongTheFrontends();
    void measurementForbidsSomeEntries();
    void observerOnlyLooksOn();
    void hardwareIsSearchedForBetweenMeasurements();
    void measurementIsStartedAndStopped();
    void themeReallyChanges();
    void themeIsTold();
    void windowStaysOpenBehindADialog();
    void dialogsOpenBelowTheEquipment();
    void nothingIsCutOff_data();
    void nothingIsCutOff();
    void everythingIsReachedByKeyboard();
};

void TestMainWindow::titleTellsVersionAndScenario()
{
    SimulatedSystem system(shippedScenario("cascade"));
    const MainWindow window(system, false);
    QCOMPARE(window.windowTitle(), "VORNIX3 v3.3.0 - " + system.scenario().title);
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
    QTest::newRow("connected") << true;
    QTest::newRow("waiting for power") << false;
}

// Run at 100 %, 125 % and 150 %, of the scale and of the fonts.
void TestMainWindow::nothingIsCutOff()
{
    QFETCH(const bool, isConnected);
    SimulatedSystem system(shippedScenario("controllers-and-cameras"));
    MainWindow window(system, true);
    system.armFault(Fault());
    system.shutDown();
    if (isConnected)
        window.connection().showConnected("Model ZAN, tracking software v3.1.0, controller "
                                          "firmware v1.2, command protocol v1.23");
    else
        window.connection().showWaiting();
    // 150 % of it fits on a screen of 1600 by 1000; larger fonts alone may ask for more.
    const QSize small(1013, 632);
    window.resize(small);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    if (qEnvironmentVariableIsSet("QT_FONT_DPI"))
        QCOMPARE(window.size(), small.expandedTo(window.minimumSizeHint()));
    else
        QCOMPARE(window.size(), small);
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
