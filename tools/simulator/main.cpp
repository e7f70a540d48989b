#include "serveroptions.h"
#include "systemserver.h"

#include <simulatedsystem.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLockFile>

#include <cstdio>

namespace {

constexpr int lockTimeoutMs = 1000;
constexpr char simulatorVersion[] = "2.0.0";

void print(FILE* stream, const QString& text)
{
    std::fputs(text.toLocal8Bit().constData(), stream);
    std::fflush(stream);
}

void warn(const QString& text)
{
    print(stderr, QStringLiteral("simulated-system: %1\n").arg(text));
}

int fail(ServerExitCode code, const QString& text)
{
    warn(text);
    return code;
}

int listScenarios()
{
    QString error;
    const std::optional<QString> list = ScenarioReader::listShipped(&error);
    if (!list)
        return fail(ServerFailed, error);
    print(stdout, *list);
    return ServerSuccess;
}

// What was armed on purpose and the restart keep their times.
void makeFast(ScenarioTiming* timing)
{
    timing->recordsPerSecond = 0;
    timing->cameraRecordsPerSecond = 0;
    timing->verifyMs = 0;
    timing->cameraVerifyMs = 0;
    timing->searchMs = 0;
}

void keepState(SimulatedSystem& system, const ServerOptions& options)
{
    QObject::connect(&system, &SimulatedSystem::trouble, warn);
    if (options.stateFile.isEmpty())
        return;
    if (options.fresh)
        QFile::remove(options.stateFile);
    QString damage;
    if (!system.loadState(options.stateFile, &damage))
        warn(QStringLiteral("The state was set aside: %1").arg(damage));
}

int serve(const ServerOptions& options)
{
    QString error;
    std::optional<Scenario> scenario = ScenarioReader::read(options.scenario, &error);
    if (!scenario)
        return fail(ServerFailed, error);
    if (options.fast)
        makeFast(&scenario->timing);

    // The same as of a frontend that simulates the system itself.
    const QString stateFolder = QFileInfo(options.stateFile).path();
    QLockFile lock(stateFolder + QLatin1String("/lock"));
    if (!options.stateFile.isEmpty() &&
        (!QDir().mkpath(stateFolder) || !lock.tryLock(lockTimeoutMs)))
        return fail(ServerFailed,
                    QStringLiteral("%1: another process uses this folder, or it cannot be written")
                        .arg(stateFolder));
    SimulatedSystem system(*scenario);
    keepState(system, options);
    SystemServer server(system);
    if (!server.listen(options.listenAt, &error))
        return fail(ServerFailed, error);
    if (!options.listenAt.address.isLoopback())
        warn(QStringLiteral("Whoever reaches this machine can operate the simulated system."));
    print(stdout, QStringLiteral("Listening on %1\n").arg(server.endpoint().text()));
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    ServerOptions options;
    QString error;
    if (!parseServerOptions(QCoreApplication::arguments(), &options, &error))
        return fail(ServerWrongUsage, error + QStringLiteral(" (--help lists the options)"));
    switch (options.action) {
    case ServerOptions::Action::ShowHelp:
        print(stdout, serverHelpText());
        return ServerSuccess;
    case ServerOptions::Action::ShowVersion:
        print(stdout, QStringLiteral("simulated-system %1\n").arg(QLatin1String(simulatorVersion)));
        return ServerSuccess;
    case ServerOptions::Action::ListScenarios:
        return listScenarios();
    case ServerOptions::Action::Serve:
        break;
    }
    return serve(options);
}
