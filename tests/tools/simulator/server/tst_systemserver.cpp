#include <simulatorfixtures.h>

#include <servedconnection.h>
#include <systemserver.h>

#include <testmain.h>

#include <QFile>
#include <QTcpServer>
#include <QTcpSocket>

#include <memory>

#include <sys/socket.h>

namespace {

constexpr int floodBytes = 10 * 1000 * 1000;
constexpr int longWaitMs = patienceMs;

/// A system behind its server. Its devices take no time unless a test says so.
struct Served
{
    explicit Served(Scenario scenario) : system(fast(std::move(scenario))), server(system)
    {
        QString error;
        if (!server.listen(Endpoint(), &error))
            qFatal("%s", qPrintable(error));
    }
    explicit Served(const QString& name = QStringLiteral("cascade")) : Served(shippedScenario(name))
    {
    }

    static Scenario fast(Scenario scenario)
    {
        scenario.timing.recordsPerSecond = 0;
        scenario.timing.verifyMs = 0;
        scenario.timing.searchMs = 0;
        return scenario;
    }

    int connections() const { return server.findChildren<ServedConnection*>().size(); }

    SimulatedSystem system;
    SystemServer server;
};

/// Whoever speaks to the server.
class Peer
{
public:
    explicit Peer(const Served& served)
    {
        socket.connectToHost(served.server.endpoint().address, served.server.endpoint().port);
        if (!socket.waitForConnected(longWaitMs))
            qFatal("%s", qPrintable(socket.errorString()));
    }

    void send(const QByteArray& bytes) { socket.write(bytes); }

    /// Everything that came up to now.
    const QByteArray& received()
    {
        m_received += socket.readAll();
        return m_received;
    }

    /// Sends @p bytes, and waits for as many lines as come back.
    QByteArray ask(const QByteArray& bytes, int lines = 1)
    {
        m_received.clear();
        send(bytes);
        if (!QTest::qWaitFor([&] { return received().count('\n') >= lines; }, longWaitMs))
            m_received += " and no more";
        return m_received;
    }

    bool isConnected() const { return socket.state() == QAbstractSocket::ConnectedState; }

    /// Sends bytes as fast as they go, without having them all in memory.
    bool flood(const QByteArray& chunk, int bytes)
    {
        for (int sent = 0; sent < bytes && isConnected(); sent += chunk.size()) {
            socket.write(chunk);
            if (!QTest::qWaitFor([&] { return socket.bytesToWrite() == 0 || !isConnected(); },
                                 longWaitMs))
                return false;
        }
        return isConnected();
    }

    QTcpSocket socket;

private:
    QByteArray m_received;
};

// The server is as it should be if somebody else is answered.
void compareNextPeerIsAnswered(const Served& served)
{
    Peer next(served);
    QCOMPARE(next.ask("get system hostname\n"), QByteArray("ok zan-master\n"));
}

qint64 residentKb()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray text = status.readAll();
    const int begin = text.indexOf("VmRSS:") + 6;
    return text.mid(begin, text.indexOf("kB", begin) - begin).trimmed().toLongLong();
}

} // namespace

class TestSystemServer : public QObject
{
    Q_OBJECT

private slots:
    // The lines of docs/command-language.md.
    void everyLineIsAnsweredAsByHand_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QByteArray>("reply");
        const auto row = [](const char* name, const QByteArray& line, const QByteArray& reply) {
            QTest::newRow(name) << line << reply;
        };
        row("query for a text", "get system hostname\n", "ok zan-master\n");
        row("query for a number", "int cascade number_of_connected_slaves\n", "ok 2\n");
        row("query for a number that is none", "int system hostname\n", "failed zan-master\n");
        row("setting", "set system redirect_update none\n", "ok vornix2 ok\n");
        row("command", "vornix2 tracking stop\n", "ok vornix2 ok\n");
        row("command with its word", "command vornix2 tracking stop\n", "ok vornix2 ok\n");
        row("command that is unknown", "vornix2 dance\n", "ok vornix2 err -1 \"unknown text\"\n");
        row("query that is unknown", "get system mood\n",
            "failed vornix2 err -1 \"unknown text\"\n");
        row("line that is unknown", "hello\n", "failed vornix2 err -1 \"unknown text\"\n");
        row("empty line", "\n", "failed vornix2 err -1 \"unknown text\"\n");
        row("line end of other systems", "get system hostname\r\n", "ok zan-master\n");
        row("tagged line", "#7 get system hostname\n", "#7 ok zan-master\n");
        row("tagged line that is unknown", "#7 hello\n",
            "#7 failed vornix2 err -1 \"unknown text\"\n");
        row("record of no bytes, which ends with a blank", "set system update 2 1 \n",
            "ok vornix2 ok\n");
        row("bench", "bench power\n", "ok on\n");
        row("tagged bench", "#b bench measure on\n", "#b ok\n");
        row("bench that is asked for too much", "bench measure maybe\n",
            "failed on or off is expected\n");
        row("zero bytes", QByteArray("get system\0hostname\n", 20),
            "failed vornix2 err -1 \"unknown text\"\n");
        row("bytes that are no text", "\x80\xff\xfe\n", "failed vornix2 err -1 \"unknown text\"\n");
    }

    void everyLineIsAnsweredAsByHand()
    {
        QFETCH(const QByteArray, line);
        const Served served;
        Peer peer(served);
        QTEST(peer.ask(line), "reply");
        QCOMPARE(peer.ask("get system hostname\n"), QByteArray("ok zan-master\n"));
    }

    void linesAreAnsweredInTheirOrder()
    {
        const Served served;
        Peer peer(served);
        QByteArray lines;
        QByteArray replies;
        for (int i = 0; i < 3000; ++i) {
            const QByteArray tag = '#' + QByteArray::number(i);
            lines += tag + (i % 2 ? " get system hostname\n" : " int system controller_serial\n");
            replies += tag + (i % 2 ? " ok zan-master\n" : " ok 731\n");
        }
        const int serial = served.system.controllers().constFirst().serial;
        replies.replace(" ok 731\n", " ok " + QByteArray::number(serial) + '\n');
        QCOMPARE(peer.ask(lines, 3000), replies);
    }

    void lineMayComeInParts()
    {
        const Served served;
        Peer peer(served);
        const QByteArray line = "get system hostname\n";
        for (int i = 0; i < line.size(); ++i) {
            QVERIFY(peer.received().isEmpty());
            peer.send(line.mid(i, 1));
            QTRY_COMPARE(peer.socket.bytesToWrite(), 0);
        }
        QTRY_COMPARE(peer.received(), QByteArray("ok zan-master\n"));
    }

    void replyTakesTheTimeOfTheDevice()
    {
        Served served;
        served.system.armFault(faultAt(FaultMode::AnswerLate, "system net", 400));
        Peer peer(served);
        QElapsedTimer clock;
        clock.start();
        // What the device is asked next waits for it; the bench does not.
        QCOMPARE(peer.ask("#1 get system net\n#2 get system hostname\n#3 bench power\n", 3),
                 QByteArray("#3 ok on\n#1 ok static\n#2 ok zan-master\n"));
        // The device's clock may be behind by the slack that it gives a sender.
        QVERIFY2(clock.elapsed() >= 340, qPrintable(QString::number(clock.elapsed())));
    }

    void oneDevicesDelayIsNoOtherPeers()
    {
        Served served;
        served.system.armFault(faultAt(FaultMode::AnswerLate, "system net", 60000));
        Peer slow(served);
        Peer quick(served);
        slow.send("get system net\n");
        QTRY_VERIFY(served.system.armedFaults().isEmpty());
        QCOMPARE(quick.ask("get system hostname\n"), QByteArray("ok zan-master\n"));
        QVERIFY(slow.received().isEmpty());
    }

    void silentDeviceAnswersTheNextLine()
    {
        Served served;
        served.system.armFault(faultAt(FaultMode::StaySilent, "system net"));
        Peer peer(served);
        QCOMPARE(peer.ask("#1 get system net\n#2 get system hostname\n"),
                 QByteArray("#2 ok zan-master\n"));
    }

    void droppedConnectionAnswersWhatCameBefore()
    {
        Served served;
        served.system.armFault(faultAt(FaultMode::DropConnection, "system net"));
        Peer peer(served);
        peer.send("get system hostname\nget system net\nget system hostname\n");
        QTRY_VERIFY(!peer.isConnected());
        QCOMPARE(peer.received(), QByteArray("ok zan-master\n"));
        compareNextPeerIsAnswered(served);
    }

    void droppedConnectionWaitsForAReplyThatIsDueBefore()
    {
        Served served;
        served.system.armFault(faultAt(FaultMode::AnswerLate, "system hostname", 300));
        served.system.armFault(faultAt(FaultMode::DropConnection, "system net"));
        Peer peer(served);
        peer.send("get system hostname\nget system net\n");
        QTRY_VERIFY(!peer.isConnected());
        QCOMPARE(peer.received(), QByteArray("ok zan-master\n"));
    }

    void garbageIsOneLine()
    {
        Served served;
        served.system.armFault(faultAt(FaultMode::AnswerGarbage, "system net"));
        Peer peer(served);
        const QByteArray reply = peer.ask("get system net\n");
        QVERIFY(reply.startsWith("ok "));
        QCOMPARE(reply.count('\n'), 1);
        QCOMPARE(peer.ask("get system hostname\n"), QByteArray("ok zan-master\n"));
    }

    void restartClosesWhatCarriesCommands()
    {
        Served served;
        Peer commands(served);
        Peer bench(served);
        Peer idle(served);
        QCOMPARE(commands.ask("get system hostname\n"), QByteArray("ok zan-master\n"));
        QCOMPARE(bench.ask("bench power\n"), QByteArray("ok on\n"));
        QTRY_COMPARE(served.connections(), 3);
        served.system.restart();
        QTRY_VERIFY(!commands.isConnected());
        QCOMPARE(bench.ask("bench power\n"), QByteArray("ok restarting\n"));
        QVERIFY(idle.isConnected());
        QTRY_COMPARE(served.connections(), 2);
        // Whoever asks a system that is down loses the connection.
        idle.send("get system hostname\n");
        QTRY_VERIFY(!idle.isConnected());
        QVERIFY(idle.received().isEmpty());
    }

    void restartClosesAtOnceWhateverIsStillDue()
    {
        Served served;
        served.system.armFault(faultAt(FaultMode::AnswerLate, "system net", 60000));
        Peer peer(served);
        peer.send("get system net\n");
        QTRY_VERIFY(served.system.armedFaults().isEmpty());
        served.system.restart();
        QTRY_VERIFY(!peer.isConnected());
        QVERIFY(peer.received().isEmpty());
    }

    void restartIsConfirmedBeforeTheConnectionCloses()
    {
        Served served;
        Peer peer(served);
        peer.send("vornix2 system reboot\n");
        QTRY_VERIFY(!peer.isConnected());
        QCOMPARE(peer.received(), QByteArray("ok vornix2 ok\n"));
        QCOMPARE(served.system.power(), Power::Restarting);
    }

    void systemAnswersAfterItsRestart()
    {
        Scenario scenario = shippedScenario("cascade");
        scenario.timing.bootMs = 200;
        Served served(scenario);
        Peer bench(served);
        QVERIFY(bench.ask("bench power-cycle\n").startsWith("ok"));
        QCOMPARE(bench.ask("bench power\n"), QByteArray("ok restarting\n"));
        QTRY_COMPARE(bench.ask("bench power\n"), QByteArray("ok on\n"));
        compareNextPeerIsAnswered(served);
    }

    void watcherIsToldOfChanges()
    {
        Served served;
        Peer watcher(served);
        Peer other(served);
        QVERIFY(watcher.ask("#w bench watch\n").startsWith("#w ok {"));
        QVERIFY(!other.ask("bench measure on\n").isEmpty());
        QTRY_VERIFY(watcher.received().contains("\nstate {"));
        QVERIFY(watcher.received().contains(R"("measurement":"running")"));
        QVERIFY(!other.received().contains("state {"));
    }

    void fastChangesAreToldAsOne()
    {
        Served served;
        Peer watcher(served);
        watcher.ask("bench watch\n");
        for (int i = 0; i < 1001; ++i)
            served.system.setMeasuring(i % 2 == 0);
        QTRY_VERIFY(watcher.received().contains(R"("measurement":"running")"));
        QCOMPARE(watcher.received().count("\nstate {"), 1);
    }

    void onePeerUpdatesAtATime()
    {
        Served served;
        Peer ann(served);
        Peer ben(served);
        Peer watcher(served);
        watcher.ask("bench watch\n");
        QCOMPARE(ann.ask("bench introduce ann@console-3, process 4711\n"), QByteArray("ok\n"));
        QCOMPARE(ann.ask("set system redirect_update none\n"), QByteArray("ok vornix2 ok\n"));
        QTRY_VERIFY(watcher.received().contains(R"("updatedBy":"ann@console-3, process 4711")"));

        const QByteArray refusal =
            "vornix2 err -3 \"ann@console-3, process 4711 updates the system\"\n";
        QCOMPARE(ben.ask("set system update 9 1 AB\n"), "failed " + refusal);
        QCOMPARE(ben.ask("vornix2 system reboot\n"), "ok " + refusal);
        QCOMPARE(served.system.power(), Power::On);
        QCOMPARE(ben.ask("get system hostname\n"), QByteArray("ok zan-master\n"));

        // One that dies gives the others way.
        ann.socket.abort();
        QTRY_COMPARE(served.system.state().updatedBy, QString());
        QCOMPARE(ben.ask("set system redirect_update none\n"), QByteArray("ok vornix2 ok\n"));
        const QString benHimself = QStringLiteral("127.0.0.1:%1").arg(ben.socket.localPort());
        QCOMPARE(served.system.state().updatedBy, benHimself);
    }

    void restartEndsTheTurn()
    {
        Served served;
        Peer ann(served);
        QCOMPARE(ann.ask("set system redirect_update none\n"), QByteArray("ok vornix2 ok\n"));
        QCOMPARE(ann.ask("vornix2 system reboot\n"), QByteArray("ok vornix2 ok\n"));
        QTRY_COMPARE(served.system.state().updatedBy, QString());
    }

    void peersAreServedUpToALimit()
    {
        const Served served;
        std::vector<std::unique_ptr<Peer>> peers;
        for (int i = 0; i < SystemServer::maxConnections; ++i) {
            peers.push_back(std::make_unique<Peer>(served));
            QCOMPARE(peers.back()->ask("get system hostname\n"), QByteArray("ok zan-master\n"));
        }
        for (int i = 0; i < 3; ++i) {
            Peer oneTooMany(served);
            QTRY_VERIFY(!oneTooMany.isConnected());
            QVERIFY(oneTooMany.received().isEmpty());
        }
        QCOMPARE(peers.front()->ask("get system hostname\n"), QByteArray("ok zan-master\n"));
        peers.pop_back();
        QTRY_COMPARE(served.connections(), SystemServer::maxConnections - 1);
        compareNextPeerIsAnswered(served);
    }

    void floodIsTakenWithoutHarm_data()
    {
        QTest::addColumn<QByteArray>("chunk");
        QTest::addColumn<int>("bytes");
        QTest::addColumn<bool>("isRead");
        const int size = 400000;
        const int fewBytes = 200000; // the replies are much longer
        const auto row = [](const char* name, const QByteArray& chunk, int bytes, bool isRead) {
            QTest::newRow(name) << chunk << bytes << isRead;
        };
        row("one line without an end", QByteArray(size, 'x'), floodBytes, true);
        row("zero bytes", QByteArray(size, '\0'), floodBytes, true);
        row("a tag without an end", '#' + QByteArray(size, '1'), floodBytes, true);
        row("short lines", QByteArray("get system hostname\n").repeated(size / 20), floodBytes,
            true);
        row("empty lines", QByteArray(fewBytes, '\n'), fewBytes, true);
        row("queries whose replies nobody reads",
            QByteArray("get system model_description\n").repeated(size / 29), floodBytes, false);
        row("questions to the bench whose answers nobody reads",
            QByteArray("bench state\n").repeated(size / 12), floodBytes, false);
        row("watches whose states nobody reads",
            QByteArray("bench watch\nbench measure on\n").repeated(size / 29), floodBytes, false);
    }

    // Of one that does not read the server takes only a part of it.
    void floodIsTakenWithoutHarm()
    {
        QFETCH(const QByteArray, chunk);
        QFETCH(const int, bytes);
        QFETCH(const bool, isRead);
        const Served served;
        compareNextPeerIsAnswered(served);
        Peer peer(served);
        const qint64 beforeKb = residentKb();
        if (isRead) {
            const auto reading = QObject::connect(&peer.socket, &QTcpSocket::readyRead,
                                                  [&] { peer.socket.readAll(); });
            QVERIFY(peer.flood(chunk, bytes));
            QObject::disconnect(reading);
        } else {
            peer.socket.setReadBufferSize(1);
            for (int sent = 0; sent < bytes; sent += chunk.size()) {
                peer.socket.write(chunk);
                if (!QTest::qWaitFor([&] { return peer.socket.bytesToWrite() == 0; }, 500))
                    break; // the server has enough of it
            }
        }
        const qint64 grownKb = residentKb() - beforeKb;
#if !defined(__SANITIZE_ADDRESS__) // it keeps freed memory for a while
        QVERIFY2(grownKb < 2000, qPrintable(QString::number(grownKb)));
#else
        Q_UNUSED(grownKb)
#endif
        compareNextPeerIsAnswered(served);
        peer.socket.abort();
        QTRY_COMPARE(served.connections(), 0);
    }

    void longLineIsAnsweredOnceAndTheNextOneToo()
    {
        const Served served;
        Peer peer(served);
        peer.send("get system ");
        QVERIFY(peer.flood(QByteArray(400000, 'x'), floodBytes));
        QCOMPARE(peer.ask("\n#2 get system hostname\n", 2),
                 QByteArray("failed vornix2 err -1 \"unknown text\"\n#2 ok zan-master\n"));
    }

    void whoReadsLateGetsEverything()
    {
        const Served served;
        Peer peer(served);
        peer.socket.setReadBufferSize(1);
        const int count = 20000;
        peer.send(QByteArray("get system hostname\n").repeated(count));
        // Nothing more goes: the server waits for its replies to be read.
        int left = -1;
        while (left != static_cast<int>(peer.socket.bytesToWrite())) {
            left = static_cast<int>(peer.socket.bytesToWrite());
            QTest::qWait(50); // the program itself knows no end of this
        }
        peer.socket.setReadBufferSize(0);
        QCOMPARE(peer.ask("", count).size(), count * int(sizeof("ok zan-master\n") - 1));
    }

    void peerMayCloseAtAnyMoment_data()
    {
        QTest::addColumn<bool>("abruptly");
        QTest::newRow("with a good-bye") << false;
        QTest::newRow("without") << true;
    }

    void peerMayCloseAtAnyMoment()
    {
        QFETCH(const bool, abruptly);
        Served served;
        const QByteArray session = "#1 get system hostname\nbench watch\nset system update 2 1 AA\n"
                                   "vornix2 tracking stop\r\nbench measure off\n\n";
        for (int size = 0; size <= session.size(); ++size) {
            Peer peer(served);
            peer.send(session.left(size));
            QVERIFY(peer.socket.bytesToWrite() == 0 || peer.socket.waitForBytesWritten());
            if (size % 2 == 0) // else the server finds all of it at once
                QTRY_COMPARE(served.connections(), 1);
            if (abruptly)
                peer.socket.abort();
            else
                peer.socket.disconnectFromHost();
            QTRY_COMPARE(served.connections(), 0);
        }
        QTRY_COMPARE(served.connections(), 0);
        served.system.restart(); // none of them is spoken to any more
        served.system.powerCycle();
        QTRY_COMPARE(served.connections(), 0);
    }

    void peerMayCloseBeforeItsReplyIsDue()
    {
        Served served;
        served.system.armFault(faultAt(FaultMode::AnswerLate, "system net", 200));
        {
            Peer peer(served);
            peer.send("get system net\nget system hostname\n");
            QTRY_VERIFY(served.system.armedFaults().isEmpty());
        }
        QTRY_COMPARE(served.connections(), 0);
        compareNextPeerIsAnswered(served);
    }

    void halfClosedPeerGetsItsReplies()
    {
        const Served served;
        Peer peer(served);
        peer.send("get system hostname\nbench power\n");
        QVERIFY(peer.socket.waitForBytesWritten());
        QCOMPARE(shutdown(static_cast<int>(peer.socket.socketDescriptor()), SHUT_WR), 0);
        QTRY_COMPARE(peer.received(), QByteArray("ok zan-master\nok on\n"));
        QTRY_VERIFY(!peer.isConnected());
        QTRY_COMPARE(served.connections(), 0);
    }

    void blockOfAPeerThatIsGoneIsNotTaken()
    {
        Served served("single");
        const QByteArray payload = trackingSoftware({9, 9, 9});
        const QList<QByteArray> records = recordTexts(payload);
        const QByteArray count = QByteArray::number(records.size());
        {
            Peer peer(served);
            for (int i = 0; i + 1 < records.size(); ++i)
                QCOMPARE(peer.ask("set system update " + count + ' ' + QByteArray::number(i + 1) +
                                  ' ' + records.at(i) + '\n'),
                         QByteArray("ok vornix2 ok\n"));
        }
        QTRY_COMPARE(served.connections(), 0);
        QVERIFY(served.system.controllers().constFirst().stagedPt.isEmpty());
    }

    void wholeBlockIsTaken()
    {
        Served served("single");
        const QList<QByteArray> records = recordTexts(trackingSoftware({9, 9, 9}));
        QByteArray lines;
        for (int i = 0; i < records.size(); ++i)
            lines += "set system update " + QByteArray::number(records.size()) + ' ' +
                     QByteArray::number(i + 1) + ' ' + records.at(i) + '\n';
        Peer peer(served);
        QCOMPARE(peer.ask(lines, records.size()),
                 QByteArray("ok vornix2 ok\n").repeated(records.size()));
        QVERIFY(served.system.controllers().constFirst().stagedPt.startsWith("v9.9.9"));
    }

    void portInUseIsExplained()
    {
        const Served served;
        SimulatedSystem other(shippedScenario("single"));
        SystemServer second(other);
        QString error;
        QVERIFY(!second.listen(served.server.endpoint(), &error));
        QTcpServer third;
        QVERIFY(!third.listen(served.server.endpoint().address, served.server.endpoint().port));
        QCOMPARE(error, served.server.endpoint().text() + ": " + third.errorString());
    }

    void nobodyElseIsListenedTo()
    {
        const Served served;
        QCOMPARE(served.server.endpoint().address, QHostAddress(QHostAddress::LocalHost));
        QTcpSocket stranger;
        stranger.connectToHost(QHostAddress("127.0.0.2"), served.server.endpoint().port);
        QVERIFY(!stranger.waitForConnected(longWaitMs));
        QCOMPARE(stranger.error(), QAbstractSocket::ConnectionRefusedError);
    }
};

ZAN_TEST_MAIN(TestSystemServer)
#include "tst_systemserver.moc"
