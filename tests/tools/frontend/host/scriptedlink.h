#pragma once

#include <commandlink.h>

#include <QStringList>

#include <deque>
#include <functional>

/// A line to nowhere: logs what is done with it, and answers what the test told it to.
class ScriptedLink : public CommandLink
{
public:
    /// The next reply that is waited for is there after @p deviceMs, if that is in time.
    void answer(const Reply& reply, int deviceMs = 0) { m_answers.push_back({reply, deviceMs}); }

    /// The same with a success that carries @p text.
    void answer(const QByteArray& text, int deviceMs = 0)
    {
        Reply reply;
        reply.ok = true;
        reply.text = text;
        answer(reply, deviceMs);
    }

    void send(Operation operation, const QByteArray& text) override
    {
        static const char* const names[] = {"get_string", "get_int", "set_value", "command"};
        log += QStringLiteral("%1 %2").arg(QLatin1String(names[static_cast<int>(operation)]),
                                           QString::fromLatin1(text));
    }

    std::optional<Reply> wait(int timeoutMs) override
    {
        log += QStringLiteral("wait");
        if (duringWait)
            duringWait();
        waitedMs.push_back(timeoutMs);
        if (m_answers.empty())
            return std::nullopt;
        const auto [reply, deviceMs] = m_answers.front();
        if (deviceMs > timeoutMs)
            return std::nullopt;
        m_answers.pop_front();
        return reply;
    }

    bool isReachable() const override { return reachable; }
    bool isOpen() const override { return open; }
    quint64 connection() const override { return connectionNumber; }
    QString address() const override { return linkAddress; }
    void hangUp() override { ++hungUp; }
    /// A moment of a long wait.
    void idle() { doIdleWork(); }

    QStringList log;
    std::function<void()> duringWait; ///< what happens while a reply is waited for
    QVector<int> waitedMs;            ///< time-outs in the order of the waits
    bool reachable = true;
    bool open = true;
    int hungUp = 0;
    quint64 connectionNumber = 1;
    QString linkAddress = QStringLiteral("192.168.7.20");

private:
    struct Answer
    {
        Reply reply;
        int deviceMs;
    };
    std::deque<Answer> m_answers;
};
