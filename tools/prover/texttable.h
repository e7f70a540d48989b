#pragma once

#include <QStringList>
#include <QVector>

/// The rows as text in columns, one line each, indented by two blanks. All rows must be of one
/// length. Safe to call from any thread.
QString alignedTable(const QVector<QStringList>& rows);
