#pragma once

#include <QStringList>

class QWidget;

/// What a user reads in a window, line by line: texts, rows of tables, and the buttons.
/// Rich text comes without its tags; of a long page the beginning.
QStringList windowTexts(const QWidget& window);
