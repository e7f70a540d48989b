#include <deliverylayout.h>

#include <simulatorfixtures.h>

#include <frontend.h>

#include <childprocess.h>
#include <deliverycheck.h>
#include <deliverysealing.h>
#include <fixturefiles.h>
#include <reasons.h>
#include <testmain.h>

#include <QDir>
#include <QTextCodec>

#include <cstdio>

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

/// File names are UTF-8 while this exists, whatever the locale says.
class Utf8FileNames
{
public:
    Utf8FileNames() { QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8")); }
    ~Utf8FileNames() { QTextCodec::setCodecForLocale(m_before); }
    Utf8FileNames(const Utf8FileNames&) = delete;
    Utf8FileNames& operator=(const Utf8FileNames&) = delete;

private:
    QTextCodec* m_before = QTextCodec::codecForLocale();
};

/// The demo frontend as a process of its own.
struct Run
{
    Run(const QString& scenario, const QString& stateDir, const QString& locale = QString())
    {
        if (!locale.isEmpty())
            set("LC_ALL", locale);
        start({"--scenario", scenario, "--state-dir", stateDir});
    }

    Run(const QString& currentDir, const QStringList& options)
    {
        process.setWorkingDirectory(currentDir);
        start(options);
    }

    void set(const QString& variable, const QString& value)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(variable, value);
        process.setProcessEnvironment(environment);
    }

    void start(const QStringList& options)
    {
        process.start(QStringLiteral(DEMO_FRONTEND), QStringList{"--headless", "--fast"} + options);
        if (!process.waitForEnd())
            qFatal("the frontend did not come to its end: %s",
                   process.readAllStandardError().constData());
    }

    ChildProcess process;
};

} // namespace

Q_DECLARE_METATYPE(std::optional<QStringList>)

class TestDeliveryLayout : public QObject
{
    Q_OBJECT

private slots:
    void updateFilesOfAnotherFolderCanBeWanted();
    void updateFolderThatIsMissingIsTold();
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
    void wholeDeliveryStaysAsItWasSealed();
    void frontendKeepsTheModuleOutOfAnUnsealedDelivery();
    void frontendThatRunsIsNotDisturbed();
    void folderOfOthersIsLeftAlone_data();
    void folderOfOthersIsLeftAlone();
    void namesThatModulesCannotOpenAreTold_data();
    void namesThatModulesCannotOpenAreTold();
    void nameThatModulesOpenByItsBytesIsFine();
    void frontendTellsWhatItsModuleCannotRead();
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
    QCOMPARE(error, inTheWay + "/controller_update: cannot be removed: " + systemReason(ENOTDIR));
    QVERIFY(!layOutFrontend(scenarioWith({}, {}), delivered + "/program", inTheWay, &error));
    QCOMPARE(error, inTheWay + ": is no folder, so it is left as it is");
}

// A program that runs through a symbolic link is known by where it really is.
void TestDeliveryLayout::programIsNoLink()
{
    const FixtureFolder folder;
    const QString delivered = deliver(folder);
    folder.write("own/stale", "stale");
    QString error;
    const auto program =
        layOutFrontend(scenarioWith({}, {}), delivered + "/program", folder.path("own"), &error);
    QCOMPARE(program, std::make_optional(folder.path("own/program")));
    QVERIFY(!QFileInfo(*program).isSymLink());
    QCOMPARE(contentOf(*program), QByteArray("program"));
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

void TestDeliveryLayout::wholeDeliveryStaysAsItWasSealed()
{
    const FixtureFolder folder;
    const QString delivered = deliver(folder);
    int files = 0;
    QString error;
    QVERIFY(DeliverySealing().seal(delivered + "/controller_update", &files, &error) ==
            DeliverySealing::Outcome::Done);
    const Scenario noteOnly = scenarioWith(std::nullopt, QStringList{"v3_1_0.html"});
    QVERIFY2(layOutFiles(noteOnly, delivered, folder.path("own"), &error), qPrintable(error));
    const DeliveryReport report = DeliveryCheck().checkBeside(folder.path("own"));
    QCOMPARE(report.problems(), QStringList());
    QVERIFY(report.verdict == DeliveryReport::Verdict::Complete);
}

void TestDeliveryLayout::frontendKeepsTheModuleOutOfAnUnsealedDelivery()
{
    const FixtureFolder folder;
    Run run(folder.path(), {"--scenario", "one-update-file", "--state-dir", "state", "--public-key",
                            "RWS3TUNxwVsgaqDrSBIymoYCtbvD06LrPaGEzUFgGJgb8h1lHEx33aTW"});
    QCOMPARE(run.process.exitCode(), int(StartFailed));
    const QString told = QString::fromLocal8Bit(run.process.readAllStandardOutput());
    QVERIFY2(told.contains("SHA256SUMS: is missing"), qPrintable(told));
    QVERIFY2(told.contains("The update module was not loaded, so nothing was updated."),
             qPrintable(told));
    QVERIFY2(!told.contains("Module loaded"), qPrintable(told));
}

void TestDeliveryLayout::frontendThatRunsIsNotDisturbed()
{
    const FixtureFolder folder;
    QString error;
    FolderLock lock(folder.path("state"));
    QVERIFY(lock.take(0, &error));
    Run run("one-update-file", folder.path("state"));
    const QString begin = "demo-frontend: " + folder.path("state") +
                          ": tst_deliverylayout uses this folder, process ";
    const QString told = QString::fromLocal8Bit(run.process.readAllStandardError());
    QVERIFY2(told.startsWith(begin), qPrintable(told));
    QCOMPARE(run.process.exitCode(), int(StartFailed));
    QVERIFY(!QFileInfo::exists(folder.path("state/delivered")));
}

void TestDeliveryLayout::namesThatModulesCannotOpenAreTold_data()
{
    QTest::addColumn<QString>("folderName");
    QTest::addColumn<QStringList>("fileNames");
    QTest::addColumn<QStringList>("told"); ///< with %1 for the folder
    QTest::newRow("plain names") << "updates" << QStringList{"a b.vx3img", "x'\"y"}
                                 << QStringList();
    QTest::newRow("an empty folder") << "Bühne" << QStringList() << QStringList();
    QTest::newRow("two of three files")
        << "updates" << QStringList{"für öde Räume für.img", "new.img", "€🎥.img"}
        << QStringList{"The module cannot read the update file %1/für öde Räume für.img because "
                       "of \"ü\", \"ö\", \"ä\" in its name. Give it a name without such letters.",
                       "The module cannot read the update file %1/€🎥.img because of \"€\", "
                       "\"🎥\" in its name. Give it a name without such letters."};
    QTest::newRow("the folder, whatever the files are called")
        << "Bühne" << QStringList{"new.img", "ö.img"}
        << QStringList{"The module cannot read the update files in %1 because of \"ü\" in the "
                       "path. Move the frontend to a folder whose path has no such letters."};
}

void TestDeliveryLayout::namesThatModulesCannotOpenAreTold()
{
    QFETCH(const QString, folderName);
    QFETCH(const QStringList, fileNames);
    QFETCH(QStringList, told);
    const Utf8FileNames utf8;
    const FixtureFolder place;
    if (place.path() != place.path().toLatin1())
        QSKIP("the folder for temporary files is itself one that modules cannot read");
    const QString folder = place.makeFolder(folderName);
    for (const QString& name : fileNames)
        place.write(folderName + '/' + name, "update");
    QCOMPARE(unreadableUpdateFiles(folder), told.replaceInStrings("%1", folder));
    QCOMPARE(unreadableUpdateFiles(folder + "/missing"), QStringList());
}

// Where file names are Latin-1, letters of it do no harm.
void TestDeliveryLayout::nameThatModulesOpenByItsBytesIsFine()
{
    const FixtureFolder folder;
    const QByteArray bytes = QFile::encodeName(folder.path()) + "/gr\xF6\xDF"
                                                                "e.img";
    FILE* file = std::fopen(bytes.constData(), "wb");
    QVERIFY(file);
    std::fclose(file);
    {
        QTextCodec* before = QTextCodec::codecForLocale();
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
        const QStringList told =
            unreadableUpdateFiles(QFile::decodeName(bytes).section('/', 0, -2));
        QTextCodec::setCodecForLocale(before);
        QCOMPARE(told, QStringList());
    }
    QCOMPARE(std::remove(bytes.constData()), 0);
}

void TestDeliveryLayout::frontendTellsWhatItsModuleCannotRead()
{
    const Utf8FileNames utf8;
    const FixtureFolder folder;
    Run run("one-update-file", folder.path("Bühne"), "C.UTF-8");
    const QString told = QString::fromUtf8(run.process.readAllStandardOutput());
    const QString line = "The module cannot read the update files in " +
                         QFileInfo(folder.path("Bühne/delivered")).canonicalFilePath() +
                         "/controller_update because of ";
    QVERIFY2(told.contains(line), qPrintable(told));
    QVERIFY2(told.indexOf(line) < told.indexOf("Module loaded"), qPrintable(told));
    QCOMPARE(run.process.exitCode(), int(NotNewest));
}

void TestDeliveryLayout::folderOfOthersIsLeftAlone_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("named");
    QTest::newRow("by a start") << QStringList{"--state-dir", "mine"} << "mine";
    QTest::newRow("by a start anew") << QStringList{"--fresh", "--state-dir", "mine"} << "mine";
    QTest::newRow("by a start that lays out a delivery")
        << QStringList{"--scenario", "one-update-file", "--state-dir", "mine"} << "mine";
    QTest::newRow("by a start with a slash behind the folder")
        << QStringList{"--fresh", "--state-dir", "./mine/"} << "mine";
    QTest::newRow("by a start through a link")
        << QStringList{"--fresh", "--state-dir", "link"} << "link";
}

void TestDeliveryLayout::folderOfOthersIsLeftAlone()
{
    QFETCH(const QStringList, options);
    QFETCH(const QString, named);
    const FixtureFolder folder;
    const QStringList names = {"delivered", "frontend-home", "runs"};
    for (const QString& name : names)
        folder.write("mine/" + name + "/work", "of years");
    folder.link("link", "mine");
    Run run(folder.path(), options);
    QCOMPARE(QString::fromLocal8Bit(run.process.readAllStandardError()),
             "demo-frontend: " + folder.path(named) +
                 ": the folder holds what is not of this program, so nothing in it is touched; "
                 "name a new or an empty folder\n");
    QCOMPARE(run.process.exitCode(), int(StartFailed));
    QCOMPARE(entries(folder.path("mine")), names);
    for (const QString& name : names)
        QCOMPARE(entries(folder.path("mine/" + name)), QStringList("work"));
}

void TestDeliveryLayout::updateFilesOfAnotherFolderCanBeWanted()
{
    const FixtureFolder folder;
    folder.write("a b/case-files/one.img", "one");
    Scenario scenario = scenarioWith(std::nullopt, std::nullopt);
    scenario.updateFolder = folder.path("a b/case-files");
    QVERIFY(wantsOwnDelivery(scenario));
    QString error;
    QVERIFY2(layOutFiles(scenario, deliver(folder), folder.path("own"), &error), qPrintable(error));
    QCOMPARE(entries(folder.path("own/controller_update")), QStringList("one.img"));
    QCOMPARE(contentOf(folder.path("own/controller_update/one.img")), QByteArray("one"));
    QCOMPARE(entries(folder.path("own/whats_new")),
             (QStringList{"images", "v3_1_0.html", "v3_2_0.html"}));
}

void TestDeliveryLayout::updateFolderThatIsMissingIsTold()
{
    const FixtureFolder folder;
    Scenario scenario = scenarioWith(std::nullopt, std::nullopt);
    scenario.updateFolder = folder.path("none");
    QString error;
    QVERIFY(!layOutFiles(scenario, deliver(folder), folder.path("own"), &error));
    QCOMPARE(error, "updateFolder: there is no folder " + folder.path("none"));
}

ZAN_TEST_MAIN(TestDeliveryLayout)
#include "tst_deliverylayout.moc"
