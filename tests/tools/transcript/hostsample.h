#pragma once

#include <ModuleInterface.h>
#include <recordingchannel.h>

#include <QDir>

#include <memory>

/// The sample of docs/transcripts.md: what a host adds to record what its module calls.
class RecordingHost
{
public:
    void giveChannel(ModuleInterface& module, IOManager& ownChannel,
                     const BackendVersions& versions, bool observerMode);

private:
    std::unique_ptr<RecordingChannel> m_recorder;
};
