#include "sixbitencoding.h"

#include "testmain.h"

#include <sixbitdecoder.h>

#include <QRandomGenerator>

class TestSixBitEncoding : public QObject
{
    Q_OBJECT

private slots:
    void encodesWorkedExamples_data();
    void encodesWorkedExamples();
    void mapsEveryWordToItsCharacter();
    void agreesWithBitByBitEncoding_data();
    void agreesWithBitByBitEncoding();
    void isReadBackByTheReceivingSide();
    void cutsWords_data();
    void cutsWords();
};

static const QByteArray ALPHABET =
    QByteArrayLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");
static constexpr int MAX_RECORD = 120;

// The stream's bits one by one, the least significant bit of each byte first.
static QByteArray encodedBitByBit(const QByteArray& data)
{
    QByteArray text;
    int word = 0;
    int filled = 0;
    for (int bit = 0; bit < 8 * data.size(); ++bit) {
        const auto byte = static_cast<unsigned char>(data.at(bit / 8));
        word |= (byte >> bit % 8 & 1) << filled;
        if (++filled == 6) {
            text += ALPHABET.at(word);
            word = filled = 0;
        }
    }
    if (filled > 0)
        text += ALPHABET.at(word);
    return text;
}

// Encodes into a buffer that shows every byte written.
static QByteArray encoded(const QByteArray& data)
{
    QByteArray buffer(1024, '#');
    encodeSixBit(buffer.data(), reinterpret_cast<const unsigned char*>(data.constData()),
                 data.size());
    const int end = buffer.indexOf('\0');
    if (end < 0 || buffer.mid(end + 1).count('#') != buffer.size() - end - 1)
        return QByteArrayLiteral("written beyond its terminator");
    return buffer.left(end);
}

static QByteArray randomBytes(QRandomGenerator* random, int size)
{
    QByteArray bytes;
    for (int i = 0; i < size; ++i)
        bytes += static_cast<char>(random->bounded(256));
    return bytes;
}

void TestSixBitEncoding::encodesWorkedExamples_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QByteArray>("text");

    QTest::newRow("no byte gives no character") << QByteArray() << QByteArray("");
    QTest::newRow("one byte gives two") << QByteArray("\xFF") << QByteArray("/D");
    QTest::newRow("a zero byte gives two") << QByteArray(1, '\0') << QByteArray("AA");
    QTest::newRow("two bytes give three") << QByteArray("\xFF\xFF") << QByteArray("//P");
    QTest::newRow("three bytes give four") << QByteArray("\x01\x02\x03") << QByteArray("BIwA");
    QTest::newRow("the low bits come first") << QByteArray("\x01") << QByteArray("BA");
    QTest::newRow("the last word is filled with zeros") << QByteArray("\x80") << QByteArray("AC");
}

void TestSixBitEncoding::encodesWorkedExamples()
{
    QFETCH(QByteArray, data);
    QTEST(encoded(data), "text");
}

void TestSixBitEncoding::mapsEveryWordToItsCharacter()
{
    for (int value = 0; value < 64; ++value) {
        const QByteArray text = encoded(QByteArray(1, static_cast<char>(value)));
        QCOMPARE(text.at(0), ALPHABET.at(value));
    }
}

void TestSixBitEncoding::agreesWithBitByBitEncoding_data()
{
    QTest::addColumn<int>("length");
    for (int length = 0; length <= MAX_RECORD; ++length)
        QTest::addRow("%d bytes", length) << length;
}

void TestSixBitEncoding::agreesWithBitByBitEncoding()
{
    QFETCH(int, length);
    QRandomGenerator random(static_cast<quint32>(length) + 1);
    QList<QByteArray> records{QByteArray(length, '\0'), QByteArray(length, '\xFF')};
    for (int i = 0; i < 200; ++i)
        records += randomBytes(&random, length);
    for (const QByteArray& record : qAsConst(records)) {
        const QByteArray text = encoded(record);
        QCOMPARE(text.size(), (8 * length + 5) / 6);
        QCOMPARE(text, encodedBitByBit(record));
    }
}

void TestSixBitEncoding::isReadBackByTheReceivingSide()
{
    QRandomGenerator random(7);
    for (int length = 0; length <= MAX_RECORD; ++length) {
        const QByteArray record = randomBytes(&random, length);
        const auto decoded = decodeSixBit(encoded(record));
        QVERIFY(decoded.has_value());
        QCOMPARE(*decoded, record);
    }
}

void TestSixBitEncoding::cutsWords_data()
{
    QTest::addColumn<int>("bitOffset");
    QTest::addColumn<int>("word");

    // The bytes 0xC5 0x3A 0x9F: 101 00011 010 11100 111 11001 from the earliest bit on.
    QTest::newRow("at the start of a byte") << 0 << 0x05;
    QTest::newRow("over the end of the first byte") << 6 << (0xC5 >> 6 | (0x3A & 0x0F) << 2);
    QTest::newRow("over the end of the second byte") << 12 << (0x3A >> 4 | (0x9F & 0x03) << 4);
    QTest::newRow("at the end of the data") << 18 << (0x9F >> 2);
    QTest::newRow("behind the data") << 24 << 0;
    QTest::newRow("far behind the data") << 6000 << 0;
    QTest::newRow("at an offset that begins no word") << 3 << 0;
    QTest::newRow("at another offset that begins no word") << 7 << 0;
}

void TestSixBitEncoding::cutsWords()
{
    QFETCH(int, bitOffset);
    const unsigned char data[] = {0xC5, 0x3A, 0x9F};
    QTEST(int(sixBitWord(data, 3, bitOffset)), "word");
    // The words that end in the middle of the last byte.
    QCOMPARE(int(sixBitWord(data, 1, 6)), 0xC5 >> 6);
    QCOMPARE(int(sixBitWord(data, 2, 12)), 0x3A >> 4);
    QCOMPARE(int(sixBitWord(data, 0, 0)), 0);
}

ZAN_TEST_MAIN(TestSixBitEncoding)

#include "tst_sixbitencoding.moc"
