#include "commandline.h"

#include <childprocess.h>
#include <fixturefiles.h>
#include <reasons.h>
#include <sampleimages.h>
#include <testmain.h>

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextCodec>
#include <QTextStream>

/// What one run of the tool left behind.
struct Outcome
{
    int exitCode = -1;
    QString out;
    QString messages;
};

namespace {

Outcome runTool(const QStringList& arguments, bool isTerminal = false, QIODevice* in = nullptr)
{
    Outcome outcome;
    QTextStream out(&outcome.out);
    QTextStream messages(&outcome.messages);
    outcome.exitCode = runVerb(imageTool(), arguments, {out, messages, isTerminal, false, in});
    return outcome;
}

Outcome runProgram(const QStringList& arguments, const QMap<QString, QString>& variables = {})
{
    ChildProcess program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (auto variable = variables.begin(); variable != variables.end(); ++variable)
        environment.insert(variable.key(), variable.value());
    program.setProcessEnvironment(environment);
    program.start(QStringLiteral(IMAGETOOL), arguments);
    if (!program.waitForEnd())
        qFatal("imagetool did not run: %s", qPrintable(program.errorString()));
    return {program.exitCode(), program.readAllStandardOutput(), program.readAllStandardError()};
}

QByteArray contentOf(const QString& fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot be read");
}

} // namespace

class TestCommandLine : public QObject
{
    Q_OBJECT

private slots:
    void refusesWrongUsage_data();
    void refusesWrongUsage();
    void helpNamesEveryExitCode();
    void buildsSilently();
    void buildsTheSameBytesInEveryProcess();
    void needsNoHomeAndNoTemporaryFolder();
    void showsASoundFile();
    void showsADamagedFileWithItsProblems();
    void saysWhatCannotBeRead_data();
    void saysWhatCannotBeRead();
    void saysWhatIsWrongInADescription();
    void failedBuildLeavesTheOldFile();
    void saysWhatCannotBeWritten();
    void warnsOfANameThatFrontendsCannotRead_data();
    void warnsOfANameThatFrontendsCannotRead();
    void jsonOfABuild();
    void jsonOfAListing();
    void descriptionNamesAFile();
    void jsonOfErrors();
    void optionsMayStandAnywhere();
    void overwritesNothingButImages_data();
    void overwritesNothingButImages();
    void fullDiskLeavesTheOldFile();
    void readsStandardInputAndWritesStandardOutput();
    void readsUpdateFilesFromStandardInput();
    void whatComesThroughStandardInputIsChecked();
    void refusesWhatCheckRefuses();
    void showsSeveralFiles();
    void checkTellsAllFindings();
    void checkCountsTheRulesThatAreChosen_data();
    void checkCountsTheRulesThatAreChosen();
    void checkSaysWhatItCannotRead();
    void checkOfAFolderWithoutUpdateFilesIsNone();
    void checkAsJson();
    void colours();
    void extractRefuses_data();
    void extractRefuses();

private:
    const FixtureFolder m_folder;
    const QString m_description = m_folder.write("description.json", R"({
        "kind": "camera", "newVersion": "1.4.0", "minVersion": "1.0.0", "models": ["0x0901"],
        "images": [{"text": "t", "payload": {"records": 2, "seed": 3}}]})");
    const QString m_output = m_folder.path("output.VX2znimg");
};

void TestCommandLine::refusesWrongUsage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");

    QTest::newRow("unknown command")
        << QStringList{"list", "f"} << "Unknown command 'list'. (imagetool --help tells more)";
    QTest::newRow("build without output")
        << QStringList{"build", "f"}
        << "build takes DESCRIPTION OUTPUT. (imagetool build --help tells more)";
    QTest::newRow("build of two")
        << QStringList{"build", "a", "b", "c"}
        << "build takes DESCRIPTION OUTPUT. (imagetool build --help tells more)";
    QTest::newRow("show of nothing")
        << QStringList{"show"} << "show takes FILE.... (imagetool show --help tells more)";
    for (const char* verb : {"show", "check"})
        QTest::addRow("%s of the standard input twice", verb)
            << QStringList{verb, "-", "-"}
            << "- is the standard input, which can be read only once.";
}

void TestCommandLine::refusesWrongUsage()
{
    QFETCH(const QStringList, arguments);
    QFETCH(const QString, message);
    const Outcome outcome = runTool(arguments);
    QCOMPARE(outcome.exitCode, 2);
    QCOMPARE(outcome.out, QString());
    QCOMPARE(outcome.messages, "imagetool: " + message + '\n');
}

void TestCommandLine::helpNamesEveryExitCode()
{
    const Outcome outcome = runProgram({"--help"});
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(outcome.messages, QString());
    QVERIFY(outcome.out.startsWith("Usage: imagetool COMMAND [OPTION...] [ARGUMENT...]\n"));
    QVERIFY(outcome.out.endsWith(
        "Exit codes:\n"
        "  0  done\n"
        "  1  something cannot be read or written, whatever else is wrong\n"
        "  2  the command line is wrong\n"
        "  3  a description, a scenario, an update file, a delivery or a sealed "
        "folder\n"
        "     is wrong\n"));
}

void TestCommandLine::buildsSilently()
{
    const Outcome outcome = runProgram({"build", m_description, m_output});
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(outcome.out + outcome.messages, QString());

    CameraUpdateFile file;
    file.newVer = VersionInfo(1, 4, 0);
    file.minVer = VersionInfo(1, 0, 0);
    file.models = {0x0901};
    CameraImage image;
    image.text = "t";
    image.records = splitIntoRecords(
        makePayload({PayloadComponent::CameraFirmware, file.newVer, QString()}, 240 - 36, 3));
    file.images = {image};
    QCOMPARE(contentOf(m_output).toHex(), cameraUpdateBytes(file).toHex());
}

void TestCommandLine::buildsTheSameBytesInEveryProcess()
{
    const QString other = m_folder.path("other.VX2znimg");
    QCOMPARE(runProgram({"build", m_description, m_output}, {{"QT_HASH_SEED", "1"}}).exitCode, 0);
    QCOMPARE(runProgram({"build", m_description, other}, {{"QT_HASH_SEED", "2"}}).exitCode, 0);
    QCOMPARE(contentOf(other).toHex(), contentOf(m_output).toHex());
}

void TestCommandLine::needsNoHomeAndNoTemporaryFolder()
{
    // Not even root writes there.
    const QMap<QString, QString> nowhere = {{"HOME", "/proc"}, {"TMPDIR", "/proc"}};
    const Outcome built = runProgram({"build", m_description, m_output}, nowhere);
    QCOMPARE(built.messages, QString());
    QCOMPARE(built.exitCode, 0);
    QCOMPARE(runProgram({"show", m_output}, nowhere).exitCode, 0);
}

void TestCommandLine::showsASoundFile()
{
    QCOMPARE(runTool({"build", m_description, m_output}).exitCode, 0);
    const Outcome outcome = runProgram({"show", m_output});
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(outcome.messages, QString());
    QCOMPARE(outcome.out, m_output + "\n"
                                     "kind              camera\n"
                                     "newVersion        1.4.0\n"
                                     "minVersion        1.0.0\n"
                                     "models            0x0901\n"
                                     "images[0]\n"
                                     "  text            t\n"
                                     "  offset          48\n"
                                     "  length          255\n"
                                     "  records         2\n"
                                     "  longestRecord   120\n"
                                     "  payload         camera 1.4.0\n");
}

void TestCommandLine::showsADamagedFileWithItsProblems()
{
    CameraUpdateFile file = sampleCameraFile();
    file.images[0].offset = 1;
    file.images[1].magic = 2;
    const QString name = m_folder.write("damaged", cameraUpdateBytes(file));
    const Outcome outcome = runProgram({"show", name});
    QCOMPARE(outcome.exitCode, 3);
    QVERIFY(outcome.out.startsWith(name + "\nkind              camera\n"));
    QCOMPARE(
        outcome.messages,
        QString(
            "imagetool: %1: error: images[0].offset (offset 42) is 1, expected 70 [image-offset]\n"
            "imagetool: %1: error: images[1].magic (offset 91) is 0x0002, expected 0xa259 "
            "[block-magic]\n")
            .arg(name));
}

void TestCommandLine::saysWhatCannotBeRead_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");

    const QString missing = m_folder.path("missing");
    const QString folder = m_folder.path();
    QTest::newRow("description that is missing")
        << QStringList{"build", missing, m_output} << missing + ": " + systemReason(ENOENT);
    QTest::newRow("file that is missing")
        << QStringList{"show", missing} << missing + ": " + systemReason(ENOENT);
    QTest::newRow("file that is a folder")
        << QStringList{"show", folder} << folder + ": is no regular file";
}

void TestCommandLine::saysWhatCannotBeRead()
{
    QFETCH(const QStringList, arguments);
    QFETCH(const QString, message);
    const Outcome outcome = runTool(arguments);
    QCOMPARE(outcome.exitCode, 1);
    QCOMPARE(outcome.out, QString());
    QCOMPARE(outcome.messages, "imagetool: " + message + '\n');
}

void TestCommandLine::saysWhatIsWrongInADescription()
{
    const QString wrong = m_folder.write("wrong.json", R"({"kind": "controler"})");
    const Outcome outcome = runProgram({"build", wrong, m_folder.path("never")});
    QCOMPARE(outcome.exitCode, 3);
    QCOMPARE(outcome.messages,
             "imagetool: " + wrong + ": kind: must be one of \"controller\", \"camera\"\n");
    QVERIFY(!QFile::exists(m_folder.path("never")));
}

void TestCommandLine::failedBuildLeavesTheOldFile()
{
    const QString old = m_folder.write("old", "old content");
    const QString wrong = m_folder.write("wrong.json", "{}");
    QCOMPARE(runTool({"build", wrong, old}).exitCode, 3);
    QCOMPARE(contentOf(old), QByteArray("old content"));
}

void TestCommandLine::saysWhatCannotBeWritten()
{
    const QString output = m_folder.path("no/such/folder");
    const Outcome outcome = runProgram({"build", m_description, output});
    QCOMPARE(outcome.exitCode, 1);
    QCOMPARE(outcome.messages, "imagetool: " + output + ": " + systemReason(ENOENT) + '\n');
}

void TestCommandLine::warnsOfANameThatFrontendsCannotRead_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("finding");
    QTest::addColumn<int>("exitCode");

    QTest::newRow("plain letters, blanks and signs") << "a b-c_d'e\".VX2znimg" << QString() << 0;
    QTest::newRow("a folder with other letters") << "Köln/new.VX2znimg" << QString() << 0;
    QTest::newRow("letters of Latin-1")
        << "für öde Türen.VX2znimg"
        << "warning: name is für öde Türen.VX2znimg, expected letters of ASCII [name-ascii]" << 0;
    QTest::newRow("other letters")
        << "€🎥.VX2znimg"
        << "error: name is €🎥.VX2znimg, expected letters of ASCII, or at least of Latin-1 "
           "[name-latin-1]"
        << 3;
}

void TestCommandLine::warnsOfANameThatFrontendsCannotRead()
{
    QFETCH(const QString, name);
    QFETCH(const QString, finding);
    QTextCodec* before = QTextCodec::codecForLocale();
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    m_folder.makeFolder("Köln");
    const QString output = m_folder.path(name);
    const Outcome outcome = runTool({"build", m_description, output});
    const bool isWritten = QFile::exists(output);
    QTextCodec::setCodecForLocale(before);

    QTEST(outcome.exitCode, "exitCode");
    QCOMPARE(isWritten, outcome.exitCode == 0);
    QCOMPARE(outcome.messages.section('\n', 0, 0),
             finding.isEmpty() ? QString() : "imagetool: " + output + ": " + finding);
}

void TestCommandLine::jsonOfABuild()
{
    const Outcome outcome = runProgram({"build", "--json", m_description, m_output});
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(QJsonDocument::fromJson(outcome.out.toUtf8()).object(),
             (QJsonObject{{"file", m_output}, {"bytes", 303}, {"findings", QJsonArray()}}));
}

void TestCommandLine::jsonOfAListing()
{
    const QString name = m_folder.write("text", "some notes");
    const Outcome outcome = runTool({"show", "--json", name});
    QCOMPARE(outcome.exitCode, 3);
    QCOMPARE(outcome.messages, QString());
    const QJsonObject json = QJsonDocument::fromJson(outcome.out.toUtf8()).object();
    QCOMPARE(json.keys(), (QStringList{"shown"}));
    QCOMPARE(json.value("shown").toObject().value("file").toString(), name);
}

void TestCommandLine::descriptionNamesAFile()
{
    const Outcome outcome = runTool({"show", "--json", "-"});
    QCOMPARE(QJsonDocument::fromJson(outcome.out.toUtf8()).object(),
             (QJsonObject{{"error", "show --json needs a FILE that the description can name."},
                          {"exitCode", 2}}));
    QCOMPARE(outcome.exitCode, 2);
}

void TestCommandLine::jsonOfErrors()
{
    const QString missing = m_folder.path("missing");
    const Outcome outcome = runTool({"show", missing, "--json"});
    QCOMPARE(outcome.exitCode, 1);
    QCOMPARE(outcome.messages, QString());
    QCOMPARE(QJsonDocument::fromJson(outcome.out.toUtf8()).object(),
             (QJsonObject{{"error", missing + ": " + systemReason(ENOENT)}, {"exitCode", 1}}));
}

void TestCommandLine::optionsMayStandAnywhere()
{
    QCOMPARE(runTool({"--json", "build", m_description, m_output}).exitCode, 0);
    QCOMPARE(runTool({"build", m_description, m_output, "--json"}).exitCode, 0);
    QCOMPARE(runTool({"show", "--help"}).exitCode, 0);
}

void TestCommandLine::overwritesNothingButImages_data()
{
    QTest::addColumn<QString>("output");
    QTest::addColumn<QString>("reason");

    const QString made = "is what the output is made from, so it is left as it is";
    const QString foreign = "is no regular file, so it is left as it is";
    QTest::newRow("its own description") << m_folder.path("own.json") << made;
    QTest::newRow("its own description by a link") << m_folder.link("link", "own.json") << made;
    QTest::newRow("the content of a block") << m_folder.path("fw.bin") << made;
    QTest::newRow("a device") << "/dev/null" << foreign;
    QTest::newRow("a folder") << m_folder.path() << foreign;
}

void TestCommandLine::overwritesNothingButImages()
{
    QFETCH(const QString, output);
    m_folder.write("fw.bin", "firmware");
    const QString description = m_folder.write("own.json", R"({
        "kind": "camera", "newVersion": "1.4.0", "minVersion": "1.0.0", "models": ["0x0901"],
        "images": [{"file": "fw.bin"}]})");
    const QByteArray before = contentOf(description);
    const Outcome outcome = runTool({"build", "--allow", "camera-ending", description, output});
    QTEST(outcome.messages.section(": ", 2).trimmed(), "reason");
    QCOMPARE(outcome.messages.section(": ", 1, 1), output);
    QCOMPARE(outcome.exitCode, 1);
    QCOMPARE(contentOf(description), before);
    QCOMPARE(contentOf(m_folder.path("fw.bin")), QByteArray("firmware"));
    QVERIFY(!QFileInfo("/dev/null").isFile());
}

void TestCommandLine::fullDiskLeavesTheOldFile()
{
    const QString old = m_folder.write("full.VX2znimg", "old content");
    ChildProcess shell;
    // No file may grow beyond a block, as if the disk were full.
    shell.start("sh", {"-c", "trap '' XFSZ; ulimit -f 0; exec \"$@\"", "sh", IMAGETOOL, "build",
                       m_description, old});
    QVERIFY(shell.waitForEnd());
    QCOMPARE(shell.exitCode(), 1);
    QCOMPARE(QString::fromLocal8Bit(shell.readAllStandardError()),
             "imagetool: " + old + ": " + systemReason(EFBIG) + '\n');
    QCOMPARE(contentOf(old), QByteArray("old content"));
    QCOMPARE(QDir(m_folder.path()).entryList({"full*"}), QStringList{"full.VX2znimg"});
}

void TestCommandLine::readsStandardInputAndWritesStandardOutput()
{
    QCOMPARE(runTool({"build", m_description, m_output}).exitCode, 0);
    ChildProcess program;
    program.setStandardInputFile(m_description);
    program.start(QStringLiteral(IMAGETOOL), {"build", "-", "-"});
    QVERIFY(program.waitForEnd());
    QCOMPARE(program.exitCode(), 0);
    QCOMPARE(program.readAllStandardOutput().toHex(), contentOf(m_output).toHex());
    QCOMPARE(program.readAllStandardError(), QByteArray());
}

void TestCommandLine::readsUpdateFilesFromStandardInput()
{
    QCOMPARE(runTool({"build", m_description, m_output}).exitCode, 0);
    const auto run = [&](const QStringList& arguments) {
        ChildProcess program;
        program.setStandardInputFile(m_output);
        program.start(QStringLiteral(IMAGETOOL), arguments);
        if (!program.waitForEnd())
            qFatal("imagetool did not run: %s", qPrintable(program.errorString()));
        return Outcome{program.exitCode(), program.readAllStandardOutput(),
                       program.readAllStandardError()};
    };
    const Outcome shown = run({"show", "-"});
    QCOMPARE(shown.exitCode, 0);
    QCOMPARE(shown.out, runTool({"show", m_output}).out.replace(m_output, "-"));
    // What comes through a pipe has no name that could be wrong.
    const Outcome checked = run({"check", "-"});
    QCOMPARE(checked.messages + checked.out, QString());
    QCOMPARE(checked.exitCode, 0);
    const QString both[] = {m_folder.path("of-the-file"), m_folder.path("of-the-input")};
    QCOMPARE(runTool({"extract", m_output, "--block", "0", "-o", both[0]}).exitCode, 0);
    QCOMPARE(run({"extract", "-", "--block", "0", "-o", both[1]}).exitCode, 0);
    QCOMPARE(contentOf(both[1]).toHex(), contentOf(both[0]).toHex());
}

void TestCommandLine::refusesWhatCheckRefuses()
{
    const QString output = m_folder.path("refused.img");
    const QString finding =
        output + ": error: name is refused.img, expected a name that ends with .VX2znimg "
                 "[camera-ending]\n";
    const Outcome refused = runTool({"build", m_description, output});
    QCOMPARE(refused.messages, "imagetool: " + finding +
                                   "imagetool: not written; --allow RULE would write it all the "
                                   "same\n");
    QCOMPARE(refused.exitCode, 3);
    QVERIFY(!QFile::exists(output));

    const Outcome allowed = runTool({"build", "--allow", "camera-ending", m_description, output});
    QCOMPARE(allowed.messages, QString());
    QCOMPARE(allowed.exitCode, 0);
    QCOMPARE(contentOf(output).size(), 303);

    const Outcome unknown = runTool({"build", "--allow", "no-rule", m_description, output});
    QCOMPARE(unknown.messages, QString("imagetool: There is no rule no-rule. (imagetool check "
                                       "--list-rules lists them)\n"));
    QCOMPARE(unknown.exitCode, 2);
}

void TestCommandLine::showsSeveralFiles()
{
    QCOMPARE(runTool({"build", m_description, m_output}).exitCode, 0);
    const QString one = runTool({"show", m_output}).out;
    const Outcome outcome = runTool({"show", m_output, m_folder.path("missing"), m_output});
    QCOMPARE(outcome.out, one + one);
    QCOMPARE(outcome.exitCode, 1);
    // What cannot be read counts more than what is wrong, wherever it stands.
    QCOMPARE(runTool({"show", m_folder.path("missing"), m_description}).exitCode, 1);
    QCOMPARE(runTool({"show", m_description, m_output}).exitCode, 3);
}

namespace {

QByteArray fileOfTwoBreaches()
{
    CameraUpdateFile file = sampleCameraFile();
    file.newVer = VersionInfo(0x11, 0x12, 0x13);
    file.minVer = VersionInfo(0x10, 0, 0);
    file.models = {0x0901};
    file.images.removeLast();
    return cameraUpdateBytes(file) + "!";
}

const char leftOverLine[] =
    ": warning: the end of the file (offset 69) is 1 bytes, expected nothing [left-over]\n";
const char endingLine[] =
    ": error: name is two.img, expected a name that ends with .VX2znimg [camera-ending]\n";

} // namespace

void TestCommandLine::whatComesThroughStandardInputIsChecked()
{
    QByteArray bytes = fileOfTwoBreaches();
    QBuffer in(&bytes);
    in.open(QIODevice::ReadOnly);
    const Outcome outcome = runTool({"check", "--rule", "left-over", "--strict", "-"}, false, &in);
    QCOMPARE(outcome.out, QString("-") + leftOverLine);
    QCOMPARE(outcome.exitCode, 3);
    QCOMPARE(runTool({"check", "-"}).out,
             QString("-: error: magic (offset 0) is cut off by the end of the file, expected 2 "
                     "bytes [cut-short]\n"));
}

void TestCommandLine::checkTellsAllFindings()
{
    const QString name = m_folder.write("two.img", fileOfTwoBreaches());
    const Outcome outcome = runProgram({"check", name});
    QCOMPARE(outcome.out, name + endingLine + name + leftOverLine);
    QCOMPARE(outcome.messages, QString());
    QCOMPARE(outcome.exitCode, 3);
}

void TestCommandLine::checkCountsTheRulesThatAreChosen_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("lines");
    QTest::addColumn<int>("exitCode");

    const QString ending = "%1" + QString(endingLine);
    const QString leftOver = "%1" + QString(leftOverLine);
    QTest::newRow("a warning alone") << QStringList{"--rule", "-camera-ending"} << leftOver << 0;
    QTest::newRow("a warning alone that counts")
        << QStringList{"--rule", "-camera-ending", "--strict"} << leftOver << 3;
    QTest::newRow("an error alone") << QStringList{"--rule=-left-over"} << ending << 3;
    QTest::newRow("only one rule") << QStringList{"--rule", "left-over"} << leftOver << 0;
    QTest::newRow("neither") << QStringList{"--rule", "-left-over", "--rule", "-camera-ending"}
                             << QString() << 0;
}

void TestCommandLine::checkCountsTheRulesThatAreChosen()
{
    QFETCH(const QStringList, options);
    QFETCH(const QString, lines);
    const QString name = m_folder.write("two.img", fileOfTwoBreaches());
    const Outcome outcome = runTool(QStringList{"check", name} + options);
    QCOMPARE(outcome.out, QString(lines).replace("%1", name));
    QCOMPARE(outcome.messages, QString());
    QTEST(outcome.exitCode, "exitCode");
}

void TestCommandLine::checkSaysWhatItCannotRead()
{
    const QString missing = m_folder.path("missing");
    const QString name = m_folder.write("two.img", fileOfTwoBreaches());
    const Outcome outcome = runTool({"check", missing, "/dev/null", name});
    QCOMPARE(outcome.out, name + endingLine + name + leftOverLine);
    QCOMPARE(outcome.messages, "imagetool: " + missing +
                                   ": No such file or directory\n"
                                   "imagetool: /dev/null: is no regular file\n");
    QCOMPARE(outcome.exitCode, 1);
    QCOMPARE(runTool({"check", "--rule", "no-rule", name}).exitCode, 2);
    QCOMPARE(runTool({"check"}).exitCode, 2);
}

// The wrong folder must not pass for a sound delivery.
void TestCommandLine::checkOfAFolderWithoutUpdateFilesIsNone()
{
    const QString empty = m_folder.makeFolder("empty");
    const Outcome outcome = runTool({"check", empty});
    QCOMPARE(outcome.out, QString());
    QCOMPARE(outcome.messages, "imagetool: " + empty + ": there is no update file\n");
    QCOMPARE(outcome.exitCode, 1);
}

void TestCommandLine::checkAsJson()
{
    const QString name = m_folder.write("two.img", fileOfTwoBreaches());
    const Outcome outcome = runTool({"check", "--json", "--rule", "left-over", name});
    const QJsonObject finding{
        {"rule", "left-over"},
        {"severity", "warning"},
        {"file", name},
        {"offset", 69},
        {"field", "the end of the file"},
        {"value", "1 bytes"},
        {"expected", "nothing"},
        {"text", "the end of the file (offset 69) is 1 bytes, expected nothing"},
        {"why", "bytes behind the last block belong to none"}};
    QCOMPARE(QJsonDocument::fromJson(outcome.out.toUtf8()).object(),
             (QJsonObject{{"findings", QJsonArray{finding}},
                          {"errors", 0},
                          {"warnings", 1},
                          {"files", 1},
                          {"exitCode", 0}}));
    QCOMPARE(outcome.messages, QString());
}

void TestCommandLine::colours()
{
    const QString name = m_folder.write("two.img", fileOfTwoBreaches());
    Outcome outcome;
    QTextStream out(&outcome.out);
    QTextStream messages(&outcome.messages);
    runVerb(imageTool(), {"check", name}, {out, messages, false, true});
    QCOMPARE(outcome.out, name + QString(endingLine).replace("error", "\x1b[1;31merror\x1b[0m") +
                              name +
                              QString(leftOverLine).replace("warning", "\x1b[1;33mwarning\x1b[0m"));
}

void TestCommandLine::extractRefuses_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");
    QTest::addColumn<int>("exitCode");

    const QString usage =
        "extract needs --block N and -o OUTPUT. (imagetool extract --help tells more)";
    const QString image = m_folder.path("c.VX2znimg");
    const QString out = m_folder.path("never");
    QTest::newRow("no block") << QStringList{image, "-o", out} << usage << 2;
    QTest::newRow("no output") << QStringList{image, "--block", "0"} << usage << 2;
    QTest::newRow("a block that is no number")
        << QStringList{image, "--block", "first", "-o", out} << usage << 2;
    QTest::newRow("a block that is not there")
        << QStringList{image, "--block", "1", "-o", out}
        << image + ": there is no block 1, only 1, counted from 0" << 3;
    QTest::newRow("no update file")
        << QStringList{m_description, "--block", "0", "-o", out}
        << m_description + ": magic (offset 0) is 0x0a7b, expected that of an update file" << 3;
    QTest::newRow("onto itself") << QStringList{image, "--block", "0", "-o", image}
                                 << image +
                                        ": is what the output is made from, so it is left as it is"
                                 << 1;
}

void TestCommandLine::extractRefuses()
{
    QFETCH(const QStringList, arguments);
    QFETCH(const QString, message);
    QCOMPARE(runTool({"build", m_description, m_folder.path("c.VX2znimg")}).exitCode, 0);
    const Outcome outcome = runTool(QStringList{"extract"} + arguments);
    QCOMPARE(outcome.messages, "imagetool: " + message + '\n');
    QTEST(outcome.exitCode, "exitCode");
    QVERIFY(!QFile::exists(m_folder.path("never")));
}

ZAN_TEST_MAIN(TestCommandLine)
#include "tst_commandline.moc"
