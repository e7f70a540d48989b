#include "scriptedchannel.h"
#include "testmain.h"

#include <MessageReceiver>

class TestScriptedChannel : public QObject
{
    Q_OBJECT

private slots:
    void logsEveryCallInItsForm();
    void answersInTurnAndRepeatsTheLast();
    void failsWithANumberAndWritesNothing();
    void prefersTheWholeTextAndThenTheLongestPrefix();
    void failsUnscriptedQueriesAndPassesTheRest();
    void writesNoMoreThanTheContractAllows();
    void writesAPreparedReplyWhenItIsPolled();
    void keepsAPreparedReplyThatDoesNotArrive();
    void deliversMessagesToTheirReceivers();
    void callsTheHookBeforeItAnswers();
    void failsEverythingOnceItIsDead();
};

void TestScriptedChannel::logsEveryCallInItsForm()
{
    ScriptedChannel channel;
    char text[200];
    int number = 0;
    channel.prepare_reply(1, 20000, 1);
    channel.set_value("system %s %d %d %s", "update", 2, 1, "BIwA");
    channel.poll_reply(3);
    channel.send_command(text, "vornix2 reinit");
    channel.get_string(text, "cascade connected_slave d%2.2d", 3);
    channel.get_int(&number, "system model%s", "");
    channel.post_message("standard", "VORNIX3", 1, "a line");
    channel.register_receiver("UpdateModule", nullptr);
    channel.get_address(text);
    QCOMPARE(channel.takeLog(), (QStringList{
                                    R"(prepare_reply 1 20000 1)",
                                    R"(set_value "system update 2 1 BIwA")",
                                    R"(poll_reply 3)",
                                    R"(send_command "vornix2 reinit")",
                                    R"(get_string "cascade connected_slave d03")",
                                    R"(get_int "system model")",
                                    R"(post_message standard VORNIX3 1 "a line")",
                                    R"(register_receiver UpdateModule)",
                                    R"(get_address)",
                                }));
    QVERIFY(channel.log().isEmpty());
}

void TestScriptedChannel::answersInTurnAndRepeatsTheLast()
{
    ScriptedChannel channel;
    channel.on("a").fail().reply(5).reply("7");
    int number = 0;
    QVERIFY(channel.get_int(&number, "a") != 0);
    QCOMPARE(channel.get_int(&number, "a"), 0);
    QCOMPARE(number, 5);
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(channel.get_int(&number, "a"), 0);
        QCOMPARE(number, 7);
    }
}

void TestScriptedChannel::failsWithANumberAndWritesNothing()
{
    ScriptedChannel channel;
    channel.on("a").failWith(-4);
    char text[200] = "earlier";
    QCOMPARE(channel.get_string(text, "a"), -4);
    QCOMPARE(text, "earlier");
}

void TestScriptedChannel::prefersTheWholeTextAndThenTheLongestPrefix()
{
    ScriptedChannel channel;
    channel.onPrefix("a").reply("short");
    channel.onPrefix("a b").reply("long");
    channel.on("a b c").reply("whole");
    char text[200];
    channel.get_string(text, "a b c");
    QCOMPARE(text, "whole");
    channel.get_string(text, "a b d");
    QCOMPARE(text, "long");
    channel.get_string(text, "a c");
    QCOMPARE(text, "short");
    QVERIFY(channel.get_string(text, "b") != 0);
}

void TestScriptedChannel::failsUnscriptedQueriesAndPassesTheRest()
{
    ScriptedChannel channel;
    char text[200];
    int number = 0;
    QVERIFY(channel.get_string(text, "a") != 0);
    QVERIFY(channel.get_int(&number, "a") != 0);
    QCOMPARE(channel.set_value("a"), 0);
    QCOMPARE(channel.send_command(text, "a"), 0);
    QCOMPARE(text, "vornix2 ok");
    QCOMPARE(channel.poll_reply(3), 0);
}

void TestScriptedChannel::writesNoMoreThanTheContractAllows()
{
    ScriptedChannel channel;
    channel.on("long").reply(QByteArray(1000, 'x'));
    channel.on("raw").replyUnterminated(QByteArray(1000, 'y'));
    QByteArray buffer(300, '#');
    channel.get_string(buffer.data(), "long");
    QCOMPARE(buffer, QByteArray(199, 'x') + '\0' + QByteArray(100, '#'));
    channel.get_string(buffer.data(), "raw");
    QCOMPARE(buffer, QByteArray(200, 'y') + QByteArray(100, '#'));
}

void TestScriptedChannel::writesAPreparedReplyWhenItIsPolled()
{
    ScriptedChannel channel;
    char text[200] = "before";
    channel.prepare_reply(1, 1000, 0);
    QCOMPARE(channel.send_command(text, "vornix2 reinit"), 0);
    QCOMPARE(text, "before");
    QCOMPARE(channel.poll_reply(3), 0);
    QCOMPARE(text, "vornix2 ok");
}

void TestScriptedChannel::keepsAPreparedReplyThatDoesNotArrive()
{
    ScriptedChannel channel;
    channel.onPoll().fail().succeed();
    char text[200] = "before";
    channel.prepare_reply(1, 1000, 0);
    channel.send_command(text, "vornix2 reinit");
    QVERIFY(channel.poll_reply(3) != 0);
    QCOMPARE(text, "before");
    QCOMPARE(channel.poll_reply(3), 0);
    QCOMPARE(text, "before");
}

struct Receiver final : MessageReceiver
{
    int transmit_message(int type, const char* src, const char* msg) override
    {
        received += QStringLiteral("%1 %2 %3").arg(type).arg(src, msg);
        return 0;
    }

    QStringList received;
};

void TestScriptedChannel::deliversMessagesToTheirReceivers()
{
    ScriptedChannel channel;
    Receiver receiver;
    channel.register_receiver("UpdateModule", &receiver);
    channel.post_message("UpdateModule", "Main_Window", 2, "DarkThemeEnabled");
    channel.post_message("standard", "VORNIX3", 1, "a line");
    QCOMPARE(receiver.received, QStringList("2 Main_Window DarkThemeEnabled"));
    QCOMPARE(channel.messagesTo("standard"), QStringList("a line"));

    channel.forgetReceivers();
    channel.post_message("UpdateModule", "Main_Window", 2, "DarkThemeDisabled");
    QCOMPARE(receiver.received.size(), 1);
}

void TestScriptedChannel::callsTheHookBeforeItAnswers()
{
    ScriptedChannel channel;
    QStringList calls;
    channel.setHook([&](const QString& call) {
        calls += call;
        channel.on("a").reply("from the hook");
    });
    char text[200];
    QCOMPARE(channel.get_string(text, "a"), 0);
    QCOMPARE(text, "from the hook");
    QCOMPARE(calls, QStringList(R"(get_string "a")"));
}

void TestScriptedChannel::failsEverythingOnceItIsDead()
{
    ScriptedChannel channel;
    channel.on("a").reply("alive");
    channel.die();
    char text[200] = "before";
    int number = 3;
    QVERIFY(channel.get_string(text, "a") != 0);
    QVERIFY(channel.get_int(&number, "a") != 0);
    QVERIFY(channel.set_value("a") != 0);
    QVERIFY(channel.send_command(text, "a") != 0);
    QVERIFY(channel.poll_reply(3) != 0);
    QCOMPARE(text, "before");
    QCOMPARE(number, 3);
}

ZAN_TEST_MAIN(TestScriptedChannel)

#include "tst_scriptedchannel.moc"
