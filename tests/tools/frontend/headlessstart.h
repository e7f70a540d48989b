#pragma once

#include <frontend.h>
#include <headlessrun.h>
#include <narrator.h>

#include <fixturefiles.h>

/// What a run tells, without what depends on how fast the machine is.
inline QStringList storyOf(const Narrator& narrator)
{
    QStringList story;
    for (const QString& line : narrator.told()) {
        if (!line.startsWith("progress: "))
            story += line;
    }
    return story;
}

/// The restart that outlasts a start, however slow the machine is.
constexpr int endlessBootMs = 600'000;
/// What is left of it for the next start: long enough to see it, and not to wait for it.
constexpr int seenBootMs = 500;

/// One start of the frontend with the built module, in fast mode.
struct Start
{
    Start(const Scenario& scenario, const FixtureFolder& folder, Attitude user = Attitude::Willing)
        : options(optionsFor(folder, user)), frontend(scenario, options)
    {
        QString error;
        if (frontend.prepare(&error))
            code = runHeadless(frontend, options, narrator);
        else
            qFatal("%s", qPrintable(error));
    }

    static Options optionsFor(const FixtureFolder& folder, Attitude user)
    {
        Options options;
        options.stateDir = folder.path("state");
        options.pluginFile = QStringLiteral(UPDATE_MODULE);
        options.headless = true;
        options.user = user;
        options.fast = true;
        return options;
    }

    Options options;
    Frontend frontend;
    Narrator narrator;
    ExitCode code = StartFailed;
};
