#include "simulatorfixtures.h"

#include <testmain.h>

#include <QSignalSpy>

class TestSimulatedSystem : public QObject
{
    Q_OBJECT

private slots:
    void showsTheScenario();
    void restartTakesItsTime();
    void clockSetBackDoesNotProlongARestart();
    void restartEndsByItselfWhereEventsAreServed();
    void shutDownWaitsForPower();
    void powerCycleEndsWhatWasGoingOn();
    void showsWhatDevicesDo();
    void measuringIsSwitched();
    void powerCycleOfNoCameraDoesNothing();
};

void TestSimulatedSystem::showsTheScenario()
{
    const SimulatedSite equipment(QStringLiteral("slave-missing"));
    QCOMPARE(equipment.system.controllers().size(), 3);
    const ControllerState& left = equipment.controller(1);
    QCOMPARE(left.hostName, QStringLiteral("zan-left"));
    QCOMPARE(left.address, QStringLiteral("192.168.7.21"));
    QCOMPARE(left.model, 2);
    QCOMPARE(left.pt, QStringLiteral("v3.1.0 2025-03-14"));
    QCOMPARE(left.ct, QStringLiteral("v1.2"));
    QVERIFY(left.slave && left.available && !left.rebooting);
    QVERIFY(!equipment.controller(0).slave);
    QVERIFY(!equipment.controller(2).available);
}

void TestSimulatedSystem::restartTakesItsTime()
{
    SimulatedSite equipment(QStringLiteral("cascade"));
    QCOMPARE(equipment.system.msUntilReachable(), 0);
    equipment.system.restart();
    QVERIFY(equipment.controller(2).rebooting);
    QCOMPARE(equipment.system.msUntilReachable(), 8000);
    equipment.waitMs(7999);
    QVERIFY(!equipment.system.isReachable());
    QCOMPARE(equipment.system.msUntilReachable(), 1);
    equipment.waitMs(1);
    QVERIFY(equipment.system.isReachable());
    QVERIFY(!equipment.controller(2).rebooting);
}

void TestSimulatedSystem::clockSetBackDoesNotProlongARestart()
{
    SimulatedSite equipment(QStringLiteral("single"));
    equipment.system.restart();
    equipment.waitMs(-3600000);
    QCOMPARE(equipment.system.msUntilReachable(), 8000);
    equipment.waitMs(8000);
    QVERIFY(equipment.system.isReachable());
}

void TestSimulatedSystem::restartEndsByItselfWhereEventsAreServed()
{
    Scenario quick = shippedScenario(QStringLiteral("single"));
    quick.timing.bootMs = 20;
    SimulatedSystem system(quick);
    QSignalSpy changed(&system, &SimulatedSystem::changed);
    system.restart();
    QVERIFY(!system.isReachable());
    QTRY_VERIFY(system.isReachable());
    QCOMPARE(changed.count(), 2);
}

void TestSimulatedSystem::shutDownWaitsForPower()
{
    SimulatedSite equipment(QStringLiteral("single"));
    equipment.send("system update", trackingSoftware({3, 3, 0}));
    equipment.command("vornix2 system shutdown");
    equipment.waitMs(Q_INT64_C(86400000));
    QCOMPARE(equipment.system.msUntilReachable(), -1);
    QCOMPARE(equipment.controller(0).activity, QStringLiteral("No power"));
    QVERIFY(!equipment.controller(0).rebooting);
    equipment.system.powerCycle();
    equipment.waitMs(8000);
    QCOMPARE(equipment.getString("system version"), QByteArray("v3.3.0 2025-06-15"));
}

void TestSimulatedSystem::powerCycleEndsWhatWasGoingOn()
{
    SimulatedSite equipment(QStringLiteral("measuring"));
    QCOMPARE(equipment.system.measurement(), Measurement::Running);
    equipment.set("system redirect_update 192.168.7.21");
    equipment.system.powerCycle();
    equipment.bringUp();
    QCOMPARE(equipment.system.measurement(), Measurement::Off);
    QCOMPARE(equipment.system.updateTarget(), 0);
}

void TestSimulatedSystem::showsWhatDevicesDo()
{
    SimulatedSite equipment(QStringLiteral("controllers-and-cameras"));
    const auto controllerDoes = [&] {
        return equipment.controller(0).activity;
    };
    const auto cameraDoes = [&] {
        return equipment.system.cameras().at(0).activity;
    };
    QCOMPARE(controllerDoes(), QStringLiteral("Ready"));
    equipment.set("system update 2 1 AAAA");
    QCOMPARE(controllerDoes(), QStringLiteral("Receiving an update"));
    equipment.set("system update 2 1 A");
    QCOMPARE(controllerDoes(), QStringLiteral("Update refused: record is not 6-bit text"));
    equipment.set("system update 2 1 AAAA");
    equipment.command("vornix2 set camera update c01 2 1 AAAA");
    QCOMPARE(controllerDoes(), QStringLiteral("Update broken off: another device was addressed"));
    QCOMPARE(cameraDoes(), QStringLiteral("Receiving an update"));
    equipment.sendToCamera("c01", cameraFirmware({1, 4, 0}));
    QCOMPARE(cameraDoes(), QStringLiteral("Update received, waits for the power cycle"));
    equipment.system.powerCycleCamera(0);
    QCOMPARE(cameraDoes(), QStringLiteral("Waits for the search for hardware"));
    equipment.command("vornix2 reinit");
    QCOMPARE(cameraDoes(), QStringLiteral("Ready"));
    equipment.send("system ctupdt", controllerFirmware({1, 3}));
    QCOMPARE(controllerDoes(), QStringLiteral("Update received, waits for the restart"));
    equipment.command("vornix2 system reboot");
    QCOMPARE(controllerDoes(), QStringLiteral("Restarting"));
    equipment.bringUp();
    QCOMPARE(controllerDoes(), QStringLiteral("Ready"));
}

void TestSimulatedSystem::measuringIsSwitched()
{
    SimulatedSite equipment(QStringLiteral("single"));
    equipment.system.setMeasuring(true);
    QCOMPARE(equipment.system.measurement(), Measurement::Running);
    equipment.system.setMeasuring(false);
    QCOMPARE(equipment.system.measurement(), Measurement::Off);
    equipment.system.restart();
    equipment.system.setMeasuring(true);
    QCOMPARE(equipment.system.measurement(), Measurement::Off);

    SimulatedSite refusing(QStringLiteral("measurement-refuses"));
    refusing.system.setMeasuring(false);
    refusing.system.setMeasuring(true);
    QVERIFY(!refusing.system.stopMeasurement());
}

void TestSimulatedSystem::powerCycleOfNoCameraDoesNothing()
{
    SimulatedSite equipment(QStringLiteral("cameras"));
    const QSignalSpy changed(&equipment.system, &SimulatedSystem::changed);
    equipment.system.powerCycleCamera(-1);
    equipment.system.powerCycleCamera(4);
    QCOMPARE(changed.count(), 0);
}

ZAN_TEST_MAIN(TestSimulatedSystem)
#include "tst_simulatedsystem.moc"
