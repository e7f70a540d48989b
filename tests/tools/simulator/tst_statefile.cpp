#include "simulatorfixtures.h"

#include <fixturefiles.h>
#include <fulldisk.h>
#include <reasons.h>
#include <testmain.h>

#include <QDir>
#include <QFile>
#include <QSignalSpy>

#include <sys/stat.h>

class TestStateFile : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void stagedVersionOutlivesTheProcess();
    void runningVersionOutlivesTheProcess();
    void restartGoesOnAcrossProcesses();
    void shutDownOutlivesTheProcess();
    void everyOtherStateOutlivesTheProcess();
    void restartThatEndsFarInTheFutureIsCut();
    void missingFileIsNoFailure();
    void damagedFileIsSetAside_data();
    void damagedFileIsSetAside();
    void fileOfOtherDevicesIsSetAside_data();
    void fileOfOtherDevicesIsSetAside();
    void truncatedFileIsNeverTrusted();
    void emptyFileIsSetAside();
    void whatIsNoStateIsLeftAlone_data();
    void whatIsNoStateIsLeftAlone();
    void onlyAStateIsRemoved_data() { whatIsNoStateIsLeftAlone_data(); }
    void onlyAStateIsRemoved();
    void failureToWriteIsReported();
    void stateStaysOnAFullDisk();
    void withoutFileNothingIsWritten();

private:
    QByteArray written() const;

    std::unique_ptr<FixtureFolder> m_folder;
    QString m_path;
};

// One process: a system that takes its state from the file and keeps it there.
struct Process : SimulatedSite
{
    Process(const QString& scenarioName, const QString& path) : SimulatedSite(scenarioName)
    {
        load = system.loadState(path, &error);
        loaded = load && load->isEmpty();
    }

    std::optional<QString> load;
    bool loaded = false;
    QString error;
};

void TestStateFile::init()
{
    m_folder = std::make_unique<FixtureFolder>();
    m_path = m_folder->path(QStringLiteral("deeper/state.json"));
}

QByteArray TestStateFile::written() const
{
    QFile file(m_path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void TestStateFile::stagedVersionOutlivesTheProcess()
{
    Process(QStringLiteral("single"), m_path).send("system update", trackingSoftware({3, 3, 0}));
    Process second(QStringLiteral("single"), m_path);
    QVERIFY2(second.loaded, qPrintable(second.error));
    QCOMPARE(second.getString("system version"), QByteArray("v3.1.0 2025-03-14"));
    second.command("vornix2 system reboot");
    second.bringUp();
    QCOMPARE(second.getString("system version"), QByteArray("v3.3.0 2025-06-15"));
}

void TestStateFile::runningVersionOutlivesTheProcess()
{
    {
        Process first(QStringLiteral("single"), m_path);
        first.send("system update", trackingSoftware({3, 3, 0}));
        first.command("vornix2 system reboot");
        first.bringUp();
    }
    Process second(QStringLiteral("single"), m_path);
    QCOMPARE(second.getString("system version"), QByteArray("v3.3.0 2025-06-15"));
}

void TestStateFile::restartGoesOnAcrossProcesses()
{
    {
        Process first(QStringLiteral("single"), m_path);
        first.send("system update", trackingSoftware({3, 3, 0}));
        first.command("vornix2 system reboot");
    }
    Process second(QStringLiteral("single"), m_path);
    QVERIFY(!second.system.isReachable());
    QVERIFY(second.controller(0).rebooting);
    second.waitMs(7999);
    QVERIFY(!second.system.isReachable());

    Process third(QStringLiteral("single"), m_path);
    third.waitMs(8000);
    QCOMPARE(third.getString("system version"), QByteArray("v3.3.0 2025-06-15"));
}

void TestStateFile::shutDownOutlivesTheProcess()
{
    Process(QStringLiteral("single"), m_path).command("vornix2 system shutdown");
    Process second(QStringLiteral("single"), m_path);
    QCOMPARE(second.system.msUntilReachable(), -1);
    second.bringUp();
    QVERIFY(second.system.isReachable());
}

void TestStateFile::everyOtherStateOutlivesTheProcess()
{
    {
        Process first(QStringLiteral("controllers-and-cameras"), m_path);
        first.sendToCamera("c02", cameraFirmware({1, 4, 0}, QStringLiteral("-rc.1")));
        first.send("system ctupdt", controllerFirmware({1, 3}));
        first.system.powerCycleCamera(0);
        first.system.setMeasuring(true);
    }
    const Process second(QStringLiteral("controllers-and-cameras"), m_path);
    QVERIFY2(second.loaded, qPrintable(second.error));
    QCOMPARE(second.system.cameras().at(1).stagedVersion, QStringLiteral("v1.4.0-rc.1"));
    QVERIFY(!second.system.cameras().at(0).found);
    QCOMPARE(second.controller(0).stagedCt, QStringLiteral("v1.3"));
    QCOMPARE(second.system.measurement(), Measurement::Running);
}

void TestStateFile::restartThatEndsFarInTheFutureIsCut()
{
    Process(QStringLiteral("single"), m_path).system.restart();
    m_folder->write(QStringLiteral("deeper/state.json"),
                    written().replace("1750000008000", "1850000000000"));
    Process second(QStringLiteral("single"), m_path);
    QVERIFY2(second.loaded, qPrintable(second.error));
    QCOMPARE(second.system.msUntilReachable(), 8000);
}

void TestStateFile::missingFileIsNoFailure()
{
    const Process process(QStringLiteral("single"), m_path);
    QVERIFY(process.loaded);
    QCOMPARE(process.error, QString());
    QVERIFY(!QFile::exists(m_path));
}

void TestStateFile::damagedFileIsSetAside_data()
{
    QTest::addColumn<QByteArray>("was");
    QTest::addColumn<QByteArray>("is");
    QTest::addColumn<QString>("reason");
    const auto row = [](const char* name, const QByteArray& was, const QByteArray& is,
                        const QString& reason) {
        QTest::newRow(name) << was << is << reason;
    };
    row("no JSON", "{", "(", "line 1: " + jsonReason("("));
    row("another format", "state-1", "state-2",
        R"(format: must be one of "simulated-system-state-1")");
    row("unknown power", "\"on\"", "\"half\"",
        R"(power: must be one of "on", "restarting", "hung", "off")");
    row("unknown measurement", "\"off\"", "\"maybe\"",
        R"(measurement: must be one of "off", "running", "unstoppable")");
    row("negative time", "\"restartEndsMs\": 0", "\"restartEndsMs\": -1",
        "restartEndsMs: must be a whole number from 0 to 1125899906842624");
    row("a version that is no text", "\"v1.2\"", "12", "controllers[0].ct: must be a text");
    row("an unknown key", "\"ct\"", "\"firmware\"", "controllers[0].ct: missing");
    row("a state that is no truth", "\"found\": true", "\"found\": 1",
        "cameras[0].found: must be true or false");
}

void TestStateFile::damagedFileIsSetAside()
{
    QFETCH(QByteArray, was);
    QFETCH(QByteArray, is);
    QFETCH(QString, reason);
    Process(QStringLiteral("controllers-and-cameras"), m_path).system.saveState();
    QByteArray json = written();
    const int place = json.indexOf(was);
    QVERIFY2(place >= 0, json);
    json.replace(place, was.size(), is);
    m_folder->write(QStringLiteral("deeper/state.json"), json);

    Process second(QStringLiteral("controllers-and-cameras"), m_path);
    QCOMPARE(second.load, std::make_optional(m_path + ": " + reason));
    QCOMPARE(second.error, QString());
    QCOMPARE(second.getString("system version"), QByteArray("v3.1.0 2025-03-14"));
    QVERIFY(!QFile::exists(m_path));
    QVERIFY(QFile::exists(m_path + QStringLiteral(".damaged")));
    QVERIFY(second.system.saveState());
    QVERIFY(Process(QStringLiteral("controllers-and-cameras"), m_path).loaded);
}

void TestStateFile::fileOfOtherDevicesIsSetAside_data()
{
    QTest::addColumn<QByteArray>("was");
    QTest::addColumn<QByteArray>("is");
    QTest::addColumn<QString>("reason");
    QTest::newRow("another scenario") << QByteArray("\"single\"") << QByteArray("\"double\"")
                                      << "scenario: must be \"single\" as in the scenario";
    QTest::newRow("another host name")
        << QByteArray("zan-master") << QByteArray("zan-other")
        << "controllers[0].hostName: must be \"zan-master\" as in the scenario";
    QTest::newRow("more cameras") << QByteArray("\"cameras\": [") << QByteArray("\"cameras\": [{}")
                                  << "cameras: must have 0 entries as in the scenario";
}

void TestStateFile::fileOfOtherDevicesIsSetAside()
{
    QFETCH(QByteArray, was);
    QFETCH(QByteArray, is);
    QFETCH(QString, reason);
    Process(QStringLiteral("single"), m_path).system.saveState();
    m_folder->write(QStringLiteral("deeper/state.json"), written().replace(was, is));
    const Process second(QStringLiteral("single"), m_path);
    QCOMPARE(second.load, std::make_optional(m_path + ": " + reason));
    QCOMPARE(second.error, QString());
    QVERIFY(QFile::exists(m_path + QStringLiteral(".damaged")));
}

void TestStateFile::truncatedFileIsNeverTrusted()
{
    Process(QStringLiteral("controllers-and-cameras"), m_path).system.saveState();
    const QByteArray whole = written().trimmed();
    for (int size = 0; size < whole.size(); ++size) {
        m_folder->write(QStringLiteral("deeper/state.json"), whole.left(size));
        const Process process(QStringLiteral("controllers-and-cameras"), m_path);
        QVERIFY2(!process.loaded, qPrintable(QStringLiteral("cut at %1").arg(size)));
        QFile::remove(m_path + QStringLiteral(".damaged"));
    }
}

void TestStateFile::emptyFileIsSetAside()
{
    m_folder->write(QStringLiteral("deeper/state.json"), QByteArray());
    const Process process(QStringLiteral("single"), m_path);
    QCOMPARE(process.load, std::make_optional(m_path + ": line 1: illegal value"));
    QCOMPARE(process.error, QString());
}

void TestStateFile::whatIsNoStateIsLeftAlone_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("reason");
    const QString foreign = QStringLiteral("holds no state of a simulated system, so it is left as "
                                           "it is; name another file, or move it away");
    const QString irregular = QStringLiteral("is no regular file, so it is left as it is");
    QTest::newRow("another text") << "Dear diary,\n" << foreign;
    QTest::newRow("JSON of another program") << R"({"format": 1, "scenario": "single"})" << foreign;
    QTest::newRow("a folder") << "folder" << irregular;
    QTest::newRow("a pipe") << "pipe" << irregular;
}

namespace {

void putInTheWay(const QString& path, const QString& kind)
{
    QDir().mkpath(QFileInfo(path).path());
    if (kind == QLatin1String("folder"))
        QDir().mkpath(path);
    else if (kind == QLatin1String("pipe"))
        QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    else
        writeFixture(path, kind.toUtf8());
}

} // namespace

void TestStateFile::whatIsNoStateIsLeftAlone()
{
    QFETCH(const QString, kind);
    QFETCH(const QString, reason);
    putInTheWay(m_path, kind);
    Process process(QStringLiteral("single"), m_path);
    QVERIFY(!process.load);
    QCOMPARE(process.error, m_path + QStringLiteral(": ") + reason);
    QVERIFY(process.system.saveState());
    QCOMPARE(QDir(m_folder->path(QStringLiteral("deeper")))
                 .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot),
             QStringList(QStringLiteral("state.json")));
    if (QFileInfo(m_path).isFile())
        QCOMPARE(written(), kind.toUtf8());
}

void TestStateFile::onlyAStateIsRemoved()
{
    QFETCH(const QString, kind);
    QFETCH(const QString, reason);
    QString error;
    QVERIFY(SimulatedSystem::removeState(m_path, &error));
    Process(QStringLiteral("single"), m_path).system.saveState();
    QVERIFY(SimulatedSystem::removeState(m_path, &error));
    QVERIFY(!QFile::exists(m_path));

    putInTheWay(m_path, kind);
    QVERIFY(!SimulatedSystem::removeState(m_path, &error));
    QCOMPARE(error, m_path + QStringLiteral(": ") + reason);
    QVERIFY(QFileInfo::exists(m_path));
}

void TestStateFile::failureToWriteIsReported()
{
    m_folder->write(QStringLiteral("deeper"), "a file where the folder should be");
    Process process(QStringLiteral("single"), m_path);
    QSignalSpy failures(&process.system, &SimulatedSystem::trouble);
    QVERIFY(!process.system.saveState());
    QCOMPARE(failures.count(), 1);
    QVERIFY(failures.first().first().toString().startsWith(m_path + QStringLiteral(": ")));
}

void TestStateFile::stateStaysOnAFullDisk()
{
    Process process(QStringLiteral("single"), m_path);
    QVERIFY(process.system.saveState());
    const QByteArray before = written();
    QSignalSpy failures(&process.system, &SimulatedSystem::trouble);
    {
        const FullDisk disk(100);
        process.system.restart();
    }
    QCOMPARE(failures.count(), 1);
    QCOMPARE(failures.first().first().toString(), m_path + ": " + systemReason(EFBIG));
    QCOMPARE(written(), before);
}

void TestStateFile::withoutFileNothingIsWritten()
{
    SimulatedSite equipment(QStringLiteral("single"));
    QVERIFY(equipment.system.saveState());
}

ZAN_TEST_MAIN(TestStateFile)
#include "tst_statefile.moc"
