#include "frontend.h"
#include "headlessrun.h"
#include "narrator.h"
#include "options.h"
#include "remoteaccess.h"
#include "replayaccess.h"
#include "simulatedaccess.h"
#include "version.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QMessageBox>

#include <cstdio>

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

// The folder of the program, before there is an application object that knows it.
QString programFolder()
{
    return QFileInfo(QStringLiteral("/proc/self/exe")).canonicalPath();
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
    if (!parseOptions(argumentList(argc, argv), programFolder(), &options, &error))
        return fail(WrongUsage, error + QStringLiteral(" (--help lists the options)"));
    if (options.action != Options::Action::Run)
        return runConsole(argc, argv, options.action);

    moveHome(Frontend::homeFolder(options.stateDir));
    if (options.headless && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    previousHandler = qInstallMessageHandler(dropPlatformChatter);
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    const QApplication application(argc, argv);
    return runFrontend(options);
}
