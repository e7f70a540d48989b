#pragma once

#include "devicestates.h"
#include "faults.h"
#include "scenario.h"
#include "systemstate.h"

#include <QObject>

/// What can be seen of the equipment at one moment.
struct EquipmentState
{
    Power power = Power::On;                    ///< whether the system runs
    Measurement measurement = Measurement::Off; ///< whether one runs
    QVector<ControllerState> controllers;       ///< master first
    QVector<CameraState> cameras;               ///< "c01" first
    FaultPlan faults;                           ///< those that have not struck as often as they may
    QString updatedBy; ///< another host than this one that updates the system; empty: none
};

/// Equipment that nobody has looked at yet: with the devices of @p scenario, and nothing going on.
EquipmentState untouchedEquipment(const Scenario& scenario);

/// Something that hands do to the equipment.
struct EquipmentCommand
{
    /// What is done.
    enum class Kind
    {
        StartMeasurement, ///< does nothing while the system is down; the same holds for its end
        StopMeasurement,
        PowerCycle, ///< takes power off the system, if it has any, and gives it back: a restart
        /// Takes power off `camera` and gives it back: what it received runs from then on, and the
        /// controller no longer knows it until it searches for its hardware. Other indexes do
        /// nothing.
        PowerCycleCamera,
        ArmFault, ///< has `fault` strike when its moment comes
        DisarmFaults,
    };

    Kind kind;        ///< decides which of the other values count
    int camera = 0;   ///< index from 0
    Fault fault = {}; ///< the one to arm
};

/// A simulated system as those have it before them who stand beside it: they look at its state, and
/// lay hands on it. None of this goes over the command channel: what a frontend believes of
/// versions and outcomes comes from there alone, and only what its window shows of the system, and
/// what it presets, comes from here.
///
/// To be used from one thread, the one it lives in.
class Equipment : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// What the equipment was made from; the same for as long as it lives.
    virtual const Scenario& scenario() const = 0;
    /// What can be seen now, or what was seen last if it is not at hand; changed() tells of each
    /// change.
    virtual const EquipmentState& state() const = 0;
    /// Milliseconds until the system answers again: 0 if it does, -1 if it waits for power.
    virtual qint64 msUntilReachable() const = 0;
    /// Does it, as far as it is possible; what cannot be done now is left.
    virtual void perform(const EquipmentCommand& command) = 0;

    /// Whether the equipment can be seen and touched now. If not, it stands as it was seen last.
    virtual bool isAtHand() const { return true; }
    /// Waits, for a second at most, until everything can be seen that was done up to now.
    virtual void catchUp() {}

    /// Whether another host updates the system, so that it must not be disturbed.
    bool isInOtherHands() const { return !state().updatedBy.isEmpty(); }

    /// Whether the system answers: it has power and is not restarting.
    bool isReachable() const { return isAtHand() && state().power == Power::On; }

signals:
    /// Something that can be seen has changed.
    void changed();
    /// Something failed that is no part of the system itself: the state could not be written, for
    /// example. @p text names it in one line.
    void trouble(const QString& text);
};
