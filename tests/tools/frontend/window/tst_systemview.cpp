#include <simulatorfixtures.h>

#include <devicetables.h>
#include <remoteequipment.h>
#include <replayaccess.h>
#include <systemview.h>
#include <windowtexts.h>

#include <elsewhere.h>
#include <widgettestmain.h>

#include <QGroupBox>
#include <QPushButton>
#include <QTableView>

#include <memory>

namespace {

QStringList rowOf(const QAbstractItemModel& model, int row)
{
    QStringList texts;
    for (int column = 0; column < model.columnCount(); ++column)
        texts += model.index(row, column).data().toString();
    return texts;
}

QVariant progressOf(const QAbstractItemModel& model, int row)
{
    return model.index(row, model.columnCount() - 1).data(progressRole);
}

/// Equipment that cannot be reached.
struct NotAtHand
{
    RemoteEquipment equipment{Endpoint{QHostAddress(QHostAddress::LocalHost), 1},
                              shippedScenario("controllers-and-cameras")};
};

bool isGrey(const QTableView& table)
{
    const QBrush grey = QGuiApplication::palette().brush(QPalette::Disabled, QPalette::Text);
    for (int column = 0; column < table.model()->columnCount(); ++column) {
        const QVariant brush = table.model()->index(0, column).data(Qt::ForegroundRole);
        if (!brush.isValid() || brush.value<QBrush>() != grey)
            return false;
    }
    return true;
}

bool isAnyGrey(const SystemView& view)
{
    const auto tables = view.findChildren<QTableView*>();
    return std::any_of(tables.begin(), tables.end(),
                       [](const QTableView* table) { return isGrey(*table); });
}

QStringList titlesOf(const SystemView& view)
{
    QStringList titles;
    for (const QGroupBox* group : view.findChildren<QGroupBox*>())
        titles += group->title();
    return titles;
}

/// Each button with why it cannot be pressed, such as "Fa&ults on demand...: no" or "...: yes".
QStringList permissionsOf(const SystemView& view)
{
    QStringList texts;
    for (const QPushButton* button : view.findChildren<QPushButton*>())
        texts += QString("%1: %2").arg(button->text(),
                                       button->isEnabled() ? QString("yes") : button->toolTip());
    return texts;
}

} // namespace

class TestSystemView : public QObject
{
    Q_OBJECT

private slots:
    void controllerIsShownWithAllItIs();
    void receptionIsShownAsItGoes();
    void cameraIsShownWithAllItIs();
    void camerasTellWhatTheyNeed_data();
    void camerasTellWhatTheyNeed();
    void tablesFollowTheSystem();
    void selectedCamerasArePowerCycled();
    void controllersArePowerCycled();
    void withoutCamerasThereIsNoTableOfThem();
    void replayHasNoDevices();
    void whatMayBeOtherwiseByNowIsGrey();
    void whatIsNotAtHandIsOldAndCannotBeTouched();
    void handsAreKeptOffWithAReason_data();
    void handsAreKeptOffWithAReason();
};

void TestSystemView::controllerIsShownWithAllItIs()
{
    Scenario scenario = shippedScenario("cascade");
    scenario.controllers[1].hostName = "left";
    scenario.controllers[1].address = "10.0.0.2";
    scenario.controllers[1].modelDescription = "ZAN C9";
    scenario.controllers[1].serial = 4711;
    scenario.controllers[1].pt = "v3.1.0-beta.4 2024-02-29";
    scenario.controllers[1].ct = "v1.2";
    const SimulatedSystem system(scenario);
    const std::unique_ptr<QAbstractItemModel> table(makeControllerTable(system, nullptr));
    QCOMPARE(table->rowCount(), 3);
    QCOMPARE(rowOf(*table, 1), (QStringList{"left", "Slave", "10.0.0.2", "ZAN C9", "4711",
                                            "v3.1.0-beta.4", "v1.2", "", "Ready", ""}));
    QCOMPARE(rowOf(*table, 0).at(1), QString("Master"));
    QCOMPARE(table->index(1, 5).data(Qt::ToolTipRole).toString(),
             QString("v3.1.0-beta.4 2024-02-29"));
    QVERIFY(!progressOf(*table, 1).isValid());
}

void TestSystemView::receptionIsShownAsItGoes()
{
    SimulatedSite equipment("cascade");
    const std::unique_ptr<QAbstractItemModel> table(makeControllerTable(equipment.system, nullptr));
    const QList<QByteArray> records = recordTexts(trackingSoftware({3, 2, 0}, "-beta.2"));
    for (int i = 0; i < records.size() / 2; ++i)
        equipment.set("system update " + QByteArray::number(records.size()) + ' ' +
                      QByteArray::number(i + 1) + ' ' + records.at(i));
    QCOMPARE(rowOf(*table, 0).constLast(),
             QString("%L1 of %L2").arg(records.size() / 2).arg(records.size()));
    QCOMPARE(progressOf(*table, 0).toDouble(), double(records.size() / 2) / records.size());

    equipment.send("system update", trackingSoftware({3, 2, 0}, "-beta.2"));
    equipment.send("system ctupdt", controllerFirmware({1, 3}));
    QCOMPARE(rowOf(*table, 0).at(7), QString("Pt v3.2.0-beta.2, Ct v1.3"));
    QCOMPARE(rowOf(*table, 0).at(5), QString("v3.1.0"));
}

void TestSystemView::cameraIsShownWithAllItIs()
{
    Scenario scenario = shippedScenario("single");
    scenario.cameras = {{"0x0901", "C-1", "v1.3.0-rc.1", "Tracking camera T9"}};
    SimulatedSite equipment(scenario);
    const std::unique_ptr<QAbstractItemModel> table(makeCameraTable(equipment.system, nullptr));
    QCOMPARE(rowOf(*table, 0),
             (QStringList{"Tracking camera T9", "0x0901", "C-1", "v1.3.0-rc.1", "", "Ready", ""}));
    equipment.sendToCamera("c01", cameraFirmware({1, 4, 0}));
    QCOMPARE(rowOf(*table, 0).at(4), QString("v1.4.0"));
    QVERIFY(progressOf(*table, 0).toDouble() == 1.0);
}

void TestSystemView::camerasTellWhatTheyNeed_data()
{
    QTest::addColumn<bool>("isRunning");
    QTest::addColumn<bool>("isFound");
    QTest::addColumn<QString>("staged");
    QTest::addColumn<int>("need");
    QTest::newRow("one that is ready") << true << true << "" << int(DeviceNeed::Nothing);
    QTest::newRow("one that received an update")
        << true << true << "v1.4.0" << int(DeviceNeed::PowerCycle);
    QTest::newRow("one that was power-cycled")
        << true << false << "" << int(DeviceNeed::HardwareSearch);
    QTest::newRow("one that did not come back")
        << false << false << "v1.4.0" << int(DeviceNeed::Nothing);
}

void TestSystemView::camerasTellWhatTheyNeed()
{
    QFETCH(const bool, isRunning);
    QFETCH(const bool, isFound);
    QFETCH(const QString, staged);
    CameraState camera;
    camera.running = isRunning;
    camera.found = isFound;
    camera.stagedVersion = staged;
    const QVector<CameraState> cameras = {camera};
    const DeviceTable<CameraState> table(
        [&]() -> const QVector<CameraState>& { return cameras; },
        {{"Camera", "", [](const CameraState& it) { return it.serial; }, {}}}, nullptr);
    QTEST(table.data(table.index(0, 0), needRole).toInt(), "need");
}

void TestSystemView::tablesFollowTheSystem()
{
    SimulatedSystem system(shippedScenario("cascade"));
    SystemView view(system);
    view.show();
    const QAbstractItemModel* table = view.findChild<QTableView*>()->model();
    int changes = 0;
    connect(table, &QAbstractItemModel::dataChanged, this, [&] { ++changes; });
    for (int i = 0; i < 1000; ++i)
        system.setMeasuring(i % 2 == 0);
    QTRY_COMPARE(changes, 1);
}

void TestSystemView::selectedCamerasArePowerCycled()
{
    SimulatedSystem system(shippedScenario("cameras"));
    SystemView view(system);
    auto* table = view.findChild<QTableView*>("tableView_cameras");
    auto* button = view.findChild<QPushButton*>("pushButton_powerCycleCameras");
    QVERIFY(!button->isEnabled());
    table->selectRow(1);
    QVERIFY(button->isEnabled());
    button->click();
    QVERIFY(system.cameras().at(0).found);
    QVERIFY(!system.cameras().at(1).found);
    QVERIFY(system.cameras().at(2).found);
}

void TestSystemView::controllersArePowerCycled()
{
    SimulatedSystem system(shippedScenario("cascade"));
    SystemView view(system);
    view.findChild<QPushButton*>("pushButton_powerCycleControllers")->click();
    QVERIFY(!system.isReachable());
    QVERIFY(system.msUntilReachable() > 0);
}

void TestSystemView::withoutCamerasThereIsNoTableOfThem()
{
    SimulatedSystem system(shippedScenario("single"));
    const SystemView view(system);
    QVERIFY(!view.findChild<QTableView*>("tableView_cameras"));
}

void TestSystemView::replayHasNoDevices()
{
    ReplayAccess replay(Transcript{"visit.transcript", {{{}, {}, {}, {}}, false}, {}, 0});
    SystemView view(replay.equipment());
    view.show();
    QCOMPARE(windowTexts(view),
             QStringList{"A transcript is replayed; there are no devices to show."});
    QVERIFY(view.findChildren<QTableView*>().isEmpty());
    view.setLastAnswer(QDateTime::currentDateTime());
}

// The system is at hand, so that it is seen how it restarts; but nothing comes from its devices.
void TestSystemView::whatMayBeOtherwiseByNowIsGrey()
{
    SimulatedSystem system(shippedScenario("controllers-and-cameras"));
    SystemView view(system);
    QVERIFY(!isAnyGrey(view));
    view.setLastAnswer(QDateTime::currentDateTime());
    for (const QTableView* table : view.findChildren<QTableView*>())
        QVERIFY(isGrey(*table));
    QCOMPARE(titlesOf(view), (QStringList{"Controllers (simulated)", "Cameras (simulated)"}));
    view.setLastAnswer(QDateTime());
    QVERIFY(!isAnyGrey(view));
}

void TestSystemView::whatIsNotAtHandIsOldAndCannotBeTouched()
{
    const Elsewhere elsewhere("de_DE", "XXX-5:45");
    NotAtHand gone;
    SystemView view(gone.equipment);
    for (const QTableView* table : view.findChildren<QTableView*>())
        QVERIFY(isGrey(*table));
    QCOMPARE(titlesOf(view), (QStringList{"Controllers (simulated)", "Cameras (simulated)"}));
    view.setLastAnswer(QDateTime(QDate::currentDate(), QTime(14, 3, 22)));
    QCOMPARE(titlesOf(view), (QStringList{"Controllers (simulated) as they were at 14:03:22",
                                          "Cameras (simulated) as they were at 14:03:22"}));
}

void TestSystemView::handsAreKeptOffWithAReason_data()
{
    QTest::addColumn<bool>("isAtHand");
    QTest::addColumn<bool>("observer");
    QTest::addColumn<QString>("controllers");
    QTest::addColumn<QString>("camera");
    const QString gone = "The simulated system cannot be reached.";
    const QString observer = "An observer only looks on.";
    QTest::newRow("an operator may") << true << false << "yes"
                                     << "No camera is selected.";
    QTest::newRow("an observer may not") << true << true << observer << observer;
    QTest::newRow("nobody may who does not reach it") << false << false << gone << gone;
    QTest::newRow("an observer may not at all") << false << true << observer << observer;
}

void TestSystemView::handsAreKeptOffWithAReason()
{
    QFETCH(const bool, isAtHand);
    QFETCH(const bool, observer);
    QFETCH(const QString, controllers);
    QFETCH(const QString, camera);
    SimulatedSystem system(shippedScenario("controllers-and-cameras"));
    NotAtHand gone;
    SystemView view(isAtHand ? static_cast<Equipment&>(system) : gone.equipment, observer);
    QCOMPARE(permissionsOf(view), (QStringList{"Fa&ults on demand...: " + controllers,
                                               "Power-c&ycle the controllers: " + controllers,
                                               "&Power-cycle the selected cameras: " + camera}));
    view.findChild<QTableView*>("tableView_cameras")->selectRow(0);
    QCOMPARE(permissionsOf(view).constLast(), "&Power-cycle the selected cameras: " + controllers);
}

ZAN_WIDGET_TEST_MAIN(TestSystemView)
#include "tst_systemview.moc"
