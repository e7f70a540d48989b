#include "transcriptfixtures.h"

#include <MessageReceiver.h>
#include <replaychannel.h>

#include <fixturefiles.h>
#include <scriptedchannel.h>
#include <testmain.h>

#include <functional>

namespace {

/// A replay of some calls, with the host that takes the messages.
struct Replay
{
    explicit Replay(const QByteArray& calls) : channel(transcriptOf(calls), host) {}

    static Transcript transcriptOf(const QByteArray& calls)
    {
        QString error;
        const std::optional<Transcript> transcript =
            Transcript::parse(sampleHeadText() + calls, "run.transcript", &error);
        if (!transcript)
            qFatal("%s", qPrintable(error));
        return *transcript;
    }

    QByteArray getString(const char* text)
    {
        char buffer[200] = "earlier";
        const int result = channel.get_string(buffer, "%s", text);
        return QByteArray::number(result) + " " + QByteArray(buffer);
    }

    ScriptedChannel host;
    ReplayChannel channel;
};

class SilentReceiver final : public MessageReceiver
{
public:
    int transmit_message(int /*type*/, const char* /*src*/, const char* msg) override
    {
        texts += msg;
        return 0;
    }
    QList<QByteArray> texts;
};

using Exchange = std::function<void(IOManager&)>;

} // namespace

Q_DECLARE_METATYPE(Exchange)

class TestReplayChannel : public QObject
{
    Q_OBJECT

private slots:
    void repliesComeBackAsRecorded();
    void aPreparedReplyComesWithItsPoll();
    void aPollWithoutAPreparationWritesNowhere();
    void whatPassesAHostComesBackByteForByte_data();
    void whatPassesAHostComesBackByteForByte();
    void messagesAndReceiversGoToTheHost();
    void firstDepartureIsReported_data();
    void firstDepartureIsReported();
    void afterADepartureEverythingFails();
    void callsThatAreLeftOverAreReported();
};

void TestReplayChannel::repliesComeBackAsRecorded()
{
    Replay replay("get_string \"a\" = 0 \"alpha\"\n"
                  "get_string \"b\" = -7\n"
                  "get_string \"c\" = 1 \"left behind\"\n"
                  "get_int \"d\" = 0 -21\n"
                  "get_int \"e\" = 2\n"
                  "set_value \"f\" = 3\n"
                  "send_command \"g\" = 0 \"vornix2 ok\"\n"
                  "get_address = \"192.168.7.20\"\n");
    QCOMPARE(replay.getString("a"), QByteArray("0 alpha"));
    QCOMPARE(replay.getString("b"), QByteArray("-7 earlier"));
    QCOMPARE(replay.getString("c"), QByteArray("1 left behind"));
    int value = 5;
    QCOMPARE(replay.channel.get_int(&value, "%c", 'd'), 0);
    QCOMPARE(value, -21);
    QCOMPARE(replay.channel.get_int(&value, "e"), 2);
    QCOMPARE(value, -21);
    QCOMPARE(replay.channel.set_value("f"), 3);
    char buffer[200] = "";
    QCOMPARE(replay.channel.send_command(buffer, "g"), 0);
    QCOMPARE(QByteArray(buffer), QByteArray("vornix2 ok"));
    replay.channel.get_address(buffer);
    QCOMPARE(QByteArray(buffer), QByteArray("192.168.7.20"));
    QCOMPARE(replay.channel.verdict(), QString());
    QCOMPARE(replay.host.log(), QStringList());
}

void TestReplayChannel::aPreparedReplyComesWithItsPoll()
{
    Replay replay("prepare_reply 1 9000 0\n"
                  "send_command \"vornix2 reinit\" = 0\n"
                  "poll_reply 3 = 0 \"vornix2 ok\"\n"
                  "prepare_reply 1 9000 1\n"
                  "send_command \"vornix2 reinit\" = 0\n"
                  "poll_reply 3 = 5\n"
                  "prepare_reply 1 20000 1\n"
                  "set_value \"system update 1 1 A\" = 0\n"
                  "poll_reply 3 = 0\n");
    char reply[200] = "earlier";
    replay.channel.prepare_reply(1, 9000, 0);
    QCOMPARE(replay.channel.send_command(reply, "vornix2 reinit"), 0);
    QCOMPARE(QByteArray(reply), QByteArray("earlier"));
    QCOMPARE(replay.channel.poll_reply(3), 0);
    QCOMPARE(QByteArray(reply), QByteArray("vornix2 ok"));
    replay.channel.prepare_reply(1, 9000, 1);
    replay.channel.send_command(reply, "vornix2 reinit");
    QCOMPARE(replay.channel.poll_reply(3), 5);
    QCOMPARE(QByteArray(reply), QByteArray("vornix2 ok"));
    replay.channel.prepare_reply(1, 20000, 1);
    QCOMPARE(replay.channel.set_value("system update %d %d %s", 1, 1, "A"), 0);
    QCOMPARE(replay.channel.poll_reply(3), 0);
    QCOMPARE(replay.channel.verdict(), QString());
}

void TestReplayChannel::aPollWithoutAPreparationWritesNowhere()
{
    Replay replay("send_command \"a\" = 0 \"b\"\n"
                  "poll_reply 3 = 0 \"late\"\n"
                  "prepare_reply 1 9000 1\n"
                  "send_command \"a\" = 0\n"
                  "prepare_reply 1 9000 1\n"
                  "set_value \"c\" = 0\n"
                  "poll_reply 3 = 0 \"late\"\n");
    char reply[200] = "";
    replay.channel.send_command(reply, "a");
    replay.channel.poll_reply(3);
    QCOMPARE(QByteArray(reply), QByteArray("b"));
    replay.channel.prepare_reply(1, 9000, 1);
    replay.channel.send_command(reply, "a");
    replay.channel.prepare_reply(1, 9000, 1);
    replay.channel.set_value("c");
    QCOMPARE(replay.channel.poll_reply(3), 0);
    QCOMPARE(QByteArray(reply), QByteArray("b"));
    QCOMPARE(replay.channel.verdict(), QString());
}

void TestReplayChannel::whatPassesAHostComesBackByteForByte_data()
{
    QTest::addColumn<QByteArray>("reply"); ///< as the host writes it
    QTest::newRow("an empty one") << QByteArray();
    QTest::newRow("the first half of all bytes") << everyByte().left(128);
    QTest::newRow("the second half of all bytes") << everyByte().mid(128);
    QTest::newRow("one of 198 bytes") << QByteArray(198, 'x');
    QTest::newRow("one of 199 bytes") << QByteArray(199, 'x');
    QTest::newRow("one of 200 bytes, without a zero") << QByteArray(200, 'x');
}

void TestReplayChannel::whatPassesAHostComesBackByteForByte()
{
    QFETCH(const QByteArray, reply);
    const FixtureFolder folder;
    ScriptedChannel host;
    const QByteArray written = reply.size() < 200 ? reply + '\0' : reply;
    host.on(everyByte()).replyUnterminated(written);
    RecordingChannel recorder(host, folder.path("run"), sampleHead(), "tests v1");
    // Bytes behind the reply show whether more is written than was.
    QByteArray recorded(201, '#');
    const int result = recorder.get_string(recorded.data(), "%s", everyByte().constData());

    QString error;
    const std::optional<Transcript> transcript = Transcript::read(folder.path("run"), &error);
    QVERIFY2(transcript, qPrintable(error));
    ReplayChannel channel(*transcript, host);
    QByteArray replayed(201, '#');
    QCOMPARE(channel.get_string(replayed.data(), "%s", everyByte().constData()), result);
    QCOMPARE(replayed, recorded);
    QCOMPARE(channel.verdict(), QString());
}

void TestReplayChannel::messagesAndReceiversGoToTheHost()
{
    Replay replay("register_receiver \"UpdateModule\"\n"
                  "post_message \"UpdateModule\" \"Main_Window\" 1 \"v3.3.0\"\n");
    SilentReceiver receiver;
    replay.channel.register_receiver("UpdateModule", &receiver);
    replay.channel.post_message("UpdateModule", "Main_Window", 1, "v3.3.0");
    replay.host.post_message("UpdateModule", "Main_Window", 1, "DarkThemeEnabled");
    QCOMPARE(receiver.texts, (QList<QByteArray>{"v3.3.0", "DarkThemeEnabled"}));
    QCOMPARE(replay.channel.verdict(), QString());
}

void TestReplayChannel::firstDepartureIsReported_data()
{
    QTest::addColumn<Exchange>("first");
    QTest::addColumn<QString>("departure");
    QTest::newRow("another text") << Exchange([](IOManager& c) { c.set_value("system b"); })
                                  << "line 8: expected set_value \"system a\", called set_value "
                                     "\"system b\"";
    QTest::newRow("a longer text") << Exchange([](IOManager& c) { c.set_value("system a "); })
                                   << "line 8: expected set_value \"system a\", called set_value "
                                      "\"system a \"";
    QTest::newRow("another operation") << Exchange([](IOManager& c) {
        char buffer[200];
        c.send_command(buffer, "system a");
    }) << "line 8: expected set_value \"system a\", called send_command \"system a\"";
    QTest::newRow("a call that was left out") << Exchange([](IOManager& c) { c.poll_reply(3); })
                                              << "line 8: expected set_value \"system a\", called "
                                                 "poll_reply 3";
    QTest::newRow("another number") << Exchange([](IOManager& c) {
        c.set_value("system a");
        c.poll_reply(2);
    }) << "line 10: expected poll_reply 3, called poll_reply 2";
    QTest::newRow("a call more") << Exchange([](IOManager& c) {
        c.set_value("system a");
        c.poll_reply(3);
        c.get_address(QByteArray(200, '\0').data());
    }) << "line 11: expected the end, called get_address";
    QTest::newRow("a message") << Exchange([](IOManager& c) {
        c.post_message("standard", "VORNIX3", 1, "a \xe4");
    })
                               << "line 8: expected set_value \"system a\", called post_message "
                                  "\"standard\" \"VORNIX3\" 1 "
                                  "\"a \\xe4\"";
    QTest::newRow("a preparation") << Exchange([](IOManager& c) { c.prepare_reply(1, 2, 3); })
                                   << "line 8: expected set_value \"system a\", called "
                                      "prepare_reply 1 2 3";
    QTest::newRow("a receiver") << Exchange([](IOManager& c) {
        c.register_receiver("x", nullptr);
    }) << "line 8: expected set_value \"system a\", called register_receiver \"x\"";
    QTest::newRow("a query for a number") << Exchange([](IOManager& c) {
        int value = 0;
        c.get_int(&value, "system a");
    }) << "line 8: expected set_value \"system a\", called get_int \"system a\"";
}

void TestReplayChannel::firstDepartureIsReported()
{
    QFETCH(const Exchange, first);
    QFETCH(QString, departure);
    departure.prepend("run.transcript: ");
    Replay replay("set_value \"system a\" = 0\n\npoll_reply 3 = 0\n");
    first(replay.channel);
    QCOMPARE(replay.channel.departure(), departure);
    QCOMPARE(replay.channel.verdict(), departure);
    QCOMPARE(replay.host.messagesTo("standard").filter("run.transcript"), QStringList(departure));
    // A later one does not count.
    replay.channel.set_value("another");
    QCOMPARE(replay.channel.departure(), departure);
    QCOMPARE(replay.host.messagesTo("standard").filter("run.transcript"), QStringList(departure));
}

void TestReplayChannel::afterADepartureEverythingFails()
{
    Replay replay("get_string \"a\" = 0 \"alpha\"\n");
    QCOMPARE(replay.getString("b"), QByteArray("1 "));
    // Also what was recorded.
    QCOMPARE(replay.getString("a"), QByteArray("1 "));
    int value = 5;
    QCOMPARE(replay.channel.get_int(&value, "a"), 1);
    QCOMPARE(value, 5);
    QCOMPARE(replay.channel.set_value("a"), 1);
    char buffer[200] = "earlier";
    QCOMPARE(replay.channel.send_command(buffer, "a"), 1);
    QCOMPARE(QByteArray(buffer), QByteArray());
    qstrcpy(buffer, "earlier");
    replay.channel.prepare_reply(1, 9000, 1);
    QCOMPARE(replay.channel.send_command(buffer, "a"), 1);
    QCOMPARE(QByteArray(buffer), QByteArray("earlier"));
    QCOMPARE(replay.channel.poll_reply(3), 1);
    QCOMPARE(QByteArray(buffer), QByteArray());
    qstrcpy(buffer, "earlier");
    replay.channel.get_address(buffer);
    QCOMPARE(QByteArray(buffer), QByteArray());
    replay.channel.post_message("standard", "VORNIX3", 1, "still told");
    QCOMPARE(replay.host.messagesTo("standard").constLast(), QString("still told"));
}

void TestReplayChannel::callsThatAreLeftOverAreReported()
{
    Replay replay("set_value \"a\" = 0\nset_value \"b\" = 0\n# a\nset_value \"c\" = 0\n");
    const auto left = [](int calls, int line, const char* next) {
        return QStringLiteral("run.transcript: line %1: expected set_value \"%2\", called nothing "
                              "more; calls left over: %3")
            .arg(QString::number(line), QString(next), QString::number(calls));
    };
    QCOMPARE(replay.channel.verdict(), left(3, 8, "a"));
    replay.channel.set_value("a");
    QCOMPARE(replay.channel.verdict(), left(2, 9, "b"));
    replay.channel.set_value("b");
    QCOMPARE(replay.channel.verdict(), left(1, 11, "c"));
    replay.channel.set_value("c");
    QCOMPARE(replay.channel.verdict(), QString());
    QCOMPARE(replay.channel.departure(), QString());
    QCOMPARE(replay.host.log(), QStringList());
}

ZAN_TEST_MAIN(TestReplayChannel)
#include "tst_replaychannel.moc"
