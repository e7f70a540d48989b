#include "dialogfixture.h"
#include "expectedboxes.h"
#include "exposeddialog.h"
#include "fixtureimages.h"
#include "runlog.h"

#include <camupdatedata.h>
#include <imagewriter.h>
#include <widgettestmain.h>

#include <QFile>
#include <QTimer>

#include <algorithm>

using Act = std::function<void(DialogFixture&)>;
Q_DECLARE_METATYPE(Act)

/// Whole passes of the dialog over a system whose cameras are behind, from its opening to its end.
class CameraCompletion : public QObject
{
    Q_OBJECT

private slots:
    void bringsACameraUpToDate();
    void bringsCamerasUpToDateInRowOrder();
    void bringsControllersUpToDateFirst();
    void leavesOutACameraThatIsNotTicked();
    void endsWellWithoutAnyTick();

    void goesOnAfterACameraThatFails();
    void leavesTheLastMessageOfAFailure_data();
    void leavesTheLastMessageOfAFailure();
    void endsARunWhoseWindowIsLeft_data();
    void endsARunWhoseWindowIsLeft();
    void startsNoRunInsideARun();

    void searchesForHardwareAfterAPause_data();
    void searchesForHardwareAfterAPause();
    void searchesOnceForAllCameras();
    void searchesForTickedCamerasOnly_data();
    void searchesForTickedCamerasOnly();
    void doesNotSearchAfterAFailure();
};

// ---- A system whose cameras are behind

static ScriptedCamera camera(const QByteArray& serial, const QByteArray& model = "0x0a01",
                             const QByteArray& version = "v1.0.0")
{
    ScriptedCamera camera;
    camera.model = model;
    camera.serial = serial;
    camera.version = version;
    return camera;
}

static CameraUpdateFile updateOf(quint16 model, const VersionInfo& version = VersionInfo(1, 1, 0),
                                 const QVector<ImageRecord>& records = {shortRecord(1),
                                                                        shortRecord(2)})
{
    CameraUpdateFile file = cameraFile({model}, version);
    file.images.first().records = records;
    return file;
}

/// The dialog on a master that is up to date, with these cameras and a file for each model.
class CameraSystem : public DialogFixture
{
public:
    explicit CameraSystem(const QList<ScriptedCamera>& cameras)
    {
        for (const ScriptedCamera& camera : cameras)
            deliver(QString::fromLatin1(camera.model) + QStringLiteral(".VX2znimg"),
                    updateOf(static_cast<quint16>(camera.model.toInt(nullptr, 16))));
        start(cameras);
    }
    CameraSystem() = default;

    /// To be called when the files have been delivered.
    void start(const QList<ScriptedCamera>& cameras, const ScriptedController& master = {})
    {
        scriptMaster(&channel, master);
        scriptCameras(&channel, cameras);
        inventory();
        channel.takeLog();
    }

    /// Opens the dialog, in which @p act plays the user, and expects these boxes.
    /// @return the result of the dialog
    int open(const QList<ExpectedBox>& boxes, const Act& act)
    {
        RunLog log(this);
        return open(&log, boxes, act);
    }
    /// The same with a log that may already expect something; it stands in @p lines afterwards.
    int open(RunLog* log, const QList<ExpectedBox>& boxes, const Act& act)
    {
        log->expectUpdateDialog([&] {
            act(*this);
            if (dialog.isVisible())
                dialog.reject();
        });
        for (const ExpectedBox& box : boxes)
            log->expect(box);
        const int result = dialog.update_and_exec();
        if (!log->isDone())
            QTest::qFail(qPrintable(log->missing()), __FILE__, __LINE__);
        if (isAnyFileOpen())
            QTest::qFail("a camera update file stays open", __FILE__, __LINE__);
        if (m_progressTimer(dialog)->isActive())
            QTest::qFail("the progress timer goes on", __FILE__, __LINE__);
        lines = log->lines();
        return result;
    }

    bool isAnyFileOpen()
    {
        const QList<CamUpdateData*>& files = inventory()->listCamUpdates;
        return std::any_of(files.begin(), files.end(), [](const CamUpdateData* file) {
            return isFileOpen(file->getFilename());
        });
    }
    QString text(const char* name) const { return label(name)->text(); }
    QStringList sentRecords() const
    {
        return channel.logOf(QStringLiteral(R"(send_command "vornix2 set camera)"));
    }

    QStringList lines; ///< what happened in the last pass
};

static void pressUpdate(DialogFixture& fixture)
{
    fixture.updateButton()->click();
}

static void untick(DialogFixture& fixture, int row)
{
    fixture.table()->item(row, 0)->setCheckState(Qt::Unchecked);
    clickCell(fixture.dialog, row, 0);
}

/// The boxes of a run of cameras, the last of which is this one.
static QList<ExpectedBox> boxesTo(const ExpectedBox& last)
{
    return {cameraConfirmation(), startNotice(), last};
}

static const QString DIALOG_LINE = QStringLiteral("dialog ZanUpdateModule2GSettingsdlgClass");

static QStringList inventoryLines()
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

static QStringList confirmationLines(const char* what)
{
    return {R"(get_int "system extra number_of_hardware")",
            QStringLiteral("box This action will install new firmware to your %1.")
                .arg(QLatin1String(what)),
            R"(get_string "status active")", R"(get_string "cascade wol_slaves")",
            "box Don't stop the update process until it is finished!"};
}

static QString sent(const QByteArray& command)
{
    return QStringLiteral(R"(send_command "vornix2 set camera update %1")")
        .arg(QLatin1String(command));
}

static QStringList twoRecords(const QByteArray& camera, int timeoutMs = 40000)
{
    return {sent(camera + " 2 1 BA"), QStringLiteral("prepare_reply 1 %1 1").arg(timeoutMs),
            sent(camera + " 2 2 CA"), QStringLiteral("poll_reply 3")};
}

static const QString DONE_LINE =
    QStringLiteral("box The cameras are updated successfully and must be restarted manually!");

static void verifyFinished(const CameraSystem& system, const QString& what, const QString& message,
                           int bar)
{
    QCOMPARE(system.text("label_updates"), QStringLiteral("Updating Controller..finished"));
    QCOMPARE(system.text("label_what"), what);
    QCOMPARE(system.text("label_msg"), message);
    QCOMPARE(system.bar()->value(), bar);
}

static void verifyButtons(const CameraSystem& system)
{
    QVERIFY(system.updateButton()->isEnabled());
    QVERIFY(system.exitButton()->isEnabled());
}

static const QString SUCCESS = QStringLiteral("Update of camera successful");

// ---- Passes that succeed

void CameraCompletion::bringsACameraUpToDate()
{
    CameraSystem system({camera("C100")});
    RunLog log(&system);
    QStringList states;
    log.setHook([&](const QString& call) {
        if (call.startsWith(QLatin1String("send_command")))
            states += QStringLiteral("%1 | %2 | buttons %3 %4, file %5")
                          .arg(system.text("label_updates"), system.text("label_what"))
                          .arg(system.updateButton()->isEnabled())
                          .arg(system.exitButton()->isEnabled())
                          .arg(system.isAnyFileOpen());
    });
    ExpectedBox done = camerasDone();
    done.inspect = [&](QMessageBox&) {
        verifyFinished(system, QStringLiteral("Updating camera Camera C100"), SUCCESS, 100);
    };
    QCOMPARE(system.open(&log, boxesTo(done), pressUpdate), int(QDialog::Accepted));

    const QStringList cameras{R"(get_int "camera number_of_cameras")",
                              R"(get_string "camera camera c01")",
                              R"(get_string "camera version c01")",
                              R"(get_string "camera model_desc 0x0a01")", DIALOG_LINE};
    QCOMPARE(system.lines, inventoryLines() + cameras + confirmationLines("camera(s)") +
                               twoRecords("c01") + QStringList{DONE_LINE});
    const QString state =
        QStringLiteral("Updating camera(s).. | Updating camera Camera C100 | buttons 0 0, file 1");
    QCOMPARE(states, (QStringList{state, state}));
    verifyButtons(system);
}

void CameraCompletion::bringsCamerasUpToDateInRowOrder()
{
    CameraSystem system;
    system.deliver("1.VX2znimg", updateOf(0x0a01, VersionInfo(1, 1, 0), {shortRecord(1)}));
    system.deliver("2.VX2znimg", updateOf(0x0a01, VersionInfo(1, 2, 0), {shortRecord(2)}));
    // The second one is on a pre-release of the newest version, and nothing fits the third.
    system.start({camera("C100"), camera("C101", "0x0a01", "v1.2.0-beta.1"),
                  camera("C102", "0x0b01"), camera("C103")});
    RunLog log(&system);
    QStringList whats;
    log.setHook([&](const QString& call) {
        if (call.startsWith(QLatin1String("send_command")))
            whats += system.text("label_what");
    });
    system.open(&log, boxesTo(camerasDone()), pressUpdate);
    QCOMPARE(system.sentRecords(),
             (QStringList{sent("c01 1 1 BA"), sent("c01 1 1 CA"), sent("c02 1 1 CA"),
                          sent("c04 1 1 BA"), sent("c04 1 1 CA")}));
    QCOMPARE(whats, (QStringList{"Updating camera Camera C100", "Updating camera Camera C100",
                                 "Updating camera Camera C101", "Updating camera Camera C103",
                                 "Updating camera Camera C103"}));
}

/// What the user does after looking at the types of the rows.
static Act actOnRows(const QStringList& types, const Act& act)
{
    return [=](DialogFixture& shown) {
        QStringList shownTypes;
        for (int row = 0; row < shown.table()->rowCount(); ++row)
            shownTypes += shown.table()->item(row, 1)->text();
        QCOMPARE(shownTypes, types);
        act(shown);
    };
}

void CameraCompletion::bringsControllersUpToDateFirst()
{
    CameraSystem system;
    system.deliver("camera.VX2znimg", updateOf(0x0a01));
    system.deliver("image", releaseImage(VersionInfo(3, 1, 0), VersionInfo(1, 0),
                                         {blockOf(FirmwareBlock, {shortRecord(3)})}));
    ScriptedController master;
    master.board = "\"SB330\"";
    system.start({camera("C100")}, master);
    system.open({controllerConfirmation(), startNotice(), restartOffer()},
                actOnRows({"Firmware update (alpha)"}, pressUpdate));
    // Nobody asks for cameras as long as a controller is behind.
    QCOMPARE(
        system.lines,
        inventoryLines() + QStringList{DIALOG_LINE} + confirmationLines("Controller") +
            (QStringList{R"(set_value "system redirect_update none")", "prepare_reply 1 20000 1",
                         R"(set_value "system update 1 1 DA")", "poll_reply 3",
                         "box The Controller is updated successfully and must be restarted."}));

    master.pt = "v3.1.0 2024-06-07";
    scriptMaster(&system.channel, master);
    system.open(boxesTo(camerasDone()),
                actOnRows({"Camera firmware update (Camera C100)"}, pressUpdate));
    QCOMPARE(system.lines.mid(system.lines.size() - 5), twoRecords("c01") + QStringList{DONE_LINE});

    scriptCameras(&system.channel, {camera("C100", "0x0a01", "v1.1.0")});
    system.open({}, actOnRows({}, [](DialogFixture&) {}));
    QCOMPARE(system.text("label_updates"),
             QStringLiteral("Controller(s) and cameras are up to date"));
    QVERIFY(!system.updateButton()->isEnabled());
}

void CameraCompletion::leavesOutACameraThatIsNotTicked()
{
    CameraSystem system({camera("C100"), camera("C101")});
    system.open(boxesTo(camerasDone()), [](DialogFixture& shown) {
        untick(shown, 0);
        pressUpdate(shown);
    });
    QCOMPARE(system.sentRecords(), (QStringList{sent("c02 2 1 BA"), sent("c02 2 2 CA")}));
}

// A camera row counts as run although it is not selected, so the run has not been empty.
void CameraCompletion::endsWellWithoutAnyTick()
{
    CameraSystem system({camera("C100", "0x0c01")});
    ExpectedBox done = camerasDone();
    done.inspect = [&](QMessageBox&) {
        verifyFinished(system, QString(), QString(), 0);
    };
    system.open(boxesTo(done), [](DialogFixture& shown) {
        untick(shown, 0);
        QVERIFY(!shown.updateButton()->isEnabled());
        QTest::keyClick(&shown.dialog, Qt::Key_F3);
    });
    QCOMPARE(system.sentRecords(), QStringList());
    QCOMPARE(system.lines.last(), DONE_LINE);
}

// ---- Passes that fail

void CameraCompletion::goesOnAfterACameraThatFails()
{
    CameraSystem system({camera("C100"), camera("C101"), camera("C102")});
    system.channel.on("vornix2 set camera update c01 2 1 BA").reply("vornix2 err \"-26\"");
    system.channel.on("vornix2 set camera update c02 2 2 CA").reply("vornix2 err");
    const int result = system.open(boxesTo(updateFailed()), [&](DialogFixture& shown) {
        pressUpdate(shown);
        QVERIFY(shown.dialog.isVisible());
        verifyFinished(system, QStringLiteral("Updating camera Camera C102"), SUCCESS, 100);
        verifyButtons(system);
        QCOMPARE(shown.table()->rowCount(), 3);
    });
    QCOMPARE(result, int(QDialog::Rejected));
    const QStringList tail = QStringList{sent("c01 2 1 BA")} + twoRecords("c02") +
                             twoRecords("c03") + QStringList{"box Update failed!"};
    QCOMPARE(system.lines.mid(system.lines.size() - tail.size()), tail);
}

void CameraCompletion::leavesTheLastMessageOfAFailure_data()
{
    QTest::addColumn<Act>("spoil");
    QTest::addColumn<QString>("message");
    QTest::addColumn<bool>("namesTheFile");
    QTest::addColumn<int>("bar");

    const auto row = [](const char* name, const char* message, const Act& spoil) {
        QTest::newRow(name) << spoil << QString::fromLatin1(message) << true << 1;
    };
    const auto rewrite = [](const QByteArray& bytes) {
        return Act([=](DialogFixture& fixture) {
            fixture.programFolder().deliverUpdate("0x0a01.VX2znimg", bytes);
        });
    };
    QTest::newRow("the error of a camera") << Act([](DialogFixture& fixture) {
        fixture.channel.onPrefix("vornix2 set camera update ").reply("vornix2 err -26");
    }) << "Update of camera was not successful"
                                           << false << 100;
    row("another error", "update not successful ", [](DialogFixture& fixture) {
        fixture.channel.onPrefix("vornix2 set camera update ").reply("vornix2 err 1");
    });
    row("a record that the channel does not take", "update not successful ",
        [](DialogFixture& fixture) {
            fixture.channel.onPrefix("vornix2 set camera update ").fail();
        });
    row("a last reply that does not come", "update not successful ",
        [](DialogFixture& fixture) { fixture.channel.onPoll().fail(); });
    row("a file that has gone", "cannot read file ", [](DialogFixture& fixture) {
        QVERIFY(QFile::remove(fixture.inventory()->listCamUpdates.first()->getFilename()));
    });
    row("a file that has become another one", "no software update file ", rewrite("another file"));
    row("a file that has been cut", "update not successful ",
        rewrite(cameraUpdateBytes(updateOf(0x0a01)).chopped(1)));
}

void CameraCompletion::leavesTheLastMessageOfAFailure()
{
    QFETCH(const Act, spoil);
    QFETCH(const QString, message);
    QFETCH(const bool, namesTheFile);
    CameraSystem system({camera("C100")});
    const QString path = system.inventory()->listCamUpdates.first()->getFilename();
    spoil(system);
    system.open(boxesTo(updateFailed()), [&](DialogFixture& shown) {
        pressUpdate(shown);
        QCOMPARE(system.text("label_msg"), namesTheFile ? message + path : message);
        QTEST(shown.bar()->value(), "bar");
    });
}

// ---- A window that is used during a run

void CameraCompletion::endsARunWhoseWindowIsLeft_data()
{
    QTest::addColumn<Act>("leave");
    QTest::newRow("by Escape") << Act(
        [](DialogFixture& fixture) { QTest::keyClick(&fixture.dialog, Qt::Key_Escape); });
    QTest::newRow("by its close button")
        << Act([](DialogFixture& fixture) { fixture.dialog.close(); });
}

void CameraCompletion::endsARunWhoseWindowIsLeft()
{
    QFETCH(const Act, leave);
    CameraSystem system({camera("C100"), camera("C101")});
    RunLog log(&system);
    log.setHook([&](const QString& call) {
        if (call == sent("c01 2 1 BA"))
            leave(system);
    });
    system.open(&log, boxesTo(camerasDone()), pressUpdate);
    QVERIFY(!system.dialog.isVisible());
    QCOMPARE(system.lines.mid(system.lines.size() - 9),
             twoRecords("c01") + twoRecords("c02") + QStringList{DONE_LINE});
    QVERIFY(system.updateButton()->isEnabled());
}

void CameraCompletion::startsNoRunInsideARun()
{
    CameraSystem system({camera("C100")});
    RunLog log(&system);
    log.setHook([&](const QString& call) {
        if (!call.startsWith(QLatin1String("send_command")))
            return;
        QTest::keyClick(&system.dialog, Qt::Key_F3);
        QCOMPARE(system.dialog.update_and_exec(), int(QDialog::Rejected));
    });
    system.open(&log, boxesTo(camerasDone()), pressUpdate);
    QCOMPARE(system.lines.mid(system.lines.size() - 10),
             confirmationLines("camera(s)") + twoRecords("c01") + QStringList{DONE_LINE});
}

// ---- The search for hardware

static QStringList searchLines(const char* report)
{
    return {"sleep 12000",
            R"(get_int "cascade number_of_connected_slaves")",
            R"(get_string "cascade wol_slaves")",
            "prepare_reply 1 15000 0",
            R"(send_command "vornix2 reinit")",
            "poll_reply 3",
            QStringLiteral(R"(post_message standard VORNIX3 1 "%1")").arg(QLatin1String(report)),
            R"(post_message standard VORNIX3 1 "search for new hardware done")",
            DONE_LINE};
}

/// Runs a pass whose last box comes behind a search.
static void openToSearch(CameraSystem* system, const Act& act)
{
    RunLog log(system);
    log.expectUpdateDialog([&] { act(*system); });
    log.expect(cameraConfirmation());
    log.expect(startNotice());
    log.expectDialog(QStringLiteral("SearchHardwareDlgClass"), [](QDialog&) {});
    log.expect(camerasDone());
    QCOMPARE(system->dialog.update_and_exec(), int(QDialog::Accepted));
    QVERIFY2(log.isDone(), qPrintable(log.missing()));
    system->lines = log.lines();
    // The user may notice the dialog before or after its first call.
    QVERIFY(system->lines.removeOne(QStringLiteral("dialog SearchHardwareDlgClass")));
}

void CameraCompletion::searchesForHardwareAfterAPause_data()
{
    QTest::addColumn<QByteArray>("model");
    QTest::addColumn<int>("timeoutMs");
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QByteArray>("report");

    const QByteArray done = "Search for new hardware...done";
    QTest::newRow("for a camera 0x0c01")
        << QByteArray("0x0c01") << 37000 << QByteArray("vornix2 ok") << done;
    QTest::newRow("for a camera 0x0e01")
        << QByteArray("0x0e01") << 72000 << QByteArray("vornix2 ok") << done;
    QTest::newRow("which fails") << QByteArray("0x0c01") << 37000 << QByteArray("vornix2 err")
                                 << QByteArray("Error: Unable search for new hardware");
}

void CameraCompletion::searchesForHardwareAfterAPause()
{
    QFETCH(const QByteArray, model);
    QFETCH(const int, timeoutMs);
    QFETCH(const QByteArray, reply);
    QFETCH(const QByteArray, report);
    CameraSystem system({camera("C100", model)});
    system.channel.on("vornix2 reinit").reply(reply);
    openToSearch(&system, pressUpdate);
    const QStringList tail = twoRecords("c01", timeoutMs) + searchLines(report.constData());
    QCOMPARE(system.lines.mid(system.lines.size() - tail.size()), tail);
}

void CameraCompletion::searchesOnceForAllCameras()
{
    CameraSystem system(
        {camera("C100", "0x0c01"), camera("C101", "0x0a01"), camera("C102", "0x0e01")});
    openToSearch(&system, pressUpdate);
    const QStringList tail = twoRecords("c01", 37000) + twoRecords("c02") +
                             twoRecords("c03", 72000) +
                             searchLines("Search for new hardware...done");
    QCOMPARE(system.lines.mid(system.lines.size() - tail.size()), tail);
}

void CameraCompletion::searchesForTickedCamerasOnly_data()
{
    QTest::addColumn<int>("unticked");
    QTest::addColumn<bool>("isSearched");
    QTest::newRow("a camera of the other model is left out") << 0 << true;
    QTest::newRow("the camera that needs it is left out") << 1 << false;
}

void CameraCompletion::searchesForTickedCamerasOnly()
{
    QFETCH(const int, unticked);
    QFETCH(const bool, isSearched);
    CameraSystem system({camera("C100", "0x0901"), camera("C101", "0x0c01")});
    const auto act = [=](DialogFixture& shown) {
        untick(shown, unticked);
        pressUpdate(shown);
    };
    if (isSearched)
        openToSearch(&system, act);
    else
        system.open(boxesTo(camerasDone()), act);
    QCOMPARE(system.lines.contains(QStringLiteral("sleep 12000")), isSearched);
}

void CameraCompletion::doesNotSearchAfterAFailure()
{
    CameraSystem system({camera("C100", "0x0c01"), camera("C101", "0x0c01")});
    system.channel.on("vornix2 set camera update c01 2 1 BA").reply("vornix2 err -26");
    system.open(boxesTo(updateFailed()), pressUpdate);
    const QStringList tail = twoRecords("c02", 37000) + QStringList{"box Update failed!"};
    QCOMPARE(system.lines.mid(system.lines.size() - tail.size()), tail);
    QCOMPARE(system.channel.messages().size(), 0);
}

ZAN_WIDGET_TEST_MAIN(CameraCompletion)

#include "tst_cameracompletion.moc"
