#include <deliverylayout.h>

#include <simulatorfixtures.h>

#include <frontend.h>

#include <fixturefiles.h>
#include <testmain.h>

#include <QDir>
#include <QLockFile>
#include <QProcess>

namespace {

/// What is delivered, below "demo" of a folder.
QString deliver(const FixtureFolder& folder)
{
    for (const char* file : {"old.vx3img", "new.vx3img"})
        folder.write(QStringLiteral("demo/controller_update/") + file, file);
    for (const char* file : {"v3_1_0.html", "v3_2_0.html", "images/picture.png"})
        folder.write(QStringLiteral("demo/whats_new/") + file, file);
    folder.write("demo/modules/module.so", "module");
    folder.write("demo/program", "program");
    return folder.path("demo");
}

Scenario scenarioWith(const std::optional<QStringList>& updateFiles,
                      const std::optional<QStringList>& notes)
{
    Scenario scenario;
    scenario.updateFiles = updateFiles;
    scenario.notes = notes;
    return scenario;
}

QStringList entries(const QString& folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : "cannot be read";
}

/// The demo frontend as a process of its own.
struct Run
{
    Run(const QString& scenario, const QString& stateDir)
    {
        process.start(QStringLiteral(DEMO_FRONTEND),
                      {"--headless", "--fast", "--scenario", scenario, "--state-dir", stateDir});
        if (!process.waitForFinished(60000))
            qFatal("the frontend does not end");
    }

    QProcess process;
};

} // namespace

Q_DECLARE_METATYPE(std::optional<QStringList>)

class TestDeliveryLayout : public QObject
{
    Q_OBJECT

private slots:
    void wantedFilesStandThere_data();
    void wantedFilesStandThere();
    void onlySelectionsNeedAFolder();
    void whatStoodThereIsGone();
    void whatIsLinkedToStays();
    void unknownFileIsNamed_data();
    void unknownFileIsNamed();
    void folderThatCannotBeWrittenIsNamed();
    void programIsNoLink();
    void frontendRunsWithTheWantedFiles();
    void frontendSaysWhatIsMissing();
    void frontendThatRunsIsNotDisturbed();
};

void TestDeliveryLayout::wantedFilesStandThere_data()
{
    QTest::addColumn<std::optional<QStringList>>("updateFiles");
    QTest::addColumn<std::optional<QStringList>>("notes");
    QTest::addColumn<QStringList>("foundUpdates");
    QTest::addColumn<QStringList>("foundNotes");
    using Names = std::optional<QStringList>;
    QTest::newRow("all where nothing is said")
        << Names() << Names() << QStringList{"new.vx3img", "old.vx3img"}
        << QStringList{"images", "v3_1_0.html", "v3_2_0.html"};
    QTest::newRow("one update file and all notes")
        << Names(QStringList{"old.vx3img"}) << Names() << QStringList{"old.vx3img"}
        << QStringList{"images", "v3_1_0.html", "v3_2_0.html"};
    QTest::newRow("one note, with the pictures, and all update files")
        << Names() << Names(QStringList{"v3_2_0.html"}) << QStringList{"new.vx3img", "old.vx3img"}
        << QStringList{"images", "v3_2_0.html"};
    QTest::newRow("none at all") << Names(QStringList()) << Names(QStringList()) << QStringList()
                                 << QStringList{"images"};
}

void TestDeliveryLayout::wantedFilesStandThere()
{
    QFETCH(const std::optional<QStringList>, updateFiles);
    QFETCH(const std::optional<QStringList>, notes);
    const FixtureFolder folder;
    QString error;
    QVERIFY2(
        layOutFiles(scenarioWith(updateFiles, notes), deliver(folder), folder.path("own"), &error),
        qPrintable(error));
    QTEST(entries(folder.path("own/controller_update")), "foundUpdates");
    QTEST(entries(folder.path("own/whats_new")), "foundNotes");
    QCOMPARE(contentOf(folder.path("own/whats_new/images/picture.png")),
             QByteArray("images/picture.png"));
    for (const QString& name : entries(folder.path("own/controller_update")))
        QCOMPARE(contentOf(folder.path("own/controller_update/" + name)), name.toUtf8());
}

void TestDeliveryLayout::onlySelectionsNeedAFolder()
{
    QVERIFY(!wantsOwnDelivery(scenarioWith({}, {})));
    QVERIFY(wantsOwnDelivery(scenarioWith(QStringList(), {})));
    QVERIFY(wantsOwnDelivery(scenarioWith({}, QStringList())));
}

void TestDeliveryLayout::whatStoodThereIsGone()
{
    const FixtureFolder folder;
    const QString delivered = deliver(folder);
    folder.write("own/controller_update/stale.vx3img", "stale");
    folder.link("own/whats_new/v3_0_0.html", "demo/whats_new/v3_9_9.html"); // leads nowhere
    QString error;
    for (int i = 0; i < 2; ++i) {
        QVERIFY2(layOutFiles(scenarioWith({{"old.vx3img"}}, QStringList()), delivered,
                             folder.path("own"), &error),
                 qPrintable(error));
        QCOMPARE(entries(folder.path("own/controller_update")), QStringList("old.vx3img"));
        QCOMPARE(entries(folder.path("own/whats_new")), QStringList("images"));
    }
}

// Of the folders that once were links to the delivered ones, only the links go.
void TestDeliveryLayout::whatIsLinkedToStays()
{
    const FixtureFolder folder;
    const QString delivered = deliver(folder);
    folder.makeFolder("own");
    folder.link("own/controller_update", "demo/controller_update");
    QString error;
    QVERIFY(layOutFiles(scenarioWith(QStringList(), {}), delivered, folder.path("own"), &error));
    QVERIFY(entries(folder.path("own/controller_update")).isEmpty());
    QCOMPARE(entries(delivered + "/controller_update"), (QStringList{"new.vx3img", "old.vx3img"}));
}

void TestDeliveryLayout::unknownFileIsNamed_data()
{
    QTest::addColumn<std::optional<QStringList>>("updateFiles");
    QTest::addColumn<std::optional<QStringList>>("notes");
    QTest::addColumn<QString>("error"); ///< behind it the folder
    using Names = std::optional<QStringList>;
    QTest::newRow("an update file")
        << Names(QStringList{"old.vx3img", "other.vx3img"}) << Names()
        << "updateFiles: \"other.vx3img\" is not among the files in %1/controller_update";
    QTest::newRow("a note") << Names() << Names(QStringList{"v9_0_0.html"})
                            << "notes: \"v9_0_0.html\" is not among the files in %1/whats_new";
    QTest::newRow("a folder in the place of a note")
        << Names() << Names(QStringList{"images"})
        << "notes: \"images\" is not among the files in %1/whats_new";
}

void TestDeliveryLayout::unknownFileIsNamed()
{
    QFETCH(const std::optional<QStringList>, updateFiles);
    QFETCH(const std::optional<QStringList>, notes);
    QFETCH(const QString, error);
    const FixtureFolder folder;
    const QString delivered = deliver(folder);
    QString told;
    QVERIFY(!layOutFiles(scenarioWith(updateFiles, notes), delivered, folder.path("own"), &told));
    QCOMPARE(told, error.arg(delivered));
}

void TestDeliveryLayout::folderThatCannotBeWrittenIsNamed()
{
    const FixtureFolder folder;
    const QString delivered = deliver(folder);
    const QString inTheWay = folder.write("own", "a file");
    QString error;
    QVERIFY(!layOutFiles(scenarioWith({}, {}), delivered, inTheWay, &error));
    QCOMPARE(error, inTheWay + "/controller_update cannot be laid out anew");
    QVERIFY(
        layOutFrontend(scenarioWith({}, {}), delivered + "/program", inTheWay, &error).isEmpty());
    QCOMPARE(error, inTheWay + " cannot be laid out anew");
}

// A program that runs through a symbolic link is known by where it really is.
void TestDeliveryLayout::programIsNoLink()
{
    const FixtureFolder folder;
    const QString delivered = deliver(folder);
    folder.write("own/stale", "stale");
    QString error;
    const QString program =
        layOutFrontend(scenarioWith({}, {}), delivered + "/program", folder.path("own"), &error);
    QCOMPARE(program, folder.path("own/program"));
    QVERIFY(!QFileInfo(program).isSymLink());
    QCOMPARE(contentOf(program), QByteArray("program"));
    QCOMPARE(contentOf(folder.path("own/modules/module.so")), QByteArray("module"));
    QCOMPARE(entries(folder.path("own")),
             (QStringList{"controller_update", "modules", "program", "whats_new"}));
}

void TestDeliveryLayout::frontendRunsWithTheWantedFiles()
{
    const FixtureFolder folder;
    Run run("one-update-file", folder.path("state"));
    const QByteArray told = run.process.readAllStandardOutput();
    QVERIFY2(told.contains("[x] | Firmware update (zan-master) | v3.1.0 | v3.2.0 | yes | yes"),
             told.constData());
    QVERIFY2(!told.contains("v3.2.0 | v3.3.0"), told.constData());
    QCOMPARE(run.process.readAllStandardError(), QByteArray());
    QCOMPARE(run.process.exitCode(), int(StartAgain));
    QCOMPARE(entries(folder.path("state/delivered/controller_update")),
             QStringList("controller_v3.2.0-beta.2.vx3img"));
}

void TestDeliveryLayout::frontendSaysWhatIsMissing()
{
    const FixtureFolder folder;
    const QString scenario = folder.write("mine.json", R"({
        "title": "T", "protocol": "1.23", "updateFiles": ["other.vx3img"],
        "controllers": [{"hostName": "zan", "address": "10.0.0.1", "serial": 1, "pt": "v3.1.0",
                         "ct": "v1.2"}]})");
    Run run(scenario, folder.path("state"));
    const QString demoDir = QFileInfo(QStringLiteral(DEMO_FRONTEND)).path();
    QCOMPARE(run.process.readAllStandardError(),
             ("demo-frontend: updateFiles: \"other.vx3img\" is not among the files in " + demoDir +
              "/controller_update\n")
                 .toLocal8Bit());
    QCOMPARE(run.process.exitCode(), int(StartFailed));
}

void TestDeliveryLayout::frontendThatRunsIsNotDisturbed()
{
    const FixtureFolder folder;
    folder.makeFolder("state");
    QLockFile lock(Frontend::lockFile(folder.path("state")));
    QVERIFY(lock.tryLock());
    Run run("one-update-file", folder.path("state"));
    QCOMPARE(run.process.readAllStandardError(),
             ("demo-frontend: " + folder.path("state") +
              ": the state folder is in use or cannot be written\n")
                 .toLocal8Bit());
    QCOMPARE(run.process.exitCode(), int(StartFailed));
    QVERIFY(!QFileInfo::exists(folder.path("state/delivered")));
}

ZAN_TEST_MAIN(TestDeliveryLayout)
#include "tst_deliverylayout.moc"
