#pragma once

#include <childprocess.h>

#include <QString>
#include <QStringList>

/// A program in a process of its own, whose output is read line by line. It is killed when the
/// object goes, and shows then what it printed if a test function has failed by that time.
class Program
{
public:
    /// @param environment variables beside those of the test, as "NAME=VALUE"
    Program(const QString& file, const QStringList& arguments, const QStringList& environment = {});
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    /// Waits until a line comes that has @p part in it, behind all lines that were waited for.
    /// @return the line without its end; null if the program ends before, or takes too long
    QString waitForLine(const QString& part);

    /// Waits until the program ends by itself. @return its exit code; -1 if it does not, or crashes
    int waitForEnd();

    /// Asks it to end, as a logout does.
    void terminate() { m_process.terminate(); }
    /// Takes its life without a warning.
    void kill();

    /// Has it stand still, holding on to its connections, until it may go on.
    ///@{
    void freeze() const;
    void thaw() const;
    ///@}

    bool isRunning() const { return m_process.state() != QProcess::NotRunning; }
    qint64 processId() const { return m_process.processId(); }

private:
    void read();

    ChildProcess m_process;
    QStringList m_lines;
    int m_next = 0; // the first line that was not waited for
};
