#pragma once

#include "channelwatcher.h"
#include "commandlink.h"

#include <IOManager.h>

#include <QElapsedTimer>
#include <QMap>
#include <QVector>

/// Sees what goes over a channel, on the user interface thread.
class ChannelListener
{
public:
    virtual ~ChannelListener() = default;
    /// A text is about to be sent. Queries may be asked meanwhile, and users.
    /// @return whether it may go; if not, the call fails as without an answer
    virtual bool sending(Operation operation, const QByteArray& text) = 0;
    /// The exchange of a text is over; nullopt: no reply came. Prepared texts, whose reply comes
    /// later, are left out.
    virtual void answered(Operation operation, const QByteArray& text,
                          const std::optional<Reply>& reply) = 0;
};

/// The frontend's command channel: expands the texts, keeps to the time-outs, and delivers messages
/// between modules. To be used from the user interface thread.
///
/// A command or setting that was prepared never waits: it is sent, and poll_reply() brings its
/// reply. Should another text be sent in between, the prepared reply is waited for first, so that
/// the controller has one text at a time. A text that is sent while another one is being waited
/// for, from an event that is served meanwhile, fails, and the receiver "standard" is told of it.
///
/// A query that gets no answer is asked again, as one lost reply would make a device look like
/// another one; settings and commands never are. Once the connection was lost every call fails
/// until renew(): what a module knows and plans is about the system of before, and what comes back
/// may be another one.
class HostChannel final : public IOManager
{
public:
    /// Time that the controller may take for anything that was not prepared.
    static constexpr int defaultTimeoutMs = 5000;

    /// How often a query is asked that gets no answer. Where nothing is answered at all, only once.
    static constexpr int maxAttempts = 3;

    /// @param link must outlive the channel
    explicit HostChannel(CommandLink& link) : m_link(link), m_connection(link.connection()) {}
    virtual ~HostChannel() = default;
    HostChannel(const HostChannel&) = delete;
    HostChannel& operator=(const HostChannel&) = delete;

    void prepare_reply(int kind, int timeoutMs, int pollFollows) override;
    int send_command(char* reply, const char* format, ...) override IOMANAGER_PRINTF(3, 4);
    int poll_reply(int mode) override;
    int get_string(char* value, const char* format, ...) override IOMANAGER_PRINTF(3, 4);
    int get_int(int* value, const char* format, ...) override IOMANAGER_PRINTF(3, 4);
    int set_value(const char* format, ...) override IOMANAGER_PRINTF(2, 3);
    /// A message to a name that nobody registered is dropped.
    void post_message(const char* receiver, const char* sender, int kind,
                      const char* message) override;
    /// Takes the place of an earlier receiver of that name.
    void register_receiver(const char* name, MessageReceiver* receiver) override;
    void get_address(char* address) override;

    /// @param listener null for none; otherwise it must outlive the channel or be taken away
    void setListener(ChannelListener* listener) { m_listener = listener; }
    /// @param watcher must outlive the channel, or be taken away
    void addWatcher(ChannelWatcher& watcher) { m_watchers.append(&watcher); }
    /// Takes @p watcher away.
    void removeWatcher(ChannelWatcher& watcher) { m_watchers.removeAll(&watcher); }

    /// Takes the system that the link leads to now. To be called before a module is loaded.
    void renew();
    /// Whether the connection is still the one of the last renew().
    bool isCurrent() const { return m_connection == m_link.connection(); }

    /// The frontend's own end of register_receiver(), for a receiver that is about to go.
    void forgetReceiver(const char* name) { m_receivers.remove(name); }

private:
    /// The exchange between a prepared text and its poll_reply().
    struct Pending
    {
        Operation operation;
        QByteArray text;
        char* reply; ///< null for a setting
        int timeoutMs;
        QElapsedTimer age;
        std::optional<bool> outcome;
    };

    std::optional<Reply> exchange(Operation operation, const QByteArray& text);
    int sendOrStart(Operation operation, const QByteArray& text, char* reply);
    void finishPending();
    std::optional<Reply> ask(Operation operation, const QByteArray& text);
    bool maySend(Operation operation, const QByteArray& text);
    void refuse(const QByteArray& reason, const QByteArray& text);
    void tellAnswered(Operation operation, const QByteArray& text,
                      const std::optional<Reply>& reply);
    std::optional<Reply> waitForReply(int timeoutMs);
    void letWindowsPaint();
    bool send(Operation operation, const QByteArray& text);

    CommandLink& m_link;
    ChannelListener* m_listener = nullptr;
    QVector<ChannelWatcher*> m_watchers;
    quint64 m_connection;
    bool m_hasToldOfLoss = false;
    bool m_isSilent = false; // the last query got no answer, as often as it was asked
    bool m_isWaiting = false;
    std::optional<int> m_preparedTimeoutMs;
    std::optional<Pending> m_pending;
    QMap<QByteArray, MessageReceiver*> m_receivers;
};
