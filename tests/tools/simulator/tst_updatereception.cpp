// Whole updates through the command language: what is staged, what runs after a restart, and what
// each fault leaves behind.

#include "simulatorfixtures.h"

#include <testmain.h>

#include <QSignalSpy>

namespace {

const VersionInfo pt32(3, 2, 0);
const VersionInfo ct13(1, 3);

} // namespace

class TestUpdateReception : public QObject
{
    Q_OBJECT

private slots:
    void versionRunsAfterTheRestartOnly();
    void redirectedUpdateReachesTheSlaveOnly();
    void chainLeavesTheNewestVersion();
    void wholeRunBringsACascadeUpToDate();
    void brokenBlockStagesNothing_data();
    void brokenBlockStagesNothing();
    void earlierBlockStaysStagedWhenALaterOneBreaks();
    void redirectionDropsAnUnfinishedBlock();
    void restartDropsAnUnfinishedBlock();
    void searchForHardwareDropsAnUnfinishedBlock();
    void measurementIsNotDisturbed();
    void missingSlaveDoesNotRestart();
    void emptyRecordIsARecord();
    void progressIsShownPerPercent();
    void cameraRunsItAfterThePowerCycleOnly();
    void cameraForgetsImagesBeforeABrokenOne();
    void powerCycleBreaksAnUnfinishedUpdate();
    void damagedCameraImageIsErrorMinus26();
    void cameraThatIsNotFoundTakesNothing();
    void everyFaultOfARunCanBeRepeatedAway_data();
    void everyFaultOfARunCanBeRepeatedAway();
    void everyFaultOfACameraCanBeRepeatedAway_data();
    void everyFaultOfACameraCanBeRepeatedAway();
    void faultGivesItsReply_data();
    void faultGivesItsReply();
    void lateAnswerIsOfWorkThatIsDone();
    void comesBackOld();
    void comesBackOldAfterAShutdown();
    void neverComesBack();
    void slaveThatNeverComesBackIsMissing();
    void cameraThatNeverComesBackIsNotFound();
};

void TestUpdateReception::versionRunsAfterTheRestartOnly()
{
    SimulatedSite equipment(QStringLiteral("single"));
    const Reply reply =
        equipment.send("system update", trackingSoftware(pt32, QStringLiteral("-beta.2")));
    QVERIFY(reply.ok);
    QCOMPARE(reply.text, QByteArray("vornix2 ok"));
    QCOMPARE(equipment.getString("system version"), QByteArray("v3.1.0 2025-03-14"));
    QCOMPARE(equipment.controller(0).stagedPt, QStringLiteral("v3.2.0-beta.2 2025-06-15"));

    equipment.command("vornix2 system reboot");
    equipment.waitMs(8000);
    QCOMPARE(equipment.getString("system version"), QByteArray("v3.2.0-beta.2 2025-06-15"));
    QCOMPARE(equipment.getString("system controller_version"), QByteArray("v1.2"));
    QCOMPARE(equipment.controller(0).stagedPt, QString());
}

void TestUpdateReception::redirectedUpdateReachesTheSlaveOnly()
{
    SimulatedSite equipment(QStringLiteral("cascade"));
    equipment.set("system redirect_update 192.168.7.22");
    QVERIFY(equipment.send("system ctupdt", controllerFirmware(ct13)).ok);
    equipment.command("vornix2 system reboot");
    equipment.bringUp();
    QCOMPARE(equipment.getString("system controller_version"), QByteArray("v1.2"));
    QCOMPARE(equipment.getString("system controller_version_slave 192.168.7.21"),
             QByteArray("v1.2"));
    QCOMPARE(equipment.getString("system controller_version_slave 192.168.7.22"),
             QByteArray("v1.3"));
    QCOMPARE(equipment.system.updateTarget(), 0);
}

void TestUpdateReception::chainLeavesTheNewestVersion()
{
    SimulatedSite equipment(QStringLiteral("single"));
    equipment.send("system update", trackingSoftware(pt32));
    equipment.send("system update", trackingSoftware({3, 3, 0}));
    equipment.command("vornix2 system reboot");
    equipment.bringUp();
    QCOMPARE(equipment.controller(0).pt, QStringLiteral("v3.3.0 2025-06-15"));
}

void TestUpdateReception::wholeRunBringsACascadeUpToDate()
{
    SimulatedSite equipment(QStringLiteral("cascade"));
    for (const QByteArray target : {"none", "192.168.7.21", "192.168.7.22"}) {
        QVERIFY(equipment.set("system redirect_update " + target).ok);
        QVERIFY(equipment.send("system update", trackingSoftware({3, 3, 0})).ok);
        QVERIFY(equipment.send("system ctupdt", controllerFirmware({1, 4})).ok);
    }
    QVERIFY(!allRun(equipment.system, {3, 3, 0}, {1, 4}));
    equipment.command("vornix2 system reboot");
    equipment.bringUp();
    QVERIFY(allRun(equipment.system, {3, 3, 0}, {1, 4}));
}

// Each row is what goes wrong with record 10 of the 24 of a block.
void TestUpdateReception::brokenBlockStagesNothing_data()
{
    QTest::addColumn<QByteArray>("record");
    const QByteArray text = QByteArray(160, 'A');
    const auto row = [](const char* name, const QByteArray& record) {
        QTest::newRow(name) << record;
    };
    row("left out", "");
    row("sent with another count", "system update 25 10 " + text);
    row("sent with another number", "system update 24 12 " + text);
    row("sent as firmware of the controller", "system ctupdt 24 10 " + text);
    row("not 6-bit text", "system update 24 10 AA=A");
    row("above 120 bytes", "system update 24 10 " + text + "AA");
    row("with other bytes", "system update 24 10 " + text);
    row("shorter", "system update 24 10 AAAA");
    row("without text", "system update 24 10");
    row("with a word too many", "system update 24 10 " + text + " A");
    row("with a negative number", "system update 24 -10 " + text);
    row("with a huge number", "system update 24 99999999999999999999 " + text);
    row("with a huge count", "system update 4294967320 10 " + text);
    row("with a number that is none", "system update 24 0x0a " + text);
    row("of 10 MB", "system update 24 10 " + QByteArray(10000000, 'A'));
}

void TestUpdateReception::brokenBlockStagesNothing()
{
    QFETCH(QByteArray, record);
    SimulatedSite equipment(QStringLiteral("single"));
    const QByteArray payload = trackingSoftware(pt32);
    const QList<QByteArray> texts = recordTexts(payload);
    QCOMPARE(texts.size(), 24);
    bool refused = false;
    for (int number = 1; number <= 24; ++number) {
        if (number == 10 && record.isEmpty())
            continue;
        const QByteArray good =
            "system update 24 " + QByteArray::number(number) + ' ' + texts.at(number - 1);
        const Reply reply = equipment.set(number == 10 ? record : good);
        if (!reply.ok)
            QVERIFY2(reply.text.startsWith("vornix2 err -10") ||
                         reply.text.startsWith("vornix2 err -26"),
                     reply.text);
        QVERIFY2(reply.ok || number >= 10, "a record before the broken one is refused");
        refused |= !reply.ok;
    }
    QVERIFY(refused);
    QCOMPARE(equipment.controller(0).stagedPt, QString());
    QCOMPARE(equipment.controller(0).stagedCt, QString());

    QVERIFY(equipment.send("system update", payload).ok);
    QCOMPARE(equipment.controller(0).stagedPt, QStringLiteral("v3.2.0 2025-06-15"));
}

void TestUpdateReception::earlierBlockStaysStagedWhenALaterOneBreaks()
{
    SimulatedSite equipment(QStringLiteral("single"));
    equipment.send("system update", trackingSoftware(pt32));
    QVERIFY(!equipment.send("system update", controllerFirmware(ct13)).ok);
    QCOMPARE(equipment.controller(0).stagedPt, QStringLiteral("v3.2.0 2025-06-15"));
    QCOMPARE(equipment.controller(0).stagedCt, QString());
}

void TestUpdateReception::redirectionDropsAnUnfinishedBlock()
{
    SimulatedSite equipment(QStringLiteral("cascade"));
    equipment.set("system update 3 1 AAAA");
    equipment.set("system redirect_update 192.168.7.21");
    QCOMPARE(equipment.set("system update 3 2 AAAA").text,
             QByteArray("vornix2 err -10 \"record 2 without a record 1 before it\""));
    equipment.set("system redirect_update none");
    QVERIFY(!equipment.set("system update 3 2 AAAA").ok);
}

void TestUpdateReception::restartDropsAnUnfinishedBlock()
{
    SimulatedSite equipment(QStringLiteral("single"));
    equipment.set("system update 3 1 AAAA");
    equipment.command("vornix2 system reboot");
    equipment.bringUp();
    QVERIFY(!equipment.set("system update 3 2 AAAA").ok);
    QCOMPARE(equipment.controller(0).recordsExpected, 0);
}

void TestUpdateReception::searchForHardwareDropsAnUnfinishedBlock()
{
    SimulatedSite equipment(QStringLiteral("single"));
    equipment.set("system update 3 1 AAAA");
    equipment.command("vornix2 reinit");
    QVERIFY(!equipment.set("system update 3 2 AAAA").ok);
}

void TestUpdateReception::missingSlaveDoesNotRestart()
{
    SimulatedSite equipment(QStringLiteral("cascade"));
    equipment.set("system redirect_update 192.168.7.21");
    equipment.send("system update", trackingSoftware(pt32));
    Fault fault;
    fault.mode = FaultMode::NeverComeBack;
    fault.device = QStringLiteral("zan-left");
    equipment.system.armFault(fault);
    equipment.command("vornix2 system reboot");
    equipment.bringUp();
    QCOMPARE(equipment.controller(1).pt, QStringLiteral("v3.1.0 2025-03-14"));
    equipment.system.powerCycle();
    equipment.bringUp();
    QCOMPARE(equipment.controller(1).pt, QStringLiteral("v3.2.0 2025-06-15"));
}

void TestUpdateReception::measurementIsNotDisturbed()
{
    SimulatedSite equipment(QStringLiteral("controllers-and-cameras"));
    equipment.system.setMeasuring(true);
    const QByteArray refusal = "vornix2 err -3 \"a measurement runs\"";
    QCOMPARE(equipment.send("system update", trackingSoftware(pt32)).text, refusal);
    QCOMPARE(equipment.sendToCamera("c01", cameraFirmware({1, 4, 0})).text, refusal);
    equipment.command("vornix2 tracking stop");
    QVERIFY(equipment.send("system update", trackingSoftware(pt32)).ok);
}

void TestUpdateReception::emptyRecordIsARecord()
{
    SimulatedSite equipment(QStringLiteral("single"));
    QVERIFY(equipment.set("system update 3 1 ").ok);
    QVERIFY(equipment.set("system update 3 2 AAAA").ok);
}

void TestUpdateReception::progressIsShownPerPercent()
{
    SimulatedSite equipment(QStringLiteral("single"));
    const QSignalSpy changed(&equipment.system, &SimulatedSystem::changed);
    for (int number = 1; number <= 20000; ++number)
        equipment.set("system update 40000 " + QByteArray::number(number) + " AAAA");
    QCOMPARE(changed.count(), 51);
    QCOMPARE(equipment.controller(0).recordsReceived, 20000);
    QCOMPARE(equipment.controller(0).recordsExpected, 40000);
    QCOMPARE(equipment.controller(0).activity, QStringLiteral("Receiving an update"));
}

void TestUpdateReception::cameraRunsItAfterThePowerCycleOnly()
{
    SimulatedSite equipment(QStringLiteral("cameras"));
    const Reply reply = equipment.sendToCamera("c02", cameraFirmware({1, 4, 0}));
    QCOMPARE(reply.text, QByteArray("vornix2 ok"));
    equipment.command("vornix2 system reboot");
    equipment.bringUp();
    QCOMPARE(equipment.getString("camera version c02"), QByteArray("v1.3.0"));

    equipment.system.powerCycleCamera(1);
    QCOMPARE(equipment.getString("camera version c02"),
             QByteArray("failed: vornix2 err -2 \"no such device\""));
    equipment.command("vornix2 reinit");
    QCOMPARE(equipment.getString("camera version c02"), QByteArray("v1.4.0"));
    QCOMPARE(equipment.getString("camera version c01"), QByteArray("v1.3.0"));
}

void TestUpdateReception::cameraForgetsImagesBeforeABrokenOne()
{
    SimulatedSite equipment(QStringLiteral("cameras"));
    equipment.sendToCamera("c01", cameraFirmware({1, 4, 0}));
    QCOMPARE(equipment.system.cameras().at(0).stagedVersion, QStringLiteral("v1.4.0"));
    equipment.command("vornix2 set camera update c01 3 2 AAAA");
    QCOMPARE(equipment.system.cameras().at(0).stagedVersion, QString());
}

void TestUpdateReception::powerCycleBreaksAnUnfinishedUpdate()
{
    SimulatedSite equipment(QStringLiteral("cameras"));
    equipment.sendToCamera("c01", cameraFirmware({1, 4, 0}));
    equipment.command("vornix2 set camera update c01 3 1 AAAA");
    equipment.system.powerCycleCamera(1);
    QVERIFY(isTaken(equipment.command("vornix2 set camera update c01 3 2 AAAA")));
    equipment.system.powerCycleCamera(0);
    QCOMPARE(equipment.system.cameras().at(0).version, QStringLiteral("v1.3.0"));
}

void TestUpdateReception::damagedCameraImageIsErrorMinus26()
{
    SimulatedSite equipment(QStringLiteral("cameras"));
    QByteArray damaged = cameraFirmware({1, 4, 0});
    damaged[500] = static_cast<char>(damaged[500] ^ 1);
    QCOMPARE(equipment.sendToCamera("c01", damaged).text,
             QByteArray("vornix2 err -26 \"payload checksum is wrong\""));
    QCOMPARE(equipment.command("vornix2 set camera update c01 3 2 AAAA").text,
             QByteArray("vornix2 err -10 \"record 2 without a record 1 before it\""));
    QCOMPARE(equipment.sendToCamera("c01", trackingSoftware(pt32)).text,
             QByteArray("vornix2 err -26 \"payload is for another component\""));
}

void TestUpdateReception::cameraThatIsNotFoundTakesNothing()
{
    SimulatedSite equipment(QStringLiteral("cameras"));
    equipment.system.powerCycleCamera(0);
    for (const QByteArray camera : {"c01", "c05", "c99"})
        QCOMPARE(equipment.sendToCamera(camera, cameraFirmware({1, 4, 0})).text,
                 QByteArray("vornix2 err -2 \"no such device\""));
}

namespace {

void addFaultModes()
{
    QTest::addColumn<FaultMode>("mode");
    for (const FaultModeInfo& info : faultModes())
        QTest::newRow(qPrintable(info.name)) << info.mode;
}

void arm(SimulatedSite* equipment, FaultMode mode)
{
    Fault fault;
    fault.mode = mode;
    equipment->system.armFault(fault);
}

} // namespace

void TestUpdateReception::everyFaultOfARunCanBeRepeatedAway_data()
{
    addFaultModes();
}

void TestUpdateReception::everyFaultOfARunCanBeRepeatedAway()
{
    QFETCH(FaultMode, mode);
    SimulatedSite equipment(QStringLiteral("single"));
    arm(&equipment, mode);
    int runs = 0;
    while (!allRun(equipment.system, pt32, {1, 2}) && runs < 2) {
        equipment.send("system update", trackingSoftware(pt32));
        equipment.command("vornix2 system reboot");
        equipment.bringUp();
        ++runs;
    }
    QVERIFY(equipment.system.armedFaults().isEmpty());
    // What the device received in full is not lost with its answer.
    const bool firstRunWorks = mode == FaultMode::AnswerLate || mode == FaultMode::NeverComeBack;
    QCOMPARE(runs, firstRunWorks ? 1 : 2);
    QVERIFY(allRun(equipment.system, pt32, {1, 2}));
}

void TestUpdateReception::everyFaultOfACameraCanBeRepeatedAway_data()
{
    addFaultModes();
}

void TestUpdateReception::everyFaultOfACameraCanBeRepeatedAway()
{
    QFETCH(FaultMode, mode);
    SimulatedSite equipment(QStringLiteral("cameras"));
    arm(&equipment, mode);
    for (int run = 0; run < 2; ++run) {
        equipment.sendToCamera("c01", cameraFirmware({1, 4, 0}));
        equipment.bringUp();
        equipment.system.powerCycleCamera(0);
        equipment.command("vornix2 reinit");
    }
    equipment.system.powerCycleCamera(0);
    equipment.command("vornix2 reinit");
    QVERIFY(equipment.system.armedFaults().isEmpty());
    QCOMPARE(equipment.getString("camera version c01"), QByteArray("v1.4.0"));
}

void TestUpdateReception::faultGivesItsReply_data()
{
    QTest::addColumn<FaultMode>("mode");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("delivery");
    QTest::addColumn<int>("received");
    const auto row = [](FaultMode mode, const QByteArray& text, Delivery delivery, int received) {
        QTest::newRow(qPrintable(faultModeInfo(mode).name))
            << mode << text << static_cast<int>(delivery) << received;
    };
    row(FaultMode::RefuseRecord, "vornix2 err -20 \"refused on demand\"", Delivery::Answered, 11);
    row(FaultMode::RefuseWithCameraError, "vornix2 err -26", Delivery::Answered, 11);
    row(FaultMode::RefuseWithQuotedCameraError, "vornix2 err \"-26\"", Delivery::Answered, 11);
    row(FaultMode::DropConnection, "", Delivery::ConnectionLost, 11);
    row(FaultMode::StaySilent, "", Delivery::Silent, 23);
    row(FaultMode::LosePower, "", Delivery::ConnectionLost, 11);
}

void TestUpdateReception::faultGivesItsReply()
{
    QFETCH(FaultMode, mode);
    SimulatedSite equipment(QStringLiteral("cameras"));
    arm(&equipment, mode);
    const Reply reply = equipment.sendToCamera("c01", cameraFirmware({1, 4, 0}));
    QTEST(reply.text, "text");
    QTEST(static_cast<int>(reply.delivery), "delivery");
    QCOMPARE(reply.ok, reply.delivery == Delivery::Answered);
    QTEST(equipment.system.cameras().at(0).recordsReceived, "received");
    QCOMPARE(equipment.system.cameras().at(0).stagedVersion, QString());
    QCOMPARE(equipment.system.isReachable(), mode != FaultMode::LosePower);
}

void TestUpdateReception::lateAnswerIsOfWorkThatIsDone()
{
    SimulatedSite equipment(QStringLiteral("single"));
    arm(&equipment, FaultMode::AnswerLate);
    const Reply reply = equipment.send("system update", trackingSoftware(pt32));
    QVERIFY(reply.ok);
    QVERIFY(reply.deviceMs > 120000);
    QCOMPARE(equipment.controller(0).stagedPt, QStringLiteral("v3.2.0 2025-06-15"));
}

void TestUpdateReception::comesBackOld()
{
    SimulatedSite equipment(QStringLiteral("cascade"));
    Fault fault;
    fault.mode = FaultMode::ComeBackOld;
    fault.device = QStringLiteral("zan-left");
    equipment.system.armFault(fault);
    for (const QByteArray target : {"none", "192.168.7.21", "192.168.7.22"}) {
        equipment.set("system redirect_update " + target);
        equipment.send("system update", trackingSoftware({3, 3, 0}));
    }
    equipment.command("vornix2 system reboot");
    equipment.bringUp();
    QCOMPARE(equipment.controller(0).pt, QStringLiteral("v3.3.0 2025-06-15"));
    QCOMPARE(equipment.controller(1).pt, QStringLiteral("v3.1.0 2025-03-14"));
    QCOMPARE(equipment.controller(2).pt, QStringLiteral("v3.3.0 2025-06-15"));
}

void TestUpdateReception::comesBackOldAfterAShutdown()
{
    SimulatedSite equipment(QStringLiteral("single"));
    arm(&equipment, FaultMode::ComeBackOld);
    equipment.send("system update", trackingSoftware(pt32));
    equipment.command("vornix2 system shutdown");
    equipment.bringUp();
    QCOMPARE(equipment.controller(0).pt, QStringLiteral("v3.1.0 2025-03-14"));
}

void TestUpdateReception::neverComesBack()
{
    SimulatedSite equipment(QStringLiteral("single"));
    arm(&equipment, FaultMode::NeverComeBack);
    equipment.command("vornix2 system reboot");
    QCOMPARE(equipment.system.msUntilReachable(), -1);
    equipment.waitMs(Q_INT64_C(3600000));
    QVERIFY(!equipment.system.isReachable());
    equipment.system.powerCycle();
    QCOMPARE(equipment.system.msUntilReachable(), 8000);
    equipment.waitMs(8000);
    QVERIFY(equipment.system.isReachable());
}

void TestUpdateReception::slaveThatNeverComesBackIsMissing()
{
    SimulatedSite equipment(QStringLiteral("cascade"));
    Fault fault;
    fault.mode = FaultMode::NeverComeBack;
    fault.device = QStringLiteral("zan-right");
    equipment.system.armFault(fault);
    equipment.command("vornix2 system reboot");
    equipment.waitMs(8000);
    const QByteArray query = "cascade connected_slave_available 192.168.7.22";
    QCOMPARE(equipment.getString(query), QByteArray("no"));
    equipment.system.powerCycle();
    equipment.bringUp();
    QCOMPARE(equipment.getString(query), QByteArray("yes"));
}

void TestUpdateReception::cameraThatNeverComesBackIsNotFound()
{
    SimulatedSite equipment(QStringLiteral("cameras"));
    arm(&equipment, FaultMode::NeverComeBack);
    equipment.system.powerCycleCamera(0);
    equipment.command("vornix2 reinit");
    QVERIFY(!equipment.system.cameras().at(0).found);
    QVERIFY(equipment.system.isReachable());
    equipment.system.powerCycleCamera(0);
    equipment.command("vornix2 reinit");
    QVERIFY(equipment.system.cameras().at(0).found);
}

ZAN_TEST_MAIN(TestUpdateReception)
#include "tst_updatereception.moc"
