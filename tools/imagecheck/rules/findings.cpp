#include "findings.h"

#include <algorithm>

namespace {

constexpr Severity error = Severity::Error;
constexpr Severity warning = Severity::Warning;

const QVector<RuleInfo> rules{
    {Rule::Magic, "magic", error, "the file is no update file, and is left out silently"},
    {Rule::CutShort, "cut-short", error,
     "the file ends within a field; an image is left out, or its update fails"},
    {Rule::NoBlocks, "no-blocks", error, "an image without blocks is left out silently"},
    {Rule::NoModels, "no-models", error, "a camera file without models fits no camera"},
    {Rule::NoImages, "no-images", error,
     "a camera file without images sends nothing and reports success"},
    {Rule::BlockType, "block-type", error,
     "a block that is neither firmware nor system is never sent"},
    {Rule::BlockMagic, "block-magic", error,
     "the block's magic is not that of the model family, and its update fails"},
    {Rule::TextLength, "text-length", error,
     "the text is longer than readers take, and the update fails"},
    {Rule::EmptyBlock, "empty-block", error,
     "a block without records sends nothing and reports success"},
    {Rule::RecordLength, "record-length", error,
     "a record is longer than its block says or than devices take, and the update fails"},
    {Rule::RecordCount, "record-count", error,
     "the records counted do not fill the length in the table: one of them is wrong"},
    {Rule::TooManyRecords, "too-many-records", error,
     "a device takes no more than 1000000 records in a block"},
    {Rule::TooManyBytes, "too-many-bytes", error, "a device takes no more than 64 MiB in a block"},
    {Rule::BlockTwice, "block-twice", error, "two entries of the table lead to one block"},
    {Rule::Overlap, "overlap", error, "two blocks share bytes: one of them is not its own"},
    {Rule::ImageOffset, "image-offset", error,
     "the table of a camera file leads elsewhere than to the image"},
    {Rule::ImageVersion, "image-version", warning,
     "an image of a camera file has other versions than the file, which nobody reads"},
    {Rule::Gap, "gap", warning, "bytes between the blocks belong to none"},
    {Rule::LeftOver, "left-over", warning, "bytes behind the last block belong to none"},
    {Rule::PayloadDamaged, "payload-damaged", error,
     "the payload does not match its checksum, and devices refuse it"},
    {Rule::PayloadVersion, "payload-version", error,
     "the payload brings another version than the file announces, so that it is offered again"},
    {Rule::EmptyRange, "empty-range", error, "no version lies in the range of a block"},
    {Rule::RangeOverlap, "range-overlap", warning,
     "a controller gets two blocks of one kind, as both ranges hold its version"},
    {Rule::RangeAboveNew, "range-above-new", warning,
     "the range of a block holds versions above the new one, which would be set back"},
    {Rule::NewBelowMin, "new-below-min", error, "the new version is below the one to start from"},
    {Rule::ReleaseNotPt, "release-not-pt", warning,
     "release and new Pt differ, so that pre-releases are not known by their release"},
    {Rule::PtWithoutFirmware, "pt-without-firmware", error,
     "new Pt is raised without a firmware block: controllers never become up to date"},
    {Rule::CtWithoutSystem, "ct-without-system", error,
     "new Ct is raised without a system block: controllers never become up to date"},
    {Rule::PtRange, "pt-range", error,
     "no firmware block takes a version from minimum to new Pt, which is then not reached"},
    {Rule::CtRange, "ct-range", error,
     "no system block takes a version from minimum to new Ct, which is then not reached"},
    {Rule::OwnPreReleases, "own-pre-releases", warning,
     "the final release is not sent to controllers that run a pre-release of it"},
    {Rule::Date, "date", error, "a date that is none"},
    {Rule::PreReleaseKind, "pre-release-kind", error,
     "a kind of pre-release that is none: no controller ever reports it, so that the image is "
     "offered for ever"},
    {Rule::NameMark, "name-mark", error,
     "the text behind the first \"v\" of a plain image's name is no pre-release, so that the "
     "image is offered for ever"},
    {Rule::NamePreRelease, "name-pre-release", error,
     "the pre-release in a plain image's name is not that of its content"},
    {Rule::NameLatin1, "name-latin-1", error,
     "the plug-in cannot open a name with letters beyond Latin-1"},
    {Rule::NameAscii, "name-ascii", warning,
     "the plug-in cannot open a name with letters beyond ASCII where names are UTF-8"},
    {Rule::CameraEnding, "camera-ending", error,
     "a camera file without the ending .VX2znimg is left out silently"},
    {Rule::WaitingTimes, "waiting-times", error,
     "the models wait for their last command differently, and all get the time of one"},
    {Rule::ForeignFile, "foreign-file", warning, "the file has no business in a delivery"},
    {Rule::ReleaseTwice, "release-twice", error,
     "two images are of one release, and which of them comes first is open"},
    {Rule::MinUnreachable, "min-unreachable", error,
     "no earlier release reaches the minimum, so that the update is shown and never possible"},
    {Rule::ChainHole, "chain-hole", error,
     "the release before does not lead here: controllers stay behind"},
    {Rule::NothingLeads, "nothing-leads", error,
     "no earlier release leads to the newest one: controllers stay behind"},
    {Rule::CameraFileTwice, "camera-file-twice", warning,
     "two camera files are for one model, and its cameras are updated with both"},
    {Rule::NestedFolder, "nested-folder", error,
     "the search for updates finds another controller_update first, or never looks here"},
};

} // namespace

const QVector<RuleInfo>& allRules()
{
    return rules;
}

const RuleInfo& ruleInfo(Rule rule)
{
    const QVector<RuleInfo>& rules = allRules();
    return *std::find_if(rules.begin(), rules.end(),
                         [rule](const RuleInfo& info) { return info.rule == rule; });
}

std::optional<Rule> ruleNamed(const QString& name)
{
    for (const RuleInfo& info : allRules()) {
        if (name == QLatin1String(info.name))
            return info.rule;
    }
    return std::nullopt;
}

QString severityWord(Severity severity)
{
    return severity == Severity::Error ? QStringLiteral("error") : QStringLiteral("warning");
}

QString findingText(const RuleFinding& finding)
{
    QString text = finding.field;
    if (finding.offset >= 0)
        text += QStringLiteral(" (offset %1)").arg(finding.offset);
    text += QStringLiteral(" is ") + finding.value;
    return text + QStringLiteral(", expected ") + finding.expected;
}

QString findingLine(const RuleFinding& finding)
{
    const RuleInfo& info = ruleInfo(finding.rule);
    return finding.file + QStringLiteral(": ") + severityWord(info.severity) +
           QStringLiteral(": ") + findingText(finding) + QStringLiteral(" [") +
           QLatin1String(info.name) + QLatin1Char(']');
}

QJsonObject findingJson(const RuleFinding& finding)
{
    const RuleInfo& info = ruleInfo(finding.rule);
    QJsonObject object{{"rule", QLatin1String(info.name)},
                       {"severity", severityWord(info.severity)},
                       {"file", finding.file},
                       {"field", finding.field},
                       {"value", finding.value},
                       {"expected", finding.expected},
                       {"text", findingText(finding)},
                       {"why", QLatin1String(info.what)}};
    if (finding.offset >= 0)
        object.insert("offset", finding.offset);
    return object;
}
