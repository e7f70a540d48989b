#include "scriptedpeer.h"

#include <simulatorfixtures.h>

#include <hostname.h>
#include <remoteaccess.h>
#include <systemserver.h>

#include <testmain.h>

#include <QTcpSocket>
#include <QTemporaryDir>

namespace {

/// A system served from a thread of its own, as connecting to it blocks.
class ServingThread : public QThread
{
public:
    explicit ServingThread(Scenario scenario, bool isRestarting = false)
        : m_scenario(std::move(scenario)), m_isRestarting(isRestarting)
    {
        std::future<Endpoint> endpoint = m_endpoint.get_future();
        start();
        at = endpoint.get();
    }

    ~ServingThread() override
    {
        quit();
        wait();
    }

    Endpoint at;

protected:
    void run() override
    {
        SimulatedSystem system(m_scenario);
        if (m_isRestarting)
            system.restart();
        SystemServer server(system);
        QString error;
        server.listen(Endpoint(), &error);
        m_endpoint.set_value(server.endpoint());
        exec();
    }

private:
    Scenario m_scenario;
    bool m_isRestarting;
    std::promise<Endpoint> m_endpoint;
};

ScriptedPeer::Script answer(const QByteArray& bytes)
{
    return [bytes](PeerConnection& connection) {
        connection.readLine();
        connection.write(bytes);
    };
}

} // namespace

class TestRemoteAccess : public QObject
{
    Q_OBJECT

private slots:
    void everyShippedSystemIsKnownAtOnce_data()
    {
        QTest::addColumn<QString>("name");
        for (const QString& name : Scenario::shipped())
            QTest::newRow(qPrintable(name)) << name;
    }

    void everyShippedSystemIsKnownAtOnce()
    {
        QFETCH(const QString, name);
        const ServingThread serving(shippedScenario(name));
        QString error;
        const std::unique_ptr<RemoteAccess> access = RemoteAccess::connectTo(serving.at, &error);
        QVERIFY2(access, qPrintable(error));
        QCOMPARE(access->equipment().scenario().name, name);
        QCOMPARE(access->equipment().scenario().title, shippedScenario(name).title);
        QVERIFY(access->equipment().isAtHand());
        QVERIFY(access->equipment().isReachable());
        QVERIFY(access->link().isReachable());
        QCOMPARE(access->link().address(), shippedScenario(name).address());
        access->link().send(Operation::GetString, "system hostname");
        const std::optional<Reply> reply = access->link().wait(patienceMs);
        QVERIFY(reply);
        QCOMPARE(QString::fromUtf8(reply->text),
                 shippedScenario(name).controllers.constFirst().hostName);
    }

    void ownUpdateIsInNoOtherHands()
    {
        const ServingThread serving(shippedScenario("single"));
        QString error;
        const std::unique_ptr<RemoteAccess> ann = RemoteAccess::connectTo(serving.at, &error);
        QVERIFY2(ann, qPrintable(error));
        const RemoteEquipment ben(serving.at, shippedScenario("single"));
        ann->link().send(Operation::SetValue, "system redirect_update none");
        QVERIFY(ann->link().wait(patienceMs));
        QTRY_VERIFY(ben.isInOtherHands());
        QCOMPARE(ben.state().updatedBy, nameOfThisHost());
        QVERIFY(nameOfThisHost().endsWith(
            QStringLiteral(", process %1").arg(QCoreApplication::applicationPid())));
        ann->equipment().catchUp();
        QVERIFY(!ann->equipment().isInOtherHands());
    }

    void systemThatRestartsIsKnownToDoSo()
    {
        const ServingThread serving(shippedScenario("single"), true);
        QString error;
        const std::unique_ptr<RemoteAccess> access = RemoteAccess::connectTo(serving.at, &error);
        QVERIFY2(access, qPrintable(error));
        QVERIFY(access->equipment().isAtHand());
        QVERIFY(!access->equipment().isReachable());
        QVERIFY(access->equipment().msUntilReachable() > 0);
        QVERIFY(!access->link().isReachable());
    }

    void stateStaysWithTheOtherProcess()
    {
        const QTemporaryDir folder;
        const ServingThread serving(shippedScenario("single"));
        QString error;
        const std::unique_ptr<RemoteAccess> access = RemoteAccess::connectTo(serving.at, &error);
        QVERIFY2(access, qPrintable(error));
        QCOMPARE(access->keepState(folder.path(), true, &error), std::make_optional(QString()));
        QVERIFY(QDir(folder.path()).isEmpty());
    }

    void whatIsNoSystemIsExplained_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("reason");
        const auto row = [](const char* name, const QByteArray& bytes, const QString& reason) {
            QTest::newRow(name) << bytes << reason;
        };
        row("no answer", "", "The remote host closed the connection");
        row("half an answer", "#scenario ok {", "The remote host closed the connection");
        row("greeting of something else", "220 mail ESMTP\n", "its answer is not understood");
        row("zero bytes", QByteArray(100, '\0') + '\n', "its answer is not understood");
        row("answer to another question", "#other ok {}\n", "its answer is not understood");
        row("10 MB", QByteArray(10000000, 'x') + '\n', "its answer is not understood");
        row("refusal", "#scenario failed\n", "it does not tell its scenario");
        row("list instead of a scenario", "#scenario ok []\n",
            "scenario: line 1: must be an object");
        row("no name", "#scenario ok {}\n", "scenario: name: missing");
        row("name alone", "#scenario ok {\"name\": \"x\"}\n", "scenario: scenario: missing");
        row("key too many", "#scenario ok {\"name\": \"x\", \"scenario\": {}, \"y\": 1}\n",
            "scenario: y: unknown key");
        row("empty scenario", "#scenario ok {\"name\": \"x\", \"scenario\": {}}\n",
            "x.json: title: missing");
    }

    void whatIsNoSystemIsExplained()
    {
        QFETCH(const QByteArray, bytes);
        QFETCH(const QString, reason);
        ScriptedPeer peer({answer(bytes)});
        QString error;
        QVERIFY(!RemoteAccess::connectTo(peer.endpoint(), &error));
        QCOMPARE(error, peer.endpoint().text() + ": there is no simulated system: " + reason);
    }

    void nobodyIsExplained()
    {
        const Endpoint endpoint = deadEndpoint();
        QString error;
        QVERIFY(!RemoteAccess::connectTo(endpoint, &error));
        QTcpSocket socket;
        socket.connectToHost(endpoint.address, endpoint.port);
        QVERIFY(!socket.waitForConnected());
        QCOMPARE(error,
                 endpoint.text() + ": there is no simulated system: " + socket.errorString());
    }

    void whoDoesNotAnswerIsGivenFiveSeconds()
    {
        ScriptedPeer peer({[](PeerConnection& connection) {
            connection.waitUntilClosed();
        }});
        QString error;
        QElapsedTimer clock;
        clock.start();
        QVERIFY(!RemoteAccess::connectTo(peer.endpoint(), &error));
        QVERIFY(clock.elapsed() >= 4999);
        QCOMPARE(error, peer.endpoint().text() + ": there is no simulated system: no answer");
    }
};

ZAN_TEST_MAIN(TestRemoteAccess)
#include "tst_remoteaccess.moc"
