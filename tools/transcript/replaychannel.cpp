#include "replaychannel.h"

#include <cstring>

namespace {

void copyReply(const TranscriptCall& call, char* target)
{
    if (!call.reply || !target)
        return;
    std::memcpy(target, call.reply->constData(), static_cast<std::size_t>(call.reply->size()));
    // A reply that takes all the room came without a zero.
    if (call.reply->size() < TranscriptForm::replyBytes)
        target[call.reply->size()] = '\0';
}

// What a call brings that was not recorded.
TranscriptCall failedCall()
{
    return {0, {}, 1, QByteArray(), std::nullopt};
}

} // namespace

TranscriptCall ReplayChannel::take(const QByteArray& call)
{
    if (!m_departure.isEmpty())
        return failedCall();
    if (m_next < m_transcript.calls.size() && m_transcript.calls.at(m_next).call == call)
        return m_transcript.calls.at(m_next++);
    depart(call);
    return failedCall();
}

void ReplayChannel::depart(const QByteArray& call)
{
    const bool isAtEnd = m_next == m_transcript.calls.size();
    m_departure = QStringLiteral("%1: line %2: expected %3, called %4")
                      .arg(m_transcript.file,
                           QString::number(isAtEnd ? m_transcript.lastLine + 1
                                                   : m_transcript.calls.at(m_next).line),
                           isAtEnd ? QStringLiteral("the end")
                                   : QString::fromLatin1(m_transcript.calls.at(m_next).call),
                           QString::fromLatin1(call));
    m_host.post_message("standard", "Transcript", 1, m_departure.toLatin1().constData());
}

int ReplayChannel::callsLeft() const
{
    return m_departure.isEmpty() ? m_transcript.calls.size() - m_next : 0;
}

QString ReplayChannel::verdict() const
{
    const int left = callsLeft();
    if (left == 0)
        return m_departure;
    const TranscriptCall& next = m_transcript.calls.at(m_next);
    return QStringLiteral("%1: line %2: expected %3, called nothing more; calls left over: %4")
        .arg(m_transcript.file, QString::number(next.line), QString::fromLatin1(next.call),
             QString::number(left));
}

void ReplayChannel::prepare_reply(int kind, int timeoutMs, int pollFollows)
{
    take(TranscriptForm::prepareCall(kind, timeoutMs, pollFollows));
    m_isPrepared = true;
}

int ReplayChannel::send_command(char* reply, const char* format, ...)
{
    IOMANAGER_TEXT(text, format);
    const TranscriptCall call = take(TranscriptForm::textCall("send_command", text));
    if (std::exchange(m_isPrepared, false))
        m_lateReply = reply;
    else
        copyReply(call, reply);
    return call.result;
}

int ReplayChannel::poll_reply(int mode)
{
    const TranscriptCall call = take(TranscriptForm::pollCall(mode));
    copyReply(call, std::exchange(m_lateReply, nullptr));
    return call.result;
}

int ReplayChannel::get_string(char* value, const char* format, ...)
{
    IOMANAGER_TEXT(text, format);
    const TranscriptCall call = take(TranscriptForm::textCall("get_string", text));
    copyReply(call, value);
    return call.result;
}

int ReplayChannel::get_int(int* value, const char* format, ...)
{
    IOMANAGER_TEXT(text, format);
    const TranscriptCall call = take(TranscriptForm::textCall("get_int", text));
    if (call.value)
        *value = *call.value;
    return call.result;
}

int ReplayChannel::set_value(const char* format, ...)
{
    IOMANAGER_TEXT(text, format);
    if (std::exchange(m_isPrepared, false))
        m_lateReply = nullptr;
    return take(TranscriptForm::textCall("set_value", text)).result;
}

void ReplayChannel::post_message(const char* receiver, const char* sender, int kind,
                                 const char* message)
{
    take(TranscriptForm::messageCall(receiver, sender, kind, message));
    m_host.post_message(receiver, sender, kind, message);
}

void ReplayChannel::register_receiver(const char* name, MessageReceiver* receiver)
{
    take(TranscriptForm::textCall("register_receiver", name));
    m_host.register_receiver(name, receiver);
}

void ReplayChannel::get_address(char* address)
{
    copyReply(take(TranscriptForm::call("get_address", {})), address);
}
