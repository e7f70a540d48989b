#pragma once

#include "dialogfixture.h"
#include "recordedsleep.h"

#include <modaldriver.h>

/// One log of everything that a run does, in its order: the calls of the channel, whose hook it
/// takes, the sleeps as "sleep 2000" and the windows as "box TEXT", with the first line of the
/// text, or "dialog NAME". Plays the user on the windows; nobody sleeps.
class RunLog
{
public:
    explicit RunLog(DialogFixture* fixture);
    ~RunLog();
    RunLog(const RunLog&) = delete;
    RunLog& operator=(const RunLog&) = delete;

    void expect(const ExpectedBox& box);
    void expectDialog(const QString& objectName, const std::function<void(QDialog&)>& act);
    /// Expects the update dialog itself.
    void expectUpdateDialog(const std::function<void()>& act);
    /// Called at every call of the channel, after it is logged.
    void setHook(const ScriptedChannel::Hook& hook) { m_hook = hook; }

    const QStringList& lines() const { return m_lines; }
    bool isDone() const { return m_driver.isDone(); }
    QString missing() const { return m_driver.missing(); }

private:
    DialogFixture* m_fixture;
    ModalDriver m_driver;
    QStringList m_lines;
    ScriptedChannel::Hook m_hook;
    RecordedSleep m_sleep;
};
