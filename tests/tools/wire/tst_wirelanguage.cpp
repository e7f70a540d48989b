#include <simulatorfixtures.h>

#include <wirelanguage.h>

#include <testmain.h>

Q_DECLARE_METATYPE(WireRequest::Kind)

class TestWireLanguage : public QObject
{
    Q_OBJECT

private slots:
    void textsTravelAsLines_data()
    {
        QTest::addColumn<QByteArray>("tag");
        QTest::addColumn<Operation>("operation");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QByteArray>("line");
        const auto row = [](const char* name, const QByteArray& tag, Operation operation,
                            const QByteArray& text, const QByteArray& line) {
            QTest::newRow(name) << tag << operation << text << line;
        };
        row("query for a text", "", Operation::GetString, "system hostname",
            "get system hostname\n");
        row("query for a number", "", Operation::GetInt, "system model", "int system model\n");
        row("setting", "", Operation::SetValue, "system redirect_update none",
            "set system redirect_update none\n");
        row("command as it is", "", Operation::Command, "vornix2 reinit", "vornix2 reinit\n");
        row("command that does not begin as one", "", Operation::Command, "reinit",
            "command reinit\n");
        row("command that begins as a query", "", Operation::Command, "get system hostname",
            "command get system hostname\n");
        row("query that begins as a command", "", Operation::GetString, "vornix2 reinit",
            "get vornix2 reinit\n");
        row("tagged query", "#7", Operation::GetString, "system net", "#7 get system net\n");
        row("tagged command", "#x-1", Operation::Command, "vornix2 ok", "#x-1 vornix2 ok\n");
        row("record of no bytes, which ends with a blank", "", Operation::SetValue,
            "system update 1 1 ", "set system update 1 1 \n");
        row("record of a camera of no bytes", "#2", Operation::Command,
            "vornix2 set camera update c01 1 1 ", "#2 vornix2 set camera update c01 1 1 \n");
        row("blank before a text", "", Operation::GetString, " x", "get  x\n");
        row("empty query", "#3", Operation::GetString, "", "#3 get \n");
        row("empty command", "", Operation::Command, "", "command \n");
        row("zero byte in a text", "", Operation::GetString, QByteArray("a\0b", 3),
            QByteArray("get a\0b\n", 8));
        row("text that looks like a tag", "", Operation::Command, "#5 x", "command #5 x\n");
        row("carriage return inside of a text", "", Operation::GetString, "a\rb", "get a\rb\n");
    }

    void textsTravelAsLines()
    {
        QFETCH(const QByteArray, tag);
        QFETCH(const Operation, operation);
        QFETCH(const QByteArray, text);
        const std::optional<QByteArray> line = requestLine(tag, operation, text);
        QVERIFY(line);
        QTEST(*line, "line");

        const WireRequest request = readRequest(line->chopped(1));
        QCOMPARE(request.tag, tag);
        QCOMPARE(request.kind, WireRequest::Kind::Command);
        QCOMPARE(request.operation, operation);
        QCOMPARE(request.text, text);
    }

    // It would be two lines at the other end, or another text.
    void textWithALineEndCannotTravel_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("in the middle") << QByteArray("system\nhostname");
        QTest::newRow("at the end") << QByteArray("system hostname\n");
        QTest::newRow("nothing else") << QByteArray("\n");
        QTest::newRow("half of the line end of other systems") << QByteArray("system hostname\r");
    }

    void textWithALineEndCannotTravel()
    {
        QFETCH(const QByteArray, text);
        for (const Operation operation :
             {Operation::GetString, Operation::GetInt, Operation::SetValue, Operation::Command})
            QVERIFY(!requestLine("#1", operation, text));
        QVERIFY(!requestLine("#1", Operation::Command, "vornix2 " + text));
    }

    void equipmentHasItsOwnWord()
    {
        QCOMPARE(equipmentLine("#4", "measure on"), QByteArray("#4 bench measure on\n"));
        QCOMPARE(equipmentLine("", "state"), QByteArray("bench state\n"));
        const WireRequest request = readRequest("#4 bench measure on");
        QCOMPARE(request.kind, WireRequest::Kind::Equipment);
        QCOMPARE(request.tag, QByteArray("#4"));
        QCOMPARE(request.text, QByteArray("measure on"));
    }

    void otherLinesAreKnownAsSuch_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QByteArray>("tag");
        const auto row = [](const char* name, const QByteArray& line, const QByteArray& tag) {
            QTest::newRow(name) << line << tag;
        };
        row("empty line", "", "");
        row("blank", " ", "");
        row("unknown word", "fetch system hostname", "");
        row("tagged unknown word", "#9 fetch", "#9");
        row("tag alone", "#9", "#9");
        row("tag and a blank", "#9 ", "#9");
        row("another case", "GET system hostname", "");
        row("word that begins as one that is known", "getter x", "");
        row("known word with a zero byte behind it", QByteArray("get\0 x", 6), "");
        row("blank before the word", " get x", "");
        row("tag that is not followed by a blank", "#9get x", "#9get");
        row("zero bytes", QByteArray(3, '\0'), "");
        row("reply", "ok zan-master", "");
    }

    void otherLinesAreKnownAsSuch()
    {
        QFETCH(const QByteArray, line);
        const WireRequest request = readRequest(line);
        QCOMPARE(request.kind, WireRequest::Kind::Unknown);
        QTEST(request.tag, "tag");
    }

    void repliesTravelAsLines_data()
    {
        QTest::addColumn<QByteArray>("tag");
        QTest::addColumn<bool>("ok");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QByteArray>("line");
        const auto row = [](const char* name, const QByteArray& tag, bool ok,
                            const QByteArray& text, const QByteArray& line) {
            QTest::newRow(name) << tag << ok << text << line;
        };
        row("success with a text", "", true, "zan-master", "ok zan-master\n");
        row("success without a text", "", true, "", "ok\n");
        row("failure with its reason", "", false, "vornix2 err -1 \"unknown text\"",
            "failed vornix2 err -1 \"unknown text\"\n");
        row("failure without a reason", "", false, "", "failed\n");
        row("tagged success", "#1", true, "yes", "#1 ok yes\n");
        row("tagged failure", "#1", false, "", "#1 failed\n");
        row("text that reads as a reply", "", true, "failed", "ok failed\n");
        row("text that reads as a tag", "", true, "#2 x", "ok #2 x\n");
        row("blanks of the text", "", true, " a  b ", "ok  a  b \n");
        row("zero byte", "", true, QByteArray("a\0b", 3), QByteArray("ok a\0b\n", 7));
    }

    void repliesTravelAsLines()
    {
        QFETCH(const QByteArray, tag);
        QFETCH(const bool, ok);
        QFETCH(const QByteArray, text);
        const QByteArray line = replyLine(tag, ok, text);
        QTEST(line, "line");

        const std::optional<WireReply> reply = readReply(line.chopped(1));
        QVERIFY(reply);
        QCOMPARE(reply->tag, tag);
        QCOMPARE(reply->ok, ok);
        QCOMPARE(reply->text, text);
    }

    void lineEndInsideOfAReplyBecomesABlank()
    {
        QCOMPARE(replyLine("#1", true, "a\nb\n"), QByteArray("#1 ok a b \n"));
    }

    void otherLinesAreNoReplies_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::newRow("empty line") << QByteArray();
        QTest::newRow("tag alone") << QByteArray("#1");
        QTest::newRow("another word") << QByteArray("okay x");
        QTest::newRow("another case") << QByteArray("OK x");
        QTest::newRow("request") << QByteArray("get system hostname");
        QTest::newRow("blank before the word") << QByteArray(" ok");
        QTest::newRow("zero byte behind the word") << QByteArray("ok\0", 3);
        QTest::newRow("greeting of a mail server") << QByteArray("220 mail ESMTP");
    }

    void otherLinesAreNoReplies()
    {
        QFETCH(const QByteArray, line);
        QVERIFY(!readReply(line));
    }
};

ZAN_TEST_MAIN(TestWireLanguage)
#include "tst_wirelanguage.moc"
