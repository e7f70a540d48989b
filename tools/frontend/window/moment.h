#pragma once

#include <QDateTime>
#include <QString>

/// The moment @p time as windows tell it, in the user's own zone and way to write it: the time of
/// day with its seconds, and the date before it where that is not the one of @p now.
QString momentText(const QDateTime& time, const QDateTime& now = QDateTime::currentDateTime());
