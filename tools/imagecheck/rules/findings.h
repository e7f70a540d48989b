#pragma once

#include <QHash>
#include <QJsonObject>
#include <QString>
#include <QVector>

#include <optional>

/// @file
/// What can be wrong with update files and deliveries, and how it is told. All functions are safe
/// to call from any thread.

/// What an update file or a delivery has to keep to; the table in findings.cpp says more of each.
enum class Rule
{
    Magic,
    CutShort,
    NoBlocks,
    NoModels,
    NoImages,
    BlockType,
    BlockMagic,
    TextLength,
    EmptyBlock,
    RecordLength,
    RecordCount,
    TooManyRecords,
    TooManyBytes,
    BlockTwice,
    Overlap,
    ImageOffset,
    ImageVersion,
    Gap,
    LeftOver,
    PayloadDamaged,
    PayloadVersion,
    EmptyRange,
    RangeOverlap,
    RangeAboveNew,
    NewBelowMin,
    ReleaseNotPt,
    PtWithoutFirmware,
    CtWithoutSystem,
    PtRange,
    CtRange,
    OwnPreReleases,
    Date,
    PreReleaseKind,
    NameMark,
    NamePreRelease,
    NameLatin1,
    NameAscii,
    CameraEnding,
    WaitingTimes,
    ForeignFile,
    ReleaseTwice,
    MinUnreachable,
    ChainHole,
    NothingLeads,
    CameraFileTwice,
    NestedFolder,
};

/// Lets rules be kept in hashes.
inline uint qHash(Rule rule, uint seed = 0)
{
    return ::qHash(static_cast<int>(rule), seed);
}

/// How bad it is for users if a rule is not kept.
enum class Severity
{
    Warning, ///< updates work, but probably not as they were meant
    Error,   ///< an update is not offered, fails, or never ends
};

/// One rule as people see it.
struct RuleInfo
{
    Rule rule;         ///< the rule that the entry is about
    const char* name;  ///< never changes
    Severity severity; ///< decides whether a file passes a check
    const char* what;  ///< one line: what is wrong, and what comes of it
};

/// All rules, in the order in which people read them.
const QVector<RuleInfo>& allRules();

/// What is known of one rule; valid for as long as the program runs.
const RuleInfo& ruleInfo(Rule rule);

/// The rule of this name, or nullopt.
std::optional<Rule> ruleNamed(const QString& name);

/// One departure from a rule.
struct RuleFinding
{
    Rule rule = Rule::Magic; ///< the one that is not kept
    QString
        field; ///< as in a description, for example "blocks[1].minVersion"; what else it is about
    QString value;      ///< what is there
    QString expected;   ///< what the rule asks for; may be empty
    qint64 offset = -1; ///< of the field from the start of the file; -1 if it has no place there
    QString file = {};  ///< empty until the finding is reported
};

/// The finding without its file and rule: "FIELD (offset N) is VALUE, expected EXPECTED".
QString findingText(const RuleFinding& finding);

/// The finding in one line: "FILE: SEVERITY: TEXT [RULE]".
QString findingLine(const RuleFinding& finding);

/// The finding as JSON, all of it under keys of its own.
QJsonObject findingJson(const RuleFinding& finding);

/// "error" or "warning".
QString severityWord(Severity severity);
