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
    QString hostName;
    bool available = true;
    QString pt;
    QString ct;
    QString stagedPt;
    QString stagedCt;
};

/// What of a camera outlives the process that simulates it.
struct CameraMemory
{
    QString model;
    QString serial;
    bool running = true;
    bool found = true;
    QString version;
    QString stagedVersion;
};

/// The content of a state file; docs/simulator.md describes it.
struct SystemMemory
{
    QString scenario;
    Power power = Power::On;
    qint64 restartEndsMs = 0; ///< milliseconds since 1970; counts in Power::Restarting only
    Measurement measurement = Measurement::Off;
    QVector<ControllerMemory> controllers;
    QVector<CameraMemory> cameras;
};

/// The texts of Power in files, in the order of its values.
const QStringList& powerTexts();

/// The content of a state file as a part of another document.
QJsonObject memoryToJson(const SystemMemory& memory);
/// @return nullopt after an error, which stands in the document's error text
std::optional<SystemMemory> memoryFromJson(CheckedObject root, const Scenario& scenario);

QByteArray stateToJson(const SystemMemory& memory);

/// @param error must not be null; receives "FILE: PATH: REASON"
/// @return nullopt if the text is damaged, or not about the devices of @p scenario.
std::optional<SystemMemory> stateFromJson(const QByteArray& json, const Scenario& scenario,
                                          const QString& fileName, QString* error);
