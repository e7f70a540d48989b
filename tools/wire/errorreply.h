#pragma once

#include <QByteArray>
#include <QString>

/// The numbers behind "vornix2 err".
enum class ErrorCode
{
    UnknownText = -1,    ///< no text of the language, or not in this version of the protocol
    NoSuchDevice = -2,   ///< no such controller, camera or piece of hardware, or it is not there
    NotNow = -3,         ///< a measurement runs, and refuses to stop or to be disturbed
    WrongRecord = -10,   ///< a record that does not fit to those before it, or is no 6-bit text
    AskedFor = -20,      ///< a fault that was armed
    DamagedUpdate = -26, ///< a block or image that was received but did not pass its check
};

/// The reply to what cannot be done: the number, then @p reason in double quotes, one line of
/// ASCII.
inline QByteArray errorReply(ErrorCode code, const QString& reason)
{
    return QByteArrayLiteral("vornix2 err ") + QByteArray::number(static_cast<int>(code)) + " \"" +
           reason.toLatin1() + '"';
}

/// Whether @p reply tells that something cannot be done.
inline bool isErrorReply(const QByteArray& reply)
{
    return reply.startsWith("vornix2 err");
}
