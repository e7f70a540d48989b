#include "imagetoolverbs.h"
#include "inputfile.h"

#include <deliverychecks.h>
#include <filechecks.h>

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QSet>

#include <algorithm>

namespace {

/// Which rules count.
class RuleChoice
{
public:
    /// Takes values of --rule. @return the one that is no rule, or an empty text
    QString read(const QStringList& values);

    bool has(Rule rule) const
    {
        return !m_left.contains(rule) && (m_only.isEmpty() || m_only.contains(rule));
    }

private:
    QSet<Rule> m_only;
    QSet<Rule> m_left;
};

QString RuleChoice::read(const QStringList& values)
{
    for (const QString& value : values) {
        const bool isLeft = value.startsWith('-');
        const auto rule = ruleNamed(isLeft ? value.mid(1) : value);
        if (!rule)
            return value;
        (isLeft ? m_left : m_only).insert(*rule);
    }
    return QString();
}

/// One call of `check`.
class Check
{
public:
    explicit Check(VerbRun& run) : m_run(run) {}

    VerbExit run();

private:
    void checkFolder(const QString& folder);
    void checkFile(const QString& path, bool isInFolder);
    void add(QVector<RuleFinding> findings, const QString& path);
    VerbExit report();
    QString line(const RuleFinding& finding) const;
    int count(Severity severity) const;

    VerbRun& m_run;
    RuleChoice m_rules;
    QVector<DeliveredFile> m_files; // of the folder that is being checked
    QVector<RuleFinding> m_findings;
    QStringList m_unreadable;
    int m_fileCount = 0;
};

VerbExit Check::run()
{
    const QString unknown = m_rules.read(m_run.values("rule"));
    if (!unknown.isEmpty())
        return m_run.fail(
            VerbWrongUsage,
            QString("There is no rule %1. (imagetool check --list-rules lists them)").arg(unknown));
    QString error;
    if (!namesStandardInputOnce(m_run, &error))
        return m_run.fail(VerbWrongUsage, error);
    for (const QString& path : m_run.arguments()) {
        if (path != QLatin1String("-") && QFileInfo(path).isDir())
            checkFolder(path);
        else
            checkFile(path, false);
    }
    return report();
}

void Check::checkFolder(const QString& folder)
{
    add(checkFolders(folder), folder);
    const QDir updateFolder(updateFolderOf(folder));
    m_files.clear();
    const int unreadable = m_unreadable.size();
    for (const QString& name : updateFolder.entryList(QDir::Files, QDir::Name))
        checkFile(updateFolder.filePath(name), true);
    if (m_files.isEmpty() && m_unreadable.size() == unreadable)
        m_unreadable += updateFolder.path() + ": there is no update file";
    add(checkDelivery(m_files), updateFolder.path());
}

void Check::checkFile(const QString& path, bool isInFolder)
{
    QString error;
    const std::optional<ScannedFile> scanned = scanInput(m_run, path, &error);
    if (!scanned) {
        m_unreadable += error;
        return;
    }
    ++m_fileCount;
    if (isInFolder && !scanned->file && isForeignToDeliveries(path)) {
        if (!isSealOfDelivery(path))
            add({{Rule::ForeignFile, "the file", "no update file", "only update files"}}, path);
        return;
    }
    const bool hasName = path != QLatin1String("-");
    add(checkUpdateFile(*scanned, hasName ? path : QString()), path);
    if (isInFolder)
        m_files.append({path, *scanned});
}

void Check::add(QVector<RuleFinding> findings, const QString& path)
{
    for (RuleFinding& finding : findings) {
        if (finding.file.isEmpty())
            finding.file = path;
        if (m_rules.has(finding.rule))
            m_findings.append(finding);
    }
}

VerbExit Check::report()
{
    const int errors = count(Severity::Error);
    const bool isWrong = errors > 0 || (m_run.isSet("strict") && !m_findings.isEmpty());
    const VerbExit exit = !m_unreadable.isEmpty() ? VerbFailed : isWrong ? VerbRefused : VerbDone;
    if (m_run.json()) {
        QJsonArray findings;
        for (const RuleFinding& finding : m_findings)
            findings.append(findingJson(finding));
        QJsonObject object{{"findings", findings},
                           {"errors", errors},
                           {"warnings", m_findings.size() - errors},
                           {"files", m_fileCount}};
        if (!m_unreadable.isEmpty())
            object.insert("error", m_unreadable.join('\n'));
        object.insert("exitCode", exit);
        m_run.printJson(object);
        return exit;
    }
    for (const RuleFinding& finding : m_findings)
        m_run.print(line(finding) + '\n');
    if (!m_unreadable.isEmpty())
        m_run.fail(exit, m_unreadable.join('\n'));
    return exit;
}

QString Check::line(const RuleFinding& finding) const
{
    QString text = findingLine(finding);
    if (!m_run.streams().hasColours)
        return text;
    const Severity severity = ruleInfo(finding.rule).severity;
    const QString word = ": " + severityWord(severity) + ": ";
    const char* colour = severity == Severity::Error ? "31" : "33";
    return QString(text).replace(
        text.indexOf(word), word.size(),
        QString(": \x1b[1;%1m%2\x1b[0m: ").arg(QLatin1String(colour), severityWord(severity)));
}

int Check::count(Severity severity) const
{
    return static_cast<int>(
        std::count_if(m_findings.begin(), m_findings.end(), [&](const RuleFinding& finding) {
            return ruleInfo(finding.rule).severity == severity;
        }));
}

VerbExit listRules(VerbRun& run)
{
    QJsonArray rules;
    for (const RuleInfo& info : allRules()) {
        rules.append(QJsonObject{
            {"rule", info.name}, {"severity", severityWord(info.severity)}, {"why", info.what}});
        if (!run.json())
            run.print(QString("%1 %2 %3\n")
                          .arg(QString(info.name).leftJustified(19),
                               severityWord(info.severity).leftJustified(7), info.what));
    }
    if (run.json())
        run.printJson({{"rules", rules}});
    return VerbDone;
}

VerbExit check(VerbRun& run)
{
    if (run.isSet("list-rules"))
        return listRules(run);
    if (run.arguments().isEmpty())
        return run.fail(VerbWrongUsage,
                        "check takes FILE|FOLDER.... (imagetool check --help tells more)");
    return Check(run).run();
}

} // namespace

Verb checkVerb()
{
    Verb verb;
    verb.name = "check";
    verb.arguments = "FILE|FOLDER...";
    verb.summary = "Finds what is wrong with update files, alone and in a delivery";
    verb.description =
        "All findings are told, one a line, with file, offset, field, value, what was\n"
        "expected, and the name of the rule. Of a folder, the files are also compared with\n"
        "each other; it is the folder \"controller_update\", or one that contains it.\n"
        "\"-\" as FILE is the standard input, and has no name that could be wrong.\n"
        "Warnings do not make the program fail, unless --strict is given.";
    verb.options = {
        {"strict", "Warnings count as errors."},
        {"rule",
         "Looks only for what breaks this rule; with a minus before the name, for all else. May be "
         "given more than once.",
         "[-]NAME"},
        {"list-rules", "Lists the rules, and what comes of breaking them."},
    };
    verb.mostArguments = -1;
    verb.run = check;
    return verb;
}
