#include "scriptedlink.h"

#include <hostchannel.h>
#include <textreceiver.h>

#include <testmain.h>

#include <array>
#include <cstring>

namespace {

/// A buffer as callers have it, with a guard behind the bytes that the host may write.
struct Buffer
{
    Buffer() { bytes.fill('#'); }

    QByteArray text() const { return QByteArray(bytes.data()); }
    bool isGuardIntact() const
    {
        return std::all_of(bytes.begin() + replyBytes, bytes.end(),
                           [](char byte) { return byte == '#'; });
    }
    bool isUntouched() const
    {
        return std::all_of(bytes.begin(), bytes.end(), [](char byte) { return byte == '#'; });
    }

    std::array<char, replyBytes + 50> bytes;
};

Reply refusal()
{
    Reply reply;
    reply.text = QByteArrayLiteral("vornix2 err -7");
    return reply;
}

/// Writes down what it is told.
class WritingListener : public ChannelListener
{
public:
    explicit WritingListener(const ScriptedLink& link) : m_link(link) {}

    bool sending(Operation /*operation*/, const QByteArray& text) override
    {
        heard += QStringLiteral("%1 texts before %2").arg(m_link.log.size()).arg(QString(text));
        if (beforeSending)
            beforeSending();
        return !text.startsWith(refused);
    }
    void answered(Operation /*operation*/, const QByteArray& text,
                  const std::optional<Reply>& reply) override
    {
        heard += text + ": " + (reply ? reply->text : "no reply");
    }

    QStringList heard;
    QByteArray refused = "nothing"; ///< texts that begin so
    std::function<void()> beforeSending;

private:
    const ScriptedLink& m_link;
};

/// Writes down what it sees.
class WritingWatcher : public ChannelWatcher
{
public:
    void sent(Operation /*operation*/, const QByteArray& text) override { seen += "sent: " + text; }
    void answered(Operation /*operation*/, const QByteArray& text,
                  const std::optional<Reply>& reply) override
    {
        seen += text + ": " + (reply ? reply->text : "no reply");
    }

    QStringList seen;
};

} // namespace

class TestHostChannel : public QObject
{
    Q_OBJECT

private slots:
    void listenerHearsAllTexts()
    {
        ScriptedLink link;
        HostChannel channel(link);
        WritingListener listener(link);
        channel.setListener(&listener);
        char reply[replyBytes];
        link.answer(QByteArray("zan-master"));
        channel.get_string(reply, "system %s", "hostname");
        channel.set_value("system redirect_update none");
        channel.prepare_reply(1, 20000, 1);
        channel.set_value("system update 1 1 AB");
        channel.poll_reply(3);
        channel.setListener(nullptr);
        channel.set_value("system net dhcp");
        QCOMPARE(listener.heard,
                 (QStringList{"0 texts before system hostname", "system hostname: zan-master",
                              "2 texts before system redirect_update none",
                              "system redirect_update none: no reply",
                              "4 texts before system update 1 1 AB"}));
    }

    void watchersSeeAllThatIsSentAndHowItEnds()
    {
        ScriptedLink link;
        HostChannel channel(link);
        WritingWatcher watcher;
        WritingWatcher another;
        channel.addWatcher(watcher);
        channel.addWatcher(another);
        char reply[replyBytes];
        channel.get_string(reply, "system hostname");
        link.answer(refusal());
        channel.set_value("system redirect_update none");
        channel.prepare_reply(1, 20000, 1);
        channel.set_value("system update 1 1 AB");
        watcher.seen += "now it is waited for";
        link.answer(QByteArray("vornix2 ok"));
        channel.poll_reply(3);
        channel.removeWatcher(another);
        ++link.connectionNumber;
        channel.set_value("system redirect_update none");
        channel.prepare_reply(1, 20000, 1);
        channel.set_value("system update 1 1 AB");
        channel.poll_reply(3);
        const QStringList connected = {
            "sent: system hostname",
            "sent: system hostname",
            "sent: system hostname",
            "system hostname: no reply",
            "sent: system redirect_update none",
            "system redirect_update none: vornix2 err -7",
            "sent: system update 1 1 AB",
            "now it is waited for",
            "system update 1 1 AB: vornix2 ok",
        };
        QCOMPARE(watcher.seen, connected + QStringList({"system redirect_update none: no reply",
                                                        "system update 1 1 AB: no reply"}));
        QCOMPARE(another.seen.size(), connected.size() - 1);
    }

    void windowsArePaintedBetweenShortExchanges()
    {
        ScriptedLink link;
        HostChannel channel(link);
        int painted = 0;
        link.setIdleWork([&] {
            ++painted;
            channel.set_value("nothing goes out meanwhile");
        });
        while (painted < 2)
            channel.set_value("system update 9 1 AB");
        QCOMPARE(link.log.filter("nothing"), QStringList());
    }

    void textThatTheListenerRefusesIsNotSent()
    {
        ScriptedLink link;
        HostChannel channel(link);
        WritingListener listener(link);
        listener.refused = "system update";
        channel.setListener(&listener);
        link.answer("vornix2 ok");
        Buffer buffer;
        QVERIFY(channel.set_value("system update 2 1 AB") != 0);
        channel.prepare_reply(1, 20000, 1);
        QVERIFY(channel.set_value("system update 2 2 AB") != 0);
        QVERIFY(channel.poll_reply(3) != 0);
        QCOMPARE(link.log, QStringList());
        // What was prepared is over with it.
        QCOMPARE(channel.send_command(buffer.bytes.data(), "vornix2 reinit"), 0);
        QCOMPARE(link.log, (QStringList{"command vornix2 reinit", "wait"}));
        channel.setListener(nullptr);
    }

    void refusedTextDoesNotEndWithAnEarlierReply()
    {
        ScriptedLink link;
        HostChannel channel(link);
        WritingListener listener(link);
        listener.refused = "system update";
        channel.setListener(&listener);
        link.answer("vornix2 ok");
        Buffer buffer;
        channel.prepare_reply(1, 20000, 0);
        channel.send_command(buffer.bytes.data(), "vornix2 reinit"); // and nobody polls
        channel.prepare_reply(1, 20000, 1);
        QVERIFY(channel.set_value("system update 1 1 AB") != 0);
        QVERIFY(channel.poll_reply(3) != 0);
        channel.setListener(nullptr);
    }

    void listenerMayAskMeanwhile()
    {
        ScriptedLink link;
        HostChannel channel(link);
        WritingListener listener(link);
        char version[replyBytes] = {};
        listener.beforeSending = [&] {
            if (listener.heard.size() == 1)
                channel.get_string(version, "system version");
        };
        channel.setListener(&listener);
        link.answer("v3.3.0");
        link.answer(QByteArray());
        channel.prepare_reply(1, 20000, 1);
        QCOMPARE(channel.set_value("system update 1 1 AB"), 0);
        QCOMPARE(channel.poll_reply(3), 0);
        QCOMPARE(version, "v3.3.0");
        QCOMPARE(link.log, (QStringList{"get_string system version", "wait",
                                        "set_value system update 1 1 AB", "wait"}));
        QVERIFY(link.waitedMs.constLast() > 19000);
        channel.setListener(nullptr);
    }

    void lossWhileTheListenerThinksIsALoss()
    {
        ScriptedLink link;
        HostChannel channel(link);
        WritingListener listener(link);
        listener.beforeSending = [&] {
            ++link.connectionNumber;
        };
        channel.setListener(&listener);
        QVERIFY(channel.set_value("system redirect_update none") != 0);
        QCOMPARE(link.log, QStringList());
        channel.setListener(nullptr);
    }

    void queryWithoutAnAnswerIsAskedAgain_data()
    {
        QTest::addColumn<int>("answered");
        QTest::addColumn<int>("asked");
        QTest::addColumn<bool>("ok");
        QTest::newRow("answered at once") << 1 << 1 << true;
        QTest::newRow("answered at the second time") << 2 << 2 << true;
        QTest::newRow("answered at the last time") << 3 << 3 << true;
        QTest::newRow("answered too late") << 4 << 3 << false;
    }

    void queryWithoutAnAnswerIsAskedAgain()
    {
        QFETCH(const int, answered);
        QFETCH(const int, asked);
        QFETCH(const bool, ok);
        for (const bool isNumber : {false, true}) {
            ScriptedLink link;
            HostChannel channel(link);
            int waits = 0;
            link.duringWait = [&] {
                if (++waits == answered)
                    link.answer(QByteArray("v1.4"));
            };
            Buffer buffer;
            int number = 0;
            const int result = isNumber ? channel.get_int(&number, "system model")
                                        : channel.get_string(buffer.bytes.data(), "system model");
            QCOMPARE(result == 0, ok);
            QCOMPARE(waits, asked);
            QCOMPARE(link.log.size(), 2 * asked);
        }
    }

    void errorIsAnAnswer()
    {
        ScriptedLink link;
        HostChannel channel(link);
        link.answer(refusal());
        Buffer buffer;
        QVERIFY(channel.get_string(buffer.bytes.data(), "system version") != 0);
        QCOMPARE(link.log, (QStringList{"get_string system version", "wait"}));
    }

    void settingsAndCommandsAreNeverSentAgain()
    {
        ScriptedLink link;
        HostChannel channel(link);
        Buffer buffer;
        channel.set_value("system redirect_update none");
        channel.send_command(buffer.bytes.data(), "vornix2 reinit");
        channel.prepare_reply(1, 100, 1);
        channel.set_value("system update 1 1 AB");
        channel.poll_reply(3);
        QCOMPARE(link.log.filter("wait").size(), 3);
        QCOMPARE(link.log.size(), 6);
    }

    void silentPeerIsNotAskedOverAndOver()
    {
        ScriptedLink link;
        HostChannel channel(link);
        Buffer buffer;
        channel.get_string(buffer.bytes.data(), "system version");
        link.log.clear();
        channel.get_string(buffer.bytes.data(), "system hostname");
        QCOMPARE(link.log, (QStringList{"get_string system hostname", "wait"}));
        link.answer(QByteArray("zan-master"));
        QCOMPARE(channel.get_string(buffer.bytes.data(), "system hostname"), 0);
        link.log.clear();
        channel.get_string(buffer.bytes.data(), "system version");
        QCOMPARE(link.log.size(), 2 * HostChannel::maxAttempts);
    }

    void everyCallFailsAfterALoss()
    {
        ScriptedLink link;
        HostChannel channel(link);
        QStringList told;
        TextReceiver receiver(
            [&](const QString& /*sender*/, const QString& text) { told += text; });
        channel.register_receiver("standard", &receiver);
        ++link.connectionNumber;
        QVERIFY(!channel.isCurrent());
        Buffer buffer;
        int number = 0;
        QVERIFY(channel.get_string(buffer.bytes.data(), "status active") != 0);
        QVERIFY(channel.get_int(&number, "system model") != 0);
        QVERIFY(channel.set_value("system redirect_update none") != 0);
        channel.prepare_reply(1, 100, 1);
        QVERIFY(channel.set_value("system update 1 1 AB") != 0);
        QVERIFY(channel.poll_reply(3) != 0);
        QVERIFY(channel.send_command(buffer.bytes.data(), "vornix2 system reboot") != 0);
        QCOMPARE(link.log, QStringList());
        QVERIFY(buffer.isUntouched());
        QCOMPARE(told, QStringList("The connection was lost. Nothing is sent until the module is "
                                   "loaded anew, not even: status active"));

        channel.renew();
        link.answer(QByteArray("zan-master"));
        QCOMPARE(channel.get_string(buffer.bytes.data(), "system hostname"), 0);
    }

    void lossDuringAQueryEndsIt()
    {
        ScriptedLink link;
        HostChannel channel(link);
        link.duringWait = [&] {
            ++link.connectionNumber;
        };
        Buffer buffer;
        QVERIFY(channel.get_string(buffer.bytes.data(), "system version") != 0);
        QCOMPARE(link.log, (QStringList{"get_string system version", "wait"}));
    }

    void preparedReplyThatALossTookFails()
    {
        ScriptedLink link;
        HostChannel channel(link);
        channel.prepare_reply(1, 100, 1);
        QCOMPARE(channel.set_value("system update 1 1 AB"), 0);
        ++link.connectionNumber;
        QVERIFY(channel.poll_reply(3) != 0);
        QCOMPARE(link.log, (QStringList{"set_value system update 1 1 AB", "wait"}));
    }

    void textsAreExpandedAsPrintfDoes()
    {
        ScriptedLink link;
        HostChannel channel(link);
        link.duringWait = [&] {
            link.answer(QByteArray("1"));
        };
        channel.set_value("system %s %d %d %s", "update", 40, 17, "BIwA");
        char reply[replyBytes];
        channel.get_string(reply, "cascade connected_slave d%2.2d", 3);
        int number = 0;
        channel.get_int(&number, "system model%s", "");
        channel.send_command(reply, "%s", "vornix2 tracking stop");
        QCOMPARE(link.log, (QStringList{"set_value system update 40 17 BIwA", "wait",
                                        "get_string cascade connected_slave d03", "wait",
                                        "get_int system model", "wait",
                                        "command vornix2 tracking stop", "wait"}));
    }

    void textOfAnyLengthIsSentWhole_data()
    {
        QTest::addColumn<int>("length");
        for (const int length : {0, 1, 1022, 1023, 1024, 1025, 100000})
            QTest::addRow("%d characters", length) << length;
    }

    void textOfAnyLengthIsSentWhole()
    {
        QFETCH(const int, length);
        ScriptedLink link;
        HostChannel channel(link);
        const QByteArray text(length, 'x');
        channel.set_value("%s", text.constData());
        QCOMPARE(link.log.constFirst(), QString("set_value " + text));
    }

    void replyIsCutToTheBuffer_data()
    {
        QTest::addColumn<int>("length");
        QTest::addColumn<int>("expected");
        QTest::newRow("empty") << 0 << 0;
        QTest::newRow("one less than fits") << 198 << 198;
        QTest::newRow("all that fits") << 199 << 199;
        QTest::newRow("one more than fits") << 200 << 199;
        QTest::newRow("far too long") << 5000 << 199;
    }

    void replyIsCutToTheBuffer()
    {
        QFETCH(const int, length);
        QFETCH(const int, expected);
        ScriptedLink link;
        HostChannel channel(link);
        link.answer(QByteArray(length, 'r'));
        link.answer(QByteArray(length, 'c'));
        Buffer query;
        QCOMPARE(channel.get_string(query.bytes.data(), "system hostname"), 0);
        QCOMPARE(query.text(), QByteArray(expected, 'r'));
        QVERIFY(query.isGuardIntact());
        Buffer command;
        QCOMPARE(channel.send_command(command.bytes.data(), "vornix2 x"), 0);
        QCOMPARE(command.text(), QByteArray(expected, 'c'));
        QVERIFY(command.isGuardIntact());
    }

    void replyEndsAtAZeroByte()
    {
        ScriptedLink link;
        HostChannel channel(link);
        link.answer(QByteArray("dhcp\0static", 11));
        Buffer buffer;
        channel.get_string(buffer.bytes.data(), "system net");
        QCOMPARE(buffer.text(), QByteArray("dhcp"));
    }

    void numberIsDelivered()
    {
        ScriptedLink link;
        HostChannel channel(link);
        Reply reply;
        reply.ok = true;
        reply.integer = -12;
        link.answer(reply);
        int number = 5;
        QCOMPARE(channel.get_int(&number, "system model"), 0);
        QCOMPARE(number, -12);
    }

    void failureLeavesWhatTheCallerHad_data()
    {
        QTest::addColumn<bool>("isRefused");
        QTest::newRow("an error reply") << true;
        QTest::newRow("no reply in time") << false;
    }

    void failureLeavesWhatTheCallerHad()
    {
        QFETCH(const bool, isRefused);
        ScriptedLink link;
        HostChannel channel(link);
        for (int i = 0; isRefused && i < 4; ++i)
            link.answer(refusal());
        Buffer buffer;
        int number = 77;
        QVERIFY(channel.get_string(buffer.bytes.data(), "system hostname") != 0);
        QVERIFY(channel.send_command(buffer.bytes.data(), "vornix2 reinit") != 0);
        QVERIFY(channel.get_int(&number, "system model") != 0);
        QVERIFY(channel.set_value("system redirect_update none") != 0);
        QVERIFY(buffer.isUntouched());
        QCOMPARE(number, 77);
    }

    void unpreparedTextsHaveTheUsualTimeOut()
    {
        ScriptedLink link;
        HostChannel channel(link);
        link.answer("late", HostChannel::defaultTimeoutMs + 1);
        Buffer buffer;
        QVERIFY(channel.get_string(buffer.bytes.data(), "system hostname") != 0);
        QCOMPARE(link.waitedMs,
                 QVector<int>(HostChannel::maxAttempts, HostChannel::defaultTimeoutMs));
    }

    void preparedCommandDoesNotWait_data()
    {
        QTest::addColumn<int>("pollFollows");
        QTest::newRow("the poll follows directly") << 1;
        QTest::newRow("the caller returns to its events first") << 0;
    }

    void preparedCommandDoesNotWait()
    {
        QFETCH(const int, pollFollows);
        ScriptedLink link;
        HostChannel channel(link);
        link.answer("vornix2 ok", 3000);
        Buffer buffer;
        channel.prepare_reply(1, 15000, pollFollows);
        channel.send_command(buffer.bytes.data(), "vornix2 reinit");
        QCOMPARE(link.log, QStringList{"command vornix2 reinit"});
        QVERIFY(buffer.isUntouched());

        QCOMPARE(channel.poll_reply(3), 0);
        QCOMPARE(buffer.text(), QByteArray("vornix2 ok"));
        QVERIFY(link.waitedMs.constFirst() > 14000 && link.waitedMs.constFirst() <= 15000);
    }

    void timeBetweenCommandAndPollCounts()
    {
        ScriptedLink link;
        HostChannel channel(link);
        Buffer buffer;
        channel.prepare_reply(1, 60, 0);
        channel.send_command(buffer.bytes.data(), "vornix2 reinit");
        QTest::qSleep(80); // the time itself is what is tested
        QVERIFY(channel.poll_reply(3) != 0);
        QCOMPARE(link.waitedMs, QVector<int>{0});
    }

    void settingIsJudgedByThePollAlone_data()
    {
        QTest::addColumn<bool>("isTaken");
        QTest::newRow("taken") << true;
        QTest::newRow("refused") << false;
    }

    void settingIsJudgedByThePollAlone()
    {
        QFETCH(const bool, isTaken);
        ScriptedLink link;
        HostChannel channel(link);
        Reply reply = refusal();
        reply.ok = isTaken;
        link.answer(reply);
        channel.prepare_reply(1, 20000, 1);
        QCOMPARE(channel.set_value("system update 2 2 BIwA"), 0);
        QCOMPARE(channel.poll_reply(3) == 0, isTaken);
    }

    void timeOutOfAPreparedCommandLeavesTheBuffer()
    {
        ScriptedLink link;
        HostChannel channel(link);
        link.answer("vornix2 ok", 20001);
        Buffer buffer;
        channel.prepare_reply(1, 20000, 1);
        channel.send_command(buffer.bytes.data(), "vornix2 reinit");
        QVERIFY(channel.poll_reply(3) != 0);
        QVERIFY(buffer.isUntouched());
    }

    void preparationHoldsForOneCommand()
    {
        ScriptedLink link;
        HostChannel channel(link);
        link.answer("vornix2 ok");
        link.answer("vornix2 ok");
        channel.prepare_reply(1, 20000, 1);
        channel.set_value("system update 2 2 BIwA");
        channel.poll_reply(3);
        QCOMPARE(channel.set_value("system update 2 1 BIwA"), 0);
        QCOMPARE(link.waitedMs.constLast(), HostChannel::defaultTimeoutMs);
        QVERIFY(channel.poll_reply(3) != 0);
    }

    void queriesDoNotUseThePreparationUp()
    {
        ScriptedLink link;
        HostChannel channel(link);
        link.answer("alpha");
        Buffer buffer;
        channel.prepare_reply(1, 20000, 1);
        QCOMPARE(channel.get_string(buffer.bytes.data(), "system hostname"), 0);
        channel.set_value("system update 2 2 BIwA");
        QCOMPARE(link.log.constLast(), QString("set_value system update 2 2 BIwA"));
    }

    void otherTextInBetweenWaitsForThePreparedReply()
    {
        ScriptedLink link;
        HostChannel channel(link);
        link.answer("vornix2 ok");
        link.answer("mea");
        Buffer prepared;
        Buffer query;
        channel.prepare_reply(1, 15000, 0);
        channel.send_command(prepared.bytes.data(), "vornix2 reinit");
        QCOMPARE(channel.get_string(query.bytes.data(), "status active"), 0);
        QCOMPARE(channel.poll_reply(3), 0);
        QCOMPARE(prepared.text(), QByteArray("vornix2 ok"));
        QCOMPARE(query.text(), QByteArray("mea"));
        QCOMPARE(link.log, (QStringList{"command vornix2 reinit", "wait",
                                        "get_string status active", "wait"}));
    }

    void pollWithoutACommandFails()
    {
        ScriptedLink link;
        HostChannel channel(link);
        QVERIFY(channel.poll_reply(3) != 0);
        channel.prepare_reply(1, 1000, 1);
        QVERIFY(channel.poll_reply(3) != 0);
        QVERIFY(link.log.isEmpty());
    }

    void addressIsThatOfTheLink()
    {
        ScriptedLink link;
        HostChannel channel(link);
        Buffer buffer;
        channel.get_address(buffer.bytes.data());
        QCOMPARE(buffer.text(), QByteArray("192.168.7.20"));
        link.linkAddress = QString(500, QLatin1Char('1'));
        channel.get_address(buffer.bytes.data());
        QCOMPARE(buffer.text().size(), 199);
        QVERIFY(buffer.isGuardIntact());
    }

    void messagesReachTheReceiverOfTheirName()
    {
        ScriptedLink link;
        HostChannel channel(link);
        QStringList standard;
        QStringList window;
        TextReceiver first(
            [&](const QString& from, const QString& text) { standard += from + ": " + text; });
        TextReceiver second(
            [&](const QString& from, const QString& text) { window += from + ": " + text; });
        channel.register_receiver("standard", &first);
        channel.register_receiver("Main_Window", &second);
        channel.post_message("standard", "VORNIX3", 1, "measured \xB5m");
        channel.post_message("Main_Window", "ZanUpateModule", 7, "AppReadyToShutdown");
        channel.post_message("main_window", "VORNIX3", 1, "for nobody");
        QCOMPARE(standard, QStringList{QStringLiteral("VORNIX3: measured \u00B5m")});
        QCOMPARE(window, QStringList{"ZanUpateModule: AppReadyToShutdown"});
        QVERIFY(link.log.isEmpty());
    }

    void laterReceiverTakesTheNameOver()
    {
        ScriptedLink link;
        HostChannel channel(link);
        QStringList texts;
        TextReceiver first([&](const QString&, const QString& text) { texts += "1 " + text; });
        TextReceiver second([&](const QString&, const QString& text) { texts += "2 " + text; });
        channel.register_receiver("UpdateModule", &first);
        channel.post_message("UpdateModule", "host", 1, "a");
        channel.register_receiver("UpdateModule", &second);
        channel.post_message("UpdateModule", "host", 1, "b");
        channel.forgetReceiver("UpdateModule");
        channel.post_message("UpdateModule", "host", 1, "c");
        QCOMPARE(texts, (QStringList{"1 a", "2 b"}));
    }

    void textSentDuringAWaitFailsAndIsTold_data()
    {
        QTest::addColumn<bool>("isPrepared");
        QTest::newRow("query") << false;
        QTest::newRow("prepared setting") << true;
    }

    void textSentDuringAWaitFailsAndIsTold()
    {
        QFETCH(const bool, isPrepared);
        ScriptedLink link;
        HostChannel channel(link);
        QString told;
        TextReceiver log(
            [&](const QString& sender, const QString& text) { told += sender + ": " + text; });
        channel.register_receiver("standard", &log);
        int nested = 0;
        link.duringWait = [&] {
            Buffer inner;
            if (isPrepared)
                channel.prepare_reply(1, 1000, 1);
            nested = isPrepared ? channel.set_value("system update 1 1 A")
                                : channel.get_string(inner.bytes.data(), "status active");
        };
        link.answer("zan-master");
        Buffer outer;
        QCOMPARE(channel.get_string(outer.bytes.data(), "system hostname"), 0);
        QCOMPARE(outer.text(), QByteArray("zan-master"));
        QVERIFY(nested != 0);
        QCOMPARE(link.log, (QStringList{"get_string system hostname", "wait"}));
        QCOMPARE(told, "Channel: Not sent, as another text waits for its reply: " +
                           QString(isPrepared ? "system update 1 1 A" : "status active"));
    }
};

ZAN_TEST_MAIN(TestHostChannel)
#include "tst_hostchannel.moc"
