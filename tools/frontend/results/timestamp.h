#pragma once

#include <QDateTime>
#include <QString>

/// The moment @p time as files tell it, "2026-03-01 12:00:05.017+01:00": local time with its
/// distance from UTC, whatever the user's language. Two of one zone sort by name as by time.
inline QString timestamp(const QDateTime& time)
{
    const QDateTime local = time.toLocalTime();
    QString text = local.toOffsetFromUtc(local.offsetFromUtc()).toString(Qt::ISODateWithMs);
    return text.replace(QLatin1Char('T'), QLatin1Char(' '));
}
