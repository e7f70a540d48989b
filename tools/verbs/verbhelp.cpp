#include "verbhelp.h"

#include <algorithm>

namespace {

constexpr int lineWidth = 80;

/// The lines of @p text, wrapped, behind @p name in a column of its own.
QString item(const QString& name, const QString& text, int nameWidth)
{
    QString lines = QStringLiteral("  ") + name.leftJustified(nameWidth) + QStringLiteral("  ");
    const QString indent(nameWidth + 4, QLatin1Char(' '));
    int column = indent.size();
    bool isLineStart = true;
    for (const QString& word : text.split(QLatin1Char(' '))) {
        if (!isLineStart && column + 1 + word.size() > lineWidth) {
            lines += QLatin1Char('\n') + indent;
            column = indent.size();
            isLineStart = true;
        }
        lines += isLineStart ? word : QLatin1Char(' ') + word;
        column += word.size() + (isLineStart ? 0 : 1);
        isLineStart = false;
    }
    return lines + QLatin1Char('\n');
}

QString namesOf(const QCommandLineOption& option)
{
    QStringList names;
    for (const QString& name : option.names())
        names += (name.size() == 1 ? QStringLiteral("-") : QStringLiteral("--")) + name;
    std::sort(names.begin(), names.end(),
              [](const QString& left, const QString& right) { return left.size() < right.size(); });
    const QString text = names.join(QStringLiteral(", "));
    return option.valueName().isEmpty() ? text : text + QLatin1Char(' ') + option.valueName();
}

QString itemsText(const QVector<QCommandLineOption>& options)
{
    int width = 0;
    for (const QCommandLineOption& option : options)
        width = std::max(width, namesOf(option).size());
    QString text;
    for (const QCommandLineOption& option : options)
        text += item(namesOf(option), option.description(), width);
    return text;
}

QString optionsText(const QVector<QCommandLineOption>& options)
{
    return QStringLiteral("Options:\n") + itemsText(options);
}

QCommandLineOption helpOption()
{
    return {{"h", "help"}, QStringLiteral("Shows this text.")};
}

} // namespace

QVector<QCommandLineOption> commonVerbOptions()
{
    return {{QStringLiteral("json"), QStringLiteral("Writes results and errors as JSON.")},
            helpOption()};
}

QString programHelp(const VerbProgram& program)
{
    QString text =
        QStringLiteral("Usage: %1 COMMAND [OPTION...] [ARGUMENT...]\n\n%2\n\nCommands:\n")
            .arg(program.name, program.description);
    int width = 0;
    for (const Verb& verb : program.verbs)
        width = std::max(width, verb.name.size());
    for (const Verb& verb : program.verbs)
        text += item(verb.name, verb.summary, width);
    const QCommandLineOption version(QStringLiteral("version"),
                                     QStringLiteral("Shows the version of the program."));
    const QCommandLineOption all(QStringLiteral("help-all"),
                                 QStringLiteral("Shows the help of all commands."));
    text += QLatin1Char('\n') + optionsText({helpOption(), all, version});
    return text +
           QStringLiteral("\n%1 COMMAND --help tells more of a command.\n\nExit codes:\n%2\n")
               .arg(program.name, program.exitCodes);
}

QString manualText(const VerbProgram& program)
{
    QString text = programHelp(program);
    for (const Verb& verb : program.verbs) {
        text += QStringLiteral("\nCommand %1:\n  %2 %1 [OPTION...] %3\n\n%4.\n")
                    .arg(verb.name, program.name, verb.arguments, verb.summary);
        if (!verb.description.isEmpty())
            text += QLatin1Char('\n') + verb.description + QLatin1Char('\n');
        // What all commands have, the help of each tells.
        if (!verb.options.isEmpty())
            text += QLatin1Char('\n') + itemsText(verb.options);
    }
    return text;
}

QString verbHelp(const VerbProgram& program, const Verb& verb)
{
    QString text = QStringLiteral("Usage: %1 %2 [OPTION...] %3\n\n%4.\n")
                       .arg(program.name, verb.name, verb.arguments, verb.summary);
    if (!verb.description.isEmpty())
        text += QLatin1Char('\n') + verb.description + QLatin1Char('\n');
    return text + QLatin1Char('\n') + optionsText(verb.options + commonVerbOptions()) +
           QStringLiteral("\nExit codes:\n%1\n").arg(program.exitCodes);
}
