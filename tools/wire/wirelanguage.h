#pragma once

#include "reply.h"

#include <QByteArray>

#include <optional>

/// @file
/// The command language as lines of a connection, one for each text and one for each reply;
/// docs/command-language.md describes them. All functions are safe to use from any thread.

/// A text that came as a line.
struct WireRequest
{
    /// What the line asks for.
    enum class Kind
    {
        Command,   ///< something for the controllers, with `operation` and `text`
        Equipment, ///< something for those who stand beside the system, told by `text`
        Unknown,
    };

    QByteArray tag;            ///< what the reply is marked with, "#7" for example; empty: nothing
    Kind kind = Kind::Unknown; ///< decides which of the other values count
    Operation operation = Operation::Command; ///< that carries the text
    QByteArray text;                          ///< may be longer than controllers take
};

/// A reply that came as a line.
struct WireReply
{
    QByteArray tag;  ///< that of the request; empty: it had none
    bool ok = false; ///< see Reply::ok
    QByteArray text; ///< see Reply::text
};

/// Longest line of a request. It is more than a text may have, so that one that was cut here is
/// still too long for the interpreter.
constexpr int maxRequestLine = 2 * maxTextBytes;

/// Takes the first word and the blank behind it off @p line.
QByteArray takeWord(QByteArray* line);

/// The line for a text, with its line end.
/// @return nullopt if the text cannot stand in a line, since it has a line end itself
std::optional<QByteArray> requestLine(const QByteArray& tag, Operation operation,
                                      const QByteArray& text);
/// The line that looks at the equipment or lays hands on it, with its line end.
QByteArray equipmentLine(const QByteArray& tag, const QByteArray& text);

/// @param line without its line end
WireRequest readRequest(const QByteArray& line);

/// The line for a reply, with its line end. A line end inside of the text becomes a blank.
QByteArray replyLine(const QByteArray& tag, bool ok, const QByteArray& text);

/// @param line without its line end
/// @return nullopt if it is no reply
std::optional<WireReply> readReply(const QByteArray& line);
