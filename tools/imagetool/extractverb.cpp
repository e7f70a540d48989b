#include "imagetoolverbs.h"
#include "inputfile.h"
#include "output.h"

#include <failure.h>
#include <imagescan.h>
#include <wholefile.h>

namespace {

constexpr int bufferBytes = 256 * 1024;

/// Writes the data of one block, without the lengths of its records.
class PayloadWriter
{
public:
    PayloadWriter(QFileDevice& device, int block) : m_device(device), m_block(block)
    {
        m_buffer.reserve(bufferBytes + maxRecordBytes);
    }

    void take(int index, const char* data, int size)
    {
        if (index != m_block)
            return;
        m_buffer.append(data, size);
        if (m_buffer.size() >= bufferBytes)
            flush();
    }

    bool flush()
    {
        m_isWritten = m_isWritten && writeAll(m_device, m_buffer);
        m_buffer.resize(0);
        return m_isWritten;
    }

private:
    QFileDevice& m_device;
    const int m_block;
    QByteArray m_buffer;
    bool m_isWritten = true;
};

/// Whether nothing is wrong with the block that was extracted.
bool isSound(const ScannedFile& scanned, int block, QString* error)
{
    if (scanned.contents.value(block).isComplete)
        return true;
    if (scanned.file && block >= scanned.contents.size())
        return fail(QString("there is no block %1, only %2, counted from 0")
                        .arg(block)
                        .arg(scanned.contents.size()),
                    error);
    for (const RuleFinding& finding : scanned.findings) {
        if (!scanned.file || finding.field.contains(QString("[%1].").arg(block)))
            return fail(findingText(finding), error);
    }
    return fail(QStringLiteral("the block is damaged"), error);
}

VerbExit extract(VerbRun& run)
{
    const QString fileName = run.arguments().first();
    bool isNumber = false;
    const int block = run.value("block").toUShort(&isNumber);
    if (!isNumber || !run.isSet("output"))
        return run.fail(VerbWrongUsage,
                        "extract needs --block N and -o OUTPUT. (imagetool extract --help tells "
                        "more)");
    QString error;
    const std::unique_ptr<QFile> file = openInput(run, fileName, &error);
    if (!file)
        return run.fail(VerbFailed, error);

    bool isRefused = false;
    const auto write = [&](QFileDevice& device, QString* reason) {
        PayloadWriter writer(device, block);
        ScanEvents events;
        events.record = [&](int index, const char* data, int size) {
            writer.take(index, data, size);
        };
        events.progress = [&](qint64 done, qint64 total) {
            run.showProgress("extracting " + fileName, done, total);
        };
        const ScannedFile scanned = scanUpdateFile(*file, events);
        if (!scanned.error.isEmpty())
            return fail(fileName + ": " + scanned.error, reason);
        QString damage;
        isRefused = !isSound(scanned, block, &damage);
        if (isRefused)
            return fail(fileName + ": " + damage, reason);
        return writer.flush() || fail(device.errorString(), reason);
    };
    if (writeOutput(run, run.value("output"), {fileName}, write, &error))
        return VerbDone;
    return run.fail(isRefused ? VerbRefused : VerbFailed, error);
}

} // namespace

Verb extractVerb()
{
    Verb verb;
    verb.name = "extract";
    verb.arguments = "FILE";
    verb.summary = "Writes the content of one block or camera image to a file";
    verb.description = "The content is what a description names by \"file\". \"-\" as FILE is the "
                       "standard input.";
    verb.options = {
        {"block", "Which block or camera image, counted from 0 as `show` does.", "N"},
        {{"o", "output"}, "The file to be written; \"-\" is the standard output.", "OUTPUT"}};
    verb.fewestArguments = 1;
    verb.mostArguments = 1;
    verb.run = extract;
    return verb;
}
