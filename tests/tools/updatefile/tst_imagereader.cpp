#include "imagereader.h"
#include "sampleimages.h"

#include <testmain.h>

class TestImageReader : public QObject
{
    Q_OBJECT

private slots:
    void soundFilesComeBack_data();
    void soundFilesComeBack();
    void everyFieldComesBack();
    void everyCameraFieldComesBack();
    void cutFilesAreNotSound_data();
    void cutFilesAreNotSound();
    void namesWhereTheHeaderEnds_data();
    void namesWhereTheHeaderEnds();
    void namesTheProblem_data();
    void namesTheProblem();
    void goesOnWithTheNextBlock();
    void readsOverlappingBlocksOnce();
    void readsNoBlockIntoAnother_data();
    void readsNoBlockIntoAnother();
};

namespace {

ControllerImage soundImage(ImageLayout layout, int modelFamily)
{
    return sampleImage(layout, modelFamily, {FirmwareBlock, SystemBlock, FirmwareBlock});
}

const QByteArray plainBytes = controllerImageBytes(soundImage(ImageLayout::Plain, 0));
const QByteArray datedBytes =
    controllerImageBytes(soundImage(ImageLayout::Dated, briarscopeFamily));
const QByteArray cameraBytes = cameraUpdateBytes(sampleCameraFile());

} // namespace

void TestImageReader::soundFilesComeBack_data()
{
    QTest::addColumn<QByteArray>("bytes");

    QTest::newRow("plain image") << plainBytes;
    QTest::newRow("dated image") << datedBytes;
    QTest::newRow("camera file") << cameraBytes;
}

void TestImageReader::soundFilesComeBack()
{
    QFETCH(const QByteArray, bytes);
    const ReadUpdateFile content = readUpdateFile(bytes);
    QCOMPARE(content.problems, QStringList());
    QVERIFY(content.file.has_value());
    QCOMPARE(updateFileBytes(*content.file).toHex(), bytes.toHex());
}

void TestImageReader::everyFieldComesBack()
{
    const ReadUpdateFile content = readUpdateFile(datedBytes);
    const auto* image = std::get_if<ControllerImage>(&*content.file);
    QVERIFY(image != nullptr);
    QVERIFY(image->layout == ImageLayout::Dated);
    QCOMPARE(image->modelFamily, briarscopeFamily);
    QVERIFY(image->release == VersionInfo(0x11, 0x12, 0x13));
    QCOMPARE(image->preReleaseType, 20);
    QCOMPARE(image->preReleaseNumber, 0x0102);
    QCOMPARE(image->releaseDate.year, 2025);
    QCOMPARE(image->minorReleaseDate.day, 30);
    QVERIFY(image->newPt == VersionInfo(0x21, 0x22, 0x23));
    QVERIFY(image->newCt == VersionInfo(0x31, 0x32));
    QVERIFY(image->minPt == VersionInfo(0x41, 0x42, 0x43));
    QVERIFY(image->minCt == VersionInfo(0x44, 0x45));
    QCOMPARE(image->blocks.size(), 3);
    QVERIFY(image->blocks[0].maxVer == VersionInfo(0x61, 0x62, 0x63));
    QVERIFY(image->blocks[1].minVer == VersionInfo(0x51, 0x52));
    QCOMPARE(image->blocks[2].text, QByteArray("abc"));
    QCOMPARE(joinRecords(image->blocks[2].records), QByteArray("\x01\x02\x03\xFF"));
}

void TestImageReader::everyCameraFieldComesBack()
{
    const ReadUpdateFile content = readUpdateFile(cameraBytes);
    const auto* file = std::get_if<CameraUpdateFile>(&*content.file);
    QVERIFY(file != nullptr);
    QVERIFY(file->newVer == VersionInfo(0x11, 0x12, 0x13));
    QVERIFY(file->minVer == VersionInfo(0x21, 0x22, 0x23));
    QCOMPARE(file->models, (QVector<quint16>{0x0901, 0x0C01}));
    QCOMPARE(file->images.size(), 2);
    QVERIFY(file->images[1].newVer == VersionInfo(0x31, 0x32, 0x33));
    QCOMPARE(file->images[1].text, QByteArray("second"));
    QCOMPARE(joinRecords(file->images[1].records), QByteArray("\x0A\x0B"));
}

void TestImageReader::cutFilesAreNotSound_data()
{
    soundFilesComeBack_data();
}

void TestImageReader::cutFilesAreNotSound()
{
    QFETCH(const QByteArray, bytes);
    for (int length = 0; length < bytes.size(); ++length) {
        const ReadUpdateFile content = readUpdateFile(bytes.left(length));
        QVERIFY2(!content.problems.isEmpty(), qPrintable(QString::number(length)));
    }
}

void TestImageReader::namesWhereTheHeaderEnds_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("problem");

    const auto row = [](const QByteArray& bytes, int length, const char* field, int fieldSize) {
        QTest::addRow("%d bytes of %d", length, bytes.size())
            << bytes.left(length)
            << QString("%1 is cut off by the end of the file, expected %2 bytes")
                   .arg(field, QString::number(fieldSize));
    };
    row(datedBytes, 0, "magic (offset 0)", 2);
    row(datedBytes, 1, "magic (offset 0)", 2);
    row(datedBytes, 2, "reserved1 (offset 2)", 2);
    row(datedBytes, 9, "release (offset 4)", 6);
    row(datedBytes, 10, "preReleaseType (offset 10)", 2);
    row(datedBytes, 12, "preReleaseNumber (offset 12)", 2);
    row(datedBytes, 19, "releaseDate (offset 14)", 6);
    row(datedBytes, 20, "minorReleaseDate (offset 20)", 6);
    row(datedBytes, 26, "reserved2 (offset 26)", 2);
    row(datedBytes, 28, "newPt (offset 28)", 6);
    row(datedBytes, 34, "newCt (offset 34)", 4);
    row(datedBytes, 38, "reserved3 (offset 38)", 2);
    row(datedBytes, 40, "minPt (offset 40)", 6);
    row(datedBytes, 46, "minCt (offset 46)", 4);
    row(datedBytes, 50, "reserved4 (offset 50)", 2);
    row(datedBytes, 52, "blockCount (offset 52)", 2);
    row(datedBytes, 54, "blocks[0].type (offset 54)", 2);
    row(datedBytes, 115, "blocks[2].length (offset 112)", 4);
    row(plainBytes, 10, "reserved2 (offset 10)", 2);
    row(cameraBytes, 4, "newVersion (offset 4)", 6);
    row(cameraBytes, 12, "minVersion (offset 12)", 6);
    row(cameraBytes, 20, "modelCount (offset 20)", 2);
    row(cameraBytes, 24, "models[1] (offset 24)", 2);
    row(cameraBytes, 28, "imageCount (offset 28)", 2);
    row(cameraBytes, 30, "images[0].newVersion (offset 30)", 6);
}

void TestImageReader::namesWhereTheHeaderEnds()
{
    QFETCH(const QByteArray, bytes);
    QFETCH(const QString, problem);
    const ReadUpdateFile content = readUpdateFile(bytes);
    QVERIFY(!content.file.has_value());
    QCOMPARE(content.problems, QStringList{problem});
}

void TestImageReader::namesTheProblem_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("problem");

    const auto imageRow = [](const char* name, void (*change)(ControllerImage&),
                             const char* problem) {
        ControllerImage image = sampleImage(ImageLayout::Plain, 0, {FirmwareBlock});
        change(image);
        QTest::newRow(name) << controllerImageBytes(image) << QString(problem);
    };
    imageRow(
        "unknown magic", [](ControllerImage& i) { i.magic = 0xD20B; },
        "magic (offset 0) is 0xd20b, expected that of an update file");
    imageRow(
        "no blocks", [](ControllerImage& i) { i.blocks.clear(); },
        "blockCount (offset 36) is 0, expected at least 1");

    using Block = ControllerImageBlock;
    const auto row = [](const char* name, void (*change)(Block&), const char* problem) {
        ControllerImage image = sampleImage(ImageLayout::Plain, 0, {FirmwareBlock});
        change(image.blocks[0]);
        QTest::newRow(name) << controllerImageBytes(image) << QString(problem);
    };
    row(
        "unknown type", [](Block& b) { b.type = 7; },
        "blocks[0].type (offset 38) is 7, expected 1 (firmware) or 2 (system)");
    row(
        "range of one version", [](Block& b) { b.minVer = b.maxVer; }, "");
    row(
        "offset beyond the end", [](Block& b) { b.offset = 1000; },
        "blocks[0].magic (offset 1000) is cut off by the end of the file, expected 2 bytes");
    row(
        "offset with its top bit set", [](Block& b) { b.offset = 0x80000000; },
        "blocks[0].magic (offset 2147483648) is cut off by the end of the file, expected 2 bytes");
    row(
        "length other than that of the block", [](Block& b) { b.length = 22; },
        "blocks[0].length (offset 56) is 22, expected the 21 bytes of its head and 2 records");
    row(
        "block magic of the other family", [](Block& b) { b.magic = 0xA25A; },
        "blocks[0].magic (offset 60) is 0xa25a, expected 0xa258");
    row(
        "text of 49 bytes", [](Block& b) { b.text = QByteArray(49, 'x'); }, "");
    row(
        "text of 50 bytes", [](Block& b) { b.text = QByteArray(50, 'x'); },
        "blocks[0].textLength (offset 62) is 50, expected at most 49");
    row(
        "no records", [](Block& b) { b.records.clear(); },
        "blocks[0].recordCount (offset 67) is 0, expected at least 1");
    row(
        "negative number of records", [](Block& b) { b.recordCount = 0xFFFFFFFE; },
        "blocks[0].recordCount (offset 67) is -2, expected at least 1");
    row(
        "more records than there are", [](Block& b) { b.recordCount = 3; },
        "blocks[0].records[2] (offset 81) is cut off by the end of the file, expected a record");
    row(
        "fewer records than there are", [](Block& b) { b.recordCount = 1; },
        "blocks[0].length (offset 56) is 21, expected the 18 bytes of its head and 1 records");
    row(
        "record as long as the block allows", [](Block& b) { b.maxRecordLength = 3; }, "");
    row(
        "record longer than the block allows", [](Block& b) { b.maxRecordLength = 2; },
        "blocks[0].records[0] (offset 73) is 3 bytes long, expected at most 2");
    row(
        "record of 120 bytes", [](Block& b) { b.records[1] = QByteArray(120, 'x'); }, "");
    row(
        "record of 121 bytes",
        [](Block& b) {
            b.records[1] = QByteArray(121, 'x');
            b.maxRecordLength = 120;
        },
        "blocks[0].records[1] (offset 78) is 121 bytes long, expected at most 120");
    row(
        "bound above what devices take", [](Block& b) { b.maxRecordLength = 121; },
        "blocks[0].maxRecordLength (offset 71) is 121, expected at most 120");
    row(
        "record shorter than announced", [](Block& b) { b.records[1].announcedLength = 2; },
        "blocks[0].records[1] (offset 78) is cut off by the end of the file, expected 2 bytes");

    const auto cameraRow = [](const char* name, void (*change)(CameraUpdateFile&),
                              const char* problem) {
        CameraUpdateFile file = sampleCameraFile();
        change(file);
        QTest::newRow(name) << cameraUpdateBytes(file) << QString(problem);
    };
    cameraRow(
        "no models", [](CameraUpdateFile& f) { f.models.clear(); },
        "modelCount (offset 20) is 0, expected at least 1");
    cameraRow(
        "no images", [](CameraUpdateFile& f) { f.images.clear(); },
        "imageCount (offset 28) is 0, expected at least 1");
    cameraRow(
        "image elsewhere", [](CameraUpdateFile& f) { f.images[1].offset = 90; },
        "images[1].offset (offset 62) is 90, expected 91");
    cameraRow(
        "image of another length", [](CameraUpdateFile& f) { f.images[1].length = 19; },
        "images[1].length (offset 66) is 19, expected the 20 bytes of its head and 1 records");
    cameraRow(
        "image magic of a block", [](CameraUpdateFile& f) { f.images[1].magic = 0xA258; },
        "images[1].magic (offset 91) is 0xa258, expected 0xa259");
    cameraRow(
        "version text of 201 bytes",
        [](CameraUpdateFile& f) { f.images[1].text = QByteArray(201, 'x'); },
        "images[1].textLength (offset 93) is 201, expected at most 200");
}

void TestImageReader::namesTheProblem()
{
    QFETCH(const QByteArray, bytes);
    QFETCH(const QString, problem);
    const QStringList expected = problem.isEmpty() ? QStringList() : QStringList{problem};
    QCOMPARE(readUpdateFile(bytes).problems, expected);
}

void TestImageReader::goesOnWithTheNextBlock()
{
    ControllerImage image = sampleImage(ImageLayout::Plain, 0, {FirmwareBlock, SystemBlock});
    image.blocks[0].magic = 0;
    const ReadUpdateFile content = readUpdateFile(controllerImageBytes(image));
    QCOMPARE(content.problems.size(), 1);
    const auto& read = std::get<ControllerImage>(*content.file);
    QVERIFY(read.blocks[0].records.isEmpty());
    QCOMPARE(read.blocks[1].records.size(), 2);
}

void TestImageReader::readsOverlappingBlocksOnce()
{
    ControllerImage image = sampleImage(ImageLayout::Plain, 0, {});
    image.blocks = QVector<ControllerImageBlock>(65535, sampleBlock(SystemBlock));
    for (ControllerImageBlock& block : image.blocks)
        block.offset = 38 + 65535 * 18;
    QByteArray bytes = controllerImageBytes(image);
    bytes.truncate(38 + 65535 * 18 + 21);
    const ReadUpdateFile content = readUpdateFile(bytes);
    QCOMPARE(content.problems.size(), 65534);
    QCOMPARE(
        content.problems.last(),
        QString("blocks[65534].offset (offset 1179660) is 1179668, expected another place than "
                "that of blocks[0]"));
    const auto& read = std::get<ControllerImage>(*content.file);
    QCOMPARE(read.blocks[0].records.size(), 2);
    QCOMPARE(read.blocks[65534].records.size(), 0);
}

void TestImageReader::readsNoBlockIntoAnother_data()
{
    QTest::addColumn<quint32>("first");
    QTest::addColumn<quint32>("second");
    QTest::addColumn<QString>("problem");

    // The blocks are written at 74 and 95.
    QTest::newRow("beginning within another")
        << 74U << 79U
        << "blocks[1].offset (offset 66) is 79, expected a place outside of blocks[0], which ends "
           "at 95";
    QTest::newRow("running into one that was read before")
        << 95U << 74U
        << "blocks[1].records[2] (offset 95) is in the next block, expected to end "
           "before it";
}

void TestImageReader::readsNoBlockIntoAnother()
{
    QFETCH(const quint32, first);
    QFETCH(const quint32, second);
    ControllerImage image = sampleImage(ImageLayout::Plain, 0, {SystemBlock, SystemBlock});
    QCOMPARE(std::get<ControllerImage>(*readUpdateFile(controllerImageBytes(image)).file)
                 .blocks[1]
                 .offset,
             std::optional<quint32>(95));
    image.blocks[0].offset = first;
    image.blocks[1].offset = second;
    if (second < first)
        image.blocks[0].recordCount = 3; // written first, read last
    QTEST(readUpdateFile(controllerImageBytes(image)).problems.join('\n'), "problem");
}

ZAN_TEST_MAIN(TestImageReader)
#include "tst_imagereader.moc"
