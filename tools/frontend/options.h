#pragma once

#include <attitude.h>
#include <endpoint.h>

#include <QString>
#include <QStringList>

#include <optional>

/// What the program was asked to do.
struct Options
{
    /// What to do: one thing for each start.
    enum class Action
    {
        Run,
        ShowHelp,
        ShowVersion,
        ListScenarios,
    };

    Action action = Action::Run;                  ///< decides which of the other values count
    QString scenario = QStringLiteral("cascade"); ///< name of a shipped one, or a file
    std::optional<Endpoint> peer; ///< of a simulated system in another process; none: one in here
    QString stateDir;             ///< absolute; made when it is needed
    QString userHome;             ///< the user's own, before the program moves to another one
    QString pluginFile;           ///< absolute
    QString publicKey;            ///< itself, or its absolute file; empty: none is asked for
    QString recordFile;           ///< absolute; empty: no record
    QString replayFile;           ///< absolute; empty: there is a system
    QString screenshotDir;        ///< absolute; empty: no pictures
    Attitude user = Attitude::Willing; ///< of a headless run
    bool fresh = false;                ///< what the state folder holds is forgotten first
    bool fast = false;     ///< records take no time, and nothing waits for what comes too late
    bool headless = false; ///< no window, and a played user
    bool narrate = false;  ///< what --headless tells anyway
    bool observer = false; ///< the module is told that its user only watches
    bool dark = false;     ///< starts with the dark theme
};

/// How the program ends; --help tells the same.
enum ExitCode : int
{
    Success = 0,
    StartFailed = 1,
    WrongUsage = 2,
    NotNewest = 3,
    Hanging = 4,
    StartAgain = 5,
    Departed = 6,
};

/// Reads the command line.
///
/// @param arguments the program's name, then its arguments
/// @param programDir folder that the program and what is delivered with it stand in
/// @param error must not be null; receives one line if the result is no success
/// @return whether the command line makes sense
bool parseOptions(const QStringList& arguments, const QString& programDir, Options* options,
                  QString* error);

/// The text of --help. There must be an application object.
QString helpText();
