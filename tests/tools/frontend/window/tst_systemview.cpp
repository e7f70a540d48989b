#include <simulatorfixtures.h>

#include <devicetables.h>
#include <systemview.h>

#include <widgettestmain.h>

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

ZAN_WIDGET_TEST_MAIN(TestSystemView)
#include "tst_systemview.moc"
