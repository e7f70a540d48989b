#pragma once

#include <QByteArray>
#include <QString>

struct VerbStreams;

/// Reads a line from the standard input as the password of @p file. On a terminal it is asked for,
/// and what is typed does not show.
/// @return the line without its end; empty if there is none
QByteArray readPassword(const VerbStreams& streams, const QString& file);
