#include "hostchannel.h"

#include <MessageReceiver.h>
#include <recordingchannel.h>

#include <QScopedValueRollback>

#include <cstring>
#include <utility>

namespace {

constexpr int success = 0;
constexpr int failure = 1;

int result(bool ok)
{
    return ok ? success : failure;
}

bool isQuery(Operation operation)
{
    return operation == Operation::GetString || operation == Operation::GetInt;
}

void copyReply(char* target, const QByteArray& text)
{
    // Up to a zero byte inside of the text, if there is one: the receiver sees no further.
    std::strncpy(target, text.constData(), replyBytes - 1);
    target[replyBytes - 1] = '\0';
}

// A failed exchange leaves the caller's buffer as it was.
bool takeReply(const std::optional<Reply>& reply, char* target)
{
    if (!reply || !reply->ok)
        return false;
    if (target)
        copyReply(target, reply->text);
    return true;
}

} // namespace

void HostChannel::prepare_reply(int /*kind*/, int timeoutMs, int /*pollFollows*/)
{
    m_preparedTimeoutMs = timeoutMs;
}

int HostChannel::send_command(char* reply, const char* format, ...)
{
    IOMANAGER_TEXT(text, format);
    return sendOrStart(Operation::Command, text, reply);
}

int HostChannel::set_value(const char* format, ...)
{
    IOMANAGER_TEXT(text, format);
    return sendOrStart(Operation::SetValue, text, nullptr);
}

int HostChannel::get_string(char* value, const char* format, ...)
{
    IOMANAGER_TEXT(text, format);
    return result(takeReply(exchange(Operation::GetString, text), value));
}

int HostChannel::get_int(int* value, const char* format, ...)
{
    IOMANAGER_TEXT(text, format);
    const std::optional<Reply> reply = exchange(Operation::GetInt, text);
    if (!reply || !reply->ok)
        return failure;
    *value = reply->integer;
    return success;
}

int HostChannel::poll_reply(int /*mode*/)
{
    finishPending();
    const bool ok = m_pending && m_pending->outcome.value_or(false);
    m_pending.reset();
    return result(ok);
}

void HostChannel::post_message(const char* receiver, const char* sender, int kind,
                               const char* message)
{
    if (MessageReceiver* target = m_receivers.value(receiver))
        target->transmit_message(kind, sender, message);
}

void HostChannel::register_receiver(const char* name, MessageReceiver* receiver)
{
    m_receivers.insert(name, receiver);
}

void HostChannel::get_address(char* address)
{
    copyReply(address, m_link.address().toLatin1());
}

void HostChannel::renew()
{
    m_connection = m_link.connection();
    m_hasToldOfLoss = false;
    m_isSilent = false;
}

std::optional<Reply> HostChannel::exchange(Operation operation, const QByteArray& text)
{
    finishPending();
    if (!maySend(operation, text))
        return std::nullopt;
    const std::optional<Reply> reply = ask(operation, text);
    if (m_listener)
        m_listener->answered(operation, text, reply);
    tellAnswered(operation, text, reply);
    if (!isQuery(operation))
        letWindowsPaint();
    return reply;
}

// The records of a run follow one right upon the other, and few of them make the link wait for
// long.
void HostChannel::letWindowsPaint()
{
    const QScopedValueRollback<bool> waiting(m_isWaiting, true);
    m_link.breathe();
}

std::optional<Reply> HostChannel::ask(Operation operation, const QByteArray& text)
{
    const int attempts = isQuery(operation) && !m_isSilent ? maxAttempts : 1;
    std::optional<Reply> reply;
    for (int attempt = 0; attempt < attempts && !reply && isCurrent(); ++attempt) {
        if (!send(operation, text))
            break;
        reply = waitForReply(defaultTimeoutMs);
    }
    if (reply || isQuery(operation))
        m_isSilent = !reply;
    return reply;
}

bool HostChannel::maySend(Operation operation, const QByteArray& text)
{
    if (m_isWaiting) {
        refuse("Not sent, as another text waits for its reply: ", text);
        return false;
    }
    if (isCurrent())
        return true;
    if (!std::exchange(m_hasToldOfLoss, true))
        refuse(
            "The connection was lost. Nothing is sent until the module is loaded anew, not even: ",
            text);
    tellAnswered(operation, text, std::nullopt);
    return false;
}

void HostChannel::refuse(const QByteArray& reason, const QByteArray& text)
{
    post_message("standard", "Channel", 1, reason + text);
}

std::optional<Reply> HostChannel::waitForReply(int timeoutMs)
{
    const QScopedValueRollback<bool> waiting(m_isWaiting, true);
    return m_link.wait(timeoutMs);
}

bool HostChannel::send(Operation operation, const QByteArray& text)
{
    // The connection may be lost while the listener makes up its mind.
    if (m_listener && !(m_listener->sending(operation, text) && isCurrent()))
        return false;
    m_link.send(operation, text);
    for (ChannelWatcher* watcher : qAsConst(m_watchers))
        watcher->sent(operation, text);
    return true;
}

void HostChannel::tellAnswered(Operation operation, const QByteArray& text,
                               const std::optional<Reply>& reply)
{
    for (ChannelWatcher* watcher : qAsConst(m_watchers))
        watcher->answered(operation, text, reply);
}

int HostChannel::sendOrStart(Operation operation, const QByteArray& text, char* reply)
{
    if (!m_preparedTimeoutMs)
        return result(takeReply(exchange(operation, text), reply));

    const int timeoutMs = *std::exchange(m_preparedTimeoutMs, std::nullopt);
    finishPending();
    if (!maySend(operation, text))
        return failure;
    m_pending.reset();
    if (!send(operation, text)) {
        tellAnswered(operation, text, std::nullopt);
        return failure;
    }
    m_pending = Pending{operation, text, reply, timeoutMs, {}, std::nullopt};
    m_pending->age.start();
    return success;
}

void HostChannel::finishPending()
{
    if (!m_pending || m_pending->outcome || m_isWaiting)
        return;
    const qint64 leftMs = qMax<qint64>(0, m_pending->timeoutMs - m_pending->age.elapsed());
    const std::optional<Reply> answer = waitForReply(static_cast<int>(leftMs));
    m_pending->outcome = takeReply(answer, m_pending->reply);
    tellAnswered(m_pending->operation, m_pending->text, answer);
}
