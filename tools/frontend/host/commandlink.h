#pragma once

#include <reply.h>

#include <QByteArray>
#include <QElapsedTimer>
#include <QString>

#include <functional>
#include <optional>

/// The line to the controllers: carries one text at a time and brings back the reply to it.
///
/// To be used from the user interface thread.
class CommandLink
{
public:
    virtual ~CommandLink() = default;

    /// Sends a text and returns at once. A reply to an earlier text that nobody waited for is
    /// dropped, also if it arrives later.
    virtual void send(Operation operation, const QByteArray& text) = 0;

    /// Waits until the reply to the last text is there.
    ///
    /// @param timeoutMs longest time to wait; 0 or less only looks whether it is there
    /// @return nullopt if the time has run out, the connection is lost or nothing was sent
    virtual std::optional<Reply> wait(int timeoutMs) = 0;

    /// Whether the controllers answer, as far as is known without a question.
    virtual bool isReachable() const = 0;

    /// Whether a text would go out at once. One that would not is kept until the line is open.
    virtual bool isOpen() const { return true; }

    /// Number of the connection: another one after each loss, be it of the connection or of the
    /// power of the controllers. What was learned over one connection need not hold over the next,
    /// which may lead to another system.
    virtual quint64 connection() const = 0;

    /// Address of the connected controller, as dotted IPv4 text.
    virtual QString address() const = 0;

    /// Gives up a connection on which nothing is answered any more; the next one is made by itself.
    virtual void hangUp() {}

    /// Sets what is done now and then during waits of more than a moment, so that windows are not
    /// left unpainted. It must not send anything.
    void setIdleWork(const std::function<void()>& work) { m_idleWork = work; }

    /// Does that if the last time is more than a moment ago: for many waits in a row, each of which
    /// is short.
    void breathe()
    {
        if (!m_sinceIdleWork.isValid())
            m_sinceIdleWork.start();
        else if (m_sinceIdleWork.hasExpired(idleSliceMs))
            doIdleWork();
    }

protected:
    /// How long a wait may be without idle work.
    static constexpr qint64 idleSliceMs = 40;

    /// For implementations to call during wait(): does what setIdleWork() was given.
    void doIdleWork()
    {
        if (m_idleWork)
            m_idleWork();
        m_sinceIdleWork.start();
    }

private:
    std::function<void()> m_idleWork;
    QElapsedTimer m_sinceIdleWork;
};
