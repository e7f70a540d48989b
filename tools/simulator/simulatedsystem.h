#pragma once

#include "blockreceiver.h"
#include "devicestates.h"
#include "scenario.h"
#include "systemstate.h"

#include <QObject>
#include <QTimer>

#include <functional>

/// The controllers and cameras of one scenario, with everything that happens to them.
///
/// All time is told by a clock of milliseconds that is handed in; nothing here waits. To be used
/// from one thread, the one it lives in.
class SimulatedSystem : public QObject
{
    Q_OBJECT

public:
    using Clock = std::function<qint64()>;

    /// @param nowMs milliseconds since 1970; the machine's clock if none is given
    explicit SimulatedSystem(Scenario scenario, Clock nowMs = {}, QObject* parent = nullptr);

    const Scenario& scenario() const { return m_scenario; }
    const QVector<ControllerState>& controllers() const { return m_controllers; } ///< master first
    const QVector<CameraState>& cameras() const { return m_cameras; }
    Measurement measurement() const { return m_measurement; }

    /// Faults that are armed; live controls add to them.
    FaultPlan& faults() { return m_faults; }

    /// Whether the system answers: it has power and is not restarting.
    bool isReachable() const { return m_power == Power::On; }

    /// Milliseconds until the system answers again: 0 if it does, -1 if it waits for power.
    qint64 msUntilReachable() const;

    /// Whether each controller that is available runs at least @p pt and @p ct. One that runs
    /// exactly @p pt must carry @p appendix as well, so that a pre-release is not taken for the
    /// release.
    bool allAtNewest(VersionInfo pt, VersionInfo ct, const QString& appendix = QString()) const;

    /// Takes over what an earlier process left in the file @p path, and keeps the state there from
    /// now on. A file that does not exist yet is no failure.
    ///
    /// @param error must not be null; receives "FILE: PATH: REASON" on failure
    /// @return false if the file is damaged, is about other devices or cannot be read: it is
    ///         renamed to @p path + ".damaged", and the system stands as the scenario tells.
    bool loadState(const QString& path, QString* error);

    /// Writes the state to the file of loadState(); done by itself at every change of versions,
    /// power or measurement. Without such a file it does nothing and succeeds.
    /// @return false after stateNotSaved()
    bool saveState();

    // What people do to the equipment.

    /// Starts or ends a measurement; does nothing while the system is down.
    void setMeasuring(bool measuring);

    /// Takes power off camera @p index, from 0, and gives it back: what it received runs from then
    /// on, and the controller no longer knows it until searchHardware(). Other indexes do nothing.
    void powerCycleCamera(int index);

    /// Takes power off the system, if it has any, and gives it back: a restart begins.
    void powerCycle();

    // What requests do. The interpreter has checked that the system is reachable.

    /// Index of the slave at @p address, or -1.
    int slaveAt(const QString& address) const;

    /// Index of the controller that records go to.
    int updateTarget() const { return m_updateTarget; }
    /// Directs records to controller @p index; a block that is not complete is dropped.
    void setUpdateTarget(int index);

    /// Takes one record for the controller updateTarget().
    const BlockReceiver& takeRecord(PayloadComponent component, int count, int number,
                                    const QByteArray& text);
    /// Takes one record for camera @p index, which must exist. A camera whose image is refused
    /// forgets the images before it, as they belong together.
    const BlockReceiver& takeCameraRecord(int index, int count, int number, const QByteArray& text);
    /// Ends the reception of a block that is not complete; @p reason is for the views.
    void dropReception(const QString& reason);

    /// @return false if the measurement refuses to stop
    bool stopMeasurement();
    void searchHardware();
    void restart();  ///< asked for, or after a power failure; what was staged runs from then on
    void shutDown(); ///< until powerCycle()

public slots:
    /// Does what is due by the clock, above all the end of a restart. It is called by itself where
    /// an event loop runs, and before every request.
    void settle();

signals:
    /// Something that the views show has changed.
    void changed();
    /// The state could not be written; @p reason names the file.
    void stateNotSaved(const QString& reason);

private:
    bool applyRestartFaults();
    void goDown(Power power);
    void finishRestart();
    void armRestartTimer();
    void allBecomeIdle();

    QDate today() const;
    SystemMemory memory() const;
    void adopt(const SystemMemory& memory);
    void keepState();

    void directReceptionTo(int camera);
    template <typename Device>
    const BlockReceiver& receive(Device* device, PayloadComponent component, int count, int number,
                                 const QByteArray& text);
    template <typename Device>
    void noteProgress(Device* device);

    static constexpr int noCamera = -1;

    Scenario m_scenario;
    Clock m_nowMs;
    QVector<ControllerState> m_controllers;
    QVector<CameraState> m_cameras;
    Measurement m_measurement;
    FaultPlan m_faults;
    // One for all devices: they share one channel, and so the memory for blocks is bounded.
    BlockReceiver m_receiver;
    int m_receivingCamera = noCamera;
    int m_updateTarget = 0;
    Power m_power = Power::On;
    qint64 m_restartEndsMs = 0;
    QTimer m_restartTimer;
    QString m_stateFile;
};
