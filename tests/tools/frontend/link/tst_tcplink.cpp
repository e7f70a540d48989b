#include "scriptedpeer.h"

#include <hostchannel.h>
#include <tcplink.h>

#include <testmain.h>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

// Whoever waits for so long is ended by ctest before.
constexpr int timeoutMs = patienceMs;

/// A link that knows already whether its peer answers.
struct Link
{
    explicit Link(const Endpoint& peer) : tcp(peer, QStringLiteral("192.168.7.20"))
    {
        tcp.catchUp(timeoutMs);
    }

    QByteArray hostName(int forMs = timeoutMs)
    {
        tcp.send(Operation::GetString, "system hostname");
        const std::optional<Reply> reply = tcp.wait(forMs);
        return reply && reply->ok ? reply->text : QByteArray("none");
    }

    TcpLink tcp;
};

/// A script that tells the power and answers all lines that follow with "ok" and their number.
void answerAll(PeerConnection& connection)
{
    connection.tellPower();
    for (QByteArray line = connection.readLine(); !line.isEmpty(); line = connection.readLine())
        connection.write(line.left(line.indexOf(' ')) + " ok zan-master\n");
}

ScriptedPeer::Script answerWith(const QByteArray& bytes)
{
    return [bytes](PeerConnection& connection) {
        connection.tellPower();
        connection.readLine();
        connection.write(bytes);
        connection.waitUntilClosed();
    };
}

void neverAnswer(PeerConnection& connection)
{
    connection.tellPower();
    connection.waitUntilClosed();
}

/// Listens, but takes nobody in for a while: whoever wants to connect has to try for longer.
class BusyListener : public QThread
{
public:
    BusyListener() : m_listener(socket(AF_INET, SOCK_STREAM, 0))
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* const generic = reinterpret_cast<sockaddr*>(&address);
        bind(m_listener, generic, size);
        listen(m_listener, 0);
        getsockname(m_listener, generic, &size);
        m_endpoint.port = ntohs(address.sin_port);
        m_first.connectToHost(m_endpoint.address, m_endpoint.port);
        m_first.waitForConnected(timeoutMs); // the one that there is room for
        start();
    }

    ~BusyListener() override
    {
        shutdown(m_listener, SHUT_RDWR); // should nobody come
        wait();
        close(m_listener);
    }

    const Endpoint& endpoint() const { return m_endpoint; }

protected:
    void run() override
    {
        msleep(200);
        close(accept(m_listener, nullptr, nullptr));
        const int connection = accept(m_listener, nullptr, nullptr);
        QByteArray lines;
        char byte = 0;
        while (lines.count('\n') < 2 && read(connection, &byte, 1) == 1)
            lines.append(byte);
        const QByteArray replies = "#power ok on\n#1 ok zan-master\n";
        if (write(connection, replies.constData(), static_cast<size_t>(replies.size())) < 0)
            qWarning("the replies could not be written");
        close(connection);
    }

private:
    int m_listener;
    Endpoint m_endpoint;
    QTcpSocket m_first;
};

} // namespace

class TestTcpLink : public QObject
{
    Q_OBJECT

private slots:
    void replyComesBack()
    {
        ScriptedPeer peer({answerAll});
        Link link(peer.endpoint());
        QVERIFY(link.tcp.isReachable());
        QCOMPARE(link.hostName(), QByteArray("zan-master"));
        QCOMPARE(link.hostName(), QByteArray("zan-master"));
        QCOMPARE(link.tcp.address(), QString("192.168.7.20"));
        QCOMPARE(peer.lines(), (QList<QByteArray>{"#power bench power", "#1 get system hostname",
                                                  "#2 get system hostname"}));
    }

    void systemIsToldWhoComes()
    {
        ScriptedPeer peer({[](PeerConnection& connection) {
            connection.readLine();
            answerAll(connection);
        }});
        TcpLink link(peer.endpoint(), "192.168.7.20", QByteArray(), "ann@console");
        link.catchUp(timeoutMs);
        QCOMPARE(peer.lines(),
                 (QList<QByteArray>{"#name bench introduce ann@console", "#power bench power"}));
    }

    void replyIsRead_data()
    {
        QTest::addColumn<int>("operation");
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<bool>("ok");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("integer");
        const auto row = [](const char* name, Operation operation, const QByteArray& line, bool ok,
                            const QByteArray& text, int integer) {
            QTest::newRow(name) << static_cast<int>(operation) << line << ok << text << integer;
        };
        row("text", Operation::GetString, "#1 ok zan-master\n", true, "zan-master", 0);
        row("empty text", Operation::GetString, "#1 ok\n", true, "", 0);
        row("refusal", Operation::GetString, "#1 failed no\n", false, "no", 0);
        row("number", Operation::GetInt, "#1 ok -7\n", true, "-7", -7);
        row("number that is none", Operation::GetInt, "#1 ok seven\n", false, "seven", 0);
        row("no number at all", Operation::GetInt, "#1 ok\n", false, "", 0);
        row("setting", Operation::SetValue, "#1 ok vornix2 ok\n", true, "vornix2 ok", 0);
        row("command that was not done", Operation::Command, "#1 ok vornix2 err -26\n", true,
            "vornix2 err -26", 0);
        row("line end of other systems", Operation::GetString, "#1 ok x\r\n", true, "x", 0);
        row("zero byte", Operation::GetString, QByteArray("#1 ok a\0b\n", 10), true,
            QByteArray("a\0b", 3), 0);
        row("after lines that are no replies", Operation::GetString,
            QByteArray("hello\n\n#1\nok x\n#2 ok y\n\0\n\xff\xfe\n", 28) + "#1 ok z\n", true, "z",
            0);
        row("after 10 MB in one line", Operation::GetString,
            QByteArray(10000000, 'x') + "\n#1 ok z\n", true, "z", 0);
        row("in 10 MB, of which the begin is kept", Operation::GetString,
            "#1 ok " + QByteArray(10000000, 'x') + '\n', true, QByteArray(1018, 'x'), 0);
    }

    void replyIsRead()
    {
        QFETCH(const int, operation);
        QFETCH(const QByteArray, line);
        ScriptedPeer peer({answerWith(line)});
        Link link(peer.endpoint());
        link.tcp.send(static_cast<Operation>(operation), "x");
        const std::optional<Reply> reply = link.tcp.wait(timeoutMs);
        QVERIFY(reply);
        QTEST(reply->ok, "ok");
        QTEST(reply->text, "text");
        QTEST(reply->integer, "integer");
    }

    void whatIsNoReplyRunsIntoTheTimeOut_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("reply without its line end") << QByteArray("#1 ok zan-master");
        QTest::newRow("reply without its tag") << QByteArray("ok zan-master\n");
        QTest::newRow("reply to another text") << QByteArray("#2 ok zan-master\n");
        QTest::newRow("tag with more behind it") << QByteArray("#11 ok zan-master\n");
        QTest::newRow("garbage") << QByteArray("\x80\xff\n\xfe\n");
        QTest::newRow("zero bytes") << QByteArray(100000, '\0');
        QTest::newRow("lines without anything") << QByteArray(100000, '\n');
        QTest::newRow("10 MB without a line end") << QByteArray(10000000, 'x');
    }

    void whatIsNoReplyRunsIntoTheTimeOut()
    {
        QFETCH(const QByteArray, bytes);
        ScriptedPeer peer({answerWith(bytes)});
        Link link(peer.endpoint());
        QElapsedTimer clock;
        clock.start();
        QCOMPARE(link.hostName(300), QByteArray("none"));
        QVERIFY2(clock.elapsed() >= 299, qPrintable(QString::number(clock.elapsed())));
    }

    void lateReplyIsInTime()
    {
        ScriptedPeer peer({[](PeerConnection& connection) {
            connection.tellPower();
            connection.readLine();
            QThread::msleep(300);
            connection.write("#1 ok zan-master\n");
            connection.waitUntilClosed();
        }});
        Link link(peer.endpoint());
        QCOMPARE(link.hostName(), QByteArray("zan-master"));
    }

    // The peer answers a text only when it has the next one.
    void replyAfterTheTimeOutIsNobodyElses()
    {
        ScriptedPeer peer({[](PeerConnection& connection) {
            connection.tellPower();
            connection.readLine();
            connection.readLine();
            connection.write("#1 ok late\n");
            connection.write("#2 ok zan-master\n");
            connection.waitUntilClosed();
        }});
        Link link(peer.endpoint());
        QCOMPARE(link.hostName(100), QByteArray("none"));
        QCOMPARE(link.hostName(), QByteArray("zan-master"));
    }

    void replyThatNobodyWaitedForIsDropped()
    {
        ScriptedPeer peer({answerAll});
        Link link(peer.endpoint());
        link.tcp.send(Operation::GetString, "system net");
        QTRY_COMPARE(peer.lines().size(), 2);
        QCOMPARE(link.hostName(), QByteArray("zan-master"));
        QVERIFY(!link.tcp.wait(0));
    }

    void nothingIsWaitedForWhereNothingWasSent()
    {
        ScriptedPeer peer({answerAll});
        Link link(peer.endpoint());
        QVERIFY(!link.tcp.wait(timeoutMs));
        QCOMPARE(link.hostName(), QByteArray("zan-master"));
        QVERIFY(!link.tcp.wait(timeoutMs)); // it is delivered once
    }

    void lookingDoesNotBlock_data()
    {
        QTest::addColumn<int>("forMs");
        QTest::newRow("no time at all") << 0;
        QTest::newRow("less than none") << -1000;
    }

    void lookingDoesNotBlock()
    {
        QFETCH(const int, forMs);
        ScriptedPeer peer({neverAnswer});
        Link link(peer.endpoint());
        link.tcp.send(Operation::GetString, "system hostname");
        QVERIFY(!link.tcp.wait(forMs));
    }

    void replyThatIsThereIsFoundByLooking()
    {
        ScriptedPeer peer({answerAll});
        Link link(peer.endpoint());
        link.tcp.send(Operation::GetString, "system hostname");
        std::optional<Reply> reply;
        QTRY_VERIFY(reply || (reply = link.tcp.wait(0)));
        QCOMPARE(reply->text, QByteArray("zan-master"));
    }

    // With every part of an answer, from nothing to all of it.
    void connectionMayEndAtAnyMoment()
    {
        const QByteArray answer = "#1 ok zan-master\n";
        for (int size = 0; size <= answer.size(); ++size) {
            ScriptedPeer peer({[&](PeerConnection& connection) {
                                   connection.tellPower();
                                   connection.readLine();
                                   connection.write(answer.left(size));
                               },
                               answerAll});
            Link link(peer.endpoint());
            QCOMPARE(link.hostName(), QByteArray(size == answer.size() ? "zan-master" : "none"));
            link.tcp.send(Operation::GetString, "system net");
            std::optional<Reply> next = link.tcp.wait(timeoutMs);
            if (!next) { // the end of the connection was only found by that
                link.tcp.send(Operation::GetString, "system net");
                next = link.tcp.wait(timeoutMs);
            }
            QVERIFY(next);
            QCOMPARE(peer.lines().count("#1 get system hostname"), 1);
        }
    }

    void whatWasLostIsNotSentAgain()
    {
        ScriptedPeer peer({[](PeerConnection& connection) {
                               connection.tellPower();
                               connection.readLine();
                           },
                           answerAll});
        Link link(peer.endpoint());
        link.tcp.send(Operation::Command, "vornix2 system reboot");
        QVERIFY(!link.tcp.wait(timeoutMs));
        QTRY_COMPARE(peer.lines().count("#power bench power"), 2);
        QCOMPARE(link.hostName(), QByteArray("zan-master"));
        QCOMPARE(peer.lines(), (QList<QByteArray>{"#power bench power", "#1 vornix2 system reboot",
                                                  "#power bench power", "#2 get system hostname"}));
    }

    void refusedConnectionFailsAtOnce()
    {
        TcpLink link(deadEndpoint(), "192.168.7.20");
        for (int i = 0; i < 20; ++i) {
            link.send(Operation::GetString, "system hostname");
            QVERIFY(!link.wait(timeoutMs));
        }
        QVERIFY(!link.isReachable());
    }

    void catchingUpEndsWithItsTime()
    {
        QElapsedTimer clock;
        clock.start();
        TcpLink link(deadEndpoint(), "192.168.7.20");
        link.catchUp(300);
        QVERIFY(clock.elapsed() >= 299);
        QVERIFY(!link.isReachable());
    }

    void textThatCannotTravelFails_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("line end") << QByteArray("system hostname\nvornix2 system reboot");
        QTest::newRow("carriage return at the end") << QByteArray("system hostname\r");
    }

    void textThatCannotTravelFails()
    {
        QFETCH(const QByteArray, text);
        ScriptedPeer peer({answerAll});
        Link link(peer.endpoint());
        link.tcp.send(Operation::GetString, text);
        QVERIFY(!link.tcp.wait(timeoutMs));
        QCOMPARE(link.hostName(), QByteArray("zan-master"));
        QCOMPARE(peer.lines().size(), 2);
    }

    void powerOfTheSystemIsFollowed()
    {
        ScriptedPeer peer({[](PeerConnection& connection) {
            connection.tellPower("restarting");
            connection.tellPower("hung");
            connection.tellPower("off");
            connection.tellPower("on");
            connection.waitUntilClosed();
        }});
        Link link(peer.endpoint());
        QVERIFY(!link.tcp.isReachable());
        QTRY_COMPARE(peer.lines().size(), 3);
        QVERIFY(!link.tcp.isReachable());
        QTRY_VERIFY(link.tcp.isReachable());
    }

    void shortLossGoesUnnoticed()
    {
        ScriptedPeer peer({[](PeerConnection& connection) { connection.tellPower(); }, answerAll});
        Link link(peer.endpoint());
        bool wasAlwaysReachable = true;
        QTRY_VERIFY((wasAlwaysReachable = wasAlwaysReachable && link.tcp.isReachable(),
                     peer.lines().size() == 2));
        QVERIFY(wasAlwaysReachable);
        QCOMPARE(link.hostName(), QByteArray("zan-master"));
    }

    void silentPeerIsGivenUpOnDemand()
    {
        ScriptedPeer peer({neverAnswer, answerAll});
        Link link(peer.endpoint());
        const quint64 first = link.tcp.connection();
        link.tcp.hangUp();
        QCOMPARE(link.tcp.connection(), first + 1);
        QVERIFY(!link.tcp.isOpen());
        QCOMPARE(link.hostName(), QByteArray("zan-master"));
        link.tcp.hangUp();
        link.tcp.hangUp(); // nothing is left to be given up
        QCOMPARE(link.tcp.connection(), first + 2);
    }

    // Takes the 5 s that such a peer is waited for.
    void peerThatIsSilentFromTheBeginIsTriedAgain_data()
    {
        QTest::addColumn<bool>("saysWhoItIs");
        QTest::newRow("it does not say who it is") << false;
        QTest::newRow("it does not say whether it has power") << true;
    }

    void peerThatIsSilentFromTheBeginIsTriedAgain()
    {
        QFETCH(const bool, saysWhoItIs);
        const auto tellIdentity = [](PeerConnection& connection) {
            connection.readLine();
            connection.write("#identity ok mine\n");
        };
        ScriptedPeer peer({[&](PeerConnection& connection) {
                               if (saysWhoItIs)
                                   tellIdentity(connection);
                               connection.waitUntilClosed();
                           },
                           [&](PeerConnection& connection) {
                               tellIdentity(connection);
                               answerAll(connection);
                           }});
        TcpLink link(peer.endpoint(), "192.168.7.20", "mine");
        QTRY_VERIFY(link.isOpen() && link.isReachable());
        QCOMPARE(link.connection(), quint64(1));
    }

    void eachLossIsCounted()
    {
        const auto once = [](PeerConnection& connection) {
            connection.tellPower();
        };
        ScriptedPeer peer({once, once, answerAll});
        TcpLink link(peer.endpoint(), "192.168.7.20");
        const quint64 first = link.connection();
        QTRY_COMPARE(peer.lines().count("#power bench power"), 3);
        QTRY_COMPARE(link.connection(), first + 2);
        QTRY_VERIFY(link.isOpen());
        QCOMPARE(link.connection(), first + 2);
    }

    void otherSystemIsNotSpokenTo()
    {
        const auto tell = [](const QByteArray& identity, const ScriptedPeer::Script& then) {
            return [identity, then](PeerConnection& connection) {
                connection.readLine();
                connection.write("#identity ok " + identity + '\n');
                then(connection);
            };
        };
        const auto end = [](PeerConnection& connection) {
            connection.tellPower();
        };
        std::promise<void> isOver;
        const auto stay = [&](PeerConnection&) {
            isOver.get_future().wait();
        };
        ScriptedPeer peer({tell("mine", end), tell("other", stay), tell("mine", answerAll)});
        TcpLink link(peer.endpoint(), "192.168.7.20", "mine");
        link.catchUp(timeoutMs);
        QVERIFY(link.isReachable());
        QTRY_VERIFY(!link.isReachable());
        QVERIFY(!link.isOpen());
        link.send(Operation::SetValue, "system update 1 1 AB");
        QVERIFY(!link.wait(200));

        isOver.set_value();
        QTRY_VERIFY(link.isReachable() && link.isOpen());
        link.send(Operation::GetString, "system hostname");
        QVERIFY(link.wait(timeoutMs));
        QCOMPARE(peer.lines(),
                 (QList<QByteArray>{"#identity bench identity", "#power bench power",
                                    "#identity bench identity", "#identity bench identity",
                                    "#power bench power", "#2 get system hostname"}));
    }

    void lossOfThePeerIsNoticedAndSoIsItsReturn()
    {
        ScriptedPeer first({[](PeerConnection& connection) {
            connection.tellPower();
        }});
        Link link(first.endpoint());
        QVERIFY(link.tcp.isReachable());
        QTRY_VERIFY(!link.tcp.isReachable());
        QTcpServer again;
        QVERIFY(again.listen(QHostAddress::LocalHost, first.endpoint().port));
        connect(&again, &QTcpServer::newConnection, &again, [&] {
            QTcpSocket* socket = again.nextPendingConnection();
            connect(socket, &QTcpSocket::readyRead, socket,
                    [socket] { socket->write("#power ok on\n"); });
        });
        QTRY_VERIFY(link.tcp.isReachable());
    }

    void idleWorkIsDoneInLongWaitsOnly()
    {
        ScriptedPeer peer({[](PeerConnection& connection) {
            connection.tellPower();
            connection.readLine();
            connection.write("#1 ok zan-master\n");
            connection.readLine();
            QThread::msleep(1000); // long for any machine
            connection.write("#2 ok zan-master\n");
            connection.waitUntilClosed();
        }});
        Link link(peer.endpoint());
        int idle = 0;
        link.tcp.setIdleWork([&] { ++idle; });
        QElapsedTimer clock;
        clock.start();
        QCOMPARE(link.hostName(), QByteArray("zan-master"));
        QVERIFY(idle == 0 || clock.elapsed() >= 40);
        idle = 0;
        QCOMPARE(link.hostName(), QByteArray("zan-master"));
        QVERIFY2(idle >= 1 && idle <= clock.elapsed() / 40, qPrintable(QString::number(idle)));
    }

    void connectionThatComesSlowlyIsAwaited()
    {
        BusyListener peer;
        TcpLink link(peer.endpoint(), "192.168.7.20");
        link.send(Operation::GetString, "system hostname");
        QElapsedTimer clock;
        clock.start();
        const std::optional<Reply> reply = link.wait(timeoutMs);
        QVERIFY(reply);
        QCOMPARE(reply->text, QByteArray("zan-master"));
        QVERIFY2(clock.elapsed() >= 150, qPrintable(QString::number(clock.elapsed())));
    }

    // A host channel over the wire.

    void preparedReplyComesWithThePoll_data()
    {
        QTest::addColumn<int>("pollFollows");
        QTest::newRow("polled directly") << 1;
        QTest::newRow("polled from a timer") << 0;
    }

    void preparedReplyComesWithThePoll()
    {
        QFETCH(const int, pollFollows);
        std::promise<void> mayAnswer;
        ScriptedPeer peer({[&](PeerConnection& connection) {
            connection.tellPower();
            connection.readLine();
            mayAnswer.get_future().wait();
            connection.write("#1 ok vornix2 ok\n");
            connection.waitUntilClosed();
        }});
        Link link(peer.endpoint());
        HostChannel channel(link.tcp);
        char reply[200] = "untouched";
        channel.prepare_reply(1, timeoutMs, pollFollows);
        channel.send_command(reply, "vornix2 %s", "reinit");
        QCOMPARE(reply, "untouched");
        mayAnswer.set_value();
        if (pollFollows == 0)
            QTest::qWait(100); // the reply arrives in the event loop, as it does for the search
        QCOMPARE(reply, "untouched");
        QCOMPARE(channel.poll_reply(3), 0);
        QCOMPARE(reply, "vornix2 ok");
        QCOMPARE(peer.lines().constLast(), QByteArray("#1 vornix2 reinit"));
    }

    void bufferIsLeftAloneOnceThePollHasReturned()
    {
        ScriptedPeer peer({[](PeerConnection& connection) {
            connection.tellPower();
            connection.readLine();
            connection.readLine();
            connection.write("#1 ok vornix2 ok\n#2 ok zan-master\n");
            connection.waitUntilClosed();
        }});
        Link link(peer.endpoint());
        HostChannel channel(link.tcp);
        char late[200] = "untouched";
        QElapsedTimer clock;
        clock.start();
        channel.prepare_reply(1, 200, 1);
        channel.send_command(late, "vornix2 reinit");
        QVERIFY(channel.poll_reply(3) != 0);
        QVERIFY(clock.elapsed() >= 199);
        char name[200] = {};
        QCOMPARE(channel.get_string(name, "system hostname"), 0);
        QCOMPARE(name, "zan-master");
        QCOMPARE(late, "untouched");
    }

    void timeOfAPreparedReplyRunsFromItsText()
    {
        ScriptedPeer peer({neverAnswer});
        Link link(peer.endpoint());
        HostChannel channel(link.tcp);
        bool waits = false;
        link.tcp.setIdleWork([&] { waits = true; });
        channel.prepare_reply(1, 400, 0);
        QCOMPARE(channel.set_value("system update 1 1 "), 0);
        QTest::qWait(500); // longer than the reply may take
        QVERIFY(channel.poll_reply(3) != 0);
        QVERIFY(!waits);
    }
};

ZAN_TEST_MAIN(TestTcpLink)
#include "tst_tcplink.moc"
