#include "linewatch.h"

#include <QScopedValueRollback>

#include <chrono>

namespace {

// Every version of the protocol knows it, and no device does anything for it.
const char* const question = "system hostname";

qint64 steadyMs()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

} // namespace

LineWatch::LineWatch(CommandLink& line, const Clock& nowMs)
    : m_line(line), m_nowMs(nowMs ? nowMs : Clock(steadyMs)), m_connection(line.connection())
{
    m_line.setIdleWork([this] { doIdleWork(); });
}

LineWatch::~LineWatch()
{
    m_line.setIdleWork({});
}

void LineWatch::look()
{
    if (isBroken()) {
        // Nothing is asked yet, so that whoever looks sees every loss, be it as short as it may.
        m_connection = m_line.connection();
        m_isAnswering = false;
        m_isAsking = false;
        m_unanswered = 0;
        return;
    }
    if (isTaken())
        return;
    if (isDue())
        begin();
    if (m_isAsking)
        collect(0);
}

bool LineWatch::ask()
{
    const quint64 answersBefore = m_answers;
    for (int attempt = 0; attempt < maxUnanswered; ++attempt) {
        look();
        if (m_answers != answersBefore || isBroken() || !m_line.isOpen() || isTaken())
            break;
        begin();
        collect(answerMs);
    }
    look();
    return m_isAnswering;
}

void LineWatch::send(Operation operation, const QByteArray& text)
{
    m_isAsking = false;
    m_isAwaited = true;
    m_line.send(operation, text);
}

std::optional<Reply> LineWatch::wait(int timeoutMs)
{
    const std::optional<Reply> reply = waitOn(timeoutMs);
    m_isAwaited = false;
    if (reply)
        answered();
    else
        missed();
    return reply;
}

bool LineWatch::isBroken() const
{
    return !m_line.isReachable() || m_line.connection() != m_connection;
}

bool LineWatch::isDue() const
{
    const bool isQuiet = m_nowMs() - m_lastAnswerMs >= quietMs;
    return !m_isAsking && m_line.isOpen() && (isQuiet || m_unanswered > 0 || !m_isAnswering);
}

void LineWatch::begin()
{
    m_isAsking = true;
    m_askedMs = m_nowMs();
    m_line.send(Operation::GetString, question);
}

void LineWatch::collect(int timeoutMs)
{
    const std::optional<Reply> reply = waitOn(timeoutMs);
    if (!m_isAsking) // a text of the channel took its place meanwhile
        return;
    const bool isOver = timeoutMs > 0 || m_nowMs() - m_askedMs >= answerMs;
    m_isAsking = !reply && !isOver;
    if (reply) {
        answered();
    } else if (isOver) {
        missed();
        if (m_unanswered >= maxUnanswered) {
            m_unanswered = 0;
            m_line.hangUp();
        }
    }
}

std::optional<Reply> LineWatch::waitOn(int timeoutMs)
{
    const QScopedValueRollback<bool> waiting(m_isWaiting, true);
    return m_line.wait(timeoutMs);
}

void LineWatch::answered()
{
    m_isAnswering = true;
    m_unanswered = 0;
    ++m_answers;
    m_lastAnswerMs = m_nowMs();
    m_lastAnswer = QDateTime::currentDateTime();
}

void LineWatch::missed()
{
    // A connection that breaks is seen by itself.
    if (!isBroken() && ++m_unanswered >= maxUnanswered)
        m_isAnswering = false;
}
