#include "dialogfixture.h"
#include "exposeddialog.h"
#include "fixtureimages.h"
#include "shownprogress.h"

#include <ZanDisplay.h>
#include <cameracases.h>
#include <camupdatedata.h>
#include <imagewriter.h>
#include <memorystream.h>
#include <widgettestmain.h>

#include <QMap>
#include <QTimer>

/// One camera row of a run, with a camera of the given number and model.
class CameraRowFixture : public DialogFixture
{
public:
    explicit CameraRowFixture(const CameraUpdateFile& file, int iCam = 0)
        : path(m_folder.write(QStringLiteral("camera.VX2znimg"), cameraUpdateBytes(file))),
          update(path), row(&update, iCam, QStringLiteral("0x0a01"), QStringLiteral("C100"),
                            QStringLiteral("Camera"), VersionInfo(1, 0, 0), false)
    {
        channel.takeLog();
        showMessageInDialog(dialog, QStringLiteral("before"), 50);
        showWhatInDialog(dialog, QStringLiteral("before"));
    }

    /// @return the result of do_cam_update(); fails the test if the file stays open, or the timer
    /// on
    int run()
    {
        return watched([this] { return do_cam_update(dialog, &row); });
    }
    /// The same for readCamFileInfo().
    int read(double durationLastCmdSec = 9.5)
    {
        return watched([&] { return readCamFileInfo(dialog, true, 0, path, durationLastCmdSec); });
    }

    QString message() const { return label("label_msg")->text(); }
    QString what() const { return label("label_what")->text(); }

private:
    int watched(const std::function<int()>& act)
    {
        const int result = act();
        if (isFileOpen(path))
            QTest::qFail("the file stays open", __FILE__, __LINE__);
        if (m_progressTimer(dialog)->isActive())
            QTest::qFail("the progress timer goes on", __FILE__, __LINE__);
        return result;
    }

    FixtureFolder m_folder;

public:
    QString path;
    CamUpdateData update;
    ZanDisplay row;
};

class CameraRun : public QObject
{
    Q_OBJECT

private slots:
    void leavesARowThatIsNotSelected();
    void sendsOneImage();
    void sendsSeveralImages();
    void sendsNothingOfAnImageWithoutRecords();
    void sendsNothingOfAFileWithoutImages();
    void namesTheCamera_data();
    void namesTheCamera();
    void allowsTimeForTheLastRecordByModel_data();
    void allowsTimeForTheLastRecordByModel();

    void looksAtEveryReply_data();
    void looksAtEveryReply();
    void endsWithAChannelThatFails_data();
    void endsWithAChannelThatFails();
    void stopsTheTimerBeforeItTells();
    void endsWithTheFirstImageThatFails();
    void tellsWhatCannotBeRead_data();
    void tellsWhatCannotBeRead();

    void timerRunsFromTheFirstRecordToTheLast();
    void servesEventsOncePerRecord();
    void barStartsAgainWithEachImage();
};

static CameraUpdateFile fileOf(const QVector<QVector<ImageRecord>>& images,
                               const QVector<quint16>& models = {0x0a01})
{
    CameraUpdateFile file = cameraFile(models, VersionInfo(1, 1, 0));
    CameraImage image = file.images.takeFirst();
    for (const QVector<ImageRecord>& records : images) {
        image.records = records;
        file.images += image;
    }
    return file;
}

static CameraUpdateFile fileOfTwoRecords()
{
    return fileOf({{shortRecord(1), shortRecord(2)}});
}

// ---- A row that succeeds

void CameraRun::leavesARowThatIsNotSelected()
{
    CameraRowFixture fixture(fileOfTwoRecords());
    fixture.row.setToBeUpdated(Qt::Unchecked);
    QCOMPARE(fixture.run(), 0);
    QCOMPARE(fixture.channel.log(), QStringList());
    QCOMPARE(fixture.what(), QStringLiteral("before"));
    QCOMPARE(fixture.message(), QStringLiteral("before"));
    QCOMPARE(fixture.bar()->value(), 50);
}

void CameraRun::sendsOneImage()
{
    CameraRowFixture fixture(cameraFile({0x0a01}, VersionInfo(1, 1, 0)));
    ShownProgress shown(&fixture);
    QCOMPARE(fixture.run(), 0);
    QCOMPARE(fixture.channel.log(),
             (QStringList{sent("c01 2 1 BIwA"), PREPARE, sent("c01 2 2 /D"), POLL}));
    QCOMPARE(shown.states(),
             (QStringList{"Updating camera Camera C100 |  | 0",
                          "Updating camera Camera C100 | Update of camera successful | 100"}));
}

void CameraRun::sendsSeveralImages()
{
    CameraRowFixture fixture(fileOf({{shortRecord(1), shortRecord(2)},
                                     {QByteArray()},
                                     {QByteArray(120, '\0'), shortRecord(1), shortRecord(2)}}));
    QCOMPARE(fixture.run(), 0);
    const QByteArray longest = "c01 3 1 " + QByteArray(160, 'A');
    QCOMPARE(fixture.channel.log(),
             (QStringList{sent("c01 2 1 BA"), PREPARE, sent("c01 2 2 CA"), POLL, PREPARE,
                          sent("c01 1 1 "), POLL, sent(longest.constData()), sent("c01 3 2 BA"),
                          PREPARE, sent("c01 3 3 CA"), POLL}));
    QCOMPARE(fixture.message(), QStringLiteral("Update of camera successful"));
    QCOMPARE(fixture.bar()->value(), 100);
}

void CameraRun::sendsNothingOfAnImageWithoutRecords()
{
    CameraRowFixture fixture(fileOf({{}}));
    m_numSteps(fixture.dialog) = 7;
    m_actNumSteps(fixture.dialog) = 7;
    QCOMPARE(fixture.read(), 0);
    QCOMPARE(fixture.channel.log(), QStringList());
    QCOMPARE(fixture.message(), QString());
    QCOMPARE(fixture.bar()->value(), 0);
    // The timer was started all the same.
    QCOMPARE(m_numSteps(fixture.dialog), 0);
    QCOMPARE(m_actNumSteps(fixture.dialog), 0);
    QCOMPARE(m_durationLastStepSec(fixture.dialog), 9.5);
}

void CameraRun::sendsNothingOfAFileWithoutImages()
{
    CameraRowFixture fixture(fileOf({}));
    m_numSteps(fixture.dialog) = 7;
    QCOMPARE(fixture.run(), 0);
    QCOMPARE(fixture.channel.log(), QStringList());
    QCOMPARE(fixture.message(), QStringLiteral("Update of camera successful"));
    QCOMPARE(fixture.bar()->value(), 100);
    QCOMPARE(m_numSteps(fixture.dialog), 7);
}

void CameraRun::namesTheCamera_data()
{
    QTest::addColumn<int>("iCam");
    QTest::addColumn<QString>("name");
    QTest::newRow("the tenth camera") << 9 << "c10";
    QTest::newRow("the hundredth camera") << 99 << "c100";
}

void CameraRun::namesTheCamera()
{
    QFETCH(const int, iCam);
    QFETCH(const QString, name);
    CameraRowFixture fixture(fileOfTwoRecords(), iCam);
    QCOMPARE(fixture.run(), 0);
    const QByteArray camera = name.toLatin1();
    QCOMPARE(fixture.channel.log(),
             (QStringList{sent(camera + " 2 1 BA"), PREPARE, sent(camera + " 2 2 CA"), POLL}));
}

void CameraRun::allowsTimeForTheLastRecordByModel_data()
{
    QTest::addColumn<QVector<quint16>>("models");
    QTest::addColumn<int>("timeoutMs");

    using Models = QVector<quint16>;
    QTest::newRow("0x0901") << Models{0x0901} << 19000;
    QTest::newRow("0x0c01") << Models{0x0c01} << 37000;
    QTest::newRow("0x0e01") << Models{0x0e01} << 72000;
    QTest::newRow("any other model") << Models{0x0a01} << 40000;
    QTest::newRow("no model") << Models{} << 40000;
    QTest::newRow("0x0c01 decides before 0x0e01") << Models{0x0e01, 0x0c01} << 37000;
    QTest::newRow("0x0901 decides before all") << Models{0x0e01, 0x0c01, 0x0901} << 19000;
}

void CameraRun::allowsTimeForTheLastRecordByModel()
{
    QFETCH(const QVector<quint16>, models);
    QFETCH(const int, timeoutMs);
    const QString prepare = QStringLiteral("prepare_reply 1 %1 1").arg(timeoutMs);
    const QVector<ImageRecord> records{shortRecord(1), shortRecord(2)};
    CameraRowFixture fixture(fileOf({records, records}, models));
    QCOMPARE(fixture.run(), 0);
    // In front of the last record of every image, and nowhere else.
    const QStringList image{sent("c01 2 1 BA"), prepare, sent("c01 2 2 CA"), POLL};
    QCOMPARE(fixture.channel.log(), image + image);
}

// ---- The camera's replies

/// What stands in the dialog after each of the three functions that have their say.
struct Messages
{
    QString ofImage;
    QString ofFile;
    QString ofRow;
    int bar;
};

static Messages messagesOf(int code, const QString& path)
{
    const QString file = QStringLiteral("update not successful ") + path;
    switch (code) {
    case 0:
        return {QString(), QString(), QStringLiteral("Update of camera successful"), 100};
    case -222:
        return {QStringLiteral("Update not successful!"), file, file, 1};
    case -300: // a full bar also on this failure
        return {QStringLiteral("camera update failed"), file,
                QStringLiteral("Update of camera was not successful"), 100};
    case -333:
        return {QStringLiteral("update failed"), file, file, 1};
    default:
        return {QStringLiteral("cannot read file"), file, file, 1};
    }
}

static int imageOffset(const CameraUpdateFile& file)
{
    CameraUpdateFile head = file;
    head.images.clear();
    return cameraUpdateBytes(head).size() + 20 * file.images.size();
}

/// One of the three functions with what it returned, and what should stand in the dialog now.
static void verify(CameraRowFixture& fixture, int result, int code, const QString& message, int bar,
                   const QStringList& log)
{
    QCOMPARE(result, code);
    QCOMPARE(fixture.message(), message);
    QCOMPARE(fixture.bar()->value(), bar);
    QCOMPARE(fixture.channel.takeLog(), log);
    QVERIFY(!m_progressTimer(fixture.dialog)->isActive());
}

/// Runs the file on a channel of that script, through each of the three functions, and checks the
/// result, what is shown and what was sent.
static void verifyOutcome(CameraRowFixture& fixture, const CameraUpdateFile& file,
                          const Script& script, int code, const QStringList& log)
{
    const Messages messages = messagesOf(code, fixture.path);
    const int bar = code == 0 ? 0 : 1;

    script(fixture.channel);
    const MemoryStream stream(cameraUpdateBytes(file));
    std::fseek(stream.get(), imageOffset(file), SEEK_SET);
    verify(fixture, readCameraUpdateInfo(fixture.dialog, stream.get(), true, 0, 30.0), code,
           messages.ofImage, bar, log);
    script(fixture.channel);
    verify(fixture, fixture.read(30.0), code, messages.ofFile, bar, log);
    script(fixture.channel);
    verify(fixture, fixture.run(), code, messages.ofRow, messages.bar, log);
    QCOMPARE(fixture.what(), QStringLiteral("Updating camera Camera C100"));
}

void CameraRun::looksAtEveryReply_data()
{
    addRowsOfReplies();
}

void CameraRun::looksAtEveryReply()
{
    QFETCH(const ScriptedAnswers, answer);
    QFETCH(const int, code);
    const QStringList whole{sent("c01 3 1 AA"), sent("c01 3 2 BA"), PREPARE, sent("c01 3 3 CA"),
                            POLL};
    const CameraUpdateFile file = fileOf({{shortRecord(0), shortRecord(1), shortRecord(2)}});
    CameraRowFixture fixture(file);
    // The calls of the run up to each record's reply.
    const QMap<QByteArray, int> callsUpTo{{"c01 3 1 AA", 1}, {"c01 3 2 BA", 2}, {"c01 3 3 CA", 5}};
    for (auto record = callsUpTo.begin(); record != callsUpTo.end(); ++record) {
        const auto script = [&](ScriptedChannel& channel) {
            for (const QByteArray& other : callsUpTo.keys())
                channel.on("vornix2 set camera update " + other).reply("vornix2 ok");
            channel.on("vornix2 set camera update " + record.key()) = answer;
        };
        verifyOutcome(fixture, file, script, code, whole.mid(0, code == 0 ? -1 : record.value()));
        if (QTest::currentTestFailed())
            QFAIL("at the reply to " + record.key());
    }
}

void CameraRun::endsWithAChannelThatFails_data()
{
    addRowsOfFailingChannels();
}

void CameraRun::endsWithAChannelThatFails()
{
    QFETCH(const Script, script);
    QFETCH(const int, code);
    QFETCH(const int, calls);
    const QStringList whole{sent("c01 2 1 BA"), PREPARE, sent("c01 2 2 CA"), POLL};
    const CameraUpdateFile file = fileOfTwoRecords();
    CameraRowFixture fixture(file);
    verifyOutcome(fixture, file, script, code, whole.mid(0, calls));
}

void CameraRun::stopsTheTimerBeforeItTells()
{
    CameraRowFixture fixture(fileOfTwoRecords());
    fixture.channel.die();
    // The bar begins at 0 and goes to 1 with the failure: no time passes in which it could tick.
    m_progressTimer(fixture.dialog)->setInterval(INT_MAX);
    QStringList seen;
    QObject::connect(fixture.bar(), &QProgressBar::valueChanged, &fixture.dialog, [&](int value) {
        seen += QStringLiteral("%1, timer %2")
                    .arg(value)
                    .arg(m_progressTimer(fixture.dialog)->isActive());
    });
    QCOMPARE(fixture.read(), -200);
    QCOMPARE(seen, (QStringList{"0, timer 0", "1, timer 0"}));
}

void CameraRun::endsWithTheFirstImageThatFails()
{
    const QVector<ImageRecord> records{shortRecord(1), shortRecord(2)};
    CameraRowFixture fixture(fileOf({records, records, {shortRecord(3)}, records}));
    fixture.channel.on("vornix2 set camera update c01 1 1 DA").reply("vornix2 err -11");
    QCOMPARE(fixture.run(), -333);
    const QStringList image{sent("c01 2 1 BA"), PREPARE, sent("c01 2 2 CA"), POLL};
    QCOMPARE(fixture.channel.log(),
             image + image + (QStringList{PREPARE, sent("c01 1 1 DA"), POLL}));
    QCOMPARE(fixture.message(), QStringLiteral("update not successful ") + fixture.path);
    QCOMPARE(fixture.bar()->value(), 1);
}

void CameraRun::tellsWhatCannotBeRead_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("message");

    const QByteArray whole = cameraUpdateBytes(fileOfTwoRecords());
    QTest::newRow("a file that has become another one")
        << QByteArray("another file") << -3 << "no software update file ";
    QTest::newRow("a file that has become empty") << QByteArray() << -2 << "cannot read file ";
    QTest::newRow("a file that ends in its last record")
        << whole.left(whole.size() - 1) << -108 << "update not successful ";
}

void CameraRun::tellsWhatCannotBeRead()
{
    QFETCH(const QByteArray, bytes);
    QFETCH(const int, code);
    QFETCH(const QString, message);
    CameraRowFixture fixture(fileOfTwoRecords());
    writeFixture(fixture.path, bytes);
    QCOMPARE(fixture.run(), code);
    QCOMPARE(fixture.what(), QStringLiteral("Updating camera Camera C100"));
    QCOMPARE(fixture.message(), message + fixture.path);
    QCOMPARE(fixture.bar()->value(), 1);
}

// ---- The timed progress

void CameraRun::timerRunsFromTheFirstRecordToTheLast()
{
    CameraRowFixture fixture(fileOf({shortRecords(3), shortRecords(2)}, {0x0c01}));
    QStringList seen;
    fixture.channel.setHook([&](const QString& call) {
        if (call.startsWith(QLatin1String("send_command")))
            seen += QStringLiteral("%1 of %2, %3 s and %4 s, timer %5")
                        .arg(m_actNumSteps(fixture.dialog))
                        .arg(m_numSteps(fixture.dialog))
                        .arg(m_durationStepSec(fixture.dialog))
                        .arg(m_durationLastStepSec(fixture.dialog))
                        .arg(m_progressTimer(fixture.dialog)->isActive());
    });
    QCOMPARE(fixture.run(), 0);
    QCOMPARE(seen, (QStringList{"1 of 3, 0.00027 s and 27.5 s, timer 1",
                                "2 of 3, 0.00027 s and 27.5 s, timer 1",
                                "3 of 3, 0.00027 s and 27.5 s, timer 1",
                                "1 of 2, 0.00027 s and 27.5 s, timer 1",
                                "2 of 2, 0.00027 s and 27.5 s, timer 1"}));
}

/// Lets the timer tick whenever events are served, so that nobody has to wait for it.
static void tickAtOnce(CameraRowFixture* fixture)
{
    m_progressTimer(fixture->dialog)->setInterval(0);
}

void CameraRun::servesEventsOncePerRecord()
{
    CameraRowFixture fixture(fileOf({shortRecords(5), shortRecords(3)}));
    tickAtOnce(&fixture);
    QStringList order;
    QObject::connect(m_progressTimer(fixture.dialog), &QTimer::timeout, &fixture.dialog, [&] {
        order += QStringLiteral("tick %1").arg(m_actNumSteps(fixture.dialog));
    });
    int record = 0;
    fixture.channel.setHook([&](const QString& call) {
        if (call.startsWith(QLatin1String("send_command")))
            order += QStringLiteral("record %1").arg(++record);
    });
    QCOMPARE(fixture.run(), 0);
    QStringList expected;
    for (const int step : {1, 2, 3, 4, 5, 1, 2, 3}) {
        expected << QStringLiteral("tick %1").arg(step)
                 << QStringLiteral("record %1").arg(expected.size() / 2 + 1);
    }
    QCOMPARE(order, expected);
}

void CameraRun::barStartsAgainWithEachImage()
{
    CameraRowFixture fixture(fileOf({shortRecords(20000), shortRecords(2)}, {0x0901}));
    tickAtOnce(&fixture);
    ShownProgress shown(&fixture);
    QCOMPARE(fixture.run(), 0);
    // 5.4 seconds of 14.9, and then 0.00054 of 9.5.
    QVector<int> values{0};
    for (int value = 1; value <= 36; ++value)
        values += value;
    QCOMPARE(shown.values(), values + (QVector<int>{0, 1, 100}));
}

ZAN_WIDGET_TEST_MAIN(CameraRun)

#include "tst_camerarun.moc"
