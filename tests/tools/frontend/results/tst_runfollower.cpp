#include "updatetable.h"

#include <simulatorfixtures.h>

#include <runfollower.h>
#include <simulatorlink.h>

#include <fixturefiles.h>
#include <widgettestmain.h>

#include <QDir>
#include <QSignalSpy>

namespace {

/// A scenario whose restarts and searches are over when the clock says so.
Scenario scenarioWith(const QString& name, const QVector<Fault>& faults = {})
{
    Scenario scenario = shippedScenario(name);
    scenario.faults = faults;
    return scenario;
}

Fault faultOf(FaultMode mode, const QString& device)
{
    Fault fault;
    fault.mode = mode;
    fault.device = device;
    return fault;
}

/// One start of a frontend at a system that lives longer than it: the channel, the follower and a
/// module with nothing but its table.
struct Start
{
    Start(SimulatedSite& equipment, const FixtureFolder& folder,
          std::initializer_list<UpdateTable::Row> rows)
        : link(equipment.system, SimulatorLink::Pace::Fast), channel(link),
          follower(channel, folder.path("runs"), "system " + equipment.system.scenario().title),
          table(rows, &window), shown(&follower, &RunFollower::resultChanged)
    {
        QObject::connect(&follower, &RunFollower::message,
                         [this](const QString& text) { messages += text; });
        element.content = &window;
        follower.load();
        if (equipment.system.isReachable())
            connectSystem();
    }

    void connectSystem()
    {
        channel.renew();
        follower.systemConnected();
        follower.moduleEntered({&element});
        askAsTheModuleDoes();
    }

    /// Sends a block to the controller at @p address.
    void update(const QByteArray& address, const QByteArray& word, const QByteArray& payload)
    {
        channel.set_value("system redirect_update %s", address.constData());
        send("system " + word, payload);
    }

    void updateCamera(const QByteArray& camera, const QByteArray& payload)
    {
        const QList<QByteArray> texts = recordTexts(payload);
        char reply[replyBytes] = {};
        for (int i = 0; i < texts.size(); ++i)
            channel.send_command(reply, "vornix2 set camera update %s %d %d %s", camera.constData(),
                                 texts.size(), i + 1, texts.at(i).constData());
    }

    void command(const QByteArray& text)
    {
        char reply[replyBytes] = {};
        channel.send_command(reply, "%s", text.constData());
    }

    QStringList verdicts() const
    {
        QStringList verdicts;
        for (const PlannedUpdate& update : follower.run().updates) {
            const QStringList texts = resultTexts(update);
            verdicts += QStringList{texts.at(0), texts.at(2), texts.at(3),
                                    texts.at(4), texts.at(5), texts.at(6)}
                            .join(" | ");
        }
        return verdicts;
    }

    QStringList events() const
    {
        QStringList events;
        for (const PlannedRun::Event& event : follower.run().events)
            events += event.text;
        return events;
    }

    SimulatorLink link;
    HostChannel channel;
    RunFollower follower;
    QWidget window;
    UpdateTable table;
    GuiElement element{};
    QSignalSpy shown;
    QStringList messages;

private:
    void askAsTheModuleDoes()
    {
        ChannelQueries queries(channel);
        SystemReport::ask(queries);
    }

    void send(const QByteArray& words, const QByteArray& payload)
    {
        const QList<QByteArray> texts = recordTexts(payload);
        for (int i = 0; i < texts.size(); ++i)
            channel.set_value("%s %d %d %s", words.constData(), texts.size(), i + 1,
                              texts.at(i).constData());
    }
};

const UpdateTable::Row masterRow = {
    true, {"Firmware update (zan-master)", "v3.1.0", "v3.3.0", "yes", "yes"}};
const UpdateTable::Row leftRow = {true,
                                  {"Firmware update (zan-left)", "v3.1.0", "v3.3.0", "yes", "yes"}};
const UpdateTable::Row cameraRow = {
    true, {"Camera firmware update (Tracking camera T9 C-4101)", "v1.3.0", "v1.4.0", "yes", "yes"}};

void updateCascade(Start& start)
{
    start.update("none", "update", trackingSoftware({3, 3, 0}));
    start.update("192.168.7.21", "update", trackingSoftware({3, 3, 0}));
}

const QString masterIsDone = "zan-master | v3.1.0 | v3.3.0 | v3.3.0 | done | ";
const QString leftIsDone = "zan-left | v3.1.0 | v3.3.0 | v3.3.0 | done | ";
const QString noRestart = "It runs a new version only after a restart, and none is known of.";
const QString noPowerCycle =
    "It runs a new version only after a power cycle and a search for hardware.";

} // namespace

/// A run followed over the real command language, without the module.
class TestRunFollower : public QObject
{
    Q_OBJECT

private slots:
    void planIsKeptBeforeTheFirstRecord();
    void cascadeIsJudgedAfterItsRestart_data();
    void cascadeIsJudgedAfterItsRestart();
    void refusedRestartIsTold();
    void restartWithoutItsCommandIsSeen();
    void lostConnectionIsNoRestart();
    void killedFrontendShowsTheResultAtItsNextStart();
    void settledRunIsNotShownAgain();
    void camerasWaitForPowerAndSearch();
    void cameraThatComesBackOldHasFailed();
    void cameraThatNeverComesBackIsUnconfirmed();
    void secondRunTakesThePlaceOfTheFirst();
    void stepBackGoesWithPermissionOnly_data();
    void stepBackGoesWithPermissionOnly();
    void stoppedRunIsNone();
    void lastKnownVersionStandsAgainstThePlan();
    void anotherSystemIsNotCompared_data();
    void anotherSystemIsNotCompared();
    void damagedFileIsSetAside();
    void runWithoutATableIsTold();
};

void TestRunFollower::planIsKeptBeforeTheFirstRecord()
{
    SimulatedSite equipment(scenarioWith("cascade"));
    const FixtureFolder folder;
    Start start(equipment, folder, {masterRow, leftRow});
    QVERIFY(!start.follower.hasRun());
    start.channel.set_value("system redirect_update none");
    QVERIFY(start.follower.hasRun());
    QStringList problems;
    const std::optional<PlannedRun> kept = RunStore(folder.path("runs")).latest(&problems);
    QVERIFY(kept);
    QCOMPARE(kept->logText(), start.follower.run().logText());
    QVERIFY(!kept->hasEnded);
    QCOMPARE(
        start.verdicts(),
        (QStringList{"zan-master | v3.1.0 | v3.3.0 | - | unconfirmed | It has not been asked yet.",
                     "zan-left | v3.1.0 | v3.3.0 | - | unconfirmed | It has not been asked yet."}));
    QCOMPARE(start.follower.run().system, QString("192.168.7.20"));
}

void TestRunFollower::cascadeIsJudgedAfterItsRestart_data()
{
    QTest::addColumn<QVector<Fault>>("faults");
    QTest::addColumn<QStringList>("verdicts");
    QTest::newRow("both come back new")
        << QVector<Fault>() << QStringList{masterIsDone, leftIsDone};
    QTest::newRow("the slave comes back old")
        << QVector<Fault>{faultOf(FaultMode::ComeBackOld, "zan-left")}
        << QStringList{masterIsDone, "zan-left | v3.1.0 | v3.3.0 | v3.1.0 | failed | It came back "
                                     "with the version from before."};
    QTest::newRow("the slave never comes back")
        << QVector<Fault>{faultOf(FaultMode::NeverComeBack, "zan-left")}
        << QStringList{masterIsDone,
                       "zan-left | v3.1.0 | v3.3.0 | - | unconfirmed | It does not answer."};
    QTest::newRow("a record was refused")
        << QVector<Fault>{faultOf(FaultMode::RefuseRecord, "zan-left")}
        << QStringList{masterIsDone, "zan-left | v3.1.0 | v3.3.0 | v3.1.0 | failed | It came back "
                                     "with the version from before."};
}

void TestRunFollower::cascadeIsJudgedAfterItsRestart()
{
    QFETCH(const QVector<Fault>, faults);
    SimulatedSite equipment(scenarioWith("cascade", faults));
    const FixtureFolder folder;
    {
        Start start(equipment, folder, {masterRow, leftRow});
        updateCascade(start);
        start.command("vornix2 system reboot");
        start.follower.moduleLeaves(true);
        QCOMPARE(start.shown.count(), 0);
        QCOMPARE(start.events(), (QStringList{"The run began.", "The run ended.",
                                              "The controllers took the command to restart."}));
    }
    equipment.bringUp();
    const Start start(equipment, folder, {});
    QTEST(start.verdicts(), "verdicts");
    QCOMPARE(start.shown.count(), 1);
    QCOMPARE(start.messages, QStringList{start.follower.run().summary()});
    QCOMPARE(start.events().constLast(), start.follower.run().summary());
}

void TestRunFollower::refusedRestartIsTold()
{
    SimulatedSite equipment(scenarioWith("cascade"));
    const FixtureFolder folder;
    Start start(equipment, folder, {masterRow, leftRow});
    updateCascade(start);
    start.follower.moduleRests(); // the user wants no restart
    QCOMPARE(start.verdicts(),
             (QStringList{"zan-master | v3.1.0 | v3.3.0 | v3.1.0 | unconfirmed | " + noRestart,
                          "zan-left | v3.1.0 | v3.3.0 | v3.1.0 | unconfirmed | " + noRestart}));
    QCOMPARE(start.shown.count(), 1);
    start.follower.moduleRests();
    QCOMPARE(start.shown.count(), 1);
}

void TestRunFollower::restartWithoutItsCommandIsSeen()
{
    SimulatedSite equipment(scenarioWith("cascade", {faultOf(FaultMode::ComeBackOld, "zan-left")}));
    const FixtureFolder folder;
    Start start(equipment, folder, {masterRow, leftRow});
    updateCascade(start);
    start.follower.moduleRests();
    equipment.system.restart();
    start.follower.moduleLeaves(true);
    equipment.bringUp();
    start.connectSystem();
    QCOMPARE(start.verdicts(),
             (QStringList{masterIsDone, "zan-left | v3.1.0 | v3.3.0 | v3.1.0 | failed | It came "
                                        "back with the version from before."}));
    QCOMPARE(start.events().mid(1, 1) + start.events().mid(3, 1),
             (QStringList{"The run ended.", "The controllers went away."}));
}

void TestRunFollower::lostConnectionIsNoRestart()
{
    SimulatedSite equipment(scenarioWith("cascade"));
    const FixtureFolder folder;
    Start start(equipment, folder, {masterRow, leftRow});
    updateCascade(start);
    start.follower.moduleLeaves(true); // in the middle of the run, as far as anyone knows
    start.connectSystem();
    QCOMPARE(start.verdicts(),
             (QStringList{"zan-master | v3.1.0 | v3.3.0 | v3.1.0 | unconfirmed | " + noRestart,
                          "zan-left | v3.1.0 | v3.3.0 | v3.1.0 | unconfirmed | " + noRestart}));
}

void TestRunFollower::killedFrontendShowsTheResultAtItsNextStart()
{
    SimulatedSite equipment(scenarioWith("cascade"));
    const FixtureFolder folder;
    {
        Start start(equipment, folder, {masterRow, leftRow});
        start.update("none", "update", trackingSoftware({3, 3, 0}));
    }
    {
        const Start start(equipment, folder, {});
        QCOMPARE(start.verdicts(),
                 (QStringList{"zan-master | v3.1.0 | v3.3.0 | v3.1.0 | unconfirmed | The run was "
                              "broken off. " +
                                  noRestart,
                              "zan-left | v3.1.0 | v3.3.0 | v3.1.0 | unconfirmed | The run was "
                              "broken off. " +
                                  noRestart}));
        QCOMPARE(start.shown.count(), 1);
    }
    // What was received by then runs after a restart that nobody has seen.
    equipment.system.powerCycle();
    equipment.bringUp();
    const Start start(equipment, folder, {});
    QCOMPARE(start.verdicts().constFirst(), masterIsDone);
    QCOMPARE(start.shown.count(), 1);
}

void TestRunFollower::settledRunIsNotShownAgain()
{
    SimulatedSite equipment(scenarioWith("cascade"));
    const FixtureFolder folder;
    {
        Start start(equipment, folder, {masterRow, leftRow});
        updateCascade(start);
        start.command("vornix2 system reboot");
        start.follower.moduleLeaves(true);
    }
    equipment.bringUp();
    QCOMPARE(Start(equipment, folder, {}).shown.count(), 1);
    const Start again(equipment, folder, {});
    QCOMPARE(again.shown.count(), 0);
    QCOMPARE(again.messages, QStringList());
    QCOMPARE(again.verdicts(), (QStringList{masterIsDone, leftIsDone}));
}

void TestRunFollower::camerasWaitForPowerAndSearch()
{
    SimulatedSite equipment(scenarioWith("cameras"));
    const FixtureFolder folder;
    Start start(equipment, folder, {cameraRow});
    start.updateCamera("c01", cameraFirmware({1, 4, 0}));
    start.follower.moduleRests();
    const QString name = "Tracking camera T9 C-4101 | v1.3.0 | v1.4.0 | ";
    QCOMPARE(start.verdicts(), QStringList{name + "v1.3.0 | unconfirmed | " + noPowerCycle});
    QCOMPARE(start.shown.count(), 1);

    // A search alone tells nothing new.
    start.follower.searchBegins();
    equipment.system.searchHardware();
    start.follower.searchEnded();
    QCOMPARE(start.shown.count(), 1);

    equipment.system.powerCycleCamera(0);
    start.follower.searchBegins();
    QCOMPARE(start.verdicts(), QStringList{name + "- | unconfirmed | It does not answer."});
    QCOMPARE(start.shown.count(), 1);
    equipment.system.searchHardware();
    start.follower.searchEnded();
    QCOMPARE(start.verdicts(), QStringList{name + "v1.4.0 | done | "});
    QCOMPARE(start.shown.count(), 2);
    QCOMPARE(start.messages.constLast(), QString("1 of 1 camera runs what was planned."));
}

void TestRunFollower::cameraThatComesBackOldHasFailed()
{
    SimulatedSite equipment(scenarioWith("cameras", {faultOf(FaultMode::ComeBackOld, "c01")}));
    const FixtureFolder folder;
    {
        Start start(equipment, folder, {cameraRow});
        start.updateCamera("c01", cameraFirmware({1, 4, 0}));
        start.follower.moduleRests();
    }
    equipment.system.powerCycleCamera(0);
    // A start in between is enough to see that it was away.
    QCOMPARE(Start(equipment, folder, {}).follower.run().updates.constFirst().wasAway, true);
    equipment.system.searchHardware();
    const Start start(equipment, folder, {});
    QCOMPARE(start.verdicts(), QStringList{"Tracking camera T9 C-4101 | v1.3.0 | v1.4.0 | v1.3.0 | "
                                           "failed | It came back with the version from before."});
}

void TestRunFollower::cameraThatNeverComesBackIsUnconfirmed()
{
    SimulatedSite equipment(scenarioWith("cameras", {faultOf(FaultMode::NeverComeBack, "c01")}));
    const FixtureFolder folder;
    Start start(equipment, folder, {cameraRow});
    start.updateCamera("c01", cameraFirmware({1, 4, 0}));
    start.follower.moduleRests();
    equipment.system.powerCycleCamera(0);
    start.follower.searchBegins();
    equipment.system.searchHardware();
    start.follower.searchEnded();
    QCOMPARE(start.verdicts(), QStringList{"Tracking camera T9 C-4101 | v1.3.0 | v1.4.0 | - | "
                                           "unconfirmed | It does not answer."});
}

void TestRunFollower::secondRunTakesThePlaceOfTheFirst()
{
    SimulatedSite equipment(scenarioWith("cascade"));
    const FixtureFolder folder;
    Start start(equipment, folder, {masterRow, leftRow});
    start.update("none", "update", trackingSoftware({3, 3, 0}));
    start.table.item(0, 0)->setCheckState(Qt::Unchecked);
    QTest::qWait(2); // the runs are told apart by the millisecond in which they begin
    char reply[replyBytes] = {};
    start.channel.get_string(reply, "status active");
    start.update("192.168.7.21", "update", trackingSoftware({3, 3, 0}));
    QCOMPARE(start.verdicts().constFirst(),
             QString("zan-master | v3.1.0 | v3.3.0 | - | skipped | It was not ticked."));
    QCOMPARE(QDir(folder.path("runs")).entryList({"*.json"}, QDir::Files).size(), 2);
}

namespace {

// As the table stands when the master did not tell that it runs v3.1.0.
const UpdateTable::Row oldRow = {
    true, {"Firmware update (zan-master)", "v0.0.0", "v3.0.0", "yes", "yes"}};
const QString stepBack = "Tracking software of zan-master: runs v3.1.0, would get v3.0.0";
const QString stopped = "The run was stopped before its first record. Nothing was sent.";

Fault silenceAt(const QByteArray& request)
{
    Fault fault;
    fault.mode = FaultMode::StaySilent;
    fault.request = request;
    fault.times = 0;
    return fault;
}

} // namespace

void TestRunFollower::stepBackGoesWithPermissionOnly_data()
{
    QTest::addColumn<bool>("isAsked");
    QTest::addColumn<bool>("isAllowed");
    QTest::newRow("nobody is there to be asked") << false << false;
    QTest::newRow("the user stops it") << true << false;
    QTest::newRow("the user wants it so") << true << true;
}

void TestRunFollower::stepBackGoesWithPermissionOnly()
{
    QFETCH(const bool, isAsked);
    QFETCH(const bool, isAllowed);
    SimulatedSite equipment(scenarioWith("cascade"));
    const FixtureFolder folder;
    Start start(equipment, folder, {oldRow});
    QStringList asked;
    if (isAsked) {
        start.follower.setPermission([&](const QVector<StepBack>& steps) {
            for (const StepBack& step : steps)
                asked += stepBackText(step);
            return isAllowed;
        });
    }
    start.update("none", "update", trackingSoftware({3, 0, 0}));
    QCOMPARE(asked, isAsked ? QStringList{stepBack} : QStringList());
    QCOMPARE(start.follower.hasRun(), isAllowed);
    QCOMPARE(equipment.controller(0).stagedPt.isEmpty(), !isAllowed);
    QCOMPARE(equipment.controller(0).recordsReceived > 0, isAllowed);
    QCOMPARE(start.messages, isAllowed ? QStringList{stepBack} : (QStringList{stepBack, stopped}));
}

void TestRunFollower::stoppedRunIsNone()
{
    SimulatedSite equipment(scenarioWith("cascade"));
    const FixtureFolder folder;
    Start start(equipment, folder, {leftRow});
    start.update("192.168.7.21", "update", trackingSoftware({3, 3, 0}));
    start.follower.moduleRests();
    const QStringList verdicts = start.verdicts();
    const QStringList events = start.events();

    UpdateTable back({oldRow}, &start.window);
    start.table.setParent(nullptr);
    start.update("none", "update", trackingSoftware({3, 0, 0}));
    start.follower.moduleRests();
    QCOMPARE(start.messages.constLast(), stopped);
    QCOMPARE(start.verdicts(), verdicts);
    QCOMPARE(start.events(), events);
    // The next one is asked about anew, and goes if it takes nobody back.
    back.item(0, 3)->setText("v3.3.0");
    char reply[replyBytes] = {};
    start.channel.get_string(reply, "status active");
    start.update("none", "update", trackingSoftware({3, 3, 0}));
    QCOMPARE(start.verdicts().constFirst(), QString("zan-master | v0.0.0 | v3.3.0 | - | "
                                                    "unconfirmed | It has not been asked yet."));
    QVERIFY(!equipment.controller(0).stagedPt.isEmpty());
}

void TestRunFollower::lastKnownVersionStandsAgainstThePlan()
{
    SimulatedSite equipment(scenarioWith("cascade"));
    const FixtureFolder folder;
    Start start(equipment, folder, {oldRow});
    equipment.system.armFault(silenceAt("system version"));
    start.update("none", "update", trackingSoftware({3, 0, 0}));
    QCOMPARE(start.messages, (QStringList{stepBack, stopped}));

    // A system that never told is not known.
    SimulatedSite silent(scenarioWith("cascade", {silenceAt("system version")}));
    const FixtureFolder elsewhere;
    Start first(silent, elsewhere, {oldRow});
    first.update("none", "update", trackingSoftware({3, 0, 0}));
    QCOMPARE(first.messages, (QStringList{"Tracking software of zan-master: does not tell what it "
                                          "runs, would get v3.0.0",
                                          stopped}));
}

void TestRunFollower::anotherSystemIsNotCompared_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("title");
    QTest::newRow("at another address") << "192.168.7.99"
                                        << "";
    QTest::newRow("at the same one") << "192.168.7.20"
                                     << "Another cascade";
}

void TestRunFollower::anotherSystemIsNotCompared()
{
    QFETCH(const QString, address);
    QFETCH(const QString, title);
    SimulatedSite equipment(scenarioWith("cascade"));
    const FixtureFolder folder;
    {
        Start start(equipment, folder, {masterRow, leftRow});
        updateCascade(start);
    }
    Scenario other = scenarioWith("cascade");
    other.controllers[0].address = address;
    other.title += title;
    SimulatedSite elsewhere(other);
    const Start start(elsewhere, folder, {});
    QCOMPARE(start.messages, QStringList{"The last run was at another system, then at "
                                         "192.168.7.20, and is not compared with this one."});
    QCOMPARE(start.shown.count(), 0);
    QVERIFY(start.follower.hasRun());
}

void TestRunFollower::damagedFileIsSetAside()
{
    SimulatedSite equipment(scenarioWith("cascade"));
    const FixtureFolder folder;
    const QString file = folder.write("runs/run-20260301-120005-017.json", "{ no run");
    const Start start(equipment, folder, {});
    QVERIFY(!start.follower.hasRun());
    QCOMPARE(start.messages.size(), 1);
    QVERIFY2(start.messages.constFirst().startsWith("The results of a run were set aside: " + file),
             qPrintable(start.messages.constFirst()));
    QVERIFY(QFile::exists(file + ".damaged"));
}

void TestRunFollower::runWithoutATableIsTold()
{
    SimulatedSite equipment(scenarioWith("cascade"));
    const FixtureFolder folder;
    Start start(equipment, folder, {masterRow, leftRow});
    start.table.setHorizontalHeaderItem(1, new QTableWidgetItem("Kind"));
    updateCascade(start);
    start.follower.moduleRests();
    QVERIFY(!start.follower.hasRun());
    QCOMPARE(start.messages, QStringList{"An update begins, but there is no table that tells what "
                                         "is planned."});
}

ZAN_WIDGET_TEST_MAIN(TestRunFollower)
#include "tst_runfollower.moc"
