#include "transcriptfixtures.h"

#include <frontend.h>
#include <headlessrun.h>
#include <narrator.h>
#include <replayaccess.h>
#include <simulatoraccess.h>

#include <fixturefiles.h>
#include <imagewriter.h>
#include <payload.h>
#include <programfolder.h>
#include <widgettestmain.h>

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QRegularExpression>
#include <QThread>

#include <algorithm>
#include <optional>

// The module sleeps after some blocks and before a search. Nothing here needs that time; the linker
// takes this definition before the one in Qt's library.
void QThread::msleep(unsigned long /*milliseconds*/) {}

namespace {

constexpr int controllerRecords = 12;
constexpr int cameraRecords = 8;

QString golden(const QString& fileName)
{
    return QStringLiteral(GOLDEN_FOLDER "/") + fileName;
}

bool isToBeWritten()
{
    return qEnvironmentVariableIsSet("WRITE_GOLDEN_TRANSCRIPTS");
}

/// Milliseconds since 1970 of a day that never ends, as devices tell the day of their installation.
qint64 msOfRecordedDay()
{
    static const QDateTime noon(QDate(2025, 10, 1), QTime(12, 0), Qt::UTC);
    static const QElapsedTimer sinceStart = [] {
        QElapsedTimer timer;
        timer.start();
        return timer;
    }();
    return noon.toMSecsSinceEpoch() + sinceStart.elapsed();
}

template <typename Block>
Block blockOf(PayloadComponent component, const VersionInfo& version, int records)
{
    Block block;
    block.text = version.toString().toLatin1();
    block.records = splitIntoRecords(makePayload({component, version, QString()},
                                                 records * maxRecordBytes - payloadOverhead, 1));
    return block;
}

ControllerImageBlock controllerBlock(BlockType type, const VersionInfo& to, const VersionInfo& from,
                                     const VersionInfo& upTo)
{
    auto block =
        blockOf<ControllerImageBlock>(type == FirmwareBlock ? PayloadComponent::TrackingSoftware
                                                            : PayloadComponent::ControllerFirmware,
                                      to, controllerRecords);
    block.type = type;
    block.minVer = from;
    block.maxVer = upTo;
    return block;
}

/// An image that brings the release before to @p pt and @p ct.
QByteArray image(const VersionInfo& pt, const VersionInfo& ct)
{
    ControllerImage image;
    image.release = image.newPt = pt;
    image.newCt = ct;
    image.minPt = VersionInfo(2, 0, 0);
    image.minCt = VersionInfo(1, 0);
    image.releaseDate = image.minorReleaseDate = {2025, 9, 30};
    image.blocks = {
        controllerBlock(FirmwareBlock, pt, VersionInfo(2, 0, 0),
                        VersionInfo(pt.ma, pt.mi - 1, 65535)),
        controllerBlock(SystemBlock, ct, VersionInfo(1, 0), VersionInfo(ct.ma, ct.mi - 1)),
    };
    return controllerImageBytes(image);
}

QByteArray cameraImage(quint16 model, const VersionInfo& version)
{
    CameraUpdateFile file;
    file.newVer = version;
    file.minVer = VersionInfo(1, 0, 0);
    file.models = {model};
    file.images = {blockOf<CameraImage>(PayloadComponent::CameraFirmware, version, cameraRecords)};
    return cameraUpdateBytes(file);
}

/// What a run tells of the module: its windows, what was pressed there, and its log. Left out are
/// the frontend's own part, which a replay has not, and what depends on the speed of the machine.
QStringList moduleStory(const QStringList& told)
{
    static const QRegularExpression frontendsLine("^(log: Frontend|result|progress|press: Power)");
    QStringList story;
    bool isModules = true;
    for (const QString& line : told) {
        // The frontend's own search has the same window as the module's.
        if (line.startsWith("window: VORNIX3 v3") || line == "menu: Search for hardware..." ||
            line == "window: Results of the Update")
            isModules = false;
        else if (line.startsWith("window: ") || line.startsWith("menu: "))
            isModules = isModules || line != "window: Search for new hardware";
        if (isModules && !frontendsLine.match(line).hasMatch())
            story += line;
    }
    return story;
}

/// One start of the frontend with the built module and a home of its own.
class Start
{
public:
    explicit Start(const FixtureFolder& folder)
    {
        qputenv("HOME", QFile::encodeName(folder.makeFolder("home")));
        m_options.stateDir = folder.path("state");
        m_options.pluginFile = QStringLiteral(UPDATE_MODULE);
        m_options.headless = true;
        m_options.fast = true;
    }

    QStringList record(const Scenario& scenario, const QString& file)
    {
        m_options.recordFile = file;
        Frontend frontend(
            std::make_unique<SimulatorAccess>(scenario, m_options.fast, msOfRecordedDay),
            m_options);
        return run(frontend);
    }

    QStringList replay(const Transcript& transcript)
    {
        Frontend frontend(std::make_unique<ReplayAccess>(transcript), m_options);
        return run(frontend);
    }

    ExitCode code = StartFailed;
    QStringList told;

private:
    QStringList run(Frontend& frontend)
    {
        QString error;
        if (!frontend.prepare(&error))
            qFatal("%s", qPrintable(error));
        Narrator narrator;
        code = runHeadless(frontend, m_options, narrator);
        told = narrator.told();
        return moduleStory(told);
    }

    Options m_options;
};

Scenario goldenScenario(const QString& name)
{
    QString error;
    const std::optional<Scenario> scenario = ScenarioReader::read(golden(name + ".json"), &error);
    if (!scenario)
        qFatal("%s", qPrintable(error));
    return *scenario;
}

Transcript goldenTranscript(const QString& name)
{
    QString error;
    const std::optional<Transcript> transcript =
        Transcript::read(golden(name + ".transcript"), &error);
    if (!transcript)
        qFatal("%s", qPrintable(error));
    return *transcript;
}

} // namespace

/// The built module with the golden transcripts; golden/README.md tells how they are made.
class TestGoldenTranscripts : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void runIsRecordedAsBeforeAndReplays_data();
    void runIsRecordedAsBeforeAndReplays();
    void everyGoldenFileBelongsToARun();
    void aChangedCallIsTheFirstDeparture();
    void aShortRunLeavesCallsOver();

private:
    std::optional<ProgramFolder> m_program;
    QStringList m_usedFiles;
};

void TestGoldenTranscripts::initTestCase()
{
    m_program.emplace();
    m_program->deliverUpdate("v3.2.0.vx3img", image({3, 2, 0}, {1, 3}));
    m_program->deliverUpdate("v3.3.0.vx3img", image({3, 3, 0}, {1, 4}));
    m_program->deliverUpdate("0x0901.VX2znimg", cameraImage(0x0901, {1, 4, 0}));
    m_program->deliverUpdate("0x0e01.VX2znimg", cameraImage(0x0e01, {1, 6, 0}));
}

void TestGoldenTranscripts::runIsRecordedAsBeforeAndReplays_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("starts");
    QTest::addColumn<QString>("shown"); ///< some line of the last start's story
    QTest::newRow("a cascade that is two releases behind, with its restart")
        << "cascade" << 2 << ": Controller(s) and cameras are up to date";
    QTest::newRow("cameras, one of which answers garbage")
        << "cameras" << 1
        << ": The cameras are updated successfully and must be restarted manually!";
    QTest::newRow("a record that is refused") << "refused-record" << 1 << ": Update failed!";
    QTest::newRow("a last record that is never answered")
        << "silent-last-record" << 1 << ": Update failed!";
    QTest::newRow("a system that is up to date")
        << "up-to-date" << 1 << ": Controller(s) and cameras are up to date";
    QTest::newRow("a controller that measures at its fallback address")
        << "fallback-address" << 1 << ": The Controller's network is set to 'DHCP';";
}

void TestGoldenTranscripts::runIsRecordedAsBeforeAndReplays()
{
    QFETCH(const QString, name);
    QFETCH(const int, starts);
    QFETCH(const QString, shown);
    const FixtureFolder recordFolder;
    const FixtureFolder replayFolder;
    for (int i = 1; i <= starts; ++i) {
        const QString file = i == 1 ? name : QStringLiteral("%1-%2").arg(name).arg(i);
        m_usedFiles += file + ".transcript";
        const QString recorded = recordFolder.path(file + ".transcript");
        const QStringList story =
            Start(recordFolder)
                .record(goldenScenario(name), recordFolder.path(name + ".transcript"));
        const QByteArray text = withoutTimes(contentOf(recorded));
        if (isToBeWritten())
            writeFixture(golden(file + ".transcript"), text);
        QCOMPARE(text.split('\n'), contentOf(golden(file + ".transcript")).split('\n'));

        Start replay(replayFolder);
        QCOMPARE(replay.replay(goldenTranscript(file)), story);
        QCOMPARE(replay.told.constLast(), QString("result: Everything was called as recorded."));
        QCOMPARE(int(replay.code), int(Success));
        if (i == starts)
            QVERIFY2(story.contains(shown), qPrintable(story.join('\n')));
    }
}

void TestGoldenTranscripts::everyGoldenFileBelongsToARun()
{
    m_usedFiles.sort();
    const QDir folder(golden(QString()));
    QCOMPARE(folder.entryList({"*.transcript"}, QDir::Files, QDir::Name), m_usedFiles);
    for (const QFileInfo& file : folder.entryInfoList(QDir::Files))
        QVERIFY2(file.size() < 300 * 1024, qPrintable(file.fileName()));
}

void TestGoldenTranscripts::aChangedCallIsTheFirstDeparture()
{
    Transcript transcript = goldenTranscript("cascade");
    transcript.file = "cascade"; // a log takes letters of Latin-1 only
    const auto record = std::find_if(
        transcript.calls.begin(), transcript.calls.end(), [](const TranscriptCall& call) {
            return call.call.startsWith("set_value \"system update 12 3 ");
        });
    const QByteArray called = record->call;
    record->call = "set_value \"system update 12 3 AAAA\"";
    const FixtureFolder folder;
    Start start(folder);
    start.replay(transcript);
    const QString departure =
        QStringLiteral("%1: line %2: expected set_value \"system update 12 3 AAAA\", called %3")
            .arg(transcript.file, QString::number(record->line), QString::fromLatin1(called));
    QVERIFY(start.told.contains("log: Transcript: " + departure));
    QCOMPARE(start.told.constLast(), "result: " + departure);
    QCOMPARE(int(start.code), int(Departed));
}

void TestGoldenTranscripts::aShortRunLeavesCallsOver()
{
    // An observer's module has no use for the controllers.
    QString error;
    const std::optional<Transcript> transcript = Transcript::parse(
        sampleHeadText().replace("observer no", "observer yes") + "poll_reply 3 = 0\n", "run",
        &error);
    QVERIFY2(transcript, qPrintable(error));
    const FixtureFolder folder;
    Start start(folder);
    start.replay(*transcript);
    const QString verdict =
        "run: line 8: expected poll_reply 3, called nothing more; calls left over: 1";
    QVERIFY(start.told.contains("log: Frontend: " + verdict));
    QCOMPARE(start.told.constLast(), "result: " + verdict);
    QCOMPARE(int(start.code), int(Departed));
}

ZAN_WIDGET_TEST_MAIN(TestGoldenTranscripts)
#include "tst_goldentranscripts.moc"
