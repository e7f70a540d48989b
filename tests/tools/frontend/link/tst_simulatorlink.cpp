#include <simulatorfixtures.h>

#include <simulatorlink.h>

#include <testmain.h>

namespace {

/// A small system whose devices take the times that a test gives.
Scenario timedScenario(int recordsPerSecond, int verifyMs)
{
    Scenario scenario = shippedScenario(QStringLiteral("single"));
    scenario.timing.recordsPerSecond = recordsPerSecond;
    scenario.timing.verifyMs = verifyMs;
    scenario.faults.clear();
    return scenario;
}

QByteArray hostName(SimulatorLink& link)
{
    link.send(Operation::GetString, "system hostname");
    const std::optional<Reply> reply = link.wait(1000);
    return reply && reply->ok ? reply->text : QByteArray();
}

} // namespace

class TestSimulatorLink : public QObject
{
    Q_OBJECT

private slots:
    void replyOfTheSystemComesBack()
    {
        SimulatedSystem system(timedScenario(0, 0));
        SimulatorLink link(system, SimulatorLink::Pace::Fast);
        QCOMPARE(hostName(link), system.controllers().constFirst().hostName.toUtf8());
        QCOMPARE(link.address(), system.scenario().address());
    }

    void replyIsDeliveredOnce()
    {
        SimulatedSystem system(timedScenario(0, 0));
        SimulatorLink link(system, SimulatorLink::Pace::Fast);
        QVERIFY(!link.wait(0));
        link.send(Operation::GetString, "system hostname");
        QVERIFY(link.wait(0));
        QVERIFY(!link.wait(0));
    }

    void laterTextDropsAnEarlierReply()
    {
        SimulatedSystem system(timedScenario(0, 0));
        SimulatorLink link(system, SimulatorLink::Pace::Fast);
        link.send(Operation::GetString, "system net");
        QCOMPARE(hostName(link), system.controllers().constFirst().hostName.toUtf8());
    }

    void lateReplyMissesTheTimeOut_data()
    {
        QTest::addColumn<int>("timeoutMs");
        QTest::addColumn<bool>("comes");
        QTest::newRow("one millisecond too early") << 599999 << false;
        QTest::newRow("just in time") << 600000 << true;
    }

    void lateReplyMissesTheTimeOut()
    {
        QFETCH(const int, timeoutMs);
        SimulatedSystem system(timedScenario(0, 0));
        system.armFault(faultAt(FaultMode::AnswerLate, "system hostname", 600000));
        SimulatorLink link(system, SimulatorLink::Pace::Fast);
        link.send(Operation::GetString, "system hostname");
        QTEST(link.wait(timeoutMs).has_value(), "comes"); // nobody waits at the fast pace
    }

    void lostConnectionAnswersNothing()
    {
        SimulatedSystem system(timedScenario(0, 0));
        SimulatorLink link(system, SimulatorLink::Pace::Device);
        system.restart();
        link.send(Operation::GetString, "system hostname");
        QVERIFY(!link.wait(600000)); // there is nothing to wait for
    }

    void silenceLastsUntilTheTimeOut()
    {
        SimulatedSystem system(timedScenario(0, 0));
        system.armFault(faultAt(FaultMode::StaySilent, "system hostname"));
        SimulatorLink link(system, SimulatorLink::Pace::Device);
        QElapsedTimer elapsed;
        elapsed.start();
        link.send(Operation::GetString, "system hostname");
        QVERIFY(!link.wait(200));
        QVERIFY(elapsed.elapsed() >= 200);
        QVERIFY(!hostName(link).isEmpty());
    }

    // So that a run can be watched.
    void recordsTakeTheTimeOfTheDevice()
    {
        SimulatedSystem system(timedScenario(2000, 0));
        SimulatorLink link(system, SimulatorLink::Pace::Device);
        const QList<QByteArray> records =
            recordTexts(makePayload({PayloadComponent::TrackingSoftware, {9, 9, 9}, {}}, 48000, 1));
        QElapsedTimer elapsed;
        elapsed.start();
        for (int i = 0; i < records.size(); ++i) {
            link.send(Operation::SetValue, "system update " + QByteArray::number(records.size()) +
                                               ' ' + QByteArray::number(i + 1) + ' ' + records[i]);
            const std::optional<Reply> reply = link.wait(5000);
            QVERIFY(reply && reply->ok);
        }
        const qint64 idealMs = records.size() * 1000 / 2000;
        QVERIFY2(elapsed.elapsed() >= idealMs - 60, qPrintable(QString::number(elapsed.elapsed())));
    }

    void idleWorkIsDoneDuringLongWaitsOnly()
    {
        SimulatedSystem system(timedScenario(0, 0));
        system.armFault(faultAt(FaultMode::AnswerLate, "system net", 1000));
        SimulatorLink link(system, SimulatorLink::Pace::Device);
        int idle = 0;
        link.setIdleWork([&] { ++idle; });
        hostName(link);
        QCOMPARE(idle, 0);
        link.send(Operation::GetString, "system net");
        QVERIFY(link.wait(5000));
        QVERIFY(idle >= 2);
    }
};

ZAN_TEST_MAIN(TestSimulatorLink)
#include "tst_simulatorlink.moc"
