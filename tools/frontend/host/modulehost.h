#pragma once

#include "deliverygate.h"
#include "modulesession.h"
#include "textreceiver.h"

#include <memory>

class HostChannel;
class RecordingChannel;
class ReplayChannel;
struct Transcript;

/// What a ModuleHost has to know of the module and of the wishes for it.
struct ModuleWishes
{
    QString file;       ///< the plug-in, absolute
    QString recordFile; ///< absolute; empty: what is called is not recorded
    const Transcript* transcript =
        nullptr;           ///< what answers in the place of the controllers, or null
    bool observer = false; ///< whether the user may only look on
};

/// All that a host does for the update module, and the class to begin with when it is to run in
/// another program. In the order of a module's life:
///
/// 1. setPublicKey(), if only a proven delivery of update files may be installed.
/// 2. prepare() loads the plug-in, or leaves that for later if the delivery must be proven first.
/// 3. enter(), each time that the controllers answer: checks the delivery, gives the module the
///    channel, the parent of its windows, the versions and whether its user only looks on, and
///    takes its menu entries. entered() hands them on to whoever has the menus.
/// 4. tell() carries what the module wants to know of the host, such as the theme. What it says
///    itself comes as logged() and readyToShutDown().
/// 5. leave(), when the controllers no longer answer or the program ends: leaving() is the last
///    moment of the menu entries. enter() may follow again.
///
/// Neither enter() nor leave() may be called while the module waits for a reply or shows a modal
/// window. To be used from the user interface thread.
class ModuleHost : public QObject
{
    Q_OBJECT

public:
    /// @param channel to the controllers; takes the receivers of the module's messages
    /// @param window parent of the module's windows
    ///
    /// Both, and the transcript, must outlive the host.
    ModuleHost(HostChannel& channel, QWidget& window, const ModuleWishes& wishes);
    /// Has the module leave.
    ~ModuleHost() override;

    /// From now on only a delivery that is signed with this key lets the module in.
    /// @param keyOrFile,error as DeliveryCheck::setPublicKey() has them
    bool setPublicKey(const QString& keyOrFile, QString* error);

    /// Loads the module, unless its delivery must be proven first: nothing of it runs before.
    /// @return false if it cannot be loaded; @p error, not null, says why
    bool prepare(QString* error);

    /// Checks the delivery, loads the module if that is still to be done, and has it take part in
    /// a system with these versions. Events are served meanwhile, the user's only by message boxes.
    /// @return false if the module was kept out, as message() tells
    bool enter(const BackendVersions& versions);

    /// Has the module end its work and free its windows; does nothing outside of a stay.
    void leave();

    /// Whether the module takes part.
    bool isInside() const { return m_session != nullptr; }
    /// Whether the last enter() kept it out.
    bool isRefused() const { return m_isRefused; }

    /// Sends the module a message; dropped while it does not take part.
    void tell(const char* text);

    /// The replay of the transcript; null without one, and before the first stay.
    const ReplayChannel* replay() const { return m_replay.get(); }

signals:
    /// A line for the log.
    void message(const QString& text);
    /// What the module, or another sender on the channel, wants to stand in the log.
    void logged(const QString& sender, const QString& text);
    /// How far the check of a delivery is that takes a while, in percent.
    void checked(int percent);
    /// The module takes part. Its menu entries stay its own, and are valid until leaving().
    void entered(const QList<GuiElement*>& elements, const QString& nameAndVersion);
    /// The module is about to go: its menu entries must be out of the menus after this.
    void leaving();
    /// The module has ended its work.
    void readyToShutDown();

private:
    bool admit();
    bool load(QString* error);
    IOManager& moduleChannel();
    IOManager& recordedChannel();

    HostChannel& m_channel;
    QWidget& m_window;
    ModuleWishes m_wishes;
    DeliveryGate m_gate;
    TextReceiver m_logReceiver;
    TextReceiver m_windowReceiver;
    bool m_isRefused = false;
    ModuleInterface* m_module = nullptr;
    std::unique_ptr<BackendVersions> m_versions;
    std::unique_ptr<RecordingChannel> m_recorder;
    std::unique_ptr<ReplayChannel> m_replay;
    std::unique_ptr<ModuleSession> m_session; // last: it uses all the others
};
