#pragma once

#include "scenario.h"

#include <checkedjson.h>

#include <QByteArray>
#include <QString>
#include <QVector>

#include <optional>

/// Whether the system runs.
enum class Power
{
    On,
    Restarting, ///< until a moment of the clock
    Hung,       ///< restarting without an end
    Off,
};

/// What of a controller outlives the process that simulates it.
struct ControllerMemory
{
    QString hostName;      ///< tells which of the scenario's it is
    bool available = true; ///< only a slave can be missing
    QString pt;            ///< tracking software that runs, as the controller reports it
    QString ct;            ///< controller firmware that runs, as the controller reports it
    QString stagedPt;      ///< to run from the next restart on; or empty
    QString stagedCt;      ///< likewise
};

/// What of a camera outlives the process that simulates it.
struct CameraMemory
{
    QString model;         ///< tells, with the serial number, which of the scenario's it is
    QString serial;        ///< see model
    bool running = true;   ///< false: it did not come back from a power cycle
    bool found = true;     ///< the controller knows it
    QString version;       ///< firmware that runs, as the camera reports it
    QString stagedVersion; ///< to run after a power cycle; or empty
};

/// The content of a state file; docs/simulator.md describes it.
struct SystemMemory
{
    QString scenario;         ///< name of the scenario that the devices are from
    Power power = Power::On;  ///< whether the system runs
    qint64 restartEndsMs = 0; ///< milliseconds since 1970; counts in Power::Restarting only
    Measurement measurement = Measurement::Off; ///< whether one runs
    QVector<ControllerMemory> controllers;      ///< as many as in the scenario, in its order
    QVector<CameraMemory> cameras;              ///< as many as in the scenario, in its order
};

/// The texts of Power in files and lines.
const EnumTexts<Power>& powerTexts();

/// The content of a state file as a part of another document.
QJsonObject memoryToJson(const SystemMemory& memory);
/// @return nullopt after an error, which stands in the document's error text
std::optional<SystemMemory> memoryFromJson(CheckedObject root, const Scenario& scenario);

/// Whether @p text is a state file, if maybe a damaged one: it names the format. An empty file is
/// what a full disk once left of one.
bool isStateText(const QByteArray& text);

/// The text of a state file.
QByteArray stateToJson(const SystemMemory& memory);

/// @param error must not be null; receives "FILE: PATH: REASON"
/// @return nullopt if the text is damaged, or not about the devices of @p scenario.
std::optional<SystemMemory> stateFromJson(const QByteArray& json, const Scenario& scenario,
                                          const QString& fileName, QString* error);
