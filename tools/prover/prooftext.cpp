#include "proof.h"

#include "texttable.h"

#include <QJsonArray>

namespace {

QString wayText(const Journey& journey)
{
    QStringList texts;
    for (const ReportedVersions& hop : journey.hops)
        texts += hopText(hop);
    return texts.join(QStringLiteral(" -> "));
}

QString endText(const Journey& journey)
{
    const QString order =
        journey.isOrderly ? QString() : QStringLiteral(", depends on the order of equal releases");
    return endingText(journey.ending) + order;
}

QString familyText(const FamilyProof& family)
{
    QString text =
        family.isServed
            ? QStringLiteral("%1: the newest release is %2 (%3)\n")
                  .arg(family.family.name, family.goal, family.goalFile)
            : QStringLiteral("%1: no image is for this family\n").arg(family.family.name);
    QVector<QStringList> table{{"Pt", "Ct", "Runs", "Way", "Ends"}};
    for (const JourneyRange& range : family.table) {
        table +=
            {ptText(family, range), ctText(family, range), QString::number(range.journey.runs()),
             wayText(range.journey), endText(range.journey)};
    }
    return text + alignedTable(table) + QLatin1Char('\n');
}

QString findingText(const Finding& finding)
{
    QString text =
        QStringLiteral("%1: %2%3: %4\n")
            .arg(weightText(finding.weight), finding.ruleName(),
                 finding.family.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(finding.family),
                 finding.text);
    if (!finding.concerned.isEmpty())
        text += QStringLiteral("    %1\n").arg(finding.concerned);
    return text;
}

QJsonObject rangeJson(const FamilyProof& family, const JourneyRange& range)
{
    QJsonArray way;
    for (const ReportedVersions& hop : range.journey.hops)
        way += hopText(hop);
    return {{"pt", ptText(family, range)},
            {"ct", ctText(family, range)},
            {"runs", range.journey.runs()},
            {"way", way},
            {"ends", endingText(range.journey.ending)},
            {"deadEnd", isDeadEnd(range.journey.ending)},
            {"dependsOnOrder", !range.journey.isOrderly}};
}

QJsonObject familyJson(const FamilyProof& family)
{
    QJsonArray table;
    for (const JourneyRange& range : family.table)
        table += rangeJson(family, range);
    return {{"family", family.family.name},
            {"served", family.isServed},
            {"newest", family.goal},
            {"newestFile", family.goalFile},
            {"orders", family.orders},
            {"classes", family.pt.size() * family.ct.size()},
            {"table", table}};
}

QJsonObject findingJson(const Finding& finding)
{
    QJsonObject object{{"rule", finding.ruleName()}, {"weight", weightText(finding.weight)},
                       {"family", finding.family},   {"text", finding.text},
                       {"classes", finding.classes}, {"concerned", finding.concerned}};
    if (finding.example) {
        const ScenarioController& master = finding.example->controllers.constFirst();
        object.insert("example", QJsonObject{{"pt", master.pt.section(' ', 0, 0)},
                                             {"ct", master.ct},
                                             {"model", master.model}});
    }
    return object;
}

} // namespace

QString endingText(Ending ending)
{
    switch (ending) {
    case Ending::Newest:
        return QStringLiteral("newest");
    case Ending::NothingToTick:
        return QStringLiteral("asked for ever, nothing to tick");
    case Ending::OfferedForEver:
        return QStringLiteral("offered for ever");
    case Ending::LeftBehind:
        return QStringLiteral("left behind, nothing said");
    case Ending::RunFails:
        return QStringLiteral("run fails");
    case Ending::NotServed:
        break;
    }
    return QStringLiteral("not served by the plug-in");
}

QString weightText(Weight weight)
{
    switch (weight) {
    case Weight::Error:
        return QStringLiteral("error");
    case Weight::Warning:
        return QStringLiteral("warning");
    case Weight::Note:
        break;
    }
    return QStringLiteral("note");
}

QString ptText(const FamilyProof& family, const JourneyRange& range)
{
    return rangeText(family.pt.at(range.firstPt), family.pt.at(range.lastPt));
}

QString ctText(const FamilyProof& family, const JourneyRange& range)
{
    return rangeText(family.ct.at(range.firstCt), family.ct.at(range.lastCt));
}

QString hopText(const ReportedVersions& versions)
{
    QStringList texts;
    if (!versions.pt.isEmpty())
        texts += versions.pt;
    if (!versions.ct.isEmpty())
        texts += QStringLiteral("Ct ") + versions.ct;
    return texts.isEmpty() ? QStringLiteral("nothing new") : texts.join(QStringLiteral(", "));
}

QString proofText(const Proof& proof)
{
    QString text;
    for (const FamilyProof& family : proof.families)
        text += familyText(family);
    int errors = 0;
    for (const Finding& finding : proof.findings) {
        text += findingText(finding);
        errors += finding.weight == Weight::Error ? 1 : 0;
    }
    text += proof.findings.isEmpty() ? QString() : QStringLiteral("\n");
    return text + (proof.holds()
                       ? QStringLiteral("Proven: %1 comes to the newest release of its family.\n")
                             .arg(proof.scope)
                       : QStringLiteral("Not proven: %1.\n")
                             .arg(errors == 1 ? QStringLiteral("1 error")
                                              : QStringLiteral("%1 errors").arg(errors)));
}

QJsonObject proofJson(const Proof& proof)
{
    QJsonArray families;
    for (const FamilyProof& family : proof.families)
        families += familyJson(family);
    QJsonArray findings;
    for (const Finding& finding : proof.findings)
        findings += findingJson(finding);
    return {{"proven", proof.holds()},
            {"scope", proof.scope},
            {"files", QJsonArray::fromStringList(proof.files)},
            {"families", families},
            {"findings", findings}};
}
