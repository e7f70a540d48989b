#include <simulatorfixtures.h>

#include <updateturn.h>

#include <testmain.h>

namespace {

constexpr int never = patienceMs;

/// A system that two peers want to update.
struct Contest
{
    explicit Contest(const UpdateTurn::Patience& patience = {never, never}) : turn(system, patience)
    {
    }

    QString ann(Operation operation, const QByteArray& text)
    {
        return turn.whyNot(first, "ann@console", operation, text);
    }
    QString ben(Operation operation, const QByteArray& text)
    {
        return turn.whyNot(second, "ben@desk", operation, text);
    }
    QString holder() const { return system.state().updatedBy; }

    SimulatedSystem system{shippedScenario("cascade")};
    UpdateTurn turn;
    QObject first;
    QObject second;
};

const QByteArray redirection = "system redirect_update none";
const QByteArray record = "system update 9 1 AB";
const QString annUpdates = "ann@console updates the system";

} // namespace

class TestUpdateTurn : public QObject
{
    Q_OBJECT

private slots:
    void turnBeginsWithTheFirstTextOfAnUpdate_data()
    {
        QTest::addColumn<Operation>("operation");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<bool>("begins");
        QTest::newRow("redirection") << Operation::SetValue << redirection << true;
        QTest::newRow("tracking software") << Operation::SetValue << record << true;
        QTest::newRow("controller firmware")
            << Operation::SetValue << QByteArray("system ctupdt 9 1 AB") << true;
        QTest::newRow("camera firmware")
            << Operation::Command << QByteArray("vornix2 set camera update c01 9 1 AB") << true;
        QTest::newRow("a query of that name") << Operation::GetString << record << false;
        QTest::newRow("another setting")
            << Operation::SetValue << QByteArray("system net dhcp") << false;
        QTest::newRow("another command")
            << Operation::Command << QByteArray("vornix2 reinit") << false;
    }

    void turnBeginsWithTheFirstTextOfAnUpdate()
    {
        QFETCH(const Operation, operation);
        QFETCH(const QByteArray, text);
        QFETCH(const bool, begins);
        Contest contest;
        QCOMPARE(contest.holder(), QString());
        QCOMPARE(contest.ann(operation, text), QString());
        QCOMPARE(contest.holder(), begins ? QString("ann@console") : QString());
        QCOMPARE(contest.ben(Operation::SetValue, record), begins ? annUpdates : QString());
    }

    void othersMayDoWhatDoesNotDisturb_data()
    {
        QTest::addColumn<Operation>("operation");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<bool>("may");
        QTest::newRow("a query") << Operation::GetString << QByteArray("system version") << true;
        QTest::newRow("a number") << Operation::GetInt << QByteArray("system model") << true;
        QTest::newRow("a command without consequences")
            << Operation::Command << QByteArray("vornix2 tracking stop") << true;
        QTest::newRow("a redirection") << Operation::SetValue << redirection << false;
        QTest::newRow("a record") << Operation::SetValue << record << false;
        QTest::newRow("a record for a camera")
            << Operation::Command << QByteArray("vornix2 set camera update c01 9 1 AB") << false;
        QTest::newRow("a search") << Operation::Command << QByteArray("vornix2 reinit") << false;
        QTest::newRow("a restart")
            << Operation::Command << QByteArray("vornix2 system reboot") << false;
        QTest::newRow("a shut-down")
            << Operation::Command << QByteArray("vornix2 system shutdown") << false;
    }

    void othersMayDoWhatDoesNotDisturb()
    {
        QFETCH(const Operation, operation);
        QFETCH(const QByteArray, text);
        QFETCH(const bool, may);
        Contest contest;
        contest.ann(Operation::SetValue, redirection);
        QCOMPARE(contest.ben(operation, text), may ? QString() : annUpdates);
        // The one who updates may do all of it.
        QCOMPARE(contest.ann(operation, text), QString());
    }

    void turnEndsWithItsPeer()
    {
        Contest contest;
        contest.ann(Operation::SetValue, record);
        contest.turn.leave(contest.second);
        QCOMPARE(contest.holder(), QString("ann@console"));
        contest.turn.leave(contest.first);
        QCOMPARE(contest.holder(), QString());
        QCOMPARE(contest.ben(Operation::SetValue, record), QString());
        QCOMPARE(contest.holder(), QString("ben@desk"));
        QCOMPARE(contest.ann(Operation::SetValue, record), QString("ben@desk updates the system"));
    }

    void turnEndsWhenItsPeerGoesOnToOtherTexts()
    {
        Contest contest({never, 50});
        contest.ann(Operation::SetValue, record);
        // Those of others change nothing.
        contest.ben(Operation::GetString, "system version");
        QTest::qWait(150); // nothing is to happen, so there is nothing to wait for
        QCOMPARE(contest.holder(), QString("ann@console"));
        contest.ann(Operation::GetString, "system version");
        QCOMPARE(contest.holder(), QString("ann@console"));
        QTRY_COMPARE(contest.holder(), QString());
    }

    void turnGoesOnWithTheNextRecord()
    {
        Contest contest({never, 50});
        contest.ann(Operation::SetValue, record);
        contest.ann(Operation::GetString, "system version");
        contest.ann(Operation::SetValue, record);
        QTest::qWait(150); // as above
        QCOMPARE(contest.holder(), QString("ann@console"));
    }

    void silentPeerLosesItsTurn()
    {
        Contest contest({50, never});
        contest.ann(Operation::SetValue, record);
        QTRY_COMPARE(contest.holder(), QString());
    }
};

ZAN_TEST_MAIN(TestUpdateTurn)
#include "tst_updateturn.moc"
