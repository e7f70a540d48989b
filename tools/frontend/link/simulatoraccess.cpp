#include "simulatoraccess.h"

#include "simulatorlink.h"

#include <equipmentlanguage.h>

#include <utility>

namespace {

const QLatin1String stateFile("system.json");

QString stateFileIn(const QString& stateDir)
{
    return stateDir + QLatin1Char('/') + stateFile;
}

} // namespace

SimulatorAccess::SimulatorAccess(Scenario scenario, bool fast, Clock nowMs)
    : m_system(std::make_unique<SimulatedSystem>(std::move(scenario), std::move(nowMs))),
      m_link(std::make_unique<SimulatorLink>(*m_system, fast ? SimulatorLink::Pace::Fast
                                                             : SimulatorLink::Pace::Device))
{
}

SimulatorAccess::~SimulatorAccess() = default;

QStringList SimulatorAccess::stateFiles(const QString& stateDir)
{
    return SimulatedSystem::holdsState(stateFileIn(stateDir)) ? QStringList(stateFile)
                                                              : QStringList();
}

CommandLink& SimulatorAccess::link()
{
    return *m_link;
}

Equipment& SimulatorAccess::equipment()
{
    return *m_system;
}

QByteArray SimulatorAccess::identity() const
{
    return systemIdentity(scenarioToJson(m_system->scenario()));
}

std::optional<QString> SimulatorAccess::keepState(const QString& stateDir, bool fresh,
                                                  QString* error)
{
    const QString file = stateFileIn(stateDir);
    if (fresh && !SimulatedSystem::removeState(file, error))
        return std::nullopt;
    return m_system->loadState(file, error);
}
