#include "passwordprompt.h"

#include <verb.h>

#include <QFileDevice>

#include <csignal>

#include <termios.h>
#include <unistd.h>

namespace {

termios typingBefore;
int hiddenTerminal = -1;

void showTyping()
{
    ::tcsetattr(hiddenTerminal, TCSANOW, &typingBefore);
}

// Whoever gives up must not be left with a terminal that shows nothing.
void endWithTypingShown(int signal)
{
    showTyping();
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

/// Hides what is typed on a terminal as long as it lives. There is one at a time.
class HiddenTyping
{
public:
    explicit HiddenTyping(int terminal)
    {
        hiddenTerminal = terminal;
        ::tcgetattr(terminal, &typingBefore);
        m_onInterrupt = std::signal(SIGINT, endWithTypingShown);
        m_onEnd = std::signal(SIGTERM, endWithTypingShown);
        termios hidden = typingBefore;
        hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        hidden.c_lflag |= ECHONL;
        ::tcsetattr(terminal, TCSANOW, &hidden);
    }
    ~HiddenTyping()
    {
        showTyping();
        std::signal(SIGINT, m_onInterrupt);
        std::signal(SIGTERM, m_onEnd);
    }
    Q_DISABLE_COPY(HiddenTyping)

private:
    void (*m_onInterrupt)(int);
    void (*m_onEnd)(int);
};

QByteArray readLine(QIODevice* in)
{
    QByteArray line = in->readLine();
    if (line.endsWith('\n'))
        line.chop(1);
    return line;
}

} // namespace

QByteArray readPassword(const VerbStreams& streams, const QString& file)
{
    if (!streams.in)
        return QByteArray();
    const auto* stream = qobject_cast<QFileDevice*>(streams.in);
    const int handle = stream ? stream->handle() : -1;
    if (::isatty(handle) != 1)
        return readLine(streams.in);
    const HiddenTyping hidden(handle);
    streams.messages << "Password of " << file << ": " << Qt::flush;
    return readLine(streams.in);
}
