#include <plannedrun.h>

#include <elsewhere.h>
#include <testmain.h>

Q_DECLARE_METATYPE(Outcome)
Q_DECLARE_METATYPE(PlannedUpdate)

namespace {

PlannedUpdate controllerUpdate(const QString& device, const QString& from, const QString& planned,
                               bool isExact = true)
{
    PlannedUpdate update;
    update.device = device;
    update.from = from;
    update.planned = planned;
    update.isExact = isExact;
    return update;
}

PlannedUpdate firmwareUpdate(const QString& device, const QString& from, const QString& planned)
{
    PlannedUpdate update = controllerUpdate(device, from, planned, false);
    update.part = Part::ControllerFirmware;
    return update;
}

PlannedUpdate cameraUpdate(const QString& device, const QString& from, const QString& planned)
{
    PlannedUpdate update = controllerUpdate(device, from, planned, false);
    update.part = Part::CameraFirmware;
    return update;
}

PlannedUpdate concluded(PlannedUpdate update, Outcome outcome)
{
    update.outcome = outcome;
    return update;
}

PlannedUpdate skippedUpdate(const QString& device)
{
    PlannedUpdate update = controllerUpdate(device, "v3.1.0", "v3.3.0");
    update.outcome = Outcome::Skipped;
    update.remark = "It was not ticked.";
    return update;
}

/// A run that came to its end, after which the controllers were restarted or not.
PlannedRun runOf(const QVector<PlannedUpdate>& updates, bool hasRestarted)
{
    PlannedRun run;
    run.started = QDateTime(QDate(2026, 3, 1), QTime(12, 0, 5));
    run.system = "192.168.7.20";
    run.updates = updates;
    run.hasEnded = true;
    run.hasRestarted = hasRestarted;
    return run;
}

SystemReport reportOf(const QString& pt, const QString& ct = "v1.4")
{
    SystemReport report;
    report.isReachable = true;
    report.controllers = {{"master", 2, pt, ct}};
    return report;
}

SystemReport cameraReport(const QString& version)
{
    SystemReport report = reportOf("v3.3.0");
    report.cameras = {{"T9 C-1", version}};
    return report;
}

QString verdictOf(const PlannedUpdate& update)
{
    return resultTexts(update).mid(4).join(" | ");
}

const QString waitsForRestart =
    "unconfirmed | It runs a new version only after a restart, and none is known of.";
const QString waitsForPower =
    "unconfirmed | It runs a new version only after a power cycle and a search for hardware.";

} // namespace

class TestPlannedRun : public QObject
{
    Q_OBJECT

private slots:
    void controllerIsJudgedByWhatItReports_data();
    void controllerIsJudgedByWhatItReports();
    void cameraIsJudgedByWhatItReports_data();
    void cameraIsJudgedByWhatItReports();
    void devicesThatDoNotAnswerStayUnconfirmed();
    void deviceThatWasMissingHasComeBack();
    void devicesOfOneNameAreToldApartOnlyIfTheyAgree();
    void brokenOffRunIsTold();
    void whatIsSettledIsNotJudgedAgain();
    void changesAreTold();
    void summaryCountsDevices_data();
    void summaryCountsDevices();
    void logTextIsReadable();
};

void TestPlannedRun::controllerIsJudgedByWhatItReports_data()
{
    QTest::addColumn<PlannedUpdate>("update");
    QTest::addColumn<QString>("found");
    QTest::addColumn<bool>("hasRestarted");
    QTest::addColumn<QString>("verdict");
    const PlannedUpdate release = controllerUpdate("master", "v3.1.0", "v3.3.0");
    const PlannedUpdate overItsPreRelease = controllerUpdate("master", "v3.3.0-rc.1", "v3.3.0");
    const PlannedUpdate preRelease = controllerUpdate("master", "v3.1.0", "v3.2.0-beta.2");
    const PlannedUpdate again = controllerUpdate("master", "v3.2.0-beta.2", "v3.2.0-beta.2");
    const PlannedUpdate unclear = controllerUpdate("master", "v3.3.0-rc.1", "v3.3.0", false);

    QTest::newRow("what was planned runs") << release << "v3.3.0" << true << "v3.3.0 | done | ";
    QTest::newRow("what was planned runs, however it was restarted")
        << release << "v3.3.0" << false << "v3.3.0 | done | ";
    QTest::newRow("it came back old")
        << release << "v3.1.0" << true
        << "v3.1.0 | failed | It came back with the version from before.";
    QTest::newRow("it came back with a step of the chain")
        << release << "v3.2.0" << true << "v3.2.0 | failed | It runs another version than planned.";
    QTest::newRow("a step of the chain proves a restart")
        << release << "v3.2.0" << false
        << "v3.2.0 | failed | It runs another version than planned.";
    QTest::newRow("it was not restarted")
        << release << "v3.1.0" << false << "v3.1.0 | " + waitsForRestart;
    QTest::newRow("a pre-release is not the release")
        << release << "v3.3.0-rc.1" << true
        << "v3.3.0-rc.1 | failed | It runs another version than planned.";
    QTest::newRow("the release over its pre-release")
        << overItsPreRelease << "v3.3.0" << true << "v3.3.0 | done | ";
    QTest::newRow("the release did not come over its pre-release")
        << overItsPreRelease << "v3.3.0-rc.1" << true
        << "v3.3.0-rc.1 | failed | It came back with the version from before.";
    QTest::newRow("a planned pre-release")
        << preRelease << "v3.2.0-beta.2" << true << "v3.2.0-beta.2 | done | ";
    QTest::newRow("another pre-release")
        << preRelease << "v3.2.0-beta.3" << true
        << "v3.2.0-beta.3 | failed | It runs another version than planned.";
    QTest::newRow("the same pre-release once more")
        << again << "v3.2.0-beta.2" << true << "v3.2.0-beta.2 | done | ";
    QTest::newRow("a release where only numbers are known")
        << unclear << "v3.3.0" << true << "v3.3.0 | done | ";
    QTest::newRow("another pre-release where only numbers are known")
        << unclear << "v3.3.0-rc.2" << true
        << "v3.3.0-rc.2 | done | Only the numbers could be compared.";
    QTest::newRow("the old pre-release where only numbers are known")
        << unclear << "v3.3.0-rc.1" << true
        << "v3.3.0-rc.1 | failed | It came back with the version from before.";
    QTest::newRow("a version of two parts and one of three")
        << controllerUpdate("master", "v3.1.0", "v3.3") << "v3.3.0" << true << "v3.3.0 | done | ";
    QTest::newRow("controller firmware")
        << firmwareUpdate("master", "v1.2", "v1.4") << "v3.3.0" << true << "v1.4 | done | ";
    QTest::newRow("controller firmware that failed beside tracking software that did not")
        << firmwareUpdate("master", "v1.4", "v1.5") << "v3.3.0" << true
        << "v1.4 | failed | It came back with the version from before.";
    QTest::newRow("what was left out on purpose")
        << skippedUpdate("master") << "v3.1.0" << true << "- | skipped | It was not ticked.";
}

void TestPlannedRun::controllerIsJudgedByWhatItReports()
{
    QFETCH(const PlannedUpdate, update);
    QFETCH(const QString, found);
    QFETCH(const bool, hasRestarted);
    PlannedRun run = runOf({update}, hasRestarted);
    run.judge(reportOf(found));
    QTEST(verdictOf(run.updates.constFirst()), "verdict");
}

void TestPlannedRun::cameraIsJudgedByWhatItReports_data()
{
    QTest::addColumn<QString>("from");
    QTest::addColumn<QString>("found");
    QTest::addColumn<QString>("verdict");
    QTest::newRow("what was planned runs") << "v1.3.0"
                                           << "v1.4.0"
                                           << "v1.4.0 | done | ";
    QTest::newRow("it waits for its power cycle") << "v1.3.0"
                                                  << "v1.3.0"
                                                  << "v1.3.0 | " + waitsForPower;
    QTest::newRow("another version runs")
        << "v1.3.0"
        << "v1.2.0"
        << "v1.2.0 | failed | It runs another version than planned.";
    QTest::newRow("a release over its pre-release waits for its power cycle")
        << "v1.4.0-rc.1"
        << "v1.4.0-rc.1"
        << "v1.4.0-rc.1 | " + waitsForPower;
    QTest::newRow("a release over its pre-release") << "v1.4.0-rc.1"
                                                    << "v1.4.0"
                                                    << "v1.4.0 | done | ";
    QTest::newRow("a pre-release of the planned numbers")
        << "v1.3.0"
        << "v1.4.0-rc.1"
        << "v1.4.0-rc.1 | done | Only the numbers could be compared.";
}

void TestPlannedRun::cameraIsJudgedByWhatItReports()
{
    QFETCH(const QString, from);
    QFETCH(const QString, found);
    // A restart of the controllers is no power cycle of cameras.
    PlannedRun run = runOf({cameraUpdate("T9 C-1", from, "v1.4.0")}, true);
    run.judge(cameraReport(found));
    QTEST(verdictOf(run.updates.constFirst()), "verdict");
}

void TestPlannedRun::devicesThatDoNotAnswerStayUnconfirmed()
{
    PlannedRun run = runOf({controllerUpdate("master", "v3.1.0", "v3.3.0"),
                            controllerUpdate("left", "v3.1.0", "v3.3.0"),
                            cameraUpdate("T9 C-1", "v1.3.0", "v1.4.0")},
                           true);
    const QString silent = "- | unconfirmed | It does not answer.";
    run.judge(SystemReport());
    for (const PlannedUpdate& update : qAsConst(run.updates)) {
        QCOMPARE(verdictOf(update), silent);
        QVERIFY(!update.wasAway); // only the system as a whole was
    }
    run.judge(reportOf("v3.3.0"));
    QCOMPARE(verdictOf(run.updates.at(0)), QString("v3.3.0 | done | "));
    QCOMPARE(verdictOf(run.updates.at(1)), silent);
    QCOMPARE(verdictOf(run.updates.at(2)), silent);
    QVERIFY(!run.isSettled());
}

void TestPlannedRun::deviceThatWasMissingHasComeBack()
{
    PlannedRun run = runOf({cameraUpdate("T9 C-1", "v1.3.0", "v1.4.0")}, false);
    run.judge(cameraReport("v1.3.0"));
    QCOMPARE(verdictOf(run.updates.constFirst()), "v1.3.0 | " + waitsForPower);
    run.judge(reportOf("v3.3.0"));
    QCOMPARE(verdictOf(run.updates.constFirst()), QString("- | unconfirmed | It does not answer."));
    run.judge(cameraReport("v1.3.0"));
    QCOMPARE(verdictOf(run.updates.constFirst()),
             QString("v1.3.0 | failed | It came back with the version from before."));
}

void TestPlannedRun::devicesOfOneNameAreToldApartOnlyIfTheyAgree()
{
    PlannedRun run = runOf({controllerUpdate("master", "v3.1.0", "v3.3.0")}, true);
    SystemReport report = reportOf("v3.3.0");
    report.controllers.append({"master", 2, "v3.1.0", "v1.2"});
    run.judge(report);
    QCOMPARE(verdictOf(run.updates.constFirst()),
             QString("v3.3.0, v3.1.0 | unconfirmed | Several devices have this name."));
    report.controllers.last().pt = "v3.3.0";
    run.judge(report);
    QCOMPARE(verdictOf(run.updates.constFirst()), QString("v3.3.0 | done | "));
}

void TestPlannedRun::brokenOffRunIsTold()
{
    PlannedRun run = runOf({controllerUpdate("master", "v3.1.0", "v3.3.0"),
                            cameraUpdate("T9 C-1", "v1.3.0", "v1.4.0")},
                           false);
    run.hasEnded = false;
    SystemReport report = cameraReport("v1.3.0");
    report.controllers[0].pt = "v3.1.0";
    run.judge(report);
    QCOMPARE(run.updates.at(0).remark,
             QString("The run was broken off. It runs a new version only after a restart, and none "
                     "is known of."));
    QCOMPARE(run.updates.at(1).remark,
             QString("The run was broken off. It runs a new version only after a power cycle and a "
                     "search for hardware."));
}

void TestPlannedRun::whatIsSettledIsNotJudgedAgain()
{
    PlannedRun run =
        runOf({controllerUpdate("master", "v3.1.0", "v3.3.0"), skippedUpdate("left")}, true);
    run.judge(reportOf("v3.3.0"));
    QVERIFY(run.isSettled());
    QVERIFY(!run.judge(reportOf("v9.9.9")));
    QCOMPARE(verdictOf(run.updates.at(0)), QString("v3.3.0 | done | "));
}

void TestPlannedRun::changesAreTold()
{
    PlannedRun run = runOf({controllerUpdate("master", "v3.1.0", "v3.3.0")}, false);
    QVERIFY(run.judge(reportOf("v3.1.0")));
    QVERIFY(!run.judge(reportOf("v3.1.0")));
    QVERIFY(run.judge(SystemReport()));
    QVERIFY(!run.judge(SystemReport()));
    QVERIFY(run.judge(reportOf("v3.3.0")));
}

void TestPlannedRun::summaryCountsDevices_data()
{
    QTest::addColumn<QVector<PlannedUpdate>>("updates");
    QTest::addColumn<QString>("summary");
    const auto controller = [](const QString& name, Outcome outcome) {
        return concluded(controllerUpdate(name, "v3.1.0", "v3.3.0"), outcome);
    };
    const auto firmware = [](const QString& name, Outcome outcome) {
        return concluded(firmwareUpdate(name, "v1.2", "v1.4"), outcome);
    };
    const auto camera = [](const QString& name, Outcome outcome) {
        return concluded(cameraUpdate(name, "v1.3.0", "v1.4.0"), outcome);
    };
    using Updates = QVector<PlannedUpdate>;
    QTest::newRow("all controllers are done")
        << Updates{controller("master", Outcome::Done), firmware("master", Outcome::Done),
                   controller("left", Outcome::Done), controller("right", Outcome::Done)}
        << "3 of 3 controllers run what was planned.";
    QTest::newRow("one controller") << Updates{controller("master", Outcome::Done)}
                                    << "1 of 1 controller runs what was planned.";
    QTest::newRow("one camera") << Updates{camera("C-1", Outcome::Unconfirmed)}
                                << "0 of 1 camera runs what was planned. Unconfirmed: C-1.";
    QTest::newRow("half a controller is not done")
        << Updates{controller("master", Outcome::Done), firmware("master", Outcome::Failed)}
        << "0 of 1 controller runs what was planned. Failed: master.";
    QTest::newRow("each is named once")
        << Updates{controller("master", Outcome::Failed), firmware("master", Outcome::Failed),
                   controller("left", Outcome::Unconfirmed), camera("C-1", Outcome::Done),
                   camera("C-2", Outcome::Failed)}
        << "0 of 2 controllers run what was planned. 1 of 2 cameras run what was planned. Failed: "
           "master, C-2. Unconfirmed: left.";
    QTest::newRow("many are not all named")
        << Updates{camera("C-1", Outcome::Failed), camera("C-2", Outcome::Failed),
                   camera("C-3", Outcome::Failed), camera("C-4", Outcome::Failed),
                   camera("C-5", Outcome::Failed), camera("C-6", Outcome::Failed)}
        << "0 of 6 cameras run what was planned. Failed: C-1, C-2, C-3, C-4, 2 more.";
    QTest::newRow("what was skipped does not count")
        << Updates{controller("master", Outcome::Done), skippedUpdate("left")}
        << "1 of 1 controller runs what was planned.";
    QTest::newRow("a camera without a name")
        << Updates{camera("", Outcome::Failed)}
        << "0 of 1 camera runs what was planned. Failed: Camera without a name.";
    QTest::newRow("nothing") << Updates{skippedUpdate("left")} << "Nothing was planned.";
}

void TestPlannedRun::summaryCountsDevices()
{
    QFETCH(const QVector<PlannedUpdate>, updates);
    QTEST(runOf(updates, true).summary(), "summary");
}

void TestPlannedRun::logTextIsReadable()
{
    PlannedRun run = runOf({controllerUpdate("master", "v3.1.0", "v3.3.0"),
                            firmwareUpdate("master", "v1.2", "v1.4"), skippedUpdate("left")},
                           true);
    const Elsewhere elsewhere("ar_EG", "XXX-1");
    run.started = QDateTime(QDate(2026, 3, 1), QTime(12, 0, 5));
    run.events = {{QDateTime(QDate(2026, 3, 1), QTime(12, 0, 5)), "The run began."},
                  {QDateTime(QDate(2026, 3, 1), QTime(12, 4, 59)), "The run ended."}};
    run.judge(reportOf("v3.3.0", "v1.2"));
    QCOMPARE(run.logText(),
             QString("Update of 2026-03-01 12:00:05.000+01:00, system at 192.168.7.20\n"
                     "\n"
                     "0 of 1 controller runs what was planned. Failed: master.\n"
                     "\n"
                     "Device  Part                 From    Planned  Found   Outcome  Remark\n"
                     "master  Tracking software    v3.1.0  v3.3.0   v3.3.0  done\n"
                     "master  Controller firmware  v1.2    v1.4     v1.2    failed   It came back "
                     "with the version from before.\n"
                     "left    Tracking software    v3.1.0  v3.3.0   -       skipped  It was not "
                     "ticked.\n"
                     "\n"
                     "2026-03-01 12:00:05.000+01:00  The run began.\n"
                     "2026-03-01 12:04:59.000+01:00  The run ended.\n"));
}

ZAN_TEST_MAIN(TestPlannedRun)
#include "tst_plannedrun.moc"
