#include "verb.h"

#include "verbhelp.h"

#include <QJsonDocument>

#include <algorithm>
#include <utility>

VerbRun::VerbRun(const QCommandLineParser& parser, QString program, const VerbStreams& streams)
    : m_parser(parser), m_program(std::move(program)), m_streams(streams),
      m_json(parser.isSet(QStringLiteral("json")))
{
}

VerbExit VerbRun::forEachArgument(const std::function<VerbExit(const QString&)>& one) const
{
    QVector<VerbExit> exits;
    for (const QString& argument : arguments())
        exits += one(argument);
    for (const VerbExit exit : {VerbFailed, VerbRefused}) {
        if (exits.contains(exit))
            return exit;
    }
    return VerbDone;
}

VerbExit VerbRun::fail(VerbExit exit, const QString& text)
{
    endProgress();
    if (m_json) {
        printJson({{"error", text}, {"exitCode", exit}});
        return exit;
    }
    note(text);
    return exit;
}

void VerbRun::note(const QString& text)
{
    endProgress();
    if (m_json)
        return;
    for (const QString& line : text.split(QLatin1Char('\n')))
        m_streams.messages << m_program << ": " << line << '\n';
    m_streams.messages.flush();
}

void VerbRun::print(const QString& text)
{
    endProgress();
    m_streams.out << text;
}

void VerbRun::printJson(const QJsonObject& object)
{
    print(QString::fromUtf8(QJsonDocument(object).toJson()));
}

void VerbRun::showProgress(const QString& what, qint64 done, qint64 total)
{
    if (!m_streams.isTerminal || total <= 0)
        return;
    const QString text = QStringLiteral("%1: %2 %").arg(what).arg(done * 100 / total);
    if (text == m_shownProgress)
        return;
    m_shownProgress = text;
    m_streams.messages << "\r\x1b[K" << text << Qt::flush;
}

void VerbRun::endProgress()
{
    if (m_shownProgress.isEmpty())
        return;
    m_shownProgress.clear();
    m_streams.messages << "\r\x1b[K" << Qt::flush;
}

namespace {

/// One command line.
class VerbCall
{
public:
    VerbCall(const VerbProgram& program, const VerbStreams& streams)
        : m_program(program), m_streams(streams)
    {
    }

    int run(const QStringList& arguments);

private:
    VerbExit runVerbOf(const Verb& verb, const QStringList& arguments);
    VerbExit refuse(const QString& verb, const QString& text);
    const Verb* find(const QString& name) const;

    const VerbProgram& m_program;
    const VerbStreams& m_streams;
    QCommandLineParser m_parser;
};

int VerbCall::run(const QStringList& arguments)
{
    m_parser.addOptions(commonVerbOptions().toList());
    for (const char* name : {"help-all", "version"})
        m_parser.addOption(QCommandLineOption(QLatin1String(name)));
    // Only what every verb understands may stand before it.
    QStringList rest = arguments;
    QStringList leading{m_program.name};
    while (!rest.isEmpty() && rest.first().startsWith(QLatin1Char('-')))
        leading += rest.takeFirst();
    if (!m_parser.parse(leading))
        return refuse(QString(), m_parser.errorText());
    if (m_parser.isSet(QStringLiteral("help"))) {
        m_streams.out << programHelp(m_program);
        return VerbDone;
    }
    if (m_parser.isSet(QStringLiteral("help-all"))) {
        m_streams.out << manualText(m_program);
        return VerbDone;
    }
    if (m_parser.isSet(QStringLiteral("version"))) {
        m_streams.out << m_program.name << ' ' << m_program.version << '\n';
        return VerbDone;
    }
    if (rest.isEmpty())
        return refuse(QString(), QStringLiteral("No command is given."));
    const QString name = rest.takeFirst();
    const Verb* verb = find(name);
    if (!verb)
        return refuse(QString(), QStringLiteral("Unknown command '%1'.").arg(name));
    return runVerbOf(*verb, leading + rest);
}

VerbExit VerbCall::runVerbOf(const Verb& verb, const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.addOptions((verb.options + commonVerbOptions()).toList());
    const bool isParsed = parser.parse(arguments);
    if (parser.isSet(QStringLiteral("help"))) {
        m_streams.out << verbHelp(m_program, verb);
        return VerbDone;
    }
    m_parser.parse(arguments); // for --json in an answer to a wrong command line
    if (!isParsed)
        return refuse(verb.name, parser.errorText());
    const int count = parser.positionalArguments().size();
    if (count < verb.fewestArguments || (verb.mostArguments >= 0 && count > verb.mostArguments))
        return refuse(verb.name, QStringLiteral("%1 takes %2.").arg(verb.name, verb.arguments));
    VerbRun run(parser, m_program.name, m_streams);
    return verb.run(run);
}

VerbExit VerbCall::refuse(const QString& verb, const QString& text)
{
    const QString command = verb.isEmpty() ? m_program.name : m_program.name + ' ' + verb;
    return VerbRun(m_parser, m_program.name, m_streams)
        .fail(VerbWrongUsage, QStringLiteral("%1 (%2 --help tells more)").arg(text, command));
}

const Verb* VerbCall::find(const QString& name) const
{
    const auto* found = std::find_if(m_program.verbs.begin(), m_program.verbs.end(),
                                     [&](const Verb& verb) { return verb.name == name; });
    return found == m_program.verbs.end() ? nullptr : found;
}

} // namespace

int runVerb(const VerbProgram& program, const QStringList& arguments, const VerbStreams& streams)
{
    return VerbCall(program, streams).run(arguments);
}
