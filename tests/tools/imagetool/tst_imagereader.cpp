#include "imagereader.h"
#include "sampleimages.h"

#include <testmain.h>

class ImageReaderTest : public QObject
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
};

static ControllerImage soundImage(ImageLayout layout, int modelFamily)
{
    return sampleImage(layout, modelFamily, {FirmwareBlock, SystemBlock, FirmwareBlock});
}

static const QByteArray plainBytes = controllerImageBytes(soundImage(ImageLayout::Plain, 0));
static const QByteArray datedBytes =
    controllerImageBytes(soundImage(ImageLayout::Dated, briarscopeFamily));
static const QByteArray cameraBytes = cameraUpdateBytes(sampleCameraFile());

void ImageReaderTest::soundFilesComeBack_data()
{
    QTest::addColumn<QByteArray>("bytes");

    QTest::newRow("plain image") << plainBytes;
    QTest::newRow("dated image") << datedBytes;
    QTest::newRow("camera file") << cameraBytes;
}

void ImageReaderTest::soundFilesComeBack()
{
    QFETCH(const QByteArray, bytes);
    const ReadUpdateFile content = readUpdateFile(bytes);
    QCOMPARE(content.problems, QStringList());
    QVERIFY(content.file.has_value());
    QCOMPARE(updateFileBytes(*content.file).toHex(), bytes.toHex());
}

void ImageReaderTest::everyFieldComesBack()
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

void ImageReaderTest::everyCameraFieldComesBack()
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

void ImageReaderTest::cutFilesAreNotSound_data()
{
    soundFilesComeBack_data();
}

void ImageReaderTest::cutFilesAreNotSound()
{
    QFETCH(const QByteArray, bytes);
    for (int length = 0; length < bytes.size(); ++length) {
        const ReadUpdateFile content = readUpdateFile(bytes.left(length));
        QVERIFY2(!content.problems.isEmpty(), qPrintable(QString::number(length)));
    }
}

void ImageReaderTest::namesWhereTheHeaderEnds_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("problem");

    const auto row = [](const QByteArray& bytes, int length, const char* problem) {
        QTest::addRow("%d bytes of %d", length, bytes.size())
            << bytes.left(length) << QString(problem);
    };
    row(datedBytes, 0, "offset 0: the file ends within the magic");
    row(datedBytes, 1, "offset 0: the file ends within the magic");
    row(datedBytes, 2, "offset 2: the file ends within the first reserved word");
    row(datedBytes, 9, "offset 8: the file ends within the release version");
    row(datedBytes, 10, "offset 10: the file ends within the pre-release type");
    row(datedBytes, 12, "offset 12: the file ends within the pre-release number");
    row(datedBytes, 19, "offset 18: the file ends within the release date");
    row(datedBytes, 20, "offset 20: the file ends within the minor-release date");
    row(datedBytes, 26, "offset 26: the file ends within the second reserved word");
    row(datedBytes, 28, "offset 28: the file ends within the new Pt");
    row(datedBytes, 34, "offset 34: the file ends within the new Ct");
    row(datedBytes, 38, "offset 38: the file ends within the third reserved word");
    row(datedBytes, 40, "offset 40: the file ends within the minimum Pt");
    row(datedBytes, 46, "offset 46: the file ends within the minimum Ct");
    row(datedBytes, 50, "offset 50: the file ends within the fourth reserved word");
    row(datedBytes, 52, "offset 52: the file ends within the number of blocks");
    row(datedBytes, 54, "offset 54: the file ends within the block table");
    row(datedBytes, 115, "offset 112: the file ends within the block table");
    row(plainBytes, 10, "offset 10: the file ends within the second reserved word");
    row(cameraBytes, 4, "offset 4: the file ends within the new version");
    row(cameraBytes, 12, "offset 12: the file ends within the minimum version");
    row(cameraBytes, 20, "offset 20: the file ends within the number of models");
    row(cameraBytes, 24, "offset 24: the file ends within the list of models");
    row(cameraBytes, 28, "offset 28: the file ends within the number of images");
    row(cameraBytes, 30, "offset 30: the file ends within the image table");
}

void ImageReaderTest::namesWhereTheHeaderEnds()
{
    QFETCH(const QByteArray, bytes);
    QFETCH(const QString, problem);
    const ReadUpdateFile content = readUpdateFile(bytes);
    QVERIFY(!content.file.has_value());
    QCOMPARE(content.problems, QStringList{problem});
}

void ImageReaderTest::namesTheProblem_data()
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
        "offset 0: 0xd20b is not the magic of an update file");
    imageRow(
        "no blocks", [](ControllerImage& i) { i.blocks.clear(); }, "there are no blocks");

    using Block = ControllerImageBlock;
    const auto row = [](const char* name, void (*change)(Block&), const char* problem) {
        ControllerImage image = sampleImage(ImageLayout::Plain, 0, {FirmwareBlock});
        change(image.blocks[0]);
        QTest::newRow(name) << controllerImageBytes(image) << QString(problem);
    };
    row(
        "unknown type", [](Block& b) { b.type = 7; }, "blocks[0]: type 7 is unknown");
    row(
        "range of one version", [](Block& b) { b.minVer = b.maxVer; }, "");
    row(
        "range upside down", [](Block& b) { b.minVer = VersionInfo(0x61, 0x62, 0x64); },
        "blocks[0]: the lowest version is above the highest");
    row(
        "offset beyond the end", [](Block& b) { b.offset = 1000; },
        "blocks[0]: offset 1000: the file ends within the block magic");
    row(
        "offset with its top bit set", [](Block& b) { b.offset = 0x80000000; },
        "blocks[0]: offset 2147483648: the file ends within the block magic");
    row(
        "length other than that of the block", [](Block& b) { b.length = 22; },
        "blocks[0]: the table says 22 bytes, there are 21");
    row(
        "block magic of the other family", [](Block& b) { b.magic = 0xA25A; },
        "blocks[0]: offset 60: block magic is 0xa25a, not 0xa258");
    row(
        "text of 49 bytes", [](Block& b) { b.text = QByteArray(49, 'x'); }, "");
    row(
        "text of 50 bytes", [](Block& b) { b.text = QByteArray(50, 'x'); },
        "blocks[0]: offset 62: text announces 50 bytes, more than 49");
    row(
        "no records", [](Block& b) { b.records.clear(); },
        "blocks[0]: offset 67: the number of records is 0");
    row(
        "negative number of records", [](Block& b) { b.recordCount = 0xFFFFFFFE; },
        "blocks[0]: offset 67: the number of records is -2");
    row(
        "more records than there are", [](Block& b) { b.recordCount = 3; },
        "blocks[0]: offset 81: the file ends within the length of a record");
    row(
        "fewer records than there are", [](Block& b) { b.recordCount = 1; },
        "blocks[0]: the table says 21 bytes, there are 18");
    row(
        "record as long as the block allows", [](Block& b) { b.maxRecordLength = 3; }, "");
    row(
        "record longer than the block allows", [](Block& b) { b.maxRecordLength = 2; },
        "blocks[0]: offset 73: record 1 announces 3 bytes, more than 2");
    row(
        "record of 120 bytes", [](Block& b) { b.records[1] = QByteArray(120, 'x'); }, "");
    row(
        "record of 121 bytes", [](Block& b) { b.records[1] = QByteArray(121, 'x'); },
        "blocks[0]: offset 78: record 2 announces 121 bytes, more than 120");
    row(
        "record shorter than announced", [](Block& b) { b.records[1].announcedLength = 2; },
        "blocks[0]: offset 80: the file ends within the data of a record");

    const auto cameraRow = [](const char* name, void (*change)(CameraUpdateFile&),
                              const char* problem) {
        CameraUpdateFile file = sampleCameraFile();
        change(file);
        QTest::newRow(name) << cameraUpdateBytes(file) << QString(problem);
    };
    cameraRow(
        "no models", [](CameraUpdateFile& f) { f.models.clear(); }, "there are no models");
    cameraRow(
        "no images", [](CameraUpdateFile& f) { f.images.clear(); }, "there are no images");
    cameraRow(
        "image elsewhere", [](CameraUpdateFile& f) { f.images[1].offset = 90; },
        "images[1]: the table says offset 90, the image lies at 91");
    cameraRow(
        "image of another length", [](CameraUpdateFile& f) { f.images[1].length = 19; },
        "images[1]: the table says 19 bytes, there are 20");
    cameraRow(
        "image magic of a block", [](CameraUpdateFile& f) { f.images[1].magic = 0xA258; },
        "images[1]: offset 91: block magic is 0xa258, not 0xa259");
    cameraRow(
        "version text of 201 bytes",
        [](CameraUpdateFile& f) { f.images[1].text = QByteArray(201, 'x'); },
        "images[1]: offset 93: text announces 201 bytes, more than 200");
}

void ImageReaderTest::namesTheProblem()
{
    QFETCH(const QByteArray, bytes);
    QFETCH(const QString, problem);
    const QStringList expected = problem.isEmpty() ? QStringList() : QStringList{problem};
    QCOMPARE(readUpdateFile(bytes).problems, expected);
}

void ImageReaderTest::goesOnWithTheNextBlock()
{
    ControllerImage image = sampleImage(ImageLayout::Plain, 0, {FirmwareBlock, SystemBlock});
    image.blocks[0].magic = 0;
    const ReadUpdateFile content = readUpdateFile(controllerImageBytes(image));
    QCOMPARE(content.problems.size(), 1);
    const auto& read = std::get<ControllerImage>(*content.file);
    QVERIFY(read.blocks[0].records.isEmpty());
    QCOMPARE(read.blocks[1].records.size(), 2);
}

void ImageReaderTest::readsOverlappingBlocksOnce()
{
    ControllerImage image = sampleImage(ImageLayout::Plain, 0, {});
    image.blocks = QVector<ControllerImageBlock>(65535, sampleBlock(SystemBlock));
    for (ControllerImageBlock& block : image.blocks)
        block.offset = 38 + 65535 * 18;
    QByteArray bytes = controllerImageBytes(image);
    bytes.truncate(38 + 65535 * 18 + 21);
    const QStringList problems = readUpdateFile(bytes).problems;
    QCOMPARE(problems.size(), 1);
    QVERIFY(problems[0].endsWith(": overlaps another block; the rest is not read"));
}

ZAN_TEST_MAIN(ImageReaderTest)
#include "tst_imagereader.moc"
