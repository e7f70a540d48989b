#include "console.h"

#include <scenario.h>
#include <version.h>

#include <QMessageBox>

#include <cstdio>
#include <optional>

namespace {

void print(FILE* stream, const QString& text)
{
    std::fputs(text.toLocal8Bit().constData(), stream);
}

} // namespace

int fail(ExitCode code, const QString& text)
{
    print(stderr, QStringLiteral("demo-frontend: %1\n").arg(text));
    return code;
}

int failVisibly(const Options& options, const QString& text)
{
    if (!options.headless)
        QMessageBox::critical(nullptr, QStringLiteral("VORNIX3"), text);
    return fail(StartFailed, text);
}

namespace {

int listScenarios()
{
    QString error;
    const std::optional<QString> list = ScenarioReader::listShipped(&error);
    if (!list)
        return fail(StartFailed, error);
    print(stdout, *list);
    return Success;
}

} // namespace

int runConsole(Options::Action action)
{
    if (action == Options::Action::ListScenarios)
        return listScenarios();
    print(stdout, action == Options::Action::ShowHelp
                      ? helpText()
                      : QStringLiteral("demo-frontend %1\n").arg(QLatin1String(frontendVersion)));
    return Success;
}
