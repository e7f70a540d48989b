#include "camfilereader.h"

#include "comparing.h"
#include "imagefixtures.h"
#include "littleendianreader.h"
#include "memorystream.h"
#include "testmain.h"
#include "truncation.h"

class TestCamFileReader : public QObject
{
    Q_OBJECT

private slots:
    void readsAWholeFile();
    void namesTheFieldAtWhichAFileIsCut_data();
    void namesTheFieldAtWhichAFileIsCut();
    void keepsWhatWasCompleteBeforeTheCut_data();
    void keepsWhatWasCompleteBeforeTheCut();
    void refusesWhatIsSomethingElse_data();
    void refusesWhatIsSomethingElse();
    void writesModelCodesAsText_data();
    void writesModelCodesAsText();
    void takesTheLimitsOfTheFormat_data();
    void takesTheLimitsOfTheFormat();
};

static CameraUpdateFile sampleFile()
{
    CameraUpdateFile file = cameraFile({0x0901, 0x0c01, 0x0e01}, {1, 4, 2}, {1, 0, 3});
    CameraImage second = file.images.first();
    second.text = QByteArrayLiteral("longer text");
    second.records = {QByteArrayLiteral("a"), QByteArray(), QByteArrayLiteral("bcd")};
    file.images += second;
    return file;
}

// What the sample consists of, with the code of each field that may be missing.
static QVector<FormatField> sampleFields()
{
    QVector<FormatField> fields{{2, -2}, {2, -4},  {2, -5},  {2, -6},  {2, -7}, {2, -8},
                                {2, -9}, {2, -10}, {2, -11}, {2, -12}, {2, -13}};
    for (int model = 0; model < 3; ++model)
        fields += {2, -14};
    fields += QVector<FormatField>{{2, -15}, {2, -16}};
    for (int entry = 0; entry < 2; ++entry)
        fields += QVector<FormatField>{{2, -17}, {2, -18}, {2, -19}, {2, -17},
                                       {2, -18}, {2, -19}, {4, -20}, {4, -21}};
    const QVector<FormatField> imageHead{{2, -101}, {2, -103}};
    const QVector<FormatField> behindText{{4, -105}, {2, -106}};
    const auto record = [](int size) {
        return QVector<FormatField>{{2, -107}, {size, -108}};
    };
    fields += imageHead;
    fields += {3, -104};
    fields += behindText + record(3) + record(1);
    fields += imageHead;
    fields += {11, -104};
    return fields + behindText + record(1) + record(0) + record(3);
}

/// How far the reading of a file went, and what was read.
struct ReadFile
{
    int code = 0;
    CamFileHead head;
    QList<QByteArray> records;
};

static int readImage(LittleEndianReader& reader, ReadFile* file)
{
    quint32 count = 0;
    int code = readCamImageHead(reader, &count);
    for (quint32 i = 0; code == 0 && i < count; ++i) {
        UpdateRecord record;
        code = readCamRecord(reader, &record);
        if (code == 0)
            file->records += QByteArray(reinterpret_cast<const char*>(record.data), record.length);
    }
    return code;
}

static ReadFile readFile(const QByteArray& bytes)
{
    const MemoryStream stream(bytes);
    LittleEndianReader reader(stream.get());
    ReadFile file;
    int imageCount = 0;
    file.code = readCamFileHead(reader, &file.head);
    if (file.code == 0)
        file.code = readCamImageTable(reader, &imageCount);
    for (int i = 0; file.code == 0 && i < imageCount; ++i)
        file.code = readImage(reader, &file);
    return file;
}

void TestCamFileReader::readsAWholeFile()
{
    const ReadFile file = readFile(cameraUpdateBytes(sampleFile()));
    QCOMPARE(file.code, 0);
    QCOMPARE(file.head.newVer, VersionInfo(1, 4, 2));
    QCOMPARE(file.head.minVer, VersionInfo(1, 0, 3));
    QCOMPARE(file.head.camModels, (QStringList{"0x0901", "0x0c01", "0x0e01"}));
    QCOMPARE(file.records, (QList<QByteArray>{"\x01\x02\x03", "\xFF", "a", "", "bcd"}));
}

void TestCamFileReader::namesTheFieldAtWhichAFileIsCut_data()
{
    QTest::addColumn<int>("length");
    const int size = cameraUpdateBytes(sampleFile()).size();
    for (int length = 0; length <= size; ++length)
        QTest::addRow("cut after %d of %d bytes", length, size) << length;
}

void TestCamFileReader::namesTheFieldAtWhichAFileIsCut()
{
    QFETCH(int, length);
    const QByteArray bytes = cameraUpdateBytes(sampleFile());
    QCOMPARE(readFile(bytes.left(length)).code, codeOfTruncation(sampleFields(), length));
}

void TestCamFileReader::keepsWhatWasCompleteBeforeTheCut_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<VersionInfo>("newVer");
    QTest::addColumn<VersionInfo>("minVer");

    QTest::newRow("inside the new version") << 9 << VersionInfo() << VersionInfo();
    QTest::newRow("behind the new version") << 10 << VersionInfo(1, 4, 2) << VersionInfo();
    QTest::newRow("inside the minimum version") << 17 << VersionInfo(1, 4, 2) << VersionInfo();
    QTest::newRow("behind the minimum version")
        << 18 << VersionInfo(1, 4, 2) << VersionInfo(1, 0, 3);
    QTest::newRow("inside the models") << 25 << VersionInfo(1, 4, 2) << VersionInfo(1, 0, 3);
}

void TestCamFileReader::keepsWhatWasCompleteBeforeTheCut()
{
    QFETCH(int, length);
    const ReadFile file = readFile(cameraUpdateBytes(sampleFile()).left(length));
    QTEST(file.head.newVer, "newVer");
    QTEST(file.head.minVer, "minVer");
    QVERIFY(file.head.camModels.isEmpty());
}

void TestCamFileReader::refusesWhatIsSomethingElse_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("code");

    const auto withMagic = [](quint16 magic) {
        CameraUpdateFile file = sampleFile();
        file.magic = magic;
        return cameraUpdateBytes(file);
    };
    const auto withImageMagic = [](quint16 magic) {
        CameraUpdateFile file = sampleFile();
        CameraImage image = file.images.takeLast();
        image.magic = magic;
        file.images += image;
        return cameraUpdateBytes(file);
    };
    const ControllerImage image =
        releaseImage({3, 0, 0}, {1, 0}, {firmwareBlock({1, 0, 0}, {2, 9, 9})});
    QTest::newRow("a controller image") << controllerImageBytes(image) << -3;
    QTest::newRow("any other magic") << withMagic(0xD20B) << -3;
    QTest::newRow("the magic in the other byte order") << withMagic(0x09D2) << -3;
    QTest::newRow("a second image of another kind") << withImageMagic(41560) << -102;
    QTest::newRow("zeros") << QByteArray(100, '\0') << -3;
}

void TestCamFileReader::refusesWhatIsSomethingElse()
{
    QFETCH(QByteArray, bytes);
    QTEST(readFile(bytes).code, "code");
}

void TestCamFileReader::writesModelCodesAsText_data()
{
    QTest::addColumn<quint16>("code");
    QTest::addColumn<QString>("text");

    QTest::newRow("lower case") << quint16(3073) << QStringLiteral("0x0c01");
    QTest::newRow("filled with zeros") << quint16(1) << QStringLiteral("0x0001");
    QTest::newRow("zero") << quint16(0) << QStringLiteral("0x0000");
    QTest::newRow("the largest code") << quint16(0xFFFF) << QStringLiteral("0xffff");
}

void TestCamFileReader::writesModelCodesAsText()
{
    QFETCH(quint16, code);
    QFETCH(QString, text);
    const ReadFile file = readFile(cameraUpdateBytes(cameraFile({code}, {1, 4, 2})));
    QCOMPARE(file.head.camModels, QStringList(text));
}

void TestCamFileReader::takesTheLimitsOfTheFormat_data()
{
    QTest::addColumn<CameraUpdateFile>("file");
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("recordCount");

    using File = CameraUpdateFile;
    const auto row = [](const char* name, int code, int recordCount, auto change) {
        File file = sampleFile();
        change(&file);
        QTest::newRow(name) << file << code << recordCount;
    };
    row("no model", 0, 5, [](File* file) { file->models.clear(); });
    row("65535 models", 0, 5, [](File* file) { file->models.fill(0x0901, 65535); });
    row("more models than the file holds", -14, 0, [](File* file) { file->modelCount = 65535; });
    row("no image", 0, 0, [](File* file) { file->images.clear(); });
    row("no image although bytes follow", 0, 0, [](File* file) { file->imageCount = 0; });
    row("more images than the file holds", -20, 0, [](File* file) { file->imageCount = 65535; });

    using Image = CameraImage;
    const auto imageRow = [&](const char* name, int code, int recordCount, auto change) {
        row(name, code, recordCount, [&](File* file) {
            Image image = file->images.takeLast();
            change(&image);
            file->images += image;
        });
    };
    imageRow("an empty version text", 0, 5, [](Image* image) { image->text.clear(); });
    imageRow("a version text of 200 bytes", 0, 5, [](Image* image) { image->text.fill('x', 200); });
    imageRow("a version text of 201 bytes is refused", -104, 2,
             [](Image* image) { image->text.fill('x', 201); });
    imageRow("a version text of 65535 bytes is refused", -104, 2,
             [](Image* image) { image->text.fill('x', 65535); });
    imageRow("no record in an image", 0, 2, [](Image* image) { image->records.clear(); });
    imageRow("more records than the file holds", -107, 5,
             [](Image* image) { image->recordCount = 0xFFFFFFFF; });
    imageRow("an image's limit of record length does not count", 0, 5,
             [](Image* image) { image->maxRecordLength = 0; });
    const auto records = [](int length) {
        return QVector<ImageRecord>{QByteArray(length, 'x')};
    };
    imageRow("a record of 120 bytes", 0, 3, [&](Image* image) { image->records = records(120); });
    imageRow("a record of 121 bytes is refused", -108, 2,
             [&](Image* image) { image->records = records(121); });
    imageRow("a record of 65535 bytes is refused", -108, 2,
             [&](Image* image) { image->records = records(65535); });
}

void TestCamFileReader::takesTheLimitsOfTheFormat()
{
    QFETCH(CameraUpdateFile, file);
    const ReadFile read = readFile(cameraUpdateBytes(file));
    QTEST(read.code, "code");
    QTEST(read.records.size(), "recordCount");
}

ZAN_TEST_MAIN(TestCamFileReader)

#include "tst_camfilereader.moc"
