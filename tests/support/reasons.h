#pragma once

#include <QByteArray>
#include <QJsonDocument>
#include <QJsonParseError>
#include <QString>

#include <cerrno>

/// @file
/// Reasons that the system and Qt give, in their own words and in the language of the machine.
/// Tests expect them as they are told here.

/// @param code such as ENOENT
inline QString systemReason(int code)
{
    return qt_error_string(code);
}

/// What Qt's parser has against @p json, which is broken.
inline QString jsonReason(const QByteArray& json)
{
    QJsonParseError problem;
    QJsonDocument::fromJson(json, &problem);
    return problem.errorString();
}
