#include "scriptedpeer.h"

#include <simulatorfixtures.h>

#include <equipmentlines.h>
#include <remoteequipment.h>
#include <systemserver.h>

#include <testmain.h>

#include <QSignalSpy>

#include <ctime>
#include <memory>

namespace {

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

/// Remote equipment with what it told.
struct Remote
{
    Remote(const Endpoint& peer, const QString& scenario, const QString& name = QString())
        : equipment(peer, shippedScenario(scenario), QByteArray(), name)
    {
        QObject::connect(&equipment, &Equipment::trouble,
                         [this](const QString& text) { trouble.append(text); });
    }

    RemoteEquipment equipment;
    QStringList trouble;
};

QByteArray stateOf(const QString& scenario)
{
    return equipmentToJson(SimulatedSystem(shippedScenario(scenario)));
}

} // namespace

class TestRemoteEquipment : public QObject
{
    Q_OBJECT

private slots:
    void beforeTheFirstLookTheSystemStandsAsItsScenarioTells()
    {
        const Remote remote(deadEndpoint(), "cascade");
        QVERIFY(!remote.equipment.isAtHand());
        QVERIFY(!remote.equipment.isReachable());
        QCOMPARE(remote.equipment.msUntilReachable(), -1);
        QCOMPARE(remote.equipment.state().controllers.size(), 3);
        QCOMPARE(remote.equipment.scenario().name, QString("cascade"));
        QVERIFY(remote.trouble.isEmpty());
    }

    void systemIsSeenAndFollowed()
    {
        Served served("cameras");
        Remote remote(served.at, "cameras");
        QTRY_VERIFY(remote.equipment.isAtHand());
        QVERIFY(remote.equipment.isReachable());
        QCOMPARE(remote.equipment.msUntilReachable(), 0);
        served.system.setMeasuring(true);
        served.system.powerCycleCamera(0);
        QTRY_COMPARE(remote.equipment.state().measurement, Measurement::Running);
        QTRY_VERIFY(!remote.equipment.state().cameras.constFirst().found);
        served.system.restart();
        QTRY_VERIFY(!remote.equipment.isReachable());
        QVERIFY(remote.equipment.isAtHand());
        QVERIFY(remote.equipment.state().controllers.constFirst().rebooting);
    }

    void restOfARestartRunsOnBetweenTheStates()
    {
        Served served("cascade");
        served.system.restart();
        Remote remote(served.at, "cascade");
        QTRY_VERIFY(remote.equipment.isAtHand());
        const qint64 first = remote.equipment.msUntilReachable();
        QVERIFY(first > 0 && first <= served.system.scenario().timing.bootMs);
        QTRY_VERIFY(remote.equipment.msUntilReachable() <= first - 100);
    }

    void handsReachTheSystem()
    {
        Served served("cameras");
        served.system.disarmFaults();
        Remote remote(served.at, "cameras");
        QTRY_VERIFY(remote.equipment.isAtHand());
        remote.equipment.perform({EquipmentCommand::Kind::StartMeasurement});
        QTRY_COMPARE(served.system.measurement(), Measurement::Running);
        remote.equipment.perform({EquipmentCommand::Kind::StopMeasurement});
        QTRY_COMPARE(served.system.measurement(), Measurement::Off);
        remote.equipment.perform({EquipmentCommand::Kind::PowerCycleCamera, 1});
        QTRY_VERIFY(!served.system.cameras().at(1).found);
        Fault fault;
        fault.mode = FaultMode::StaySilent;
        fault.device = "c01";
        fault.seed = 7;
        remote.equipment.perform({EquipmentCommand::Kind::ArmFault, 0, fault});
        QTRY_COMPARE(served.system.armedFaults().size(), 1);
        QCOMPARE(commandLine({EquipmentCommand::Kind::ArmFault, 0,
                              served.system.armedFaults().constFirst()}),
                 commandLine({EquipmentCommand::Kind::ArmFault, 0, fault}));
        QTRY_COMPARE(remote.equipment.state().faults.armed().size(), 1);
        remote.equipment.perform({EquipmentCommand::Kind::DisarmFaults});
        QTRY_VERIFY(served.system.armedFaults().isEmpty());
        remote.equipment.perform({EquipmentCommand::Kind::PowerCycle});
        QTRY_COMPARE(served.system.power(), Power::Restarting);
        QVERIFY(remote.trouble.isEmpty());
    }

    void systemThatAnotherHostUpdatesIsLookedAtOnly()
    {
        Served served("cascade");
        Remote ann(served.at, "cascade", "ann@console");
        Remote ben(served.at, "cascade", "ben@desk");
        QTRY_VERIFY(ann.equipment.isAtHand() && ben.equipment.isAtHand());
        served.system.setUpdatedBy("ann@console");
        QTRY_VERIFY(ben.equipment.isInOtherHands());
        QCOMPARE(ben.equipment.state().updatedBy, QString("ann@console"));
        ben.equipment.perform({EquipmentCommand::Kind::PowerCycle});
        QCOMPARE(ben.trouble, QStringList{"ann@console updates the system, so nothing was done."});
        // She herself is no other host.
        served.system.setMeasuring(true);
        QTRY_COMPARE(ann.equipment.state().measurement, Measurement::Running);
        QVERIFY(!ann.equipment.isInOtherHands());
        QCOMPARE(served.system.power(), Power::On);

        served.system.setUpdatedBy(QString());
        QTRY_VERIFY(!ben.equipment.isInOtherHands());
        ben.equipment.perform({EquipmentCommand::Kind::PowerCycle});
        QTRY_COMPARE(served.system.power(), Power::Restarting);
    }

    void nobodyUpdatesASystemThatIsGone()
    {
        Served served("cascade");
        Remote ben(served.at, "cascade", "ben@desk");
        served.system.setUpdatedBy("ann@console");
        QTRY_VERIFY(ben.equipment.isInOtherHands());
        served.server.reset();
        QTRY_VERIFY(!ben.equipment.isAtHand());
        QVERIFY(!ben.equipment.isInOtherHands());
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
        Remote remote(peer.endpoint(), "single");
        QTRY_COMPARE(remote.trouble.size(), 2);
        QCOMPARE(remote.trouble.at(0), (peer.endpoint().text() + ": ").leftJustified(200, 'x'));
        QCOMPARE(remote.trouble.at(1), peer.endpoint().text() + ": y");
    }

    void whatTheSystemRefusesIsTold()
    {
        Served served("single");
        Remote remote(served.at, "single");
        QTRY_VERIFY(remote.equipment.isAtHand());
        remote.equipment.perform({EquipmentCommand::Kind::PowerCycleCamera, 0});
        QTRY_COMPARE(remote.trouble, QStringList{served.at.text() + ": no such camera"});
    }

    void handsDoNothingWhileTheSystemIsLost()
    {
        Served served("cameras");
        Remote remote(served.at, "cameras");
        QTRY_VERIFY(remote.equipment.isAtHand());
        const QSignalSpy changed(&remote.equipment, &Equipment::changed);
        served.server.reset();
        QTRY_VERIFY(!remote.equipment.isAtHand());
        QCOMPARE(remote.trouble,
                 QStringList{QString("The connection to %1 is lost.").arg(served.at.text())});
        QCOMPARE(changed.size(), 1);
        QVERIFY(!remote.equipment.isReachable());
        QCOMPARE(remote.equipment.msUntilReachable(), -1);
        QVERIFY(remote.equipment.state().cameras.constFirst().found); // as it was seen last

        remote.trouble.clear();
        remote.equipment.perform({EquipmentCommand::Kind::StartMeasurement});
        remote.equipment.perform({EquipmentCommand::Kind::PowerCycleCamera, 0});
        remote.equipment.perform({EquipmentCommand::Kind::PowerCycle});
        remote.equipment.perform({EquipmentCommand::Kind::ArmFault, 0, Fault()});
        remote.equipment.perform({EquipmentCommand::Kind::DisarmFaults});
        const QString nothing =
            QString("%1 cannot be reached, so nothing was done.").arg(served.at.text());
        QCOMPARE(remote.trouble, (QStringList{nothing, nothing, nothing, nothing, nothing}));

        served.listen(served.at);
        QTRY_VERIFY(remote.equipment.isAtHand());
        QCOMPARE(served.system.measurement(), Measurement::Off);
        QCOMPARE(served.system.power(), Power::On);
        QVERIFY(served.system.cameras().constFirst().found);
        QCOMPARE(remote.trouble.size(), 5);
    }

    // It holds its connection and says nothing, as when a cable is pulled. Takes the 5 s that such
    // a peer is waited for.
    void silentSystemIsNotAtHand()
    {
        const QByteArray state = stateOf("single");
        const auto tellOnce = [&](PeerConnection& connection) {
            connection.readLine();
            connection.write("#state ok " + state + '\n');
            connection.waitUntilClosed();
        };
        ScriptedPeer peer({tellOnce, tellOnce});
        Remote remote(peer.endpoint(), "single");
        QTRY_VERIFY(remote.equipment.isAtHand());
        QTRY_COMPARE(
            remote.trouble,
            QStringList{QString("The connection to %1 is lost.").arg(peer.endpoint().text())});
        QTRY_VERIFY(remote.equipment.isAtHand());
    }

    void systemThatIsThereStaysAtHand()
    {
        Served served("single");
        Remote remote(served.at, "single");
        QTRY_VERIFY(remote.equipment.isAtHand());
        QTest::qWait(LineSocket::answerMs + 2 * RemoteEquipment::quietMs); // nothing is to happen
        QVERIFY(remote.equipment.isAtHand());
        QCOMPARE(remote.trouble, QStringList());
    }

    void systemThatCameBackIsFollowedAgain()
    {
        Served served("cascade");
        Remote remote(served.at, "cascade");
        QTRY_VERIFY(remote.equipment.isAtHand());
        served.server.reset();
        QTRY_VERIFY(!remote.equipment.isAtHand());
        served.system.setMeasuring(true);
        served.listen(served.at);
        QTRY_VERIFY(remote.equipment.isAtHand());
        QCOMPARE(remote.equipment.state().measurement, Measurement::Running);
        served.system.setMeasuring(false);
        QTRY_COMPARE(remote.equipment.state().measurement, Measurement::Off);
    }

    void systemInItsPlaceIsNotTakenForIt()
    {
        Served served("cascade");
        RemoteEquipment equipment(served.at, shippedScenario("cascade"),
                                  answerEquipmentLine(served.system, "identity").text);
        QStringList trouble;
        connect(&equipment, &Equipment::trouble, &equipment,
                [&](const QString& text) { trouble += text; });
        QTRY_VERIFY(equipment.isAtHand());
        served.server.reset();
        QTRY_VERIFY(!equipment.isAtHand());
        Served other("single");
        other.listen(served.at);
        QTRY_VERIFY(equipment.isExchanged());
        other.system.setMeasuring(true);
        QTRY_VERIFY(other.system.measurement() == Measurement::Running);
        equipment.catchUp();
        QVERIFY(!equipment.isAtHand());
        QCOMPARE(trouble,
                 (QStringList{QString("The connection to %1 is lost.").arg(served.at.text()),
                              QString("Another system is served at %1 now. It is taken up when no "
                                      "window is open.")
                                  .arg(served.at.text())}));

        other.server.reset();
        served.listen(served.at);
        QTRY_VERIFY(equipment.isAtHand());
        QVERIFY(!equipment.isExchanged());
    }

    void stateOfOtherDevicesIsNotTaken()
    {
        Served served("single");
        Remote remote(served.at, "cascade");
        QTRY_VERIFY(!remote.trouble.isEmpty());
        QCOMPARE(remote.trouble.constFirst(),
                 served.at.text() +
                     ": state: memory.scenario: must be \"cascade\" as in the scenario");
        QVERIFY(!remote.equipment.isAtHand());
        QCOMPARE(remote.equipment.state().controllers.size(), 3);
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
        Remote remote(peer.endpoint(), "single");
        QTRY_VERIFY(remote.equipment.isAtHand());
        QCOMPARE(remote.trouble.size(), 2);
        for (const QString& text : qAsConst(remote.trouble))
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
        Remote remote(peer.endpoint(), "single");
        const QSignalSpy changed(&remote.equipment, &Equipment::changed);
        QTRY_COMPARE(changed.size(), 3);
        remote.equipment.catchUp();
        QCOMPARE(remote.equipment.state().measurement, Measurement::Running);
    }

    void catchingUpSeesWhatWasDone()
    {
        ScriptedPeer peer({[&](PeerConnection& connection) {
            connection.readLine();
            connection.write("#state ok " + stateOf("single") + '\n');
            connection.readLine();
            QThread::msleep(1500); // as on a busy machine
            connection.write("#state ok " + stateOf("single").replace("\"off\"", "\"running\"") +
                             '\n');
            connection.waitUntilClosed();
        }});
        Remote remote(peer.endpoint(), "single");
        QTRY_VERIFY(remote.equipment.isAtHand());
        QCOMPARE(remote.equipment.state().measurement, Measurement::Off);
        remote.equipment.catchUp();
        QCOMPARE(remote.equipment.state().measurement, Measurement::Running);
        QCOMPARE(peer.lines(), (QList<QByteArray>{"#state bench watch", "#state bench state"}));
    }

    void catchingUpEndsWithoutAnAnswer_data()
    {
        QTest::addColumn<bool>("listens");
        QTest::newRow("with a peer that does not answer") << true;
        QTest::newRow("without a peer") << false;
    }

    void catchingUpEndsWithoutAnAnswer()
    {
        QFETCH(const bool, listens);
        ScriptedPeer peer({[](PeerConnection& connection) {
            connection.waitUntilClosed();
        }});
        Remote remote(listens ? peer.endpoint() : deadEndpoint(), "single");
        const std::clock_t cpuBefore = std::clock();
        remote.equipment.catchUp();
        QVERIFY(!remote.equipment.isAtHand());
        // It waits, and does not spin.
        QVERIFY(double(std::clock() - cpuBefore) / CLOCKS_PER_SEC < 0.5);
    }
};

ZAN_TEST_MAIN(TestRemoteEquipment)
#include "tst_remoteequipment.moc"
