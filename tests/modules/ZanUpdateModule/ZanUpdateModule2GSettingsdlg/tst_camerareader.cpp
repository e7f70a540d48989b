#include "dialogfixture.h"
#include "exposeddialog.h"
#include "fixtureimages.h"

#include <imagewriter.h>
#include <memorystream.h>
#include <truncation.h>
#include <widgettestmain.h>

#include <QTimer>

/// What the reader returned, what the dialog shows and how many records went out.
struct Outcome
{
    int code;
    QString message;
    int bar;
    int sentRecords;
};

/// The dialog as a reader of camera update files.
class Reading : public DialogFixture
{
public:
    /// @return the result of readCamFileInfo(); fails the test if the file stays open
    int read(const QString& path, bool bUpdate = true)
    {
        const int result = watched([&] { return readCamFileInfo(dialog, bUpdate, 0, path, 9.5); });
        if (isFileOpen(path))
            QTest::qFail("the file stays open", __FILE__, __LINE__);
        return result;
    }
    /// The same for the image at the stream's position, which stays the caller's.
    int readImage(FILE* stream, bool bUpdate = true)
    {
        return watched([&] { return readCameraUpdateInfo(dialog, stream, bUpdate, 0, 9.5); });
    }

    QString message() const { return label("label_msg")->text(); }
    int sentRecords() const { return channel.logOf(QStringLiteral("send_command ")).size(); }

private:
    int watched(const std::function<int()>& act)
    {
        channel.takeLog();
        showMessageInDialog(dialog, QStringLiteral("before"), 50);
        const int result = act();
        if (m_progressTimer(dialog)->isActive())
            QTest::qFail("the progress timer goes on", __FILE__, __LINE__);
        return result;
    }
};

static void verify(const Reading& reading, int result, const Outcome& expected)
{
    QCOMPARE(result, expected.code);
    QCOMPARE(reading.message(), expected.message);
    QCOMPARE(reading.bar()->value(), expected.bar);
    QCOMPARE(reading.sentRecords(), expected.sentRecords);
}

class CameraReader : public QObject
{
    Q_OBJECT

private slots:
    void readsThroughWithoutSending();
    void sendsWhatItReads();
    void leavesTheStreamAtTheNextImage();
    void namesTheFieldAtWhichAFileIsCut_data();
    void namesTheFieldAtWhichAFileIsCut();

    void refusesAHead_data();
    void refusesAHead();
    void refusesAnImage_data();
    void refusesAnImage();
    void takesTheLimitsOfTheFormat_data();
    void takesTheLimitsOfTheFormat();
    void findsAFileByItsLatin1Name();

private:
    FixtureFolder m_folder;
};

// ---- A good file

static CameraUpdateFile sampleFile()
{
    CameraUpdateFile file = cameraFile({0x0901, 0x0a01}, {1, 4, 2}, {1, 0, 3});
    CameraImage second = file.images.first();
    second.text = QByteArrayLiteral("longer text");
    second.records = {shortRecord(1), QByteArray(), QByteArrayLiteral("\x01\x02\x03")};
    file.images += second;
    return file;
}

static QStringList sampleLog()
{
    return {R"(send_command "vornix2 set camera update c01 2 1 BIwA")",
            "prepare_reply 1 19000 1",
            R"(send_command "vornix2 set camera update c01 2 2 /D")",
            "poll_reply 3",
            R"(send_command "vornix2 set camera update c01 3 1 BA")",
            R"(send_command "vornix2 set camera update c01 3 2 ")",
            "prepare_reply 1 19000 1",
            R"(send_command "vornix2 set camera update c01 3 3 BIwA")",
            "poll_reply 3"};
}

void CameraReader::readsThroughWithoutSending()
{
    Reading reading;
    QCOMPARE(reading.read(m_folder.write("a", cameraUpdateBytes(sampleFile())), false), 0);
    QCOMPARE(reading.channel.log(), QStringList());
    QCOMPARE(reading.message(), QString());
    QCOMPARE(reading.bar()->value(), 0);
}

void CameraReader::sendsWhatItReads()
{
    Reading reading;
    iValProgressBar(reading.dialog) = 42;
    const QString path = m_folder.write("a", cameraUpdateBytes(sampleFile()));
    bool wasOpen = false;
    reading.channel.setHook([&](const QString&) { wasOpen = isFileOpen(path); });
    QCOMPARE(reading.read(path), 0);
    QVERIFY(wasOpen);
    QCOMPARE(reading.channel.log(), sampleLog());
    QCOMPARE(reading.message(), QString());
    QCOMPARE(reading.bar()->value(), 0);
    QCOMPARE(iValProgressBar(reading.dialog), 0);
}

// Head and image table of the sample.
static QVector<FormatField> headFields()
{
    QVector<FormatField> fields{{2, -2},  {2, -4},  {2, -5},  {2, -6},  {2, -7},  {2, -8}, {2, -9},
                                {2, -10}, {2, -11}, {2, -12}, {2, -13}, {2, -14}, {2, -14}};
    fields += QVector<FormatField>{{2, -15}, {2, -16}};
    for (int entry = 0; entry < 2; ++entry)
        fields += QVector<FormatField>{{2, -17}, {2, -18}, {2, -19}, {2, -17},
                                       {2, -18}, {2, -19}, {4, -20}, {4, -21}};
    return fields;
}

static QVector<FormatField> imageFields(const RecordBlock& image)
{
    QVector<FormatField> fields{
        {2, -101}, {2, -103}, {image.text.size(), -104}, {4, -105}, {2, -106}};
    for (const ImageRecord& record : image.records)
        fields += QVector<FormatField>{{2, -107}, {record.data.size(), -108}};
    return fields;
}

static QVector<FormatField> sampleFields()
{
    QVector<FormatField> fields = headFields();
    for (const CameraImage& image : sampleFile().images)
        fields += imageFields(image);
    return fields;
}

static int sizeOf(const QVector<FormatField>& fields)
{
    int size = 0;
    for (const FormatField& field : fields)
        size += field.size;
    return size;
}

// Records that are complete in the first length bytes.
static int recordsWithin(const QVector<FormatField>& fields, int length)
{
    int count = 0;
    int end = 0;
    for (const FormatField& field : fields) {
        end += field.size;
        if (field.code == -108 && end <= length)
            ++count;
    }
    return count;
}

void CameraReader::leavesTheStreamAtTheNextImage()
{
    const MemoryStream stream(cameraUpdateBytes(sampleFile()));
    std::fseek(stream.get(), sizeOf(headFields()), SEEK_SET);
    Reading reading;
    QCOMPARE(reading.readImage(stream.get()), 0);
    QCOMPARE(reading.channel.log(), sampleLog().mid(0, 4));
    QCOMPARE(reading.readImage(stream.get()), 0);
    QCOMPARE(reading.channel.log(), sampleLog().mid(4));
    QCOMPARE(std::fgetc(stream.get()), EOF);
}

// ---- A file that ends too early

void CameraReader::namesTheFieldAtWhichAFileIsCut_data()
{
    QTest::addColumn<bool>("bUpdate");
    QTest::newRow("while its records are sent") << true;
    QTest::newRow("while it is only read") << false;
}

static Outcome outcomeOfFile(int code, const QString& path, int sentRecords)
{
    if (code == 0)
        return {code, QString(), 0, sentRecords};
    const char* const what = code > -100 ? "cannot read file " : "update not successful ";
    return {code, QLatin1String(what) + path, 1, sentRecords};
}

static Outcome outcomeOfImage(int code, int sentRecords)
{
    if (code == 0)
        return {code, QString(), 0, sentRecords};
    return {code, QStringLiteral("cannot read file"), 1, sentRecords};
}

void CameraReader::namesTheFieldAtWhichAFileIsCut()
{
    QFETCH(const bool, bUpdate);
    const QVector<FormatField> fields = sampleFields();
    const QByteArray bytes = cameraUpdateBytes(sampleFile());
    QCOMPARE(bytes.size(), sizeOf(fields));
    Reading reading;
    for (int length = 0; length <= bytes.size(); ++length) {
        const QString path = m_folder.write("cut", bytes.left(length));
        const int sentRecords = bUpdate ? recordsWithin(fields, length) : 0;
        verify(reading, reading.read(path, bUpdate),
               outcomeOfFile(codeOfTruncation(fields, length), path, sentRecords));
        if (QTest::currentTestFailed())
            QFAIL("cut after " + QByteArray::number(length) + " bytes");
    }
}

// ---- A file of another kind

static ControllerImage controllerImage(ImageLayout layout, int modelFamily)
{
    ControllerImage image = releaseImage({3, 0, 0}, {1, 0}, {blockOf(FirmwareBlock)});
    image.layout = layout;
    image.modelFamily = modelFamily;
    return image;
}

void CameraReader::refusesAHead_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("message");

    const auto row = [](const char* name, const QString& path, int code, const char* message) {
        QTest::newRow(name) << path << code << QLatin1String(message) + path;
    };
    const char* const unreadable = "cannot read file ";
    row("a file that is missing", m_folder.path("missing"), -1, unreadable);
    row("no file name", QString(), -1, unreadable);
    row("a name beyond Latin-1",
        m_folder.write(QStringLiteral("\u03A9"), cameraUpdateBytes(sampleFile())), -1, unreadable);
    row("a folder", m_folder.makeFolder("folder"), -2, unreadable);
    row("a file of no bytes", m_folder.write("empty", QByteArray()), -2, unreadable);

    const char* const foreign = "no software update file ";
    const auto controllerRow = [&](const char* name, ImageLayout layout, int family) {
        const QString file = QString::fromLatin1(name) + QStringLiteral(".VX2znimg");
        row(name, m_folder.write(file, controllerImageBytes(controllerImage(layout, family))), -3,
            foreign);
    };
    controllerRow("a plain controller image", ImageLayout::Plain, 0);
    controllerRow("a dated controller image", ImageLayout::Dated, 0);
    controllerRow("a plain image of the other family", ImageLayout::Plain, briarscopeFamily);
    controllerRow("a dated image of the other family", ImageLayout::Dated, briarscopeFamily);
    row("a text", m_folder.write("text", "no update file"), -3, foreign);
    row("two bytes that are no magic", m_folder.write("two", "xy"), -3, foreign);
}

void CameraReader::refusesAHead()
{
    QFETCH(const QString, path);
    QFETCH(const int, code);
    QFETCH(const QString, message);
    Reading reading;
    verify(reading, reading.read(path), {code, message, 1, 0});
}

static CameraUpdateFile fileWithImages(const std::function<void(CameraImage&)>& changeSecond)
{
    CameraUpdateFile file = sampleFile();
    changeSecond(file.images.last());
    return file;
}

void CameraReader::refusesAnImage_data()
{
    QTest::addColumn<CameraUpdateFile>("file");
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("sentRecords");

    const auto row = [](const char* name, int code, int sentRecords, const auto& change) {
        QTest::newRow(name) << fileWithImages(change) << code << sentRecords;
    };
    row("the magic of a controller's block", -102, 2,
        [](CameraImage& image) { image.magic = 0xA258; });
    row("the magic of a file", -102, 2, [](CameraImage& image) { image.magic = 0xD209; });
    row("a version text of 201 bytes", -104, 2,
        [](CameraImage& image) { image.text.fill('x', 201); });
    row("a version text of 65535 bytes", -104, 2,
        [](CameraImage& image) { image.text.fill('x', 65535); });
    row("a record of 121 bytes", -108, 3, [](CameraImage& image) {
        image.records = {shortRecord(1), QByteArray(121, 'x')};
    });
    row("a record of 65535 bytes", -108, 2,
        [](CameraImage& image) { image.records = {QByteArray(65535, 'x')}; });
    row("one record more than there is", -107, 5,
        [](CameraImage& image) { image.recordCount = 4; });
    row("2147483648 records", -107, 5, [](CameraImage& image) { image.recordCount = 1U << 31; });
    row("4294967295 records", -107, 5, [](CameraImage& image) { image.recordCount = 0xFFFFFFFF; });
}

void CameraReader::refusesAnImage()
{
    QFETCH(const CameraUpdateFile, file);
    QFETCH(const int, code);
    QFETCH(const int, sentRecords);
    const QByteArray bytes = cameraUpdateBytes(file);
    const QString path = m_folder.write("image", bytes);
    Reading reading;
    verify(reading, reading.read(path), outcomeOfFile(code, path, sentRecords));

    // What stood there for a moment does not tell a wrong image from an unreadable one.
    const MemoryStream stream(bytes);
    const CameraImage& first = file.images.first();
    std::fseek(stream.get(), sizeOf(headFields() + imageFields(first)), SEEK_SET);
    verify(reading, reading.readImage(stream.get()),
           outcomeOfImage(code, sentRecords - first.records.size()));
}

// ---- A file at the limits of the format

void CameraReader::takesTheLimitsOfTheFormat_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("sentRecords");

    const auto rowOf = [](const char* name, int code, int sentRecords, const QByteArray& bytes) {
        QTest::newRow(name) << bytes << code << sentRecords;
    };
    const auto row = [&](const char* name, int code, int sentRecords, const auto& change) {
        CameraUpdateFile file = sampleFile();
        change(file);
        rowOf(name, code, sentRecords, cameraUpdateBytes(file));
    };
    using File = CameraUpdateFile;
    row("no model", 0, 5, [](File& file) { file.models.clear(); });
    row("65535 models", 0, 5, [](File& file) { file.models.fill(0x0901, 65535); });
    row("65535 models announced", -14, 0, [](File& file) { file.modelCount = 65535; });
    row("one image less than the table has", -102, 0, [](File& file) { file.imageCount = 1; });
    row("words of unknown meaning", 0, 5, [](File& file) { file.reserved.fill(0xFFFF); });
    row("tables that point anywhere", 0, 5, [](File& file) {
        for (CameraImage& image : file.images) {
            image.offset = 0xFFFFFFFF;
            image.length = 0;
        }
    });

    CameraUpdateFile noImages = sampleFile();
    noImages.images.clear();
    noImages.imageCount = 65535;
    const QByteArray bareHead = cameraUpdateBytes(noImages);
    rowOf("65535 images announced, no table", -17, 0, bareHead);
    rowOf("65535 images announced, one entry short", -17, 0, bareHead + QByteArray(65534 * 20, 0));
    rowOf("65535 images announced, no image", -101, 0, bareHead + QByteArray(65535 * 20, 0));

    const QByteArray whole = cameraUpdateBytes(sampleFile());
    rowOf("bytes behind the last image", 0, 5, whole + QByteArray(1000, 'x'));

    const auto imageRow = [&](const char* name, int sentRecords, const auto& change) {
        rowOf(name, 0, sentRecords, cameraUpdateBytes(fileWithImages(change)));
    };
    imageRow("an empty version text", 5, [](CameraImage& image) { image.text.clear(); });
    imageRow("a version text of 200 bytes", 5,
             [](CameraImage& image) { image.text.fill('x', 200); });
    imageRow("an image without records", 2, [](CameraImage& image) { image.records.clear(); });
    imageRow("a record of 120 bytes", 3,
             [](CameraImage& image) { image.records = {QByteArray(120, 'x')}; });
    imageRow("no limit on the length of records", 5,
             [](CameraImage& image) { image.maxRecordLength = 0; });
}

void CameraReader::takesTheLimitsOfTheFormat()
{
    QFETCH(const QByteArray, bytes);
    QFETCH(const int, code);
    QFETCH(const int, sentRecords);
    const QString path = m_folder.write("limit", bytes);
    Reading reading;
    verify(reading, reading.read(path), outcomeOfFile(code, path, sentRecords));
}

void CameraReader::findsAFileByItsLatin1Name()
{
    const QString plain = m_folder.write("plain", cameraUpdateBytes(sampleFile()));
    const QString named = m_folder.path(QStringLiteral("Kamera f\u00FCr 1"));
    QCOMPARE(std::rename(plain.toLatin1().constData(), named.toLatin1().constData()), 0);
    Reading reading;
    QCOMPARE(reading.read(named), 0);
    QCOMPARE(reading.channel.log(), sampleLog());
    // Qt, which names files in UTF-8, could not remove it.
    QCOMPARE(std::remove(named.toLatin1().constData()), 0);
}

ZAN_WIDGET_TEST_MAIN(CameraReader)

#include "tst_camerareader.moc"
