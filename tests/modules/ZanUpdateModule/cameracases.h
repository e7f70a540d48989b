#pragma once

#include <scriptedchannel.h>

#include <functional>

/// @file
/// What cameras and their channel answer, for the tests of what sends images and of the dialog that
/// shows it: each case stands here once.

Q_DECLARE_METATYPE(ScriptedAnswers)

/// Has a channel answer as a case needs it.
using Script = std::function<void(ScriptedChannel&)>;
Q_DECLARE_METATYPE(Script)

/// The call that sends a record: "c01 2 1 BA".
QString sent(const QByteArray& record);

/// The calls around the last record of an image, whose time of its own is 30 s.
///@{
extern const QString PREPARE;
extern const QString POLL;
///@}

/// Rows of each `answer` to a record with the `code` that comes of it.
void addRowsOfReplies();

/// Rows of channels that fail while an image of the records 01 and 02 is sent to the first camera:
/// the `script`, the `code` that comes of it, and how many `calls` are made.
void addRowsOfFailingChannels();
