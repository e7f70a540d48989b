#include "windowtexts.h"

#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QStyle>
#include <QTableView>
#include <QTextDocumentFragment>
#include <QTextEdit>

namespace {

constexpr int pageLines = 8;

QStringList plainLines(const QString& text)
{
    const QString plain =
        Qt::mightBeRichText(text) ? QTextDocumentFragment::fromHtml(text).toPlainText() : text;
    QStringList lines;
    for (const QString& line : plain.split(QLatin1Char('\n')))
        lines += line.trimmed();
    lines.removeAll(QString());
    return lines;
}

// The widgets of a class that the user sees in this window, those of windows in front of it left
// out.
template <typename Widget>
QList<Widget*> visibleIn(const QWidget& window)
{
    QList<Widget*> found;
    for (Widget* widget : window.findChildren<Widget*>()) {
        if (widget->isVisible() && widget->window() == &window)
            found += widget;
    }
    return found;
}

QString rowText(const QAbstractItemModel& model, int row)
{
    QStringList cells;
    for (int column = 0; column < model.columnCount(); ++column) {
        const QModelIndex cell = model.index(row, column);
        const QVariant check = cell.data(Qt::CheckStateRole);
        if (check.isValid())
            cells += check.toInt() == Qt::Checked ? QStringLiteral("[x]") : QStringLiteral("[ ]");
        else if (!cell.data().toString().isEmpty())
            cells += cell.data().toString();
    }
    return cells.join(QStringLiteral(" | "));
}

QStringList rowTexts(const QTableView& view)
{
    QStringList rows;
    for (int row = 0; row < view.model()->rowCount(); ++row)
        rows += rowText(*view.model(), row);
    return rows;
}

QStringList beginningOf(const QTextEdit& page)
{
    QStringList lines = plainLines(page.toPlainText());
    const int more = lines.size() - pageLines;
    if (more > 0)
        lines = lines.mid(0, pageLines) << QStringLiteral("... (%1 more lines)").arg(more);
    return lines;
}

QStringList buttonTexts(const QWidget& window)
{
    QStringList texts;
    for (const QPushButton* button : visibleIn<QPushButton>(window)) {
        const QString text = QString(button->text()).remove(QLatin1Char('&'));
        texts += QStringLiteral("[%1]%2").arg(text, button->isEnabled() ? QString()
                                                                        : QStringLiteral(" (off)"));
    }
    return texts;
}

QString placeText(const QString& name, const QWidget& widget, const QPoint& point)
{
    const QPoint onScreen = widget.mapToGlobal(point);
    return QStringLiteral("%1 %2,%3").arg(name).arg(onScreen.x()).arg(onScreen.y());
}

QStringList tickPlaces(const QTableView& view)
{
    const QStyle& style = *view.style();
    const int margin = style.pixelMetric(QStyle::PM_FocusFrameHMargin) + 1;
    const int middle = margin + style.pixelMetric(QStyle::PM_IndicatorWidth) / 2;
    QStringList places;
    for (int row = 0; row < view.model()->rowCount(); ++row) {
        const QModelIndex cell = view.model()->index(row, 0);
        const QRect rect = view.visualRect(cell);
        if (cell.flags().testFlag(Qt::ItemIsUserCheckable))
            places += placeText(QStringLiteral("row %1").arg(row + 1), *view.viewport(),
                                {rect.left() + middle, rect.center().y()});
    }
    return places;
}

} // namespace

QStringList windowTexts(const QWidget& window)
{
    QStringList lines;
    if (const auto* box = qobject_cast<const QMessageBox*>(&window)) {
        lines += plainLines(box->text());
        lines += plainLines(box->informativeText());
    } else {
        for (const QLabel* label : visibleIn<QLabel>(window)) {
            // A caption says nothing without its field.
            if (!label->buddy())
                lines += plainLines(label->text());
        }
        for (const QTableView* view : visibleIn<QTableView>(window))
            lines += rowTexts(*view);
        for (const QTextEdit* page : visibleIn<QTextEdit>(window))
            lines += beginningOf(*page);
    }
    lines += buttonTexts(window).join(QLatin1Char(' '));
    lines.removeAll(QString());
    return lines;
}

QStringList windowPlaces(const QWidget& window)
{
    QStringList places;
    for (const QPushButton* button : visibleIn<QPushButton>(window)) {
        if (button->isEnabled())
            places += placeText(button->text().remove(QLatin1Char('&')), *button,
                                button->rect().center());
    }
    for (const QTableView* view : visibleIn<QTableView>(window))
        places += tickPlaces(*view);
    return places;
}
