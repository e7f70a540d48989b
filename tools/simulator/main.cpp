#include "simulatedsystem.h"

#include <ownfolder.h>
#include <serveroptions.h>
#include <systemserver.h>

#include <QCoreApplication>
#include <QFileInfo>

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

// Faults that were armed and the restart keep their times.
void makeFast(ScenarioTiming* timing)
{
    timing->recordsPerSecond = 0;
    timing->cameraRecordsPerSecond = 0;
    timing->verifyMs = 0;
    timing->cameraVerifyMs = 0;
    timing->searchMs = 0;
}

bool keepState(SimulatedSystem& system, const ServerOptions& options, QString* error)
{
    QObject::connect(&system, &SimulatedSystem::trouble, warn);
    if (options.stateFile.isEmpty())
        return true;
    if (options.fresh && !SimulatedSystem::removeState(options.stateFile, error))
        return false;
    const std::optional<QString> damage = system.loadState(options.stateFile, error);
    if (damage && !damage->isEmpty())
        warn(QStringLiteral("The state was set aside: %1").arg(*damage));
    return damage.has_value();
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
    FolderLock lock(QFileInfo(options.stateFile).path());
    if (!options.stateFile.isEmpty() && !lock.take(lockTimeoutMs, &error))
        return fail(ServerFailed, error);
    SimulatedSystem system(*scenario);
    if (!keepState(system, options, &error))
        return fail(ServerFailed, error);
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
