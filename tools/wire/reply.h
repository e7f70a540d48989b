#pragma once

#include <QByteArray>

/// @file
/// What passes between a host and its controllers: a text with its operation there, a reply back.

/// The operation of the command channel that carries a text.
enum class Operation
{
    GetString, ///< a query for a text
    GetInt,    ///< a query for a whole number
    SetValue,  ///< a setting
    Command,   ///< a text that begins with "vornix2"
};

/// Longer texts are refused; what exceeds this is not read. A record has some 200 bytes.
constexpr int maxTextBytes = 1024;

/// Room that every host has for a reply, the terminating zero included.
constexpr int replyBytes = 200;

/// How an answer arrives.
enum class Delivery
{
    Answered,
    Silent,         ///< no answer comes; whoever waits runs into the time-out
    ConnectionLost, ///< the connection closes, or there is none: the system is down
};

/// What comes back for one text.
struct Reply
{
    /// Success of the operation. A command has it whenever a reply text arrived, also one that
    /// begins with "vornix2 err": what the text says is for the sender to judge.
    bool ok = false;
    QByteArray text;  ///< the value of a query, or the reply text; UTF-8, shorter than replyBytes
    int integer = 0;  ///< the value of Operation::GetInt
    int deviceMs = 0; ///< how long the device takes to answer: to wait, or to compare with the
                      ///< time-out
    Delivery delivery = Delivery::Answered; ///< whether anything comes at all
};
