#pragma once

#include "patience.h"

#include <QProcess>

#include <functional>

/// A process that outlives neither its test, however that ends, nor the test's patience.
class ChildProcess : public QProcess
{
public:
    using QProcess::QProcess;
    ~ChildProcess() override { end(); }

    /// @param inChild what the process does before it becomes the program
    void setInChild(const std::function<void()>& inChild) { m_inChild = inChild; }

    /// Waits until it ends by itself. If it does not, it is killed, and the test fails with what
    /// it printed.
    /// @return whether it ended; false as well if it could not be started, or crashed
    bool waitForEnd(int waitMs = patienceMs);

    /// Takes its life without a warning.
    void end();

protected:
    void setupChildProcess() override;

private:
    std::function<void()> m_inChild;
};
