#pragma once

#include "commandinterpreter.h"
#include "scenario.h"
#include "simulatedsystem.h"

#include <payload.h>

#include <QByteArray>
#include <QList>
#include <QMetaType>

// For the columns of tables.
Q_DECLARE_METATYPE(BlockReceiver::State)
Q_DECLARE_METATYPE(Delivery)
Q_DECLARE_METATYPE(Fault)
Q_DECLARE_METATYPE(FaultMode)
Q_DECLARE_METATYPE(Measurement)
Q_DECLARE_METATYPE(Operation)
Q_DECLARE_METATYPE(PayloadComponent)
Q_DECLARE_METATYPE(VersionInfo)

/// The 6-bit text of one record, made bit by bit: slow, plain and nobody else's code.
QByteArray sixBitText(const QByteArray& record);

/// The texts of the records that carry @p payload, @p recordSize bytes in each.
QList<QByteArray> recordTexts(const QByteArray& payload, int recordSize = 120);

/// A payload of some 24 records.
QByteArray trackingSoftware(VersionInfo version, const QString& appendix = QString());
QByteArray controllerFirmware(VersionInfo version);
QByteArray cameraFirmware(VersionInfo version, const QString& appendix = QString());

/// A shipped scenario; aborts the process if it cannot be read, which a test of its own looks at.
Scenario shippedScenario(const QString& name);

/// A fault that strikes when @p request comes.
Fault faultAt(FaultMode mode, const QByteArray& request, int delayMs = 0);

/// A system with a clock that only a test moves, and its interpreter.
struct SimulatedSite
{
    explicit SimulatedSite(const Scenario& scenario);
    explicit SimulatedSite(const QString& scenarioName);

    QByteArray getString(const QByteArray& text);
    Reply set(const QByteArray& text);
    Reply command(const QByteArray& text);

    /// Sends @p payload record by record behind @p words ("system update", for example) and stops
    /// at the first record that is not taken. @return the reply to the last record sent
    Reply send(const QByteArray& words, const QByteArray& payload);
    /// The same with a command for each record.
    Reply sendToCamera(const QByteArray& camera, const QByteArray& payload);

    void waitMs(qint64 ms);
    /// Waits until the system answers, giving power by hand where it needs that.
    void bringUp();

    const ControllerState& controller(int index) const { return system.controllers().at(index); }

    qint64 nowMs = Q_INT64_C(1750000000000); ///< 2025-06-15
    SimulatedSystem system;
    CommandInterpreter interpreter;

private:
    Reply sendRecords(Operation operation, const QByteArray& words, const QByteArray& payload);
};

/// Whether each controller that is available runs @p pt and @p ct, neither older nor newer, nor a
/// pre-release of them.
bool allRun(const SimulatedSystem& system, VersionInfo pt, VersionInfo ct);

/// Whether a record, setting or command was taken.
bool isTaken(const Reply& reply);
