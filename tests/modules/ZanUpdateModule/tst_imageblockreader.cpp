#include "imageblockreader.h"

#include "imagefixtures.h"
#include "littleendianreader.h"
#include "memorystream.h"
#include "testmain.h"

class TestImageBlockReader : public QObject
{
    Q_OBJECT

private slots:
    void readsAWholeBlock();
    void readsWhatTheImageWriterWrites();
    void cannotReadABlockCutAtAnyByte();
    void tellsBlocksByTheirMagic_data();
    void tellsBlocksByTheirMagic();
    void limitsTheBlockText_data();
    void limitsTheBlockText();
    void keepsTheCountAsASignedNumber_data();
    void keepsTheCountAsASignedNumber();
    void limitsRecords_data();
    void limitsRecords();
};

// Text "abc", two records, three bytes at most: 01 02 03 and FF.
static const QByteArray BLOCK =
    QByteArray::fromHex("58A2 0300 616263 02000000 0300 0300 010203 0100 FF");

static QByteArray word(int value)
{
    const char bytes[] = {static_cast<char>(value & 0xFF), static_cast<char>(value >> 8)};
    return QByteArray(bytes, 2);
}

static QByteArray bytesOf(const UpdateRecord& record)
{
    return QByteArray(reinterpret_cast<const char*>(record.data), record.length);
}

/// How far the reading of a block went, and what was read.
struct ReadBlock
{
    BlockRead result = BlockRead::Ok;
    ImageBlockHead head;
    QList<QByteArray> records;
};

static ReadBlock readBlock(const QByteArray& bytes, int systemModel = 0)
{
    const MemoryStream stream(bytes);
    LittleEndianReader reader(stream.get());
    ReadBlock block;
    block.result = readImageBlockHead(reader, systemModel, &block.head);
    for (int i = 0; block.result == BlockRead::Ok && i < block.head.recordCount; ++i) {
        UpdateRecord record;
        block.result = readImageRecord(reader, block.head.maxRecordLength, &record);
        if (block.result == BlockRead::Ok)
            block.records += bytesOf(record);
    }
    return block;
}

void TestImageBlockReader::readsAWholeBlock()
{
    const ReadBlock block = readBlock(BLOCK);
    QCOMPARE(block.result, BlockRead::Ok);
    QCOMPARE(block.head.recordCount, 2);
    QCOMPARE(block.head.maxRecordLength, 3);
    QCOMPARE(block.records, (QList<QByteArray>{"\x01\x02\x03", "\xFF"}));
}

void TestImageBlockReader::readsWhatTheImageWriterWrites()
{
    ControllerImage image = releaseImage(
        {3, 0, 0}, {1, 0}, {firmwareBlock({1, 0, 0}, {2, 9, 9}), systemBlock({0, 1}, {0, 9})});
    image.modelFamily = 21;
    const QByteArray bytes = controllerImageBytes(image);
    const int size = BLOCK.size();
    for (const QByteArray& block : {bytes.right(2 * size).left(size), bytes.right(size)}) {
        QCOMPARE(block.left(2), QByteArray("\x5A\xA2"));
        QCOMPARE(block.mid(2), BLOCK.mid(2));
        QCOMPARE(readBlock(block, 21).records, (QList<QByteArray>{"\x01\x02\x03", "\xFF"}));
    }
}

void TestImageBlockReader::cannotReadABlockCutAtAnyByte()
{
    for (int length = 0; length < BLOCK.size(); ++length) {
        const ReadBlock block = readBlock(BLOCK.left(length));
        QVERIFY2(block.result == BlockRead::CannotRead,
                 qPrintable(QStringLiteral("cut after %1 bytes").arg(length)));
    }
}

void TestImageBlockReader::tellsBlocksByTheirMagic_data()
{
    QTest::addColumn<int>("systemModel");
    QTest::addColumn<int>("magic");
    QTest::addColumn<bool>("isBlock");

    QTest::newRow("model 0 has the common magic") << 0 << 41560 << true;
    QTest::newRow("model 21 has its own") << 21 << 41562 << true;
    QTest::newRow("model 21 does not take the common one") << 21 << 41560 << false;
    QTest::newRow("model 0 does not take that of model 21") << 0 << 41562 << false;
    QTest::newRow("any other model has the common magic") << 2 << 41560 << true;
    QTest::newRow("an unknown model has the common magic") << -1 << 41560 << true;
    QTest::newRow("a camera image is no block") << 0 << 41561 << false;
    QTest::newRow("the start of an image is no block") << 0 << 0xD208 << false;
    QTest::newRow("zeros are no block") << 0 << 0 << false;
}

void TestImageBlockReader::tellsBlocksByTheirMagic()
{
    QFETCH(int, systemModel);
    QFETCH(int, magic);
    QFETCH(bool, isBlock);
    QCOMPARE(readBlock(word(magic) + BLOCK.mid(2), systemModel).result,
             isBlock ? BlockRead::Ok : BlockRead::NoUpdateFile);
}

void TestImageBlockReader::limitsTheBlockText_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<bool>("isBlock");

    QTest::newRow("no text is accepted") << 0 << true;
    QTest::newRow("49 bytes are accepted") << 49 << true;
    QTest::newRow("50 bytes are refused") << 50 << false;
    QTest::newRow("the largest length is refused") << 65535 << false;
}

void TestImageBlockReader::limitsTheBlockText()
{
    QFETCH(int, length);
    QFETCH(bool, isBlock);
    const QByteArray bytes = BLOCK.left(2) + word(length) + QByteArray(length, 'x') + BLOCK.mid(7);
    const ReadBlock block = readBlock(bytes);
    QCOMPARE(block.result, isBlock ? BlockRead::Ok : BlockRead::NoUpdateFile);
    QCOMPARE(block.records.size(), isBlock ? 2 : 0);
}

void TestImageBlockReader::keepsTheCountAsASignedNumber_data()
{
    QTest::addColumn<QByteArray>("field");
    QTest::addColumn<int>("count");

    QTest::newRow("none") << QByteArray::fromHex("00000000") << 0;
    QTest::newRow("the largest") << QByteArray::fromHex("FFFFFF7F") << 2147483647;
    QTest::newRow("a set top bit is negative") << QByteArray::fromHex("00000080") << INT_MIN;
    QTest::newRow("all bits set are -1") << QByteArray::fromHex("FFFFFFFF") << -1;
}

void TestImageBlockReader::keepsTheCountAsASignedNumber()
{
    QFETCH(QByteArray, field);
    const MemoryStream stream(BLOCK.left(7) + field + word(3));
    LittleEndianReader reader(stream.get());
    ImageBlockHead head;
    QCOMPARE(readImageBlockHead(reader, 0, &head), BlockRead::Ok);
    QTEST(head.recordCount, "count");
}

void TestImageBlockReader::limitsRecords_data()
{
    QTest::addColumn<int>("maxRecordLength");
    QTest::addColumn<int>("length");
    QTest::addColumn<bool>("isRecord");

    QTest::newRow("an empty record is accepted") << 3 << 0 << true;
    QTest::newRow("an empty record is accepted where nothing else is") << 0 << 0 << true;
    QTest::newRow("the block's limit is accepted") << 3 << 3 << true;
    QTest::newRow("one above the block's limit is refused") << 3 << 4 << false;
    QTest::newRow("120 bytes are accepted") << 120 << 120 << true;
    QTest::newRow("121 bytes are refused whatever the block allows") << 65535 << 121 << false;
    QTest::newRow("the largest length is refused") << 65535 << 65535 << false;
}

void TestImageBlockReader::limitsRecords()
{
    QFETCH(int, maxRecordLength);
    QFETCH(int, length);
    QFETCH(bool, isRecord);
    const QByteArray data(length, 'x');
    const MemoryStream stream(word(length) + data);
    LittleEndianReader reader(stream.get());
    UpdateRecord record;
    QCOMPARE(readImageRecord(reader, maxRecordLength, &record),
             isRecord ? BlockRead::Ok : BlockRead::NoUpdateFile);
    if (isRecord)
        QCOMPARE(bytesOf(record), data);
}

ZAN_TEST_MAIN(TestImageBlockReader)

#include "tst_imageblockreader.moc"
