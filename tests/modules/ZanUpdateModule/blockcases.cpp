#include "blockcases.h"

#include <ZanData.h>

#include <QtTest>

#include <limits>

ControllerImage testImage(const QVector<ControllerImageBlock>& blocks)
{
    return releaseImage(VersionInfo(3, 1, 0), VersionInfo(1, 1), blocks);
}

QByteArray fileWith(const BlockChange& change)
{
    ControllerImage image = testImage({blockOf(FirmwareBlock)});
    change(image.blocks.first());
    return controllerImageBytes(image);
}

QByteArray goodFile()
{
    return fileWith([](ControllerImageBlock&) {});
}

QByteArray briarscopeFile(quint16 magic)
{
    ControllerImage image = testImage({blockOf(FirmwareBlock)});
    image.modelFamily = briarscopeFamily;
    image.blocks.first().magic = magic;
    return controllerImageBytes(image);
}

QByteArray workedExample()
{
    // A header that says: one firmware block, at the byte behind it.
    QByteArray file = goodFile();
    file.truncate(
        ZanData(FixtureFolder().write(QStringLiteral("head"), file)).getUpdateBlock(0)->offset);
    return file + QByteArray::fromHex("58A2 0300 616263 02000000 0300 0300010203 0100FF");
}

QString firstRecord()
{
    return QStringLiteral(R"(set_value "system update 2 1 BIwA")");
}

void addRowsWithoutRecords()
{
    QTest::addColumn<quint32>("recordCount");
    QTest::addColumn<int>("records");
    QTest::newRow("the block has no records") << 0U << 0;
    QTest::newRow("the number of records is negative") << 0xFFFFFFFFU << -1;
    QTest::newRow("the number of records is as low as can be")
        << 0x80000000U << std::numeric_limits<int>::min();
}

static void addRow(const char* name, int result, int record, int percent, const BlockChange& change,
                   const QStringList& log = {})
{
    QTest::newRow(name) << fileWith(change) << result << record << percent << log;
}

static void addRowsOfBadHeads()
{
    addRow("the magic is another one", -4, 0, 1,
           [](ControllerImageBlock& block) { block.magic = 41561; });
    addRow("the magic is that of model family 21 in an image of another", -4, 0, 1,
           [](ControllerImageBlock& block) { block.magic = 41562; });
    addRow("the text is 50 bytes long", -4, 0, 1,
           [](ControllerImageBlock& block) { block.text = QByteArray(50, 'x'); });
    addRow("the text claims to be as long as can be", -4, 0, 1,
           [](ControllerImageBlock& block) { block.textLength = 0xFFFF; });
    addRow("the block begins at the end of the file", -3, 0, 1,
           [](ControllerImageBlock& block) { block.offset = goodFile().size(); });
    addRow("the block begins far behind the end of the file", -3, 0, 1,
           [](ControllerImageBlock& block) { block.offset = 0x7FFFFFFF; });
    addRow("the block begins before the start of the file", -4, 0, 1,
           [](ControllerImageBlock& block) { block.offset = 0xFFFFFFFF; });
    QTest::newRow("the magic is another model family's in an image of model family 21")
        << briarscopeFile(41560) << -4 << 0 << 1 << QStringList();
}

static void addRowsOfBadRecords()
{
    addRow("the first record is one byte above the block's limit", -4, 1, 50,
           [](ControllerImageBlock& block) { block.maxRecordLength = 2; });
    addRow("a later record is one byte above the block's limit", -4, 2, 98,
           [](ControllerImageBlock& block) {
               block.records[1] = QByteArray(4, 'x');
               block.maxRecordLength = 3;
           },
           {firstRecord()});
    addRow("a record of 121 bytes, although the block's limit allows it", -4, 1, 98,
           [](ControllerImageBlock& block) {
               block.records = {QByteArray(121, 'x')};
               block.maxRecordLength = 200;
           });
    addRow("a record as long as can be, although the block's limit allows it", -4, 1, 98,
           [](ControllerImageBlock& block) {
               block.records = {QByteArray(0xFFFF, 'x')};
               block.maxRecordLength = 0xFFFF;
           });
    addRow("a record claims more bytes than the file holds", -3, 2, 98,
           [](ControllerImageBlock& block) {
               block.records[1].announcedLength = 2;
               block.maxRecordLength = 120;
           },
           {firstRecord()});
    addRow("more records are announced than the file holds", -3, 3, 98,
           [](ControllerImageBlock& block) { block.recordCount = 3; },
           {R"(set_value "system update 3 1 BIwA")", R"(set_value "system update 3 2 /D")"});
    addRow("two thousand million records are announced", -3, 3, 1,
           [](ControllerImageBlock& block) { block.recordCount = 0x7FFFFFFF; },
           {R"(set_value "system update 2147483647 1 BIwA")",
            R"(set_value "system update 2147483647 2 /D")"});
}

void addRowsOfBadFiles()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<int>("result");
    QTest::addColumn<int>("record");
    QTest::addColumn<int>("percent");
    QTest::addColumn<QStringList>("log");
    addRowsOfBadHeads();
    addRowsOfBadRecords();
}

void addRowsOfTicks()
{
    QTest::addColumn<int>("records");
    QTest::addColumn<QVector<int>>("ticks");
    QTest::newRow("the only record ticks once") << 1 << QVector<int>{1};
    QTest::newRow("the first and the last of two") << 2 << QVector<int>{1, 2};
    QTest::newRow("the last of a thousand") << 1000 << QVector<int>{1, 1000};
    QTest::newRow("record 1001 is the last one and ticks once") << 1001 << QVector<int>{1, 1001};
    QTest::newRow("once in a thousand records, and at the last")
        << 2500 << QVector<int>{1, 1001, 2001, 2500};
}
