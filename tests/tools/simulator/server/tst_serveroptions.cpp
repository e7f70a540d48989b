#include <serveroptions.h>

#include <testmain.h>

Q_DECLARE_METATYPE(ServerOptions::Action)

namespace {

bool parse(const QStringList& arguments, ServerOptions* options, QString* error)
{
    return parseServerOptions(QStringList{"simulated-system"} + arguments, options, error);
}

} // namespace

class TestServerOptions : public QObject
{
    Q_OBJECT

private slots:
    void withoutArgumentsTheDefaultsHold()
    {
        ServerOptions options;
        QString error;
        QVERIFY(parse({}, &options, &error));
        QCOMPARE(options.action, ServerOptions::Action::Serve);
        QCOMPARE(options.listenAt.text(), QString("127.0.0.1:0"));
        QCOMPARE(options.scenario, QString("cascade"));
        QVERIFY(options.stateFile.isEmpty());
        QVERIFY(!options.fresh && !options.fast);
    }

    void everyOptionArrives()
    {
        ServerOptions options;
        QString error;
        QVERIFY(parse({"--listen", "0.0.0.0:4711", "--scenario", "single", "--state", "s.json",
                       "--fresh", "--fast"},
                      &options, &error));
        QCOMPARE(options.listenAt.text(), QString("0.0.0.0:4711"));
        QCOMPARE(options.scenario, QString("single"));
        QCOMPARE(options.stateFile, QString("s.json"));
        QVERIFY(options.fresh && options.fast);
    }

    void whatIsOnlyToldIsToldApart_data()
    {
        QTest::addColumn<QString>("argument");
        QTest::addColumn<ServerOptions::Action>("action");
        QTest::newRow("help") << "--help" << ServerOptions::Action::ShowHelp;
        QTest::newRow("help in short") << "-h" << ServerOptions::Action::ShowHelp;
        QTest::newRow("version") << "--version" << ServerOptions::Action::ShowVersion;
        QTest::newRow("list") << "--list" << ServerOptions::Action::ListScenarios;
    }

    void whatIsOnlyToldIsToldApart()
    {
        QFETCH(const QString, argument);
        ServerOptions options;
        QString error;
        QVERIFY(parse({argument}, &options, &error));
        QTEST(options.action, "action");
    }

    void wrongUsageIsExplained_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("reason");
        QTest::newRow("unknown option")
            << QStringList{"--frobnicate"} << "Unknown option 'frobnicate'.";
        QTest::newRow("missing value")
            << QStringList{"--listen"} << "Missing value after '--listen'.";
        QTest::newRow("stray word") << QStringList{"cascade"} << "Unexpected argument: cascade";
        QTest::newRow("port alone")
            << QStringList{"--listen", "4711"} << "--listen: \"4711\" is no ADDRESS:PORT";
        QTest::newRow("name of a machine")
            << QStringList{"--listen", "rack:1"} << "--listen: \"rack:1\" is no ADDRESS:PORT";
        QTest::newRow("nothing to forget") << QStringList{"--fresh"} << "--fresh needs --state";
    }

    void wrongUsageIsExplained()
    {
        QFETCH(const QStringList, arguments);
        ServerOptions options;
        QString error;
        QVERIFY(!parse(arguments, &options, &error));
        QTEST(error, "reason");
    }

    void helpNamesEveryOptionAndExitCode()
    {
        const QString help = serverHelpText();
        for (const char* text : {"--help", "--version", "--list", "--listen <ADDRESS:PORT>",
                                 "--scenario <NAME|FILE>", "--state <FILE>", "--fresh", "--fast",
                                 "\n  0  ", "\n  1  ", "\n  2  ", "nc 127.0.0.1 PORT"})
            QVERIFY2(help.contains(text), text);
    }
};

ZAN_TEST_MAIN(TestServerOptions)
#include "tst_serveroptions.moc"
