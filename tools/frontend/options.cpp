#include "options.h"

#include <minisign.h>

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>

namespace {

const char description[] =
    R"(Demo frontend of the VORNIX3 update module, with simulated controllers.

Everything that is kept stands in the state folder: the simulated controllers in
system.json, the plans and results of updates in runs, and the preferences of the
modules in a home folder of its own. HOME is set to that folder before a module is
loaded, so the real one stays untouched. A scenario that wants only some of the
delivered files gets a frontend of its own in delivered. With --connect the other
process keeps the controllers, with --replay there are none.

Exit codes:
  0  the frontend was left; with --headless: all controllers and cameras run the
     newest versions that the update files bring them
  1  it could not start: scenario, state folder, update module, what --connect leads
     to, or the record to be replayed; or the system that it was connected to is gone;
     --headless: or the update module was kept out because of --public-key
  2  wrong command line
  3  --headless: some controllers or cameras do not run the newest versions; the
     last lines say which, and what was refused
  4  --headless: a window or the program hangs; the last line names the window
  5  --headless: the controllers restart; start again with the same state folder
     to see what became of the update
  6  --headless with --replay: the module did not call what was recorded; the last
     lines say what it called instead, or what it left out)";

struct CommandLine
{
    QCommandLineParser parser;
    QCommandLineOption help{{"h", "help"}, "Shows this text."};
    QCommandLineOption version{"version", "Shows the version of the frontend."};
    QCommandLineOption list{"list", "Lists the scenarios that come with the simulator."};
    QCommandLineOption scenario{"scenario", "What is simulated: the name of a scenario, or a file.",
                                "NAME|FILE", "cascade"};
    QCommandLineOption connectTo{"connect",
                                 "Operates the simulated system that the program simulated-system "
                                 "serves there, instead of one in this process. HOST is an IP "
                                 "address or localhost.",
                                 "HOST:PORT"};
    QCommandLineOption stateDir{"state-dir",
                                "State folder: a new or an empty one, or one that was made as such "
                                "before; zanupdate/SCENARIO in XDG_STATE_HOME (~/.local/state) if "
                                "none is given.",
                                "DIR"};
    QCommandLineOption fresh{"fresh", "Forgets what the state folder holds, and starts anew."};
    QCommandLineOption fast{"fast", "Controllers take records as they come, not at their own pace "
                                    "(2750 a second), and an answer that would come too late is "
                                    "not waited for."};
    QCommandLineOption headless{"headless", "Plays the user on the real windows, prints what "
                                            "happens, and leaves."};
    QCommandLineOption user{"user",
                            "With --headless, how the user behaves: willing to update, later, "
                            "partial (takes one update off), idle (takes all off) or curious "
                            "(opens the menu entries).",
                            "ATTITUDE", "willing"};
    QCommandLineOption narrate{"narrate", "Prints what the user sees: windows with their texts and "
                                          "places to click on, the focus, and the log."};
    QCommandLineOption screenshots{"screenshots",
                                   "With --headless: saves a picture of every "
                                   "window and message box.",
                                   "DIR"};
    QCommandLineOption record{"record",
                              "Records what passes between the module and the controllers. A file "
                              "that holds a record already is kept: the next one gets a number.",
                              "FILE"};
    QCommandLineOption replay{"replay",
                              "Answers the module from a record, without simulated controllers, "
                              "and tells where it first departs from it.",
                              "FILE"};
    QCommandLineOption observer{"observer", "The user may only look on."};
    QCommandLineOption dark{"dark", "Starts with the dark theme."};
    QCommandLineOption plugin{"plugin", "The update module to load.", "FILE"};
    QCommandLineOption publicKey{"public-key",
                                 "Loads the update module only if the delivered update files are "
                                 "sealed and signed with this key of minisign. Without it they "
                                 "are compared with their checksums, if there are any.",
                                 "FILE|KEY"};

    CommandLine()
    {
        parser.setApplicationDescription(QString::fromLatin1(description));
        parser.addOptions({help, list, scenario, connectTo, stateDir, fresh, fast, headless, user,
                           narrate, record, replay, screenshots, observer, dark, plugin, publicKey,
                           version});
    }
};

QString absolute(const QString& path)
{
    return QDir::cleanPath(QDir::current().absoluteFilePath(path));
}

// A key itself stays what it is.
QString publicKeyOf(const QString& text)
{
    return text.isEmpty() || MinisignPublicKey::fromText(text.toLatin1()) ? text : absolute(text);
}

Options::Action actionOf(const CommandLine& line)
{
    if (line.parser.isSet(line.help))
        return Options::Action::ShowHelp;
    if (line.parser.isSet(line.version))
        return Options::Action::ShowVersion;
    if (line.parser.isSet(line.list))
        return Options::Action::ListScenarios;
    return Options::Action::Run;
}

// A file by its absolute path, as the current folder is changed later.
QString scenarioOf(const QString& text)
{
    return text.contains(QLatin1Char('/')) || text.endsWith(QLatin1String(".json")) ? absolute(text)
                                                                                    : text;
}

// Each system has a state of its own.
QString stateNameOf(const Options& options)
{
    if (options.peer)
        return QStringLiteral("connected-") + options.peer->text().replace(':', '-');
    if (!options.replayFile.isEmpty())
        return QFileInfo(options.replayFile).completeBaseName();
    // The names of shipped scenarios have no suffix, but may have dots.
    const QFileInfo scenario(options.scenario);
    return scenario.isAbsolute() ? scenario.completeBaseName() : options.scenario;
}

// The folder of the program is nobody's own where it is installed.
QString defaultStateDir(const Options& options)
{
    QString home = qEnvironmentVariable("XDG_STATE_HOME");
    if (QDir::isRelativePath(home))
        home = QDir::homePath() + QLatin1String("/.local/state");
    return QDir::cleanPath(home + QLatin1String("/zanupdate/") + stateNameOf(options));
}

Options optionsOf(const CommandLine& line, const QString& programDir)
{
    const QCommandLineParser& parser = line.parser;
    Options options;
    options.action = actionOf(line);
    options.scenario = scenarioOf(parser.value(line.scenario));
    options.userHome = QDir::homePath();
    options.peer = Endpoint::read(parser.value(line.connectTo));
    if (parser.isSet(line.record))
        options.recordFile = absolute(parser.value(line.record));
    if (parser.isSet(line.replay))
        options.replayFile = absolute(parser.value(line.replay));
    options.stateDir = parser.isSet(line.stateDir) ? absolute(parser.value(line.stateDir))
                                                   : defaultStateDir(options);
    options.pluginFile = parser.isSet(line.plugin)
                             ? absolute(parser.value(line.plugin))
                             : programDir + QLatin1String("/modules/libZanUpdateModule.so");
    options.publicKey = publicKeyOf(parser.value(line.publicKey));
    if (parser.isSet(line.screenshots))
        options.screenshotDir = absolute(parser.value(line.screenshots));
    options.fresh = parser.isSet(line.fresh);
    options.fast = parser.isSet(line.fast);
    options.headless = parser.isSet(line.headless);
    options.narrate = parser.isSet(line.narrate);
    options.observer = parser.isSet(line.observer);
    options.dark = parser.isSet(line.dark);
    options.user = attitudeNamed(parser.value(line.user)).value_or(Attitude::Willing);
    return options;
}

QString contradictionInConnection(const CommandLine& line, const Options& options)
{
    const QCommandLineParser& parser = line.parser;
    if (!parser.isSet(line.connectTo))
        return QString();
    if (!options.peer || options.peer->port == 0)
        return QStringLiteral("--connect: \"%1\" is no HOST:PORT with an IP address or localhost")
            .arg(parser.value(line.connectTo));
    for (const QCommandLineOption* own : {&line.scenario, &line.fast}) {
        if (parser.isSet(*own))
            return QStringLiteral("--%1 is for the simulated system that --connect leads to")
                .arg(own->names().constFirst());
    }
    return QString();
}

// What else says how the system is, or has one at all, has no place beside a record that does.
QString contradictionInReplay(const CommandLine& line)
{
    if (!line.parser.isSet(line.replay))
        return QString();
    for (const QCommandLineOption* other :
         {&line.scenario, &line.connectTo, &line.record, &line.observer}) {
        if (line.parser.isSet(*other))
            return QStringLiteral("--replay and --%1 exclude each other")
                .arg(other->names().constFirst());
    }
    return QString();
}

// Empty if what was asked for goes together.
QString contradictionIn(const CommandLine& line, const Options& options)
{
    if (!options.screenshotDir.isEmpty() && !options.headless)
        return QStringLiteral("--screenshots needs --headless");
    if (!attitudeNamed(line.parser.value(line.user)))
        return QStringLiteral("--user: there is no \"%1\"").arg(line.parser.value(line.user));
    for (const QCommandLineOption* path :
         {&line.record, &line.replay, &line.stateDir, &line.screenshots, &line.publicKey}) {
        if (line.parser.isSet(*path) && line.parser.value(*path).isEmpty())
            return QStringLiteral("--%1 needs a %2")
                .arg(path->names().constFirst(),
                     path->valueName() == QLatin1String("DIR") ? "folder" : "file");
    }
    const QString inReplay = contradictionInReplay(line);
    return inReplay.isEmpty() ? contradictionInConnection(line, options) : inReplay;
}

} // namespace

bool parseOptions(const QStringList& arguments, const QString& programDir, Options* options,
                  QString* error)
{
    CommandLine line;
    if (!line.parser.parse(arguments)) {
        *error = line.parser.errorText();
        return false;
    }
    if (!line.parser.positionalArguments().isEmpty()) {
        *error = QStringLiteral("Unexpected argument: %1")
                     .arg(line.parser.positionalArguments().constFirst());
        return false;
    }
    *options = optionsOf(line, programDir);
    *error = contradictionIn(line, *options);
    return error->isEmpty();
}

QString helpText()
{
    return CommandLine().parser.helpText();
}
