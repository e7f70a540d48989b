#include "runmodes.h"

#include "console.h"
#include "frontend.h"
#include "headlessrun.h"
#include "quitsignals.h"

#include <narrator.h>
#include <onlooker.h>
#include <remoteaccess.h>
#include <replayaccess.h>
#include <scenario.h>
#include <simulatoraccess.h>

#include <QApplication>
#include <QDir>

#include <optional>

namespace {

std::unique_ptr<SystemAccess> accessFor(const Options& options, QString* error)
{
    if (options.peer)
        return RemoteAccess::connectTo(*options.peer, error);
    if (!options.replayFile.isEmpty())
        return ReplayAccess::open(options.replayFile, error);
    std::optional<Scenario> scenario = ScenarioReader::read(options.scenario, error);
    if (!scenario)
        return nullptr;
    return std::make_unique<SimulatorAccess>(std::move(*scenario), options.fast);
}

// Nothing if another system has taken the place of the one that was operated.
std::optional<int> runOnSystem(const Options& options, const QuitSignals& quitSignals,
                               Narrator& narrator)
{
    QString error;
    std::unique_ptr<SystemAccess> access = accessFor(options, &error);
    if (!access)
        return fail(StartFailed, error);
    Frontend frontend(std::move(access), options);
    if (!frontend.prepare(&error))
        return failVisibly(options, error);
    QObject::connect(&quitSignals, &QuitSignals::wanted, &frontend, &Frontend::quit);
    if (options.headless)
        return runHeadless(frontend, options, narrator);
    std::optional<Onlooker> onlooker;
    if (options.narrate)
        onlooker.emplace(frontend.window(), narrator);
    return frontend.run() ? std::make_optional<int>(Success) : std::nullopt;
}

} // namespace

int runFrontend(Options options)
{
    // Notes refer to their pictures from the program's folder on.
    QDir::setCurrent(QCoreApplication::applicationDirPath());
    const QuitSignals quitSignals;
    Narrator narrator;
    std::optional<int> code;
    while (!(code = runOnSystem(options, quitSignals, narrator))) {
        options.fresh = false;
        options.dark = false; // from now on the window looks as the user left it
    }
    return *code;
}
