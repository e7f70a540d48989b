#include <testmain.h>
#include <verb.h>

#include <QJsonDocument>

/// What one run of a program left behind.
struct Outcome
{
    int exitCode = -1;
    QString out;
    QString messages;
};

namespace {

Verb copyVerb()
{
    Verb verb;
    verb.name = "copy";
    verb.arguments = "FROM TO";
    verb.summary = "Copies a thing";
    verb.description = "Both must exist.";
    verb.options = {
        {{"o", "order"},
         "Which comes first; the words of this text go on until the line of the help is full.",
         "ORDER"}};
    verb.fewestArguments = 2;
    verb.mostArguments = 2;
    verb.run = [](VerbRun& run) {
        for (const int percent : {0, 50, 50, 100})
            run.showProgress("copying", percent, 100);
        run.print(run.arguments().join('>') + run.value("order") + '\n');
        return VerbDone;
    };
    return verb;
}

Verb failVerb()
{
    Verb verb;
    verb.name = "fail";
    verb.arguments = "FILE...";
    verb.summary = "Fails";
    verb.fewestArguments = 1;
    verb.mostArguments = -1;
    verb.run = [](VerbRun& run) {
        run.showProgress("failing", 1, 2);
        run.note("noted");
        return run.fail(VerbRefused, run.arguments().join('\n'));
    };
    return verb;
}

Outcome runTool(const QStringList& arguments, bool isTerminal = false)
{
    const VerbProgram program{
        "tool", "1.2.3", "Does things.", "  0  done\n  1  not done", {copyVerb(), failVerb()}};
    Outcome outcome;
    QTextStream out(&outcome.out);
    QTextStream messages(&outcome.messages);
    outcome.exitCode = runVerb(program, arguments, {out, messages, isTerminal});
    return outcome;
}

} // namespace

class TestVerb : public QObject
{
    Q_OBJECT

private slots:
    void helpAndVersion_data();
    void helpAndVersion();
    void wrongUsage_data();
    void wrongUsage();
    void wrongUsageAsJson();
    void argumentsAndOptions_data();
    void argumentsAndOptions();
    void failuresNameTheProgramOnEachLine();
    void failuresAsJson();
    void progressIsForTerminals();
};

namespace {

const char programText[] = "Usage: tool COMMAND [OPTION...] [ARGUMENT...]\n"
                           "\n"
                           "Does things.\n"
                           "\n"
                           "Commands:\n"
                           "  copy  Copies a thing\n"
                           "  fail  Fails\n"
                           "\n"
                           "Options:\n"
                           "  -h, --help  Shows this text.\n"
                           "  --help-all  Shows the help of all commands.\n"
                           "  --version   Shows the version of the program.\n"
                           "\n"
                           "tool COMMAND --help tells more of a command.\n"
                           "\n"
                           "Exit codes:\n"
                           "  0  done\n"
                           "  1  not done\n";

const char copyText[] =
    "Usage: tool copy [OPTION...] FROM TO\n"
    "\n"
    "Copies a thing.\n"
    "\n"
    "Both must exist.\n"
    "\n"
    "Options:\n"
    "  -o, --order ORDER  Which comes first; the words of this text go on until the\n"
    "                     line of the help is full.\n"
    "  --json             Writes results and errors as JSON.\n"
    "  -h, --help         Shows this text.\n"
    "\n"
    "Exit codes:\n"
    "  0  done\n"
    "  1  not done\n";

const char manualTail[] =
    "\n"
    "Command copy:\n"
    "  tool copy [OPTION...] FROM TO\n"
    "\n"
    "Copies a thing.\n"
    "\n"
    "Both must exist.\n"
    "\n"
    "  -o, --order ORDER  Which comes first; the words of this text go on until the\n"
    "                     line of the help is full.\n"
    "\n"
    "Command fail:\n"
    "  tool fail [OPTION...] FILE...\n"
    "\n"
    "Fails.\n";

} // namespace

void TestVerb::helpAndVersion_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("text");

    QTest::newRow("help of the program") << QStringList{"--help"} << programText;
    QTest::newRow("short help") << QStringList{"-h"} << programText;
    QTest::newRow("help of all") << QStringList{"--help-all"} << QString(programText) + manualTail;
    QTest::newRow("version") << QStringList{"--version"} << "tool 1.2.3\n";
    QTest::newRow("help of a command") << QStringList{"copy", "--help"} << copyText;
    QTest::newRow("help beside arguments") << QStringList{"copy", "a", "-h", "b"} << copyText;
    QTest::newRow("help beside a wrong option") << QStringList{"copy", "--wrong", "-h"} << copyText;
}

void TestVerb::helpAndVersion()
{
    QFETCH(const QStringList, arguments);
    const Outcome outcome = runTool(arguments);
    QTEST(outcome.out, "text");
    QCOMPARE(outcome.messages, QString());
    QCOMPARE(outcome.exitCode, 0);
}

void TestVerb::wrongUsage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");

    const auto row = [](const char* name, const QStringList& arguments, const char* message) {
        QTest::newRow(name) << arguments << QString("tool: %1 --help tells more)\n").arg(message);
    };
    row("nothing", {}, "No command is given. (tool");
    row("unknown command", {"list", "f"}, "Unknown command 'list'. (tool");
    row("unknown option before a command", {"-x", "copy"}, "Unknown option 'x'. (tool");
    row("unknown option", {"copy", "-x", "a", "b"}, "Unknown option 'x'. (tool copy");
    row("option without its value", {"copy", "a", "b", "-o"},
        "Missing value after '-o'. (tool copy");
    row("too few arguments", {"copy", "a"}, "copy takes FROM TO. (tool copy");
    row("too many arguments", {"copy", "a", "b", "c"}, "copy takes FROM TO. (tool copy");
    row("no argument of any number", {"fail"}, "fail takes FILE.... (tool fail");
}

void TestVerb::wrongUsage()
{
    QFETCH(const QStringList, arguments);
    const Outcome outcome = runTool(arguments);
    QTEST(outcome.messages, "message");
    QCOMPARE(outcome.out, QString());
    QCOMPARE(outcome.exitCode, 2);
}

void TestVerb::wrongUsageAsJson()
{
    const Outcome outcome = runTool({"copy", "a", "--json"});
    QCOMPARE(QJsonDocument::fromJson(outcome.out.toUtf8()).object(),
             (QJsonObject{{"error", "copy takes FROM TO. (tool copy --help tells more)"},
                          {"exitCode", 2}}));
    QCOMPARE(outcome.messages, QString());
    QCOMPARE(outcome.exitCode, 2);
}

void TestVerb::argumentsAndOptions_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("text");

    QTest::newRow("no options") << QStringList{"copy", "a", "b"} << "a>b\n";
    QTest::newRow("option before") << QStringList{"copy", "-o", "x", "a", "b"} << "a>bx\n";
    QTest::newRow("option behind") << QStringList{"copy", "a", "b", "--order=x"} << "a>bx\n";
    QTest::newRow("value with a minus")
        << QStringList{"copy", "--order", "-x", "a", "b"} << "a>b-x\n";
    QTest::newRow("standard input and output") << QStringList{"copy", "-", "-"} << "->-\n";
    QTest::newRow("names like options")
        << QStringList{"copy", "--", "-o", "--help"} << "-o>--help\n";
    QTest::newRow("what every command has, before it")
        << QStringList{"--json", "copy", "a", "b"} << "a>b\n";
}

void TestVerb::argumentsAndOptions()
{
    QFETCH(const QStringList, arguments);
    const Outcome outcome = runTool(arguments);
    QTEST(outcome.out, "text");
    QCOMPARE(outcome.messages, QString());
    QCOMPARE(outcome.exitCode, 0);
}

void TestVerb::failuresNameTheProgramOnEachLine()
{
    const Outcome outcome = runTool({"fail", "a", "b"});
    QCOMPARE(outcome.messages, "tool: noted\ntool: a\ntool: b\n");
    QCOMPARE(outcome.out, QString());
    QCOMPARE(outcome.exitCode, 3);
}

void TestVerb::failuresAsJson()
{
    const Outcome outcome = runTool({"fail", "a", "b", "--json"});
    QCOMPARE(QJsonDocument::fromJson(outcome.out.toUtf8()).object(),
             (QJsonObject{{"error", "a\nb"}, {"exitCode", 3}}));
    QCOMPARE(outcome.messages, QString());
}

void TestVerb::progressIsForTerminals()
{
    const QString clear = "\r\x1b[K";
    QCOMPARE(runTool({"copy", "a", "b"}, true).messages,
             clear + "copying: 0 %" + clear + "copying: 50 %" + clear + "copying: 100 %" + clear);
    QCOMPARE(runTool({"fail", "a"}, true).messages,
             clear + "failing: 50 %" + clear + "tool: noted\ntool: a\n");
}

ZAN_TEST_MAIN(TestVerb)
#include "tst_verb.moc"
