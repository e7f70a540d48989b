#include "transcriptfixtures.h"

#include <fixturefiles.h>
#include <reasons.h>
#include <testmain.h>

class TestTranscript : public QObject
{
    Q_OBJECT

private slots:
    void headIsRead();
    void callsAreRead();
    void linesThatAreNoCallsAreLeftOut();
    void everyByteIsReadBack();
    void damageIsReportedWithItsLine_data();
    void damageIsReportedWithItsLine();
    void aCutTranscriptIsNeverReadAsAWholeOne();
    void aFileThatCannotBeReadIsReported();
};

namespace {

Transcript parsed(const QByteArray& text)
{
    QString error;
    const std::optional<Transcript> transcript = Transcript::parse(text, "run.transcript", &error);
    if (!transcript)
        qFatal("%s", qPrintable(error));
    return *transcript;
}

} // namespace

void TestTranscript::headIsRead()
{
    const TranscriptHead written{
        BackendVersions(VersionInfo(), {0, 16}, {1, 4, 7}, QStringLiteral("ZAN \"Ä\"")), true};
    const Transcript transcript = parsed(TranscriptForm::head(written, "tests v1"));
    QCOMPARE(transcript.file, QString("run.transcript"));
    QVERIFY(transcript.head.versions.systemPt() == VersionInfo());
    QVERIFY(transcript.head.versions.protocol() == VersionInfo(0, 16));
    QVERIFY(transcript.head.versions.systemCt() == VersionInfo(1, 4, 7));
    QCOMPARE(transcript.head.versions.zanModel(), QString("ZAN \"Ä\""));
    QVERIFY(transcript.head.observer);
    QVERIFY(transcript.calls.isEmpty());
    QVERIFY(!parsed(sampleHeadText()).head.observer);
}

void TestTranscript::callsAreRead()
{
    const Transcript transcript =
        parsed(sampleHeadText() + "      412 get_string \"system hostname\" = 0 \"alpha\"\n"
                                  "get_string \"no\" = -7\n"
                                  " 500 get_int \"system model\" = 0 -21\n"
                                  "get_int \"no\" = 1\n"
                                  "set_value \"system update 2 1 \" = 0\n"
                                  "prepare_reply 1 20000 0\n"
                                  "send_command \"a \\\"b\\\" \\\\\" = 0\n"
                                  "poll_reply 3 = 0 \"vornix2 ok\"\n"
                                  "post_message \"standard\" \"VORNIX3\" 1 \"text\"\n"
                                  "register_receiver \"UpdateModule\"\n"
                                  "1234567890123 get_address = \"127.0.0.1\"\n");
    QList<QByteArray> calls;
    for (const TranscriptCall& call : transcript.calls)
        calls += call.call;
    QCOMPARE(calls,
             (QList<QByteArray>{"get_string \"system hostname\"", "get_string \"no\"",
                                "get_int \"system model\"", "get_int \"no\"",
                                "set_value \"system update 2 1 \"", "prepare_reply 1 20000 0",
                                "send_command \"a \\\"b\\\" \\\\\"", "poll_reply 3",
                                "post_message \"standard\" \"VORNIX3\" 1 \"text\"",
                                "register_receiver \"UpdateModule\"", "get_address"}));
    QCOMPARE(transcript.calls.at(0).line, 8);
    QCOMPARE(transcript.calls.at(0).result, 0);
    QCOMPARE(transcript.calls.at(0).reply.value(), QByteArray("alpha"));
    QCOMPARE(transcript.calls.at(1).result, -7);
    QVERIFY(!transcript.calls.at(1).reply);
    QCOMPARE(transcript.calls.at(2).value.value(), -21);
    QCOMPARE(transcript.calls.at(3).result, 1);
    QVERIFY(!transcript.calls.at(3).value);
    QVERIFY(!transcript.calls.at(6).reply);
    QCOMPARE(transcript.calls.at(7).reply.value(), QByteArray("vornix2 ok"));
    QCOMPARE(transcript.calls.at(10).reply.value(), QByteArray("127.0.0.1"));
    QCOMPARE(transcript.calls.at(10).line, 18);
    QCOMPARE(transcript.lastLine, 18);
}

void TestTranscript::linesThatAreNoCallsAreLeftOut()
{
    const Transcript transcript = parsed(sampleHeadText().replace("\n", "\r\n") +
                                         "\n# the first camera\n\r\npoll_reply 3 = 0\r\n# end\n");
    QCOMPARE(transcript.calls.size(), 1);
    QCOMPARE(transcript.calls.at(0).line, 11);
    QCOMPARE(transcript.calls.at(0).call, QByteArray("poll_reply 3"));
    QCOMPARE(transcript.lastLine, 12);
}

void TestTranscript::everyByteIsReadBack()
{
    const QByteArray reply = everyByte().left(199);
    const QByteArray otherReply = everyByte().mid(199);
    const Transcript transcript =
        parsed(sampleHeadText() + TranscriptForm::textCall("set_value", everyByte()) + " = 0\n" +
               TranscriptForm::call("get_address", {}) + " = " + TranscriptForm::quoted(reply) +
               "\n" + TranscriptForm::call("get_address", {}) + " = " +
               TranscriptForm::quoted(otherReply) + "\n");
    QCOMPARE(transcript.calls.at(0).call, TranscriptForm::textCall("set_value", everyByte()));
    QCOMPARE(transcript.calls.at(1).reply.value(), reply);
    QCOMPARE(transcript.calls.at(2).reply.value(), otherReply);
}

void TestTranscript::damageIsReportedWithItsLine_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("error");
    const auto row = [](const char* name, const QByteArray& text, const char* error) {
        QTest::newRow(name) << text << QStringLiteral("run.transcript: ") + error;
    };
    const auto head = [&](const char* name, const char* before, const char* after,
                          const char* error) {
        row(name, sampleHeadText().replace(before, after), error);
    };
    row("nothing", "", "line 1: the head ends before its line \"transcript\"");
    row("another kind of file",
        "\x7f"
        "ELF\n",
        "line 1: \"transcript\" is expected at column 1");
    head("a later form", "transcript 1", "transcript 2",
         "line 1: version 2 of the form is not known");
    head("a form without a number", "transcript 1", "transcript x",
         "line 1: a number is expected at column 12");
    head("a head without the protocol", "protocol 1 23 -1\n", "",
         "line 4: \"protocol\" is expected at column 1");
    head("a head that ends early", "model \"ZAN C2\"\nobserver no\n", "",
         "line 5: the head ends before its line \"model\"");
    head("a version with two parts", "protocol 1 23 -1", "protocol 1 23",
         "line 4: \" \" is expected at column 14");
    head("a version with four parts", "protocol 1 23 -1", "protocol 1 23 -1 0",
         "line 4: the end of the line is expected at column 17");
    head("a model without quotes", "\"ZAN C2\"", "ZAN", "line 6: \"\"\" is expected at column 7");
    head("an observer who may be one", "observer no", "observer perhaps",
         "line 7: \"yes\" or \"no\" is expected");

    const auto call = [&](const char* name, const QByteArray& line, const char* reason) {
        row(name, sampleHeadText() + "poll_reply 3 = 0\n" + line + "\npoll_reply 3 = 0\n",
            qPrintable(QStringLiteral("line 9: ") + reason));
    };
    call("an unknown operation", "get_text \"a\" = 0", "there is no such call");
    call("a time alone", "     412 ", "there is no such call");
    call("a time that sticks to its call", "412poll_reply 3 = 0", "\" \" is expected at column 4");
    call("a text without quotes", "set_value a = 0", "\"\"\" is expected at column 11");
    call("a text without an end", "set_value \"a = 0", "a closing quote is expected at column 17");
    call("a text that ends in a backslash", "set_value \"a\\",
         "one of \\\" \\\\ \\x01 to \\xff is expected at column 14");
    call("an unknown escape sequence", "set_value \"\\n\" = 0",
         "one of \\\" \\\\ \\x01 to \\xff is expected at column 13");
    call("a zero byte as escape sequence", "set_value \"\\x00\" = 0",
         "one of \\\" \\\\ \\x01 to \\xff is expected at column 13");
    call("half an escape sequence", "set_value \"\\x1\" = 0",
         "one of \\\" \\\\ \\x01 to \\xff is expected at column 13");
    call("an escape sequence in capitals", "set_value \"\\xFF\" = 0",
         "one of \\\" \\\\ \\x01 to \\xff is expected at column 13");
    call("a tabulator", "set_value \"\t\" = 0", "printable ASCII is expected at column 12");
    call("a byte beyond ASCII", "set_value \"\xe4\" = 0",
         "printable ASCII is expected at column 12");
    call("a zero byte", QByteArray("set_value \"\0\" = 0", 17),
         "printable ASCII is expected at column 12");
    call("a word instead of a number", "poll_reply three = 0", "a number is expected at column 12");
    call("a number that is too great", "poll_reply 2147483648 = 0",
         "a number is expected at column 12");
    call("a sign without a number", "poll_reply - = 0", "a number is expected at column 12");
    call("a missing argument", "prepare_reply 1 2", "\" \" is expected at column 18");
    call("a missing result", "set_value \"a\"", "\" = \" is expected at column 14");
    call("a result that is no number", "set_value \"a\" = ok", "a number is expected at column 17");
    call("a setting with a reply", "set_value \"a\" = 0 \"b\"",
         "the end of the line is expected at column 18");
    call("a number with a text", "get_int \"a\" = 0 \"b\"", "a number is expected at column 17");
    call("a message with a result", "register_receiver \"a\" = 0",
         "the end of the line is expected at column 22");
    call("something behind a reply", "get_address = \"b\" ",
         "the end of the line is expected at column 18");
    call("a reply of 201 bytes", "get_address = \"" + QByteArray(201, 'a') + '"',
         "a reply has at most 200 bytes");
}

void TestTranscript::damageIsReportedWithItsLine()
{
    QFETCH(const QByteArray, text);
    QString error;
    QVERIFY(!Transcript::parse(text, "run.transcript", &error));
    QTEST(error, "error");
}

void TestTranscript::aCutTranscriptIsNeverReadAsAWholeOne()
{
    const QByteArray text = sampleHeadText() + "      412 get_string \"a\\\\b\" = 0 \"al\\x01\"\n"
                                               "      413 get_int \"system model\" = 0 -21\n";
    const int headEnd = sampleHeadText().size();
    for (int length = 0; length < text.size(); ++length) {
        QString error;
        const bool isRead = Transcript::parse(text.left(length), "f", &error).has_value();
        const bool endsWithALine = length >= headEnd && text.at(length - 1) == '\n';
        QCOMPARE(isRead, endsWithALine);
        QVERIFY(isRead || error.endsWith("the line is cut off") || length < headEnd);
    }
}

void TestTranscript::aFileThatCannotBeReadIsReported()
{
    const FixtureFolder folder;
    QString error;
    QVERIFY(!Transcript::read(folder.path("none"), &error));
    QCOMPARE(error, folder.path("none") + ": " + systemReason(ENOENT));
    const QString damaged = folder.write("damaged", "transcript 0\n");
    QVERIFY(!Transcript::read(damaged, &error));
    QCOMPARE(error, damaged + ": line 1: version 0 of the form is not known");
    QVERIFY(Transcript::read(folder.write("good", sampleHeadText()), &error));
}

ZAN_TEST_MAIN(TestTranscript)
#include "tst_transcript.moc"
