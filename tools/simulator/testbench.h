#pragma once

#include "devicestates.h"
#include "faults.h"
#include "scenario.h"

#include <QObject>

/// A system as those see it who stand beside it, and what their hands do to it. None of this goes
/// over the command channel: what a frontend believes of versions and outcomes comes from there
/// alone, and only what its window shows of the system, and what it presets, comes from here.
///
/// To be used from one thread, the one it lives in.
class TestBench : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    virtual const Scenario& scenario() const = 0;
    virtual const QVector<ControllerState>& controllers() const = 0; ///< master first
    virtual const QVector<CameraState>& cameras() const = 0;
    virtual Measurement measurement() const = 0;

    /// Faults that have not struck as often as they may.
    virtual const QVector<Fault>& armedFaults() const = 0;

    /// Milliseconds until the system answers again: 0 if it does, -1 if it waits for power.
    virtual qint64 msUntilReachable() const = 0;

    /// Whether the system answers: it has power and is not restarting.
    virtual bool isReachable() const = 0;

    /// Whether the bench can be seen and touched now. If not, it stands as it was seen last.
    virtual bool isAtHand() const { return true; }

    /// Waits, for a second at most, until everything can be seen that was done up to now.
    virtual void catchUp() {}

    /// Starts or ends a measurement; does nothing while the system is down.
    virtual void setMeasuring(bool measuring) = 0;

    /// Takes power off camera @p index, from 0, and gives it back: what it received runs from then
    /// on, and the controller no longer knows it until it searches for its hardware. Other indexes
    /// do nothing.
    virtual void powerCycleCamera(int index) = 0;

    /// Takes power off the system, if it has any, and gives it back: a restart begins.
    virtual void powerCycle() = 0;

    /// Has @p fault strike when its moment comes.
    virtual void armFault(const Fault& fault) = 0;
    virtual void disarmFaults() = 0;

signals:
    /// Something that can be seen has changed.
    void changed();
    /// Something failed that is no part of the system itself: the state could not be written, for
    /// example. @p text names it in one line.
    void trouble(const QString& text);
};
