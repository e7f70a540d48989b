#pragma once

#include <QString>

/// Has a function that can fail end with @p reason. @p error must not be null. @return false
inline bool fail(const QString& reason, QString* error)
{
    *error = reason;
    return false;
}
