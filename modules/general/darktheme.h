#pragma once

class QWidget;

/// Whether the window background that the application's palette gives @p widget is dark.
bool isDarkTheme(const QWidget* widget);
