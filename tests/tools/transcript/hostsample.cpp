#include "hostsample.h"

void RecordingHost::giveChannel(ModuleInterface& module, IOManager& ownChannel,
                                const BackendVersions& versions, bool observerMode)
{
    // Sample begins
    m_recorder = std::make_unique<RecordingChannel>(
        ownChannel, QDir::homePath() + QStringLiteral("/update.transcript"),
        TranscriptHead{versions, observerMode}, QStringLiteral("my-frontend v3.3.0"));
    module.set_param("CommandManager", QVariant::fromValue<IOManager*>(m_recorder.get()));
    // Sample ends
}
