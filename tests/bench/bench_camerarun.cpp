// What the sending of a camera's firmware costs, record by record, through a channel that only
// expands its texts: how it stands to the pace that the estimate of the remaining time assumes,
// what serving events takes of it, and what it takes from the heap.

#include "benchdata.h"
#include "benchdialog.h"
#include "heapcounter.h"
#include "imagewriter.h"
#include "privateaccess.h"
#include "stopwatch.h"
#include "testenvironment.h"

#include <QApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>

using UpdateDialog = ZanUpdateModule2GSettingsdlg;
ZAN_EXPOSE(sendFile, &UpdateDialog::readCamFileInfo);
ZAN_EXPOSE(startTimer, &UpdateDialog::startProgressTimer);
ZAN_EXPOSE(setStep, &UpdateDialog::setProgressTimerSteps);
ZAN_EXPOSE(stopTimer, &UpdateDialog::stopProgressTimer);
ZAN_EXPOSE(progressTimer, &UpdateDialog::m_progressTimer);

static constexpr int RECORDS = 40000;
static constexpr int RECORD_BYTES = 120;
static constexpr double LAST_RECORD_SECONDS = 27.5;
static constexpr double ASSUMED_SECONDS = 0.00027;
static constexpr int ROUNDS = 15;

static QString writeFile(const QTemporaryDir& dir, int records)
{
    CameraImage image;
    image.records = splitIntoRecords(randomBytes(records * RECORD_BYTES));
    CameraUpdateFile update;
    update.images = {image};
    QFile file(dir.filePath(QStringLiteral("camera%1").arg(records)));
    if (!file.open(QIODevice::WriteOnly))
        qFatal("cannot write %s", qPrintable(file.fileName()));
    file.write(cameraUpdateBytes(update));
    return file.fileName();
}

static void send(UpdateDialog& dialog, const QString& path)
{
    if (sendFile(dialog, true, 0, path, LAST_RECORD_SECONDS) != 0)
        qFatal("the file was not sent");
}

static void readOnly(UpdateDialog& dialog, const QString& path)
{
    if (sendFile(dialog, false, 0, path, LAST_RECORD_SECONDS) != 0)
        qFatal("the file was not read");
}

// The events of a run without the run.
static void serveEvents(UpdateDialog& dialog, int records)
{
    startTimer(dialog, records, ASSUMED_SECONDS, LAST_RECORD_SECONDS);
    for (int record = 1; record <= records; ++record) {
        setStep(dialog, record);
        QCoreApplication::processEvents();
    }
    stopTimer(dialog);
}

static void measureTime(UpdateDialog& dialog, const QTemporaryDir& dir)
{
    const QString path = writeFile(dir, RECORDS);
    const double sending = shortestSeconds<ProcessorClock>(ROUNDS, [&] { send(dialog, path); });
    const double reading = shortestSeconds<ProcessorClock>(ROUNDS, [&] { readOnly(dialog, path); });
    const double events =
        shortestSeconds<ProcessorClock>(ROUNDS, [&] { serveEvents(dialog, RECORDS); });
    printRatio("records per second / pace that the estimate assumes",
               RECORDS * ASSUMED_SECONDS / sending, "");
    printRatio("share of processEvents() in the time of a record", events / sending, "");
    printRatio("share of reading and encoding", (reading - events) / sending, "");
    printRatio("share of the command and its reply", (sending - reading) / sending, "");
}

// With a tick for every record, since a short run has none of its own.
static void measureHeap(UpdateDialog& dialog, const QTemporaryDir& dir)
{
    static constexpr int fewRecords = RECORDS / 20;
    static constexpr double moreRecords = RECORDS - fewRecords;
    const QString few = writeFile(dir, fewRecords);
    const QString many = writeFile(dir, RECORDS);
    progressTimer(dialog)->setInterval(0);
    const HeapCount fewUse = heapUseOf([&] { send(dialog, few); });
    const HeapCount manyUse = heapUseOf([&] { send(dialog, many); });
    printRatio("heap allocations per record and tick",
               static_cast<double>(manyUse.allocations - fewUse.allocations) / moreRecords, "");
    printRatio("bytes left on the heap per record",
               static_cast<double>(manyUse.liveBytes - fewUse.liveBytes) / moreRecords, "goal: 0");
    printRatio("peak heap, 40000 records / 2000 records",
               static_cast<double>(manyUse.peakBytes) / static_cast<double>(fewUse.peakBytes),
               "goal: 1.0");
}

int main(int argc, char** argv)
{
    const TestEnvironment environment;
    const QTemporaryDir dir;
    QApplication application(argc, argv);
    BenchDialog bench;
    // As in a run, where ticks of the progress timer are drawn.
    bench.dialog().show();
    measureTime(bench.dialog(), dir);
    measureHeap(bench.dialog(), dir);
    return 0;
}
