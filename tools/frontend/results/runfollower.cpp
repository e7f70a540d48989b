#include "runfollower.h"

#include "releasecatalogue.h"
#include <reply.h>

#include <QCoreApplication>
#include <QScopedValueRollback>
#include <QTableView>

#include <utility>

namespace {

const QAbstractItemModel* updateTable(const QList<QPointer<QWidget>>& windows)
{
    for (const QPointer<QWidget>& window : windows) {
        const auto views = window ? window->findChildren<QTableView*>() : QList<QTableView*>();
        for (const QTableView* view : views) {
            if (view->model() && isUpdateTable(*view->model()))
                return view->model();
        }
    }
    return nullptr;
}

} // namespace

RunFollower::RunFollower(HostChannel& channel, const QString& folder, QString identity)
    : m_channel(channel), m_store(folder), m_identity(std::move(identity))
{
    m_channel.setListener(&m_witness);
    connect(&m_witness, &RunWitness::runBegins, this, &RunFollower::beginRun);
    connect(&m_witness, &RunWitness::restartAccepted, this, [this] { noteRestart(true); });
    connect(&m_witness, &RunWitness::restartUnanswered, this, [this] { noteRestart(false); });
}

RunFollower::~RunFollower()
{
    m_channel.setListener(nullptr);
}

void RunFollower::load()
{
    QStringList problems;
    m_run = m_store.latest(&problems);
    for (const QString& problem : problems)
        emit message(tr("The results of a run were set aside: %1").arg(problem));
    if (m_run)
        emit runChanged();
}

void RunFollower::systemConnected()
{
    judge();
}

void RunFollower::moduleEntered(const QList<GuiElement*>& elements)
{
    m_windows.clear();
    for (const GuiElement* element : elements)
        m_windows += element->content;
}

void RunFollower::beginRun()
{
    const QAbstractItemModel* table = updateTable(m_windows);
    if (!table) {
        // What comes now is about another run than the last one that is known.
        m_run.reset();
        emit runChanged();
        emit message(tr("An update begins, but there is no table that tells what is planned."));
        return;
    }
    const UpdatePlan plan =
        readPlan(*table, m_witness.lastAnswers(),
                 ReleaseCatalogue::readHeads(updateFolder(QCoreApplication::applicationDirPath())));
    if (!mayRun(plan)) {
        m_witness.refuseRun();
        emit message(tr("The run was stopped before its first record. Nothing was sent."));
        return;
    }
    PlannedRun run;
    run.started = QDateTime::currentDateTime();
    run.system = connectedSystem();
    run.identity = m_identity;
    run.updates = plan.updates;
    m_run = run;
    note(tr("The run began."));
    save();
    emit runChanged();
}

bool RunFollower::mayRun(const UpdatePlan& plan)
{
    const QScopedValueRollback<bool> asking(m_isAsking, true);
    const SystemReport known = m_witness.lastKnown();
    ChannelQueries queries(m_channel);
    const QVector<StepBack> back = stepsBack(plan.steps, SystemReport::ask(queries), known);
    for (const StepBack& step : back)
        emit message(stepBackText(step));
    return m_permission ? m_permission(back) : back.isEmpty();
}

void RunFollower::noteRestart(bool isTaken)
{
    if (!m_run || m_run->isSettled())
        return;
    if (m_witness.isRunning() && !m_run->hasEnded)
        noteEnd();
    m_run->hasRestarted = m_run->hasRestarted || isTaken;
    note(isTaken ? tr("The controllers took the command to restart.")
                 : tr("The command to restart was not answered."));
    save();
}

void RunFollower::moduleRests()
{
    if (!m_witness.isRunning())
        return;
    m_witness.endRun();
    if (!m_run)
        return;
    noteEnd();
    save();
    judge();
}

void RunFollower::moduleLeaves(bool controllersAreGone)
{
    m_windows.clear();
    const bool ends = m_witness.isRunning();
    m_witness.endRun();
    if (!m_run || m_run->isSettled() || !(ends || controllersAreGone))
        return;
    if (ends && !m_run->hasEnded)
        noteEnd();
    // What is lost in the middle of a run may be nothing but the connection.
    if (controllersAreGone && !ends && !m_run->hasRestarted) {
        m_run->hasRestarted = true;
        note(tr("The controllers went away."));
    }
    save();
}

void RunFollower::searchBegins()
{
    if (askDevices())
        save();
}

void RunFollower::searchEnded()
{
    judge();
}

bool RunFollower::askDevices()
{
    // Waiting for answers serves events, which may lead here again.
    if (!m_run || m_run->isSettled() || m_isAsking)
        return false;
    const QScopedValueRollback<bool> asking(m_isAsking, true);
    if (!isOfConnectedSystem(*m_run)) {
        emit message(tr("The last run was at another system, then at %1, and is not compared with "
                        "this one.")
                         .arg(m_run->system));
        return false;
    }
    ChannelQueries queries(m_channel);
    return m_run->judge(SystemReport::ask(queries));
}

void RunFollower::judge()
{
    if (!askDevices())
        return;
    note(m_run->summary());
    save();
    emit message(m_run->summary());
    emit resultChanged();
}

bool RunFollower::isOfConnectedSystem(const PlannedRun& run)
{
    return run.system == connectedSystem() &&
           (run.identity.isEmpty() || run.identity == m_identity);
}

QString RunFollower::connectedSystem()
{
    char address[replyBytes] = {};
    m_channel.get_address(address);
    return QString::fromLatin1(address);
}

void RunFollower::noteEnd()
{
    m_run->hasEnded = true;
    note(tr("The run ended."));
}

void RunFollower::note(const QString& text)
{
    m_run->events.append({QDateTime::currentDateTime(), text});
}

void RunFollower::save()
{
    QString error;
    if (!m_store.save(*m_run, &error))
        emit message(tr("The results of the run cannot be kept: %1").arg(error));
}
