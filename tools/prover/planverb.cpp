#include "plan.h"
#include "proververbs.h"
#include "versiontext.h"

#include <scenario.h>

namespace {

constexpr int highestModel = 9999;

/// The system that the options tell; on failure @p exit is how the verb ends.
std::optional<Scenario> systemOf(const VerbRun& run, QString* error, VerbExit* exit)
{
    *exit = VerbWrongUsage;
    const bool isDescribed = run.isSet("pt") || run.isSet("ct") || run.isSet("model");
    if (run.isSet("system")) {
        if (isDescribed || run.isSet("appendix")) {
            *error = QStringLiteral("--system tells all of the system; leave out --pt, --ct, "
                                    "--model and --appendix");
            return std::nullopt;
        }
        const std::optional<ScenarioText> text = ScenarioReader::load(run.value("system"), error);
        *exit = text ? VerbRefused : VerbFailed;
        return text ? ScenarioReader::parse(text->json, text->fileName, error) : std::nullopt;
    }
    const std::optional<VersionInfo> pt = versionOf(run.value("pt"), PtParts);
    const std::optional<VersionInfo> ct = versionOf(run.value("ct"), CtParts);
    bool isNumber = false;
    const int model = run.value("model").toInt(&isNumber);
    if (!pt)
        *error = QStringLiteral("--pt must be three numbers such as 3.1.0, or --system be given");
    else if (!ct)
        *error = QStringLiteral("--ct must be two numbers such as 1.2, or --system be given");
    else if (!isNumber || model < 0 || model > highestModel)
        *error = QStringLiteral("--model must be a number from 0 to %1, or --system be given")
                     .arg(highestModel);
    else if (run.value("appendix").contains(QLatin1Char(' ')))
        *error = QStringLiteral("--appendix must be one word such as -beta.3");
    else
        return singleController(pt->toString() + run.value("appendix"), ct->toString(), model);
    return std::nullopt;
}

VerbExit plan(VerbRun& run)
{
    QString error;
    VerbExit exit = VerbFailed;
    const std::optional<Scenario> system = systemOf(run, &error, &exit);
    if (!system)
        return run.fail(exit, error);
    const auto delivery = DeliveredFiles::read(run.arguments().constFirst(), &error);
    if (!delivery)
        return run.fail(VerbFailed, error);
    const UpdatePlan updates = planUpdates(*delivery, *system);
    if (run.json())
        run.printJson(planJson(updates));
    else
        run.print(planText(updates));
    return VerbDone;
}

} // namespace

Verb planVerb()
{
    Verb verb;
    verb.name = QStringLiteral("plan");
    verb.arguments = QStringLiteral("DIR");
    verb.summary = QStringLiteral("Shows the update table that a system gets with a folder of "
                                  "update files");
    verb.description = QStringLiteral(
        "The rows are those of the plug-in's own inventory. Behind them stand the blocks that a\n"
        "run sends, how many commands that takes, and how long by the plug-in's estimate. Files\n"
        "that give no row follow, with the reason.");
    verb.options = {
        {"system", "The system as a scenario of the simulator, which also has slaves and cameras.",
         "SCENARIO"},
        {"pt", "Or one controller: the version of its tracking software ...", "3.1.0"},
        {"ct", "... and of its firmware, ...", "1.2"},
        {"model", "... its model number (0, 2 and 20: ZAN, 21: BRIARSCOPE3), ...", "N"},
        {"appendix", "... and what it reports behind Pt if that is a pre-release.", "-beta.3"},
    };
    verb.fewestArguments = verb.mostArguments = 1;
    verb.run = plan;
    return verb;
}
