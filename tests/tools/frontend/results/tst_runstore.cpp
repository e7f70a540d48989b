#include <runstore.h>

#include <elsewhere.h>
#include <fixturefiles.h>
#include <fulldisk.h>
#include <reasons.h>
#include <testmain.h>

#include <QDir>
#include <QFile>

namespace {

PlannedRun runAt(int minute)
{
    PlannedUpdate update;
    update.device = "zan-mäster";
    update.part = Part::ControllerFirmware;
    update.from = "v1.2";
    update.planned = "v1.4";
    update.isExact = true;
    update.outcome = Outcome::Failed;
    update.found = "v1.3";
    update.remark = "It runs another version than planned.";
    update.wasAway = true;
    PlannedUpdate camera;
    camera.part = Part::CameraFirmware;
    camera.outcome = Outcome::Skipped;
    PlannedRun run;
    run.started = QDateTime(QDate(2026, 3, 1), QTime(12, minute, 5, 17), Qt::UTC);
    run.system = "192.168.7.20";
    run.identity = "1f40";
    run.updates = {update, camera};
    run.hasEnded = true;
    run.hasRestarted = true;
    run.events = {{run.started.addSecs(9), "The run ended."}};
    return run;
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestRunStore : public QObject
{
    Q_OBJECT

private slots:
    void runIsReadAsItWasSaved();
    void runWithoutAnIdentityIsRead();
    void filesAreTheSameInEveryPlace_data();
    void filesAreTheSameInEveryPlace();
    void lastOneIsRead();
    void emptyFolderHoldsNoRun();
    void damagedFilesAreSetAside_data();
    void damagedFilesAreSetAside();
    void olderRunIsFoundBehindADamagedOne();
    void folderThatCannotBeWrittenIsTold();
    void runStaysOnAFullDisk();
    void filesOfOthersAreLeftAlone();
};

void TestRunStore::runIsReadAsItWasSaved()
{
    const FixtureFolder folder;
    const RunStore store(folder.path("runs"));
    const PlannedRun run = runAt(0);
    QString error;
    QVERIFY2(store.save(run, &error), qPrintable(error));
    QCOMPARE(store.logFile(run), folder.path("runs/run-20260301-120005-017.log"));
    QCOMPARE(contentOf(store.logFile(run)), run.logText().toUtf8());
    QCOMPARE(QDir(folder.path("runs")).entryList(QDir::Files),
             (QStringList{"run-20260301-120005-017.json", "run-20260301-120005-017.log"}));

    QStringList problems;
    const std::optional<PlannedRun> read = store.latest(&problems);
    QVERIFY(read);
    QCOMPARE(problems, QStringList());
    QCOMPARE(read->logText(), run.logText());
    QVERIFY(read->updates == run.updates);
    QCOMPARE(read->started, run.started);
    QVERIFY(read->hasEnded && read->hasRestarted);
    QCOMPARE(read->identity, run.identity);
}

// As they were written before.
void TestRunStore::runWithoutAnIdentityIsRead()
{
    const FixtureFolder folder;
    const RunStore store(folder.path("runs"));
    const PlannedRun run = runAt(0);
    QString error;
    QVERIFY2(store.save(run, &error), qPrintable(error));
    const QString name = "runs/run-20260301-120005-017.json";
    const QByteArray json = contentOf(folder.path(name));
    folder.write(name, QByteArray(json).replace("\"identity\": \"1f40\",", ""));
    QVERIFY(contentOf(folder.path(name)) != json);
    QStringList problems;
    const std::optional<PlannedRun> read = store.latest(&problems);
    QVERIFY2(read, qPrintable(problems.join('\n')));
    QCOMPARE(read->identity, QString());
    QCOMPARE(read->system, run.system);
}

void TestRunStore::filesAreTheSameInEveryPlace_data()
{
    QTest::addColumn<QByteArray>("language");
    QTest::addColumn<QByteArray>("zone");
    QTest::addColumn<QString>("logHead");
    QTest::newRow("where digits are others, and ahead of UTC")
        << QByteArray("ar_EG") << QByteArray("XXX-5:45")
        << "Update of 2026-03-02 05:44:05.017+05:45, system at 192.168.7.20\n";
    QTest::newRow("behind UTC") << QByteArray("de_DE") << QByteArray("XXX3:30")
                                << "Update of 2026-03-01 20:29:05.017-03:30, system at "
                                   "192.168.7.20\n";
}

void TestRunStore::filesAreTheSameInEveryPlace()
{
    QFETCH(const QByteArray, language);
    QFETCH(const QByteArray, zone);
    QFETCH(const QString, logHead);
    PlannedRun run = runAt(0);
    run.started = QDateTime(QDate(2026, 3, 1), QTime(23, 59, 5, 17), Qt::UTC);
    const FixtureFolder folder;
    const RunStore home(folder.path("home"));
    const RunStore away(folder.path("away"));
    QString error;
    QVERIFY2(home.save(run, &error), qPrintable(error));
    const Elsewhere elsewhere(language, zone);
    QVERIFY2(away.save(run, &error), qPrintable(error));

    const QString name = "/run-20260301-235905-017.json";
    QCOMPARE(contentOf(folder.path("away" + name)), contentOf(folder.path("home" + name)));
    QVERIFY(contentOf(folder.path("away" + name)).contains("\"2026-03-01T23:59:05.017Z\""));
    const QString log = QString::fromUtf8(contentOf(away.logFile(run)));
    QCOMPARE(log.left(logHead.size()), logHead);
    QStringList problems;
    QCOMPARE(home.latest(&problems)->started, run.started);
}

void TestRunStore::lastOneIsRead()
{
    const FixtureFolder folder;
    const RunStore store(folder.path("runs"));
    QString error;
    for (const int minute : {7, 59, 0})
        QVERIFY(store.save(runAt(minute), &error));
    QStringList problems;
    QCOMPARE(store.latest(&problems)->started, runAt(59).started);
}

void TestRunStore::emptyFolderHoldsNoRun()
{
    const FixtureFolder folder;
    QStringList problems;
    QVERIFY(!RunStore(folder.path("runs")).latest(&problems));
    QCOMPARE(problems, QStringList());
}

void TestRunStore::damagedFilesAreSetAside_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("problem"); ///< behind the name of the file
    const QByteArray head = R"({"format": "update-run-1", "system": "A", "events": [], )";
    QTest::newRow("nothing") << QByteArray() << ": line 1: " + jsonReason("");
    QTest::newRow("another kind of file")
        << QByteArray(R"({"format": "other", "started": "2026-03-01T12:00:00.000", "system": "A",
                         "updates": [], "events": []})")
        << ": format: must be one of \"update-run-1\"";
    QTest::newRow("a moment that is none")
        << head + R"("started": "yesterday", "updates": []})"
        << ": started: must be a moment such as \"2026-03-01T12:00:00.000Z\"";
    QTest::newRow("an update of an unknown part")
        << head + R"("started": "2026-03-01T12:00:00.000", "updates": [{"device": "a",
                     "part": "wheel"}]})"
        << ": updates[0].part: must be one of \"tracking-software\", \"controller-firmware\", "
           "\"camera-firmware\"";
    QTest::newRow("a key that nobody knows")
        << head + R"("started": "2026-03-01T12:00:00.000", "updates": [], "more": 1})"
        << ": more: unknown key";
}

void TestRunStore::damagedFilesAreSetAside()
{
    QFETCH(const QByteArray, content);
    QFETCH(const QString, problem);
    const FixtureFolder folder;
    const QString file = folder.write("runs/run-20260301-120005-017.json", content);
    QStringList problems;
    QVERIFY(!RunStore(folder.path("runs")).latest(&problems));
    QCOMPARE(problems, QStringList{file + problem});
    QVERIFY(!QFile::exists(file));
    QCOMPARE(contentOf(file + ".damaged"), content);
}

void TestRunStore::olderRunIsFoundBehindADamagedOne()
{
    const FixtureFolder folder;
    const RunStore store(folder.path("runs"));
    QString error;
    QVERIFY(store.save(runAt(0), &error));
    folder.write("runs/run-20260302-000000-000.json", "{");
    QStringList problems;
    QCOMPARE(store.latest(&problems)->started, runAt(0).started);
    QCOMPARE(problems.size(), 1);
}

void TestRunStore::folderThatCannotBeWrittenIsTold()
{
    const FixtureFolder folder;
    const QString inTheWay = folder.write("runs", "a file");
    QString error;
    QVERIFY(!RunStore(inTheWay).save(runAt(0), &error));
    QCOMPARE(error, inTheWay + ": the folder cannot be made");

    const RunStore store(folder.path("other"));
    const QString blocked = folder.makeFolder("other/run-20260301-120005-017.json");
    QVERIFY(!store.save(runAt(0), &error));
    QVERIFY2(error.startsWith(blocked + ": "), qPrintable(error));
}

void TestRunStore::runStaysOnAFullDisk()
{
    const FixtureFolder folder;
    const RunStore store(folder.path("runs"));
    const PlannedRun before = runAt(0);
    PlannedRun after = before;
    after.events.clear();
    QString error;
    QVERIFY(store.save(before, &error));
    {
        const FullDisk disk(100);
        QVERIFY(!store.save(after, &error));
    }
    QCOMPARE(error, folder.path("runs/run-20260301-120005-017.json") + ": " + systemReason(EFBIG));
    QCOMPARE(contentOf(store.logFile(before)), before.logText().toUtf8());
    QStringList problems;
    QCOMPARE(store.latest(&problems)->logText(), before.logText());
    QCOMPARE(problems, QStringList());
}

void TestRunStore::filesOfOthersAreLeftAlone()
{
    const FixtureFolder folder;
    const QString file = folder.write("runs/notes.json", "{");
    QStringList problems;
    QVERIFY(!RunStore(folder.path("runs")).latest(&problems));
    QCOMPARE(problems, QStringList());
    QCOMPARE(contentOf(file), QByteArray("{"));
}

ZAN_TEST_MAIN(TestRunStore)
#include "tst_runstore.moc"
