#pragma once

#include "commandlink.h"

#include <QDateTime>

/// Knows whether the controllers answer: stands between a channel and its line, and goes by what
/// passes. Where nothing passes for a while it asks a question of its own, a harmless one that
/// nobody waits for and that gives way to any text of the channel.
///
/// Lost is a line whose connection breaks, whose controllers are down, or that leaves two texts in
/// a row without an answer. If one of these was the watch's own, so that nobody else is in the
/// middle of something, the connection is given up. From then on the line counts as lost until
/// something is answered. In the beginning nothing is known, so that it is lost.
///
/// To be used from the user interface thread.
class LineWatch final : public CommandLink
{
public:
    /// Tells milliseconds that never run backwards.
    using Clock = std::function<qint64()>;

    /// How long a line is left alone on which nothing passes.
    static constexpr qint64 quietMs = 1000;
    /// How long the watch waits for the answer to its own question.
    static constexpr int answerMs = 2500;
    /// So many texts in a row without an answer, be it the channel's or its own, are a loss.
    static constexpr int maxUnanswered = 2;

    /// @param line must outlive the watch, which does the idle work of its waits
    /// @param nowMs the machine's own clock if none is given
    explicit LineWatch(CommandLink& line, const Clock& nowMs = {});
    ~LineWatch() override;
    LineWatch(const LineWatch&) = delete;
    LineWatch& operator=(const LineWatch&) = delete;

    /// To be called several times a second. Never waits.
    void look();

    /// Asks now, also where something has just been answered, and waits until it is known whether
    /// the controllers answer: not at all if there is no connection, or while the channel awaits a
    /// reply, which will tell. Events are served meanwhile as during any wait.
    /// @return isAnswering()
    bool ask();

    /// Whether the controllers answer.
    bool isAnswering() const { return m_isAnswering; }
    /// When they answered last; invalid before the first answer.
    const QDateTime& lastAnswer() const { return m_lastAnswer; }

    /// See CommandLink.
    ///@{
    void send(Operation operation, const QByteArray& text) override;
    std::optional<Reply> wait(int timeoutMs) override;
    bool isReachable() const override { return m_line.isReachable(); }
    bool isOpen() const override { return m_line.isOpen(); }
    quint64 connection() const override { return m_line.connection(); }
    QString address() const override { return m_line.address(); }
    void hangUp() override { m_line.hangUp(); }
    ///@}

private:
    bool isBroken() const;
    bool isTaken() const { return m_isAwaited || m_isWaiting; }
    bool isDue() const;
    void begin();
    void collect(int timeoutMs);
    std::optional<Reply> waitOn(int timeoutMs);
    void answered();
    void missed();

    CommandLink& m_line;
    Clock m_nowMs;
    quint64 m_connection; // that the rest is about
    bool m_isAnswering = false;
    bool m_isAwaited = false; // a reply to a text of the channel
    bool m_isWaiting = false;
    bool m_isAsking = false;
    qint64 m_askedMs = 0;
    quint64 m_answers = 0;
    int m_unanswered = 0; // since the last answer
    qint64 m_lastAnswerMs = 0;
    QDateTime m_lastAnswer;
};
