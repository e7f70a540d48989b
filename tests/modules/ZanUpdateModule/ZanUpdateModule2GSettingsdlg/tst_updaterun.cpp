#include "dialogfixture.h"
#include "expectedboxes.h"
#include "exposeddialog.h"
#include "fixtureimages.h"
#include "runlog.h"
#include "shownprogress.h"

#include <ZanDisplay.h>
#include <widgettestmain.h>

/// What happens while a run serves events.
using Interruption = std::function<void(DialogFixture&)>;
Q_DECLARE_METATYPE(Interruption)

/// The whole road, from the opening of the dialog to the restart.
class UpdateRun : public QObject
{
    Q_OBJECT

private slots:
    void updatesAMaster();
    void updatesACascadeThroughAChainOfReleases();
    void showsAChainsProgress();
    void goesOnBehindAFailedRow();
    void leavesOutWhatTheUserTookOff();
    void updatesACamera();
    void canRunAgain();

    void nothingStartsInsideARun_data();
    void nothingStartsInsideARun();
    void nothingStartsBehindABox();
    void finishesThoughTheUserLeaves_data();
    void finishesThoughTheUserLeaves();

    void deadChannelFails();
    void channelThatDiesFails_data();
    void channelThatDiesFails();
};

static ScriptedController master()
{
    ScriptedController master;
    master.board = "\"Fujitsu D3231\"";
    return master;
}

static ScriptedSlave slave()
{
    ScriptedSlave slave;
    slave.address = "10.0.0.2";
    slave.controller.hostname = "beta";
    slave.controller.serial = 600;
    return slave;
}

/// What goes out when the inventory asks the master.
static QStringList masterQueries()
{
    return {R"(get_string "system hostname")",
            R"(get_string "system controller_version")",
            R"(get_string "system version")",
            R"(get_int "system model")",
            R"(get_string "system model_description")",
            R"(get_int "system controller_serial")",
            R"(get_string "system extra motherboard")",
            R"(get_int "cascade number_of_connected_slaves")"};
}

/// What goes out when the inventory asks the slave, behind the master.
static QStringList slaveQueries()
{
    return {R"(get_string "cascade connected_slave d01")",
            R"(get_string "cascade connected_slave_available 10.0.0.2")",
            R"(get_string "system hostname_slave 10.0.0.2")",
            R"(get_string "system controller_version_slave 10.0.0.2")",
            R"(get_string "system version_slave 10.0.0.2")",
            R"(get_int "system model_slave 10.0.0.2")",
            R"(get_string "system model_description_slave 10.0.0.2")",
            R"(get_string "cascade connected_slave_controller 10.0.0.2")"};
}

static const char* const CAMERA_COUNT = R"(get_int "camera number_of_cameras")";

static QStringList checksBeforeARun()
{
    return {"dialog ZanUpdateModule2GSettingsdlgClass",
            R"(get_int "system extra number_of_hardware")",
            "box This action will install new firmware to your Controller.",
            R"(get_string "status active")",
            R"(get_string "cascade wol_slaves")",
            "box Don't stop the update process until it is finished!"};
}

/// A block of two records, which go out as @p first and @p second.
static QStringList blockLines(const char* target, const char* word, int timeoutMs,
                              const char* first, const char* second)
{
    return {QStringLiteral("set_value \"system redirect_update %1\"").arg(QLatin1String(target)),
            QStringLiteral("set_value \"system %1 2 1 %2\"")
                .arg(QLatin1String(word), QLatin1String(first)),
            QStringLiteral("prepare_reply 1 %1 1").arg(timeoutMs),
            QStringLiteral("set_value \"system %1 2 2 %2\"")
                .arg(QLatin1String(word), QLatin1String(second)),
            "poll_reply 3"};
}

static const char* const SUCCESS_LINE =
    "box The Controller is updated successfully and must be restarted.";

static QStringList restartLines()
{
    return {SUCCESS_LINE, R"(post_message Main_Window ZanUpateModule 1 "AppReadyToShutdown")",
            R"(send_command "vornix2 system reboot")"};
}

static QVector<ImageRecord> records(int first, int second)
{
    return {shortRecord(first), shortRecord(second)};
}

/// One release with one firmware block, for a controller on 3.0.0.
static void deliverRelease(DialogFixture* fixture)
{
    fixture->deliver(QStringLiteral("image"),
                     releaseImage(VersionInfo(3, 1, 0), VersionInfo(1, 0),
                                  {blockFrom(VersionInfo(3, 0, 0), FirmwareBlock, records(1, 2))}));
}

/// Three releases from 3.0.0 to 3.3.0; the one in the middle has a system block as well.
static void deliverChain(DialogFixture* fixture)
{
    deliverRelease(fixture);
    ControllerImageBlock system = systemBlock(VersionInfo(1, 0), VersionInfo(1, 0));
    system.records = records(5, 6);
    fixture->deliver(
        QStringLiteral("image2"),
        releaseImage(VersionInfo(3, 2, 0), VersionInfo(1, 1),
                     {blockFrom(VersionInfo(3, 1, 0), FirmwareBlock, records(3, 4)), system}));
    fixture->deliver(QStringLiteral("image3"),
                     releaseImage(VersionInfo(3, 3, 0), VersionInfo(1, 1),
                                  {blockFrom(VersionInfo(3, 2, 0), FirmwareBlock, records(7, 8))}));
}

/// Opens the dialog, presses its button and goes through the boxes up to @p last. The dialog is
/// closed if it is still open. @return what update_and_exec() returns
static int runOnce(DialogFixture* fixture, RunLog* log, const ExpectedBox& last)
{
    log->expectUpdateDialog([=] {
        fixture->updateButton()->click();
        if (fixture->dialog.isVisible())
            fixture->dialog.reject();
    });
    log->expect(controllerConfirmation());
    log->expect(startNotice());
    log->expect(last);
    const int result = fixture->dialog.update_and_exec();
    if (!log->isDone())
        QTest::qFail(qPrintable(log->missing()), __FILE__, __LINE__);
    return result;
}

// ---- Runs that end well

void UpdateRun::updatesAMaster()
{
    DialogFixture fixture;
    scriptMaster(&fixture.channel, master());
    deliverRelease(&fixture);
    bShowNewFeatures(fixture.dialog) = false;
    RunLog log(&fixture);
    QVERIFY(makesApplicationQuit([&] { runOnce(&fixture, &log, restartOffer(QMessageBox::Yes)); }));

    // The inventory asks once when it is made, before it knows an image, and once for the table.
    QCOMPARE(log.lines(), masterQueries() + QStringList{CAMERA_COUNT} + masterQueries() +
                              checksBeforeARun() + blockLines("none", "update", 20000, "BA", "CA") +
                              restartLines());
    QCOMPARE(fixture.label("label_updates")->text(),
             QStringLiteral("Updating Controller..finished"));
    QCOMPARE(fixture.label("label_what")->text(), QStringLiteral("Updating firmware (alpha)"));
    QCOMPARE(fixture.label("label_msg")->text(), QStringLiteral("Update successful"));
    QCOMPARE(fixture.bar()->value(), 100);
    QVERIFY(bShowNewFeatures(fixture.dialog));
}

void UpdateRun::updatesACascadeThroughAChainOfReleases()
{
    DialogFixture fixture;
    scriptMaster(&fixture.channel, master());
    scriptSlaves(&fixture.channel, {slave()});
    deliverChain(&fixture);
    RunLog log(&fixture);
    QVERIFY(makesApplicationQuit([&] { runOnce(&fixture, &log, restartOffer(QMessageBox::Yes)); }));

    QStringList lines = masterQueries() + slaveQueries() + QStringList{CAMERA_COUNT} +
                        masterQueries() + slaveQueries() + checksBeforeARun();
    for (const char* target : {"none", "10.0.0.2"})
        lines += blockLines(target, "update", 20000, "BA", "CA");
    for (const char* target : {"none", "10.0.0.2"}) {
        lines += blockLines(target, "update", 20000, "DA", "EA") +
                 blockLines(target, "ctupdt", 120000, "FA", "GA") + QStringList{"sleep 2000"};
    }
    for (const char* target : {"none", "10.0.0.2"})
        lines += blockLines(target, "update", 20000, "HA", "IA");
    QCOMPARE(log.lines(), lines + restartLines());
}

void UpdateRun::showsAChainsProgress()
{
    DialogFixture fixture;
    scriptMaster(&fixture.channel, master());
    deliverChain(&fixture);
    RunLog log(&fixture);
    QStringList states;
    const auto note = [&] {
        const QString state =
            QStringLiteral("%1 | %2 | %3 | %4")
                .arg(fixture.label("label_updates")->text().left(21),
                     fixture.label("label_what")->text(), fixture.label("label_msg")->text())
                .arg(fixture.bar()->value());
        if (states.isEmpty() || states.last() != state)
            states += state;
    };
    connect(fixture.bar(), &QProgressBar::valueChanged, this, note);
    log.setHook([&](const QString& call) {
        if (call.startsWith(QLatin1String("set_value")))
            note();
    });
    runOnce(&fixture, &log, restartOffer());
    disconnect(fixture.bar(), nullptr, this, nullptr);

    const QString firmware = "Updating Controller.. | Updating firmware (alpha) | ";
    const QString system = "Updating Controller.. | Updating system (alpha) | ";
    const QString left = "Estimated remaining time: ";
    QCOMPARE(states,
             (QStringList{"Updating Controller.. |  |  | 1", firmware + " | 1",
                          firmware + left + "2 min 15 s | 12", firmware + left + "2 min 15 s | 25",
                          firmware + "Update successful | 100", firmware + " | 1",
                          firmware + left + "1 min 34 s | 37", firmware + left + "1 min 34 s | 50",
                          system + left + "1 min 34 s | 50", system + left + "53 s | 62",
                          system + left + "53 s | 75", system + "Update successful | 100",
                          system + " | 1", firmware + " | 1", firmware + left + "12 s | 87",
                          firmware + left + "12 s | 98", firmware + "Update successful | 100"}));
}

void UpdateRun::leavesOutWhatTheUserTookOff()
{
    DialogFixture fixture;
    scriptMaster(&fixture.channel, master());
    deliverChain(&fixture);
    RunLog log(&fixture);
    log.expectUpdateDialog([&] {
        for (const int row : {0, 1}) {
            fixture.table()->item(row, 0)->setCheckState(Qt::Unchecked);
            clickCell(fixture.dialog, row, 0);
        }
        fixture.updateButton()->click();
    });
    log.expect(controllerConfirmation());
    log.expect(startNotice());
    log.expect(restartOffer());
    QCOMPARE(fixture.dialog.update_and_exec(), int(QDialog::Accepted));
    QVERIFY2(log.isDone(), qPrintable(log.missing()));
    QCOMPARE(log.lines(), masterQueries() + QStringList{CAMERA_COUNT} + masterQueries() +
                              checksBeforeARun() + blockLines("none", "update", 20000, "HA", "IA") +
                              QStringList{SUCCESS_LINE});
}

void UpdateRun::updatesACamera()
{
    DialogFixture fixture;
    scriptMaster(&fixture.channel, master());
    scriptCameras(&fixture.channel, {ScriptedCamera{"0x0a01"}});
    fixture.deliver(QStringLiteral("camera.VX2znimg"), cameraFile({0x0a01}, VersionInfo(1, 1, 0)));
    RunLog log(&fixture);
    log.expectUpdateDialog([&] { fixture.updateButton()->click(); });
    log.expect(cameraConfirmation());
    log.expect(startNotice());
    log.expect(camerasDone());
    QCOMPARE(fixture.dialog.update_and_exec(), int(QDialog::Accepted));
    QVERIFY2(log.isDone(), qPrintable(log.missing()));

    const QStringList cameraQueries{CAMERA_COUNT, R"(get_string "camera camera c01")",
                                    R"(get_string "camera version c01")",
                                    R"(get_string "camera model_desc 0x0a01")"};
    QStringList checks = checksBeforeARun();
    checks[2] = "box This action will install new firmware to your camera(s).";
    const QStringList run{
        R"(send_command "vornix2 set camera update c01 2 1 BIwA")", "prepare_reply 1 40000 1",
        R"(send_command "vornix2 set camera update c01 2 2 /D")", "poll_reply 3",
        "box The cameras are updated successfully and must be restarted manually!"};
    QCOMPARE(log.lines(),
             masterQueries() + cameraQueries + masterQueries() + cameraQueries + checks + run);
}

// ---- Runs that fail

void UpdateRun::goesOnBehindAFailedRow()
{
    DialogFixture fixture;
    scriptMaster(&fixture.channel, master());
    scriptSlaves(&fixture.channel, {slave()});
    deliverRelease(&fixture);
    fixture.channel.on("system update 2 1 BA").fail().succeed();
    bShowNewFeatures(fixture.dialog) = false;
    RunLog log(&fixture);
    QCOMPARE(runOnce(&fixture, &log, updateFailed()), int(QDialog::Rejected));

    const QStringList failedRow{R"(set_value "system redirect_update none")",
                                R"(set_value "system update 2 1 BA")"};
    QCOMPARE(log.lines(), masterQueries() + slaveQueries() + QStringList{CAMERA_COUNT} +
                              masterQueries() + slaveQueries() + checksBeforeARun() + failedRow +
                              blockLines("10.0.0.2", "update", 20000, "BA", "CA") +
                              QStringList{"box Update failed!"});
    // The last row was a good one, and yet the run has failed.
    QCOMPARE(fixture.label("label_msg")->text(), QStringLiteral("Update successful"));
    QCOMPARE(fixture.bar()->value(), 100);
    QVERIFY(fixture.updateButton()->isEnabled());
    QVERIFY(fixture.exitButton()->isEnabled());
    QVERIFY(!bShowNewFeatures(fixture.dialog));
    QCOMPARE(fixture.channel.messages().size(), 0);
}

void UpdateRun::canRunAgain()
{
    DialogFixture fixture;
    scriptMaster(&fixture.channel, master());
    deliverRelease(&fixture);
    fixture.channel.onPoll().fail().succeed();
    RunLog log(&fixture);
    log.expectUpdateDialog([&] {
        fixture.updateButton()->click();
        QVERIFY(fixture.dialog.isVisible());
        fixture.updateButton()->click();
    });
    log.expect(controllerConfirmation());
    log.expect(startNotice());
    log.expect(updateFailed());
    log.expect(controllerConfirmation());
    log.expect(startNotice());
    log.expect(restartOffer());
    QCOMPARE(fixture.dialog.update_and_exec(), int(QDialog::Accepted));
    QVERIFY2(log.isDone(), qPrintable(log.missing()));
    const QStringList run = blockLines("none", "update", 20000, "BA", "CA");
    QCOMPARE(log.lines(), masterQueries() + QStringList{CAMERA_COUNT} + masterQueries() +
                              checksBeforeARun() + run + QStringList{"box Update failed!"} +
                              checksBeforeARun().mid(1) + run + QStringList{SUCCESS_LINE});
}

// ---- What the user and the timers do meanwhile

static void post(QObject* receiver, const std::function<void()>& act)
{
    QMetaObject::invokeMethod(receiver, act, Qt::QueuedConnection);
}

/// Goes through one run of a master, with @p interruption at every setting that goes out: what it
/// posts is served before the next record. @return the log from the button on
static QStringList interruptedRun(DialogFixture* fixture, const std::function<void()>& interruption)
{
    scriptMaster(&fixture->channel, master());
    deliverRelease(fixture);
    RunLog log(fixture);
    log.setHook([&](const QString& call) {
        if (call.startsWith(QLatin1String("set_value")))
            interruption();
    });
    if (runOnce(fixture, &log, restartOffer()) != QDialog::Accepted)
        QTest::qFail("the run did not end with its last box", __FILE__, __LINE__);
    return log.lines().mid(log.lines().indexOf(checksBeforeARun().first()));
}

static QStringList undisturbedLines()
{
    return checksBeforeARun() + blockLines("none", "update", 20000, "BA", "CA") +
           QStringList{SUCCESS_LINE};
}

void UpdateRun::nothingStartsInsideARun_data()
{
    QTest::addColumn<Interruption>("interruption");
    QTest::newRow("the hidden key") << Interruption(
        [](DialogFixture& fixture) { QTest::keyClick(&fixture.dialog, Qt::Key_F3); });
    QTest::newRow("a click on the button that is off") << Interruption(
        [](DialogFixture& fixture) { QTest::mouseClick(fixture.updateButton(), Qt::LeftButton); });
    QTest::newRow("a click on the other button that is off") << Interruption(
        [](DialogFixture& fixture) { QTest::mouseClick(fixture.exitButton(), Qt::LeftButton); });
    QTest::newRow("the menu entry") << Interruption([](DialogFixture& fixture) {
        QCOMPARE(fixture.dialog.update_and_exec(), int(QDialog::Rejected));
    });
    QTest::newRow("the timer of the start")
        << Interruption([](DialogFixture& fixture) { fixture.dialog.onTimer(); });
    QTest::newRow("a click on the tick and the hidden key")
        << Interruption([](DialogFixture& fixture) {
               clickCell(fixture.dialog, 0, 0);
               QVERIFY(!fixture.updateButton()->isEnabled());
               QTest::keyClick(&fixture.dialog, Qt::Key_F3);
           });
}

void UpdateRun::nothingStartsInsideARun()
{
    QFETCH(const Interruption, interruption);
    DialogFixture fixture;
    int served = 0;
    const QStringList lines = interruptedRun(&fixture, [&] {
        post(&fixture.dialog, [&] {
            ++served;
            interruption(fixture);
        });
    });
    QVERIFY(served >= 2);
    QCOMPARE(lines, undisturbedLines());
}

// The boxes before and behind the run serve events as well.
void UpdateRun::nothingStartsBehindABox()
{
    DialogFixture fixture;
    scriptMaster(&fixture.channel, master());
    deliverRelease(&fixture);
    const auto interrupted = [&](ExpectedBox box) {
        box.inspect = [&](QMessageBox&) {
            QCOMPARE(fixture.dialog.update_and_exec(), int(QDialog::Rejected));
            QTest::keyClick(&fixture.dialog, Qt::Key_F3);
        };
        return box;
    };
    RunLog log(&fixture);
    log.expectUpdateDialog([&] { fixture.updateButton()->click(); });
    log.expect(interrupted(controllerConfirmation()));
    log.expect(interrupted(startNotice()));
    log.expect(interrupted(restartOffer()));
    QCOMPARE(fixture.dialog.update_and_exec(), int(QDialog::Accepted));
    QVERIFY2(log.isDone(), qPrintable(log.missing()));
    QCOMPARE(log.lines().mid(log.lines().indexOf(checksBeforeARun().first())), undisturbedLines());
}

void UpdateRun::finishesThoughTheUserLeaves_data()
{
    QTest::addColumn<Interruption>("interruption");
    QTest::newRow("by Escape") << Interruption(
        [](DialogFixture& fixture) { QTest::keyClick(&fixture.dialog, Qt::Key_Escape); });
    QTest::newRow("by the window's close button")
        << Interruption([](DialogFixture& fixture) { fixture.dialog.close(); });
}

void UpdateRun::finishesThoughTheUserLeaves()
{
    QFETCH(const Interruption, interruption);
    DialogFixture fixture;
    bool hasLeft = false;
    const QStringList lines = interruptedRun(&fixture, [&] {
        post(&fixture.dialog, [&] {
            interruption(fixture);
            hasLeft = !fixture.dialog.isVisible();
        });
    });
    QVERIFY(hasLeft);
    QCOMPARE(lines, undisturbedLines());
    QVERIFY(!fixture.dialog.isVisible());
    QVERIFY(fixture.updateButton()->isEnabled());
    QVERIFY(fixture.exitButton()->isEnabled());

    // The next opening finds everything in order.
    RunLog log(&fixture);
    runOnce(&fixture, &log, restartOffer());
    QCOMPARE(log.lines(), masterQueries() + undisturbedLines());
}

// ---- Dead channel

void UpdateRun::deadChannelFails()
{
    DialogFixture fixture;
    ControllerImage image =
        releaseImage(VersionInfo(3, 1, 0), VersionInfo(1, 0), {blockOf(FirmwareBlock)});
    fixture.deliver(QStringLiteral("image"), image);
    fixture.channel.die();
    RunLog log(&fixture);
    log.expectUpdateDialog([&] {
        QCOMPARE(fixture.table()->rowCount(), 1);
        fixture.updateButton()->click();
        fixture.dialog.reject();
    });
    // A controller that says nothing looks like an old one, with a board that nobody knows.
    log.expect(notice(
        QMessageBox::Warning,
        QStringLiteral("An update to the selected version is not possible due to discontinued "
                       "support for your controller.\n\nPlease contact O.R.V. for support.\n\n"
                       "Discontinued controllers:  (SN 0)")));
    fixture.dialog.update_and_exec();
    QVERIFY2(log.isDone(), qPrintable(log.missing()));
    QCOMPARE(log.lines().filter(QStringLiteral("set_value")), QStringList());
    QCOMPARE(log.lines().filter(QStringLiteral("send_command")), QStringList());
    QVERIFY(fixture.updateButton()->isEnabled());
}

void UpdateRun::channelThatDiesFails_data()
{
    QTest::addColumn<QString>("lastCall");
    QTest::addColumn<QString>("what");
    QTest::addColumn<QString>("message");
    QTest::addColumn<int>("bar");

    // The second row fails at its redirection, which leaves its first message.
    const QString what = "Updating firmware (alpha)";
    QTest::newRow("before the run") << R"(get_string "cascade wol_slaves")" << what << "" << 1;
    QTest::newRow("at the first record")
        << R"(set_value "system update 2 1 BA")" << what << "" << 1;
    QTest::newRow("while the answer is waited for") << "poll_reply 3" << what << "" << 1;
}

void UpdateRun::channelThatDiesFails()
{
    QFETCH(const QString, lastCall);
    DialogFixture fixture;
    scriptMaster(&fixture.channel, master());
    deliverRelease(&fixture);
    fixture.deliver(QStringLiteral("image2"),
                    releaseImage(VersionInfo(3, 2, 0), VersionInfo(1, 0),
                                 {blockFrom(VersionInfo(3, 1, 0), FirmwareBlock, records(3, 4))}));
    RunLog log(&fixture);
    log.setHook([&](const QString& call) {
        if (call == lastCall)
            fixture.channel.die();
    });
    runOnce(&fixture, &log, updateFailed());
    QTEST(fixture.label("label_what")->text(), "what");
    QTEST(fixture.label("label_msg")->text(), "message");
    QTEST(fixture.bar()->value(), "bar");
    // The other release is not even begun, and nobody is restarted.
    const QStringList lines = log.lines();
    QCOMPARE(lines.filter(QStringLiteral("DA")) + lines.filter(QStringLiteral("send_command")),
             QStringList());
    QCOMPARE(lines.last(), QStringLiteral("box Update failed!"));
    QVERIFY(fixture.updateButton()->isEnabled() && fixture.exitButton()->isEnabled());
}

ZAN_WIDGET_TEST_MAIN(UpdateRun)

#include "tst_updaterun.moc"
