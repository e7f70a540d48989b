#include "simulatedaccess.h"

#include <QFile>

#include <utility>

SimulatedAccess::SimulatedAccess(Scenario scenario, bool fast)
    : m_system(std::move(scenario)),
      m_link(m_system, fast ? SimulatorLink::Pace::Fast : SimulatorLink::Pace::Device)
{
}

QString SimulatedAccess::keepState(const QString& stateDir, bool fresh)
{
    const QString file = stateDir + QLatin1String("/system.json");
    if (fresh)
        QFile::remove(file);
    QString damage;
    m_system.loadState(file, &damage);
    return damage;
}
