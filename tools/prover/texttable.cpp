#include "texttable.h"

QString alignedTable(const QVector<QStringList>& rows)
{
    QVector<int> widths(rows.isEmpty() ? 0 : rows.constFirst().size());
    for (const QStringList& row : rows) {
        for (int column = 0; column < row.size(); ++column)
            widths[column] = qMax(widths.at(column), row.at(column).size());
    }
    QString text;
    for (const QStringList& row : rows) {
        QString line;
        for (int column = 0; column < row.size(); ++column)
            line += QStringLiteral("  ") + row.at(column).leftJustified(widths.at(column));
        while (line.endsWith(QLatin1Char(' ')))
            line.chop(1);
        text += line + QLatin1Char('\n');
    }
    return text;
}
