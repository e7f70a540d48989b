#pragma once

#include <fixtureimages.h>

#include <functional>

/// @file
/// Blocks on their way to a controller, for the tests of what reads and sends them and of the
/// dialog that shows it: each case stands here once.

/// An image of these blocks.
ControllerImage testImage(const QVector<ControllerImageBlock>& blocks);

/// A case's change of one field of a good block.
using BlockChange = std::function<void(ControllerImageBlock&)>;

/// The file of one firmware block that was changed.
QByteArray fileWith(const BlockChange& change);

/// The file of one firmware block of two records, which go out as BIwA and /D.
QByteArray goodFile();

/// goodFile() of the model family 21, with another magic of its block.
QByteArray briarscopeFile(quint16 magic);

/// goodFile() with a block that is written byte by byte.
QByteArray workedExample();

/// The call that sends the first record of goodFile().
QString firstRecord();

/// Rows of blocks that have no records to be sent: `recordCount` as it stands in the file, and
/// `records` as the plug-in counts them.
void addRowsWithoutRecords();

/// Rows of files that are refused: `file`, the `result`, the `record` at which it ends, the
/// `percent` that the dialog shows then, and the `log` of the calls.
void addRowsOfBadFiles();

/// Rows of blocks of so many `records`, with those at which the run ticks: `ticks`.
void addRowsOfTicks();
