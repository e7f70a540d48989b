#pragma once

#include "blockreceiver.h"
#include "scenario.h"

#include <QObject>

#include <functional>

/// A controller as it stands now.
struct ControllerState
{
    QString hostName;
    QString address;
    bool slave = false;
    bool available = true;
    int model = 0;
    QString modelDescription;
    QString board;
    int serial = 0;
    QString pt;       ///< tracking software that runs, as the controller reports it
    QString ct;       ///< controller firmware that runs, as the controller reports it
    QString stagedPt; ///< received and verified, to run from the next restart on; or empty
    QString stagedCt;
    QString activity; ///< what it is doing, one line for people
    int recordsReceived = 0;
    int recordsExpected = 0; ///< 0 as long as no update was begun
    bool rebooting = false;
};

/// A camera as it stands now.
struct CameraState
{
    QString model;
    QString serial;
    QString description;
    QString version;       ///< firmware that runs, as the camera reports it
    QString stagedVersion; ///< received and verified, to run after a power cycle; or empty
    bool found = true;     ///< the controller knows it; a power cycle makes it search again
    QString activity;
    int recordsReceived = 0;
    int recordsExpected = 0;
};

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
    explicit SimulatedSystem(const Scenario& scenario, Clock nowMs = {}, QObject* parent = nullptr);
    ~SimulatedSystem() override;

    const Scenario& scenario() const { return m_scenario; }
    const QVector<ControllerState>& controllers() const { return m_controllers; } ///< master first
    const QVector<CameraState>& cameras() const { return m_cameras; }
    Measurement measurement() const { return m_measurement; }

    /// Faults that are armed; live controls add to them.
    FaultPlan& faults() { return m_faults; }

    /// Whether the system answers: it has power and is not restarting.
    bool isReachable() const;

    /// Milliseconds until the system answers again: 0 if it does, -1 if it waits for power.
    qint64 msUntilReachable() const;

    /// Whether each controller that is available runs at least @p pt and @p ct. One that runs
    /// exactly @p pt must carry @p appendix as well, so that a pre-release is not taken for the
    /// release.
    bool allAtNewest(VersionInfo pt, VersionInfo ct, const QString& appendix = QString()) const;

    /// Takes the versions over that an earlier process left in the file @p path, and keeps them
    /// there from now on. A file that does not exist yet is no failure.
    ///
    /// @param error must not be null; receives "FILE: PATH: REASON"
    /// @return false if the file is damaged or of another scenario: it is renamed to @p path +
    ///         ".damaged", and the system stands as the scenario tells.
    bool loadState(const QString& path, QString* error);

    /// Writes the state to the file of loadState(); done by itself at every change of versions or
    /// power. Without such a file it does nothing and succeeds.
    bool saveState();

    // What people do to the equipment.
    void setMeasuring(bool measuring);
    /// Takes power off camera @p index, from 0, and gives it back: what it received runs from then
    /// on, and the controller no longer knows it until searchHardware(). Other indexes do nothing.
    void powerCycleCamera(int index);
    /// Takes power off the system, if it has any, and gives it back: a restart begins.
    void powerCycle();

    // What requests do; the interpreter has checked that the system is reachable.
    /// Index of the slave at @p address, or -1.
    int slaveAt(const QString& address) const;
    int updateTarget() const { return m_updateTarget; } ///< index of the controller
    /// Directs the next records to controller @p index; a block that is not complete is dropped.
    void setUpdateTarget(int index);
    /// Takes one record for the controller updateTarget(); see BlockReceiver.
    const BlockReceiver& takeRecord(PayloadComponent component, int count, int number,
                                    const QByteArray& text);
    /// Takes one record for camera @p index, which must exist.
    const BlockReceiver& takeCameraRecord(int index, int count, int number, const QByteArray& text);
    bool stopMeasurement(); ///< false if it refuses
    void searchHardware();
    void restart(); ///< a restart that the command language asked for
    void shutDown();

public slots:
    /// Does what is due by the clock, above all the end of a restart. It is called by itself when
    /// an event loop runs, and before every request.
    void settle();

signals:
    /// Something that the views show has changed.
    void changed();
    /// The state could not be written; @p reason names the file.
    void stateNotSaved(const QString& reason);

private:
    enum class Power
    {
        On,
        Restarting,
        Hung, ///< restarting without an end
        Off,
    };
    friend class StateFile;

    void beginRestart();
    void applyRestartFaults();
    void finishRestart();
    void dropReception();
    void setActivities(const QString& activity);
    void stage(ControllerState* controller, const PayloadHead& head);
    void noteProgress(int* received, int* expected);
    void versionsChanged();

    Scenario m_scenario;
    Clock m_nowMs;
    QVector<ControllerState> m_controllers;
    QVector<CameraState> m_cameras;
    Measurement m_measurement;
    FaultPlan m_faults;
    BlockReceiver m_receiver; // one for all devices: there is one channel, and it bounds the memory
    int m_receivingCamera = -1;
    int m_updateTarget = 0;
    Power m_power = Power::On;
    qint64 m_restartEndsMs = 0;
    QString m_stateFile;
};
