#include "sixbitdecoder.h"

#include <testmain.h>

#include <QSet>

class TestSixBitDecoder : public QObject
{
    Q_OBJECT

private slots:
    void decodes_data();
    void decodes();
    void refuses_data();
    void refuses();
    void takesExactlyTheAlphabet();
    void decodesWhatBitsMakeUp_data();
    void decodesWhatBitsMakeUp();
};

void TestSixBitDecoder::decodes_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("hex");

    QTest::newRow("an empty text is a record of no bytes") << QByteArray("") << QByteArray("");
    QTest::newRow("one byte") << QByteArray("/D") << QByteArray("ff");
    QTest::newRow("two bytes") << QByteArray("//P") << QByteArray("ffff");
    QTest::newRow("three bytes") << QByteArray("BIwA") << QByteArray("010203");
    QTest::newRow("the low bits come first") << QByteArray("BA") << QByteArray("01");
    QTest::newRow("the high bits come last") << QByteArray("AC") << QByteArray("80");
    QTest::newRow("zeros") << QByteArray("AAAAAA") << QByteArray("00000000");
    QTest::newRow("plus and slash") << QByteArray("+/P") << QByteArray("feff");
}

void TestSixBitDecoder::decodes()
{
    QFETCH(const QByteArray, text);
    const auto data = decodeSixBit(text);
    QVERIFY(data.has_value());
    QTEST(data->toHex(), "hex");
}

void TestSixBitDecoder::refuses_data()
{
    QTest::addColumn<QByteArray>("text");

    QTest::newRow("one character") << QByteArray("A");
    QTest::newRow("five characters") << QByteArray("BIwAA");
    QTest::newRow("161 characters") << QByteArray(161, 'A');
    QTest::newRow("the lowest unused bit of one byte") << QByteArray("/E");
    QTest::newRow("the highest unused bit of one byte") << QByteArray("/g");
    QTest::newRow("the lowest unused bit of two bytes") << QByteArray("//Q");
    QTest::newRow("the highest unused bit of two bytes") << QByteArray("//g");
    QTest::newRow("padding") << QByteArray("/D==");
    QTest::newRow("a blank") << QByteArray("BI A");
    QTest::newRow("a line end") << QByteArray("BIw\n");
    QTest::newRow("a zero byte") << QByteArray("BI\0A", 4);
    QTest::newRow("a character beyond ASCII") << QByteArray("BI\xC4"
                                                            "A");
    QTest::newRow("the alphabet of URLs, minus") << QByteArray("BI-A");
    QTest::newRow("the alphabet of URLs, underscore") << QByteArray("BI_A");
}

void TestSixBitDecoder::refuses()
{
    QFETCH(const QByteArray, text);
    QVERIFY(!decodeSixBit(text));
}

void TestSixBitDecoder::takesExactlyTheAlphabet()
{
    QSet<QByteArray> results;
    for (int character = 0; character < 256; ++character) {
        if (const auto data = decodeSixBit(QByteArray("AAA") + static_cast<char>(character)))
            results.insert(*data);
    }
    QCOMPARE(results.size(), 64);
}

void TestSixBitDecoder::decodesWhatBitsMakeUp_data()
{
    QTest::addColumn<int>("length");
    for (int length = 0; length <= 120; ++length)
        QTest::addRow("%d bytes", length) << length;
}

// The text is composed bit by bit: the slow way, straight from the description of the encoding.
void TestSixBitDecoder::decodesWhatBitsMakeUp()
{
    QFETCH(const int, length);
    const QByteArray alphabet("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");
    QByteArray data;
    for (int index = 0; index < length; ++index)
        data.append(static_cast<char>(index * 37 + 201));

    QByteArray text;
    for (int start = 0; start < 8 * length; start += 6) {
        int word = 0;
        for (int bit = start; bit < start + 6 && bit < 8 * length; ++bit)
            word |= (data[bit / 8] >> (bit % 8) & 1) << (bit - start);
        text.append(alphabet[word]);
    }
    QCOMPARE(decodeSixBit(text).value_or("refused"), data);
}

ZAN_TEST_MAIN(TestSixBitDecoder)
#include "tst_sixbitdecoder.moc"
