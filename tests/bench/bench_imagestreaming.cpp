// What the streaming of an image block costs, as ratios to a floor and to other encoders. One run
// of the program measures one matter:
//
//   bench_imagestreaming times                 all ratios of time, heap and memory
//   bench_imagestreaming block|floor|encoder|heads N
//                                              the bare work, N times, to count instructions of

#include "ZanData.h"
#include "benchdata.h"
#include "benchdialog.h"
#include "heapcounter.h"
#include "imagewriter.h"
#include "privateaccess.h"
#include "sixbitencoding.h"
#include "stopwatch.h"

#include <QApplication>
#include <QFile>
#include <QTemporaryDir>

#include <openssl/evp.h>

ZAN_EXPOSE(streamBlock, &ZanUpdateModule2GSettingsdlg::do_update_img_data);
ZAN_EXPOSE(blocksOfRun, &ZanUpdateModule2GSettingsdlg::nBlocksMustUpdate);

static constexpr int RECORDS = 80000;
static constexpr int RECORD_BYTES = 120;
static constexpr int TEXT_CHARACTERS = 160;

static QString writeImage(const QTemporaryDir& dir, int records)
{
    ControllerImageBlock block;
    block.records = splitIntoRecords(randomBytes(records * RECORD_BYTES));
    ControllerImage image;
    image.blocks = {block};
    QFile file(dir.filePath(QStringLiteral("image%1").arg(records)));
    if (!file.open(QIODevice::WriteOnly))
        qFatal("cannot write %s", qPrintable(file.fileName()));
    file.write(controllerImageBytes(image));
    return file.fileName();
}

/// The dialog as a streamer of blocks.
class Streamer
{
public:
    Streamer() { blocksOfRun(m_bench.dialog()) = 1; }

    void stream(const QString& imagePath)
    {
        ZanData image(imagePath);
        if (streamBlock(m_bench.dialog(), &image, 0, 0) != 0)
            qFatal("the block was not streamed");
    }

private:
    BenchDialog m_bench;
};

/// The floor: the same bytes in large chunks, and one ready text expanded for each record.
static void readAndFormat(const QString& imagePath, int records)
{
    static char chunk[1 << 16];
    FILE* stream = std::fopen(imagePath.toLatin1().constData(), "rb");
    while (std::fread(chunk, 1, sizeof chunk, stream) > 0) {
    }
    std::fclose(stream);

    FormattingChannel channel;
    IOManager* iom = &channel;
    const QByteArray text(TEXT_CHARACTERS, 'x');
    for (int record = 1; record <= records; ++record)
        iom->set_value("system %s %d %d %s", "update", records, record, text.constData());
}

static void encodeSixBitRecords(const QByteArray& records)
{
    char text[TEXT_CHARACTERS + 1];
    const auto* data = reinterpret_cast<const unsigned char*>(records.constData());
    for (int offset = 0; offset < records.size(); offset += RECORD_BYTES) {
        encodeSixBit(text, data + offset, RECORD_BYTES);
        asm volatile("" : : "r"(text) : "memory");
    }
}

static void encodeWithOpenSsl(const QByteArray& records)
{
    unsigned char text[TEXT_CHARACTERS + 1];
    const auto* data = reinterpret_cast<const unsigned char*>(records.constData());
    for (int offset = 0; offset < records.size(); offset += RECORD_BYTES) {
        EVP_EncodeBlock(text, data + offset, RECORD_BYTES);
        asm volatile("" : : "r"(text) : "memory");
    }
}

static void encodeWithQt(const QByteArray& records)
{
    for (int offset = 0; offset < records.size(); offset += RECORD_BYTES) {
        const QByteArray text =
            QByteArray::fromRawData(records.constData() + offset, RECORD_BYTES).toBase64();
        asm volatile("" : : "r"(text.constData()) : "memory");
    }
}

static void measureBlock(Streamer& streamer, const QString& image)
{
    const double block = shortestSeconds(15, [&] { streamer.stream(image); });
    const double floor = shortestSeconds(15, [&] { readAndFormat(image, RECORDS); });
    printRatio("block of 80000 records / floor, time", block / floor, "goal: at most 1.5");
}

static void measureEncoder()
{
    const QByteArray random = randomBytes(RECORDS * RECORD_BYTES);
    const QByteArray zeros(random.size(), '\0');
    const double own = shortestSeconds(15, [&] { encodeSixBitRecords(random); });
    const double ownZeros = shortestSeconds(15, [&] { encodeSixBitRecords(zeros); });
    const double openSsl = shortestSeconds(15, [&] { encodeWithOpenSsl(random); });
    const double qt = shortestSeconds(15, [&] { encodeWithQt(random); });
    printRatio("6-bit encoder / EVP_EncodeBlock, time", own / openSsl, "goal: at most 0.60");
    printRatio("6-bit encoder / QByteArray::toBase64, time", own / qt, "goal: at most 0.25");
    printRatio("6-bit encoder, all-zero / random records, time", ownZeros / own,
               "goal: 0.90 to 1.10");
}

static HeapCount heapUseToStream(Streamer& streamer, const QString& image)
{
    return heapUseOf([&] { streamer.stream(image); });
}

// Between two ticks of the progress, 1000 records apart, nothing but the records costs anything.
static void measureHeap(Streamer& streamer, const QTemporaryDir& dir, const QString& image)
{
    const HeapCount few = heapUseToStream(streamer, writeImage(dir, 100));
    const HeapCount many = heapUseToStream(streamer, writeImage(dir, 900));
    printRatio("heap allocations for 800 more records without a tick",
               static_cast<double>(many.allocations - few.allocations), "goal: 0");
    const HeapCount large = heapUseToStream(streamer, image);
    printRatio("peak heap, 80000 records / 900 records",
               static_cast<double>(large.peakBytes) / static_cast<double>(many.peakBytes),
               "goal: 1.0");
}

static QString writeHeadWithHole(const QTemporaryDir& dir, qint64 size)
{
    const QString path = dir.filePath(QStringLiteral("hole%1").arg(size));
    if (!QFile::copy(writeImage(dir, 1), path) || !QFile::resize(path, size))
        qFatal("cannot write %s", qPrintable(path));
    return path;
}

static void readHeads(const QString& path, int times)
{
    for (int i = 0; i < times; ++i) {
        if (!ZanData(path).isValid())
            qFatal("not an image: %s", qPrintable(path));
    }
}

static void measureHeads(const QTemporaryDir& dir)
{
    const QString small = writeHeadWithHole(dir, 1 << 20);
    const QString large = writeHeadWithHole(dir, qint64(200) << 20);
    const double smallSeconds = shortestSeconds(25, [&] { readHeads(small, 1000); });
    const double largeSeconds = shortestSeconds(25, [&] { readHeads(large, 1000); });
    printRatio("head of an image of 200 MiB / of 1 MiB, time", largeSeconds / smallSeconds,
               "goal: 1.0");
}

static void measureTimes(const QTemporaryDir& dir)
{
    Streamer streamer;
    const QString image = writeImage(dir, RECORDS);
    measureBlock(streamer, image);
    measureEncoder();
    measureHeap(streamer, dir, image);
    measureHeads(dir);
}

static void repeatBareWork(const QString& matter, int times, const QTemporaryDir& dir)
{
    static constexpr int records = 20000;
    Streamer streamer;
    const QString image = writeImage(dir, records);
    const QByteArray data = randomBytes(records * RECORD_BYTES);
    for (int i = 0; i < times; ++i) {
        if (matter == QLatin1String("block"))
            streamer.stream(image);
        else if (matter == QLatin1String("floor"))
            readAndFormat(image, records);
        else if (matter == QLatin1String("encoder"))
            encodeSixBitRecords(data);
        else
            qFatal("no such matter: %s", qPrintable(matter));
    }
}

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QTemporaryDir dir;
    qputenv("HOME", dir.path().toLocal8Bit());
    QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 3)
        repeatBareWork(arguments.at(1), arguments.at(2).toInt(), dir);
    else
        measureTimes(dir);
    return 0;
}
