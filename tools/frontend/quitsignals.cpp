#include "quitsignals.h"

#include <QSocketNotifier>

#include <fcntl.h>
#include <unistd.h>

namespace {

// A handler may do hardly more than write to a pipe.
int pipeEnds[2] = {-1, -1};

void tell(int /*signal*/)
{
    const char byte = 0;
    (void)!write(pipeEnds[1], &byte, 1);
}

} // namespace

QuitSignals::QuitSignals()
{
    if (pipe2(pipeEnds, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    m_notifier = std::make_unique<QSocketNotifier>(pipeEnds[0], QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] {
        char byte = 0;
        while (read(pipeEnds[0], &byte, 1) > 0) {
        }
        emit wanted();
    });
    struct sigaction action = {};
    action.sa_handler = tell;
    action.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        sigaction(numbers[i], nullptr, &m_before[i]);
        if (m_before[i].sa_handler != SIG_IGN)
            sigaction(numbers[i], &action, nullptr);
    }
}

QuitSignals::~QuitSignals()
{
    if (!m_notifier)
        return;
    for (std::size_t i = 0; i < numbers.size(); ++i)
        sigaction(numbers[i], &m_before[i], nullptr);
    m_notifier.reset();
    for (int& end : pipeEnds) {
        close(end);
        end = -1;
    }
}
