#include "serveroptions.h"

#include <QCommandLineParser>
#include <QFileInfo>

namespace {

const char description[] =
    R"(Simulates a system of controllers and cameras, and serves it over TCP.

Each line that comes in is one text of the command language, each line that goes
out the reply to it, so that it can be spoken to by hand:

  $ nc 127.0.0.1 PORT
  get system hostname
  ok zan-master

The program prints "Listening on ADDRESS:PORT" as soon as it can be spoken to, and
runs until it is interrupted.

Exit codes:
  0  help, version or list of scenarios was shown
  1  the scenario cannot be read, the state file is none or cannot be read or
     written, another program uses its folder, or the port cannot be had
  2  wrong command line)";

struct CommandLine
{
    QCommandLineParser parser;
    QCommandLineOption help{{"h", "help"}, "Shows this text."};
    QCommandLineOption version{"version", "Shows the version of the simulator."};
    QCommandLineOption list{"list", "Lists the scenarios that come with the simulator."};
    QCommandLineOption listen{"listen",
                              "Where to listen; port 0 takes any that is free. Whoever reaches the "
                              "address can operate the system, so it is the loopback address "
                              "unless another one is given.",
                              "ADDRESS:PORT", "127.0.0.1:0"};
    QCommandLineOption scenario{"scenario", "What is simulated: the name of a scenario, or a file.",
                                "NAME|FILE", "cascade"};
    QCommandLineOption state{"state",
                             "Keeps the state of the devices in a file, to go on from there at the "
                             "next start.",
                             "FILE"};
    QCommandLineOption fresh{"fresh", "Forgets what the state file holds."};
    QCommandLineOption fast{"fast", "Records, checks and searches take the devices no time."};

    CommandLine()
    {
        parser.setApplicationDescription(QString::fromLatin1(description));
        parser.addOptions({help, list, listen, scenario, state, fresh, fast, version});
    }
};

ServerOptions::Action actionOf(const CommandLine& line)
{
    if (line.parser.isSet(line.help))
        return ServerOptions::Action::ShowHelp;
    if (line.parser.isSet(line.version))
        return ServerOptions::Action::ShowVersion;
    if (line.parser.isSet(line.list))
        return ServerOptions::Action::ListScenarios;
    return ServerOptions::Action::Serve;
}

} // namespace

bool parseServerOptions(const QStringList& arguments, ServerOptions* options, QString* error)
{
    CommandLine line;
    const QCommandLineParser& parser = line.parser;
    if (!line.parser.parse(arguments)) {
        *error = parser.errorText();
        return false;
    }
    if (!parser.positionalArguments().isEmpty()) {
        *error = QStringLiteral("Unexpected argument: %1")
                     .arg(parser.positionalArguments().constFirst());
        return false;
    }
    const std::optional<Endpoint> endpoint = Endpoint::read(parser.value(line.listen));
    if (!endpoint) {
        *error =
            QStringLiteral("--listen: \"%1\" is no ADDRESS:PORT").arg(parser.value(line.listen));
        return false;
    }
    options->listenAt = *endpoint;
    options->action = actionOf(line);
    options->scenario = parser.value(line.scenario);
    options->stateFile = parser.value(line.state);
    options->fresh = parser.isSet(line.fresh);
    options->fast = parser.isSet(line.fast);
    if (parser.isSet(line.state) && QFileInfo(options->stateFile).fileName().isEmpty()) {
        *error = QStringLiteral("--state: \"%1\" names no file").arg(options->stateFile);
        return false;
    }
    if (options->fresh && options->stateFile.isEmpty()) {
        *error = QStringLiteral("--fresh needs --state");
        return false;
    }
    return true;
}

QString serverHelpText()
{
    return CommandLine().parser.helpText();
}
