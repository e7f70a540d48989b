#include "imagelisting.h"
#include "imagetoolverbs.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace {

VerbExit showFile(VerbRun& run, const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return run.fail(VerbFailed, fileName + ": " + file.errorString());
    ScanEvents events;
    events.progress = [&](qint64 done, qint64 total) {
        run.showProgress(fileName, done, total);
    };
    const ScannedFile scanned = scanUpdateFile(file, events);
    if (!scanned.error.isEmpty())
        return run.fail(VerbFailed, fileName + ": " + scanned.error);

    const UpdateFileListing listing = listUpdateFile(scanned);
    if (run.json())
        run.printJson(listingJson(scanned, QFileInfo(fileName).absoluteFilePath()));
    else
        run.print(fileName + '\n' + listingText(listing));
    for (RuleFinding finding : listing.findings) {
        finding.file = fileName;
        run.note(findingLine(finding));
    }
    return listing.findings.isEmpty() ? VerbDone : VerbRefused;
}

VerbExit show(VerbRun& run)
{
    VerbExit worst = VerbDone;
    for (const QString& fileName : run.arguments())
        worst = std::max(worst, showFile(run, fileName));
    return worst;
}

} // namespace

Verb showVerb()
{
    Verb verb;
    verb.name = "show";
    verb.arguments = "FILE...";
    verb.summary = "Lists what is in update files, and reads all of them";
    verb.fewestArguments = 1;
    verb.mostArguments = -1;
    verb.run = show;
    return verb;
}
