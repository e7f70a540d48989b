#include <options.h>

#include <testmain.h>

#include <QDir>

namespace {

bool parse(const QStringList& arguments, Options* options, QString* error)
{
    return parseOptions(QStringList{"demo-frontend"} + arguments, "/opt/build/demo", options,
                        error);
}

QString here(const QString& path)
{
    return QDir::current().absoluteFilePath(path);
}

} // namespace

class TestOptions : public QObject
{
    Q_OBJECT

private slots:
    void withoutArgumentsTheDefaultsHold()
    {
        Options options;
        QString error;
        QVERIFY(parse({}, &options, &error));
        QVERIFY(options.action == Options::Action::Run);
        QCOMPARE(options.scenario, QString("cascade"));
        QCOMPARE(options.stateDir, QString("/opt/build/state/cascade"));
        QCOMPARE(options.pluginFile, QString("/opt/build/demo/modules/libZanUpdateModule.so"));
        QVERIFY(options.screenshotDir.isEmpty());
        QVERIFY(!options.fresh && !options.fast && !options.headless && !options.observer &&
                !options.dark);
    }

    void everyOptionArrives()
    {
        Options options;
        QString error;
        QVERIFY(
            parse({"--scenario", "single", "--state-dir", "s", "--fresh", "--fast", "--headless",
                   "--screenshots", "/p/q/..", "--observer", "--dark", "--plugin", "x.so"},
                  &options, &error));
        QCOMPARE(options.scenario, QString("single"));
        QCOMPARE(options.stateDir, here("s"));
        QCOMPARE(options.screenshotDir, QString("/p"));
        QCOMPARE(options.pluginFile, here("x.so"));
        QVERIFY(options.fresh && options.fast && options.headless && options.observer &&
                options.dark);
    }

    void scenarioFileIsFoundFromAnyFolder()
    {
        Options options;
        QString error;
        QVERIFY(parse({"--scenario", "my.json"}, &options, &error));
        QCOMPARE(options.scenario, here("my.json"));
        QCOMPARE(options.stateDir, QString("/opt/build/state/my"));
        QVERIFY(parse({"--scenario", "dir/mine"}, &options, &error));
        QCOMPARE(options.scenario, here("dir/mine"));
    }

    void whatIsOnlyToldIsToldApart()
    {
        Options options;
        QString error;
        QVERIFY(parse({"--help"}, &options, &error));
        QVERIFY(options.action == Options::Action::ShowHelp);
        QVERIFY(parse({"--list"}, &options, &error));
        QVERIFY(options.action == Options::Action::ListScenarios);
        QVERIFY(parse({"--version"}, &options, &error));
        QVERIFY(options.action == Options::Action::ShowVersion);
    }

    void wrongUsageIsExplained_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("reason");
        QTest::newRow("unknown option")
            << QStringList{"--frobnicate"} << "Unknown option 'frobnicate'.";
        QTest::newRow("missing value")
            << QStringList{"--scenario"} << "Missing value after '--scenario'.";
        QTest::newRow("stray word") << QStringList{"cascade"} << "Unexpected argument: cascade";
        QTest::newRow("pictures of a window that people use")
            << QStringList{"--screenshots", "x"} << "--screenshots needs --headless";
    }

    void wrongUsageIsExplained()
    {
        QFETCH(const QStringList, arguments);
        Options options;
        QString error;
        QVERIFY(!parse(arguments, &options, &error));
        QTEST(error, "reason");
    }

    void helpNamesEveryOptionAndExitCode()
    {
        const QString help = helpText();
        for (const char* text :
             {"--scenario", "--list", "--state-dir", "--fresh", "--fast", "--headless",
              "--screenshots", "--observer", "--dark", "--plugin", "--version", "HOME", "\n  0  ",
              "\n  1  ", "\n  2  ", "\n  3  ", "\n  4  ", "\n  5  "})
            QVERIFY2(help.contains(text), text);
    }
};

ZAN_TEST_MAIN(TestOptions)
#include "tst_options.moc"
