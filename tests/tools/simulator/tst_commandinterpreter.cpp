#include "commandinterpreter.h"
#include "simulatorfixtures.h"

#include <testmain.h>

#include <sys/resource.h>

namespace {

const QByteArray unknown = "vornix2 err -1 \"unknown text\"";
const QByteArray noDevice = "vornix2 err -2 \"no such device\"";

} // namespace

class TestCommandInterpreter : public QObject
{
    Q_OBJECT

private slots:
    void answersQueries_data();
    void answersQueries();
    void answersNumbers_data();
    void answersNumbers();
    void followsTheProtocol_data();
    void followsTheProtocol();
    void refusesAnyOtherText_data();
    void refusesAnyOtherText();
    void endlessTextTakesNoMemory();
    void redirectsToKnownControllersOnly_data();
    void redirectsToKnownControllersOnly();
    void stopsAMeasurement_data();
    void stopsAMeasurement();
    void searchForHardwareTakesItsTime();
    void answersNothingWhileItIsDown_data();
    void answersNothingWhileItIsDown();
    void notesTheEndOfARestartByItself();
    void timesOfRecordsAddUpToTheStream();
    void lastRecordTakesTheTimeOfTheCheck();
    void faultAtARequest_data();
    void faultAtARequest();
    void longValueIsCutToWhatAHostHasRoomFor();
};

namespace {

// Two controllers that are there, one that is not, three cameras.
Scenario scenario()
{
    Scenario scenario = shippedScenario(QStringLiteral("slave-missing"));
    scenario.controllers[1].pt = QStringLiteral("v3.2.0-beta.2 2025-06-20");
    scenario.controllers[1].model = 3;
    scenario.controllers[1].modelDescription = QStringLiteral("ZAN Größe 3");
    scenario.cameras = {{"0x0901", "C-1", "v1.3.0-rc.1", "Camera T9"},
                        {"0x0c01", "C-2", "v2.0.0", "Kamera Köln"},
                        {"0x0901", "C-3", "v1.4.0", "Camera T9"}};
    return scenario;
}

} // namespace

void TestCommandInterpreter::answersQueries_data()
{
    QTest::addColumn<QByteArray>("value");
    const auto row = [](const char* text, const QByteArray& value) {
        QTest::newRow(text) << value;
    };
    row("system hostname", "zan-master");
    row("system hostname_slave 192.168.7.21", "zan-left");
    row("system hostname_slave 192.168.7.22", "failed: " + noDevice);
    row("system hostname_slave 192.168.7.20", "failed: " + noDevice);
    row("system hostname_slave 10.9.8.7", "failed: " + noDevice);
    row("system controller_version", "v1.2");
    row("system controller_version_slave 192.168.7.21", "v1.2");
    row("system version", "v3.1.0 2025-03-14");
    row("system version_slave 192.168.7.21", "v3.2.0-beta.2 2025-06-20");
    row("system model_description", "\"ZAN C2\"");
    row("system model_description_slave 192.168.7.21", "\"ZAN Gr\xc3\xb6\xc3\x9f"
                                                       "e 3\"");
    row("system extra motherboard", "\"FUJITSU D3231-S1\"");
    row("system extra hardware h1", "\"Trigger box TB2, serial 1180\"");
    row("system extra hardware h2", "\"Synchronisation board SY1, serial 2207\"");
    row("system extra hardware h0", "failed: " + noDevice);
    row("system extra hardware h3", "failed: " + noDevice);
    row("system net", "static");
    row("status active", "idle");
    row("cascade connected_slave d01", "192.168.7.21");
    row("cascade connected_slave d02", "192.168.7.22");
    row("cascade connected_slave d00", "failed: " + noDevice);
    row("cascade connected_slave d03", "failed: " + noDevice);
    row("cascade connected_slave d1", "failed: " + noDevice);
    row("cascade connected_slave_available 192.168.7.21", "yes");
    row("cascade connected_slave_available 192.168.7.22", "no");
    row("cascade connected_slave_available 192.168.7.23", "failed: " + noDevice);
    row("cascade connected_slave_controller 192.168.7.21", "zan-left 732");
    row("cascade connected_slave_controller 192.168.7.22", "failed: " + noDevice);
    row("cascade wol_slaves", "no");
    row("camera camera c01", "0x0901 C-1");
    row("camera camera c02", "0x0c01 C-2");
    row("camera camera c00", "failed: " + noDevice);
    row("camera camera c04", "failed: " + noDevice);
    row("camera camera c1", "failed: " + noDevice);
    row("camera camera c99999999999", "failed: " + noDevice);
    row("camera version c01", "v1.3.0-rc.1");
    row("camera version c03", "v1.4.0");
    row("camera model_desc 0x0901", "\"Camera T9\"");
    row("camera model_desc 0x0c01", "\"Kamera K\xf6ln\"");
    row("camera model_desc 0x0e01", "failed: " + noDevice);
}

void TestCommandInterpreter::answersQueries()
{
    SimulatedSite equipment(scenario());
    QTEST(equipment.getString(QTest::currentDataTag()), "value");
}

void TestCommandInterpreter::answersNumbers_data()
{
    QTest::addColumn<int>("number");
    QTest::newRow("system model") << 2;
    QTest::newRow("system model_slave 192.168.7.21") << 3;
    QTest::newRow("system controller_serial") << 731;
    QTest::newRow("cascade number_of_connected_slaves") << 2;
    QTest::newRow("system extra number_of_hardware") << 2;
    QTest::newRow("camera number_of_cameras") << 3;
    QTest::newRow("system hostname") << -1;
    QTest::newRow("system speed") << -1;
}

void TestCommandInterpreter::answersNumbers()
{
    QFETCH(int, number);
    SimulatedSite equipment(scenario());
    const Reply reply = equipment.interpreter.execute(Operation::GetInt, QTest::currentDataTag());
    QCOMPARE(reply.ok, number >= 0);
    QCOMPARE(reply.integer, qMax(0, number));
}

void TestCommandInterpreter::followsTheProtocol_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<VersionInfo>("since");
    const auto row = [](Operation operation, const char* text, const VersionInfo& since) {
        QTest::newRow(text) << operation << QByteArray(text) << since;
    };
    row(Operation::GetString, "system extra motherboard", {0, 15});
    row(Operation::GetInt, "system extra number_of_hardware", {0, 17});
    row(Operation::GetString, "system extra hardware h1", {0, 17});
    row(Operation::GetInt, "system controller_serial", {1, 7});
    row(Operation::GetInt, "cascade number_of_connected_slaves", {1, 7});
    row(Operation::GetString, "cascade connected_slave d01", {1, 7});
    row(Operation::GetString, "cascade connected_slave_available 192.168.7.21", {1, 7});
    row(Operation::GetString, "cascade connected_slave_controller 192.168.7.21", {1, 7});
    row(Operation::GetString, "system hostname_slave 192.168.7.21", {1, 7});
    row(Operation::GetString, "system version_slave 192.168.7.21", {1, 7});
    row(Operation::GetString, "system controller_version_slave 192.168.7.21", {1, 7});
    row(Operation::SetValue, "system redirect_update none", {1, 7});
    row(Operation::SetValue, "system redirect_update 192.168.7.21", {1, 7});
    row(Operation::GetInt, "system model_slave 192.168.7.21", {1, 23});
    row(Operation::GetString, "system model_description_slave 192.168.7.21", {1, 23});
    row(Operation::GetString, "system hostname", {0, 0});
    row(Operation::GetInt, "system model", {0, 0});
    row(Operation::GetString, "cascade wol_slaves", {0, 0});
}

void TestCommandInterpreter::followsTheProtocol()
{
    QFETCH(Operation, operation);
    QFETCH(QByteArray, text);
    QFETCH(VersionInfo, since);
    for (const VersionInfo& protocol :
         {VersionInfo(0, 0), VersionInfo(0, 14, 9), VersionInfo(0, 15), VersionInfo(0, 16),
          VersionInfo(0, 17), VersionInfo(1, 6, 9), VersionInfo(1, 7), VersionInfo(1, 22),
          VersionInfo(1, 23), VersionInfo(2, 0)}) {
        Scenario spoken = scenario();
        spoken.protocol = protocol;
        SimulatedSite equipment(spoken);
        const Reply reply = equipment.interpreter.execute(operation, text);
        QCOMPARE(reply.ok, protocol >= since);
        QVERIFY(reply.ok || reply.text == unknown);
    }
}

void TestCommandInterpreter::refusesAnyOtherText_data()
{
    QTest::addColumn<QByteArray>("text");
    const auto row = [](const char* name, const QByteArray& text) {
        QTest::newRow(name) << text;
    };
    row("no text", "");
    row("a blank", " ");
    row("blanks", QByteArray(500, ' '));
    row("NUL bytes", QByteArray(20, '\0'));
    row("a NUL byte behind a query", QByteArray("system hostname\0", 16));
    row("a NUL byte inside a query", QByteArray("system\0hostname", 15));
    row("a line end behind a query", "system hostname\n");
    row("a blank behind a query", "system hostname ");
    row("two blanks in a query", "system  hostname");
    row("capital letters", "SYSTEM HOSTNAME");
    row("Latin-1", "system hostn\xe4me");
    row("UTF-8", "system h\xc3\xb6stname");
    row("the first word of a query", "system");
    row("a slave's query without address", "system hostname_slave");
    row("a camera's query without number", "camera camera");
    row("a query of another verb", "vornix2 hostname");
    row("a command of another verb", "vornix2 system format");
    row("a command with more behind it", "vornix2 reinit now");
    row("a command in other letters", "Vornix2 reinit");
    row("a redirection without target", "system redirect_update");
    row("a record without kind", "system  2 1 AAAA");
    row("a camera's record for no camera", "vornix2 set camera update c 2 1 AAAA");
    row("a camera's record for camera 0", "vornix2 set camera update c00 2 1 AAAA");
    row("1025 bytes", QByteArray(1025, 'x'));
    row("10 MB without a blank", QByteArray(10000000, 'x'));
    row("10 MB of blanks", QByteArray(10000000, ' '));
    row("10 MB that begin like a query", "system hostname_slave " + QByteArray(10000000, '1'));
}

// By whatever operation it comes, it gets an error reply, and the devices answer on.
void TestCommandInterpreter::refusesAnyOtherText()
{
    QFETCH(QByteArray, text);
    SimulatedSite equipment(scenario());
    for (const Operation operation :
         {Operation::GetString, Operation::GetInt, Operation::SetValue, Operation::Command}) {
        const Reply reply = equipment.interpreter.execute(operation, text);
        QVERIFY2(reply.text.startsWith("vornix2 err -"), reply.text);
        QCOMPARE(reply.ok, operation == Operation::Command);
        QCOMPARE(reply.delivery, Delivery::Answered);
    }
    QCOMPARE(equipment.getString("system hostname"), QByteArray("zan-master"));
}

namespace {

// The most memory that this process has had so far.
long peakKilobytes()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

} // namespace

void TestCommandInterpreter::endlessTextTakesNoMemory()
{
    SimulatedSite equipment(scenario());
    const QByteArray text = "system update 2 1 " + QByteArray(10000000, ' ');
    const long before = peakKilobytes();
    QCOMPARE(equipment.set(text).text, QByteArray("vornix2 err -10 \"no such record in a block\""));
    QVERIFY(peakKilobytes() - before < 1000);
}

void TestCommandInterpreter::redirectsToKnownControllersOnly_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<int>("target");
    QTest::newRow("none") << QByteArray("vornix2 ok") << 0;
    QTest::newRow("192.168.7.21") << QByteArray("vornix2 ok") << 1;
    QTest::newRow("192.168.7.22") << noDevice << 0;
    QTest::newRow("192.168.7.20") << noDevice << 0;
    QTest::newRow("192.168.7.21 ") << noDevice << 0;
    QTest::newRow("") << noDevice << 0;
}

void TestCommandInterpreter::redirectsToKnownControllersOnly()
{
    SimulatedSite equipment(scenario());
    const Reply reply =
        equipment.set(QByteArray("system redirect_update ") + QTest::currentDataTag());
    QTEST(reply.text, "reply");
    QCOMPARE(reply.ok, reply.text == "vornix2 ok");
    QTEST(equipment.system.updateTarget(), "target");
}

void TestCommandInterpreter::stopsAMeasurement_data()
{
    QTest::addColumn<Measurement>("measurement");
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QByteArray>("after");
    const QByteArray ok("vornix2 ok");
    QTest::newRow("none") << Measurement::Off << QByteArray("idle") << ok << QByteArray("idle");
    QTest::newRow("one that stops")
        << Measurement::Running << QByteArray("mea") << ok << QByteArray("idle");
    QTest::newRow("one that refuses")
        << Measurement::Unstoppable << QByteArray("mea")
        << QByteArray("vornix2 err -3 \"the measurement does not stop\"") << QByteArray("mea");
}

void TestCommandInterpreter::stopsAMeasurement()
{
    QFETCH(Measurement, measurement);
    Scenario measuring = scenario();
    measuring.measurement = measurement;
    SimulatedSite equipment(measuring);
    QTEST(equipment.getString("status active"), "before");
    QTEST(equipment.command("vornix2 tracking stop").text, "reply");
    QTEST(equipment.getString("status active"), "after");
}

void TestCommandInterpreter::searchForHardwareTakesItsTime()
{
    SimulatedSite equipment(scenario());
    const Reply reply = equipment.command("vornix2 reinit");
    QCOMPARE(reply.text, QByteArray("vornix2 ok"));
    QCOMPARE(reply.deviceMs, 5000);
}

void TestCommandInterpreter::answersNothingWhileItIsDown_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::newRow("restarting") << QByteArray("vornix2 system reboot");
    QTest::newRow("shut down") << QByteArray("vornix2 system shutdown");
}

void TestCommandInterpreter::answersNothingWhileItIsDown()
{
    QFETCH(QByteArray, command);
    SimulatedSite equipment(scenario());
    QCOMPARE(equipment.command(command).text, QByteArray("vornix2 ok"));
    equipment.waitMs(7999);
    for (const Operation operation :
         {Operation::GetString, Operation::GetInt, Operation::SetValue, Operation::Command}) {
        for (const QByteArray text : {"system hostname", "system model", "vornix2 reinit", ""}) {
            const Reply reply = equipment.interpreter.execute(operation, text);
            QVERIFY(!reply.ok);
            QCOMPARE(reply.text, QByteArray());
            QCOMPARE(reply.delivery, Delivery::ConnectionLost);
        }
    }
    equipment.bringUp();
    QCOMPARE(equipment.getString("system hostname"), QByteArray("zan-master"));
}

void TestCommandInterpreter::notesTheEndOfARestartByItself()
{
    SimulatedSite equipment(scenario());
    equipment.command("vornix2 system reboot");
    equipment.nowMs += 8000;
    QCOMPARE(equipment.getString("system hostname"), QByteArray("zan-master"));
}

void TestCommandInterpreter::timesOfRecordsAddUpToTheStream()
{
    SimulatedSite equipment(scenario());
    int streamMs = 0;
    for (int number = 1; number <= 2750; ++number)
        streamMs += equipment
                        .set("system update 5000 " + QByteArray::number(number) +
                             " A"
                             "A")
                        .deviceMs;
    QCOMPARE(streamMs, 1000);
}

void TestCommandInterpreter::lastRecordTakesTheTimeOfTheCheck()
{
    Scenario timed = scenario();
    timed.timing.recordsPerSecond = 0;
    timed.timing.cameraRecordsPerSecond = 0;
    timed.timing.verifyMs = 3000;
    timed.timing.cameraVerifyMs = 9000;
    SimulatedSite equipment(timed);
    QCOMPARE(equipment.send("system ctupdt", controllerFirmware({1, 3})).deviceMs, 3000);
    QCOMPARE(equipment.sendToCamera("c01", cameraFirmware({1, 4, 0})).deviceMs, 9000);
}

void TestCommandInterpreter::faultAtARequest_data()
{
    QTest::addColumn<FaultMode>("mode");
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<Delivery>("delivery");
    const auto answered = Delivery::Answered;
    QTest::newRow("refused query")
        << FaultMode::RefuseRecord << Operation::GetString << false << answered;
    QTest::newRow("refused command")
        << FaultMode::RefuseWithCameraError << Operation::Command << true << answered;
    QTest::newRow("garbage for a text")
        << FaultMode::AnswerGarbage << Operation::GetString << true << answered;
    QTest::newRow("garbage for a number")
        << FaultMode::AnswerGarbage << Operation::GetInt << false << answered;
    QTest::newRow("garbage for a setting")
        << FaultMode::AnswerGarbage << Operation::SetValue << false << answered;
    QTest::newRow("silence") << FaultMode::StaySilent << Operation::GetString << false
                             << Delivery::Silent;
    QTest::newRow("no connection")
        << FaultMode::DropConnection << Operation::Command << false << Delivery::ConnectionLost;
}

void TestCommandInterpreter::faultAtARequest()
{
    QFETCH(FaultMode, mode);
    QFETCH(Operation, operation);
    SimulatedSite equipment(scenario());
    Fault fault;
    fault.mode = mode;
    fault.request = "s";
    equipment.system.armFault(fault);
    const Reply reply = equipment.interpreter.execute(operation, "system hostname");
    QTEST(reply.ok, "ok");
    QTEST(reply.delivery, "delivery");
    QVERIFY(reply.text != "zan-master");
    QCOMPARE(equipment.getString("system hostname"), QByteArray("zan-master"));
}

void TestCommandInterpreter::longValueIsCutToWhatAHostHasRoomFor()
{
    Scenario wordy = scenario();
    wordy.controllers[0].board = QString(300, QLatin1Char('b'));
    SimulatedSite equipment(wordy);
    QCOMPARE(equipment.getString("system extra motherboard").size(), 199);
}

ZAN_TEST_MAIN(TestCommandInterpreter)
#include "tst_commandinterpreter.moc"
