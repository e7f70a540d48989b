#include "headlessstart.h"

#include <simulatorfixtures.h>

#include <fixturefiles.h>
#include <recordedsleep.h>
#include <widgettestmain.h>

#include <QDir>
#include <QFile>

namespace {

Scenario scenarioOf(const QString& name, int bootMs = endlessBootMs)
{
    Scenario scenario = shippedScenario(name);
    scenario.timing.bootMs = bootMs;
    return scenario;
}

QStringList versionsOf(const Equipment& system)
{
    QStringList versions;
    for (const ControllerState& controller : system.state().controllers)
        versions +=
            QStringList{controller.hostName, controller.pt.section(' ', 0, 0), controller.ct}.join(
                ' ');
    return versions;
}

QByteArray preferences()
{
    QFile file(QDir::homePath() +
               "/.ORV/VORNIX3/modules/zanupdate/v2.0.0/config/zanupdate-preferences.xml");
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

const QString frontendText = "VORNIX3 v3.3.0 - 192.168.7.20";

const QStringList updateDialogText = {
    "window: Controller and Camera Update",
    ": The VORNIX3 frontend has detected that the firmware on your Controller is an older version "
    "than the VORNIX3 version installed on this workstation.",
    ": Please update your controller.",
    ": We recommend that you save all VORNIX3 configurations before running this update!",
    ": (VORNIX3 -> Configurations -> Backup -> Save)"};

} // namespace

/// The whole job with the built module, from start-up to the restart and the second start.
class TestUpdateRoad : public QObject
{
    Q_OBJECT

private slots:
    void cascadeIsBroughtUpToDate();
    void controllerThatComesBackOldIsTold();
    void camerasAreToldOncePowerAndSearchAreDone();
    void everyEndIsTold_data();
    void everyEndIsTold();

private:
    // Simulated devices do not need the time that the module gives real ones.
    const RecordedSleep m_sleep{[](int /*milliseconds*/) {
    }};
};

void TestUpdateRoad::cascadeIsBroughtUpToDate()
{
    const FixtureFolder folder;
    {
        const Start first(scenarioOf("cascade"), folder);
        QCOMPARE(storyOf(first.narrator),
                 (QStringList{"log: Frontend: Simulated system: A master and two slaves, all two "
                              "releases behind",
                              "log: Frontend: Connected to 192.168.7.20",
                              "log: Frontend: Module loaded: GUI Controller Update v2.0.0"} +
                  updateDialogText +
                  QStringList{": [x] | Firmware update (zan-master) | v3.1.0 | v3.2.0 | yes | yes",
                              ": [x] | Firmware update (zan-left) | v3.1.0 | v3.2.0 | yes | yes",
                              ": [x] | Firmware update (zan-right) | v3.1.0 | v3.2.0 | yes | yes",
                              ": [x] | Firmware update (zan-master) | v3.2.0 | v3.3.0 | yes | yes",
                              ": [x] | Firmware update (zan-left) | v3.2.0 | v3.3.0 | yes | yes",
                              ": [x] | Firmware update (zan-right) | v3.2.0 | v3.3.0 | yes | yes",
                              ": [Update] [Exit]",
                              "press: Update",
                              "window: VORNIX3",
                              ": This action will install new firmware to your Controller.",
                              ": Do you really want to update?",
                              ": [Yes] [No]",
                              "press: Yes",
                              "window: VORNIX3",
                              ": Don't stop the update process until it is finished!",
                              ": [OK] [Cancel]",
                              "press: OK",
                              "window: VORNIX3",
                              ": The Controller is updated successfully and must be restarted.",
                              ": Do you want to restart the Controller now?",
                              ": (This restart may take a few minutes. Do not switch off the "
                              "Controller during restart.)",
                              ": If yes VORNIX3 will be closed",
                              ": [Yes] [No]",
                              "press: Yes",
                              "log: Frontend: The module has ended its work; the frontend shuts "
                              "down.",
                              "result: The controllers restart. Start again to see what became of "
                              "it."}));
        QCOMPARE(first.code, StartAgain);
        // Nothing runs before the restart has ended.
        QCOMPARE(versionsOf(first.frontend.equipment()),
                 (QStringList{"zan-master v3.1.0 v1.2", "zan-left v3.1.0 v1.2",
                              "zan-right v3.1.0 v1.2"}));
        QVERIFY(!first.frontend.equipment().isReachable());
    }
    QVERIFY(preferences().contains("SHOW_AT_START=\"true\""));

    const Start second(scenarioOf("cascade", seenBootMs), folder);
    const QStringList story = storyOf(second.narrator);
    QCOMPARE(story.mid(0, 2),
             (QStringList{"log: Frontend: Simulated system: A master and two slaves, all two "
                          "releases behind",
                          "window: " + frontendText + " (no answer)"}));
    QCOMPARE(story.at(2), QString(": Waiting for the controllers to come back..."));
    QVERIFY(story.contains(": zan-left | Slave | 192.168.7.21 | ZAN C2 | 732 | v3.1.0 | v1.2 | "
                           "Pt v3.3.0, Ct v1.4 | Restarting"));
    const int results = story.indexOf("window: Results of the Update");
    QVERIFY(results > story.indexOf("log: Frontend: Connected to 192.168.7.20"));
    QCOMPARE(story.mid(results + 1, 9),
             (QStringList{": 3 of 3 controllers run what was planned.",
                          ": zan-master | Tracking software | v3.1.0 | v3.3.0 | v3.3.0 | done",
                          ": zan-master | Controller firmware | v1.2 | v1.4 | v1.4 | done",
                          ": zan-left | Tracking software | v3.1.0 | v3.3.0 | v3.3.0 | done",
                          ": zan-left | Controller firmware | v1.2 | v1.4 | v1.4 | done",
                          ": zan-right | Tracking software | v3.1.0 | v3.3.0 | v3.3.0 | done",
                          ": zan-right | Controller firmware | v1.2 | v1.4 | v1.4 | done",
                          ": [Open log file] [Copy] [Close]", "press: Close"}));
    const int notes = story.indexOf("window: New Features");
    QVERIFY(notes > story.indexOf("log: Frontend: Connected to 192.168.7.20"));
    QCOMPARE(story.at(notes + 1), QString(": VORNIX3 v3.3.0"));
    QVERIFY(story.indexOf("press: Show more") > notes);
    const int dialog = story.indexOf("menu: Controller and Camera Update");
    QVERIFY(dialog > notes);
    QCOMPARE(
        story.mid(dialog, 7),
        (QStringList{"menu: Controller and Camera Update", "window: Controller and Camera Update",
                     ": Controller(s) and cameras are up to date",
                     ": We recommend that you save all VORNIX3 configurations before running "
                     "this update!",
                     ": (VORNIX3 -> Configurations -> Backup -> Save)", ": [Update] (off) [Exit]",
                     "press: Exit"}));
    QCOMPARE(story.constLast(),
             QString("result: All controllers and cameras run the newest versions."));
    QCOMPARE(second.code, Success);
    QCOMPARE(
        versionsOf(second.frontend.equipment()),
        (QStringList{"zan-master v3.3.0 v1.4", "zan-left v3.3.0 v1.4", "zan-right v3.3.0 v1.4"}));
    QVERIFY(!preferences().contains("SHOW_AT_START=\"true\""));
}

void TestUpdateRoad::controllerThatComesBackOldIsTold()
{
    const FixtureFolder folder;
    Scenario scenario = scenarioOf("single");
    Fault fault;
    fault.mode = FaultMode::ComeBackOld;
    scenario.faults = {fault};
    QCOMPARE(Start(scenario, folder).code, StartAgain);
    scenario.timing.bootMs = seenBootMs;
    const QStringList logs = QDir(folder.path("state/runs")).entryList({"*.log"}, QDir::Files);
    QCOMPARE(logs.size(), 1);

    // The second start finds the old version, plays the user once more and restarts again.
    const Start second(scenario, folder);
    const QStringList story = storyOf(second.narrator);
    const int results = story.indexOf("window: Results of the Update");
    QVERIFY(results > 0);
    QCOMPARE(story.mid(results + 1, 3),
             (QStringList{": 0 of 1 controller runs what was planned. Failed: zan-master.",
                          ": zan-master | Tracking software | v3.1.0 | v3.3.0 | v3.1.0 | failed | "
                          "It came back with the version from before.",
                          ": zan-master | Controller firmware | v1.2 | v1.4 | v1.2 | failed | It "
                          "came back with the version from before."}));
    QFile log(folder.path("state/runs/" + logs.constFirst()));
    QVERIFY(log.open(QIODevice::ReadOnly));
    QVERIFY(log.readAll().contains("0 of 1 controller runs what was planned."));
}

void TestUpdateRoad::camerasAreToldOncePowerAndSearchAreDone()
{
    const FixtureFolder folder;
    const Start start(scenarioOf("cameras"), folder);
    const QStringList story = storyOf(start.narrator);
    QCOMPARE(start.code, Success);
    const int waiting = story.indexOf("window: Results of the Update");
    QVERIFY(waiting > story.indexOf("press: OK"));
    QCOMPARE(story.at(waiting + 1),
             QString(": 0 of 4 cameras run what was planned. Unconfirmed: Tracking camera T9 "
                     "C-4101, Tracking camera T9 C-4102, Tracking camera T12 C-5201, Tracking "
                     "camera T14 C-6301."));
    QCOMPARE(story.at(waiting + 2),
             QString(": Tracking camera T9 C-4101 | Camera firmware | v1.3.0 | v1.4.0 | v1.3.0 | "
                     "unconfirmed | It runs a new version only after a power cycle and a search "
                     "for hardware."));
    const int done = story.lastIndexOf("window: Results of the Update");
    QVERIFY(done > story.indexOf("menu: Search for hardware..."));
    QCOMPARE(
        story.mid(done + 1, 2),
        (QStringList{
            ": 4 of 4 cameras run what was planned.",
            ": Tracking camera T9 C-4101 | Camera firmware | v1.3.0 | v1.4.0 | v1.4.0 | done"}));
}

void TestUpdateRoad::everyEndIsTold_data()
{
    QTest::addColumn<QString>("scenario");
    QTest::addColumn<int>("code");
    QTest::addColumn<QStringList>("ending"); ///< last lines of the story
    QTest::newRow("nothing to do")
        << "up-to-date" << int(Success)
        << QStringList{"result: All controllers and cameras run the newest versions."};
    QTest::newRow("a controller that is no longer supported")
        << "discontinued" << int(NotNewest)
        << QStringList{
               "result: refused: An update to the selected version is not possible due to "
               "discontinued support for your controller. Please contact O.R.V. for "
               "support. Discontinued controllers: zan-master (SN 731), zan-master (SN 731)",
               "result: zan-master runs Pt v3.1.0 and not v3.3.0",
               "result: zan-master runs Ct v1.2 and not v1.4",
               "result: Not all controllers and cameras run the newest versions."};
    QTest::newRow("a measurement that does not stop")
        << "measurement-refuses" << int(NotNewest)
        << QStringList{"result: zan-right runs Ct v1.2 and not v1.4",
                       "result: Not all controllers and cameras run the newest versions."};
    QTest::newRow("an observer")
        << "observer" << int(NotNewest)
        << QStringList{"result: Not all controllers and cameras run the newest versions."};
}

void TestUpdateRoad::everyEndIsTold()
{
    QFETCH(const QString, scenario);
    QFETCH(const QStringList, ending);
    const FixtureFolder folder;
    const Start start(scenarioOf(scenario), folder);
    const QStringList story = storyOf(start.narrator);
    QCOMPARE(story.mid(story.size() - ending.size()), ending);
    QTEST(int(start.code), "code");
}

ZAN_WIDGET_TEST_MAIN(TestUpdateRoad)
#include "tst_updateroad.moc"
