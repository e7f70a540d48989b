#include "programstart.h"

#include "console.h"
#include "deliverylayout.h"

#include <ownfolder.h>
#include <scenario.h>

#include <QDir>

#include <cerrno>
#include <cstring>
#include <vector>

#include <unistd.h>

namespace {

constexpr int lockTimeoutMs = 1000;

} // namespace

QFileInfo programFile()
{
    return QFileInfo(QFileInfo(QStringLiteral("/proc/self/exe")).canonicalFilePath());
}

namespace {

// Lays out a frontend with the files that the scenario wants. One that runs there must not be
// disturbed by that.
std::optional<QString> layOutBelow(const QString& stateDir, const Scenario& scenario,
                                   const QString& target, QString* error)
{
    FolderLock lock(stateDir);
    return lock.take(lockTimeoutMs, error)
               ? layOutFrontend(scenario, programFile().filePath(), target, error)
               : std::nullopt;
}

} // namespace

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
    return layOutBelow(options.stateDir, *scenario, folder, error);
}

int goOnWith(const QString& program, QStringList arguments, const QString& stateDir)
{
    arguments += {QStringLiteral("--state-dir"), stateDir};
    std::vector<QByteArray> texts;
    texts.reserve(static_cast<std::size_t>(arguments.size()));
    for (const QString& argument : qAsConst(arguments))
        texts.push_back(argument.toLocal8Bit());
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (QByteArray& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    ::execv(QFile::encodeName(program).constData(), pointers.data());
    return fail(StartFailed,
                QStringLiteral("%1: %2").arg(program, QString::fromLocal8Bit(strerror(errno))));
}

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
