#include "scriptedlink.h"

#include <hostchannel.h>
#include <linewatch.h>

#include <testmain.h>

namespace {

/// A watch on a scripted line, with a clock that stands still unless it is set.
struct Watched
{
    /// A watch that has got its first answer.
    void connect()
    {
        line.answer("zan-master");
        watch.look();
        line.log.clear();
    }

    /// Looks now and then for as long as @p ms.
    void pass(qint64 ms)
    {
        for (const qint64 endMs = nowMs + ms; nowMs < endMs; nowMs += 100)
            watch.look();
    }

    /// Looks on without an answer until the watch has asked in vain as often as it does.
    void fallSilent() { pass(LineWatch::quietMs + 2 * LineWatch::answerMs + 200); }

    ScriptedLink line;
    qint64 nowMs = 5000;
    LineWatch watch{line, [this] {
                        return nowMs;
                    }};
};

const QStringList question = {"get_string system hostname", "wait"};

} // namespace

class TestLineWatch : public QObject
{
    Q_OBJECT

private slots:
    void nothingIsKnownAtFirst()
    {
        const Watched it;
        QVERIFY(!it.watch.isAnswering());
        QVERIFY(!it.watch.lastAnswer().isValid());
        QVERIFY(it.line.log.isEmpty());
    }

    void firstAnswerIsAskedForAtOnce()
    {
        Watched it;
        it.line.answer("zan-master");
        const QDateTime before = QDateTime::currentDateTime();
        it.watch.look();
        QVERIFY(it.watch.isAnswering());
        QVERIFY(it.watch.lastAnswer() >= before);
        QCOMPARE(it.line.log, question);
        QCOMPARE(it.line.waitedMs, QVector<int>{0});
    }

    // What the controllers say is no matter, as long as they speak.
    void refusalIsAnAnswer()
    {
        Watched it;
        it.line.answer(Reply());
        it.watch.look();
        QVERIFY(it.watch.isAnswering());
    }

    void quietLineIsAskedNowAndThen()
    {
        Watched it;
        it.connect();
        it.pass(LineWatch::quietMs);
        QCOMPARE(it.line.log, QStringList());
        it.line.answer("zan-master");
        it.pass(LineWatch::quietMs);
        QCOMPARE(it.line.log, question);
    }

    void lineThatIsUsedIsNotAsked()
    {
        Watched it;
        it.connect();
        for (int i = 0; i < 30; ++i) {
            it.line.answer("ok");
            it.watch.send(Operation::SetValue, "system update 9 1 a");
            QVERIFY(it.watch.wait(5000));
            it.pass(LineWatch::quietMs - 100);
        }
        QVERIFY2(!it.line.log.contains(question.constFirst()), qPrintable(it.line.log.join('\n')));
    }

    void oneLostAnswerIsNoLoss()
    {
        Watched it;
        it.connect();
        it.pass(LineWatch::quietMs + LineWatch::answerMs + 100);
        it.line.answer("zan-master");
        it.pass(100);
        QVERIFY(it.watch.isAnswering());
        QCOMPARE(it.line.log.count(question.constFirst()), 2);
        QCOMPARE(it.line.hungUp, 0);
    }

    void silenceIsALossAndHangsUp()
    {
        Watched it;
        it.connect();
        const QDateTime last = it.watch.lastAnswer();
        it.pass(LineWatch::quietMs + 2 * LineWatch::answerMs);
        QVERIFY(it.watch.isAnswering());
        it.pass(200);
        QVERIFY(!it.watch.isAnswering());
        QCOMPARE(it.watch.lastAnswer(), last);
        QCOMPARE(it.line.hungUp, 1);
        QCOMPARE(it.line.log.count(question.constFirst()), 2);
    }

    void silentLineIsAskedUntilItAnswers()
    {
        Watched it;
        it.connect();
        it.fallSilent();
        it.pass(3 * 2 * LineWatch::answerMs + 1000);
        QCOMPARE(it.line.hungUp, 4);
        QVERIFY(!it.watch.isAnswering());
        it.line.answer("zan-master");
        it.pass(100);
        QVERIFY(it.watch.isAnswering());
    }

    void brokenConnectionIsALossAtOnce_data()
    {
        QTest::addColumn<bool>("reachable");
        QTest::addColumn<quint64>("connection");
        QTest::newRow("it was made anew") << true << quint64(2);
        QTest::newRow("the controllers are down") << false << quint64(2);
        QTest::newRow("nobody knows of a loss yet") << false << quint64(1);
    }

    void brokenConnectionIsALossAtOnce()
    {
        QFETCH(const bool, reachable);
        QFETCH(const quint64, connection);
        Watched it;
        it.connect();
        it.line.reachable = reachable;
        it.line.connectionNumber = connection;
        it.watch.look();
        QVERIFY(!it.watch.isAnswering());
        QCOMPARE(it.line.log, QStringList());
        it.line.reachable = true;
        it.line.answer("zan-master");
        it.watch.look();
        it.watch.look();
        QVERIFY(it.watch.isAnswering());
        QCOMPARE(it.line.hungUp, 0);
    }

    void nothingIsAskedWhereNothingWouldGoOut()
    {
        Watched it;
        it.connect();
        it.line.open = false;
        it.pass(10000);
        it.line.open = true;
        it.line.reachable = false;
        it.pass(10000);
        QCOMPARE(it.line.log, QStringList());
    }

    void questionOverALostConnectionIsNotWaitedFor()
    {
        Watched it;
        it.watch.look();
        QCOMPARE(it.line.log, question);
        it.line.connectionNumber = 2;
        it.watch.look();
        it.line.answer("zan-master");
        it.watch.look();
        QVERIFY(it.watch.isAnswering());
    }

    void channelIsNotDisturbedWhileItAwaitsAReply()
    {
        Watched it;
        it.connect();
        it.watch.send(Operation::Command, "vornix2 reinit");
        it.pass(60000);
        QCOMPARE(it.line.log, QStringList{"command vornix2 reinit"});
        it.line.duringWait = [&] {
            it.nowMs += 60000;
            it.watch.look();
            it.watch.ask();
        };
        it.line.answer("vornix2 ok");
        QVERIFY(it.watch.wait(20000));
        QCOMPARE(it.line.log, (QStringList{"command vornix2 reinit", "wait"}));
        QVERIFY(it.watch.isAnswering());
    }

    void questionGivesWayToTheChannel()
    {
        Watched it;
        it.connect();
        it.pass(LineWatch::quietMs + 500);
        it.watch.send(Operation::GetString, "system version");
        it.pass(2 * LineWatch::answerMs);
        it.line.answer("v3.1.0");
        QCOMPARE(it.watch.wait(5000)->text, QByteArray("v3.1.0"));
        QVERIFY(it.watch.isAnswering());
        QCOMPARE(it.line.log.count(question.constFirst()), 1);
    }

    // The channel's caller is in the middle of something, and other devices may answer.
    void textsOfTheChannelWithoutAnAnswerAreALossAndKeepTheConnection()
    {
        Watched it;
        it.connect();
        for (int i = 0; i < 2; ++i) {
            QVERIFY(it.watch.isAnswering());
            it.watch.send(Operation::SetValue, "system update 9 1 a");
            QVERIFY(!it.watch.wait(5000));
        }
        QVERIFY(!it.watch.isAnswering());
        it.line.answer("ok");
        it.watch.send(Operation::SetValue, "system update 9 1 a");
        QVERIFY(it.watch.wait(5000));
        QVERIFY(it.watch.isAnswering());
        QCOMPARE(it.line.hungUp, 0);
    }

    void unansweredTextAndUnansweredQuestionAreALoss()
    {
        Watched it;
        it.connect();
        it.watch.send(Operation::SetValue, "system update 9 1 a");
        QVERIFY(!it.watch.wait(5000));
        it.pass(LineWatch::answerMs + 200);
        QVERIFY(!it.watch.isAnswering());
        QCOMPARE(it.line.hungUp, 1);
    }

    void askingTellsWhetherTheLineIsAlive()
    {
        Watched it;
        it.connect();
        it.line.answer("zan-master");
        QVERIFY(it.watch.ask());
        QCOMPARE(it.line.log, question);
        QCOMPARE(it.line.waitedMs.constLast(), LineWatch::answerMs);

        // A single answer may be lost.
        it.line.log.clear();
        it.line.duringWait = [&] {
            if (it.line.log.count("wait") == 2)
                it.line.answer("zan-master");
        };
        QVERIFY(it.watch.ask());
        QCOMPARE(it.line.log, question + question);

        it.line.duringWait = {};
        QVERIFY(!it.watch.ask());
        QVERIFY(!it.watch.isAnswering());
        QCOMPARE(it.line.hungUp, 1);
        it.line.open = false;
        it.line.log.clear();
        QVERIFY(!it.watch.ask());
        QVERIFY(!it.line.log.contains(question.constFirst()));
    }

    void askingFindsALineThatAnswersAgain()
    {
        Watched it;
        it.connect();
        it.fallSilent();
        QVERIFY(!it.watch.isAnswering());
        it.line.answer("zan-master");
        QVERIFY(it.watch.ask());
        QVERIFY(it.watch.isAnswering());
    }

    void askingEndsWithTheConnection()
    {
        Watched it;
        it.connect();
        it.line.duringWait = [&] {
            it.line.connectionNumber = 2;
            it.line.open = false;
        };
        QVERIFY(!it.watch.ask());
        QCOMPARE(it.line.log, question);
        QCOMPARE(it.line.hungUp, 0);
    }

    // A module's timer runs out while the answer is waited for.
    void askingGivesWayToTheChannel()
    {
        Watched it;
        it.connect();
        HostChannel channel(it.watch);
        it.line.duringWait = [&] {
            it.line.duringWait = {};
            it.line.answer("v3.1.0");
            char version[replyBytes] = {};
            QCOMPARE(channel.get_string(version, "system version"), 0);
        };
        QVERIFY(it.watch.ask());
        QCOMPARE(it.line.log, (QStringList{"get_string system hostname", "wait",
                                           "get_string system version", "wait"}));
    }

    void windowsStayPaintedDuringLongWaits()
    {
        ScriptedLink line;
        int painted = 0;
        {
            LineWatch watch(line);
            watch.setIdleWork([&] { ++painted; });
            line.duringWait = [&] {
                line.idle();
            };
            watch.send(Operation::GetString, "system version");
            watch.wait(5000);
            QCOMPARE(painted, 1);
        }
        line.idle();
        QCOMPARE(painted, 1);
    }

    void lineIsSeenThroughTheWatch()
    {
        Watched it;
        QVERIFY(it.watch.isReachable() && it.watch.isOpen());
        it.line.reachable = false;
        it.line.open = false;
        QVERIFY(!it.watch.isReachable() && !it.watch.isOpen());
        QCOMPARE(it.watch.connection(), it.line.connectionNumber);
        QCOMPARE(it.watch.address(), it.line.linkAddress);
        it.watch.hangUp();
        QCOMPARE(it.line.hungUp, 1);
    }
};

ZAN_TEST_MAIN(TestLineWatch)
#include "tst_linewatch.moc"
