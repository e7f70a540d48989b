#include "blockstream.h"

#include "ZanData.h"
#include "blockcases.h"
#include "littleendianreader.h"
#include "markingtranslator.h"
#include "scriptedchannel.h"
#include "testmain.h"

/// One block of one image file, on its way to a controller.
struct Streaming
{
    explicit Streaming(const QByteArray& file)
        : path(folder.write(QStringLiteral("image"), file)), image(path)
    {
    }
    explicit Streaming(const ControllerImage& image) : Streaming(controllerImageBytes(image)) {}

    /// Leaves the stream at the byte behind the last one that was read.
    void stream(int index = 0)
    {
        FILE* file = image.getUpdateBlockInFile(index);
        QVERIFY(file);
        {
            LittleEndianReader reader(file, LittleEndianReader::LargeChunk);
            outcome = streamBlock(reader, &channel,
                                  {path, image.getSystemModel(), image.getUpdateBlock(index)->type},
                                  [&](const RecordPlace& place) {
                                      ticks += QStringLiteral("%1/%2 after %3 calls")
                                                   .arg(place.record)
                                                   .arg(place.records)
                                                   .arg(channel.log().size());
                                  });
        }
        end = std::ftell(file);
        std::fclose(file);
    }

    FixtureFolder folder;
    QString path;
    ZanData image;
    ScriptedChannel channel;
    BlockOutcome outcome;
    QStringList ticks;
    long end = 0;
};

/// A block's way to a controller, without any window.
class TestBlockStream : public QObject
{
    Q_OBJECT

private slots:
    void sendsTheWorkedExample();
    void sendsRecords_data();
    void sendsRecords();
    void sendsTheBlockThatIsAskedFor();
    void ignoresTheResultOfTheLastSetting();
    void sendsEightyThousandRecords();
    void sendsNothingWithoutRecords_data();
    void sendsNothingWithoutRecords();
    void leavesTheStreamBehindTheRecords();

    void refusesBadFiles_data();
    void refusesBadFiles();
    void refusesATruncatedBlock_data();
    void refusesATruncatedBlock();
    void endsWithTheFirstFailedRecord();
    void failsWithTheControllersAnswer();
    void doesNotTranslateItsMessages();

    void ticksOnceInAThousandRecords_data();
    void ticksOnceInAThousandRecords();
    void nameOfABlock();
};

// ---- What goes out

void TestBlockStream::sendsTheWorkedExample()
{
    Streaming streaming(workedExample());
    streaming.stream();
    QCOMPARE(streaming.outcome.result, 0);
    QCOMPARE(streaming.outcome.message, QString());
    QCOMPARE(streaming.channel.log(),
             (QStringList{firstRecord(), "prepare_reply 1 20000 1",
                          R"(set_value "system update 2 2 /D")", "poll_reply 3"}));
}

static QStringList lastOnly(const QString& command, int timeoutMs = 20000)
{
    return {QStringLiteral("prepare_reply 1 %1 1").arg(timeoutMs),
            QStringLiteral("set_value \"system %1\"").arg(command), QStringLiteral("poll_reply 3")};
}

void TestBlockStream::sendsRecords_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QStringList>("log");

    const QByteArray longRecord(120, '\0');
    const QString longText(160, QLatin1Char('A'));
    const auto row = [](const char* name, const QStringList& log, const BlockChange& change) {
        QTest::newRow(name) << fileWith(change) << log;
    };
    row("a firmware block goes out as update and gets 20 seconds at its end",
        QStringList{firstRecord()} + lastOnly("update 2 2 /D"), [](ControllerImageBlock&) {});
    row("a system block goes out as ctupdt and gets two minutes at its end",
        QStringList{R"(set_value "system ctupdt 2 1 BIwA")"} + lastOnly("ctupdt 2 2 /D", 120000),
        [](ControllerImageBlock& block) { block.type = SystemBlock; });
    row("a block of another type goes out without a word and gets 20 seconds at its end",
        QStringList{R"(set_value "system  2 1 BIwA")"} + lastOnly(" 2 2 /D"),
        [](ControllerImageBlock& block) { block.type = 7; });
    row("the only record is the last one", lastOnly("update 1 1 /D"),
        [](ControllerImageBlock& block) { block.records = {QByteArray("\xFF")}; });
    row("a record of no bytes has an empty text", lastOnly("update 1 1 "),
        [](ControllerImageBlock& block) { block.records = {QByteArray()}; });
    row("a record of 120 bytes goes out as a whole", lastOnly("update 1 1 " + longText),
        [&](ControllerImageBlock& block) { block.records = {longRecord}; });
    row("a limit above 120 bytes leaves a record of 120 bytes alone",
        lastOnly("update 1 1 " + longText), [&](ControllerImageBlock& block) {
            block.records = {longRecord};
            block.maxRecordLength = 0xFFFF;
        });
    row("a record may be as long as the block's limit", lastOnly("update 1 1 BIwA"),
        [](ControllerImageBlock& block) {
            block.records = {QByteArray("\x01\x02\x03")};
            block.maxRecordLength = 3;
        });
    row("a block without a text", lastOnly("update 1 1 /D"), [](ControllerImageBlock& block) {
        block.text.clear();
        block.records = {QByteArray("\xFF")};
    });
    row("a text of 49 bytes is stepped over", lastOnly("update 1 1 /D"),
        [](ControllerImageBlock& block) {
            block.text = QByteArray(49, 'x');
            block.records = {QByteArray("\xFF")};
        });
    row("reading stops after the announced number of records", lastOnly("update 1 1 BIwA"),
        [](ControllerImageBlock& block) { block.recordCount = 1; });
    row("the length in the block table plays no part", lastOnly("update 1 1 /D"),
        [](ControllerImageBlock& block) {
            block.records = {QByteArray("\xFF")};
            block.length = 1;
        });
    QTest::newRow("an image of the model family 21 has a magic of its own")
        << briarscopeFile(41562) << QStringList{firstRecord()} + lastOnly("update 2 2 /D");
}

void TestBlockStream::sendsRecords()
{
    QFETCH(const QByteArray, file);
    Streaming streaming(file);
    streaming.stream();
    QCOMPARE(streaming.outcome.result, 0);
    QTEST(streaming.channel.log(), "log");
}

void TestBlockStream::sendsTheBlockThatIsAskedFor()
{
    Streaming streaming(testImage({blockOf(FirmwareBlock, {shortRecord(1)}),
                                   blockOf(FirmwareBlock, {shortRecord(2)}),
                                   blockOf(FirmwareBlock, {shortRecord(3)})}));
    streaming.stream(1);
    QCOMPARE(streaming.channel.log(), lastOnly("update 1 1 CA"));
}

void TestBlockStream::ignoresTheResultOfTheLastSetting()
{
    Streaming streaming(goodFile());
    streaming.channel.on("system update 2 2 /D").fail();
    streaming.stream();
    QCOMPARE(streaming.outcome.result, 0);
    QCOMPARE(streaming.channel.log().last(), QStringLiteral("poll_reply 3"));
}

void TestBlockStream::sendsEightyThousandRecords()
{
    Streaming streaming(testImage({blockOf(FirmwareBlock, shortRecords(80000))}));
    streaming.stream();
    const QStringList log = streaming.channel.log();
    QCOMPARE(log.size(), 80002);
    QCOMPARE(log.at(16), QStringLiteral(R"(set_value "system update 80000 17 AA")"));
    QCOMPARE(log.mid(79998), QStringList{R"(set_value "system update 80000 79999 AA")"} +
                                 lastOnly("update 80000 80000 AA"));
}

void TestBlockStream::sendsNothingWithoutRecords_data()
{
    addRowsWithoutRecords();
}

void TestBlockStream::sendsNothingWithoutRecords()
{
    QFETCH(const quint32, recordCount);
    QFETCH(const int, records);
    Streaming streaming(
        fileWith([=](ControllerImageBlock& block) { block.recordCount = recordCount; }));
    streaming.stream();
    QCOMPARE(streaming.outcome.result, 0);
    QCOMPARE(streaming.channel.log(), QStringList());
    QCOMPARE(streaming.ticks, QStringList{QStringLiteral("0/%1 after 0 calls").arg(records)});
}

void TestBlockStream::leavesTheStreamBehindTheRecords()
{
    const QByteArray file = goodFile();
    Streaming streaming(file + QByteArray(1000, 'x'));
    streaming.stream();
    QCOMPARE(streaming.end, long(file.size()));
}

// ---- Failures

static const QString CANNOT_READ = QStringLiteral("cannot read file ");
static const QString NO_UPDATE_FILE = QStringLiteral("no software update file ");

void TestBlockStream::refusesBadFiles_data()
{
    addRowsOfBadFiles();
}

void TestBlockStream::refusesBadFiles()
{
    QFETCH(const QByteArray, file);
    QFETCH(const int, result);
    Streaming streaming(file);
    streaming.stream();
    QCOMPARE(streaming.outcome.result, result);
    QCOMPARE(streaming.outcome.message,
             (result == -3 ? CANNOT_READ : NO_UPDATE_FILE) + streaming.path);
    QTEST(streaming.outcome.record, "record");
    QTEST(streaming.channel.log(), "log");
}

void TestBlockStream::refusesATruncatedBlock_data()
{
    QTest::addColumn<int>("kept");
    QTest::addColumn<int>("record");

    // The fields of the worked example, with the record in which the file ends.
    struct Field
    {
        const char* name;
        int size;
        int record;
    };
    const Field fields[] = {{"magic", 2, 0},
                            {"text length", 2, 0},
                            {"text", 3, 0},
                            {"record count", 4, 0},
                            {"longest record", 2, 0},
                            {"length of record 1", 2, 1},
                            {"data of record 1", 3, 1},
                            {"length of record 2", 2, 2},
                            {"data of record 2", 1, 2}};
    int kept = 0;
    for (const Field& field : fields) {
        for (int byte = 0; byte < field.size; ++byte, ++kept)
            QTest::addRow("the file ends after %d bytes of %s", byte, field.name)
                << kept << field.record;
    }
}

void TestBlockStream::refusesATruncatedBlock()
{
    QFETCH(const int, kept);
    QFETCH(const int, record);
    static constexpr int BLOCK_BYTES = 21;
    const QByteArray file = goodFile();
    Streaming streaming(file.left(file.size() - BLOCK_BYTES + kept));
    streaming.stream();
    QCOMPARE(streaming.outcome.result, -3);
    QCOMPARE(streaming.outcome.message, CANNOT_READ + streaming.path);
    QCOMPARE(streaming.outcome.record, record);
    QCOMPARE(streaming.channel.log(), QStringList{firstRecord()}.mid(0, qMax(record - 1, 0)));
}

void TestBlockStream::endsWithTheFirstFailedRecord()
{
    Streaming streaming(testImage({blockOf(FirmwareBlock, shortRecords(4))}));
    streaming.channel.on("system update 4 2 AA").fail();
    streaming.stream();
    QCOMPARE(streaming.outcome.result, -1);
    QCOMPARE(streaming.outcome.message, QStringLiteral("Update not successful! Error code: 1"));
    QCOMPARE(streaming.outcome.record, 2);
    QCOMPARE(streaming.channel.log(), (QStringList{R"(set_value "system update 4 1 AA")",
                                                   R"(set_value "system update 4 2 AA")"}));
}

void TestBlockStream::failsWithTheControllersAnswer()
{
    Streaming streaming(goodFile());
    streaming.channel.onPoll().fail();
    streaming.stream();
    QCOMPARE(streaming.outcome.result, -1);
    QCOMPARE(streaming.outcome.message, QStringLiteral("Update not successful! Error code: 2"));
    QCOMPARE(streaming.outcome.record, 2);
    QCOMPARE(streaming.channel.log().size(), 4);
}

void TestBlockStream::doesNotTranslateItsMessages()
{
    const MarkingTranslator translator("ZanUpdateModule2GSettingsdlg");
    Streaming refused(goodFile());
    refused.channel.onPoll().fail();
    refused.stream();
    QCOMPARE(refused.outcome.message, QStringLiteral("Update not successful! Error code: 2"));
    Streaming foreign(fileWith([](ControllerImageBlock& block) { block.magic = 41561; }));
    foreign.stream();
    QCOMPARE(foreign.outcome.message, NO_UPDATE_FILE + foreign.path);
}

// ---- Where it stands

void TestBlockStream::ticksOnceInAThousandRecords_data()
{
    addRowsOfTicks();
}

void TestBlockStream::ticksOnceInAThousandRecords()
{
    QFETCH(const int, records);
    QFETCH(const QVector<int>, ticks);
    Streaming streaming(testImage({blockOf(FirmwareBlock, shortRecords(records))}));
    streaming.stream();
    // Each before anything of its record went out.
    QStringList expected{QStringLiteral("0/%1 after 0 calls").arg(records)};
    for (const int record : ticks)
        expected += QStringLiteral("%1/%2 after %3 calls").arg(record).arg(records).arg(record - 1);
    QCOMPARE(streaming.ticks, expected);
}

void TestBlockStream::nameOfABlock()
{
    const QString host = QStringLiteral("zan %1");
    QCOMPARE(blockTitle(ZAN_FIRMWARE_UPDATE, host), QStringLiteral("Updating firmware (zan %1)"));
    QCOMPARE(blockTitle(ZAN_SYSTEM_UPDATE, host), QStringLiteral("Updating system (zan %1)"));
    QCOMPARE(blockTitle(ZAN_UPDATE_NOTDEFINED, host), QString());
}

ZAN_TEST_MAIN(TestBlockStream)

#include "tst_blockstream.moc"
