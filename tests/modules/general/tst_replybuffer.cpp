#include "replybuffer.h"

#include "testmain.h"

class TestReplyBuffer : public QObject
{
    Q_OBJECT

private slots:
    void isEmptyAtFirst();
    void terminatesWhatFillsIt();
    void forgetsTheEarlierReply();
    void cutsWhatIsTooLong();
    void comparesWholeTextsAndPrefixes_data();
    void comparesWholeTextsAndPrefixes();
    void readsLatin1AndUtf8();
    void takesAwayEveryDoubleQuote();
};

void TestReplyBuffer::isEmptyAtFirst()
{
    const ReplyBuffer<> reply;
    QCOMPARE(reply.text(), "");
    QVERIFY(reply.latin1().isEmpty());
}

void TestReplyBuffer::terminatesWhatFillsIt()
{
    ReplyBuffer<> reply;
    std::memset(reply.forReply(), 'x', 200);
    QCOMPARE(reply.latin1(), QString(200, QLatin1Char('x')));
    ReplyBuffer<LONG_TEXT_BYTES> longReply;
    std::memset(longReply.forReply(), 'y', 1024);
    QCOMPARE(longReply.latin1(), QString(1024, QLatin1Char('y')));
}

void TestReplyBuffer::forgetsTheEarlierReply()
{
    ReplyBuffer<> reply;
    reply.set("yes");
    reply.forReply();
    QVERIFY(reply.equals(""));
}

void TestReplyBuffer::cutsWhatIsTooLong()
{
    ReplyBuffer<> reply;
    reply.set(QByteArray(500, 'x').constData());
    QCOMPARE(reply.latin1(), QString(200, QLatin1Char('x')));
}

void TestReplyBuffer::comparesWholeTextsAndPrefixes_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("isEqual");
    QTest::addColumn<bool>("isPrefixed");

    QTest::newRow("the text itself") << QByteArray("vornix2 ok") << true << true;
    QTest::newRow("a longer text") << QByteArray("vornix2 ok ") << false << true;
    QTest::newRow("a shorter text") << QByteArray("vornix2 o") << false << false;
    QTest::newRow("another case") << QByteArray("Vornix2 ok") << false << false;
    QTest::newRow("nothing") << QByteArray("") << false << false;
}

void TestReplyBuffer::comparesWholeTextsAndPrefixes()
{
    QFETCH(QByteArray, text);
    ReplyBuffer<> reply;
    reply.set(text.constData());
    QTEST(reply.equals("vornix2 ok"), "isEqual");
    QTEST(reply.startsWith("vornix2 ok"), "isPrefixed");
}

void TestReplyBuffer::readsLatin1AndUtf8()
{
    ReplyBuffer<> reply;
    reply.set("K\xC3\xB6ln");
    QCOMPARE(reply.utf8(), QString::fromUtf8("Köln"));
    QCOMPARE(reply.latin1(), QString::fromUtf8("KÃ¶ln"));
    reply.set("K\xF6ln");
    QCOMPARE(reply.latin1(), QString::fromUtf8("Köln"));
}

void TestReplyBuffer::takesAwayEveryDoubleQuote()
{
    ReplyBuffer<> reply;
    reply.set("\"K\xC3\xB6ln \"B1\"\"");
    QCOMPARE(unquotedUtf8(reply), QString::fromUtf8("Köln B1"));
}

ZAN_TEST_MAIN(TestReplyBuffer)

#include "tst_replybuffer.moc"
