#include "littleendianreader.h"

#include "memorystream.h"
#include "testmain.h"

class TestLittleEndianReader : public QObject
{
    Q_OBJECT

private slots:
    void readsFieldsInOrder();
    void widensWithoutSign();
    void leavesTheTargetOfAShortRead_data();
    void leavesTheTargetOfAShortRead();
    void readsBytesUpToTheEnd_data();
    void readsBytesUpToTheEnd();
    void readsFieldsAcrossTheEndsOfItsChunks_data();
    void readsFieldsAcrossTheEndsOfItsChunks();
    void givesBackWhatItFetchedTooMuch();
    void namesTheFirstMissingWord_data();
    void namesTheFirstMissingWord();
};

/// The next bytes; null if there are not so many.
static QByteArray taken(LittleEndianReader& reader, int count)
{
    const unsigned char* bytes = reader.takeBytes(count);
    return bytes ? QByteArray(reinterpret_cast<const char*>(bytes), count) : QByteArray();
}

void TestLittleEndianReader::readsFieldsInOrder()
{
    const MemoryStream stream(QByteArray::fromHex("0102 03040506 07080910 4142"));
    LittleEndianReader reader(stream.get());
    int word = 0;
    quint32 unsignedLong = 0;
    int signedLong = 0;
    QVERIFY(reader.readU16(&word));
    QVERIFY(reader.readU32(&unsignedLong));
    QVERIFY(reader.readS32(&signedLong));
    const QByteArray bytes = taken(reader, 2);
    QCOMPARE(word, 0x0201);
    QCOMPARE(unsignedLong, 0x06050403U);
    QCOMPARE(signedLong, 0x10090807);
    QCOMPARE(bytes, QByteArray("AB"));
    QVERIFY(!reader.readU16(&word));
}

void TestLittleEndianReader::widensWithoutSign()
{
    const MemoryStream stream(QByteArray(10, '\xFF'));
    LittleEndianReader reader(stream.get());
    int word = 0;
    quint32 unsignedLong = 0;
    int signedLong = 0;
    QVERIFY(reader.readU16(&word));
    QVERIFY(reader.readU32(&unsignedLong));
    QVERIFY(reader.readS32(&signedLong));
    QCOMPARE(word, 65535);
    QCOMPARE(unsignedLong, 0xFFFFFFFFU);
    QCOMPARE(signedLong, -1);
}

void TestLittleEndianReader::leavesTheTargetOfAShortRead_data()
{
    QTest::addColumn<int>("available");
    for (int available = 0; available < 4; ++available)
        QTest::addRow("%d bytes are left", available) << available;
}

void TestLittleEndianReader::leavesTheTargetOfAShortRead()
{
    QFETCH(int, available);
    int word = 77;
    quint32 unsignedLong = 77;
    int signedLong = 77;
    {
        const MemoryStream stream(QByteArray(available, 'x'));
        QCOMPARE(LittleEndianReader(stream.get()).readU16(&word), available >= 2);
        QCOMPARE(word, available >= 2 ? 0x7878 : 77);
    }
    {
        const MemoryStream stream(QByteArray(available, 'x'));
        QVERIFY(!LittleEndianReader(stream.get()).readU32(&unsignedLong));
        QCOMPARE(unsignedLong, 77U);
    }
    {
        const MemoryStream stream(QByteArray(available, 'x'));
        QVERIFY(!LittleEndianReader(stream.get()).readS32(&signedLong));
        QCOMPARE(signedLong, 77);
    }
}

void TestLittleEndianReader::readsBytesUpToTheEnd_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<bool>("isThere");

    QTest::newRow("none") << 0 << true;
    QTest::newRow("the first") << 1 << true;
    QTest::newRow("all") << 3 << true;
    QTest::newRow("one more than there are") << 4 << false;
    QTest::newRow("as many as a call may ask for") << 512 << false;
}

void TestLittleEndianReader::readsBytesUpToTheEnd()
{
    QFETCH(int, count);
    QFETCH(bool, isThere);
    const MemoryStream stream(QByteArrayLiteral("abc"));
    LittleEndianReader reader(stream.get());
    const QByteArray bytes = taken(reader, count);
    QCOMPARE(!bytes.isNull(), isThere);
    QCOMPARE(bytes, isThere ? QByteArray("abc").left(count) : QByteArray());
}

// Every byte of it tells its position well enough.
static QByteArray patternBytes(int size)
{
    QByteArray bytes;
    for (int i = 0; i < size; ++i)
        bytes += static_cast<char>(i * 31 + i / 256);
    return bytes;
}

void TestLittleEndianReader::readsFieldsAcrossTheEndsOfItsChunks_data()
{
    QTest::addColumn<int>("chunk");
    QTest::addColumn<int>("recordLength");

    for (const int chunk :
         {int(LittleEndianReader::SmallChunk), int(LittleEndianReader::LargeChunk)}) {
        for (const int length : {0, 1, 117, 118, 119, 120})
            QTest::addRow("records of %d bytes in chunks of %d", length, chunk) << chunk << length;
    }
}

void TestLittleEndianReader::readsFieldsAcrossTheEndsOfItsChunks()
{
    QFETCH(int, chunk);
    QFETCH(int, recordLength);
    const QByteArray bytes = patternBytes(3 * chunk + 77);
    const MemoryStream stream(bytes);
    LittleEndianReader reader(stream.get(), static_cast<LittleEndianReader::Chunk>(chunk));
    int position = 0;
    const int step = 2 + recordLength + 4;
    for (; bytes.size() - position >= step; position += step) {
        const char* field = bytes.constData() + position;
        int word = 0;
        QVERIFY(reader.readU16(&word));
        QCOMPARE(word, int(qFromLittleEndian<quint16>(field)));
        QCOMPARE(taken(reader, recordLength), bytes.mid(position + 2, recordLength));
        quint32 number = 0;
        QVERIFY(reader.readU32(&number));
        QCOMPARE(number, qFromLittleEndian<quint32>(field + 2 + recordLength));
    }
    for (; bytes.size() - position >= 2; position += 2) {
        int word = 0;
        QVERIFY(reader.readU16(&word));
    }
    int word = 0;
    QVERIFY(!reader.readU16(&word));
}

void TestLittleEndianReader::givesBackWhatItFetchedTooMuch()
{
    const MemoryStream stream(patternBytes(5000));
    for (int i = 0; i < 100; ++i) {
        LittleEndianReader reader(stream.get());
        QCOMPARE(taken(reader, 29), patternBytes(5000).mid(29 * i, 29));
    }
    QCOMPARE(int(std::ftell(stream.get())), 2900);
}

void TestLittleEndianReader::namesTheFirstMissingWord_data()
{
    QTest::addColumn<int>("available");
    QTest::addColumn<int>("code");

    QTest::newRow("nothing is there") << 0 << -4;
    QTest::newRow("half of the first") << 1 << -4;
    QTest::newRow("the first, which is stepped over") << 2 << -5;
    QTest::newRow("half of the second") << 3 << -5;
    QTest::newRow("the second") << 4 << -6;
    QTest::newRow("everything") << 6 << 0;
}

void TestLittleEndianReader::namesTheFirstMissingWord()
{
    QFETCH(int, available);
    const MemoryStream stream(QByteArray("\x01\x00\x02\x00\x03\x00", available));
    int second = 77;
    int third = 77;
    LittleEndianReader reader(stream.get());
    QTEST(reader.readWords({{nullptr, -4}, {&second, -5}, {&third, -6}}), "code");
    QCOMPARE(second, available >= 4 ? 2 : 77);
    QCOMPARE(third, available >= 6 ? 3 : 77);
}

ZAN_TEST_MAIN(TestLittleEndianReader)

#include "tst_littleendianreader.moc"
