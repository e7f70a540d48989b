#include "dialogfixture.h"
#include "exposeddialog.h"
#include "shownprogress.h"

#include <ZanData.h>
#include <blockcases.h>
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

class ImageStreaming : public QObject
{
    Q_OBJECT

private slots:
    void encodesRecords();
    void sendsTheWorkedExample();
    void sendsTheBlockThatIsAskedFor();
    void sendsEightyThousandRecords();
    void sendsNothingWithoutRecords_data();
    void sendsNothingWithoutRecords();

    void refusesBadFiles_data();
    void refusesBadFiles();
    void closesTheFileBeforeItTells();
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

void ImageStreaming::encodesRecords()
{
    DialogFixture fixture;
    const unsigned char data[] = {0x01, 0x02, 0x03};
    char text[] = "........";
    QCOMPARE(_dat2ascii(fixture.dialog, text, data, 3), 0);
    QCOMPARE(QByteArray(text, sizeof text), QByteArray("BIwA\0...", 9));
    QCOMPARE(int(_get_b6word(fixture.dialog, data, 3, 12)), 48);
    QCOMPARE(int(_get_b6word(fixture.dialog, data, 2, 12)), 0);
}

// ---- What goes out

void ImageStreaming::sendsTheWorkedExample()
{
    Streaming streaming(workedExample());
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

void ImageStreaming::sendsTheBlockThatIsAskedFor()
{
    Streaming streaming(testImage({blockOf(FirmwareBlock, {shortRecord(1)}),
                                   blockOf(FirmwareBlock, {shortRecord(2)}),
                                   blockOf(FirmwareBlock, {shortRecord(3)})}));
    QCOMPARE(streaming.stream(1), 0);
    QCOMPARE(streaming.channel.logOf("set_value"),
             QStringList{R"(set_value "system update 1 1 CA")"});
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
    addRowsWithoutRecords();
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
    addRowsOfBadFiles();
}

void ImageStreaming::refusesBadFiles()
{
    QFETCH(const QByteArray, file);
    QFETCH(const int, result);
    Streaming streaming(file);
    QCOMPARE(streaming.stream(), result);
    QCOMPARE(streaming.message(), (result == -3 ? CANNOT_READ : NO_UPDATE_FILE) + streaming.path);
    QTEST(streaming.bar()->value(), "percent");
    QTEST(streaming.channel.log(), "log");
    QCOMPARE(streaming.filesLeftOpen, 0);
}

void ImageStreaming::closesTheFileBeforeItTells()
{
    Streaming streaming(fileWith([](ControllerImageBlock& block) { block.magic = 41561; }));
    const int openBefore = openFileCount();
    int openWhenTold = -1;
    connect(streaming.bar(), &QProgressBar::valueChanged, &streaming.dialog,
            [&] { openWhenTold = openFileCount(); });
    QCOMPARE(streaming.stream(), -4);
    QCOMPARE(openWhenTold, openBefore);
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
    addRowsOfTicks();
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

    QTest::newRow("halfway through the only block") << 1 << 0 << 2 << QVector<int>{50, 98};
    QTest::newRow("the second of two blocks begins where the first one ended")
        << 2 << 1 << 4 << QVector<int>{62, 98};
    QTest::newRow("less than one is shown as 1") << 200 << 0 << 2 << QVector<int>{1};
    QTest::newRow("a block beyond the count of the run") << 1 << 1 << 2 << QVector<int>{98};
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
