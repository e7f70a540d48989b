#include "simulatedaccess.h"

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

SimulatedAccess::SimulatedAccess(Scenario scenario, bool fast, Clock nowMs)
    : m_system(std::make_unique<SimulatedSystem>(std::move(scenario), std::move(nowMs))),
      m_link(std::make_unique<SimulatorLink>(*m_system, fast ? SimulatorLink::Pace::Fast
                                                             : SimulatorLink::Pace::Device))
{
}

SimulatedAccess::~SimulatedAccess() = default;

QStringList SimulatedAccess::stateFiles(const QString& stateDir)
{
    return SimulatedSystem::holdsState(stateFileIn(stateDir)) ? QStringList(stateFile)
                                                              : QStringList();
}

CommandLink& SimulatedAccess::link()
{
    return *m_link;
}

Equipment& SimulatedAccess::equipment()
{
    return *m_system;
}

QByteArray SimulatedAccess::identity() const
{
    return systemIdentity(scenarioToJson(m_system->scenario()));
}

std::optional<QString> SimulatedAccess::keepState(const QString& stateDir, bool fresh,
                                                  QString* error)
{
    const QString file = stateFileIn(stateDir);
    if (fresh && !SimulatedSystem::removeState(file, error))
        return std::nullopt;
    return m_system->loadState(file, error);
}
