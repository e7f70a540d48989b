#pragma once

#include <endpoint.h>

#include <QString>
#include <QStringList>

/// What the program was asked to do.
struct ServerOptions
{
    /// What to do: one thing for each start.
    enum class Action
    {
        Serve,
        ShowHelp,
        ShowVersion,
        ListScenarios,
    };

    Action action = Action::Serve;                ///< decides which of the other values count
    Endpoint listenAt;                            ///< port 0: any that is free
    QString scenario = QStringLiteral("cascade"); ///< name of a shipped one, or a file
    QString stateFile;                            ///< empty: nothing is kept
    bool fresh = false; ///< the state that an earlier run left is forgotten first
    bool fast = false;  ///< records, checks and searches take no time
};

/// How the program ends; --help tells the same.
enum ServerExitCode : int
{
    ServerSuccess = 0,
    ServerFailed = 1,
    ServerWrongUsage = 2,
};

/// Reads the command line.
///
/// @param arguments the program's name, then its arguments
/// @param error must not be null; receives one line if the result is no success
/// @return whether the command line makes sense
bool parseServerOptions(const QStringList& arguments, ServerOptions* options, QString* error);

/// The text of --help. There must be an application object.
QString serverHelpText();
