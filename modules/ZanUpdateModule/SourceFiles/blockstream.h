#pragma once

#include "globaldefines.h"

#include <QString>

#include <functional>

class IOManager;
class LittleEndianReader;

/// @file
/// Streams a block of a controller update image to the controller that the updates are redirected
/// to; docs/command-language.md describes what goes out.

/// The block that is to be sent.
struct UpdateBlockSource
{
    QString fileName;     ///< of its image, for messages
    int systemModel;      ///< of its image
    ZAN_UPDATE_TYPE type; ///< decides the word of the commands and the time for the last answer
};

/// What stands above the progress bar while a block of this type goes to the controller @p
/// hostname.
QString blockTitle(ZAN_UPDATE_TYPE type, const QString& hostname);

/// How the streaming of a block ended.
struct BlockOutcome
{
    int result = 0;  ///< 0; -1: the controller refused, -3: the file ends early, -4: it is no image
    QString message; ///< what the user is told; empty after a success
    int record = 0;  ///< the record that failed, from 1; 0 if it was none
};

/// A record's place in its block.
struct RecordPlace
{
    int record;  ///< from 1; 0 when the records begin
    int records; ///< signed as in the file
};

/// Is told where the stream stands: when the records begin, then before the first of every 1000
/// records and before the last one. It may serve events.
using BlockTick = std::function<void(const RecordPlace&)>;

/// Sends all records of the block that @p reader stands at. Each waits for what IOManager's
/// set_value() waits for; only the last one for the controller's final answer.
BlockOutcome streamBlock(LittleEndianReader& reader, IOManager* iom, const UpdateBlockSource& block,
                         const BlockTick& tick);
