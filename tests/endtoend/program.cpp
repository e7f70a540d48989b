#include "program.h"

#include <QDeadlineTimer>
#include <QTest>

#include <csignal>
#include <cstdio>

Program::Program(const QString& file, const QStringList& arguments, const QStringList& environment)
{
    QStringList variables = QProcess::systemEnvironment();
    for (const QString& variable : environment) {
        const QString name = variable.section('=', 0, 0) + '=';
        variables.erase(std::remove_if(variables.begin(), variables.end(),
                                       [&](const QString& it) { return it.startsWith(name); }),
                        variables.end());
        variables += variable;
    }
    m_process.setEnvironment(variables);
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    m_process.start(file, arguments);
}

Program::~Program()
{
    kill();
    if (!QTest::currentTestFailed())
        return;
    read();
    std::printf("---- %s printed:\n", qPrintable(m_process.program()));
    for (const QString& line : qAsConst(m_lines))
        std::printf("%s\n", qPrintable(line));
    std::fflush(stdout);
}

QString Program::waitForLine(const QString& part)
{
    const QDeadlineTimer deadline(patienceMs);
    while (true) {
        read();
        while (m_next < m_lines.size()) {
            QString line = m_lines.at(m_next++);
            if (line.contains(part))
                return line;
        }
        if (deadline.hasExpired() || !isRunning())
            return QString();
        m_process.waitForReadyRead(static_cast<int>(deadline.remainingTime()));
    }
}

int Program::waitForEnd()
{
    return m_process.waitForEnd() ? m_process.exitCode() : -1;
}

void Program::kill()
{
    m_process.end();
}

void Program::freeze() const
{
    ::kill(static_cast<pid_t>(m_process.processId()), SIGSTOP);
}

void Program::thaw() const
{
    ::kill(static_cast<pid_t>(m_process.processId()), SIGCONT);
}

void Program::read()
{
    while (m_process.canReadLine())
        m_lines += QString::fromLocal8Bit(m_process.readLine()).trimmed();
}
