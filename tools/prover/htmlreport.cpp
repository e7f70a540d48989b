#include "htmlreport.h"

#include "releasegraph.h"

namespace {

// Nothing is loaded and nothing runs, whatever stands in the texts.
constexpr char pageStart[] =
    R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'unsafe-inline'">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>Proof of a delivery</title>
<style>
body { font: 15px/1.45 sans-serif; color: #1c2430; background: #fff; margin: 24px auto;
  max-width: 1300px; padding: 0 16px; }
h1 { font-size: 26px; margin: 0 0 12px; }
h2 { font-size: 20px; margin: 36px 0 8px; }
.verdict { padding: 12px 16px; border-left: 6px solid; font-weight: bold; }
.verdict.good { background: #e8f5ec; border-color: #1d7a3d; }
.verdict.dead { background: #fdebea; border-color: #c3241b; }
svg { width: 100%; height: auto; margin: 12px 0; }
svg text { font-family: sans-serif; fill: #1c2430; }
svg .heading { font-size: 14px; font-weight: bold; }
svg .first { font-size: 12px; }
svg .second { font-size: 11px; fill: #4a5567; }
.node rect { fill: #f4f6f9; stroke: #8a94a6; }
.node.release rect { fill: #e9f0fb; stroke: #2f5fa8; }
.node.good rect { fill: #e8f5ec; stroke: #1d7a3d; }
.node.dead rect { fill: #fdebea; stroke: #c3241b; stroke-width: 2; }
.node.unsure rect { fill: #fff6e0; stroke: #a86a00; }
.edge { fill: none; stroke: #8a94a6; stroke-width: 1.3; }
.edge.good { stroke: #1d7a3d; }
.edge.dead { stroke: #c3241b; stroke-width: 1.8; }
.edge.unsure { stroke: #a86a00; stroke-dasharray: 6 3; }
.edge.idle { stroke-dasharray: 2 4; }
.table { overflow-x: auto; }
table { border-collapse: collapse; width: 100%; }
th, td { text-align: left; padding: 5px 10px; border-bottom: 1px solid #d5dae2;
  vertical-align: top; overflow-wrap: break-word; }
th { border-bottom-width: 2px; }
tr.dead td { background: #fdebea; }
tr.dead td:last-child { color: #a3150d; font-weight: bold; }
tr.unsure td { background: #fff6e0; }
.findings { table-layout: fixed; }
.findings th:nth-child(1) { width: 5em; }
.findings th:nth-child(2) { width: 13em; }
.findings th:nth-child(3) { width: 8em; }
.findings th:nth-child(5) { width: 30%; }
.findings th:nth-child(6) { width: 9em; }
.weight { font-weight: bold; }
.error .weight { color: #a3150d; }
.warning .weight { color: #7d4f00; }
code { font-family: monospace; }
</style>
</head>
<body>
<h1>Proof of a delivery</h1>
)";

QString cell(const QString& text)
{
    return QStringLiteral("<td>%1</td>").arg(escaped(text));
}

QString row(const QString& style, const QStringList& texts)
{
    QString cells;
    for (const QString& text : texts)
        cells += cell(text);
    return QStringLiteral("<tr class=\"%1\">%2</tr>\n").arg(style, cells);
}

QString table(const char* style, const QStringList& titles, const QString& rows)
{
    return QStringLiteral("<div class=\"table\"><table class=\"%1\">\n<tr><th>%2</th></tr>\n%3"
                          "</table></div>\n")
        .arg(QLatin1String(style), titles.join(QStringLiteral("</th><th>")), rows);
}

QString wayText(const Journey& journey)
{
    QStringList texts;
    for (const ReportedVersions& hop : journey.hops)
        texts += hopText(hop);
    return texts.join(QStringLiteral(" \u2192 "));
}

QString rangeRow(const FamilyProof& family, const JourneyRange& range)
{
    const Journey& journey = range.journey;
    const QString style = isDeadEnd(journey.ending) ? QStringLiteral("dead")
                          : journey.isOrderly       ? QStringLiteral("good")
                                                    : QStringLiteral("unsure");
    const QString order =
        journey.isOrderly ? QString() : QStringLiteral(", depends on the order of equal releases");
    return row(style,
               {ptText(family, range), ctText(family, range), QString::number(journey.runs()),
                wayText(journey), endingText(journey.ending) + order});
}

QString familySection(const FamilyProof& family)
{
    const QString about =
        family.isServed
            ? QStringLiteral("The newest release is %1 (%2).").arg(family.goal, family.goalFile)
            : QStringLiteral("No image is for this family.");
    QString rows;
    for (const JourneyRange& range : family.table)
        rows += rangeRow(family, range);
    return QStringLiteral("<h2>%1</h2>\n<p>%2</p>\n%3%4")
        .arg(escaped(family.family.name), escaped(about), releaseGraph(family),
             table("ways", {"Pt", "Ct", "Runs", "Way", "Ends"}, rows));
}

QString findingRow(const Finding& finding)
{
    QString example;
    if (finding.example) {
        const ScenarioController& master = finding.example->controllers.constFirst();
        example = QStringLiteral("%1, Ct %2").arg(master.pt.section(' ', 0, 0), master.ct);
    }
    const QString weight = weightText(finding.weight);
    return QStringLiteral("<tr class=\"%1\"><td class=\"weight\">%1</td><td><code>%2</code></td>%3"
                          "%4%5%6</tr>\n")
        .arg(weight, escaped(finding.ruleName()), cell(finding.family), cell(finding.text),
             cell(finding.concerned), cell(example));
}

QString findingsSection(const Proof& proof)
{
    if (proof.findings.isEmpty())
        return QString();
    QString rows;
    for (const Finding& finding : proof.findings)
        rows += findingRow(finding);
    return QStringLiteral("<h2>What was found</h2>\n") +
           table("findings",
                 {"Weight", "Rule", "Family", "What happens", "Controllers", "For example"}, rows);
}

} // namespace

QByteArray proofHtml(const Proof& proof)
{
    QString page = QString::fromLatin1(pageStart);
    const bool holds = proof.holds();
    const QString who = proof.scope.left(1).toUpper() + proof.scope.mid(1);
    page +=
        QStringLiteral("<p class=\"verdict %1\">%2</p>\n")
            .arg(holds ? "good" : "dead",
                 escaped(holds ? QStringLiteral("Proven: %1 comes to the newest release of its "
                                                "family.")
                                     .arg(proof.scope)
                               : QStringLiteral("Not proven. %1 was looked at, and not all come "
                                                "to the newest release of their family.")
                                     .arg(who)));
    page += QStringLiteral("<p>Images: %1</p>\n")
                .arg(escaped(proof.files.isEmpty() ? QStringLiteral("none")
                                                   : proof.files.join(QStringLiteral(", "))));
    for (const FamilyProof& family : proof.families)
        page += familySection(family);
    page += findingsSection(proof);
    return (page + QStringLiteral("</body>\n</html>\n")).toUtf8();
}
