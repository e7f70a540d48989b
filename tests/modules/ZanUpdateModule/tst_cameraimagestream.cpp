#include "cameraimagestream.h"

#include "cameracases.h"
#include "fixtureimages.h"
#include "littleendianreader.h"
#include "memorystream.h"
#include "scriptedchannel.h"
#include "testmain.h"
#include "truncation.h"

/// The images of a file behind its head and table, on their way to a camera.
class Streaming
{
public:
    explicit Streaming(const QByteArray& images) : m_stream(images) {}

    void stream(const CameraTransfer& transfer = {0, true, 30.0})
    {
        LittleEndianReader reader(m_stream.get(), LittleEndianReader::LargeChunk);
        outcome =
            streamCameraImage(reader, &channel, transfer, [&](quint32 record, quint32 records) {
                ticks += QStringLiteral("%1/%2 after %3 calls")
                             .arg(record)
                             .arg(records)
                             .arg(channel.log().size());
            });
    }
    bool isAtEnd() { return std::fgetc(m_stream.get()) == EOF; }

    ScriptedChannel channel;
    CameraImageOutcome outcome;
    QStringList ticks;

private:
    MemoryStream m_stream;
};

static CameraImage imageOf(const QVector<ImageRecord>& records)
{
    CameraImage image = cameraFile({0x0a01}, VersionInfo(1, 1, 0)).images.first();
    image.records = records;
    return image;
}

// The images as they stand behind each other in a file.
static QByteArray bytesOf(const QVector<CameraImage>& images)
{
    CameraUpdateFile file = cameraFile({0x0a01}, VersionInfo(1, 1, 0));
    file.images.clear();
    const int headBytes = cameraUpdateBytes(file).size() + 20 * images.size();
    file.images = images;
    return cameraUpdateBytes(file).mid(headBytes);
}

/// An image's way to a camera, without any window.
class TestCameraImageStream : public QObject
{
    Q_OBJECT

private slots:
    void sendsOneImageAfterTheOther();
    void readsThroughWithoutSending();
    void sendsNothingOfAnImageWithoutRecords();
    void namesTheCamera_data();
    void namesTheCamera();
    void cutsTheTimeForTheLastRecordToSeconds_data();
    void cutsTheTimeForTheLastRecordToSeconds();
    void ticksBeforeEachRecord();

    void looksAtEveryReply_data();
    void looksAtEveryReply();
    void endsWithAChannelThatFails_data();
    void endsWithAChannelThatFails();
    void namesTheFieldAtWhichAnImageIsCut();
    void refusesAnImage_data();
    void refusesAnImage();
    void tellsWhatIsWrongWithAFile_data();
    void tellsWhatIsWrongWithAFile();
};

// ---- What goes out

void TestCameraImageStream::sendsOneImageAfterTheOther()
{
    CameraImage second = imageOf({shortRecord(1), QByteArray(), QByteArray(120, '\0')});
    second.text = QByteArray(200, 'x');
    second.maxRecordLength = 0;
    Streaming streaming(
        bytesOf({imageOf({QByteArray("\x01\x02\x03"), QByteArray("\xFF")}), second}));
    streaming.stream();
    QCOMPARE(streaming.outcome.code, 0);
    QCOMPARE(streaming.outcome.message, QString());
    QCOMPARE(streaming.channel.takeLog(),
             (QStringList{sent("c01 2 1 BIwA"), PREPARE, sent("c01 2 2 /D"), POLL}));
    QVERIFY(!streaming.isAtEnd());
    Streaming onlySecond(bytesOf({second}));
    onlySecond.stream();
    QCOMPARE(onlySecond.outcome.code, 0);
    QCOMPARE(onlySecond.channel.takeLog(),
             (QStringList{sent("c01 3 1 BA"), sent("c01 3 2 "), PREPARE,
                          sent("c01 3 3 " + QByteArray(160, 'A')), POLL}));
    QVERIFY(onlySecond.isAtEnd());
}

void TestCameraImageStream::readsThroughWithoutSending()
{
    Streaming streaming(bytesOf({imageOf(shortRecords(3)), imageOf(shortRecords(2))}));
    streaming.stream({0, false, 9.5});
    QCOMPARE(streaming.outcome.code, 0);
    streaming.stream({0, false, 9.5});
    QCOMPARE(streaming.outcome.code, 0);
    QCOMPARE(streaming.channel.log(), QStringList());
    QVERIFY(streaming.isAtEnd());
}

void TestCameraImageStream::sendsNothingOfAnImageWithoutRecords()
{
    Streaming streaming(bytesOf({imageOf({})}));
    streaming.stream();
    QCOMPARE(streaming.outcome.code, 0);
    QCOMPARE(streaming.channel.log(), QStringList());
    QCOMPARE(streaming.ticks, QStringList{"0/0 after 0 calls"});
}

void TestCameraImageStream::namesTheCamera_data()
{
    QTest::addColumn<int>("camera");
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("the first camera") << 0 << QByteArray("c01");
    QTest::newRow("the ninth camera") << 8 << QByteArray("c09");
    QTest::newRow("the tenth camera") << 9 << QByteArray("c10");
    QTest::newRow("the last one of two digits") << 98 << QByteArray("c99");
    QTest::newRow("the first one of three digits") << 99 << QByteArray("c100");
}

void TestCameraImageStream::namesTheCamera()
{
    QFETCH(const int, camera);
    QFETCH(const QByteArray, name);
    Streaming streaming(bytesOf({imageOf({shortRecord(1), shortRecord(2)})}));
    streaming.stream({camera, true, 30.0});
    QCOMPARE(streaming.channel.log(),
             (QStringList{sent(name + " 2 1 BA"), PREPARE, sent(name + " 2 2 CA"), POLL}));
}

void TestCameraImageStream::cutsTheTimeForTheLastRecordToSeconds_data()
{
    QTest::addColumn<double>("durationSec");
    QTest::addColumn<QString>("prepare");
    QTest::newRow("no time of its own") << 0.0 << "prepare_reply 1 10000 1";
    QTest::newRow("almost a second") << 0.99 << "prepare_reply 1 10000 1";
    QTest::newRow("half a second more") << 9.5 << "prepare_reply 1 19000 1";
    QTest::newRow("whole seconds") << 62.0 << "prepare_reply 1 72000 1";
}

void TestCameraImageStream::cutsTheTimeForTheLastRecordToSeconds()
{
    QFETCH(const double, durationSec);
    Streaming streaming(bytesOf({imageOf({shortRecord(1)})}));
    streaming.stream({0, true, durationSec});
    QTEST(streaming.channel.log().first(), "prepare");
}

void TestCameraImageStream::ticksBeforeEachRecord()
{
    Streaming streaming(bytesOf({imageOf(shortRecords(3))}));
    streaming.stream();
    QCOMPARE(streaming.ticks, (QStringList{"0/3 after 0 calls", "1/3 after 0 calls",
                                           "2/3 after 1 calls", "3/3 after 2 calls"}));
}

// ---- The camera's replies

static QString messageOf(int code)
{
    switch (code) {
    case 0:
        return QString();
    case -222:
        return QStringLiteral("Update not successful!");
    case -300:
        return QStringLiteral("camera update failed");
    case -333:
        return QStringLiteral("update failed");
    default:
        return QStringLiteral("cannot read file");
    }
}

void TestCameraImageStream::looksAtEveryReply_data()
{
    addRowsOfReplies();
}

void TestCameraImageStream::looksAtEveryReply()
{
    QFETCH(const ScriptedAnswers, answer);
    QFETCH(const int, code);
    const QStringList whole{sent("c01 3 1 AA"), sent("c01 3 2 BA"), PREPARE, sent("c01 3 3 CA"),
                            POLL};
    // The calls of the run up to each record's reply.
    const QVector<QPair<QByteArray, int>> records{{"1 AA", 1}, {"2 BA", 2}, {"3 CA", 5}};
    for (int i = 0; i < records.size(); ++i) {
        Streaming streaming(bytesOf({imageOf({shortRecord(0), shortRecord(1), shortRecord(2)})}));
        streaming.channel.on("vornix2 set camera update c01 3 " + records.at(i).first) = answer;
        streaming.stream();
        QCOMPARE(streaming.outcome.code, code);
        QCOMPARE(streaming.outcome.message, messageOf(code));
        QCOMPARE(streaming.outcome.record, code == 0 ? 0U : quint32(i + 1));
        QCOMPARE(streaming.channel.log(), whole.mid(0, code == 0 ? -1 : records.at(i).second));
    }
}

void TestCameraImageStream::endsWithAChannelThatFails_data()
{
    addRowsOfFailingChannels();
}

void TestCameraImageStream::endsWithAChannelThatFails()
{
    QFETCH(const Script, script);
    QFETCH(const int, code);
    QFETCH(const int, calls);
    Streaming streaming(bytesOf({imageOf({shortRecord(1), shortRecord(2)})}));
    script(streaming.channel);
    streaming.stream();
    QCOMPARE(streaming.outcome.code, code);
    QCOMPARE(streaming.outcome.message, messageOf(code));
    const QStringList whole{sent("c01 2 1 BA"), PREPARE, sent("c01 2 2 CA"), POLL};
    QCOMPARE(streaming.channel.log(), whole.mid(0, calls));
}

// ---- What cannot be read

void TestCameraImageStream::namesTheFieldAtWhichAnImageIsCut()
{
    const CameraImage image =
        imageOf({QByteArray("\x01\x02\x03"), QByteArray(), QByteArray("\xFF")});
    QVector<FormatField> fields{
        {2, -101}, {2, -103}, {image.text.size(), -104}, {4, -105}, {2, -106}};
    for (const ImageRecord& record : image.records)
        fields += QVector<FormatField>{{2, -107}, {record.data.size(), -108}};
    const QByteArray bytes = bytesOf({image});
    for (int length = 0; length <= bytes.size(); ++length) {
        const int code = codeOfTruncation(fields, length);
        Streaming streaming(bytes.left(length));
        streaming.stream();
        QCOMPARE(streaming.outcome.code, code);
        QCOMPARE(streaming.outcome.message, messageOf(code));
        // It goes out whole, or up to the record that was cut.
        const int whole = streaming.channel.logOf("send_command").size();
        QCOMPARE(int(streaming.outcome.record), code <= -107 ? whole + 1 : 0);
        QCOMPARE(whole == 3, code == 0);
    }
}

void TestCameraImageStream::refusesAnImage_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("record");

    const auto row = [](const char* name, int code, int record,
                        const std::function<void(CameraImage&)>& change) {
        CameraImage image = imageOf({shortRecord(1), QByteArray(), shortRecord(2)});
        change(image);
        QTest::newRow(name) << bytesOf({image}) << code << record;
    };
    row("the magic of a controller's block", -102, 0,
        [](CameraImage& image) { image.magic = 0xA258; });
    row("the magic of a file", -102, 0, [](CameraImage& image) { image.magic = 0xD209; });
    row("a version text of 201 bytes", -104, 0,
        [](CameraImage& image) { image.text.fill('x', 201); });
    row("a version text of 65535 bytes", -104, 0,
        [](CameraImage& image) { image.text.fill('x', 65535); });
    row("a record of 121 bytes", -108, 2, [](CameraImage& image) {
        image.records = {shortRecord(1), QByteArray(121, 'x')};
    });
    row("a record of 65535 bytes", -108, 1,
        [](CameraImage& image) { image.records = {QByteArray(65535, 'x')}; });
    row("one record more than there is", -107, 4,
        [](CameraImage& image) { image.recordCount = 4; });
    row("2147483648 records", -107, 4, [](CameraImage& image) { image.recordCount = 1U << 31; });
    row("4294967295 records", -107, 4, [](CameraImage& image) { image.recordCount = 0xFFFFFFFF; });
}

void TestCameraImageStream::refusesAnImage()
{
    QFETCH(const QByteArray, bytes);
    QFETCH(const int, code);
    QFETCH(const int, record);
    Streaming streaming(bytes);
    streaming.stream();
    QCOMPARE(streaming.outcome.code, code);
    QCOMPARE(streaming.outcome.message, QStringLiteral("cannot read file"));
    QCOMPARE(int(streaming.outcome.record), record);
    QCOMPARE(streaming.channel.logOf("send_command").size(), qMax(record - 1, 0));
}

void TestCameraImageStream::tellsWhatIsWrongWithAFile_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<bool>("isHeadRead");
    QTest::addColumn<QString>("message");
    QTest::newRow("it cannot be opened") << -1 << false << "cannot read file ";
    QTest::newRow("it is something else") << -3 << false << "no software update file ";
    QTest::newRow("its head ends early") << -14 << false << "cannot read file ";
    QTest::newRow("an image ends early") << -107 << true << "update not successful ";
    QTest::newRow("the camera refused") << -300 << true << "update not successful ";
}

void TestCameraImageStream::tellsWhatIsWrongWithAFile()
{
    QFETCH(const int, code);
    QFETCH(const bool, isHeadRead);
    QTEST(cameraFileMessage(code, isHeadRead), "message");
}

ZAN_TEST_MAIN(TestCameraImageStream)

#include "tst_cameraimagestream.moc"
