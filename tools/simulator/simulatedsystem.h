#pragma once

#include "blockreceiver.h"

#include <equipment.h>

#include <QTimer>

#include <functional>

/// The controllers and cameras of one scenario, with everything that happens to them.
///
/// All time is told by a clock of milliseconds that is handed in; nothing here waits. To be used
/// from one thread, the one it lives in.
class SimulatedSystem : public Equipment
{
    Q_OBJECT

public:
    /// Tells the milliseconds since 1970.
    using Clock = std::function<qint64()>;

    /// @param nowMs milliseconds since 1970; the machine's clock if none is given
    explicit SimulatedSystem(Scenario scenario, Clock nowMs = {}, QObject* parent = nullptr);

    const Scenario& scenario() const override { return m_scenario; }
    const EquipmentState& state() const override { return m_state; }
    qint64 msUntilReachable() const override;
    void perform(const EquipmentCommand& command) override;

    /// A part of state(), or one of the commands of perform().
    ///@{
    const QVector<ControllerState>& controllers() const { return m_state.controllers; }
    const QVector<CameraState>& cameras() const { return m_state.cameras; }
    Measurement measurement() const { return m_state.measurement; }
    Power power() const { return m_state.power; }
    const QVector<Fault>& armedFaults() const { return m_state.faults.armed(); }
    void setMeasuring(bool measuring);
    void powerCycleCamera(int index);
    void powerCycle();
    void armFault(const Fault& fault);
    void disarmFaults();
    ///@}

    /// Takes over what an earlier process left in the file @p path, and keeps the state there from
    /// now on.
    ///
    /// A state that is damaged or about other devices is renamed to @p path + ".damaged", with a
    /// number where that is taken, and the system stands as the scenario tells. What is no state is
    /// not touched, and nothing is kept then.
    /// @param error must not be null; on failure "FILE: REASON"
    /// @return why a state was set aside, "FILE: REASON"; empty if one was taken over, or there was
    ///         none; nullopt if nothing is kept
    std::optional<QString> loadState(const QString& path, QString* error);

    /// Whether the file @p path holds a state, if maybe a damaged one.
    static bool holdsState(const QString& path);

    /// Removes the state that an earlier process left in the file @p path. A file that is not there
    /// is no failure; what is no state is not touched.
    /// @param error must not be null; receives "FILE: REASON" on failure
    static bool removeState(const QString& path, QString* error);

    /// What of the system outlives the process.
    SystemMemory memory() const;
    /// How often it went down since this object was made.
    int outages() const { return m_outages; }

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
    /// Who updates the system, for those who look at it; empty: nobody.
    void setUpdatedBy(const QString& name);
    /// Ends the reception of a block that is not complete; @p reason is for the views.
    void dropReception(const QString& reason);

    /// @return false if the measurement refuses to stop
    bool stopMeasurement();
    /// From now on the controller knows the cameras that run, and no others.
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
    EquipmentState m_state;
    // One for all devices: they share one channel, and so the memory for blocks is bounded.
    BlockReceiver m_receiver;
    int m_receivingCamera = noCamera;
    int m_updateTarget = 0;
    int m_outages = 0;
    qint64 m_restartEndsMs = 0;
    QTimer m_restartTimer;
    QString m_stateFile;
};
