#pragma once

#include "deliveredfrontend.h"

#include <patience.h>

#include <simulatedprogram.h>

#include <equipmentlanguage.h>
#include <fixturefiles.h>

#include <QObject>
#include <QVector>

#include <memory>

/// For the end of a run, on any machine: the frontend's own patience ends before.
constexpr int longWaitMs = patienceMs;

/// Exit codes of the frontend, as its --help has them.
enum FrontendCode
{
    Success = 0,
    SystemGone = 1,
    NotNewest = 3,
    StartAgain = 5,
};

/// How many records each of smallUpdates() has.
constexpr int recordsOfAnUpdate = 24;

/// Update files by their names: v3.3.0 for controllers and v1.4.0 for cameras of model 0x0901.
QMap<QString, QByteArray> smallUpdates();

/// What one start of the frontend told, and what it left behind.
struct FrontendStart
{
    int code = -1;    ///< exit code, -1 if it crashed or never ran
    QStringList told; ///< "KIND: TEXT" as it was printed, without times and progress
    QString errors;   ///< what it printed as errors
    QStringList sent; ///< "DEVICE: RECORD" for each record of an update that was called for
    EquipmentState
        equipment;   ///< the system right after the end; as the scenario has it if that is gone
    QString trouble; ///< why `sent` or `equipment` could not be had

    /// The message boxes, each in one line and without its buttons.
    QStringList boxes() const;
    /// What stands in each window with this title, without buttons.
    QList<QStringList> windows(const QString& title) const;
    /// What stands in the last window with results: the summary and a line for each device.
    QStringList results() const;
    /// The last line: how it ended.
    QString ending() const;
    /// Everything, for the eyes of whoever looks at a failure.
    QString text() const;
};

/// The frontend against a system in another process, start after start, with its user played.
class Encounter : public QObject
{
    Q_OBJECT

public:
    /// @param scenario content of a scenario file
    Encounter(QString frontend, const QByteArray& scenario);

    /// Starts the simulated system, or starts it again with the state that it left.
    /// @param options further ones for it
    /// @return whether it can be spoken to
    bool startSystem(const QStringList& options);
    /// @return whether the system took it
    bool arm(const Fault& fault);
    /// Gives power to cameras that did not come back. @return whether the system took it
    bool giveCamerasPower();
    void killSystem();

    /// Starts the frontend; ended() tells when it has left.
    void startFrontend();

    EquipmentState equipment(QString* error) const;
    const QVector<FrontendStart>& starts() const { return m_starts; }
    /// What all starts told, and the system's errors.
    QString text() const;

signals:
    void ended();

private:
    QString recordFile() const;
    void takeStart();

    FixtureFolder m_folder;
    QString m_frontend;
    Scenario m_scenario;
    std::unique_ptr<SimulatedProgram> m_system;
    std::optional<Endpoint> m_endpoint;
    QString m_systemErrors;
    ChildProcess m_process;
    QVector<FrontendStart> m_starts;
};
