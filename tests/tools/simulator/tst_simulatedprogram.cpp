#include "simulatedprogram.h"

#include <simulatorfixtures.h>

#include <fixturefiles.h>
#include <fulldisk.h>
#include <reasons.h>
#include <testmain.h>

#include <QDir>
#include <QFile>
#include <QTcpServer>
#include <QTemporaryDir>

class TestSimulatedProgram : public QObject
{
    Q_OBJECT

private slots:
    void programIsSpokenToWhereItSays()
    {
        SimulatedProgram program({"--scenario", "single"});
        const std::optional<Endpoint> endpoint = program.endpoint();
        QVERIFY(endpoint);
        QVERIFY(endpoint->port > 0);
        QCOMPARE(endpoint->address, QHostAddress(QHostAddress::LocalHost));
        QCOMPARE(ask(*endpoint, "get system hostname"), QByteArray("ok zan-master"));
        QCOMPARE(ask(*endpoint, "bench power"), QByteArray("ok on"));
        QVERIFY(program.runs());
        QVERIFY(program.errorOutput().isEmpty());
    }

    // On this system every address that begins with 127 leads to the machine itself, but only one
    // of them is served.
    void nobodyElseIsListenedToUnlessToldSo()
    {
        SimulatedProgram closed({});
        SimulatedProgram open({"--listen", "0.0.0.0:0"});
        std::optional<Endpoint> atClosed = closed.endpoint();
        std::optional<Endpoint> atOpen = open.endpoint();
        QVERIFY(atClosed && atOpen);
        atClosed->address = QHostAddress("127.0.0.2");
        atOpen->address = QHostAddress("127.0.0.2");
        QTcpSocket socket;
        socket.connectToHost(atClosed->address, atClosed->port);
        QVERIFY(!socket.waitForConnected(patienceMs));
        QCOMPARE(socket.error(), QAbstractSocket::ConnectionRefusedError);
        QCOMPARE(ask(*atOpen, "bench power"), QByteArray("ok on"));
        QCOMPARE(open.errorOutput(), QByteArray("simulated-system: Whoever reaches this machine "
                                                "can operate the simulated system.\n"));
    }

    void portInUseIsExplained()
    {
        SimulatedProgram first({});
        const std::optional<Endpoint> endpoint = first.endpoint();
        QVERIFY(endpoint);
        SimulatedProgram second({"--listen", endpoint->text()});
        QTcpServer third;
        QVERIFY(!third.listen(endpoint->address, endpoint->port));
        QCOMPARE(second.result(), (QStringList{"1", "",
                                               "simulated-system: " + endpoint->text() + ": " +
                                                   third.errorString() + '\n'}));
    }

    void stateOutlivesAKill()
    {
        const QTemporaryDir folder;
        const QStringList arguments = {"--scenario", "single", "--fast", "--state",
                                       folder.filePath("state/system.json")};
        const QList<QByteArray> records = recordTexts(trackingSoftware({9, 9, 9}));
        SimulatedProgram before(arguments);
        std::optional<Endpoint> endpoint = before.endpoint();
        QVERIFY(endpoint);
        QVERIFY(!ask(*endpoint, "get system version").contains("9.9.9"));
        for (int i = 0; i < records.size(); ++i)
            QCOMPARE(ask(*endpoint, "set system update " + QByteArray::number(records.size()) +
                                        ' ' + QByteArray::number(i + 1) + ' ' + records.at(i)),
                     QByteArray("ok vornix2 ok"));
        QCOMPARE(ask(*endpoint, "vornix2 system reboot"), QByteArray("ok vornix2 ok"));
        before.kill();

        SimulatedProgram after(arguments);
        endpoint = after.endpoint();
        QVERIFY(endpoint);
        QTRY_COMPARE(ask(*endpoint, "bench power"), QByteArray("ok on"));
        QVERIFY(ask(*endpoint, "get system version").startsWith("ok v9.9.9 "));
        after.kill();

        SimulatedProgram anew(arguments + QStringList{"--fresh"});
        endpoint = anew.endpoint();
        QVERIFY(endpoint);
        QVERIFY(!ask(*endpoint, "get system version").contains("9.9.9"));
    }

    void damagedStateIsSetAside()
    {
        const QTemporaryDir folder;
        QFile file(folder.filePath("system.json"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("{\"format\": \"simulated-system-state-1\"");
        file.close();
        SimulatedProgram program({"--scenario", "single", "--state", file.fileName()});
        const std::optional<Endpoint> endpoint = program.endpoint();
        QVERIFY(endpoint);
        const QString start = "simulated-system: The state was set aside: " + file.fileName();
        QVERIFY(QString::fromLocal8Bit(program.errorOutput()).startsWith(start));
        QVERIFY(QFile::exists(file.fileName() + ".damaged"));
        QCOMPARE(ask(*endpoint, "bench power"), QByteArray("ok on"));
    }

    void fileOfOthersIsLeftAlone_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::newRow("by a start that goes on") << QStringList();
        QTest::newRow("by a start anew") << QStringList{"--fresh"};
    }

    void fileOfOthersIsLeftAlone()
    {
        QFETCH(const QStringList, options);
        const FixtureFolder folder;
        const QString file = folder.write("mine.json", "{\"my\": \"work\"}");
        QCOMPARE(SimulatedProgram(QStringList{"--state", file} + options).result(),
                 (QStringList{"1", "",
                              "simulated-system: " + file +
                                  ": holds no state of a simulated system, so it is left as it is; "
                                  "name another file, or move it away\n"}));
        QFile now(file);
        QVERIFY(now.open(QIODevice::ReadOnly));
        QCOMPARE(now.readAll(), QByteArray("{\"my\": \"work\"}"));
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList("mine.json"));
    }

    void secondProcessIsTurnedAway()
    {
        const FixtureFolder folder;
        const QStringList arguments = {"--state", folder.path("state/system.json")};
        SimulatedProgram first(arguments);
        QVERIFY(first.endpoint());
        const QStringList result = SimulatedProgram(arguments).result();
        QCOMPARE(result.at(0), QString("1"));
        QVERIFY2(result.at(2).startsWith("simulated-system: " + folder.path("state") +
                                         ": simulated-system uses this folder, process "),
                 qPrintable(result.at(2)));
        first.kill();
        QVERIFY(SimulatedProgram(arguments).endpoint());
    }

    void fullDiskIsTold()
    {
        const FixtureFolder folder;
        const QString state = folder.path("system.json");
        SimulatedProgram program({"--scenario", "single", "--state", state},
                                 [] { FullDisk::limit(200); });
        const std::optional<Endpoint> endpoint = program.endpoint();
        QVERIFY(endpoint);
        QCOMPARE(ask(*endpoint, "bench measure on"), QByteArray("ok"));
        QCOMPARE(ask(*endpoint, "bench power"), QByteArray("ok on"));
        program.kill();
        QCOMPARE(program.errorOutput(),
                 "simulated-system: " + state.toLocal8Bit() + ": " + systemReason(EFBIG) + '\n');
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList("lock"));
    }

    void whatIsOnlyToldIsTold()
    {
        const QStringList help = SimulatedProgram({"--help"}).result();
        QCOMPARE(help.at(0), QString("0"));
        QVERIFY(help.at(1).startsWith("Usage: "));
        QVERIFY(help.at(1).contains("--listen <ADDRESS:PORT>"));
        QVERIFY(help.at(2).isEmpty());
        const QStringList version = SimulatedProgram({"--version"}).result();
        QCOMPARE(version, (QStringList{"0", "simulated-system 2.0.0\n", ""}));
        const QStringList list = SimulatedProgram({"--list"}).result();
        QCOMPARE(list.at(0), QString("0"));
        QString error;
        QCOMPARE(list.at(1), *ScenarioReader::listShipped(&error));
    }

    void wrongStartIsExplained_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QStringList>("result");
        QTest::newRow("unknown option")
            << QStringList{"--frobnicate"}
            << QStringList{"2", "",
                           "simulated-system: Unknown option 'frobnicate'. "
                           "(--help lists the options)\n"};
        QTest::newRow("a folder for the state")
            << QStringList{"--state", "folder/"}
            << QStringList{"2", "",
                           "simulated-system: --state: \"folder/\" names no file "
                           "(--help lists the options)\n"};
        QTest::newRow("no endpoint")
            << QStringList{"--listen", "4711"}
            << QStringList{"2", "",
                           "simulated-system: --listen: \"4711\" is no ADDRESS:PORT "
                           "(--help lists the options)\n"};
        QTest::newRow("address of another machine")
            << QStringList{"--listen", "192.0.2.1:0"}
            << QStringList{"1", "",
                           "simulated-system: 192.0.2.1:0: The address is not available\n"};
    }

    void wrongStartIsExplained()
    {
        QFETCH(const QStringList, arguments);
        QTEST(SimulatedProgram(arguments).result(), "result");
    }

    void scenarioThatCannotBeReadIsExplained()
    {
        const QStringList result = SimulatedProgram({"--scenario", "/nowhere/x.json"}).result();
        QCOMPARE(result.at(0), QString("1"));
        QVERIFY(result.at(1).isEmpty());
        QVERIFY2(result.at(2).startsWith("simulated-system: /nowhere/x.json: "),
                 qPrintable(result.at(2)));
    }
};

ZAN_TEST_MAIN(TestSimulatedProgram)
#include "tst_simulatedprogram.moc"
