#include "scriptedpeer.h"

#include <simulatorfixtures.h>

#include <remotebench.h>
#include <systemserver.h>

#include <testmain.h>

#include <QSignalSpy>

#include <ctime>
#include <memory>

namespace {

constexpr int marginMs = 1500;

/// A system behind a server that can go and come back at the same place.
struct Served
{
    explicit Served(const QString& name) : system(shippedScenario(name)) { listen(Endpoint()); }

    void listen(const Endpoint& endpoint)
    {
        server = std::make_unique<SystemServer>(system);
        QString error;
        if (!server->listen(endpoint, &error))
            qFatal("%s", qPrintable(error));
        at = server->endpoint();
    }

    SimulatedSystem system;
    std::unique_ptr<SystemServer> server;
    Endpoint at;
};

/// A bench with what it told.
struct Bench
{
    Bench(const Endpoint& peer, const QString& scenario) : remote(peer, shippedScenario(scenario))
    {
        QObject::connect(&remote, &TestBench::trouble,
                         [this](const QString& text) { trouble.append(text); });
    }

    RemoteBench remote;
    QStringList trouble;
};

QByteArray stateOf(const QString& scenario)
{
    return benchStateToJson(SimulatedSystem(shippedScenario(scenario)));
}

} // namespace

class TestRemoteBench : public QObject
{
    Q_OBJECT

private slots:
    void beforeTheFirstLookTheSystemStandsAsItsScenarioTells()
    {
        const Bench bench(deadEndpoint(), "cascade");
        QVERIFY(!bench.remote.isAtHand());
        QVERIFY(!bench.remote.isReachable());
        QCOMPARE(bench.remote.msUntilReachable(), -1);
        QCOMPARE(bench.remote.controllers().size(), 3);
        QCOMPARE(bench.remote.scenario().name, QString("cascade"));
        QVERIFY(bench.trouble.isEmpty());
    }

    void systemIsSeenAndFollowed()
    {
        Served served("cameras");
        Bench bench(served.at, "cameras");
        QTRY_VERIFY(bench.remote.isAtHand());
        QVERIFY(bench.remote.isReachable());
        QCOMPARE(bench.remote.msUntilReachable(), 0);
        served.system.setMeasuring(true);
        served.system.powerCycleCamera(0);
        QTRY_COMPARE(bench.remote.measurement(), Measurement::Running);
        QTRY_VERIFY(!bench.remote.cameras().constFirst().found);
        served.system.restart();
        QTRY_VERIFY(!bench.remote.isReachable());
        QVERIFY(bench.remote.isAtHand());
        QVERIFY(bench.remote.controllers().constFirst().rebooting);
    }

    void restOfARestartRunsOnBetweenTheStates()
    {
        Served served("cascade");
        served.system.restart();
        Bench bench(served.at, "cascade");
        QTRY_VERIFY(bench.remote.isAtHand());
        const qint64 first = bench.remote.msUntilReachable();
        QVERIFY(first > 0 && first <= served.system.scenario().timing.bootMs);
        QTRY_VERIFY(bench.remote.msUntilReachable() <= first - 100);
    }

    void handsReachTheSystem()
    {
        Served served("cameras");
        served.system.disarmFaults();
        Bench bench(served.at, "cameras");
        QTRY_VERIFY(bench.remote.isAtHand());
        bench.remote.setMeasuring(true);
        QTRY_COMPARE(served.system.measurement(), Measurement::Running);
        bench.remote.setMeasuring(false);
        QTRY_COMPARE(served.system.measurement(), Measurement::Off);
        bench.remote.powerCycleCamera(1);
        QTRY_VERIFY(!served.system.cameras().at(1).found);
        Fault fault;
        fault.mode = FaultMode::StaySilent;
        fault.device = "c01";
        fault.seed = 7;
        bench.remote.armFault(fault);
        QTRY_COMPARE(served.system.armedFaults().size(), 1);
        QCOMPARE(benchArm(served.system.armedFaults().constFirst()), benchArm(fault));
        QTRY_COMPARE(bench.remote.armedFaults().size(), 1);
        bench.remote.disarmFaults();
        QTRY_VERIFY(served.system.armedFaults().isEmpty());
        bench.remote.powerCycle();
        QTRY_COMPARE(served.system.power(), Power::Restarting);
        QVERIFY(bench.trouble.isEmpty());
    }

    void sameComplaintsAreToldOnceAndLongOnesAreCut()
    {
        ScriptedPeer peer({[](PeerConnection& connection) {
            connection.readLine();
            for (int i = 0; i < 20; ++i)
                connection.write("failed " + QByteArray(100000, 'x') + '\n');
            connection.write("failed y\n");
            connection.waitUntilClosed();
        }});
        Bench bench(peer.endpoint(), "single");
        QTRY_COMPARE(bench.trouble.size(), 2);
        QCOMPARE(bench.trouble.at(0), (peer.endpoint().text() + ": ").leftJustified(200, 'x'));
        QCOMPARE(bench.trouble.at(1), peer.endpoint().text() + ": y");
    }

    void whatTheSystemRefusesIsTold()
    {
        Served served("single");
        Bench bench(served.at, "single");
        QTRY_VERIFY(bench.remote.isAtHand());
        bench.remote.powerCycleCamera(0);
        QTRY_COMPARE(bench.trouble, QStringList{served.at.text() + ": no such camera"});
    }

    void handsDoNothingWhileTheSystemIsLost()
    {
        Served served("cameras");
        Bench bench(served.at, "cameras");
        QTRY_VERIFY(bench.remote.isAtHand());
        const QSignalSpy changed(&bench.remote, &TestBench::changed);
        served.server.reset();
        QTRY_VERIFY(!bench.remote.isAtHand());
        QCOMPARE(bench.trouble,
                 QStringList{QString("The connection to %1 is lost.").arg(served.at.text())});
        QCOMPARE(changed.size(), 1);
        QVERIFY(!bench.remote.isReachable());
        QCOMPARE(bench.remote.msUntilReachable(), -1);
        QVERIFY(bench.remote.cameras().constFirst().found); // as it was seen last

        bench.trouble.clear();
        bench.remote.setMeasuring(true);
        bench.remote.powerCycleCamera(0);
        bench.remote.powerCycle();
        bench.remote.armFault(Fault());
        bench.remote.disarmFaults();
        const QString nothing =
            QString("%1 cannot be reached, so nothing was done.").arg(served.at.text());
        QCOMPARE(bench.trouble, (QStringList{nothing, nothing, nothing, nothing, nothing}));

        served.listen(served.at);
        QTRY_VERIFY(bench.remote.isAtHand());
        QCOMPARE(served.system.measurement(), Measurement::Off);
        QCOMPARE(served.system.power(), Power::On);
        QVERIFY(served.system.cameras().constFirst().found);
        QCOMPARE(bench.trouble.size(), 5);
    }

    void systemThatCameBackIsFollowedAgain()
    {
        Served served("cascade");
        Bench bench(served.at, "cascade");
        QTRY_VERIFY(bench.remote.isAtHand());
        served.server.reset();
        QTRY_VERIFY(!bench.remote.isAtHand());
        served.system.setMeasuring(true);
        served.listen(served.at);
        QTRY_VERIFY(bench.remote.isAtHand());
        QCOMPARE(bench.remote.measurement(), Measurement::Running);
        served.system.setMeasuring(false);
        QTRY_COMPARE(bench.remote.measurement(), Measurement::Off);
    }

    void stateOfOtherDevicesIsNotTaken()
    {
        Served served("single");
        Bench bench(served.at, "cascade");
        QTRY_VERIFY(!bench.trouble.isEmpty());
        QCOMPARE(bench.trouble.constFirst(),
                 served.at.text() +
                     ": state: memory.scenario: must be \"cascade\" as in the scenario");
        QVERIFY(!bench.remote.isAtHand());
        QCOMPARE(bench.remote.controllers().size(), 3);
    }

    void damagedStateIsToldAndTheNextOneTaken()
    {
        const QByteArray state = stateOf("single");
        ScriptedPeer peer({[&](PeerConnection& connection) {
            connection.readLine();
            connection.write("#state ok " + state.left(100) + "\nstate \n" + "garbage\n\n" +
                             QByteArray(10000000, 'x') + "\nstate " + state + '\n');
            connection.waitUntilClosed();
        }});
        Bench bench(peer.endpoint(), "single");
        QTRY_VERIFY(bench.remote.isAtHand());
        QCOMPARE(bench.trouble.size(), 2);
        for (const QString& text : qAsConst(bench.trouble))
            QVERIFY2(text.startsWith(peer.endpoint().text() + ": state: line 1"), qPrintable(text));
    }

    void answersThatNobodyAskedForDoNoHarm()
    {
        const QByteArray state = stateOf("single");
        ScriptedPeer peer({[&](PeerConnection& connection) {
            connection.readLine();
            connection.write(("#state ok " + state + '\n').repeated(3));
            connection.readLine();
            QThread::msleep(100);
            connection.write("#state ok " + QByteArray(state).replace("\"off\"", "\"running\"") +
                             '\n');
            connection.waitUntilClosed();
        }});
        Bench bench(peer.endpoint(), "single");
        const QSignalSpy changed(&bench.remote, &TestBench::changed);
        QTRY_COMPARE(changed.size(), 3);
        bench.remote.catchUp();
        QCOMPARE(bench.remote.measurement(), Measurement::Running);
    }

    void catchingUpSeesWhatWasDone()
    {
        ScriptedPeer peer({[&](PeerConnection& connection) {
            connection.readLine();
            connection.write("#state ok " + stateOf("single") + '\n');
            connection.readLine();
            connection.write("#state ok " + stateOf("single").replace("\"off\"", "\"running\"") +
                             '\n');
            connection.waitUntilClosed();
        }});
        Bench bench(peer.endpoint(), "single");
        QTRY_VERIFY(bench.remote.isAtHand());
        QCOMPARE(bench.remote.measurement(), Measurement::Off);
        bench.remote.catchUp();
        QCOMPARE(bench.remote.measurement(), Measurement::Running);
        QCOMPARE(peer.lines(), (QList<QByteArray>{"#state bench watch", "#state bench state"}));
    }

    void catchingUpTakesASecondAtMost_data()
    {
        QTest::addColumn<bool>("listens");
        QTest::newRow("with a peer that does not answer") << true;
        QTest::newRow("without a peer") << false;
    }

    void catchingUpTakesASecondAtMost()
    {
        QFETCH(const bool, listens);
        ScriptedPeer peer({[](PeerConnection& connection) {
            connection.waitUntilClosed();
        }});
        Bench bench(listens ? peer.endpoint() : deadEndpoint(), "single");
        QElapsedTimer clock;
        clock.start();
        const std::clock_t cpuBefore = std::clock();
        bench.remote.catchUp();
        QVERIFY2(clock.elapsed() < 1000 + marginMs, qPrintable(QString::number(clock.elapsed())));
        QVERIFY(!bench.remote.isAtHand());
        // It waits, and does not spin.
        QVERIFY(double(std::clock() - cpuBefore) / CLOCKS_PER_SEC < 0.5);
    }
};

ZAN_TEST_MAIN(TestRemoteBench)
#include "tst_remotebench.moc"
