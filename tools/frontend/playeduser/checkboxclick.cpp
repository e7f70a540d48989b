#include "checkboxclick.h"

#include <QApplication>
#include <QMouseEvent>
#include <QStyle>
#include <QStyleOptionViewItem>
#include <QTableView>

void clickCheckBox(QTableView& table, int row, int column)
{
    const QModelIndex cell = table.model()->index(row, column);
    QStyleOptionViewItem option;
    option.initFrom(&table);
    option.rect = table.visualRect(cell);
    option.features |= QStyleOptionViewItem::HasCheckIndicator;
    const QPoint box = table.style()
                           ->subElementRect(QStyle::SE_ItemViewItemCheckIndicator, &option, &table)
                           .center();
    for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
        QMouseEvent click(type, box, table.viewport()->mapToGlobal(box), Qt::LeftButton,
                          Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(table.viewport(), &click);
    }
}
