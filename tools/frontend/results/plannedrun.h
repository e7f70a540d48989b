#pragma once

#include "systemreport.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QVector>

/// What became of one planned update, told by the device and not by what was sent to it.
enum class Outcome
{
    Done,        ///< the device runs what was planned
    Failed,      ///< it answers, and runs something else
    Unconfirmed, ///< it did not answer, or has not been restarted; it can be asked again
    Skipped,     ///< the run left it out, as the operator had it
};

/// Words of the user interface for them.
QString outcomeText(Outcome outcome);
/// Words of the user interface for the parts.
QString partText(Part part);

/// One part of one device that the operator saw in the table of updates: several steps of a chain
/// are one update, from where the first begins to where the last ends.
struct PlannedUpdate
{
    QString device; ///< host name of a controller; description and serial number of a camera
    Part part = Part::TrackingSoftware; ///< which software of the device
    QString from;                       ///< version before the run
    QString planned;                    ///< version after it
    /// Whether @p planned tells the pre-release text too; otherwise only its numbers count.
    bool isExact = false;

    Outcome outcome = Outcome::Unconfirmed; ///< Unconfirmed until the device has told more
    QString found;                          ///< what the device reported; empty: nothing yet
    QString remark;                         ///< one sentence, or empty

    /// Whether the device was missing after the run: it has lost power since, or restarts.
    bool wasAway = false;
};

/// Whether the two agree in all that is kept of them.
bool operator==(const PlannedUpdate& left, const PlannedUpdate& right);

/// One run of the update dialog: what was planned, what happened and what became of it.
struct PlannedRun
{
    /// Something that happened to the run.
    struct Event
    {
        QDateTime time; ///< when the frontend noticed it
        QString text;   ///< one line for people
    };

    QDateTime started;              ///< when the operator started it
    QString system;                 ///< address of the master
    QString identity;               ///< tells the system from others at that address; or empty
    QVector<PlannedUpdate> updates; ///< in the order of the table
    bool hasEnded = false;          ///< false as well for a run during which the frontend died
    bool hasRestarted = false;      ///< the controllers were restarted after it
    QVector<Event> events;          ///< oldest first

    /// Whether nothing is left to be asked.
    bool isSettled() const;

    /// Compares every update that is not settled with what the devices report now.
    /// @return whether that has changed any of them
    bool judge(const SystemReport& report);

    /// How many controllers and cameras run what was planned, and which do not, in one line.
    QString summary() const;

    /// All that is known of the run, as text for people: what stands in the log file.
    QString logText() const;
};

/// What the table of results tells of an update.
enum class ResultField
{
    Device,
    Part,
    From,
    Planned,
    Found,
    Outcome,
    Remark,
};

/// One column of the table of results.
struct ResultColumn
{
    ResultField field; ///< what stands in the column
    QString title;     ///< in its head
    /// Its words for an update.
    QString (*text)(const PlannedUpdate& update);
};

/// The columns of the table of results, from left to right.
QVector<ResultColumn> resultColumns();

/// The words of one update as they stand in the table, one for each of resultColumns().
QStringList resultTexts(const PlannedUpdate& update);
