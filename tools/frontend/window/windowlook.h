#pragma once

#include <QSize>
#include <QString>

#include <optional>

/// How a window looks: what its user has made of it, and finds again at the next start.
struct WindowLook
{
    QSize size;               ///< as long as it is not maximized
    bool isMaximized = false; ///< whether it fills the screen
    bool isDark = false;      ///< whether the theme is the dark one
};

/// Reads what writeWindowLook() has written.
/// @param error must not be null; left alone if there is no such file, else "FILE: REASON"
/// @return nullopt if there is none, or it cannot be read
std::optional<WindowLook> readWindowLook(const QString& file, QString* error);

/// Writes @p look into @p file, whole or not at all.
/// @param error must not be null; on failure "FILE: REASON"
bool writeWindowLook(const QString& file, const WindowLook& look, QString* error);
