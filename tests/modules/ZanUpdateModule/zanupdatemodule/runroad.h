#pragma once

#include "modulefixture.h"

#include <recordedsleep.h>

#include <QDialog>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>

/// One place on the road of a run: a moment at which events are served, and so the next one at
/// which anything can happen.
struct Place
{
    enum Kind
    {
        InDialog, ///< the update dialog waits for the user
        InBox,    ///< a message box waits for the user
        InSearch, ///< the search for hardware
        InViewer, ///< the release notes wait for the user
        InRun,    ///< between two calls of a run
    };

    Kind kind;
    QString name;  ///< what stands in front, or the call that came last
    int callCount; ///< calls of the channel so far
};

/// Plays the user from the start of the plug-in to the end of the first run: starts it, says yes to
/// everything and leaves the dialog. On the way it can act once, at a place given by its number.
///
/// The places are told apart by an event that is in the queue whenever events are served, and never
/// twice. Nobody waits: one-shot timers fire as soon as their turn comes, and nobody sleeps. One
/// road at a time.
class RunRoad : public QObject
{
    Q_OBJECT

public:
    using Act = std::function<void(QDialog* inFront)>;

    explicit RunRoad(ModuleFixture* fixture);
    /// Has @p act called at the place number @p place, with the window in front or null.
    void actAt(int place, const Act& act);
    /// Asks the plug-in for its menu entries, tells it the frontend's version and goes the whole
    /// road, in the event loop of the application. Takes the channel's log so far away.
    void go();

    const QVector<Place>& places() const { return m_places; }
    bool hasActed() const { return m_hasActed; }
    /// All calls of the channel on the road.
    QStringList calls() const { return m_fixture->channel.log(); }

private:
    bool event(QEvent* event) override;
    void serve();
    Place placeNow(const QDialog* inFront) const;
    void goOn(QDialog* inFront);
    void postNext();

    ModuleFixture* m_fixture;
    QPointer<ZanUpdateModule2GSettingsdlg> m_dialog;
    RecordedSleep m_sleep;
    QVector<Place> m_places;
    const QDialog* m_lastInFront = nullptr;
    int m_actAt = -1;
    Act m_act;
    bool m_hasActed = false;
    bool m_hasStarted = false;
    bool m_isOver = false;
    int m_timesHere = 0;
};
