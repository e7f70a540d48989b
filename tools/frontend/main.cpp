#include "deliverylayout.h"
#include "frontend.h"
#include "headlessrun.h"
#include "narrator.h"
#include "onlooker.h"
#include "options.h"
#include "remoteaccess.h"
#include "replayaccess.h"
#include "simulatedaccess.h"
#include "version.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QLockFile>
#include <QMessageBox>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <optional>
#include <vector>

#include <unistd.h>

namespace {

void print(FILE* stream, const QString& text)
{
    std::fputs(text.toLocal8Bit().constData(), stream);
}

int fail(ExitCode code, const QString& text)
{
    print(stderr, QStringLiteral("demo-frontend: %1\n").arg(text));
    return code;
}

QStringList argumentList(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments += QString::fromLocal8Bit(argv[i]);
    return arguments;
}

// The program itself, before there is an application object that knows it.
QFileInfo programFile()
{
    return QFileInfo(QFileInfo(QStringLiteral("/proc/self/exe")).canonicalFilePath());
}

int listScenarios()
{
    QString error;
    const std::optional<QString> list = ScenarioReader::listShipped(&error);
    if (!list)
        return fail(StartFailed, error);
    print(stdout, *list);
    return Success;
}

// Everything that keeps files in the user's home finds another one. The way to the display must
// not be lost by that.
void moveHome(const QString& home)
{
    QDir().mkpath(home);
    if (!qEnvironmentVariableIsSet("XDG_RUNTIME_DIR")) {
        const QString runtimeDir = home + QLatin1String("/runtime");
        QDir().mkpath(runtimeDir);
        QFile::setPermissions(runtimeDir, QFile::ReadUser | QFile::WriteUser | QFile::ExeUser);
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtimeDir));
    }
    if (!qEnvironmentVariableIsSet("XAUTHORITY"))
        qputenv("XAUTHORITY", QFile::encodeName(QDir::homePath() + "/.Xauthority"));
    for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"})
        qunsetenv(name);
    qputenv("HOME", QFile::encodeName(home));
}

// Lays out a frontend with the files that the scenario wants. One that runs there must not be
// disturbed by that.
QString layOutBelow(const QString& stateDir, const Scenario& scenario, const QString& target,
                    QString* error)
{
    QLockFile lock(Frontend::lockFile(stateDir));
    if (QDir().mkpath(stateDir) && lock.tryLock())
        return layOutFrontend(scenario, programFile().filePath(), target, error);
    *error = QStringLiteral("%1: the state folder is in use or cannot be written").arg(stateDir);
    return QString();
}

// Starts @p program in the place of this one, and returns only if that fails. The state folder,
// which would depend on where the program stands, is told last, so that it counts.
int goOnWith(const QString& program, QStringList arguments, const QString& stateDir)
{
    arguments += {QStringLiteral("--state-dir"), stateDir};
    std::vector<QByteArray> texts;
    for (const QString& argument : qAsConst(arguments))
        texts.push_back(argument.toLocal8Bit());
    std::vector<char*> pointers;
    for (QByteArray& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    ::execv(QFile::encodeName(program).constData(), pointers.data());
    return fail(StartFailed,
                QStringLiteral("%1: %2").arg(program, QString::fromLocal8Bit(strerror(errno))));
}

// The program to go on with, where the scenario wants only some of the delivered files; empty if
// this one will do. nullopt on failure.
std::optional<QString> programFor(const Options& options, QString* error)
{
    if (options.peer || !options.replayFile.isEmpty())
        return QString();
    const std::optional<Scenario> scenario = ScenarioReader::read(options.scenario, error);
    if (!scenario)
        return std::nullopt;
    const QString folder = options.stateDir + QLatin1String("/delivered");
    if (!wantsOwnDelivery(*scenario) ||
        programFile().path() == QFileInfo(folder).canonicalFilePath())
        return QString();
    const QString program = layOutBelow(options.stateDir, *scenario, folder, error);
    return program.isEmpty() ? std::nullopt : std::make_optional(program);
}

std::unique_ptr<SystemAccess> accessFor(const Options& options, QString* error)
{
    if (options.peer)
        return RemoteAccess::connectTo(*options.peer, error);
    if (!options.replayFile.isEmpty())
        return ReplayAccess::open(options.replayFile, error);
    std::optional<Scenario> scenario = ScenarioReader::read(options.scenario, error);
    if (!scenario)
        return nullptr;
    return std::make_unique<SimulatedAccess>(std::move(*scenario), options.fast);
}

int runFrontend(const Options& options)
{
    QString error;
    std::unique_ptr<SystemAccess> access = accessFor(options, &error);
    if (!access)
        return fail(StartFailed, error);

    // Notes refer to their pictures from the program's folder on.
    QDir::setCurrent(QCoreApplication::applicationDirPath());
    Frontend frontend(std::move(access), options);
    Narrator narrator;
    if (!frontend.prepare(&error)) {
        if (!options.headless)
            QMessageBox::critical(nullptr, QStringLiteral("VORNIX3"), error);
        return fail(StartFailed, error);
    }
    if (options.headless)
        return runHeadless(frontend, options, narrator);
    std::optional<Onlooker> onlooker;
    if (options.narrate)
        onlooker.emplace(frontend.window(), narrator);
    frontend.run();
    return Success;
}

QtMessageHandler previousHandler = nullptr;

// Without a display Qt says this of every window.
void dropPlatformChatter(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    if (text != QLatin1String("This plugin does not support propagateSizeHints()"))
        previousHandler(type, context, text);
}

int runConsole(int argc, char** argv, Options::Action action)
{
    const QCoreApplication application(argc, argv);
    if (action == Options::Action::ListScenarios)
        return listScenarios();
    print(stdout, action == Options::Action::ShowHelp
                      ? helpText()
                      : QStringLiteral("demo-frontend %1\n").arg(QLatin1String(frontendVersion)));
    return Success;
}

} // namespace

int main(int argc, char** argv)
{
    Options options;
    QString error;
    const QStringList arguments = argumentList(argc, argv);
    if (!parseOptions(arguments, programFile().path(), &options, &error))
        return fail(WrongUsage, error + QStringLiteral(" (--help lists the options)"));
    if (options.action != Options::Action::Run)
        return runConsole(argc, argv, options.action);

    const std::optional<QString> program = programFor(options, &error);
    if (!program)
        return fail(StartFailed, error);
    if (!program->isEmpty())
        return goOnWith(*program, arguments, options.stateDir);

    moveHome(Frontend::homeFolder(options.stateDir));
    if (options.headless && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    previousHandler = qInstallMessageHandler(dropPlatformChatter);
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    // The options are the frontend's own; Qt would take "--plugin" for one of its own.
    int nameOnly = 1;
    const QApplication application(nameOnly, argv);
    return runFrontend(options);
}
