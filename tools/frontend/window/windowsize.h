#pragma once

#include <QSize>

class QWidget;

/// The size @p wanted for @p window, as far as its screen has room for it. Without a display there
/// is no such limit.
QSize fittingSize(const QWidget& window, const QSize& wanted);
