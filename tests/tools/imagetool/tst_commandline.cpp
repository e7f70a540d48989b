#include "commandline.h"
#include "sampleimages.h"

#include <fixturefiles.h>
#include <testmain.h>

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTextStream>

/// What one run of the tool left behind.
struct Outcome
{
    int exitCode = -1;
    QString out;
    QString messages;
};

static Outcome runTool(const QStringList& arguments, bool isTerminal = false)
{
    Outcome outcome;
    QTextStream out(&outcome.out);
    QTextStream messages(&outcome.messages);
    outcome.exitCode = runImageTool(arguments, {out, messages, isTerminal});
    return outcome;
}

static Outcome runProgram(const QStringList& arguments, const QString& hashSeed = QString())
{
    QProcess program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    if (!hashSeed.isEmpty())
        environment.insert("QT_HASH_SEED", hashSeed);
    program.setProcessEnvironment(environment);
    program.start(QStringLiteral(IMAGETOOL), arguments);
    if (!program.waitForFinished() || program.exitStatus() != QProcess::NormalExit)
        qFatal("imagetool did not run: %s", qPrintable(program.errorString()));
    return {program.exitCode(), program.readAllStandardOutput(), program.readAllStandardError()};
}

static QByteArray contentOf(const QString& fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot be read");
}

class CommandLineTest : public QObject
{
    Q_OBJECT

private slots:
    void refusesWrongUsage_data();
    void refusesWrongUsage();
    void helpNamesEveryExitCode();
    void buildsSilently();
    void buildsTheSameBytesInEveryProcess();
    void showsProgressOnATerminalOnly();
    void endsTheProgressLineBeforeAnError();
    void showsASoundFile();
    void showsADamagedFileWithItsProblems();
    void saysWhatCannotBeRead_data();
    void saysWhatCannotBeRead();
    void saysWhatIsWrongInADescription();
    void failedBuildLeavesTheOldFile();
    void saysWhatCannotBeWritten();
    void jsonOfABuild();
    void jsonOfAListing();
    void jsonOfErrors();
    void optionsMayStandAnywhere();

private:
    const FixtureFolder m_folder;
    const QString m_description = m_folder.write("description.json", R"({
        "kind": "camera", "newVersion": "1.4.0", "minVersion": "1.0.0", "models": ["0x0901"],
        "images": [{"text": "t", "payload": {"records": 2, "seed": 3}}]})");
    const QString m_output = m_folder.path("output");
};

void CommandLineTest::refusesWrongUsage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");

    QTest::newRow("nothing") << QStringList() << "no command given";
    QTest::newRow("unknown command") << QStringList{"list", "f"} << "unknown command list";
    QTest::newRow("unknown option") << QStringList{"show", "-x", "f"} << "unknown option -x";
    QTest::newRow("build without output")
        << QStringList{"build", "f"} << "build takes DESCRIPTION and OUTPUT";
    QTest::newRow("build of two") << QStringList{"build", "a", "b", "c"}
                                  << "build takes DESCRIPTION and OUTPUT";
    QTest::newRow("show of nothing") << QStringList{"show"} << "show takes FILE";
    QTest::newRow("show of two") << QStringList{"show", "a", "b"} << "show takes FILE";
}

void CommandLineTest::refusesWrongUsage()
{
    QFETCH(const QStringList, arguments);
    QFETCH(const QString, message);
    const Outcome outcome = runTool(arguments);
    QCOMPARE(outcome.exitCode, 1);
    QCOMPARE(outcome.out, QString());
    QCOMPARE(outcome.messages, "imagetool: " + message + "\nTry: imagetool --help\n");
}

void CommandLineTest::helpNamesEveryExitCode()
{
    const Outcome outcome = runProgram({"--help"});
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(outcome.messages, QString());
    QVERIFY(outcome.out.startsWith("Usage: imagetool build [--json] DESCRIPTION OUTPUT\n"
                                   "       imagetool show [--json] FILE\n"));
    QVERIFY(outcome.out.endsWith("Exit codes:\n"
                                 "  0  done; for show: the file is sound\n"
                                 "  1  the command line is wrong\n"
                                 "  2  DESCRIPTION or FILE cannot be read\n"
                                 "  3  DESCRIPTION is wrong, or FILE is damaged or no update file\n"
                                 "  4  OUTPUT cannot be written\n"));
}

void CommandLineTest::buildsSilently()
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

void CommandLineTest::buildsTheSameBytesInEveryProcess()
{
    const QString other = m_folder.path("other");
    QCOMPARE(runProgram({"build", m_description, m_output}, "1").exitCode, 0);
    QCOMPARE(runProgram({"build", m_description, other}, "2").exitCode, 0);
    QCOMPARE(contentOf(other).toHex(), contentOf(m_output).toHex());
}

void CommandLineTest::showsProgressOnATerminalOnly()
{
    const Outcome onTerminal = runTool({"build", m_description, m_output}, true);
    QCOMPARE(onTerminal.messages, "building " + m_output + " ... 303 bytes\n");
    QCOMPARE(onTerminal.out, QString());
    QCOMPARE(runTool({"build", m_description, m_output}, false).messages, QString());
}

void CommandLineTest::endsTheProgressLineBeforeAnError()
{
    const QString wrong = m_folder.write("wrong.json", "{}");
    QCOMPARE(runTool({"build", wrong, m_output}, true).messages,
             "building " + m_output + " ...\nimagetool: " + wrong + ": kind: missing\n");
}

void CommandLineTest::showsASoundFile()
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

void CommandLineTest::showsADamagedFileWithItsProblems()
{
    CameraUpdateFile file = sampleCameraFile();
    file.images[0].offset = 1;
    file.images[1].magic = 2;
    const QString name = m_folder.write("damaged", cameraUpdateBytes(file));
    const Outcome outcome = runProgram({"show", name});
    QCOMPARE(outcome.exitCode, 3);
    QVERIFY(outcome.out.startsWith(name + "\nkind              camera\n"));
    QCOMPARE(outcome.messages,
             QString("imagetool: %1: images[0]: the table says offset 1, the image lies at 70\n"
                     "imagetool: %1: images[1]: offset 91: block magic is 0x0002, not 0xa259\n")
                 .arg(name));
}

void CommandLineTest::saysWhatCannotBeRead_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");

    const QString missing = m_folder.path("missing");
    const QString folder = m_folder.path();
    QTest::newRow("description that is missing")
        << QStringList{"build", missing, m_output} << missing + ": No such file or directory";
    QTest::newRow("file that is missing")
        << QStringList{"show", missing} << missing + ": No such file or directory";
    QTest::newRow("file that is a folder")
        << QStringList{"show", folder} << folder + ": file to open is a directory";
}

void CommandLineTest::saysWhatCannotBeRead()
{
    QFETCH(const QStringList, arguments);
    QFETCH(const QString, message);
    const Outcome outcome = runTool(arguments);
    QCOMPARE(outcome.exitCode, 2);
    QCOMPARE(outcome.out, QString());
    QCOMPARE(outcome.messages, "imagetool: " + message + '\n');
}

void CommandLineTest::saysWhatIsWrongInADescription()
{
    const QString wrong = m_folder.write("wrong.json", R"({"kind": "controler"})");
    const Outcome outcome = runProgram({"build", wrong, m_folder.path("never")});
    QCOMPARE(outcome.exitCode, 3);
    QCOMPARE(outcome.messages,
             "imagetool: " + wrong + ": kind: must be one of \"controller\", \"camera\"\n");
    QVERIFY(!QFile::exists(m_folder.path("never")));
}

void CommandLineTest::failedBuildLeavesTheOldFile()
{
    const QString old = m_folder.write("old", "old content");
    const QString wrong = m_folder.write("wrong.json", "{}");
    QCOMPARE(runTool({"build", wrong, old}).exitCode, 3);
    QCOMPARE(contentOf(old), QByteArray("old content"));
}

void CommandLineTest::saysWhatCannotBeWritten()
{
    const QString output = m_folder.path("no/such/folder");
    const Outcome outcome = runProgram({"build", m_description, output});
    QCOMPARE(outcome.exitCode, 4);
    QCOMPARE(outcome.messages, "imagetool: " + output + ": No such file or directory\n");
}

void CommandLineTest::jsonOfABuild()
{
    const Outcome outcome = runProgram({"build", "--json", m_description, m_output});
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(QJsonDocument::fromJson(outcome.out.toUtf8()).object(),
             (QJsonObject{{"file", m_output}, {"bytes", 303}}));
}

void CommandLineTest::jsonOfAListing()
{
    const QString name = m_folder.write("text", "some notes");
    const Outcome outcome = runTool({"show", "--json", name});
    QCOMPARE(outcome.exitCode, 3);
    QCOMPARE(outcome.messages, QString());
    const QJsonObject json = QJsonDocument::fromJson(outcome.out.toUtf8()).object();
    QCOMPARE(json.keys(), (QStringList{"file", "problems"}));
    QCOMPARE(json.value("file").toString(), name);
}

void CommandLineTest::jsonOfErrors()
{
    const QString missing = m_folder.path("missing");
    const Outcome outcome = runTool({"show", missing, "--json"});
    QCOMPARE(outcome.exitCode, 2);
    QCOMPARE(outcome.messages, QString());
    QCOMPARE(QJsonDocument::fromJson(outcome.out.toUtf8()).object(),
             (QJsonObject{{"error", missing + ": No such file or directory"}, {"exitCode", 2}}));
}

void CommandLineTest::optionsMayStandAnywhere()
{
    QCOMPARE(runTool({"--json", "build", m_description, m_output}).exitCode, 0);
    QCOMPARE(runTool({"build", m_description, m_output, "--json"}).exitCode, 0);
    QCOMPARE(runTool({"show", "--help"}).exitCode, 0);
}

ZAN_TEST_MAIN(CommandLineTest)
#include "tst_commandline.moc"
