#include "scriptedchannel.h"

#include <MessageReceiver>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <utility>

// The contract's limit on what a host writes into any buffer.
static constexpr int CONTRACT_BYTES = 200;

ScriptedAnswers& ScriptedAnswers::reply(const QByteArray& text)
{
    return add({0, text, true, true});
}

ScriptedAnswers& ScriptedAnswers::reply(int number)
{
    return reply(QByteArray::number(number));
}

ScriptedAnswers& ScriptedAnswers::replyUnterminated(const QByteArray& bytes)
{
    return add({0, bytes, true, false});
}

ScriptedAnswers& ScriptedAnswers::succeed()
{
    return add({0, QByteArray(), false, false});
}

ScriptedAnswers& ScriptedAnswers::fail(const QByteArray& leftBehind)
{
    return add({1, leftBehind, true, true});
}

ScriptedAnswers& ScriptedAnswers::failWith(int result)
{
    return add({result, QByteArray(), false, false});
}

ScriptedAnswers& ScriptedAnswers::add(const Answer& answer)
{
    m_answers.append(answer);
    return *this;
}

ScriptedAnswers::Answer ScriptedAnswers::next()
{
    const int index = std::min(m_given++, m_answers.size() - 1);
    return m_answers.at(index);
}

ScriptedAnswers& ScriptedChannel::on(const QByteArray& text)
{
    return m_byText[text] = ScriptedAnswers();
}

ScriptedAnswers& ScriptedChannel::onPrefix(const QByteArray& prefix)
{
    return m_byPrefix[prefix] = ScriptedAnswers();
}

ScriptedAnswers& ScriptedChannel::onPoll()
{
    return m_polls = ScriptedAnswers();
}

void ScriptedChannel::recover()
{
    m_isDead = false;
    m_isPrepared = false;
    m_lateTarget = nullptr;
}

QStringList ScriptedChannel::logOf(const QString& prefix) const
{
    QStringList lines;
    std::copy_if(m_log.begin(), m_log.end(), std::back_inserter(lines),
                 [&](const QString& line) { return line.startsWith(prefix); });
    return lines;
}

QStringList ScriptedChannel::takeLog()
{
    return std::exchange(m_log, QStringList());
}

QStringList ScriptedChannel::messagesTo(const QString& receiver) const
{
    QStringList texts;
    for (const Message& message : m_messages) {
        if (message.receiver == receiver)
            texts += message.text;
    }
    return texts;
}

void ScriptedChannel::record(const QString& call)
{
    m_log += call;
    if (m_hook)
        m_hook(call);
}

ScriptedAnswers* ScriptedChannel::scripted(const QByteArray& text)
{
    const auto whole = m_byText.find(text);
    if (whole != m_byText.end())
        return &whole->second;
    // Of two prefixes of one text the longer one sorts behind the shorter one.
    const auto prefix =
        std::find_if(m_byPrefix.rbegin(), m_byPrefix.rend(),
                     [&](const auto& entry) { return text.startsWith(entry.first); });
    return prefix != m_byPrefix.rend() ? &prefix->second : nullptr;
}

ScriptedChannel::Answer ScriptedChannel::exchange(const char* operation, const QByteArray& text,
                                                  const Answer& unscripted)
{
    record(QStringLiteral("%1 \"%2\"").arg(QLatin1String(operation), QString::fromLatin1(text)));
    if (m_isDead)
        return {1, QByteArray(), false, false};
    ScriptedAnswers* answers = scripted(text);
    return answers && !answers->m_answers.isEmpty() ? answers->next() : unscripted;
}

static QByteArray expand(const char* format, va_list arguments)
{
    va_list again;
    va_copy(again, arguments);
    QByteArray text(2048, Qt::Uninitialized);
    const int length = std::vsnprintf(text.data(), 2048, format, arguments);
    text.resize(length);
    if (length >= 2048)
        std::vsnprintf(text.data(), static_cast<std::size_t>(length) + 1, format, again);
    va_end(again);
    return text;
}

// A macro, as va_start works only in the function that has the arguments.
#define EXPAND_ARGUMENTS(text, format)                                                             \
    va_list arguments;                                                                             \
    va_start(arguments, format);                                                                   \
    const QByteArray text = expand(format, arguments);                                             \
    va_end(arguments)

void ScriptedChannel::write(char* target, const Answer& answer)
{
    if (!answer.isWritten)
        return;
    const QByteArray bytes = answer.text.left(CONTRACT_BYTES - (answer.isTerminated ? 1 : 0));
    std::memcpy(target, bytes.constData(), static_cast<std::size_t>(bytes.size()));
    if (answer.isTerminated)
        target[bytes.size()] = '\0';
}

void ScriptedChannel::prepare_reply(int kind, int timeoutMs, int pollFollows)
{
    record(QStringLiteral("prepare_reply %1 %2 %3").arg(kind).arg(timeoutMs).arg(pollFollows));
    m_isPrepared = true;
    m_lateTarget = nullptr;
}

int ScriptedChannel::send_command(char* reply, const char* format, ...)
{
    EXPAND_ARGUMENTS(text, format);
    const Answer answer = exchange("send_command", text, {0, "vornix2 ok", true, true});
    if (std::exchange(m_isPrepared, false)) {
        m_lateTarget = reply;
        m_lateAnswer = answer;
    } else {
        write(reply, answer);
    }
    return answer.result;
}

int ScriptedChannel::poll_reply(int mode)
{
    record(QStringLiteral("poll_reply %1").arg(mode));
    char* target = std::exchange(m_lateTarget, nullptr);
    if (m_isDead)
        return 1;
    const int result = m_polls.m_answers.isEmpty() ? 0 : m_polls.next().result;
    if (result == 0 && target)
        write(target, m_lateAnswer);
    return result;
}

int ScriptedChannel::get_string(char* value, const char* format, ...)
{
    EXPAND_ARGUMENTS(text, format);
    const Answer answer = exchange("get_string", text, {1, "31 not to be trusted", true, true});
    write(value, answer);
    return answer.result;
}

int ScriptedChannel::get_int(int* value, const char* format, ...)
{
    EXPAND_ARGUMENTS(text, format);
    const Answer answer = exchange("get_int", text, {1, "-31", true, true});
    if (answer.isWritten)
        *value = answer.result == 0 ? answer.text.toInt() : -31;
    return answer.result;
}

int ScriptedChannel::set_value(const char* format, ...)
{
    EXPAND_ARGUMENTS(text, format);
    m_isPrepared = false;
    return exchange("set_value", text, {0, QByteArray(), false, false}).result;
}

void ScriptedChannel::post_message(const char* receiver, const char* sender, int kind,
                                   const char* message)
{
    const Message posted{QString::fromLatin1(receiver), QString::fromLatin1(sender), kind,
                         QString::fromLatin1(message)};
    m_messages += posted;
    record(QStringLiteral("post_message %1 %2 %3 \"%4\"")
               .arg(posted.receiver, posted.sender, QString::number(kind), posted.text));
    if (MessageReceiver* target = m_receivers.value(posted.receiver))
        target->transmit_message(kind, sender, message);
}

void ScriptedChannel::register_receiver(const char* name, MessageReceiver* receiver)
{
    const QString key = QString::fromLatin1(name);
    m_receivers.insert(key, receiver);
    record(QStringLiteral("register_receiver %1").arg(key));
}

void ScriptedChannel::get_address(char* address)
{
    record(QStringLiteral("get_address"));
    write(address, Answer{0, m_address, true, true});
}
