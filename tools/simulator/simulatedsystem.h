#pragma once

#include "blockreceiver.h"
#include "devicestates.h"
#include "scenario.h"
#include "systemstate.h"
#include "testbench.h"

#include <QTimer>

#include <functional>

/// The controllers and cameras of one scenario, with everything that happens to them.
///
/// All time is told by a clock of milliseconds that is handed in; nothing here waits. To be used
/// from one thread, the one it lives in.
class SimulatedSystem : public TestBench
{
    Q_OBJECT

public:
    using Clock = std::function<qint64()>;

    /// @param nowMs milliseconds since 1970; the machine's clock if none is given
    explicit SimulatedSystem(Scenario scenario, Clock nowMs = {}, QObject* parent = nullptr);

    const Scenario& scenario() const override { return m_scenario; }
    const QVector<ControllerState>& controllers() const override { return m_controllers; }
    const QVector<CameraState>& cameras() const override { return m_cameras; }
    Measurement measurement() const override { return m_measurement; }
    const QVector<Fault>& armedFaults() const override { return m_faults.armed(); }
    bool isReachable() const override { return m_power == Power::On; }
    qint64 msUntilReachable() const override;
    void setMeasuring(bool measuring) override;
    void powerCycleCamera(int index) override;
    void powerCycle() override;
    void armFault(const Fault& fault) override;
    void disarmFaults() override;

    /// Takes over what an earlier process left in the file @p path, and keeps the state there from
    /// now on. A file that does not exist yet is no failure.
    ///
    /// @param error must not be null; receives "FILE: PATH: REASON" on failure
    /// @return false if the file is damaged, is about other devices or cannot be read: it is
    ///         renamed to @p path + ".damaged", and the system stands as the scenario tells.
    bool loadState(const QString& path, QString* error);

    /// What of the system outlives the process.
    SystemMemory memory() const;
    Power power() const { return m_power; }

    /// Writes the state to the file of loadState(); done by itself at every change of versions,
    /// power or measurement. Without such a file it does nothing and succeeds.
    /// @return false after trouble()
    bool saveState();

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
    /// The first fault that strikes at @p moment, taken off the count of its times.
    std::optional<Fault> takeFault(const ExchangeMoment& moment);
    void restart();  ///< asked for, or after a power failure; what was staged runs from then on
    void shutDown(); ///< until powerCycle()

public slots:
    /// Does what is due by the clock, above all the end of a restart. It is called by itself where
    /// an event loop runs, and before every request.
    void settle();

private:
    bool applyRestartFaults();
    void goDown(Power power);
    void finishRestart();
    void armRestartTimer();
    void allBecomeIdle();

    QDate today() const;
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
