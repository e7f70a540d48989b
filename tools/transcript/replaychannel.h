#pragma once

#include "transcript.h"

#include <utility>

/// A command channel without a system behind it: answers from a transcript, at once, as long as the
/// calls are the recorded ones. Texts have to be equal, byte for byte.
///
/// At the first departure the receiver "standard" of the host is told what was expected and what
/// was called. From then on every call fails and leaves the reply empty; messages still arrive. To
/// be used from the thread of the host's channel.
class ReplayChannel final : public IOManager
{
public:
    /// @param host delivers messages and keeps the receivers; must outlive this channel. Nothing
    ///        else is asked of it
    ReplayChannel(Transcript transcript, IOManager& host)
        : m_transcript(std::move(transcript)), m_host(host)
    {
    }
    virtual ~ReplayChannel() = default;
    ReplayChannel(const ReplayChannel&) = delete;
    ReplayChannel& operator=(const ReplayChannel&) = delete;

    /// The first departure: "FILE: line N: expected CALL, called CALL"; empty if there is none.
    const QString& departure() const { return m_departure; }
    /// How many recorded calls are still to come; none after a departure.
    int callsLeft() const;
    /// What is wrong if nothing more will be called: the departure, or which calls are left over.
    /// Empty if everything came as recorded.
    QString verdict() const;

    void prepare_reply(int kind, int timeoutMs, int pollFollows) override;
    int send_command(char* reply, const char* format, ...) override IOMANAGER_PRINTF(3, 4);
    int poll_reply(int mode) override;
    int get_string(char* value, const char* format, ...) override IOMANAGER_PRINTF(3, 4);
    int get_int(int* value, const char* format, ...) override IOMANAGER_PRINTF(3, 4);
    int set_value(const char* format, ...) override IOMANAGER_PRINTF(2, 3);
    void post_message(const char* receiver, const char* sender, int kind,
                      const char* message) override;
    void register_receiver(const char* name, MessageReceiver* receiver) override;
    void get_address(char* address) override;

private:
    TranscriptCall take(const QByteArray& call);
    void depart(const QByteArray& call);

    Transcript m_transcript;
    IOManager& m_host;
    int m_next = 0;
    QString m_departure;
    bool m_isPrepared = false;
    char* m_lateReply = nullptr;
};
