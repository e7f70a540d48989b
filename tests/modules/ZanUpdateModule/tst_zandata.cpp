#include "ZanData.h"

#include "comparing.h"
#include "imagefixtures.h"
#include "privateaccess.h"
#include "testmain.h"
#include "truncation.h"

#include <memory>

ZAN_EXPOSE(readFileInfo, &ZanData::readFileInfo);
ZAN_EXPOSE(appendixOf, static_cast<QString (*)(int, int)>(&ZanData::getPreReleaseAppendix));
ZAN_EXPOSE(appendixOfName, &ZanData::getPreReleaseAppendixFromFilename);

class TestZanData : public QObject
{
    Q_OBJECT

private slots:
    void hasItsDefaultsWithoutAFile();
    void readsEveryField_data();
    void readsEveryField();
    void readsTheBlockTable_data();
    void readsTheBlockTable();
    void namesTheFieldAtWhichAFileIsCut_data();
    void namesTheFieldAtWhichAFileIsCut();
    void takesNothingElseForAnImage_data();
    void takesNothingElseForAnImage();
    void opensPathsInLatin1();
    void knowsThePreReleaseByItsNumbers_data();
    void knowsThePreReleaseByItsNumbers();
    void knowsThePreReleaseByItsFileName_data();
    void knowsThePreReleaseByItsFileName();
    void asksTheFileNameOnlyInThePlainLayout();
    void writesDatesWithoutCheckingThem_data();
    void writesDatesWithoutCheckingThem();
    void keepsTheLimitOfTheLastFirmwareBlock_data();
    void keepsTheLimitOfTheLastFirmwareBlock();
    void widensHeaderWordsWithoutSign();
    void isValidWithAnUnknownBlockAlone();
    void countsBlocks_data();
    void countsBlocks();
    void hasNoBlockOutsideItsTable_data();
    void hasNoBlockOutsideItsTable();
    void opensAStreamOnEachBlock();
    void opensAStreamWhateverTheOffset_data();
    void opensAStreamWhateverTheOffset();
    void opensNoStreamOnceTheFileIsGone();
    void fitsControllerModels_data();
    void fitsControllerModels();

private:
    FixtureFolder m_folder;
};

// Every word differs from every other. Entries of 22, 18, 22 and 18 bytes.
static ControllerImage sampleImage(ImageLayout layout = ImageLayout::Dated, int modelFamily = 0)
{
    ControllerImage image;
    image.layout = layout;
    image.modelFamily = modelFamily;
    image.release = {3, 4, 5};
    image.preReleaseType = 20;
    image.preReleaseNumber = 6;
    image.releaseDate = {2024, 7, 8};
    image.minorReleaseDate = {2023, 9, 10};
    image.newPt = {11, 12, 13};
    image.newCt = {14, 15};
    image.minPt = {16, 17, 18};
    image.minCt = {19, 20};
    image.reserved = {21, 22, 23, 24};
    ControllerImageBlock unknown = systemBlock({40, 41}, {42, 43});
    unknown.type = 7;
    image.blocks = {firmwareBlock({25, 26, 27}, {28, 29, 30}), systemBlock({31, 32}, {33, 34}),
                    firmwareBlock({35, 36, 37}, {38, 39, 65535}), unknown};
    return image;
}

// What the sample's head and table consist of, with the code of each field that may be missing.
static QVector<FormatField> sampleFields(ImageLayout layout)
{
    QVector<FormatField> fields{{2, -2}, {2, -4}, {2, -5}, {2, -5}, {2, -5}};
    if (layout == ImageLayout::Dated)
        fields += QVector<FormatField>{{2, -6}, {2, -6}, {2, -6}, {2, -6},
                                       {2, -6}, {2, -7}, {2, -7}, {2, -7}};
    fields +=
        QVector<FormatField>{{2, -8},  {2, -9},  {2, -10}, {2, -113}, {2, -12}, {2, -13}, {2, -15},
                             {2, -16}, {2, -17}, {2, -18}, {2, -16},  {2, -17}, {2, -18}, {2, -19}};
    const QVector<FormatField> longEntry{{2, -20}, {2, -21}, {2, -22}, {2, -23}, {2, -24},
                                         {2, -25}, {2, -26}, {4, -27}, {4, -27}};
    const QVector<FormatField> shortEntry{{2, -20}, {2, -21}, {2, -22}, {2, -24},
                                          {2, -25}, {4, -27}, {4, -27}};
    return fields + longEntry + shortEntry + longEntry + shortEntry;
}

static int tableEnd(ImageLayout layout)
{
    int end = 0;
    for (const FormatField& field : sampleFields(layout))
        end += field.size;
    return end;
}

void TestZanData::hasItsDefaultsWithoutAFile()
{
    const QString path = m_folder.path("missing");
    ZanData image(path);
    QCOMPARE(image.fileName(), path);
    QVERIFY(!image.isValid());
    QCOMPARE(image.getNumberOfUpdateBlocks(), 0);
    QCOMPARE(image.newVornix2Version(), VersionInfo());
    QCOMPARE(image.getPreReleaseAppendix(), QString());
    QCOMPARE(image.minCtVersion(), VersionInfo(0, 2, -1));
    QCOMPARE(image.newCtVersion(), VersionInfo(0, 2, -1));
    QCOMPARE(image.minPtVersion(), VersionInfo(0, 2, 0));
    QCOMPARE(image.maxPtVersion(), VersionInfo(0, 2, 0));
    QCOMPARE(image.newPtVersion(), VersionInfo(0, 2, 0));
    QVERIFY(!image.hasReleaseDates());
    QCOMPARE(image.getReleaseDate(), QString());
    QCOMPARE(image.getReleaseMinorDate(), QString());
    QCOMPARE(image.getSystemModel(), 0);
    QCOMPARE(image.getSystemModelDesc(), QStringLiteral("ZAN"));
    QCOMPARE(readFileInfo(image), -1);
}

void TestZanData::readsEveryField_data()
{
    QTest::addColumn<quint16>("magic");
    QTest::addColumn<bool>("isDated");
    QTest::addColumn<int>("model");
    QTest::addColumn<QString>("description");

    QTest::newRow("plain, ZAN") << quint16(53768) << false << 0 << "ZAN";
    QTest::newRow("plain, BRIARSCOPE3") << quint16(53770) << false << 21 << "BRIARSCOPE3";
    QTest::newRow("dated, ZAN") << quint16(53784) << true << 0 << "ZAN";
    QTest::newRow("dated, BRIARSCOPE3") << quint16(53786) << true << 21 << "BRIARSCOPE3";
}

void TestZanData::readsEveryField()
{
    QFETCH(quint16, magic);
    QFETCH(bool, isDated);
    ControllerImage sample = sampleImage(isDated ? ImageLayout::Dated : ImageLayout::Plain);
    sample.magic = magic;
    ZanData image(m_folder.write("image_v3.4.5-rc.6_x.img", controllerImageBytes(sample)));
    QCOMPARE(readFileInfo(image), 0);
    QVERIFY(image.isValid());
    QTEST(image.getSystemModel(), "model");
    QTEST(image.getSystemModelDesc(), "description");
    QCOMPARE(image.newVornix2Version(), VersionInfo(3, 4, 5));
    QCOMPARE(image.getPreReleaseAppendix(), QString(isDated ? "-beta.6" : "-rc.6"));
    QCOMPARE(image.hasReleaseDates(), isDated);
    QCOMPARE(image.getReleaseDate(), QString(isDated ? "2024-07-08" : ""));
    QCOMPARE(image.getReleaseMinorDate(), QString(isDated ? "2023-09-10" : ""));
    QCOMPARE(image.newPtVersion(), VersionInfo(11, 12, 13));
    QCOMPARE(image.newCtVersion(), VersionInfo(14, 15, -1));
    QCOMPARE(image.minPtVersion(), VersionInfo(16, 17, 18));
    QCOMPARE(image.minCtVersion(), VersionInfo(19, 20, -1));
    QCOMPARE(image.maxPtVersion(), VersionInfo(38, 39, 65535));
}

void TestZanData::readsTheBlockTable_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("type");
    QTest::addColumn<VersionInfo>("minVer");
    QTest::addColumn<VersionInfo>("maxVer");

    QTest::newRow("a firmware block of 22 bytes")
        << 0 << int(ZAN_FIRMWARE_UPDATE) << VersionInfo(25, 26, 27) << VersionInfo(28, 29, 30);
    QTest::newRow("a system block of 18 bytes behind it")
        << 1 << int(ZAN_SYSTEM_UPDATE) << VersionInfo(31, 32, -1) << VersionInfo(33, 34, -1);
    QTest::newRow("a firmware block behind a short entry, with 0xFFFF in its limit")
        << 2 << int(ZAN_FIRMWARE_UPDATE) << VersionInfo(35, 36, 37) << VersionInfo(38, 39, 65535);
    QTest::newRow("an unknown block of 18 bytes")
        << 3 << int(ZAN_UPDATE_NOTDEFINED) << VersionInfo(40, 41, -1) << VersionInfo(42, 43, -1);
}

void TestZanData::readsTheBlockTable()
{
    QFETCH(int, index);
    for (const ImageLayout layout : {ImageLayout::Plain, ImageLayout::Dated}) {
        const QByteArray bytes = controllerImageBytes(sampleImage(layout));
        const ZanData image(m_folder.write("image", bytes));
        QCOMPARE(image.getNumberOfUpdateBlocks(), 4);
        const ZanUpdateBlock& block = *image.getUpdateBlock(index);
        QTEST(int(block.type), "type");
        QTEST(block.minVer, "minVer");
        QTEST(block.maxVer, "maxVer");
        const int blockBytes = (bytes.size() - tableEnd(layout)) / 4;
        QCOMPARE(block.offset, tableEnd(layout) + index * blockBytes);
        QCOMPARE(block.length, blockBytes);
    }
}

void TestZanData::namesTheFieldAtWhichAFileIsCut_data()
{
    QTest::addColumn<int>("layout");
    QTest::addColumn<int>("length");

    for (const ImageLayout layout : {ImageLayout::Plain, ImageLayout::Dated}) {
        const char* name = layout == ImageLayout::Plain ? "plain" : "dated";
        for (int length = 0; length <= tableEnd(layout) + 1; ++length)
            QTest::addRow("%s image cut after %d bytes", name, length) << int(layout) << length;
    }
}

void TestZanData::namesTheFieldAtWhichAFileIsCut()
{
    QFETCH(int, layout);
    QFETCH(int, length);
    const auto imageLayout = static_cast<ImageLayout>(layout);
    for (const int modelFamily : {0, 21}) {
        const QByteArray bytes = controllerImageBytes(sampleImage(imageLayout, modelFamily));
        ZanData image(m_folder.write("cut", bytes.left(length)));
        const int code = codeOfTruncation(sampleFields(imageLayout), length);
        QCOMPARE(image.isValid(), code == 0);
        QCOMPARE(image.getNumberOfUpdateBlocks(), code == 0 ? 4 : 0);
        QCOMPARE(readFileInfo(image), code);
    }
}

void TestZanData::takesNothingElseForAnImage_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("model");
    QTest::addColumn<QString>("description");

    const auto row = [](const char* name, const QString& path, int code) {
        QTest::newRow(name) << path << code << (code == -3 ? -1 : 0)
                            << QString(code == -3 ? "UNKNOWN" : "ZAN");
    };
    const QByteArray bytes = controllerImageBytes(sampleImage());
    row("a file that is missing", m_folder.path("missing"), -1);
    row("no name", QString(), -1);
    row("a name beyond Latin-1", m_folder.write(QString::fromUtf8("Ω"), bytes), -1);
    row("a folder", m_folder.makeFolder("folder"), -2);
    row("a file of zero length", m_folder.write("empty", QByteArray()), -2);
    row("half a magic", m_folder.write("half", bytes.left(1)), -2);
    row("a magic and nothing more", m_folder.write("magic", bytes.left(2)), -4);
    row("a camera update file",
        m_folder.write("camera", cameraUpdateBytes(cameraFile({0x0901}, {1, 4, 0}))), -3);
    row("a text", m_folder.write("text", "This is no update file.\n"), -3);
    row("the magic in the other byte order", m_folder.write("order", "\xD2\x18" + bytes.mid(2)),
        -3);
}

void TestZanData::takesNothingElseForAnImage()
{
    QFETCH(QString, path);
    ZanData image(path);
    QVERIFY(!image.isValid());
    QTEST(image.getSystemModel(), "model");
    QTEST(image.getSystemModelDesc(), "description");
    QTEST(readFileInfo(image), "code");
}

void TestZanData::opensPathsInLatin1()
{
    const QString utf16Path = m_folder.path(QString::fromUtf8("größe.img"));
    const QByteArray bytes = controllerImageBytes(sampleImage());
    FILE* stream = std::fopen(utf16Path.toLatin1().constData(), "wb");
    QVERIFY(stream);
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stream);
    std::fclose(stream);

    const ZanData image(utf16Path);
    QVERIFY(image.isValid());
    FILE* block = image.getUpdateBlockInFile(0);
    QVERIFY(block);
    std::fclose(block);
    // Qt, which takes file names for UTF-8 here, cannot.
    QCOMPARE(std::remove(utf16Path.toLatin1().constData()), 0);
}

void TestZanData::knowsThePreReleaseByItsNumbers_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("text");

    QTest::newRow("a final release") << 0 << 0 << "";
    QTest::newRow("an alpha") << 10 << 3 << "-alpha.3";
    QTest::newRow("an alpha with the number 0") << 10 << 0 << "-alpha.0";
    QTest::newRow("a beta") << 20 << 12 << "-beta.12";
    QTest::newRow("a release candidate") << 30 << 1 << "-rc.1";
    QTest::newRow("a number without a type") << 0 << 4 << "-unknown0.4";
    QTest::newRow("an unknown type") << 11 << 2 << "-unknown11.2";
    QTest::newRow("the largest numbers") << 65535 << 65535 << "-unknown65535.65535";
}

void TestZanData::knowsThePreReleaseByItsNumbers()
{
    QFETCH(int, type);
    QFETCH(int, number);
    QTEST(appendixOf(type, number), "text");

    ControllerImage sample = sampleImage();
    sample.preReleaseType = type;
    sample.preReleaseNumber = number;
    const ZanData image(m_folder.write("image_v3.1.0-beta.9", controllerImageBytes(sample)));
    QTEST(image.getPreReleaseAppendix(), "text");
}

void TestZanData::knowsThePreReleaseByItsFileName_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("text");

    const auto row = [](const char* name, const char* path, const char* text) {
        QTest::newRow(name) << QString::fromUtf8(path) << QString::fromUtf8(text);
    };
    row("a pre-release in the middle", "controller_v3.1.0-beta.2_x.img", "-beta.2");
    row("a pre-release at the end", "controller_v3.1.0-rc.1.img", "-rc.1");
    row("a final release", "controller_v3.1.0.img", "");
    row("only the last extension is cut off", "controller_v3.1.0-beta.2", "-beta");
    row("no v in the name", "controller_3.1.0-beta.2.img", "");
    row("a capital V does not count", "controller_V3.1.0-beta.2.img", "");
    row("a v of the folder does not count", "/opt/v9.9.9-rc.9/controller_3.1.0.img", "");
    row("a second v ends the text", "controller_v3.1.0-dev.4.img", "-de");
    row("an underscore ends the text", "controller_v3.1.0_beta.2.img", "");
    row("a word without number", "controller_v3.1.0-alpha.img", "-alpha");
    row("every occurrence of the version is taken away", "v1-beta.1.img", "-beta.");
    row("a version passed over in parts is not found again", "v3-1.0-rc.2.img", "3-1.0-rc.2");
    row("letters right behind the version", "v3.1.0rc2.img", "rc2");
    row("other numbers count as numbers", "v3½-rc.1.img", "-rc.1");
    row("other letters count as letters", "v3.1.0ä-1.img", "ä-1");
    row("nothing behind the v", "v.img", "");
    row("no name", "", "");
}

void TestZanData::knowsThePreReleaseByItsFileName()
{
    QFETCH(QString, path);
    QTEST(appendixOfName(path), "text");
}

void TestZanData::asksTheFileNameOnlyInThePlainLayout()
{
    const QString name = QStringLiteral("controller_v3.4.5-beta.2_x.img");
    ControllerImage sample = sampleImage(ImageLayout::Plain);
    QCOMPARE(ZanData(m_folder.write(name, controllerImageBytes(sample))).getPreReleaseAppendix(),
             QStringLiteral("-beta.2"));
    sample.layout = ImageLayout::Dated;
    sample.preReleaseType = sample.preReleaseNumber = 0;
    QCOMPARE(ZanData(m_folder.write(name, controllerImageBytes(sample))).getPreReleaseAppendix(),
             QString());
}

void TestZanData::writesDatesWithoutCheckingThem_data()
{
    QTest::addColumn<QVector<int>>("date");
    QTest::addColumn<QString>("text");

    QTest::newRow("a date") << QVector<int>{2024, 11, 30} << "2024-11-30";
    QTest::newRow("filled with zeros") << QVector<int>{5, 6, 7} << "0005-06-07";
    QTest::newRow("no date") << QVector<int>{0, 0, 0} << "0000-00-00";
    QTest::newRow("numbers that are no date") << QVector<int>{65535, 13, 321} << "65535-13-321";
}

void TestZanData::writesDatesWithoutCheckingThem()
{
    QFETCH(QVector<int>, date);
    ControllerImage sample = sampleImage();
    sample.releaseDate = {date.at(0), date.at(1), date.at(2)};
    const ZanData released(m_folder.write("image", controllerImageBytes(sample)));
    QTEST(released.getReleaseDate(), "text");
    QCOMPARE(released.getReleaseMinorDate(), QStringLiteral("2023-09-10"));

    std::swap(sample.releaseDate, sample.minorReleaseDate);
    const ZanData minor(m_folder.write("image", controllerImageBytes(sample)));
    QTEST(minor.getReleaseMinorDate(), "text");
}

void TestZanData::keepsTheLimitOfTheLastFirmwareBlock_data()
{
    QTest::addColumn<ControllerImage>("sample");
    QTest::addColumn<VersionInfo>("maxPt");

    const auto row = [](const char* name, const QVector<ControllerImageBlock>& blocks,
                        const VersionInfo& maxPt) {
        QTest::newRow(name) << releaseImage({3, 0, 0}, {1, 0}, blocks) << maxPt;
    };
    const ControllerImageBlock low = firmwareBlock({1, 0, 0}, {1, 9, 9});
    const ControllerImageBlock high = firmwareBlock({2, 0, 0}, {2, 9, 9});
    const ControllerImageBlock system = systemBlock({5, 0}, {5, 9});
    row("the second of two", {low, high}, {2, 9, 9});
    row("the second of two although it is lower", {high, low}, {1, 9, 9});
    row("a system block behind it does not count", {high, system}, {2, 9, 9});
    row("no firmware block leaves the default", {system, system}, {0, 2, 0});
}

void TestZanData::keepsTheLimitOfTheLastFirmwareBlock()
{
    QFETCH(ControllerImage, sample);
    const ZanData image(m_folder.write("image", controllerImageBytes(sample)));
    QTEST(image.maxPtVersion(), "maxPt");
}

void TestZanData::widensHeaderWordsWithoutSign()
{
    ControllerImage sample = sampleImage();
    // The writer writes an absent part as 0xFFFF.
    sample.release = sample.newPt = sample.newCt = sample.minPt = sample.minCt = VersionInfo();
    const ZanData image(m_folder.write("image", controllerImageBytes(sample)));
    const VersionInfo all(65535, 65535, 65535);
    QCOMPARE(image.newVornix2Version(), all);
    QCOMPARE(image.newPtVersion(), all);
    QCOMPARE(image.minPtVersion(), all);
    QCOMPARE(image.newCtVersion(), VersionInfo(65535, 65535, -1));
    QCOMPARE(image.minCtVersion(), VersionInfo(65535, 65535, -1));
}

void TestZanData::isValidWithAnUnknownBlockAlone()
{
    for (const int type : {0, 3, 4, 7, 257, 65535}) {
        ControllerImageBlock block = systemBlock({1, 0}, {1, 9});
        block.type = static_cast<quint16>(type);
        const ZanData image(m_folder.write(
            "image", controllerImageBytes(releaseImage({3, 0, 0}, {1, 0}, {block}))));
        QVERIFY(image.isValid());
        QCOMPARE(image.getNumberOfUpdateBlocks(), 1);
        QCOMPARE(image.getUpdateBlock(0)->type, ZAN_UPDATE_NOTDEFINED);
    }
}

void TestZanData::countsBlocks_data()
{
    QTest::addColumn<int>("announced");
    QTest::addColumn<int>("written");
    QTest::addColumn<int>("code");
    QTest::addColumn<bool>("isValid");

    QTest::newRow("no block is read without failure and is invalid") << 0 << 0 << 0 << false;
    QTest::newRow("no block although entries follow") << 0 << 3 << 0 << false;
    QTest::newRow("one block") << 1 << 1 << 0 << true;
    QTest::newRow("65535 blocks") << 65535 << 65535 << 0 << true;
    QTest::newRow("fewer blocks than announced") << 65535 << 3 << -20 << false;
}

void TestZanData::countsBlocks()
{
    QFETCH(int, announced);
    QFETCH(int, written);
    QFETCH(bool, isValid);
    ControllerImageBlock block = systemBlock({1, 0}, {1, 9});
    ControllerImage sample = releaseImage({3, 0, 0}, {1, 0}, {});
    sample.blocks.fill(block, written);
    sample.blockCount = static_cast<quint16>(announced);
    const int tableBytes = 54 + 18 * written;
    ZanData image(m_folder.write("image", controllerImageBytes(sample).left(tableBytes)));
    QCOMPARE(image.isValid(), isValid);
    QCOMPARE(image.getNumberOfUpdateBlocks(), isValid ? announced : 0);
    QTEST(readFileInfo(image), "code");
}

void TestZanData::hasNoBlockOutsideItsTable_data()
{
    QTest::addColumn<int>("index");

    QTest::newRow("before the first") << -1;
    QTest::newRow("behind the last") << 4;
    QTest::newRow("the smallest index") << INT_MIN;
    QTest::newRow("the largest index") << INT_MAX;
}

void TestZanData::hasNoBlockOutsideItsTable()
{
    QFETCH(int, index);
    const ZanData image(m_folder.write("image", controllerImageBytes(sampleImage())));
    QVERIFY(image.getUpdateBlock(3));
    QCOMPARE(image.getUpdateBlock(index), nullptr);
    QCOMPARE(image.getUpdateBlockInFile(index), nullptr);
}

static QByteArray restOf(FILE* stream)
{
    QByteArray bytes(100000, Qt::Uninitialized);
    bytes.resize(static_cast<int>(std::fread(bytes.data(), 1, 100000, stream)));
    return bytes;
}

void TestZanData::opensAStreamOnEachBlock()
{
    const QByteArray bytes = controllerImageBytes(sampleImage());
    const ZanData image(m_folder.write("image", bytes));
    QVector<FILE*> streams;
    for (int i = 0; i < 4; ++i)
        streams += image.getUpdateBlockInFile(i);
    streams += image.getUpdateBlockInFile(0);
    for (int i = 0; i < streams.size(); ++i) {
        QVERIFY(streams.at(i));
        QCOMPARE(restOf(streams.at(i)), bytes.mid(image.getUpdateBlock(i % 4)->offset));
        std::fclose(streams.at(i));
    }
}

void TestZanData::opensAStreamWhateverTheOffset_data()
{
    QTest::addColumn<quint32>("offset");
    QTest::addColumn<int>("held");
    QTest::addColumn<int>("position");

    QTest::newRow("the start of the file") << 0U << 0 << 0;
    QTest::newRow("the last byte of the file") << 200U << 200 << 200;
    QTest::newRow("behind the end of the file") << 0x7FFFFFFFU << 0x7FFFFFFF << -1;
    QTest::newRow("a set top bit is negative and leaves the stream at the start")
        << 0x80000000U << INT_MIN << 0;
    QTest::newRow("all bits set are -1 and leave the stream at the start")
        << 0xFFFFFFFFU << -1 << 0;
}

void TestZanData::opensAStreamWhateverTheOffset()
{
    QFETCH(quint32, offset);
    QFETCH(int, position);
    ControllerImageBlock block = firmwareBlock({1, 0, 0}, {1, 9, 9});
    block.offset = offset;
    block.length = 0xFFFFFFFF;
    const QByteArray bytes =
        controllerImageBytes(releaseImage({3, 0, 0}, {1, 0}, {block})).leftJustified(201, 'x');
    const ZanData image(m_folder.write("image", bytes));
    QTEST(image.getUpdateBlock(0)->offset, "held");
    QCOMPARE(image.getUpdateBlock(0)->length, -1);

    FILE* stream = image.getUpdateBlockInFile(0);
    QVERIFY(stream);
    QCOMPARE(restOf(stream), position < 0 ? QByteArray() : bytes.mid(position));
    std::fclose(stream);
}

void TestZanData::opensNoStreamOnceTheFileIsGone()
{
    const QString path = m_folder.write("image", controllerImageBytes(sampleImage()));
    const ZanData image(path);
    QVERIFY(QFile::remove(path));
    QCOMPARE(image.getUpdateBlockInFile(0), nullptr);
    QVERIFY(image.isValid());
    QVERIFY(image.getUpdateBlock(0));
}

void TestZanData::fitsControllerModels_data()
{
    QTest::addColumn<int>("imageModel");
    QTest::addColumn<QVector<int>>("accepted");

    QTest::newRow("an image of model 0 fits 0, 2 and 20") << 0 << QVector<int>{0, 2, 20};
    QTest::newRow("an image of model 21 fits 21 alone") << 21 << QVector<int>{21};
    QTest::newRow("an image of no model fits none") << -1 << QVector<int>();
}

void TestZanData::fitsControllerModels()
{
    QFETCH(int, imageModel);
    QFETCH(QVector<int>, accepted);
    ControllerImage sample = sampleImage(ImageLayout::Dated, imageModel);
    if (imageModel < 0)
        sample.magic = 0xD209;
    const ZanData image(m_folder.write("image", controllerImageBytes(sample)));
    QCOMPARE(image.getSystemModel(), imageModel);
    for (const int model : {INT_MIN, -1, 0, 1, 2, 3, 19, 20, 21, 22, 200, INT_MAX})
        QCOMPARE(image.canUpdateSystemModel(model), accepted.contains(model));
}

ZAN_TEST_MAIN(TestZanData)

#include "tst_zandata.moc"
