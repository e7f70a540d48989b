#pragma once

#include "commandlink.h"

#include <IOManager.h>
#include <recordingchannel.h>

#include <QElapsedTimer>
#include <QMap>

/// Sees what goes over a channel, on the user interface thread.
class ChannelListener
{
public:
    virtual ~ChannelListener() = default;
    /// A text is about to be sent.
    virtual void sending(Operation operation, const QByteArray& text) = 0;
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
class HostChannel final : public IOManager
{
public:
    /// Room that every caller has for a reply, the terminating zero included; longer ones are cut.
    static constexpr int replyBytes = TranscriptForm::replyBytes;
    /// Time that the controller may take for anything that was not prepared.
    static constexpr int defaultTimeoutMs = 5000;

    /// @param link must outlive the channel
    explicit HostChannel(CommandLink& link) : m_link(link) {}
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

    /// The frontend's own end of register_receiver(), for a receiver that is about to go.
    void forgetReceiver(const char* name) { m_receivers.remove(name); }

private:
    /// The exchange between a prepared text and its poll_reply().
    struct Pending
    {
        char* reply; ///< null for a setting
        int timeoutMs;
        QElapsedTimer age;
        std::optional<bool> outcome;
    };

    std::optional<Reply> exchange(Operation operation, const QByteArray& text);
    int sendOrStart(Operation operation, const QByteArray& text, char* reply);
    void finishPending();
    bool isFree(const QByteArray& text);
    std::optional<Reply> waitForReply(int timeoutMs);
    void send(Operation operation, const QByteArray& text);

    CommandLink& m_link;
    ChannelListener* m_listener = nullptr;
    bool m_isWaiting = false;
    std::optional<int> m_preparedTimeoutMs;
    std::optional<Pending> m_pending;
    QMap<QByteArray, MessageReceiver*> m_receivers;
};
