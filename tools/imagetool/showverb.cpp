#include "imagelisting.h"
#include "imagetoolverbs.h"
#include "inputfile.h"

#include <QFileInfo>

namespace {

VerbExit showFile(VerbRun& run, const QString& fileName)
{
    QString error;
    const std::optional<ScannedFile> scanned = scanInput(run, fileName, &error);
    if (!scanned)
        return run.fail(VerbFailed, error);

    const UpdateFileListing listing = listUpdateFile(*scanned);
    if (run.json())
        run.printJson(listingJson(*scanned, QFileInfo(fileName).absoluteFilePath()));
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
    QString error;
    if (!namesStandardInputOnce(run, &error))
        return run.fail(VerbWrongUsage, error);
    if (run.json() && run.arguments().contains("-"))
        return run.fail(VerbWrongUsage, "show --json needs a FILE that the description can name.");
    return run.forEachArgument([&](const QString& fileName) { return showFile(run, fileName); });
}

} // namespace

Verb showVerb()
{
    Verb verb;
    verb.name = "show";
    verb.arguments = "FILE...";
    verb.summary = "Lists what is in update files, and reads all of them";
    verb.description =
        "\"-\" as FILE is the standard input, but not with --json: a description names\n"
        "the file that it takes the content from.";
    verb.fewestArguments = 1;
    verb.mostArguments = -1;
    verb.run = show;
    return verb;
}
