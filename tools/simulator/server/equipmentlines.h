#pragma once

#include <simulatedsystem.h>

#include <QByteArray>

/// @file
/// Answers the lines of those who stand beside the system; docs/simulator.md describes them as
/// those of the bench. To be used from the thread of the system.

/// What comes back for one line.
struct EquipmentAnswer
{
    bool ok = false;      ///< whether it could be done
    QByteArray text;      ///< what was asked for, or why it could not be done; one line
    bool watches = false; ///< the peer wants to be told of each change from now on
    QString name = {};    ///< by which the peer goes from now on; empty: nothing was said of it
};

/// Does what @p line asks for, which comes without the word before it.
EquipmentAnswer answerEquipmentLine(SimulatedSystem& system, const QByteArray& line);

/// Everything that can be seen of @p system and changes, as one line of JSON.
QByteArray equipmentToJson(const SimulatedSystem& system);
