#pragma once

#include <QStringList>

class QWidget;

/// What a user reads in a window, line by line: texts, rows of tables, and the buttons.
/// Rich text comes without its tags; of a long page the beginning.
QStringList windowTexts(const QWidget& window);

/// Where a user clicks in a window, in pixels of the screen: "Exit 812,540" for each button that is
/// enabled, "row 1 40,112" for each row's box to tick, rows counted from 1.
QStringList windowPlaces(const QWidget& window);
