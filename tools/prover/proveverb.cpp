#include "counterexample.h"
#include "htmlreport.h"
#include "proof.h"
#include "proververbs.h"

#include <wholefile.h>

namespace {

/// Reads "2.0.0..", "2.0.0..3.0.0" or "..3.0.0"; nullopt for anything else.
std::optional<StartRange> rangeOf(const QString& text, VersionParts parts)
{
    const int dots = text.indexOf(QLatin1String(".."));
    if (dots < 0)
        return std::nullopt;
    const QString low = text.left(dots);
    const QString high = text.mid(dots + 2);
    StartRange range{versionOf(low, parts), versionOf(high, parts)};
    const bool isRead = (low.isEmpty() || range.from) && (high.isEmpty() || range.to) &&
                        (!range.from || !range.to || *range.from <= *range.to);
    return isRead ? std::optional<StartRange>(range) : std::nullopt;
}

bool readRange(const VerbRun& run, const QString& option, VersionParts parts, StartRange* range,
               QString* error)
{
    if (!run.isSet(option))
        return true;
    const std::optional<StartRange> read = rangeOf(run.value(option), parts);
    if (read)
        *range = *read;
    else
        *error =
            QStringLiteral("--%1 must be a range such as %2")
                .arg(option, parts == PtParts ? "2.0.0.. or 2.0.0..3.1.0" : "1.0.. or 1.0..1.4");
    return read.has_value();
}

std::optional<ProofRule> ruleOf(const VerbRun& run)
{
    return proofRules().valueOf(run.value("rule"));
}

bool readOptions(const VerbRun& run, ProofOptions* options, QString* error)
{
    if (!readRange(run, QStringLiteral("from"), PtParts, &options->pt, error) ||
        !readRange(run, QStringLiteral("from-ct"), CtParts, &options->ct, error))
        return false;
    if (run.isSet("rule") && !run.isSet("counterexample")) {
        *error = QStringLiteral("--rule goes with --counterexample");
        return false;
    }
    if (run.isSet("rule") && !ruleOf(run)) {
        *error = QStringLiteral("There is no rule %1. (imagetool prove --help lists them)")
                     .arg(run.value("rule"));
        return false;
    }
    options->family = run.value("family");
    if (!run.isSet("family") || options->family == modelFamilies().at(0).name ||
        options->family == modelFamilies().at(1).name)
        return true;
    *error = QStringLiteral("--family must be %1 or %2")
                 .arg(modelFamilies().at(0).name, modelFamilies().at(1).name);
    return false;
}

/// Writes the counterexample that was asked for.
VerbExit showCounterexample(VerbRun& run, const Proof& proof, const DeliveredFiles& delivery)
{
    const QString path = run.value("counterexample");
    const Finding* finding = proof.counterexample(ruleOf(run));
    if (!finding) {
        run.note(QStringLiteral("%1 is not written: there is nothing to show in it").arg(path));
        return VerbDone;
    }
    QString error;
    if (!writeCounterexample(*finding, delivery, path, &error))
        return run.fail(VerbFailed, error);
    run.note(QStringLiteral("%1 shows the %2 %3: ./run-demo --scenario '%1'")
                 .arg(path, weightText(finding->weight), finding->ruleName()));
    return VerbDone;
}

VerbExit prove(VerbRun& run)
{
    QString error;
    ProofOptions options;
    if (!readOptions(run, &options, &error))
        return run.fail(VerbWrongUsage, error);
    options.progress = [&](int done, int total) {
        run.showProgress(QStringLiteral("classes of versions"), done, total);
    };
    const auto delivery = DeliveredFiles::read(run.arguments().constFirst(), &error);
    if (!delivery)
        return run.fail(VerbFailed, error);
    const std::optional<Proof> proof = proveDelivery(*delivery, options, &error);
    if (!proof)
        return run.fail(VerbFailed, error);
    if (run.json())
        run.printJson(proofJson(*proof));
    else
        run.print(proofText(*proof));
    if (run.isSet("html") && !writeWholeFile(run.value("html"), proofHtml(*proof), &error))
        return run.fail(VerbFailed, error);
    if (run.isSet("counterexample")) {
        const VerbExit exit = showCounterexample(run, *proof, *delivery);
        if (exit != VerbDone)
            return exit;
    }
    return proof->holds() ? VerbDone : VerbRefused;
}

} // namespace

Verb proveVerb()
{
    Verb verb;
    verb.name = QStringLiteral("prove");
    verb.arguments = QStringLiteral("DIR");
    verb.summary = QStringLiteral("Proves that every controller comes to the newest release of a "
                                  "folder, or shows which does not");
    verb.description = QStringLiteral(
        "Looks at every version that a controller may run: both model families, each pre-release,\n"
        "master and slave, in every order of images of one release. The result is a proof, or\n"
        "counterexamples with the reason. Cameras are left out, and slaves that run another\n"
        "version than their master.");
    verb.options = {
        {"from", "Only controllers whose tracking software is in this range.", "2.0.0.."},
        {"from-ct", "Only controllers whose firmware is in this range.", "1.0.."},
        {"html", "Writes the result as a page with the graph of the releases.", "REPORT"},
        {"counterexample",
         "Writes a scenario that shows the first finding, with its update files in a folder beside "
         "it.",
         "SCENARIO"},
        {"rule",
         QStringLiteral("What --counterexample shows: a finding of this rule. The rules are ") +
             proofRules().all().join(QStringLiteral(", ")) + QLatin1Char('.'),
         "RULE"},
        {"family", "Only one model family: ZAN or BRIARSCOPE3.", "NAME"},
    };
    verb.fewestArguments = verb.mostArguments = 1;
    verb.run = prove;
    return verb;
}
