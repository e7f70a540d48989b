#include "sampleimages.h"

#include <testmain.h>

#include <functional>

using ControllerChange = std::function<void(ControllerImage&)>;
using CameraChange = std::function<void(CameraUpdateFile&)>;
Q_DECLARE_METATYPE(ControllerChange)
Q_DECLARE_METATYPE(CameraChange)

class TestImageWriter : public QObject
{
    Q_OBJECT

private slots:
    void everyByteOfAPlainImage();
    void everyByteOfADatedImage();
    void magicsTellLayoutAndFamily_data();
    void magicsTellLayoutAndFamily();
    void blockTableOfMixedEntries();
    void imageWithoutBlocksEndsAfterItsHeader();
    void absentPartsAreFFFF();
    void everyByteOfACameraFile();
    void cameraFileWithoutModelsAndImages();
    void controllerFieldsCanBeOverridden_data();
    void controllerFieldsCanBeOverridden();
    void cameraFieldsCanBeOverridden_data();
    void cameraFieldsCanBeOverridden();
    void maxRecordLengthIsThatOfTheLongest();
    void splittingAndJoining_data();
    void splittingAndJoining();
    void sameValueSameBytes();
    void eitherKindIsWritten();
};

namespace {

ControllerChange onBlock(const std::function<void(ControllerImageBlock&)>& change)
{
    return [change](ControllerImage& image) {
        change(image.blocks[0]);
    };
}

QByteArray hex(const char* text)
{
    return QByteArray::fromHex(text);
}

// The block of sampleRecords() with the magic of the ZAN family.
const QByteArray zanBlock = hex("58a2"          // magic
                                "0300 616263"   // text
                                "02000000 0300" // records, longest record
                                "0300 010203"   // record 1
                                "0100 ff");     // record 2

} // namespace

void TestImageWriter::everyByteOfAPlainImage()
{
    const QByteArray expected = hex("08d2"           //  0 magic
                                    "e100"           //  2 reserved
                                    "1100 1200 1300" //  4 release
                                    "e200"           // 10 reserved
                                    "2100 2200 2300" // 12 new Pt
                                    "3100 3200"      // 18 new Ct
                                    "e300"           // 22 reserved
                                    "4100 4200 4300" // 24 minimum Pt
                                    "4400 4500"      // 30 minimum Ct
                                    "e400"           // 34 reserved
                                    "0100"           // 36 number of blocks
                                    "0100"           // 38 type
                                    "5100 5200 5300" // 40 lowest version
                                    "6100 6200 6300" // 46 highest version
                                    "3c000000"       // 52 offset 60
                                    "15000000");     // 56 length 21
    QCOMPARE(controllerImageBytes(sampleImage(ImageLayout::Plain, 0, {FirmwareBlock})).toHex(),
             (expected + zanBlock).toHex());
}

void TestImageWriter::everyByteOfADatedImage()
{
    const QByteArray expected = hex("1ad2"           //  0 magic
                                    "e100"           //  2 reserved
                                    "1100 1200 1300" //  4 release
                                    "1400 0201"      // 10 pre-release 20, 258
                                    "e907 0300 0e00" // 14 2025-03-14
                                    "ea07 0b00 1e00" // 20 2026-11-30
                                    "e200"           // 26 reserved
                                    "2100 2200 2300" // 28 new Pt
                                    "3100 3200"      // 34 new Ct
                                    "e300"           // 38 reserved
                                    "4100 4200 4300" // 40 minimum Pt
                                    "4400 4500"      // 46 minimum Ct
                                    "e400"           // 50 reserved
                                    "0100"           // 52 number of blocks
                                    "0200"           // 54 type
                                    "5100 5200"      // 56 lowest version
                                    "6100 6200"      // 60 highest version
                                    "48000000"       // 64 offset 72
                                    "15000000"       // 68 length 21
                                    "5aa2"           // 72 block magic of the family
                                    "0300 616263 02000000 0300 0300 010203 0100 ff");
    QCOMPARE(controllerImageBytes(sampleImage(ImageLayout::Dated, briarscopeFamily, {SystemBlock}))
                 .toHex(),
             expected.toHex());
}

void TestImageWriter::magicsTellLayoutAndFamily_data()
{
    QTest::addColumn<bool>("dated");
    QTest::addColumn<int>("family");
    QTest::addColumn<QByteArray>("fileMagic");
    QTest::addColumn<QByteArray>("blockMagic");

    QTest::newRow("plain, ZAN") << false << 0 << hex("08d2") << hex("58a2");
    QTest::newRow("plain, BRIARSCOPE3") << false << 21 << hex("0ad2") << hex("5aa2");
    QTest::newRow("dated, ZAN") << true << 0 << hex("18d2") << hex("58a2");
    QTest::newRow("dated, BRIARSCOPE3") << true << 21 << hex("1ad2") << hex("5aa2");
}

void TestImageWriter::magicsTellLayoutAndFamily()
{
    QFETCH(const bool, dated);
    QFETCH(const int, family);
    const QByteArray bytes = controllerImageBytes(
        sampleImage(dated ? ImageLayout::Dated : ImageLayout::Plain, family, {FirmwareBlock}));
    QTEST(bytes.left(2), "fileMagic");
    QTEST(bytes.mid(dated ? 76 : 60, 2), "blockMagic");
}

void TestImageWriter::blockTableOfMixedEntries()
{
    ControllerImage image = sampleImage(ImageLayout::Plain, 0, {1, 2, 7, 1});
    image.blocks[1].records.clear();
    const QByteArray bytes = controllerImageBytes(image);
    const QByteArray table = hex("0400"
                                 // 38 + 22 + 18 + 18 + 22 = 118 is where the blocks begin
                                 "0100 510052005300 610062006300 76000000 15000000"
                                 "0200 51005200 61006200 8b000000 0d000000"
                                 "0700 51005200 61006200 98000000 15000000"
                                 "0100 510052005300 610062006300 ad000000 15000000");
    QCOMPARE(bytes.mid(36, 82).toHex(), table.toHex());
    const QByteArray emptyBlock = hex("58a2 0300 616263 00000000 0000");
    QCOMPARE(bytes.mid(118).toHex(), (zanBlock + emptyBlock + zanBlock + zanBlock).toHex());
}

void TestImageWriter::imageWithoutBlocksEndsAfterItsHeader()
{
    QCOMPARE(controllerImageBytes(sampleImage(ImageLayout::Plain, 0, {})).size(), 38);
    QCOMPARE(controllerImageBytes(sampleImage(ImageLayout::Dated, 0, {})).size(), 54);
}

void TestImageWriter::absentPartsAreFFFF()
{
    ControllerImage image = sampleImage(ImageLayout::Plain, 0, {});
    image.release = VersionInfo(3);
    QCOMPARE(controllerImageBytes(image).mid(4, 6), hex("0300ffffffff"));
}

void TestImageWriter::everyByteOfACameraFile()
{
    const QByteArray expected = hex("09d2"              //   0 magic
                                    "e100"              //   2 unknown
                                    "1100 1200 1300"    //   4 new version
                                    "e200"              //  10 unknown
                                    "2100 2200 2300"    //  12 minimum version
                                    "e300"              //  18 unknown
                                    "0200"              //  20 number of models
                                    "0109 010c"         //  22 models
                                    "e400"              //  26 unknown
                                    "0200"              //  28 number of images
                                    "1100 1200 1300"    //  30 versions of the file
                                    "2100 2200 2300"    //
                                    "46000000 15000000" //  offset 70, length 21
                                    "3100 3200 3300"    //  50 versions of its own
                                    "4100 4200 4300"    //
                                    "5b000000 14000000" //  offset 91, length 20
                                    "59a2 0300 616263 02000000 0300 0300 010203 0100 ff"
                                    "59a2 0600 7365636f6e64 01000000 0200 0200 0a0b");
    QCOMPARE(cameraUpdateBytes(sampleCameraFile()).toHex(), expected.toHex());
}

void TestImageWriter::cameraFileWithoutModelsAndImages()
{
    CameraUpdateFile file = sampleCameraFile();
    file.models.clear();
    file.images.clear();
    QCOMPARE(cameraUpdateBytes(file).mid(18).toHex(), hex("e3000000e4000000").toHex());
}

void TestImageWriter::controllerFieldsCanBeOverridden_data()
{
    QTest::addColumn<ControllerChange>("change");
    QTest::addColumn<int>("offset");
    QTest::addColumn<QByteArray>("bytes");

    const auto row = [](const char* name, const ControllerChange& change, int offset,
                        const char* bytes) {
        QTest::newRow(name) << change << offset << hex(bytes);
    };
    row(
        "magic", [](ControllerImage& i) { i.magic = 0xD209; }, 0, "09d2");
    row(
        "number of blocks", [](ControllerImage& i) { i.blockCount = 0xFFFF; }, 36, "ffff");
    row("block offset", onBlock([](ControllerImageBlock& b) { b.offset = 0x80000001; }), 52,
        "01000080");
    row("block length", onBlock([](ControllerImageBlock& b) { b.length = 0x12345678; }), 56,
        "78563412");
    row("block magic", onBlock([](ControllerImageBlock& b) { b.magic = 0xA25A; }), 60, "5aa2");
    row("text length", onBlock([](ControllerImageBlock& b) { b.textLength = 50; }), 62, "3200");
    row("number of records", onBlock([](ControllerImageBlock& b) { b.recordCount = 0xFFFFFFFE; }),
        67, "feffffff");
    row("maximum record length", onBlock([](ControllerImageBlock& b) { b.maxRecordLength = 121; }),
        71, "7900");
    row("length of a record",
        onBlock([](ControllerImageBlock& b) { b.records[1].announcedLength = 0x0403; }), 78,
        "0304");
}

void TestImageWriter::controllerFieldsCanBeOverridden()
{
    QFETCH(const ControllerChange, change);
    QFETCH(const int, offset);
    QFETCH(const QByteArray, bytes);
    ControllerImage image = sampleImage(ImageLayout::Plain, 0, {FirmwareBlock});
    QByteArray expected = controllerImageBytes(image);
    QVERIFY(expected.mid(offset, bytes.size()) != bytes);

    expected.replace(offset, bytes.size(), bytes);
    change(image);
    QCOMPARE(controllerImageBytes(image).toHex(), expected.toHex());
}

void TestImageWriter::cameraFieldsCanBeOverridden_data()
{
    QTest::addColumn<CameraChange>("change");
    QTest::addColumn<int>("offset");
    QTest::addColumn<QByteArray>("bytes");

    const auto row = [](const char* name, const CameraChange& change, int offset,
                        const char* bytes) {
        QTest::newRow(name) << change << offset << hex(bytes);
    };
    row(
        "magic", [](CameraUpdateFile& f) { f.magic = 0xD208; }, 0, "08d2");
    row(
        "number of models", [](CameraUpdateFile& f) { f.modelCount = 0xFFFF; }, 20, "ffff");
    row(
        "number of images", [](CameraUpdateFile& f) { f.imageCount = 3; }, 28, "0300");
    row(
        "image offset", [](CameraUpdateFile& f) { f.images[0].offset = 1; }, 42, "01000000");
    row(
        "image length", [](CameraUpdateFile& f) { f.images[0].length = 2; }, 46, "02000000");
    row(
        "image magic", [](CameraUpdateFile& f) { f.images[0].magic = 0xA258; }, 70, "58a2");
    row(
        "version text length", [](CameraUpdateFile& f) { f.images[0].textLength = 201; }, 72,
        "c900");
}

void TestImageWriter::cameraFieldsCanBeOverridden()
{
    QFETCH(const CameraChange, change);
    QFETCH(const int, offset);
    QFETCH(const QByteArray, bytes);
    CameraUpdateFile file = sampleCameraFile();
    QByteArray expected = cameraUpdateBytes(file);
    QVERIFY(expected.mid(offset, bytes.size()) != bytes);

    expected.replace(offset, bytes.size(), bytes);
    change(file);
    QCOMPARE(cameraUpdateBytes(file).toHex(), expected.toHex());
}

void TestImageWriter::maxRecordLengthIsThatOfTheLongest()
{
    ControllerImage image = sampleImage(ImageLayout::Plain, 0, {FirmwareBlock});
    image.blocks[0].records = {QByteArray(5, 'x'), QByteArray(120, 'x'), QByteArray(7, 'x')};
    QCOMPARE(controllerImageBytes(image).mid(71, 2), hex("7800"));
}

void TestImageWriter::splittingAndJoining_data()
{
    QTest::addColumn<int>("payloadBytes");
    QTest::addColumn<int>("recordLength");
    QTest::addColumn<int>("records");
    QTest::addColumn<int>("lastLength");

    QTest::newRow("one full record") << 120 << 120 << 1 << 120;
    QTest::newRow("a byte less") << 119 << 120 << 1 << 119;
    QTest::newRow("a byte more") << 121 << 120 << 2 << 1;
    QTest::newRow("records of one byte") << 3 << 1 << 3 << 1;
}

void TestImageWriter::splittingAndJoining()
{
    QFETCH(const int, payloadBytes);
    QFETCH(const int, recordLength);
    QByteArray payload;
    for (int index = 0; index < payloadBytes; ++index)
        payload.append(static_cast<char>(index));

    const QVector<ImageRecord> records = splitIntoRecords(payload, recordLength);
    QTEST(records.size(), "records");
    QTEST(records.last().data.size(), "lastLength");
    QCOMPARE(joinRecords(records), payload);
    QVERIFY(splitIntoRecords(QByteArray()).isEmpty());
}

void TestImageWriter::sameValueSameBytes()
{
    ControllerImage image = sampleImage(ImageLayout::Dated, 0, {FirmwareBlock, SystemBlock});
    image.blocks[0].records = splitIntoRecords(
        makePayload({PayloadComponent::TrackingSoftware, image.newPt, {}}, 5000, 9));
    const ControllerImage copy = image;
    QCOMPARE(controllerImageBytes(copy), controllerImageBytes(image));
}

void TestImageWriter::eitherKindIsWritten()
{
    const ControllerImage image = sampleImage(ImageLayout::Plain, 0, {FirmwareBlock});
    QCOMPARE(updateFileBytes(image), controllerImageBytes(image));
    QCOMPARE(updateFileBytes(sampleCameraFile()), cameraUpdateBytes(sampleCameraFile()));
}

ZAN_TEST_MAIN(TestImageWriter)
#include "tst_imagewriter.moc"
