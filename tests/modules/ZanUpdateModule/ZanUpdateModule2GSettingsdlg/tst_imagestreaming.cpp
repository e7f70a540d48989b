#include "dialogfixture.h"
#include "exposeddialog.h"
#include "fixtureimages.h"
#include "shownprogress.h"

#include <ZanData.h>
#include <imagewriter.h>
#include <markingtranslator.h>
#include <widgettestmain.h>

#include <memory>

/// One block of one image file, on its way to a controller.
class Streaming : public DialogFixture
{
public:
    explicit Streaming(const QByteArray& file)
        : path(m_folder.write(QStringLiteral("image"), file)), image(path)
    {
        nBlocksMustUpdate(dialog) = 1;
        channel.takeLog();
    }
    explicit Streaming(const ControllerImage& image) : Streaming(controllerImageBytes(image)) {}

    /// @return the result of do_update_img_data()
    int stream(int index = 0, int ith = 0)
    {
        const int openBefore = openFileCount();
        const int result = do_update_img_data(dialog, &image, index, ith);
        filesLeftOpen = openFileCount() - openBefore;
        return result;
    }

    QString message() const { return label("label_msg")->text(); }

private:
    FixtureFolder m_folder;

public:
    QString path;
    ZanData image;
    int filesLeftOpen = 0;
};

static ControllerImage testImage(const QVector<ControllerImageBlock>& blocks)
{
    return releaseImage(VersionInfo(3, 1, 0), VersionInfo(1, 1), blocks);
}

/// Bytes that a case of bad input is made from, by changing one field of a good image.
static QByteArray fileWith(const std::function<void(ControllerImageBlock&)>& change)
{
    ControllerImage image = testImage({blockOf(FirmwareBlock)});
    change(image.blocks.first());
    return controllerImageBytes(image);
}

static QByteArray goodFile()
{
    return fileWith([](ControllerImageBlock&) {});
}

class ImageStreaming : public QObject
{
    Q_OBJECT

private slots:
    void encodesRecords_data();
    void encodesRecords();
    void encodesEveryLength_data();
    void encodesEveryLength();
    void encodesEveryWord();
    void readsWords_data();
    void readsWords();

    void sendsTheWorkedExample();
    void sendsRecords_data();
    void sendsRecords();
    void sendsTheBlockThatIsAskedFor();
    void ignoresTheResultOfTheLastSetting();
    void sendsEightyThousandRecords();
    void sendsNothingWithoutRecords_data();
    void sendsNothingWithoutRecords();

    void refusesBadFiles_data();
    void refusesBadFiles();
    void refusesATruncatedBlock_data();
    void refusesATruncatedBlock();
    void failsWithoutStream_data();
    void failsWithoutStream();
    void endsWithTheFirstFailedRecord();
    void failsWithTheControllersAnswer();
    void doesNotTranslateItsMessages_data();
    void doesNotTranslateItsMessages();

    void servesEventsAtTicks_data();
    void servesEventsAtTicks();
    void showsATickBeforeItServesEvents();
    void showsPercentages_data();
    void showsPercentages();
    void estimatesTheRemainingTime_data();
    void estimatesTheRemainingTime();
    void keepsTheEstimateAtTheLastRecord_data();
    void keepsTheEstimateAtTheLastRecord();
};

// ---- The 6-bit encoding

static const QByteArray ALPHABET =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Bit by bit: bit b of the stream is bit b mod 8 of byte b div 8, and six of them make a character.
static QByteArray encodedBitByBit(const QByteArray& data)
{
    QByteArray text;
    for (int start = 0; start < 8 * data.size(); start += 6) {
        int word = 0;
        for (int bit = 0; bit < 6; ++bit) {
            const int position = start + bit;
            if (position < 8 * data.size() && (data.at(position / 8) >> (position % 8) & 1) != 0)
                word |= 1 << bit;
        }
        text += ALPHABET.at(word);
    }
    return text;
}

static const unsigned char* bytesOf(const QByteArray& data)
{
    return reinterpret_cast<const unsigned char*>(data.constData());
}

// The text as the dialog writes it; what it must not touch stays a percent sign.
static QByteArray encoded(DialogFixture* fixture, const QByteArray& data)
{
    QByteArray text(200, '%');
    if (_dat2ascii(fixture->dialog, text.data(), bytesOf(data), data.size()) != 0)
        return "a result other than 0";
    return text;
}

static QByteArray untouchedBehind(const QByteArray& text)
{
    return (text + '\0').leftJustified(200, '%');
}

void ImageStreaming::encodesRecords_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QByteArray>("text");

    QTest::newRow("no bytes give only the terminator") << QByteArray() << QByteArray();
    QTest::newRow("one byte gives two characters") << QByteArray("\xFF") << QByteArray("/D");
    QTest::newRow("two bytes give three") << QByteArray("\xFF\xFF") << QByteArray("//P");
    QTest::newRow("three bytes give four") << QByteArray("\x01\x02\x03") << QByteArray("BIwA");
    QTest::newRow("the low bits come first") << QByteArray("\x01") << QByteArray("BA");
    QTest::newRow("the high bits come last") << QByteArray("\x80") << QByteArray("AC");
    QTest::newRow("120 zero bytes give 160 characters")
        << QByteArray(120, '\0') << QByteArray(160, 'A');
    QTest::newRow("120 full bytes give 160 characters")
        << QByteArray(120, '\xFF') << QByteArray(160, '/');
}

void ImageStreaming::encodesRecords()
{
    QFETCH(const QByteArray, data);
    QFETCH(const QByteArray, text);
    DialogFixture fixture;
    QCOMPARE(encoded(&fixture, data), untouchedBehind(text));
}

void ImageStreaming::encodesEveryLength_data()
{
    QTest::addColumn<int>("factor");
    QTest::newRow("with bytes that count up") << 1;
    QTest::newRow("with bytes that jump") << 167;
}

void ImageStreaming::encodesEveryLength()
{
    QFETCH(const int, factor);
    DialogFixture fixture;
    QByteArray data;
    while (data.size() <= 120) {
        QCOMPARE(encoded(&fixture, data), untouchedBehind(encodedBitByBit(data)));
        data += static_cast<char>((data.size() + 1) * factor);
    }
}

void ImageStreaming::encodesEveryWord()
{
    DialogFixture fixture;
    for (int word = 0; word < 64; ++word) {
        const QByteArray text = encoded(&fixture, QByteArray(1, static_cast<char>(word)));
        QCOMPARE(text.left(3), QByteArray(1, ALPHABET.at(word)) + 'A' + '\0');
    }
}

void ImageStreaming::readsWords_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<int>("offset");
    QTest::addColumn<int>("word");

    const QByteArray data("\xB5\x6A\xC3");
    QTest::newRow("at the start of a byte") << data << 0 << 0x35;
    QTest::newRow("across the first two bytes") << data << 6 << 0x2A;
    QTest::newRow("across the last two bytes") << data << 12 << 0x36;
    QTest::newRow("at the end of the last byte") << data << 18 << 0x30;
    QTest::newRow("two bits of the last byte and none behind it")
        << QByteArray("\xB5") << 6 << 0x02;
    QTest::newRow("four bits of the last byte and none behind it")
        << QByteArray("\xB5\x6A") << 12 << 0x06;
    QTest::newRow("behind the last byte") << data << 24 << 0;
    QTest::newRow("far behind the last byte") << data << 600 << 0;
    QTest::newRow("no data") << QByteArray() << 0 << 0;
    QTest::newRow("an offset that no word starts at") << data << 1 << 0;
    QTest::newRow("another offset that no word starts at") << data << 7 << 0;
}

void ImageStreaming::readsWords()
{
    QFETCH(const QByteArray, data);
    QFETCH(const int, offset);
    DialogFixture fixture;
    QTEST(int(_get_b6word(fixture.dialog, bytesOf(data), data.size(), offset)), "word");
}

// ---- What goes out

void ImageStreaming::sendsTheWorkedExample()
{
    // A header that says: one firmware block, at the byte behind it.
    ControllerImage head = testImage({blockOf(FirmwareBlock)});
    QByteArray file = controllerImageBytes(head);
    file.truncate(
        ZanData(FixtureFolder().write(QStringLiteral("head"), file)).getUpdateBlock(0)->offset);
    file += QByteArray::fromHex("58A2 0300 616263 02000000 0300 0300010203 0100FF");

    Streaming streaming(file);
    QCOMPARE(streaming.stream(), 0);
    QCOMPARE(streaming.channel.log(), (QStringList{
                                          R"(set_value "system update 2 1 BIwA")",
                                          "prepare_reply 1 20000 1",
                                          R"(set_value "system update 2 2 /D")",
                                          "poll_reply 3",
                                      }));
    // Only a failure closes the stream.
    QCOMPARE(streaming.filesLeftOpen, 1);
}

void ImageStreaming::sendsRecords_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QStringList>("log");

    const QByteArray longRecord(120, '\0');
    const QString longText(160, QLatin1Char('A'));
    const auto lastOnly = [](const QString& command, int timeoutMs = 20000) {
        return QStringList{QStringLiteral("prepare_reply 1 %1 1").arg(timeoutMs),
                           QStringLiteral("set_value \"system %1\"").arg(command),
                           QStringLiteral("poll_reply 3")};
    };

    QTest::newRow("a firmware block goes out as update and gets 20 seconds at its end")
        << goodFile()
        << QStringList{R"(set_value "system update 2 1 BIwA")"} + lastOnly("update 2 2 /D");
    QTest::newRow("a system block goes out as ctupdt and gets two minutes at its end")
        << fileWith([](ControllerImageBlock& block) { block.type = SystemBlock; })
        << QStringList{R"(set_value "system ctupdt 2 1 BIwA")"} + lastOnly("ctupdt 2 2 /D", 120000);
    QTest::newRow("a block of another type goes out without a word and gets 20 seconds at its end")
        << fileWith([](ControllerImageBlock& block) { block.type = 7; })
        << QStringList{R"(set_value "system  2 1 BIwA")"} + lastOnly(" 2 2 /D");
    QTest::newRow("the only record is the last one")
        << fileWith([](ControllerImageBlock& block) { block.records = {QByteArray("\xFF")}; })
        << lastOnly("update 1 1 /D");
    QTest::newRow("a record of no bytes has an empty text")
        << fileWith([](ControllerImageBlock& block) { block.records = {QByteArray()}; })
        << lastOnly("update 1 1 ");
    QTest::newRow("a record of 120 bytes goes out as a whole")
        << fileWith([&](ControllerImageBlock& block) { block.records = {longRecord}; })
        << lastOnly("update 1 1 " + longText);
    QTest::newRow("a limit above 120 bytes leaves a record of 120 bytes alone")
        << fileWith([&](ControllerImageBlock& block) {
               block.records = {longRecord};
               block.maxRecordLength = 0xFFFF;
           })
        << lastOnly("update 1 1 " + longText);
    QTest::newRow("a record may be as long as the block's limit")
        << fileWith([](ControllerImageBlock& block) {
               block.records = {QByteArray("\x01\x02\x03")};
               block.maxRecordLength = 3;
           })
        << lastOnly("update 1 1 BIwA");
    QTest::newRow("a block without a text") << fileWith([](ControllerImageBlock& block) {
        block.text.clear();
        block.records = {QByteArray("\xFF")};
    }) << lastOnly("update 1 1 /D");
    QTest::newRow("a text of 49 bytes is stepped over")
        << fileWith([](ControllerImageBlock& block) {
               block.text = QByteArray(49, 'x');
               block.records = {QByteArray("\xFF")};
           })
        << lastOnly("update 1 1 /D");
    QTest::newRow("reading stops after the announced number of records")
        << fileWith([](ControllerImageBlock& block) { block.recordCount = 1; })
        << lastOnly("update 1 1 BIwA");
    QTest::newRow("the length in the block table plays no part")
        << fileWith([](ControllerImageBlock& block) {
               block.records = {QByteArray("\xFF")};
               block.length = 1;
           })
        << lastOnly("update 1 1 /D");

    ControllerImage briarscope = testImage({blockOf(FirmwareBlock)});
    briarscope.modelFamily = briarscopeFamily;
    briarscope.blocks.first().magic = 41562;
    QTest::newRow("an image of the model family 21 has a magic of its own")
        << controllerImageBytes(briarscope)
        << QStringList{R"(set_value "system update 2 1 BIwA")"} + lastOnly("update 2 2 /D");
}

void ImageStreaming::sendsRecords()
{
    QFETCH(const QByteArray, file);
    Streaming streaming(file);
    QCOMPARE(streaming.stream(), 0);
    QTEST(streaming.channel.log(), "log");
    QCOMPARE(streaming.filesLeftOpen, 1);
}

void ImageStreaming::sendsTheBlockThatIsAskedFor()
{
    Streaming streaming(testImage({blockOf(FirmwareBlock, {shortRecord(1)}),
                                   blockOf(FirmwareBlock, {shortRecord(2)}),
                                   blockOf(FirmwareBlock, {shortRecord(3)})}));
    QCOMPARE(streaming.stream(1), 0);
    QCOMPARE(streaming.channel.logOf("set_value"),
             QStringList{R"(set_value "system update 1 1 CA")"});
}

void ImageStreaming::ignoresTheResultOfTheLastSetting()
{
    Streaming streaming(goodFile());
    streaming.channel.on("system update 2 2 /D").fail();
    QCOMPARE(streaming.stream(), 0);
    QCOMPARE(streaming.channel.log().last(), QStringLiteral("poll_reply 3"));
}

// The percentages of the first, the 1001st, 2001st ... and the last record, in whole numbers.
static QVector<int> percentagesOfEightyThousand()
{
    QVector<int> values;
    for (int done = 0; done < 80000; done += 1000)
        values += qMax((done + 1) * 100 / 80000, 1);
    values += 98;
    values.erase(std::unique(values.begin(), values.end()), values.end());
    return values;
}

void ImageStreaming::sendsEightyThousandRecords()
{
    Streaming streaming(testImage({blockOf(FirmwareBlock, shortRecords(80000))}));
    QVector<int> values;
    connect(streaming.bar(), &QProgressBar::valueChanged, this,
            [&](int value) { values += value; });
    QCOMPARE(streaming.stream(), 0);
    disconnect(streaming.bar(), nullptr, this, nullptr);

    const QStringList log = streaming.channel.log();
    QCOMPARE(log.size(), 80002);
    QCOMPARE(log.at(16), QStringLiteral(R"(set_value "system update 80000 17 AA")"));
    QCOMPARE(log.mid(79998),
             (QStringList{R"(set_value "system update 80000 79999 AA")", "prepare_reply 1 20000 1",
                          R"(set_value "system update 80000 80000 AA")", "poll_reply 3"}));
    QCOMPARE(values, percentagesOfEightyThousand());
}

void ImageStreaming::sendsNothingWithoutRecords_data()
{
    QTest::addColumn<quint32>("recordCount");
    QTest::newRow("the block has no records") << 0U;
    QTest::newRow("the number of records is negative") << 0xFFFFFFFFU;
    QTest::newRow("the number of records is as low as can be") << 0x80000000U;
}

void ImageStreaming::sendsNothingWithoutRecords()
{
    QFETCH(const quint32, recordCount);
    Streaming streaming(
        fileWith([=](ControllerImageBlock& block) { block.recordCount = recordCount; }));
    showMessageInDialog(streaming.dialog, QStringLiteral("before"), 42);
    iValProgressBar(streaming.dialog) = 42;
    nUpdateRemainingSeconds(streaming.dialog) = 42;

    QCOMPARE(streaming.stream(), 0);
    QCOMPARE(streaming.channel.log(), QStringList());
    // No progress step has run, but the block's own count began.
    QCOMPARE(streaming.message(), QStringLiteral("before"));
    QCOMPARE(streaming.bar()->value(), 42);
    QCOMPARE(iValProgressBar(streaming.dialog), 0);
    QCOMPARE(nUpdateRemainingSeconds(streaming.dialog), 42);
    QCOMPARE(streaming.filesLeftOpen, 1);
}

// ---- Failures

static const char* const CANNOT_READ = "cannot read file ";
static const char* const NO_UPDATE_FILE = "no software update file ";

void ImageStreaming::refusesBadFiles_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<int>("result");
    QTest::addColumn<QString>("message");
    QTest::addColumn<int>("bar");
    QTest::addColumn<QStringList>("log");

    const auto refused = [](const char* name, int result, const char* message, int bar,
                            const std::function<void(ControllerImageBlock&)>& change,
                            const QStringList& log = {}) {
        QTest::newRow(name) << fileWith(change) << result << QString::fromLatin1(message) << bar
                            << log;
    };
    const QStringList firstRecord{R"(set_value "system update 2 1 BIwA")"};

    refused("the magic is another one", -4, NO_UPDATE_FILE, 1,
            [](ControllerImageBlock& block) { block.magic = 41561; });
    refused("the magic is that of model family 21 in an image of another", -4, NO_UPDATE_FILE, 1,
            [](ControllerImageBlock& block) { block.magic = 41562; });
    refused("the text is 50 bytes long", -4, NO_UPDATE_FILE, 1,
            [](ControllerImageBlock& block) { block.text = QByteArray(50, 'x'); });
    refused("the text claims to be as long as can be", -4, NO_UPDATE_FILE, 1,
            [](ControllerImageBlock& block) { block.textLength = 0xFFFF; });
    refused("the first record is one byte above the block's limit", -4, NO_UPDATE_FILE, 50,
            [](ControllerImageBlock& block) { block.maxRecordLength = 2; });
    refused(
        "a later record is one byte above the block's limit", -4, NO_UPDATE_FILE, 98,
        [](ControllerImageBlock& block) {
            block.records[1] = QByteArray(4, 'x');
            block.maxRecordLength = 3;
        },
        firstRecord);
    refused("a record of 121 bytes, although the block's limit allows it", -4, NO_UPDATE_FILE, 98,
            [](ControllerImageBlock& block) {
                block.records = {QByteArray(121, 'x')};
                block.maxRecordLength = 200;
            });
    refused("a record as long as can be, although the block's limit allows it", -4, NO_UPDATE_FILE,
            98, [](ControllerImageBlock& block) {
                block.records = {QByteArray(0xFFFF, 'x')};
                block.maxRecordLength = 0xFFFF;
            });
    refused(
        "a record claims more bytes than the file holds", -3, CANNOT_READ, 98,
        [](ControllerImageBlock& block) {
            block.records[1].announcedLength = 2;
            block.maxRecordLength = 120;
        },
        firstRecord);
    refused("more records are announced than the file holds", -3, CANNOT_READ, 98,
            [](ControllerImageBlock& block) { block.recordCount = 3; },
            {R"(set_value "system update 3 1 BIwA")", R"(set_value "system update 3 2 /D")"});
    refused("two thousand million records are announced", -3, CANNOT_READ, 1,
            [](ControllerImageBlock& block) { block.recordCount = 0x7FFFFFFF; },
            {R"(set_value "system update 2147483647 1 BIwA")",
             R"(set_value "system update 2147483647 2 /D")"});
    refused("the block begins at the end of the file", -3, CANNOT_READ, 1,
            [](ControllerImageBlock& block) { block.offset = goodFile().size(); });
    refused("the block begins far behind the end of the file", -3, CANNOT_READ, 1,
            [](ControllerImageBlock& block) { block.offset = 0x7FFFFFFF; });
    refused("the block begins before the start of the file", -4, NO_UPDATE_FILE, 1,
            [](ControllerImageBlock& block) { block.offset = 0xFFFFFFFF; });

    ControllerImage briarscope = testImage({blockOf(FirmwareBlock)});
    briarscope.modelFamily = briarscopeFamily;
    briarscope.blocks.first().magic = 41560;
    QTest::newRow("the magic is another model family's in an image of model family 21")
        << controllerImageBytes(briarscope) << -4 << QString::fromLatin1(NO_UPDATE_FILE) << 1
        << QStringList();
}

void ImageStreaming::refusesBadFiles()
{
    QFETCH(const QByteArray, file);
    QFETCH(const QString, message);
    Streaming streaming(file);
    QTEST(streaming.stream(), "result");
    QCOMPARE(streaming.message(), message + streaming.path);
    QTEST(streaming.bar()->value(), "bar");
    QTEST(streaming.channel.log(), "log");
    QCOMPARE(streaming.filesLeftOpen, 0);
}

void ImageStreaming::refusesATruncatedBlock_data()
{
    QTest::addColumn<int>("kept");
    QTest::addColumn<int>("bar");
    QTest::addColumn<int>("sent");

    // The fields of the worked example, with what the user sees when the file ends inside.
    struct Field
    {
        const char* name;
        int size;
        int bar;
        int sent;
    };
    const Field fields[] = {{"magic", 2, 1, 0},
                            {"text length", 2, 1, 0},
                            {"text", 3, 1, 0},
                            {"record count", 4, 1, 0},
                            {"longest record", 2, 1, 0},
                            {"length of record 1", 2, 50, 0},
                            {"data of record 1", 3, 50, 0},
                            {"length of record 2", 2, 98, 1},
                            {"data of record 2", 1, 98, 1}};
    int kept = 0;
    for (const Field& field : fields) {
        for (int byte = 0; byte < field.size; ++byte, ++kept) {
            QTest::addRow("the file ends after %d bytes of %s", byte, field.name)
                << kept << field.bar << field.sent;
        }
    }
}

void ImageStreaming::refusesATruncatedBlock()
{
    QFETCH(const int, kept);
    QFETCH(const int, sent);
    static constexpr int BLOCK_BYTES = 21;
    const QByteArray file = goodFile();
    Streaming streaming(file.left(file.size() - BLOCK_BYTES + kept));
    QCOMPARE(streaming.stream(), -3);
    QCOMPARE(streaming.message(), CANNOT_READ + streaming.path);
    QTEST(streaming.bar()->value(), "bar");
    QCOMPARE(streaming.channel.log(),
             QStringList{R"(set_value "system update 2 1 BIwA")"}.mid(0, sent));
    QCOMPARE(streaming.filesLeftOpen, 0);
}

void ImageStreaming::failsWithoutStream_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<bool>("isFileGone");
    QTest::newRow("there is no such block") << 1 << false;
    QTest::newRow("the number of the block is negative") << -1 << false;
    QTest::newRow("the file has gone") << 0 << true;
}

void ImageStreaming::failsWithoutStream()
{
    QFETCH(const int, index);
    QFETCH(const bool, isFileGone);
    Streaming streaming(goodFile());
    if (isFileGone)
        QVERIFY(QFile::remove(streaming.path));
    showMessageInDialog(streaming.dialog, QStringLiteral("before"), 42);
    QCOMPARE(streaming.stream(index), -1);
    QCOMPARE(streaming.message(), QStringLiteral("before"));
    QCOMPARE(streaming.bar()->value(), 42);
    QCOMPARE(streaming.channel.log(), QStringList());
    QCOMPARE(streaming.filesLeftOpen, 0);
}

void ImageStreaming::endsWithTheFirstFailedRecord()
{
    Streaming streaming(testImage({blockOf(FirmwareBlock, shortRecords(4))}));
    streaming.channel.on("system update 4 2 AA").fail();
    QCOMPARE(streaming.stream(), -1);
    QCOMPARE(streaming.message(), QStringLiteral("Update not successful! Error code: 1"));
    QCOMPARE(streaming.bar()->value(), 25);
    QCOMPARE(streaming.channel.log(), (QStringList{R"(set_value "system update 4 1 AA")",
                                                   R"(set_value "system update 4 2 AA")"}));
    QCOMPARE(streaming.filesLeftOpen, 0);
}

void ImageStreaming::failsWithTheControllersAnswer()
{
    Streaming streaming(goodFile());
    nBlocksMustUpdate(streaming.dialog) = 2;
    streaming.channel.onPoll().fail();
    QCOMPARE(streaming.stream(), -1);
    QCOMPARE(streaming.message(), QStringLiteral("Update not successful! Error code: 2"));
    QCOMPARE(streaming.bar()->value(), 50);
    QCOMPARE(streaming.channel.log().size(), 4);
    QCOMPARE(streaming.filesLeftOpen, 0);
}

void ImageStreaming::doesNotTranslateItsMessages_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<bool>("refusesRecord");
    QTest::addColumn<QString>("message");
    QTest::addColumn<bool>("namesTheFile");

    QTest::newRow("a file that ends too early")
        << goodFile().chopped(1) << false << CANNOT_READ << true;
    QTest::newRow("a file that is something else")
        << fileWith([](ControllerImageBlock& block) { block.magic = 41561; }) << false
        << NO_UPDATE_FILE << true;
    QTest::newRow("a record that is refused")
        << goodFile() << true << "Update not successful! Error code: 1" << false;
    QTest::newRow("a block that is refused")
        << goodFile() << false << "Update not successful! Error code: 2" << false;
}

void ImageStreaming::doesNotTranslateItsMessages()
{
    QFETCH(const QByteArray, file);
    QFETCH(const bool, refusesRecord);
    QFETCH(const QString, message);
    QFETCH(const bool, namesTheFile);
    const MarkingTranslator translator("ZanUpdateModule2GSettingsdlg");
    Streaming streaming(file);
    if (refusesRecord)
        streaming.channel.on("system update 2 1 BIwA").fail();
    streaming.channel.onPoll().fail();
    QVERIFY(streaming.stream() < 0);
    QCOMPARE(streaming.message(), namesTheFile ? message + streaming.path : message);
}

// ---- Progress

void ImageStreaming::servesEventsAtTicks_data()
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

// Events posted at every call are served only where the streaming serves events.
void ImageStreaming::servesEventsAtTicks()
{
    QFETCH(const int, records);
    Streaming streaming(testImage({blockOf(FirmwareBlock, shortRecords(records))}));
    QVector<int> ticks;
    const auto postEvent = [&] {
        QMetaObject::invokeMethod(
            &streaming.dialog,
            [&] {
                const int record = streaming.channel.logOf(QStringLiteral("set_value")).size() + 1;
                if (ticks.isEmpty() || ticks.last() != record)
                    ticks += record;
            },
            Qt::QueuedConnection);
    };
    postEvent();
    streaming.channel.setHook([&](const QString&) { postEvent(); });
    QCOMPARE(streaming.stream(), 0);
    QCoreApplication::removePostedEvents(&streaming.dialog);
    QTEST(ticks, "ticks");
}

void ImageStreaming::showsATickBeforeItServesEvents()
{
    Streaming streaming(goodFile());
    QVector<int> values;
    const auto postEvent = [&] {
        QMetaObject::invokeMethod(
            &streaming.dialog, [&] { values += streaming.bar()->value(); }, Qt::QueuedConnection);
    };
    postEvent();
    streaming.channel.setHook([&](const QString& call) {
        if (call == QLatin1String(R"(set_value "system update 2 1 BIwA")"))
            postEvent();
    });
    QCOMPARE(streaming.stream(), 0);
    QCOMPARE(values, (QVector<int>{50, 98}));
}

void ImageStreaming::showsPercentages_data()
{
    QTest::addColumn<int>("blocks");
    QTest::addColumn<int>("ith");
    QTest::addColumn<int>("records");
    QTest::addColumn<QVector<int>>("values");

    QTest::newRow("the end of the only block shows 98, not 100") << 1 << 0 << 1 << QVector<int>{98};
    QTest::newRow("halfway through the only block") << 1 << 0 << 2 << QVector<int>{50, 98};
    QTest::newRow("the end of the first of two blocks") << 2 << 0 << 1 << QVector<int>{50};
    QTest::newRow("the second of two blocks begins where the first one ended")
        << 2 << 1 << 4 << QVector<int>{62, 98};
    QTest::newRow("fractions are cut") << 3 << 0 << 4 << QVector<int>{8, 33};
    QTest::newRow("fractions are cut in the middle of a run too")
        << 3 << 1 << 4 << QVector<int>{41, 66};
    QTest::newRow("single precision falls just short of 70") << 6 << 4 << 5 << QVector<int>{69, 83};
    QTest::newRow("single precision reaches 90") << 9 << 8 << 10 << QVector<int>{90, 98};
    QTest::newRow("less than one is shown as 1") << 200 << 0 << 2 << QVector<int>{1};
    QTest::newRow("a block beyond the count of the run") << 1 << 1 << 2 << QVector<int>{98};
    QTest::newRow("a block in a run that counts none") << 0 << 0 << 1 << QVector<int>{98};
    QTest::newRow("a block beyond a run that counts none") << 0 << 3 << 2 << QVector<int>{98};
}

void ImageStreaming::showsPercentages()
{
    QFETCH(const int, blocks);
    QFETCH(const int, ith);
    QFETCH(const int, records);
    Streaming streaming(testImage({blockOf(FirmwareBlock, shortRecords(records))}));
    nBlocksMustUpdate(streaming.dialog) = blocks;
    ShownProgress shown(&streaming);
    QCOMPARE(streaming.stream(0, ith), 0);
    QTEST(shown.values(), "values");
    QCOMPARE(iValProgressBar(streaming.dialog), shown.values().last());
}

void ImageStreaming::estimatesTheRemainingTime_data()
{
    QTest::addColumn<int>("blocks");
    QTest::addColumn<int>("ith");
    QTest::addColumn<quint32>("records");
    QTest::addColumn<QString>("state");

    const auto row = [](const char* name, int blocks, int ith, quint32 records,
                        const QString& state) {
        QTest::newRow(name) << blocks << ith << records << state;
    };
    row("the first record of the first of three large blocks", 3, 0, 80000,
        " | Estimated remaining time: 2 min 3 s | 1");
    row("the first record of the last of three large blocks", 3, 2, 80000,
        " | Estimated remaining time: 41 s | 66");
    row("a small block takes the time of its last step", 1, 0, 2749,
        " | Estimated remaining time: 12 s | 1");
    row("a second is added for 2750 records", 1, 0, 2750, " | Estimated remaining time: 13 s | 1");
    row("the fraction of a second is cut", 1, 0, 5499, " | Estimated remaining time: 13 s | 1");
    row("a further block counts as 41 seconds", 2, 0, 10, " | Estimated remaining time: 53 s | 5");
    row("a run that counts no blocks keeps its estimate", 0, 0, 10,
        " | Estimated remaining time: 7 s | 98");
    row("a block beyond the count takes time from the estimate", 1, 1, 80000, " |  | 98");
}

void ImageStreaming::estimatesTheRemainingTime()
{
    QFETCH(const int, blocks);
    QFETCH(const int, ith);
    QFETCH(const quint32, records);
    // The file ends early: what is looked at is shown before its first record goes out.
    Streaming streaming(
        fileWith([=](ControllerImageBlock& block) { block.recordCount = records; }));
    nBlocksMustUpdate(streaming.dialog) = blocks;
    nUpdateRemainingSeconds(streaming.dialog) = 7;
    showWhatInDialog(streaming.dialog, QString());
    QString state;
    ShownProgress shown(&streaming);
    streaming.channel.setHook([&](const QString& call) {
        if (call.startsWith(QLatin1String("set_value")) && state.isEmpty()) {
            shown.note();
            state = shown.states().last();
        }
    });
    QCOMPARE(streaming.stream(0, ith), -3);
    QTEST(state, "state");
}

void ImageStreaming::keepsTheEstimateAtTheLastRecord_data()
{
    QTest::addColumn<int>("blocks");
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("ith");
    QTest::addColumn<int>("seconds");

    QTest::newRow("the only block of the run keeps it") << 1 << 0 << 0 << 777;
    QTest::newRow("the image's second block keeps it in a run of two blocks") << 2 << 1 << 1 << 777;
    QTest::newRow("the image's second block keeps it even as the first one of the run")
        << 2 << 1 << 0 << 777;
    QTest::newRow("the image's first block does not keep it even as the last one of the run")
        << 2 << 0 << 1 << 12;
    QTest::newRow("the first block of several does not keep it") << 3 << 0 << 0 << 94;
}

void ImageStreaming::keepsTheEstimateAtTheLastRecord()
{
    QFETCH(const int, blocks);
    QFETCH(const int, index);
    QFETCH(const int, ith);
    Streaming streaming(testImage(
        {blockOf(FirmwareBlock, shortRecords(1)), blockOf(FirmwareBlock, shortRecords(1))}));
    nBlocksMustUpdate(streaming.dialog) = blocks;
    nUpdateRemainingSeconds(streaming.dialog) = 777;
    QCOMPARE(streaming.stream(index, ith), 0);
    QTEST(nUpdateRemainingSeconds(streaming.dialog), "seconds");
}

ZAN_WIDGET_TEST_MAIN(ImageStreaming)

#include "tst_imagestreaming.moc"
