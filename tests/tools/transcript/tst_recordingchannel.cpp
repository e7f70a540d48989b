#include "transcriptfixtures.h"

#include <MessageReceiver.h>
#include <recordingchannel.h>

#include <fixturefiles.h>
#include <fulldisk.h>
#include <reasons.h>
#include <scriptedchannel.h>
#include <testmain.h>

#include <QRegularExpression>

#include <functional>

namespace {

/// A host with a recording channel over its own.
struct RecordedHost
{
    explicit RecordedHost(const QString& fileName = QStringLiteral("run.transcript"))
        : recorder(host, folder.path(fileName), sampleHead(), QStringLiteral("tests v1"))
    {
    }

    QByteArray file() const { return contentOf(recorder.fileName()); }
    /// The recorded calls without their times.
    QByteArray calls() const { return withoutTimes(file()).mid(sampleHeadText().size()); }

    FixtureFolder folder;
    ScriptedChannel host;
    RecordingChannel recorder;
};

/// Asks back over the channel whenever a message comes.
class AskingReceiver final : public MessageReceiver
{
public:
    explicit AskingReceiver(IOManager& channel) : m_channel(channel) {}
    int transmit_message(int /*type*/, const char* /*src*/, const char* /*msg*/) override
    {
        int slaves = 0;
        return m_channel.get_int(&slaves, "cascade number_of_connected_slaves");
    }

private:
    IOManager& m_channel;
};

using Call = std::function<int(IOManager&, char*)>;

} // namespace

Q_DECLARE_METATYPE(Call)

class TestRecordingChannel : public QObject
{
    Q_OBJECT

private slots:
    void eachCallIsOneLine_data();
    void eachCallIsOneLine();
    void aPreparedReplyIsShownWhereItArrives();
    void aPreparedReplyThatNeverComesIsShownSo();
    void aSettingTakesThePlaceOfAPreparedCommand();
    void everyByteIsWrittenAsAscii();
    void textsOfAnyLengthAreWritten();
    void timesStandInAColumnOfTheirOwn();
    void aLineIsInTheFileWhenItsCallReturns();
    void aMessageStandsBeforeWhatItBringsAbout();
    void anEarlierRecordIsKept();
    void anEmptyFileIsTaken();
    void aRecordThatCannotBeginIsReportedOnce_data();
    void aRecordThatCannotBeginIsReportedOnce();
    void aDiskThatIsFullEndsTheRecordAndNothingElse();
    void absentVersionsAndAnObserverStandInTheHead();
};

void TestRecordingChannel::eachCallIsOneLine_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("a query for a text")
        << Call([](IOManager& c, char* b) { return c.get_string(b, "system %s", "hostname"); })
        << QByteArray("get_string \"system hostname\" = 0 \"alpha\"\n");
    QTest::newRow("a query for a text that fails and leaves nothing")
        << Call([](IOManager& c, char* b) { return c.get_string(b, "no"); })
        << QByteArray("get_string \"no\" = -7\n");
    QTest::newRow("a query for a text that fails and leaves something")
        << Call([](IOManager& c, char* b) { return c.get_string(b, "half"); })
        << QByteArray("get_string \"half\" = 1 \"left behind\"\n");
    QTest::newRow("an empty text")
        << Call([](IOManager& c, char* b) { return c.get_string(b, "empty"); })
        << QByteArray("get_string \"empty\" = 0 \"\"\n");
    QTest::newRow("a query for a number") << Call([](IOManager& c, char*) {
        int value = 0;
        return c.get_int(&value, "system model");
    }) << QByteArray("get_int \"system model\" = 0 -21\n");
    QTest::newRow("a query for a number that fails and leaves something")
        << Call([](IOManager& c, char*) {
               int value = 0;
               return c.get_int(&value, "half");
           })
        << QByteArray("get_int \"half\" = 1 -31\n");
    QTest::newRow("a query for a number that fails and leaves nothing")
        << Call([](IOManager& c, char*) {
               int value = 5;
               return c.get_int(&value, "no");
           })
        << QByteArray("get_int \"no\" = -7\n");
    QTest::newRow("a setting") << Call([](IOManager& c, char*) {
        return c.set_value("system update %d %d ", 2, 1);
    }) << QByteArray("set_value \"system update 2 1 \" = 0\n");
    QTest::newRow("a setting that is refused")
        << Call([](IOManager& c, char*) { return c.set_value("no"); })
        << QByteArray("set_value \"no\" = -7\n");
    QTest::newRow("a command") << Call([](IOManager& c, char* b) {
        return c.send_command(b, "vornix2 reinit");
    }) << QByteArray("send_command \"vornix2 reinit\" = 0 \"vornix2 ok\"\n");
    QTest::newRow("a text that looks like a format")
        << Call([](IOManager& c, char* b) { return c.send_command(b, "%s", "50%d %s"); })
        << QByteArray("send_command \"50%d %s\" = 0 \"vornix2 ok\"\n");
    QTest::newRow("a poll that nothing was prepared for")
        << Call([](IOManager& c, char*) { return c.poll_reply(3); })
        << QByteArray("poll_reply 3 = 0\n");
    QTest::newRow("a preparation") << Call([](IOManager& c, char*) {
        c.prepare_reply(1, 20000, 0);
        return 0;
    }) << QByteArray("prepare_reply 1 20000 0\n");
    QTest::newRow("a message") << Call([](IOManager& c, char*) {
        c.post_message("standard", "VORNIX3", 1, "gr\xfc\xdf \"dich\"");
        return 0;
    }) << QByteArray("post_message \"standard\" \"VORNIX3\" 1 \"gr\\xfc\\xdf \\\"dich\\\"\"\n");
    QTest::newRow("a receiver") << Call([](IOManager& c, char*) {
        c.register_receiver("UpdateModule", nullptr);
        return 0;
    }) << QByteArray("register_receiver \"UpdateModule\"\n");
    QTest::newRow("the address") << Call([](IOManager& c, char* b) {
        c.get_address(b);
        return 0;
    }) << QByteArray("get_address = \"192.168.7.20\"\n");
}

void TestRecordingChannel::eachCallIsOneLine()
{
    QFETCH(const Call, call);
    RecordedHost recorded;
    ScriptedChannel plainHost;
    for (ScriptedChannel* host : {&recorded.host, &plainHost}) {
        host->on("system hostname").reply("alpha");
        host->on("empty").reply("");
        host->on("no").failWith(-7);
        host->on("half").fail("left behind");
        host->on("system model").reply(-21);
        host->setAddress("192.168.7.20");
    }
    char buffer[200] = "earlier";
    char plainBuffer[200] = "earlier";
    const int result = call(recorded.recorder, buffer);
    QCOMPARE(result, call(plainHost, plainBuffer));
    QCOMPARE(QByteArray(buffer), QByteArray(plainBuffer));
    QTEST(recorded.calls(), "line");
    QCOMPARE(recorded.host.log(), plainHost.log());
}

void TestRecordingChannel::aPreparedReplyIsShownWhereItArrives()
{
    RecordedHost recorded;
    char reply[200] = "";
    recorded.recorder.prepare_reply(1, 9000, 0);
    recorded.recorder.send_command(reply, "vornix2 reinit");
    QCOMPARE(QByteArray(reply), QByteArray());
    QCOMPARE(recorded.recorder.poll_reply(3), 0);
    QCOMPARE(QByteArray(reply), QByteArray("vornix2 ok"));
    // What was prepared was prepared once.
    recorded.recorder.send_command(reply, "vornix2 reinit");
    recorded.recorder.poll_reply(3);
    QCOMPARE(recorded.calls(), QByteArray("prepare_reply 1 9000 0\n"
                                          "send_command \"vornix2 reinit\" = 0\n"
                                          "poll_reply 3 = 0 \"vornix2 ok\"\n"
                                          "send_command \"vornix2 reinit\" = 0 \"vornix2 ok\"\n"
                                          "poll_reply 3 = 0\n"));
}

void TestRecordingChannel::aPreparedReplyThatNeverComesIsShownSo()
{
    RecordedHost recorded;
    recorded.host.onPoll().failWith(-4);
    char reply[200] = "earlier";
    recorded.recorder.prepare_reply(1, 9000, 1);
    recorded.recorder.send_command(reply, "vornix2 reinit");
    QCOMPARE(recorded.recorder.poll_reply(3), -4);
    QCOMPARE(QByteArray(reply), QByteArray("earlier"));
    QCOMPARE(recorded.calls(), QByteArray("prepare_reply 1 9000 1\n"
                                          "send_command \"vornix2 reinit\" = 0\n"
                                          "poll_reply 3 = -4\n"));
}

void TestRecordingChannel::aSettingTakesThePlaceOfAPreparedCommand()
{
    RecordedHost recorded;
    {
        char reply[200] = "";
        recorded.recorder.prepare_reply(1, 9000, 1);
        recorded.recorder.send_command(reply, "vornix2 reinit");
    }
    recorded.recorder.prepare_reply(1, 20000, 1);
    recorded.recorder.set_value("system update 1 1 A");
    recorded.recorder.poll_reply(3);
    QCOMPARE(recorded.calls(), QByteArray("prepare_reply 1 9000 1\n"
                                          "send_command \"vornix2 reinit\" = 0\n"
                                          "prepare_reply 1 20000 1\n"
                                          "set_value \"system update 1 1 A\" = 0\n"
                                          "poll_reply 3 = 0\n"));
}

void TestRecordingChannel::everyByteIsWrittenAsAscii()
{
    RecordedHost recorded;
    recorded.host.on("all").replyUnterminated(everyByte().left(TranscriptForm::replyBytes));
    char reply[1024];
    recorded.recorder.get_string(reply, "all");
    recorded.recorder.set_value("%s", everyByte().constData());
    const QByteArray calls = recorded.calls();
    QVERIFY(calls.contains("\\x01\\x02"));
    QVERIFY(calls.contains("\\xc7\\xc8\"\n"));
    QVERIFY(calls.contains("\\xff\" = 0\n"));
    QVERIFY(calls.contains("!\\\"#"));
    QVERIFY(calls.contains("[\\\\]"));
    QVERIFY(calls.contains("}~\\x7f\\x80"));
    for (const char byte : calls)
        QVERIFY(byte == '\n' || (byte >= ' ' && byte <= '~'));
}

void TestRecordingChannel::textsOfAnyLengthAreWritten()
{
    for (const int length : {0, 1, 1023, 1024, 1025, 70000}) {
        RecordedHost recorded;
        const QByteArray text(length, 'x');
        recorded.recorder.set_value("%s", text.constData());
        QCOMPARE(recorded.calls(), "set_value \"" + text + "\" = 0\n");
        QCOMPARE(recorded.host.log(), QStringList("set_value \"" + text + '"'));
    }
}

void TestRecordingChannel::timesStandInAColumnOfTheirOwn()
{
    RecordedHost recorded;
    recorded.recorder.poll_reply(3);
    recorded.recorder.poll_reply(3);
    const QList<QByteArray> lines = recorded.file().mid(sampleHeadText().size()).split('\n');
    qint64 before = 0;
    for (const QByteArray& line : lines.mid(0, 2)) {
        const QRegularExpressionMatch match =
            QRegularExpression("^ *(\\d+) poll_reply 3 = 0$").match(line);
        QVERIFY2(match.hasMatch(), line);
        QCOMPARE(match.capturedEnd(1), 9);
        QVERIFY(match.captured(1).toLongLong() >= before);
        before = match.captured(1).toLongLong();
    }
    QVERIFY(before < 60000);
}

void TestRecordingChannel::aLineIsInTheFileWhenItsCallReturns()
{
    RecordedHost recorded;
    QCOMPARE(recorded.file(), sampleHeadText());
    QStringList seen;
    recorded.host.setHook([&](const QString& /*call*/) { seen += recorded.calls(); });
    recorded.recorder.set_value("one");
    QCOMPARE(recorded.calls(), QByteArray("set_value \"one\" = 0\n"));
    recorded.recorder.set_value("two");
    QCOMPARE(recorded.calls(), QByteArray("set_value \"one\" = 0\nset_value \"two\" = 0\n"));
    QCOMPARE(seen, (QStringList{"", "set_value \"one\" = 0\n"}));
}

void TestRecordingChannel::aMessageStandsBeforeWhatItBringsAbout()
{
    RecordedHost recorded;
    AskingReceiver receiver(recorded.recorder);
    recorded.host.on("cascade number_of_connected_slaves").reply(2);
    recorded.recorder.register_receiver("Main_Window", &receiver);
    recorded.recorder.post_message("Main_Window", "ZanUpateModule", 1, "AppReadyToShutdown");
    QCOMPARE(recorded.calls(),
             QByteArray("register_receiver \"Main_Window\"\n"
                        "post_message \"Main_Window\" \"ZanUpateModule\" 1 \"AppReadyToShutdown\"\n"
                        "get_int \"cascade number_of_connected_slaves\" = 0 2\n"));
}

void TestRecordingChannel::anEarlierRecordIsKept()
{
    const FixtureFolder folder;
    ScriptedChannel host;
    const auto record = [&](const QString& name) {
        const RecordingChannel recorder(host, folder.path(name), sampleHead(), "tests v1");
        return recorder.fileName();
    };
    folder.write("a.b/run.transcript", "kept");
    QCOMPARE(record("a.b/run.transcript"), folder.path("a.b/run-2.transcript"));
    QCOMPARE(record("a.b/run.transcript"), folder.path("a.b/run-3.transcript"));
    QCOMPARE(record("a.b/run"), folder.path("a.b/run"));
    QCOMPARE(record("a.b/run"), folder.path("a.b/run-2"));
    QCOMPARE(record("a.b/.run"), folder.path("a.b/.run"));
    QCOMPARE(record("a.b/.run"), folder.path("a.b/.run-2"));
    QCOMPARE(contentOf(folder.path("a.b/run.transcript")), QByteArray("kept"));
    QCOMPARE(contentOf(folder.path("a.b/run-2.transcript")), sampleHeadText());
    QCOMPARE(host.messages().size(), 0);
}

void TestRecordingChannel::anEmptyFileIsTaken()
{
    const FixtureFolder folder;
    ScriptedChannel host;
    folder.write("run.transcript", "");
    const RecordingChannel recorder(host, folder.path("run.transcript"), sampleHead(), "tests v1");
    QCOMPARE(contentOf(folder.path("run.transcript")), sampleHeadText());
}

void TestRecordingChannel::aRecordThatCannotBeginIsReportedOnce_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("reason");
    QTest::newRow("the folder is missing")
        << "FOLDER/missing/run.transcript" << systemReason(ENOENT);
    QTest::newRow("the file is a folder") << "FOLDER" << systemReason(EISDIR);
    QTest::newRow("the disk is full") << "/dev/full" << systemReason(ENOSPC);
}

void TestRecordingChannel::aRecordThatCannotBeginIsReportedOnce()
{
    QFETCH(QString, file);
    QFETCH(const QString, reason);
    const FixtureFolder folder;
    file.replace("FOLDER", folder.path());
    ScriptedChannel host;
    host.on("system hostname").reply("alpha");
    RecordingChannel recorder(host, file, sampleHead(), "tests v1");
    QVERIFY(!recorder.isRecording());
    char reply[200] = "";
    QCOMPARE(recorder.get_string(reply, "system hostname"), 0);
    QCOMPARE(QByteArray(reply), QByteArray("alpha"));
    QCOMPARE(host.log(),
             (QStringList{"post_message standard Transcript 1 \"" + file +
                              ": cannot be written: " + reason + ". Nothing more is recorded.\"",
                          "get_string \"system hostname\""}));
}

void TestRecordingChannel::aDiskThatIsFullEndsTheRecordAndNothingElse()
{
    RecordedHost recorded;
    {
        const FullDisk disk(static_cast<rlim_t>(sampleHeadText().size()) + 50);
        for (int i = 0; i < 4; ++i)
            QCOMPARE(recorded.recorder.set_value("system update 4 %d AAAA", i + 1), 0);
    }
    QVERIFY(!recorded.recorder.isRecording());
    // There is room again, but a record with a hole would mislead.
    QCOMPARE(recorded.recorder.set_value("later"), 0);
    QCOMPARE(recorded.host.logOf("set_value").size(), 5);
    QCOMPARE(recorded.host.messagesTo("standard"),
             QStringList(recorded.recorder.fileName() + ": cannot be written: " +
                         systemReason(EFBIG) + ". Nothing more is recorded."));
    QVERIFY(recorded.calls().startsWith("set_value \"system update 4 1 AAAA\" = 0\n"));
    QVERIFY(!recorded.calls().contains("update 4 2 AAAA\" = 0\n"));
}

void TestRecordingChannel::absentVersionsAndAnObserverStandInTheHead()
{
    const FixtureFolder folder;
    ScriptedChannel host;
    const TranscriptHead head{
        BackendVersions(VersionInfo(), {0, 16}, {1, 4, 7}, QStringLiteral("ZAN \"Ä\"")), true};
    const RecordingChannel recorder(host, folder.path("run"), head, "two\nlines");
    QCOMPARE(contentOf(folder.path("run")), QByteArray("transcript 1\n"
                                                       "# recorded by \"two\\x0alines\"\n"
                                                       "system_pt -1 -1 -1\n"
                                                       "protocol 0 16 -1\n"
                                                       "system_ct 1 4 7\n"
                                                       "model \"ZAN \\\"\\xc3\\x84\\\"\"\n"
                                                       "observer yes\n"));
}

ZAN_TEST_MAIN(TestRecordingChannel)
#include "tst_recordingchannel.moc"
