#include "runbanner.h"

#include <QApplication>

void RunBanner::follow(const RunMonitor& runs)
{
    m_runs = &runs;
    connect(&runs, &RunMonitor::began, this, &RunBanner::begin);
    connect(&runs, &RunMonitor::progressed, this, &RunBanner::showStep);
    connect(&runs, &RunMonitor::heldUp, this, &RunBanner::showWaiting);
    connect(&runs, &RunMonitor::failed, this, [this](const RunFailure& failure) {
        ++m_failures;
        m_lastFailure = failure.text();
        showStep();
    });
    connect(&runs, &RunMonitor::ended, this, &RunBanner::hide);
}

void RunBanner::setWindowLeft(bool isLeft)
{
    offer(isLeft ? tr("Show the update &window") : QString());
}

void RunBanner::setQuitting(bool quits)
{
    m_quits = quits;
    if (m_runs && m_runs->isRunning())
        showStep();
}

void RunBanner::begin()
{
    m_quits = false;
    m_failures = 0;
    m_lastFailure.clear();
    setWindowLeft(false);
    showStep();
}

void RunBanner::showStep()
{
    tell(tr("An update is under way. Do not switch off the controllers, the cameras or this "
            "computer."),
         lines());
    setShare(m_runs->step().percent(), tr("Share of the step"));
}

void RunBanner::showWaiting()
{
    const QWidget* window = QApplication::activeModalWidget();
    tell(window
             ? tr("An update waits until the window \"%1\" is closed.").arg(window->windowTitle())
             : tr("An update waits for an answer."),
         lines());
}

QStringList RunBanner::lines() const
{
    const RunStep& step = m_runs->step();
    QStringList lines;
    if (step.number == 0)
        lines += tr("The first step begins.");
    else if (step.isAwaited)
        lines += tr("Step %1: %2. All records are sent; the device has to confirm the last one.")
                     .arg(QString::number(step.number), step.text());
    else
        lines +=
            tr("Step %1: %2, %3 %")
                .arg(QString::number(step.number), step.text(), QString::number(step.percent()));
    if (m_failures > 0)
        lines += tr("Failed so far: %1. The last one: %2.")
                     .arg(QString::number(m_failures), m_lastFailure);
    lines += m_quits ? tr("The frontend quits when it is over.")
                     : tr("Measurements, the search for hardware, other updates and quitting have "
                          "to wait until it is over.");
    return lines;
}
