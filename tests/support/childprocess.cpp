#include "childprocess.h"

#include <csignal>

#include <sys/prctl.h>

bool ChildProcess::waitForEnd(int waitMs)
{
    if (state() != NotRunning && !waitForFinished(waitMs) && state() != NotRunning) {
        end();
        const QString printed =
            QString::fromLocal8Bit(readAllStandardOutput() + readAllStandardError());
        QTest::qFail(
            qPrintable(QStringLiteral("%1 does not end; it printed:\n%2").arg(program(), printed)),
            __FILE__, __LINE__);
        return false;
    }
    return error() != FailedToStart && exitStatus() == NormalExit;
}

void ChildProcess::end()
{
    kill();
    waitForFinished(patienceMs);
}

void ChildProcess::setupChildProcess()
{
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (m_inChild)
        m_inChild();
}
