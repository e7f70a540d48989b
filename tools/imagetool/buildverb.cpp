#include "imagetoolverbs.h"
#include "output.h"

#include <failure.h>
#include <filechecks.h>
#include <imagedescription.h>
#include <imagewriter.h>

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>

#include <algorithm>

namespace {

/// One call of `build`.
class Build
{
public:
    explicit Build(VerbRun& run)
        : m_run(run), m_descriptionName(run.arguments().at(0)), m_outputName(run.arguments().at(1))
    {
    }

    VerbExit run();

private:
    bool readAllowed(QString* unknown);
    bool readDescription(QByteArray* json, QString* error);
    bool write(QFileDevice& device, QString* error);
    bool passes(QString* error);
    bool isAllowed(const RuleFinding& finding) const { return m_allowed.contains(finding.rule); }
    VerbExit report();

    VerbRun& m_run;
    const QString m_descriptionName;
    const QString m_outputName;
    QVector<Rule> m_allowed;
    UpdateFile m_file;
    QVector<RuleFinding> m_findings;
    qint64 m_size = 0;
    bool m_isRefused = false;
};

VerbExit Build::run()
{
    QString unknown;
    if (!readAllowed(&unknown))
        return m_run.fail(
            VerbWrongUsage,
            QString("There is no rule %1. (imagetool check --list-rules lists them)").arg(unknown));
    QByteArray json;
    QString error;
    if (!readDescription(&json, &error))
        return m_run.fail(VerbFailed, error);
    QStringList inputs;
    const auto file = readImageDescription(json, m_descriptionName, &inputs, &error);
    if (!file)
        return m_run.fail(VerbRefused, error);
    m_file = *file;
    const auto content = [&](QFileDevice& device, QString* reason) {
        return write(device, reason);
    };
    if (writeOutput(m_run, m_outputName, inputs << m_descriptionName, content, &error))
        return report();
    return m_run.fail(m_isRefused ? VerbRefused : VerbFailed, error);
}

bool Build::readAllowed(QString* unknown)
{
    for (const QString& name : m_run.values("allow")) {
        const auto rule = ruleNamed(name);
        if (!rule)
            return fail(name, unknown);
        m_allowed.append(*rule);
    }
    return true;
}

bool Build::readDescription(QByteArray* json, QString* error)
{
    QFile file(m_descriptionName);
    QIODevice* device = &file;
    if (m_descriptionName == "-")
        device = m_run.streams().in;
    else if (!file.open(QIODevice::ReadOnly))
        return fail(m_descriptionName + ": " + file.errorString(), error);
    *json = device ? device->readAll() : QByteArray();
    return file.error() == QFileDevice::NoError ||
           fail(m_descriptionName + ": " + file.errorString(), error);
}

// Writes the file, then reads it again as everybody else will.
bool Build::write(QFileDevice& device, QString* error)
{
    const auto progress = [&](qint64 done, qint64 total) {
        m_run.showProgress("building " + m_outputName, done, total);
    };
    if (!writeUpdateFile(m_file, device, progress, error))
        return false;
    if (!device.flush())
        return fail(device.errorString(), error);
    QFile written;
    if (!written.open(device.handle(), QIODevice::ReadOnly | QIODevice::Unbuffered))
        return fail(written.errorString(), error);
    ScanEvents events;
    events.progress = [&](qint64 done, qint64 total) {
        m_run.showProgress("checking " + m_outputName, done, total);
    };
    const ScannedFile scanned = scanUpdateFile(written, events);
    if (!scanned.error.isEmpty())
        return fail(scanned.error, error);
    m_size = scanned.size;
    m_findings = checkUpdateFile(scanned, m_outputName == "-" ? QString() : m_outputName);
    for (RuleFinding& finding : m_findings)
        finding.file = m_outputName;
    return passes(error);
}

bool Build::passes(QString* error)
{
    QStringList lines;
    for (const RuleFinding& finding : qAsConst(m_findings)) {
        if (ruleInfo(finding.rule).severity == Severity::Error && !isAllowed(finding))
            lines += findingLine(finding);
    }
    if (lines.isEmpty())
        return true;
    m_isRefused = true;
    lines += "not written; --allow RULE would write it all the same";
    return fail(lines.join('\n'), error);
}

VerbExit Build::report()
{
    QJsonArray findings;
    for (const RuleFinding& finding : qAsConst(m_findings)) {
        if (isAllowed(finding))
            continue;
        findings.append(findingJson(finding));
        m_run.note(findingLine(finding));
    }
    if (m_run.json() && m_outputName != "-")
        m_run.printJson({{"file", m_outputName}, {"bytes", m_size}, {"findings", findings}});
    return VerbDone;
}

VerbExit build(VerbRun& run)
{
    return Build(run).run();
}

} // namespace

Verb buildVerb()
{
    Verb verb;
    verb.name = "build";
    verb.arguments = "DESCRIPTION OUTPUT";
    verb.summary = "Writes the update file that a description in JSON describes";
    verb.description =
        "\"-\" as DESCRIPTION is the standard input, as OUTPUT the standard output. An "
        "existing\nOUTPUT is replaced only when all of the new file has been written "
        "and checked:\nwhat `check` calls an error is refused, warnings are told.";
    verb.options = {{"allow",
                     "Writes the file although it breaks this rule. May be given more than "
                     "once.",
                     "RULE"}};
    verb.fewestArguments = 2;
    verb.mostArguments = 2;
    verb.run = build;
    return verb;
}
