#pragma once

#include "equipment.h"

#include <QByteArray>

#include <optional>

/// @file
/// What is seen of equipment and done to it, as lines of a connection; docs/simulator.md describes
/// them as those of the bench. All functions are safe to use from any thread.

/// The answer to the line "scenario".
QByteArray scenarioToJson(const Scenario& scenario);

/// What tells one system from another: two are the same if they are made of the same scenario.
/// @param scenario from scenarioToJson()
QByteArray systemIdentity(const QByteArray& scenario);

/// The line that asks for @p command, without the word before it.
QByteArray commandLine(const EquipmentCommand& command);

/// The first words of such lines.
QStringList commandWords();

/// What commandLine() has written.
/// @param scenario the one of the equipment
/// @param error must not be null; on failure one line
/// @return nullopt for what is no command
std::optional<EquipmentCommand> readCommandLine(const QByteArray& line, const Scenario& scenario,
                                                QString* error);

/// Equipment as it told of itself.
struct EquipmentReport
{
    EquipmentState state;        ///< at the moment of the report
    qint64 msUntilReachable = 0; ///< see Equipment::msUntilReachable()
};

/// @param memory what of the state outlives its process
/// @return one line of JSON
QByteArray reportToJson(const EquipmentReport& report, const SystemMemory& memory);

/// @param scenario the one of the equipment that the report is about
/// @param error must not be null; on failure one line
/// @return nullopt if the text is damaged, or about other devices
std::optional<EquipmentReport> reportFromJson(const QByteArray& json, const Scenario& scenario,
                                              QString* error);
