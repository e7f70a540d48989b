#include "modulehost.h"

#include "hostchannel.h"
#include "version.h"

#include <recordingchannel.h>
#include <replaychannel.h>

#include <QCoreApplication>

namespace {

// The names by which the module and the host find each other.
const char* const updateModule = "UpdateModule";
const char* const mainWindow = "Main_Window";
const char* const log = "standard";

} // namespace

// The recorder stands alone, so it says itself how long a reply can be.
static_assert(TranscriptForm::replyBytes == replyBytes);

ModuleHost::ModuleHost(HostChannel& channel, QWidget& window, const ModuleWishes& wishes)
    : m_channel(channel), m_window(window), m_wishes(wishes), m_gate(window),
      m_logReceiver(
          [this](const QString& sender, const QString& text) { emit logged(sender, text); }),
      m_windowReceiver([this](const QString& /*sender*/, const QString& text) {
          if (text == QLatin1String("AppReadyToShutdown"))
              emit readyToShutDown();
      })
{
    m_channel.register_receiver(log, &m_logReceiver);
    m_channel.register_receiver(mainWindow, &m_windowReceiver);
    connect(&m_gate, &DeliveryGate::message, this, &ModuleHost::message);
    connect(&m_gate, &DeliveryGate::progressed, this, &ModuleHost::checked);
}

ModuleHost::~ModuleHost()
{
    leave();
    m_channel.forgetReceiver(mainWindow);
    m_channel.forgetReceiver(log);
}

bool ModuleHost::setPublicKey(const QString& keyOrFile, QString* error)
{
    return m_gate.setPublicKey(keyOrFile, error);
}

bool ModuleHost::prepare(QString* error)
{
    return m_gate.asksForProof() || load(error);
}

bool ModuleHost::load(QString* error)
{
    if (!m_module)
        m_module = loadModule(m_wishes.file, error);
    return m_module != nullptr;
}

bool ModuleHost::enter(const BackendVersions& versions)
{
    m_versions = std::make_unique<BackendVersions>(versions);
    m_isRefused = !admit();
    if (m_isRefused)
        return false;
    m_session = std::make_unique<ModuleSession>(
        *m_module,
        HostParameters{&moduleChannel(), &m_window, m_versions.get(), m_wishes.observer});
    const QString nameAndVersion =
        QStringLiteral("%1 %2").arg(m_module->get_module_name(), m_module->get_module_version());
    emit entered(m_session->elements(), nameAndVersion);
    emit message(tr("Module loaded: %1").arg(nameAndVersion));
    tell(frontendVersion);
    return true;
}

// At each entry, as the module reads its files anew then.
bool ModuleHost::admit()
{
    if (!m_gate.letsIn(QCoreApplication::applicationDirPath()))
        return false;
    QString error;
    if (load(&error))
        return true;
    emit message(error);
    return false;
}

void ModuleHost::leave()
{
    if (!m_session)
        return;
    emit leaving();
    // From here on the module's receiver may be gone at any moment.
    m_channel.forgetReceiver(updateModule);
    m_session.reset();
    m_recorder.reset();
    if (!m_replay || !m_replay->departure().isEmpty())
        return;
    emit message(m_replay->verdict().isEmpty() ? tr("Everything was called as recorded.")
                                               : m_replay->verdict());
}

void ModuleHost::tell(const char* text)
{
    m_channel.post_message(updateModule, mainWindow, 1, text);
}

IOManager& ModuleHost::moduleChannel()
{
    if (m_wishes.transcript) {
        m_replay = std::make_unique<ReplayChannel>(*m_wishes.transcript, m_channel);
        return *m_replay;
    }
    return m_wishes.recordFile.isEmpty() ? m_channel : recordedChannel();
}

IOManager& ModuleHost::recordedChannel()
{
    m_recorder = std::make_unique<RecordingChannel>(
        m_channel, m_wishes.recordFile, TranscriptHead{*m_versions, m_wishes.observer},
        QStringLiteral("demo-frontend %1").arg(QLatin1String(frontendVersion)));
    if (m_recorder->isRecording())
        emit message(tr("Recording to %1").arg(m_recorder->fileName()));
    return *m_recorder;
}
