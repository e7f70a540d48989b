#include "headlessrun.h"

#include "devicesbehind.h"
#include "frontend.h"

#include <narrator.h>
#include <releasecatalogue.h>
#include <replaychannel.h>
#include <screenshots.h>
#include <userdriver.h>
#include <watchdog.h>

#include <QCoreApplication>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <limits>

namespace {

// Longer than the longest time that a module may wait for a controller.
constexpr std::chrono::seconds patience(180);

} // namespace

// The thread that could clean up is the one that hangs.
[[noreturn]] static void giveUp(const QString& place)
{
    std::printf("Nothing has moved for %d s. The last window was: %s\n",
                static_cast<int>(patience.count()), qPrintable(place));
    std::fflush(stdout);
    std::_Exit(Hanging);
}

namespace {

ExitCode judge(const Equipment& equipment, const QStringList& refusals, Narrator& narrator)
{
    const auto tell = [&](const QString& text) {
        narrator.tell(QStringLiteral("result"), text);
    };
    for (const QString& refusal : refusals)
        tell(QStringLiteral("refused: ") + refusal);
    if (!equipment.isAtHand()) {
        tell(QStringLiteral("The simulated system is gone, so nothing is known of its versions."));
        return StartFailed;
    }
    if (!equipment.isReachable()) {
        tell(QStringLiteral("The controllers restart. Start again to see what became of it."));
        return StartAgain;
    }
    const QString updateFiles = updateFolder(QCoreApplication::applicationDirPath());
    const QStringList missing = devicesBehind(ReleaseCatalogue::readAll(updateFiles), equipment);
    for (const QString& device : missing)
        tell(device);
    if (!missing.isEmpty()) {
        tell(QStringLiteral("Not all controllers and cameras run the newest versions."));
        return NotNewest;
    }
    tell(QStringLiteral("All controllers and cameras run the newest versions."));
    return Success;
}

// Whether there is more to do, once nothing is left that the windows ask for: calls of the record
// that are not made yet, and fewer of them at every look.
std::function<bool()> moreIn(const Frontend& frontend)
{
    return [&frontend, left = std::numeric_limits<int>::max()]() mutable {
        const int before = left;
        left = frontend.replay() ? frontend.replay()->callsLeft() : 0;
        return left > 0 && left < before;
    };
}

ExitCode judge(const ReplayChannel& replay, Narrator& narrator)
{
    const QString verdict = replay.verdict();
    narrator.tell(QStringLiteral("result"),
                  verdict.isEmpty() ? QStringLiteral("Everything was called as recorded.")
                                    : verdict);
    return verdict.isEmpty() ? Success : Departed;
}

} // namespace

ExitCode runHeadless(Frontend& frontend, const Options& options, Narrator& narrator)
{
    Screenshots screenshots(options.screenshotDir, options.stateDir + "/last-picture");
    Watchdog watchdog(patience, giveUp);
    UserDriver driver(frontend.window(), narrator, screenshots, watchdog, options.user);
    driver.mainWindow().setMoreToDo(moreIn(frontend));
    driver.mainWindow().setSystemGone([&frontend] { return !frontend.equipment().isAtHand(); });
    frontend.run();
    if (frontend.isModuleRefused()) {
        narrator.tell(QStringLiteral("result"),
                      QStringLiteral("The update module was not loaded, so nothing was updated."));
        return StartFailed;
    }
    if (frontend.replay())
        return judge(*frontend.replay(), narrator);
    frontend.equipment().catchUp();
    return judge(frontend.equipment(), driver.refusals(), narrator);
}
