#pragma once

#include <QString>

/// For `return fail(...)` in a function that can fail: it fails with @p reason. @p error must not
/// be null. @return false
inline bool fail(const QString& reason, QString* error)
{
    *error = reason;
    return false;
}
