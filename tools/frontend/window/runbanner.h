#pragma once

#include "banner.h"

#include <runmonitor.h>

/// Tells of a run of updates as long as one is under way, wherever its own window is.
class RunBanner : public Banner
{
    Q_OBJECT

public:
    /// Makes one that follows nothing yet.
    explicit RunBanner(QWidget* parent = nullptr) : Banner(parent) {}

    /// @param runs must outlive the banner
    void follow(const RunMonitor& runs);

    /// Whether the window that the run was started from is out of sight; then the banner offers to
    /// show it again, by accepted().
    void setWindowLeft(bool isLeft);
    /// Whether the frontend quits after the run, which the banner then says.
    void setQuitting(bool quits);

private:
    void begin();
    void showStep();
    void showWaiting();
    QStringList lines() const;

    const RunMonitor* m_runs = nullptr;
    bool m_quits = false;
    int m_failures = 0; // in this run
    QString m_lastFailure;
};
