#include <runwitness.h>

#include <testmain.h>

#include <QSignalSpy>

Q_DECLARE_METATYPE(Operation)

namespace {

Reply replyOf(const QByteArray& text, bool ok = true)
{
    Reply reply;
    reply.ok = ok;
    reply.text = text;
    return reply;
}

} // namespace

class TestRunWitness : public QObject
{
    Q_OBJECT

private slots:
    void runBeginsWithItsFirstText_data();
    void runBeginsWithItsFirstText();
    void runBeginsOnce();
    void runAfterAFailedOneIsAnother();
    void refusedRunSendsNothingUntilItIsOver_data();
    void refusedRunSendsNothingUntilItIsOver();
    void restartIsToldIfItWasTaken_data();
    void restartIsToldIfItWasTaken();
    void lastAnswersMakeAReport();
};

void TestRunWitness::runBeginsWithItsFirstText_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("begins");
    QTest::newRow("redirection") << Operation::SetValue << QByteArray("system redirect_update none")
                                 << true;
    QTest::newRow("tracking software, where there is no redirection")
        << Operation::SetValue << QByteArray("system update 9 1 AB") << true;
    QTest::newRow("controller firmware")
        << Operation::SetValue << QByteArray("system ctupdt 9 1 AB") << true;
    QTest::newRow("camera") << Operation::Command
                            << QByteArray("vornix2 set camera update c01 9 1 AB") << true;
    QTest::newRow("a query of that name")
        << Operation::GetString << QByteArray("system update 9 1 AB") << false;
    QTest::newRow("another setting")
        << Operation::SetValue << QByteArray("system net dhcp") << false;
    QTest::newRow("another command") << Operation::Command << QByteArray("vornix2 reinit") << false;
}

void TestRunWitness::runBeginsWithItsFirstText()
{
    QFETCH(const Operation, operation);
    QFETCH(const QByteArray, text);
    RunWitness witness;
    const QSignalSpy begins(&witness, &RunWitness::runBegins);
    witness.sending(operation, text);
    QTEST(witness.isRunning(), "begins");
    QTEST(begins.count() == 1, "begins");
}

void TestRunWitness::runBeginsOnce()
{
    RunWitness witness;
    const QSignalSpy begins(&witness, &RunWitness::runBegins);
    for (int i = 0; i < 3; ++i)
        witness.sending(Operation::SetValue, "system update 9 1 AB");
    QCOMPARE(begins.count(), 1);
    witness.endRun();
    QVERIFY(!witness.isRunning());
    witness.sending(Operation::SetValue, "system update 9 1 AB");
    QCOMPARE(begins.count(), 2);
}

void TestRunWitness::runAfterAFailedOneIsAnother()
{
    RunWitness witness;
    const QSignalSpy begins(&witness, &RunWitness::runBegins);
    witness.sending(Operation::SetValue, "system update 9 1 AB");
    witness.sending(Operation::GetString, "status active");
    witness.sending(Operation::SetValue, "system update 9 1 AB");
    QCOMPARE(begins.count(), 2);
}

void TestRunWitness::refusedRunSendsNothingUntilItIsOver_data()
{
    QTest::addColumn<bool>("byQuery");
    QTest::newRow("over by what comes before the next run") << true;
    QTest::newRow("over as the module leaves") << false;
}

void TestRunWitness::refusedRunSendsNothingUntilItIsOver()
{
    QFETCH(const bool, byQuery);
    RunWitness witness;
    const QSignalSpy begins(&witness, &RunWitness::runBegins);
    const auto first = connect(&witness, &RunWitness::runBegins, &witness, &RunWitness::refuseRun);
    QVERIFY(!witness.sending(Operation::SetValue, "system redirect_update none"));
    QVERIFY(!witness.isRunning());
    QVERIFY(!witness.sending(Operation::SetValue, "system update 9 1 AB"));
    QVERIFY(!witness.sending(Operation::Command, "vornix2 set camera update c01 9 1 AB"));
    QVERIFY(witness.sending(Operation::GetString, "system version"));
    QVERIFY(witness.sending(Operation::Command, "vornix2 reinit"));
    QCOMPARE(begins.count(), 1);

    disconnect(first);
    if (byQuery)
        QVERIFY(witness.sending(Operation::GetString, "status active"));
    else
        witness.endRun();
    QVERIFY(witness.sending(Operation::SetValue, "system redirect_update none"));
    QVERIFY(witness.isRunning());
    QCOMPARE(begins.count(), 2);
}

void TestRunWitness::restartIsToldIfItWasTaken_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("isAnswered");
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<bool>("isRestart");
    const QByteArray reboot = "vornix2 system reboot";
    QTest::newRow("restart") << reboot << true << QByteArray("vornix2 ok") << true;
    QTest::newRow("shut-down") << QByteArray("vornix2 system shutdown") << true
                               << QByteArray("vornix2 ok") << true;
    QTest::newRow("no answer, as a restart may cut it off, or nothing happens")
        << reboot << false << QByteArray() << false;
    QTest::newRow("refused") << reboot << true << QByteArray("vornix2 err -3 \"busy\"") << false;
    QTest::newRow("another command")
        << QByteArray("vornix2 reinit") << true << QByteArray("vornix2 ok") << false;
}

void TestRunWitness::restartIsToldIfItWasTaken()
{
    QFETCH(const QByteArray, text);
    QFETCH(const bool, isAnswered);
    QFETCH(const QByteArray, reply);
    RunWitness witness;
    const QSignalSpy restarts(&witness, &RunWitness::restartAccepted);
    const QSignalSpy unanswered(&witness, &RunWitness::restartUnanswered);
    witness.answered(Operation::Command, text,
                     isAnswered ? std::make_optional(replyOf(reply)) : std::nullopt);
    QTEST(restarts.count() == 1, "isRestart");
    QTEST(unanswered.count() == 0, "isAnswered");
}

void TestRunWitness::lastAnswersMakeAReport()
{
    RunWitness witness;
    QVERIFY(!witness.lastAnswers().isReachable);
    witness.answered(Operation::GetString, "system hostname", replyOf("zan-master"));
    witness.answered(Operation::GetString, "system version", replyOf("v3.0.0 2024-01-01"));
    witness.answered(Operation::GetString, "system version", replyOf("v3.1.0-rc.1 2025-01-01"));
    witness.answered(Operation::GetString, "system controller_version", replyOf("v1.2"));
    Reply model;
    model.ok = true;
    model.integer = 21;
    witness.answered(Operation::GetInt, "system model", model);
    const SystemReport report = witness.lastAnswers();
    QCOMPARE(report.controllers.size(), 1);
    QCOMPARE(report.controllers.constFirst().pt, QString("v3.1.0-rc.1"));
    QCOMPARE(report.controllers.constFirst().ct, QString("v1.2"));
    QCOMPARE(report.controllers.constFirst().model, 21);

    // What is not answered any more is not known any more.
    witness.answered(Operation::GetString, "system version", std::nullopt);
    witness.answered(Operation::GetString, "system controller_version", replyOf("x", false));
    QCOMPARE(witness.lastAnswers().controllers.constFirst().pt, QString());
    QCOMPARE(witness.lastAnswers().controllers.constFirst().ct, QString());
    // But it was.
    QCOMPARE(witness.lastKnown().controllers.constFirst().pt, QString("v3.1.0-rc.1"));
    QCOMPARE(witness.lastKnown().controllers.constFirst().ct, QString("v1.2"));
}

ZAN_TEST_MAIN(TestRunWitness)
#include "tst_runwitness.moc"
