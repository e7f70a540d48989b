#include "replayaccess.h"

#include <QFileInfo>

namespace {

// Instead of an address the views show the file that stands for the controllers.
Scenario scenarioOf(const Transcript& transcript)
{
    const QString file = QFileInfo(transcript.file).fileName();
    Scenario scenario;
    scenario.name = QFileInfo(file).completeBaseName();
    scenario.title = QStringLiteral("Replay of %1").arg(file);
    scenario.protocol = transcript.head.versions.protocol();
    scenario.backendModel = transcript.head.versions.zanModel();
    scenario.observer = transcript.head.observer;
    scenario.controllers.append(ScenarioController());
    scenario.controllers.first().address = file;
    return scenario;
}

} // namespace

ReplayAccess::ReplayAccess(const Transcript& transcript)
    : m_transcript(transcript), m_equipment(transcript)
{
}

std::unique_ptr<ReplayAccess> ReplayAccess::open(const QString& fileName, QString* error)
{
    const std::optional<Transcript> transcript = Transcript::read(fileName, error);
    return transcript ? std::make_unique<ReplayAccess>(*transcript) : nullptr;
}

ReplayAccess::NoEquipment::NoEquipment(const Transcript& transcript)
    : m_scenario(scenarioOf(transcript))
{
}
