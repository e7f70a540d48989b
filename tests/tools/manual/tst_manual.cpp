#include <childprocess.h>
#include <commandline.h>
#include <testmain.h>

#include <QFile>

class TestManual : public QObject
{
    Q_OBJECT

private slots:
    void completes_data();
    void completes();
    void pageTellsEveryCommandAndOption();
    void everyProgramHasAPage_data();
    void everyProgramHasAPage();
};

void TestManual::completes_data()
{
    QTest::addColumn<QStringList>("words"); ///< typed behind the program, the last one unfinished
    QTest::addColumn<QStringList>("offered");

    QTest::newRow("a command") << QStringList{"ch"} << QStringList{"check"};
    QTest::newRow("options of the program")
        << QStringList{"--"} << QStringList{"--help", "--help-all", "--version"};
    QTest::newRow("options of a command")
        << QStringList{"check", "--"}
        << QStringList{"--strict", "--rule", "--list-rules", "--json", "--help"};
    QTest::newRow("an option with a short name")
        << QStringList{"extract", "--o"} << QStringList{"--output"};
    QTest::newRow("a rule") << QStringList{"check", "--rule", "block-t"}
                            << QStringList{"block-type", "block-twice"};
    QTest::newRow("a rule to be left out")
        << QStringList{"check", "--rule", "-gap"} << QStringList{"-gap"};
    QTest::newRow("a rule that is allowed")
        << QStringList{"build", "--allow", "dat"} << QStringList{"date"};
    QTest::newRow("a file, as bash does it itself")
        << QStringList{"show", "contr"} << QStringList();
}

void TestManual::completes()
{
    QFETCH(const QStringList, words);
    QFETCH(const QStringList, offered);
    ChildProcess bash;
    const QString script =
        "source \"$0\"; COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); "
        "_zan_complete \"$1\" \"${COMP_WORDS[COMP_CWORD]}\" \"${COMP_WORDS[COMP_CWORD - 1]}\"; "
        "printf '%s\\n' \"${COMPREPLY[@]}\"";
    bash.start("bash", QStringList{"-c", script, COMPLETION, IMAGETOOL} + words);
    QVERIFY(bash.waitForEnd());
    QCOMPARE(QString(bash.readAllStandardError()), QString());
    QCOMPARE(QString(bash.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts), offered);
}

namespace {

QString pageOf(const QString& program)
{
    QFile page(QStringLiteral(MAN_DIR "/%1.1").arg(program));
    return page.open(QIODevice::ReadOnly) ? QString::fromUtf8(page.readAll()) : QString();
}

} // namespace

void TestManual::pageTellsEveryCommandAndOption()
{
    const QString page = pageOf("imagetool").replace("\\-", "-");
    if (page.isEmpty())
        QSKIP("help2man is not installed");
    for (const Verb& verb : imageTool().verbs) {
        QVERIFY2(page.contains("Command " + verb.name + ":"), qPrintable(verb.name));
        for (const QCommandLineOption& option : verb.options)
            QVERIFY2(page.contains("--" + option.names().last()),
                     qPrintable(verb.name + " --" + option.names().last()));
    }
}

void TestManual::everyProgramHasAPage_data()
{
    QTest::addColumn<QString>("summary");
    QTest::newRow("imagetool") << "imagetool \\- makes and checks update files";
    QTest::newRow("simulated-system")
        << "simulated-system \\- simulates a system of controllers and cameras";
    QTest::newRow("demo-frontend") << "demo-frontend \\- hosts the update plug-in";
}

void TestManual::everyProgramHasAPage()
{
    const QString page = pageOf(QTest::currentDataTag());
    if (page.isEmpty())
        QSKIP("help2man is not installed");
    QFETCH(const QString, summary);
    QVERIFY2(page.contains(summary), qPrintable(page.left(600)));
    QVERIFY2(page.contains(".SH OPTIONS") || page.contains("Options:"), qPrintable(page.left(600)));
}

ZAN_TEST_MAIN(TestManual)
#include "tst_manual.moc"
