#pragma once

#include "channelwatcher.h"

#include <QHash>
#include <QObject>
#include <QTimer>

/// One block of a controller's update, or one image of a camera's, on its way to the device.
struct RunStep
{
    /// What the device gets.
    enum class Kind
    {
        Unknown, ///< not known yet: only the device was chosen
        TrackingSoftware,
        ControllerFirmware,
        CameraFirmware,
    };

    int number = 0; ///< in its run, from 1
    QString device; ///< host name of a controller; description and serial number of a camera
    Kind kind = Kind::Unknown; ///< see there
    int records = 0;           ///< of the block; 0: not known yet
    int taken = 0;             ///< how many of them the device has confirmed
    /// All records are out, and the device still has to confirm the last one: that may take
    /// minutes.
    bool isAwaited = false;

    /// The share that the device has confirmed, from 0 to 100.
    int percent() const;
    /// What it is, in words of the user interface: "tracking software of zan-master".
    QString text() const;
};

/// What went wrong with a step.
struct RunFailure
{
    RunStep step;            ///< as far as it came
    int record = 0;          ///< the one that failed, from 1; 0: the device could not be chosen
    bool isAnswered = false; ///< whether the device answered, and refused
    int error = 0;           ///< the number of its error; 0: it told none
    QString reason;          ///< its own words behind the number; empty: none

    /// One line for people: "tracking software of zan-master, record 3 of 9: no answer".
    QString text() const;
};

/// Tells what a run of updates is doing, from the texts that the module sends: that it begins,
/// which device gets what and how much of it, what failed, and that it is over. Knows nothing of
/// windows, and asks nothing itself.
///
/// A run is one call of the module, on the thread of the monitor: it goes on until that call
/// returns to the event loop that it came from, also if all windows of the module are closed
/// meanwhile.
class RunMonitor : public QObject, public ChannelWatcher
{
    Q_OBJECT

public:
    RunMonitor();

    void sent(Operation operation, const QByteArray& text) override;
    void answered(Operation operation, const QByteArray& text,
                  const std::optional<Reply>& reply) override;

    /// Whether a run has begun and is not over.
    bool isRunning() const { return m_isRunning; }
    /// Whether the run stands still until a window is closed or a question answered, be it the
    /// module's or the host's: an event loop runs on top of it.
    bool isHeldUp() const { return m_isHeldUp; }
    /// The step that the run is at, or was at when it ended.
    const RunStep& step() const { return m_step; }

    /// Whether a text is part of an update, so that the first one of them begins a run.
    static bool belongsToRun(Operation operation, const QByteArray& text);

signals:
    /// The first text of a run was sent. Nothing is known of its steps yet.
    void began();
    /// The run is at another step, or has come at least one percent further in it, or waits for the
    /// last confirmation; or it goes on after heldUp().
    void progressed(const RunStep& step);
    /// The run stands still, see isHeldUp(). Told a moment after it came to be so.
    void heldUp();
    /// Something of the run failed. The run goes on with what does not depend on it.
    void failed(const RunFailure& failure);
    /// The run is over, well or not.
    void ended();

private:
    struct Record
    {
        RunStep::Kind kind;
        QByteArray camera; ///< such as "c01"; empty: for the chosen controller
        int records;
        int number;
    };

    static std::optional<Record> recordIn(Operation operation, const QByteArray& text);
    void begin();
    void end();
    void look();
    void choose(const QByteArray& target);
    void enter(const Record& record);
    void finish(const Record& record, const std::optional<Reply>& reply);
    void fail(int record, const std::optional<Reply>& reply);
    void tell();
    void remember(const QByteArray& key, const QByteArray& value);
    QString controllerName() const;
    QString cameraName(const QByteArray& camera) const;

    bool m_isRunning = false;
    bool m_isHeldUp = false;
    int m_loopLevel = 0;     // of the event loop that the module was called from
    bool m_isInStep = false; // records of m_step are still to come
    int m_steps = 0;         // begun in this run
    int m_toldPercent = 0;   // of m_step
    bool m_toldAwaited = false;
    RunStep m_step;
    QByteArray m_target; // address of the chosen slave; empty: the master
    QTimer m_look;
    QHash<QByteArray, QByteArray> m_answers; // to the queries that tell names
};
