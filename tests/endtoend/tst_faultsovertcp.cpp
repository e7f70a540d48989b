#include "campaign.h"

#include <simulatorfixtures.h>
#include <testmain.h>

#include <QMap>
#include <QSet>

#include <cstdio>

namespace {

const char controllers[] = R"({
    "title": "A master and a slave, one release behind",
    "protocol": "1.23",
    "controllers": [
        {"hostName": "zan-master", "address": "192.168.7.20", "board": "FUJITSU D3231-S1",
         "serial": 731, "pt": "v3.2.0 2025-06-30", "ct": "v1.3"},
        {"hostName": "zan-left", "address": "192.168.7.21", "board": "FUJITSU D3231-S1",
         "serial": 732, "pt": "v3.2.0 2025-06-30", "ct": "v1.3"}
    ],
    "timing": {"bootMs": 5000, "recordsPerSecond": 10, "verifyMs": 0}
})";

const char camera[] = R"({
    "title": "A camera that is one release behind",
    "protocol": "1.23",
    "controllers": [
        {"hostName": "zan-master", "address": "192.168.7.20", "board": "FUJITSU D3231-S1",
         "serial": 731, "pt": "v3.3.0 2025-09-30", "ct": "v1.3"}
    ],
    "cameras": [{"model": "0x0901", "serial": "C-4101", "version": "v1.3.0",
                 "description": "Tracking camera T9"}],
    "timing": {"bootMs": 5000, "cameraRecordsPerSecond": 10, "cameraVerifyMs": 0}
})";

constexpr int all = recordsOfAnUpdate;

const QString allNewest = "result: All controllers and cameras run the newest versions.";

// ---- What the module shows

const QStringList controllerQuestions = {
    "This action will install new firmware to your Controller. Do you really want to update?",
    "Don't stop the update process until it is finished!"};
const QStringList cameraQuestions = {
    "This action will install new firmware to your camera(s). Do you really want to update?",
    "Don't stop the update process until it is finished!"};
const QStringList failure = {
    "Update failed! Please restart the Controller and try again.",
    "To start the update process later, open the update dialog again using the menu Help -> "
    "Controller and Camera Update"};
const QStringList controllersUpdated = {
    "The Controller is updated successfully and must be restarted. Do you want to restart the "
    "Controller now? (This restart may take a few minutes. Do not switch off the Controller during "
    "restart.) If yes VORNIX3 will be closed"};
const QStringList camerasUpdated = {
    "The cameras are updated successfully and must be restarted manually! Please power off all "
    "updated cameras by disconnecting or turn off any connected PoE+ switches."};

const QString imageFailed = "update not successful DELIVERED/controller_update/0x0901.VX2znimg";
const QString cameraFailed = "Update of camera was not successful";

// ---- What the frontend finds out

const QString noRestart = "It runs a new version only after a restart, and none is known of.";

QString masterLine(const QString& found)
{
    return "zan-master | Tracking software | v3.2.0 | v3.3.0 | " + found;
}

QString slaveLine(const QString& found)
{
    return "zan-left | Tracking software | v3.2.0 | v3.3.0 | " + found;
}

QString cameraLine(const QString& found)
{
    return "Tracking camera T9 C-4101 | Camera firmware | v1.3.0 | v1.4.0 | " + found;
}

const QStringList controllersUnconfirmed = {
    "0 of 2 controllers run what was planned. Unconfirmed: zan-master, zan-left.",
    masterLine("v3.2.0 | unconfirmed | " + noRestart),
    slaveLine("v3.2.0 | unconfirmed | " + noRestart)};
const QStringList controllersDone = {"2 of 2 controllers run what was planned.",
                                     masterLine("v3.3.0 | done"), slaveLine("v3.3.0 | done")};
const QStringList cameraUnconfirmed = {
    "0 of 1 camera runs what was planned. Unconfirmed: Tracking camera T9 C-4101.",
    cameraLine("v1.3.0 | unconfirmed | It runs a new version only after a power cycle and a search "
               "for hardware.")};
const QStringList cameraDone = {"1 of 1 camera runs what was planned.",
                                cameraLine("v1.4.0 | done")};

// ---- What a fault leads to, apart from what holds for all of them

struct Expectation
{
    QVector<int> codes;  ///< exit codes of all starts
    int sent = 0;        ///< records that the first start called for
    QStringList boxes;   ///< of the first start
    QString message;     ///< in the update dialog after a run that failed
    QStringList results; ///< of the first start that shows any, the last ones
    QStringList devices; ///< after the first start, as deviceTexts() has them
};

const QVector<int> onceMore = {NotNewest, StartAgain, Success};
const QVector<int> cameraOnceMore = {NotNewest, Success};

const QString masterUntouched = "zan-master: v3.2.0, 0 of 0";
const QString masterReceived = "zan-master: v3.2.0 then v3.3.0, 24 of 24";
const QString slaveReceived = "zan-left: v3.2.0 then v3.3.0, 24 of 24";
const QString masterOfCamera = "zan-master: v3.3.0, 0 of 0";

Expectation controllersFail(int sent, const QString& message, const QStringList& devices)
{
    return {onceMore, sent, controllerQuestions + failure, message, controllersUnconfirmed,
            devices};
}

Expectation cameraFails(int sent, const QString& message, const QString& device)
{
    return {cameraOnceMore,          sent, cameraQuestions + failure, message, cameraUnconfirmed,
            {masterOfCamera, device}};
}

// The module is loaded anew, so that the update dialog opens once more, when the connection is
// back.
Expectation andComesBack(Expectation expectation)
{
    expectation.boxes += failure.last();
    return expectation;
}

// The slave's update goes on after one of the master that failed, and its message is the last one.
const QMap<FaultMode, Expectation>& ofControllers()
{
    static const QString slavesMessage = "Update successful";
    static const QStringList updated = controllerQuestions + controllersUpdated;
    static const Expectation refused =
        controllersFail(12 + all, slavesMessage, {"zan-master: v3.2.0, 11 of 24", slaveReceived});
    static const QMap<FaultMode, Expectation> table = {
        {FaultMode::RefuseRecord, refused},
        {FaultMode::RefuseWithCameraError,
         controllersFail(all + 12, "Update not successful",
                         {masterReceived, "zan-left: v3.2.0, 11 of 24"})},
        {FaultMode::RefuseWithQuotedCameraError, refused},
        // Not even the target of the slave's update can be set.
        {FaultMode::DropConnection,
         andComesBack(controllersFail(
             12, "", {"zan-master: v3.2.0, 11 of 24", "zan-left: v3.2.0, 0 of 0"}))},
        {FaultMode::AnswerLate,
         controllersFail(2 * all, slavesMessage, {masterReceived, slaveReceived})},
        {FaultMode::AnswerGarbage,
         controllersFail(12 + all, slavesMessage, {"zan-master: v3.2.0, 12 of 24", slaveReceived})},
        {FaultMode::StaySilent, controllersFail(2 * all, "Update not successful",
                                                {masterReceived, "zan-left: v3.2.0, 23 of 24"})},
        {FaultMode::LosePower,
         andComesBack(controllersFail(12, "", {masterUntouched, "zan-left: v3.2.0, 0 of 0"}))},
        {FaultMode::ComeBackOld,
         {{StartAgain, StartAgain, Success},
          2 * all,
          updated,
          "",
          {"1 of 2 controllers run what was planned. Failed: zan-left.",
           masterLine("v3.3.0 | done"),
           slaveLine("v3.2.0 | failed | It came back with the version from before.")},
          {masterReceived, "zan-left: v3.2.0, 24 of 24"}}},
        {FaultMode::NeverComeBack,
         {{StartAgain, Success},
          2 * all,
          updated,
          "",
          controllersDone,
          {masterReceived, slaveReceived}}},
    };
    return table;
}

const QMap<FaultMode, Expectation>& ofCamera()
{
    static const QStringList updated = cameraQuestions + camerasUpdated;
    static const QStringList runsNew = {masterOfCamera, "C-4101: v1.4.0, 0 of 0"};
    static const Expectation refused = cameraFails(12, imageFailed, "C-4101: v1.3.0, 11 of 24");
    static const Expectation refusedByCamera =
        cameraFails(12, cameraFailed, "C-4101: v1.3.0, 11 of 24");
    static const QMap<FaultMode, Expectation> table = {
        {FaultMode::RefuseRecord, refused},
        {FaultMode::RefuseWithCameraError, refusedByCamera},
        {FaultMode::RefuseWithQuotedCameraError, refusedByCamera},
        {FaultMode::DropConnection, andComesBack(refused)},
        // The camera has it all, so that it runs the new version after the user's power cycle.
        {FaultMode::AnswerLate,
         {{Success}, all, cameraQuestions + failure, imageFailed, cameraDone, runsNew}},
        // What is no error reply counts as a good one.
        {FaultMode::AnswerGarbage, {{Success}, all, updated, "", cameraDone, runsNew}},
        {FaultMode::StaySilent, cameraFails(all, imageFailed, "C-4101: v1.3.0, 23 of 24")},
        {FaultMode::LosePower, andComesBack(refused)},
        {FaultMode::ComeBackOld,
         {cameraOnceMore,
          all,
          updated + QStringList{failure.last()},
          "",
          {"0 of 1 camera runs what was planned. Failed: Tracking camera T9 C-4101.",
           cameraLine("v1.3.0 | failed | It came back with the version from before.")},
          {masterOfCamera, "C-4101: v1.3.0, 0 of 0"}}},
        {FaultMode::NeverComeBack, {cameraOnceMore, all, updated, "", cameraUnconfirmed, runsNew}},
    };
    return table;
}

/// A system that the faults are tried on.
struct Target
{
    QString name;
    const char* scenario;
    /// Clearly more than the module waits for the last record, so that a busy machine does not make
    /// the reply come in time, and clearly less than with the time for the text behind it.
    int lateMs;
    const QMap<FaultMode, Expectation>& (*expectations)();
};

const Target targets[] = {
    {"controllers", controllers, 22500, ofControllers},
    {"camera", camera, 21500, ofCamera},
};

// By the slave where that shows more than by the first device of all.
bool isSlaves(FaultMode mode)
{
    return mode == FaultMode::RefuseWithCameraError || mode == FaultMode::StaySilent ||
           mode == FaultMode::ComeBackOld;
}

Fault faultOf(FaultMode mode, const Target& target)
{
    Fault fault;
    fault.mode = mode;
    fault.delayMs = target.lateMs;
    if (isSlaves(mode) && target.scenario == controllers)
        fault.device = "zan-left";
    return fault;
}

QString rowName(const FaultModeInfo& info, const Target& target)
{
    return info.name + ", " + target.name;
}

// ---- What the system is found to be

template <typename Device>
QString deviceText(const QString& name, const QString& runs, const QString& putBy,
                   const Device& device)
{
    return QStringLiteral("%1: %2%3, %4 of %5")
        .arg(name, runs.section(' ', 0, 0),
             putBy.isEmpty() ? QString() : " then " + putBy.section(' ', 0, 0),
             QString::number(device.recordsReceived), QString::number(device.recordsExpected));
}

QStringList deviceTexts(const EquipmentState& state)
{
    QStringList texts;
    for (const ControllerState& it : state.controllers)
        texts += deviceText(it.hostName, it.pt, it.stagedPt, it);
    for (const CameraState& it : state.cameras)
        texts += deviceText(it.serial, it.version, it.stagedVersion, it);
    return texts;
}

// Nothing else can run or be put by, whatever goes wrong.
bool isWhole(const QString& deviceText)
{
    static const QRegularExpression form(
        "^(zan-\\w+: v3\\.[23]\\.0( then v3\\.3\\.0)?|C-4101: v1\\.[34]\\.0( then v1\\.4\\.0)?), "
        "\\d+ of \\d+$");
    return form.match(deviceText).hasMatch();
}

QVector<int> codesOf(const Encounter& encounter)
{
    QVector<int> codes;
    for (const FrontendStart& start : encounter.starts())
        codes += start.code;
    return codes;
}

// The first ones that were shown are of the run with the fault.
QStringList firstResults(const Encounter& encounter)
{
    for (const FrontendStart& start : encounter.starts()) {
        if (!start.results().isEmpty())
            return start.results();
    }
    return {};
}

} // namespace

/// The built frontend and the built simulated system in two processes, with every fault.
class TestFaultsOverTcp : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void faultIsToldAndMended_data();
    void faultIsToldAndMended();
    void seedTellsTheRecord();
    void systemThatIsKilledIsGone();
    void systemThatIsKilledInARestartGoesOnWithIt();
    void cleanup();

private:
    const Encounter* lookAt(const QString& name);
    void startUntilDone();
    void checkStart(const FrontendStart& start);
    void checkEnd(const FrontendStart& start);
    void check(const Encounter& encounter, const Expectation& expected);

    const DeliveredFrontend m_frontend{smallUpdates()};
    Campaign m_campaign{m_frontend.program()};
    QStringList m_lookedAt;
    std::optional<Encounter> m_killed;
};

// All of them at once, as most of their time is spent with waiting; those of seeds come last.
void TestFaultsOverTcp::initTestCase()
{
    for (const FaultModeInfo& info : faultModes()) {
        for (const Target& target : targets)
            m_campaign.add({rowName(info, target), target.scenario, faultOf(info.mode, target)});
    }
    const QMap<QString, quint32> seeds = {{"seed 7", 7}, {"seed 7 again", 7}, {"seed 8", 8}};
    for (auto seed = seeds.begin(); seed != seeds.end(); ++seed) {
        Fault fault;
        fault.seed = seed.value();
        m_campaign.add({seed.key(), camera, fault});
    }
    m_campaign.begin();
}

void TestFaultsOverTcp::faultIsToldAndMended_data()
{
    QTest::addColumn<FaultMode>("mode");
    QTest::addColumn<int>("target");
    for (const FaultModeInfo& info : faultModes()) {
        for (int target = 0; target < 2; ++target)
            QTest::newRow(qPrintable(rowName(info, targets[target]))) << info.mode << target;
    }
}

// A mode without an expectation of its own has to pass what holds for all.
void TestFaultsOverTcp::faultIsToldAndMended()
{
    QFETCH(const FaultMode, mode);
    QFETCH(const int, target);
    const Encounter* encounter = lookAt(QTest::currentDataTag());
    QVERIFY(encounter && !encounter->starts().isEmpty());
    for (const FrontendStart& start : encounter->starts())
        checkStart(start);
    checkEnd(encounter->starts().last());
    const auto& expectations = targets[target].expectations();
    if (expectations.contains(mode))
        check(*encounter, expectations.value(mode));
}

const Encounter* TestFaultsOverTcp::lookAt(const QString& name)
{
    m_lookedAt += name;
    return m_campaign.finished(name);
}

void TestFaultsOverTcp::checkStart(const FrontendStart& start)
{
    QCOMPARE(start.errors, QString());
    QCOMPARE(start.trouble, QString());
    QVERIFY(start.code == Success || start.code == NotNewest || start.code == StartAgain);
    QVERIFY(start.ending().startsWith("result: "));
    QCOMPARE(QSet<QString>(start.sent.begin(), start.sent.end()).size(), start.sent.size());
    for (const QString& device : deviceTexts(start.equipment))
        QVERIFY2(isWhole(device), qPrintable(device));
}

void TestFaultsOverTcp::checkEnd(const FrontendStart& start)
{
    QCOMPARE(start.code, int(Success));
    QCOMPARE(start.ending(), allNewest);
    QCOMPARE(int(start.equipment.power), int(Power::On));
    QVERIFY(start.equipment.faults.armed().isEmpty());
    for (const ControllerState& controller : start.equipment.controllers)
        QVERIFY(controller.pt.startsWith("v3.3.0 ") && controller.stagedPt.isEmpty());
    for (const CameraState& it : start.equipment.cameras)
        QVERIFY(it.version == "v1.4.0" && it.stagedVersion.isEmpty() && it.found);
    for (const QString& line : start.results().mid(1))
        QVERIFY2(line.endsWith(" | done"), qPrintable(line));
}

void TestFaultsOverTcp::check(const Encounter& encounter, const Expectation& expected)
{
    const FrontendStart& first = encounter.starts().first();
    QCOMPARE(codesOf(encounter), expected.codes);
    QCOMPARE(first.sent.size(), expected.sent);
    QCOMPARE(first.boxes(), expected.boxes);
    QCOMPARE(firstResults(encounter), expected.results);
    QCOMPARE(deviceTexts(first.equipment), expected.devices);
    if (expected.message.isEmpty())
        return;
    const QStringList afterwards = first.windows("Controller and Camera Update").value(1);
    QCOMPARE(afterwards.value(0), QString("Updating Controller..finished"));
    QCOMPARE(QString(afterwards.value(2)).replace(m_frontend.folder(), "DELIVERED"),
             expected.message);
}

void TestFaultsOverTcp::seedTellsTheRecord()
{
    QMap<QString, int> received;
    for (const QString& name : {QString("seed 7"), QString("seed 7 again"), QString("seed 8")}) {
        const Encounter* encounter = lookAt(name);
        QVERIFY(encounter && !encounter->starts().isEmpty());
        const FrontendStart& first = encounter->starts().first();
        received[name] = first.equipment.cameras.first().recordsReceived;
        QCOMPARE(first.sent.size(), received[name] + 1);
        QCOMPARE(codesOf(*encounter), cameraOnceMore);
    }
    QCOMPARE(received["seed 7 again"], received["seed 7"]);
    QVERIFY(received["seed 8"] != received["seed 7"]);
}

void TestFaultsOverTcp::systemThatIsKilledIsGone()
{
    Encounter& encounter = m_killed.emplace(m_frontend.program(), controllers);
    QVERIFY(encounter.startSystem({}));
    encounter.startFrontend();
    // At ten records a second there is time to see the middle of the run.
    QString error;
    QTRY_VERIFY_WITH_TIMEOUT(encounter.equipment(&error).controllers.first().recordsReceived >= 3,
                             longWaitMs);
    encounter.killSystem();
    QTRY_COMPARE_WITH_TIMEOUT(encounter.starts().size(), 1, longWaitMs);
    const FrontendStart& first = encounter.starts().first();
    QCOMPARE(first.code, int(SystemGone));
    QCOMPARE(first.errors, QString());
    QCOMPARE(first.boxes(), controllerQuestions + failure);
    QCOMPARE(first.ending(), QString("result: The simulated system is gone, so nothing is known of "
                                     "its versions."));

    QVERIFY(encounter.startSystem({"--fast"}));
    startUntilDone();
    QCOMPARE(codesOf(encounter), (QVector<int>{SystemGone, StartAgain, Success}));
}

void TestFaultsOverTcp::systemThatIsKilledInARestartGoesOnWithIt()
{
    Encounter& encounter = m_killed.emplace(m_frontend.program(), controllers);
    QVERIFY(encounter.startSystem({"--fast"}));
    encounter.startFrontend();
    QTRY_COMPARE_WITH_TIMEOUT(encounter.starts().size(), 1, longWaitMs);
    encounter.killSystem();
    QVERIFY(encounter.startSystem({"--fast"}));
    startUntilDone();
    QCOMPARE(codesOf(encounter), (QVector<int>{StartAgain, Success}));
    QCOMPARE(encounter.starts().last().results(), controllersDone);
}

void TestFaultsOverTcp::startUntilDone()
{
    const QVector<FrontendStart>& starts = m_killed->starts();
    while (starts.last().code != Success && starts.size() < 4) {
        const int count = starts.size() + 1;
        m_killed->startFrontend();
        QTRY_COMPARE_WITH_TIMEOUT(starts.size(), count, longWaitMs);
        checkStart(starts.last());
    }
    checkEnd(starts.last());
}

// What was told is needed to understand a failure.
void TestFaultsOverTcp::cleanup()
{
    if (QTest::currentTestFailed()) {
        for (const QString& name : qAsConst(m_lookedAt))
            std::fputs(qPrintable(name + '\n' + m_campaign.text(name)), stdout);
        if (m_killed)
            std::fputs(qPrintable(m_killed->text()), stdout);
    }
    m_lookedAt.clear();
    m_killed.reset();
}

ZAN_TEST_MAIN(TestFaultsOverTcp)
#include "tst_faultsovertcp.moc"
