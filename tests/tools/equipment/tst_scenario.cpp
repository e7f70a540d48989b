#include "scenario.h"

#include <fixturefiles.h>
#include <reasons.h>
#include <testmain.h>

#include <QJsonDocument>
#include <QJsonObject>

class TestScenario : public QObject
{
    Q_OBJECT

private slots:
    void cascadeIsTheFirstOfAtLeastFifteen();
    void shippedIsReadable_data();
    void shippedIsReadable();
    void cascadeIsTwoReleasesBehind();
    void onlyDiscontinuedScenariosHaveDiscontinuedControllers_data();
    void onlyDiscontinuedScenariosHaveDiscontinuedControllers();
    void readsEveryKey();
    void leavesDefaults();
    void refuses_data();
    void refuses();
    void fileThatCannotBeOpened();
    void fileByPathIsNamedAfterTheFile();
};

namespace {

const QByteArray master = R"({"hostName": "zan", "address": "10.0.0.1", "serial": 1,
                                     "pt": "v3.1.0", "ct": "v1.2"})";

QByteArray scenarioWith(const QByteArray& more)
{
    return R"({"title": "T", "protocol": "1.23", "controllers": [)" + master + "]" + more + "}";
}

QByteArray scenarioWithSlave(const QByteArray& slave)
{
    return R"({"title": "T", "protocol": "1.23", "controllers": [)" + master + ", " + slave + "]}";
}

Scenario parsed(const QByteArray& json)
{
    QString error;
    const std::optional<Scenario> scenario =
        ScenarioReader::parse(json, QStringLiteral("test.json"), &error);
    if (!scenario)
        qFatal("%s", qPrintable(error));
    return *scenario;
}

} // namespace

void TestScenario::cascadeIsTheFirstOfAtLeastFifteen()
{
    QCOMPARE(Scenario::shipped().first(), QStringLiteral("cascade"));
    QVERIFY(Scenario::shipped().size() >= 15);
    QCOMPARE(Scenario::shipped().removeDuplicates(), 0);
}

void TestScenario::shippedIsReadable_data()
{
    QTest::addColumn<QString>("name");
    for (const QString& name : Scenario::shipped())
        QTest::newRow(qPrintable(name)) << name;
}

void TestScenario::shippedIsReadable()
{
    QFETCH(QString, name);
    QString error;
    const std::optional<Scenario> scenario = ScenarioReader::read(name, &error);
    QVERIFY2(scenario, qPrintable(error));
    QCOMPARE(scenario->name, name);
    QVERIFY(!scenario->title.isEmpty());
}

void TestScenario::cascadeIsTwoReleasesBehind()
{
    QString error;
    const Scenario cascade = ScenarioReader::read(QStringLiteral("cascade"), &error).value();
    QCOMPARE(cascade.deviceNames(), QStringList({"zan-master", "zan-left", "zan-right"}));
    QCOMPARE(cascade.protocol.toString(), QStringLiteral("v1.23"));
    for (const ScenarioController& controller : cascade.controllers) {
        QCOMPARE(controller.model, 2);
        QCOMPARE(controller.board, QStringLiteral("FUJITSU D3231-S1"));
        QCOMPARE(controller.pt, QStringLiteral("v3.1.0 2025-03-14"));
        QCOMPARE(controller.ct, QStringLiteral("v1.2"));
    }
    QCOMPARE(cascade.controllers.at(1).address, QStringLiteral("192.168.7.21"));
    QCOMPARE(cascade.controllers.at(2).serial, 733);
}

void TestScenario::onlyDiscontinuedScenariosHaveDiscontinuedControllers_data()
{
    shippedIsReadable_data();
}

namespace {

// The boards that are supported, and the slaves' serials that are not, as the update dialog has
// them.
bool isDiscontinued(const ScenarioController& controller, bool slave)
{
    if (!slave)
        return !controller.board.contains(QLatin1String("FUJITSU"));
    return controller.serial <= 517 || QList<int>({521, 522, 533}).contains(controller.serial);
}

} // namespace

void TestScenario::onlyDiscontinuedScenariosHaveDiscontinuedControllers()
{
    QFETCH(QString, name);
    QString error;
    const Scenario scenario = ScenarioReader::read(name, &error).value();
    bool discontinued = false;
    for (int index = 0; index < scenario.controllers.size(); ++index)
        discontinued |= isDiscontinued(scenario.controllers.at(index), index > 0);
    QCOMPARE(discontinued, name.startsWith(QLatin1String("discontinued")));
}

void TestScenario::readsEveryKey()
{
    const Scenario scenario = parsed(R"({
        "title": "All", "protocol": "0.16", "backendModel": "BRIARSCOPE", "net": "dhcp",
        "wakeOnLan": true, "observer": true, "measurement": "unstoppable",
        "hardware": ["first", "second"], "updateFiles": ["a.vx3img", "b"], "notes": [],
        "controllers": [
            {"hostName": "m", "address": "192.168.0.1", "model": 21, "modelDescription": "D",
             "board": "B", "serial": 9, "pt": "v3.2.0-beta.2 2025-01-01", "ct": "v1.3-rc.1"},
            {"hostName": "s", "address": "192.168.0.2", "available": false, "serial": 10,
             "pt": "v1", "ct": "v1"}],
        "cameras": [{"model": "0x0901", "serial": "C1", "version": "v1-rc.1",
                     "description": "T9"}],
        "timing": {"recordsPerSecond": 1, "cameraRecordsPerSecond": 2, "verifyMs": 3,
                   "cameraVerifyMs": 4, "bootMs": 5, "searchMs": 6},
        "faults": [{"mode": "answer-late", "device": "s", "record": 7, "times": 0, "delayMs": 8},
                   {"mode": "stay-silent", "device": "c01", "seed": 4294967295},
                   {"mode": "refuse-record", "request": "vornix2 reinit"}]})");
    QCOMPARE(scenario.name, QStringLiteral("test"));
    QCOMPARE(scenario.title, QStringLiteral("All"));
    QCOMPARE(scenario.protocol.toString(), QStringLiteral("v0.16"));
    QCOMPARE(scenario.backendModel, QStringLiteral("BRIARSCOPE"));
    QVERIFY(scenario.dhcp && scenario.wakeOnLan && scenario.observer);
    QCOMPARE(scenario.measurement, Measurement::Unstoppable);
    QCOMPARE(scenario.hardware, QStringList({"first", "second"}));
    QCOMPARE(scenario.updateFiles.value(), QStringList({"a.vx3img", "b"}));
    QCOMPARE(scenario.notes.value(), QStringList());

    QCOMPARE(scenario.address(), QStringLiteral("192.168.0.1"));
    const ScenarioController& first = scenario.controllers.at(0);
    QCOMPARE(first.model, 21);
    QCOMPARE(first.modelDescription, QStringLiteral("D"));
    QCOMPARE(first.board, QStringLiteral("B"));
    QCOMPARE(first.serial, 9);
    QCOMPARE(first.pt, QStringLiteral("v3.2.0-beta.2 2025-01-01"));
    QCOMPARE(first.ct, QStringLiteral("v1.3-rc.1"));
    QVERIFY(first.available && !scenario.controllers.at(1).available);

    const ScenarioCamera& camera = scenario.cameras.first();
    QCOMPARE(camera.model + camera.serial + camera.version + camera.description,
             QStringLiteral("0x0901C1v1-rc.1T9"));

    const ScenarioTiming& timing = scenario.timing;
    QCOMPARE(QList<int>({timing.recordsPerSecond, timing.cameraRecordsPerSecond, timing.verifyMs,
                         timing.cameraVerifyMs, timing.bootMs, timing.searchMs}),
             QList<int>({1, 2, 3, 4, 5, 6}));

    const Fault& late = scenario.faults.at(0);
    QCOMPARE(late.mode, FaultMode::AnswerLate);
    QCOMPARE(late.device, QStringLiteral("s"));
    QCOMPARE(QList<int>({late.record, late.times, late.delayMs}), QList<int>({7, 0, 8}));
    QVERIFY(!late.seed);
    QCOMPARE(scenario.faults.at(1).seed.value(), 4294967295U);
    QCOMPARE(scenario.faults.at(2).request, QByteArray("vornix2 reinit"));
}

void TestScenario::leavesDefaults()
{
    const Scenario scenario = parsed(scenarioWith(""));
    QCOMPARE(scenario.backendModel, QStringLiteral("ZAN"));
    QVERIFY(!scenario.dhcp && !scenario.wakeOnLan && !scenario.observer);
    QCOMPARE(scenario.measurement, Measurement::Off);
    QVERIFY(scenario.hardware.isEmpty() && scenario.cameras.isEmpty() && scenario.faults.isEmpty());
    QVERIFY(!scenario.updateFiles && !scenario.notes);
    QCOMPARE(scenario.controllers.first().model, 2);
    QCOMPARE(scenario.timing.recordsPerSecond, 2750);
}

void TestScenario::refuses_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("error");

    QTest::newRow("text that is no JSON")
        << QByteArray("{\n\"title\": }") << "test.json: line 2: " + jsonReason("{\n\"title\": }");
    QTest::newRow("an empty file") << QByteArray() << "test.json: line 1: " + jsonReason("");
    QTest::newRow("a list") << QByteArray("[]") << "test.json: line 1: must be an object";
    QTest::newRow("no controllers")
        << QByteArray(R"({"title": "T", "protocol": "1.23"})") << "test.json: controllers: missing";
    QTest::newRow("an empty list of controllers")
        << QByteArray(R"({"title": "T", "protocol": "1.23", "controllers": []})")
        << "test.json: controllers: must have at least the master";
    QTest::newRow("a protocol that is no version")
        << QByteArray(R"({"title": "T", "protocol": "x", "controllers": []})")
        << "test.json: protocol: must be a version such as \"1.23\"";
    QTest::newRow("an unknown key")
        << scenarioWith(R"(, "cameraz": [])") << "test.json: cameraz: unknown key";
    QTest::newRow("an unknown key of a controller")
        << scenarioWithSlave(
               R"({"hostName": "s", "address": "10.0.0.2", "serial": 2, "pt": "v1", "ct": "v1",
                   "speed": 1})")
        << "test.json: controllers[1].speed: unknown key";
    QTest::newRow("a master that is not available")
        << QByteArray(R"({"title": "T", "protocol": "1.23", "controllers": [{"hostName": "m",
                          "address": "10.0.0.1", "available": false, "serial": 2, "pt": "v1",
                          "ct": "v1"}]})")
        << "test.json: controllers[0].available: unknown key";
    QTest::newRow("a serial that is no number")
        << scenarioWithSlave(
               R"({"hostName": "s", "address": "10.0.0.2", "serial": "2", "pt": "v1", "ct": "v1"})")
        << "test.json: controllers[1].serial: must be a whole number from 0 to 999999999";
    QTest::newRow("a host name of two words")
        << scenarioWithSlave(
               R"({"hostName": "a b", "address": "10.0.0.2", "serial": 2, "pt": "v1", "ct": "v1"})")
        << "test.json: controllers[1].hostName: must be one word";
    QTest::newRow("the same host name twice")
        << scenarioWithSlave(
               R"({"hostName": "zan", "address": "10.0.0.2", "serial": 2, "pt": "v1", "ct": "v1"})")
        << "test.json: controllers: \"zan\" stands there twice";
    QTest::newRow("the same address twice")
        << scenarioWithSlave(
               R"({"hostName": "s", "address": "10.0.0.1", "serial": 2, "pt": "v1", "ct": "v1"})")
        << "test.json: controllers: \"10.0.0.1\" stands there twice";
    QTest::newRow("an address that is none")
        << scenarioWithSlave(
               R"({"hostName": "s", "address": "10.0.0.256", "serial": 2, "pt": "v1", "ct": "v1"})")
        << "test.json: controllers[1].address: must be dotted IPv4";
    QTest::newRow("an empty version")
        << scenarioWithSlave(
               R"({"hostName": "s", "address": "10.0.0.2", "serial": 2, "pt": "", "ct": "v1"})")
        << "test.json: controllers[1].pt: must not be empty";
    QTest::newRow("a version of two lines")
        << scenarioWithSlave(
               R"({"hostName": "s", "address": "10.0.0.2", "serial": 2, "pt": "v\n1", "ct": "v1"})")
        << "test.json: controllers[1].pt: must be one line of at most 150 bytes";
    QTest::newRow("a version beyond Latin-1")
        << scenarioWithSlave(
               R"({"hostName": "s", "address": "10.0.0.2", "serial": 2, "pt": "v1€", "ct": "v1"})")
        << "test.json: controllers[1].pt: must have letters of Latin-1 only";
    for (const char* key : {"model", "serial", "version", "description"}) {
        QByteArray camera = R"({"model": "-model-", "serial": "-serial-", "version": "-version-",)"
                            R"( "description": "-description-"})";
        camera.replace('-' + QByteArray(key) + '-', "Ω");
        QTest::addRow("a camera's %s beyond Latin-1", key)
            << scenarioWith(R"(, "cameras": [)" + camera + ']')
            << QStringLiteral("test.json: cameras[0].%1: must have letters of Latin-1 only")
                   .arg(key);
    }
    QTest::newRow("an unknown key of two lines")
        << scenarioWith(R"(, "net\nwork": 1)") << R"(test.json: net\nwork: unknown key)";
    QTest::newRow("a note of two lines")
        << scenarioWith(R"(, "notes": ["a\nb"])")
        << "test.json: notes[0]: must be the name of a file, without a folder";
    QTest::newRow("a host name of two lines, twice")
        << scenarioWithSlave(
               R"({"hostName": "s\nt", "address": "10.0.0.2", "serial": 2, "pt": "v1", "ct": "v1"})")
        << "test.json: controllers[1].hostName: must be one word";
    QTest::newRow("a title that is too long")
        << QByteArray(R"({"title": ")" + QByteArray(151, 'x') +
                      R"(", "protocol": "1", "controllers": []})")
        << "test.json: title: must be one line of at most 150 bytes";
    QTest::newRow("hardware of two lines")
        << scenarioWith(R"(, "hardware": ["a\nb"])")
        << "test.json: hardware: must be lines of at most 150 bytes";
    QTest::newRow("an update file with a folder")
        << scenarioWith(R"(, "updateFiles": ["a", "../b"])")
        << "test.json: updateFiles[1]: must be the name of a file, without a folder";
    QTest::newRow("an update file that is the folder itself")
        << scenarioWith(R"(, "updateFiles": [".."])")
        << "test.json: updateFiles[0]: must be the name of a file, without a folder";
    QTest::newRow("an update file without a name")
        << scenarioWith(R"(, "updateFiles": [""])")
        << "test.json: updateFiles[0]: must be the name of a file, without a folder";
    QTest::newRow("the same note twice")
        << scenarioWith(R"(, "notes": ["v3_0_0.html", "v3_0_0.html"])")
        << "test.json: notes: \"v3_0_0.html\" stands there twice";
    QTest::newRow("notes that are no list")
        << scenarioWith(R"(, "notes": "v3_0_0.html")") << "test.json: notes: must be a list";
    QTest::newRow("a measurement of another kind")
        << scenarioWith(R"(, "measurement": "on")")
        << R"(test.json: measurement: must be one of "off", "running", "unstoppable")";
    QTest::newRow("a camera without serial")
        << scenarioWith(R"(, "cameras": [{"model": "0x0901", "version": "v1"}])")
        << "test.json: cameras[0].serial: missing";
    QTest::newRow("a negative time")
        << scenarioWith(R"(, "timing": {"bootMs": -1})")
        << "test.json: timing.bootMs: must be a whole number from 0 to 86400000";
    QTest::newRow("a fault of a device that is not there")
        << scenarioWith(R"(, "faults": [{"mode": "lose-power", "device": "c01"}])")
        << "test.json: faults[0].device: no such controller or camera";
    QTest::newRow("a fault at record 0")
        << scenarioWith(R"(, "faults": [{"mode": "lose-power", "record": 0}])")
        << "test.json: faults[0].record: must be a whole number from 1 to 1000000";
}

void TestScenario::refuses()
{
    QFETCH(QByteArray, json);
    QString error;
    QVERIFY(!ScenarioReader::parse(json, QStringLiteral("test.json"), &error));
    QTEST(error, "error");
}

void TestScenario::fileThatCannotBeOpened()
{
    QString error;
    QVERIFY(!ScenarioReader::read(QStringLiteral("/nowhere/my.json"), &error));
    QCOMPARE(error, "/nowhere/my.json: " + systemReason(ENOENT));
}

void TestScenario::fileByPathIsNamedAfterTheFile()
{
    const FixtureFolder folder;
    const QString path = folder.write(QStringLiteral("my rack.v2.json"), scenarioWith(""));
    QString error;
    QCOMPARE(ScenarioReader::read(path, &error).value().name, QStringLiteral("my rack.v2"));
}

ZAN_TEST_MAIN(TestScenario)
#include "tst_scenario.moc"
