#pragma once

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QTextStream>
#include <QVector>

#include <functional>

/// @file
/// Programs that are told by a verb what to do: `PROGRAM VERB [OPTION...] [ARGUMENT...]`.
///
/// A verb is one entry in a table; the command line, the help, the errors and the JSON of errors
/// are made from the table. Every verb has `--help` and `--json`; `--` ends the options; `-` is an
/// argument, which a verb may take for the standard input or output. To be used in one thread.

/// How a program with verbs ends. The first three are those of the other programs.
enum VerbExit : int
{
    VerbDone = 0,
    VerbFailed = 1,     ///< something cannot be read or written, whatever else is wrong
    VerbWrongUsage = 2, ///< the command line is wrong
    VerbRefused = 3,    ///< what was looked at is wrong
};

/// Where a program reads from and writes to.
struct VerbStreams
{
    QTextStream& out;        ///< results, and all errors with `--json`; must have a device for `-`
    QTextStream& messages;   ///< everything else
    bool isTerminal = false; ///< progress goes to messages only if they are read on a terminal
    bool hasColours = false; ///< whether out may be coloured
    QIODevice* in = nullptr; ///< the standard input, open; null: empty. Not owned
};

/// What one call of a verb was asked for, and its ways to answer.
class VerbRun
{
public:
    /// @param parser has parsed; it and @p streams must outlive this object
    /// @param program name of the program, for errors
    VerbRun(const QCommandLineParser& parser, QString program, const VerbStreams& streams);

    /// What was given beside options.
    QStringList arguments() const { return m_parser.positionalArguments(); }
    /// Calls @p one for each argument, also behind one that fails.
    /// @return VerbFailed if any could not be read or written, or else VerbRefused if any is wrong
    VerbExit forEachArgument(const std::function<VerbExit(const QString& argument)>& one) const;
    /// Whether the option was given.
    bool isSet(const QString& option) const { return m_parser.isSet(option); }
    /// Value of the option as given last, or its default.
    QString value(const QString& option) const { return m_parser.value(option); }
    /// All values of the option, in the order given.
    QStringList values(const QString& option) const { return m_parser.values(option); }
    /// Whether results and errors are wanted as JSON.
    bool json() const { return m_json; }
    /// Where the verb reads from and writes to.
    const VerbStreams& streams() const { return m_streams; }

    /// Says what went wrong: on the messages, each line with the program's name, or as JSON.
    /// @return @p exit, so that a verb can end with it
    VerbExit fail(VerbExit exit, const QString& text);

    /// Says something on the messages that is no failure; nothing with `--json`.
    void note(const QString& text);

    /// Writes a result for people, as it is.
    void print(const QString& text);
    /// Writes a result for programs.
    void printJson(const QJsonObject& object);

    /// Shows on a terminal how far long work has come; @p total of 0 or less shows nothing.
    void showProgress(const QString& what, qint64 done, qint64 total);

private:
    void endProgress();

    const QCommandLineParser& m_parser;
    QString m_program;
    const VerbStreams& m_streams;
    bool m_json;
    QString m_shownProgress;
};

/// One verb.
struct Verb
{
    QString name;                          ///< as it is given on the command line
    QString arguments;                     ///< as the help shows them, for example "FILE..."
    QString summary;                       ///< one line without a full stop
    QString description;                   ///< further lines of the help; may be empty
    QVector<QCommandLineOption> options;   ///< beside those that every verb has
    int fewestArguments = 0;               ///< fewer are a wrong usage
    int mostArguments = 0;                 ///< -1: any number
    std::function<VerbExit(VerbRun&)> run; ///< does the work
};

/// A program with its verbs.
struct VerbProgram
{
    QString name;        ///< as it is called
    QString version;     ///< for "--version"
    QString description; ///< one or more lines
    QString exitCodes;   ///< lines "  0  done"
    QVector<Verb> verbs; ///< in the order of the help
};

/// Runs what @p arguments say, the program's name left out. @return a VerbExit
int runVerb(const VerbProgram& program, const QStringList& arguments, const VerbStreams& streams);
