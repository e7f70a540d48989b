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
    void init() { qputenv("XDG_STATE_HOME", "/opt/states"); }

    void withoutArgumentsTheDefaultsHold()
    {
        Options options;
        QString error;
        QVERIFY(parse({}, &options, &error));
        QVERIFY(options.action == Options::Action::Run);
        QCOMPARE(options.scenario, QString("cascade"));
        QCOMPARE(options.stateDir, QString("/opt/states/zanupdate/cascade"));
        QCOMPARE(options.pluginFile, QString("/opt/build/demo/modules/libZanUpdateModule.so"));
        QVERIFY(options.screenshotDir.isEmpty());
        QVERIFY(options.recordFile.isEmpty() && options.replayFile.isEmpty());
        QVERIFY(!options.fresh && !options.fast && !options.headless && !options.narrate &&
                !options.observer && !options.dark);
    }

    void everyOptionArrives()
    {
        Options options;
        QString error;
        QVERIFY(
            parse({"--scenario", "single", "--state-dir", "s", "--fresh", "--fast", "--headless",
                   "--narrate", "--screenshots", "/p/q/..", "--record", "r/run.transcript",
                   "--observer", "--dark", "--plugin", "x.so", "--public-key", "k/release.pub"},
                  &options, &error));
        QCOMPARE(options.scenario, QString("single"));
        QCOMPARE(options.stateDir, here("s"));
        QCOMPARE(options.screenshotDir, QString("/p"));
        QCOMPARE(options.pluginFile, here("x.so"));
        QCOMPARE(options.recordFile, here("r/run.transcript"));
        QCOMPARE(options.publicKey, here("k/release.pub"));
        QVERIFY(options.fresh && options.fast && options.headless && options.narrate &&
                options.observer && options.dark);
    }

    void publicKeyItselfIsNoFile()
    {
        const QString key = "RWS3TUNxwVsgaqDrSBIymoYCtbvD06LrPaGEzUFgGJgb8h1lHEx33aTW";
        Options options;
        QString error;
        QVERIFY(parse({"--public-key", key}, &options, &error));
        QCOMPARE(options.publicKey, key);
        QVERIFY(parse({}, &options, &error));
        QCOMPARE(options.publicKey, QString());
    }

    void scenarioWithDotsKeepsItsWholeNameInItsStateFolder()
    {
        Options options;
        QString error;
        QVERIFY(parse({"--scenario", "protocol-1.22"}, &options, &error));
        QCOMPARE(options.stateDir, QString("/opt/states/zanupdate/protocol-1.22"));
    }

    void withoutAPlaceForStatesTheyStandInTheHomeFolder_data()
    {
        QTest::addColumn<QByteArray>("place");
        QTest::newRow("none is told") << QByteArray();
        QTest::newRow("one that depends on the current folder") << QByteArray("states");
    }

    void withoutAPlaceForStatesTheyStandInTheHomeFolder()
    {
        QFETCH(const QByteArray, place);
        Options options;
        QString error;
        if (place.isEmpty())
            qunsetenv("XDG_STATE_HOME");
        else
            qputenv("XDG_STATE_HOME", place);
        QVERIFY(parse({}, &options, &error));
        QCOMPARE(options.stateDir, QDir::homePath() + "/.local/state/zanupdate/cascade");
    }

    void scenarioFileIsFoundFromAnyFolder()
    {
        Options options;
        QString error;
        QVERIFY(parse({"--scenario", "my.json"}, &options, &error));
        QCOMPARE(options.scenario, here("my.json"));
        QCOMPARE(options.stateDir, QString("/opt/states/zanupdate/my"));
        QVERIFY(parse({"--scenario", "dir/mine"}, &options, &error));
        QCOMPARE(options.scenario, here("dir/mine"));
    }

    void replayHasAStateFolderOfItsOwn()
    {
        Options options;
        QString error;
        QVERIFY(parse({"--replay", "r/run.2.transcript", "--headless", "--fast", "--fresh"},
                      &options, &error));
        QCOMPARE(options.replayFile, here("r/run.2.transcript"));
        QCOMPARE(options.stateDir, QString("/opt/states/zanupdate/run.2"));
        QVERIFY(options.recordFile.isEmpty());
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

    void systemOfAnotherProcessIsConnectedTo()
    {
        Options options;
        QString error;
        QVERIFY(parse({}, &options, &error));
        QVERIFY(!options.peer);
        QVERIFY(parse({"--connect", "localhost:4711", "--headless"}, &options, &error));
        QVERIFY(options.peer);
        QCOMPARE(options.peer->text(), QString("127.0.0.1:4711"));
        QCOMPARE(options.stateDir, QString("/opt/states/zanupdate/connected-127.0.0.1-4711"));
        QVERIFY(parse({"--connect", "[::1]:4711", "--state-dir", "/s"}, &options, &error));
        QCOMPARE(options.peer->text(), QString("[::1]:4711"));
        QCOMPARE(options.stateDir, QString("/s"));
    }

    void wrongUsageIsExplained_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("reason");
        QTest::newRow("unknown option")
            << QStringList{"--frobnicate"} << "Unknown option 'frobnicate'.";
        QTest::newRow("missing value")
            << QStringList{"--scenario"} << "Missing value after '--scenario'.";
        QTest::newRow("public key that is empty")
            << QStringList{"--public-key", ""} << "--public-key needs a file";
        QTest::newRow("stray word") << QStringList{"cascade"} << "Unexpected argument: cascade";
        QTest::newRow("pictures of a window that people use")
            << QStringList{"--screenshots", "x"} << "--screenshots needs --headless";
        QTest::newRow("port alone to connect to")
            << QStringList{"--connect", "4711"}
            << "--connect: \"4711\" is no HOST:PORT with an IP address or localhost";
        QTest::newRow("name to connect to")
            << QStringList{"--connect", "rack:4711"}
            << "--connect: \"rack:4711\" is no HOST:PORT with an IP address or localhost";
        QTest::newRow("port 0 to connect to")
            << QStringList{"--connect", "127.0.0.1:0"}
            << "--connect: \"127.0.0.1:0\" is no HOST:PORT with an IP address or localhost";
        QTest::newRow("scenario of a system that has one")
            << QStringList{"--connect", "127.0.0.1:1", "--scenario", "single"}
            << "--scenario is for the simulated system that --connect leads to";
        QTest::newRow("pace of a system that has one")
            << QStringList{"--connect", "127.0.0.1:1", "--fast"}
            << "--fast is for the simulated system that --connect leads to";
        QTest::newRow("a user of an unknown kind")
            << QStringList{"--user", "angry"} << "--user: there is no \"angry\"";
        QTest::newRow("a record without a file")
            << QStringList{"--record", ""} << "--record needs a file";
        QTest::newRow("a state without a folder")
            << QStringList{"--state-dir="} << "--state-dir needs a folder";
        QTest::newRow("pictures without a folder")
            << QStringList{"--headless", "--screenshots", ""} << "--screenshots needs a folder";
        QTest::newRow("a replay without a file")
            << QStringList{"--replay="} << "--replay needs a file";
        QTest::newRow("a record of a replay") << QStringList{"--record", "a", "--replay", "b"}
                                              << "--replay and --record exclude each other";
        QTest::newRow("a replay with a scenario")
            << QStringList{"--scenario", "single", "--replay", "b"}
            << "--replay and --scenario exclude each other";
        QTest::newRow("a replay of a system somewhere else")
            << QStringList{"--connect", "127.0.0.1:4711", "--replay", "b"}
            << "--replay and --connect exclude each other";
        QTest::newRow("a replay for an observer") << QStringList{"--replay", "b", "--observer"}
                                                  << "--replay and --observer exclude each other";
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
             {"--scenario", "--list",        "--state-dir", "--fresh", "--fast",   "--headless",
              "--narrate",  "--screenshots", "--observer",  "--dark",  "--plugin", "--record",
              "--replay",   "--version",     "HOME",        "\n  0  ", "\n  1  ",  "\n  2  ",
              "\n  3  ",    "\n  4  ",       "\n  5  ",     "\n  6  "})
            QVERIFY2(help.contains(text), text);
    }
};

ZAN_TEST_MAIN(TestOptions)
#include "tst_options.moc"
