#include "proverfixtures.h"

#include <proofrule.h>
#include <proververbs.h>

#include <testmain.h>

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

/// What one call left behind.
struct Outcome
{
    int exit = -1;
    QString out;
    QString messages;
};

Outcome runTool(const QStringList& arguments, bool isTerminal = false)
{
    static const VerbProgram program{
        "imagetool", "2.0.0", "Tool.", "  0  done", {planVerb(), proveVerb()}};
    Outcome outcome;
    QTextStream out(&outcome.out);
    QTextStream messages(&outcome.messages);
    VerbStreams streams{out, messages};
    streams.isTerminal = isTerminal;
    outcome.exit = runVerb(program, arguments, streams);
    return outcome;
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot be read");
}

} // namespace

/// The commands `plan` and `prove` as they are called.
class TestProverVerbs : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void wrongUsageIsRefused_data();
    void wrongUsageIsRefused();
    void whatCannotBeReadIsTold_data();
    void whatCannotBeReadIsTold();
    void wrongScenarioIsRefused();
    void planIsPrinted();
    void proofDecidesTheExitCode();
    void jsonIsPrinted();
    void pageIsWritten();
    void pageThatCannotBeWrittenIsTold();
    void counterexampleIsWritten();
    void nothingToShowIsTold();
    void everyRuleIsDocumented();
    void progressIsForTerminalsOnly();

private:
    const FixtureFolder m_folder;
    QString m_updates;
};

void TestProverVerbs::initTestCase()
{
    m_updates = writeDelivery(
        m_folder,
        {{"a.img", usualImage(VersionInfo(3, 0, 0), VersionInfo(1, 0), VersionInfo(2, 0, 0))}});
}

void TestProverVerbs::wrongUsageIsRefused_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("message");
    QTest::newRow("plan without a system")
        << QStringList{"plan"} << "--pt must be three numbers such as 3.1.0, or --system be given";
    QTest::newRow("plan with half a system")
        << QStringList{"plan", "--pt", "3.1.0"}
        << "--ct must be two numbers such as 1.2, or --system be given";
    QTest::newRow("plan without a model")
        << QStringList{"plan", "--pt", "3.1.0", "--ct", "1.2"}
        << "--model must be a number from 0 to 9999, or --system be given";
    QTest::newRow("plan with a strange model")
        << QStringList{"plan", "--pt", "3.1.0", "--ct", "1.2", "--model", "ZAN"}
        << "--model must be a number from 0 to 9999, or --system be given";
    QTest::newRow("plan with a blank in the appendix")
        << QStringList{"plan", "--pt", "3.1.0", "--ct", "1.2", "--model", "2", "--appendix", "- 3"}
        << "--appendix must be one word such as -beta.3";
    QTest::newRow("plan with two systems")
        << QStringList{"plan", "--system", "cascade", "--pt", "3.1.0"}
        << "--system tells all of the system; leave out --pt, --ct, --model and --appendix";
    QTest::newRow("prove from no range")
        << QStringList{"prove", "--from", "2.0.0"}
        << "--from must be a range such as 2.0.0.. or 2.0.0..3.1.0";
    QTest::newRow("prove from a range of no versions")
        << QStringList{"prove", "--from", "2..3"}
        << "--from must be a range such as 2.0.0.. or 2.0.0..3.1.0";
    QTest::newRow("prove from a range the wrong way round")
        << QStringList{"prove", "--from-ct", "1.4..1.0"}
        << "--from-ct must be a range such as 1.0.. or 1.0..1.4";
    QTest::newRow("prove for another family")
        << QStringList{"prove", "--family", "zan"} << "--family must be ZAN or BRIARSCOPE3";
    QTest::newRow("a rule without a counterexample")
        << QStringList{"prove", "--rule", "run-fails"} << "--rule goes with --counterexample";
    QTest::newRow("a counterexample of no rule")
        << QStringList{"prove", "--rule", "nonsense", "--counterexample", "case.json"}
        << "There is no rule nonsense. (imagetool prove --help lists them)";
}

void TestProverVerbs::wrongUsageIsRefused()
{
    QFETCH(const QStringList, options);
    QFETCH(const QString, message);
    const Outcome outcome = runTool(options + QStringList{m_updates});
    QCOMPARE(outcome.exit, int(VerbWrongUsage));
    QVERIFY2(outcome.messages.contains(message), qPrintable(outcome.messages));
    QCOMPARE(outcome.out, QString());
}

void TestProverVerbs::whatCannotBeReadIsTold_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");
    const QString none = m_folder.path("none");
    QTest::newRow("a folder to plan") << QStringList{"plan", "--system", "cascade", none}
                                      << "imagetool: " + none + ": there is no such folder\n";
    QTest::newRow("a folder to prove")
        << QStringList{"prove", none} << "imagetool: " + none + ": there is no such folder\n";
    const QString empty = m_folder.path("empty");
    QDir().mkpath(empty);
    QTest::newRow("a folder without update files to plan")
        << QStringList{"plan", "--system", "cascade", empty}
        << "imagetool: " + empty + ": there is no update file\n";
    QTest::newRow("a folder without update files to prove")
        << QStringList{"prove", empty} << "imagetool: " + empty + ": there is no update file\n";
    QTest::newRow("a system") << QStringList{"plan", "--system", none, m_updates}
                              << "imagetool: " + none + ": No such file or directory\n";
}

void TestProverVerbs::whatCannotBeReadIsTold()
{
    QFETCH(const QStringList, arguments);
    const Outcome outcome = runTool(arguments);
    QCOMPARE(outcome.exit, int(VerbFailed));
    QTEST(outcome.messages, "message");
}

void TestProverVerbs::wrongScenarioIsRefused()
{
    const QString scenario = m_folder.write("wrong.json", R"({"title": 1})");
    const Outcome outcome = runTool({"plan", "--system", scenario, m_updates});
    QCOMPARE(outcome.messages, "imagetool: " + scenario + ": title: must be a text\n");
    QCOMPARE(outcome.exit, int(VerbRefused));
}

void TestProverVerbs::planIsPrinted()
{
    const QStringList system = {"plan", "--pt", "2.0.0", "--ct", "v0.9", "--model", "0", m_updates};
    const Outcome text = runTool(system);
    QCOMPARE(text.exit, int(VerbDone));
    QVERIFY2(text.out.contains("[x]  Firmware update (zan-master)  v2.0.0  v3.0.0"),
             qPrintable(text.out));
    const Outcome json = runTool(QStringList{"plan", "--json"} + system.mid(1));
    QCOMPARE(QJsonDocument::fromJson(json.out.toUtf8()).object().value("commands"), QJsonValue(4));
    const Outcome cascade = runTool({"plan", "--system", "cascade", m_updates});
    QVERIFY2(cascade.out.contains("zan-left") || cascade.out.contains("empty"),
             qPrintable(cascade.out));
}

void TestProverVerbs::proofDecidesTheExitCode()
{
    const Outcome refuted = runTool({"prove", m_updates});
    QCOMPARE(refuted.exit, int(VerbRefused));
    QVERIFY2(refuted.out.endsWith("Not proven: 2 errors.\n"), qPrintable(refuted.out));
    const Outcome proven = runTool({"prove", "--from", "2.0.0..", "--from-ct", "..9.0", m_updates});
    QCOMPARE(proven.exit, int(VerbDone));
    QVERIFY2(
        proven.out.endsWith("Proven: every controller with Pt from v2.0.0 and Ct to v9.0 comes "
                            "to the newest release of its family.\n"),
        qPrintable(proven.out));
}

void TestProverVerbs::jsonIsPrinted()
{
    const Outcome outcome = runTool({"prove", "--json", "--family", "ZAN", m_updates});
    QCOMPARE(outcome.exit, int(VerbRefused));
    const QJsonObject json = QJsonDocument::fromJson(outcome.out.toUtf8()).object();
    QCOMPARE(json.value("proven"), QJsonValue(false));
    QCOMPARE(outcome.messages, QString());
}

void TestProverVerbs::pageIsWritten()
{
    const QString page = m_folder.path("page.html");
    QCOMPARE(runTool({"prove", "--html", page, m_updates}).exit, int(VerbRefused));
    QVERIFY(contentOf(page).startsWith("<!DOCTYPE html>"));
}

void TestProverVerbs::pageThatCannotBeWrittenIsTold()
{
    const QString page = m_folder.path("none/page.html");
    const Outcome outcome = runTool({"prove", "--html", page, m_updates});
    QCOMPARE(outcome.exit, int(VerbFailed));
    QVERIFY2(outcome.messages.startsWith("imagetool: " + page + ": "),
             qPrintable(outcome.messages));
}

void TestProverVerbs::counterexampleIsWritten()
{
    const QString path = m_folder.path("case.json");
    const Outcome outcome = runTool({"prove", "--counterexample", path, m_updates});
    QCOMPARE(outcome.exit, int(VerbRefused));
    QCOMPARE(outcome.messages, QString("imagetool: %1 shows the error nothing-to-tick: "
                                       "./run-demo --scenario '%1'\n")
                                   .arg(path));
    QVERIFY(contentOf(path).contains("\"updateFolder\": \"case-files\""));
    QVERIFY(contentOf(m_folder.path("case-files/a.img")).size() > 100);
}

void TestProverVerbs::nothingToShowIsTold()
{
    const QString path = m_folder.path("nothing.json");
    const Outcome outcome =
        runTool({"prove", "--counterexample", path, "--rule", "run-fails", m_updates});
    QCOMPARE(outcome.messages,
             QString("imagetool: %1 is not written: there is nothing to show in it\n").arg(path));
    QVERIFY(!QFile::exists(path));
}

void TestProverVerbs::everyRuleIsDocumented()
{
    const QString help = runTool({"prove", "--help"}).out.simplified();
    const QByteArray manual = contentOf(QStringLiteral(MANUAL));
    for (const QString& rule : proofRules().all()) {
        QVERIFY2(help.contains(rule), qPrintable(rule));
        QVERIFY2(manual.contains("| `" + rule.toUtf8() + "` | "), qPrintable(rule));
    }
}

void TestProverVerbs::progressIsForTerminalsOnly()
{
    QCOMPARE(runTool({"prove", m_updates}).messages, QString());
    QVERIFY(runTool({"prove", m_updates}, true).messages.contains("classes of versions"));
}

ZAN_TEST_MAIN(TestProverVerbs)
#include "tst_proververbs.moc"
