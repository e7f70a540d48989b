#include "cuttexts.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QStyle>
#include <QStyleOptionComboBox>
#include <QtTest>

#include <algorithm>

namespace {

bool fitsOf(const QLabel& label)
{
    const QSize least = label.minimumSizeHint();
    const int height =
        label.hasHeightForWidth() ? label.heightForWidth(label.width()) : least.height();
    return label.width() >= least.width() && label.height() >= height;
}

bool fitsOf(const QComboBox& box)
{
    QStyleOptionComboBox option;
    option.initFrom(&box);
    const int room =
        box.style()
            ->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, &box)
            .width();
    int widest = 0;
    for (int index = 0; index < box.count(); ++index)
        widest = std::max(widest, box.fontMetrics().horizontalAdvance(box.itemText(index)));
    return room >= widest && box.height() >= box.minimumSizeHint().height();
}

QStringList cutSections(const QHeaderView& header)
{
    QStringList cut;
    for (int section = 0; section < header.count(); ++section) {
        const int size = header.sectionSize(section);
        const int least = header.sectionSizeHint(section);
        if (!header.isSectionHidden(section) && size < least)
            cut += QStringLiteral("Section \"%1\" of %2 instead of %3")
                       .arg(header.model()->headerData(section, header.orientation()).toString())
                       .arg(size)
                       .arg(least);
    }
    return cut;
}

bool isInside(const QWidget& widget, const QWidget& window)
{
    return window.rect().contains(QRect(widget.mapTo(&window, QPoint()), widget.size()));
}

// Whether the widget is of a kind that is looked at, and too small or outside of the window.
bool isCut(const QWidget& widget, const QWidget& window)
{
    if (const auto* label = qobject_cast<const QLabel*>(&widget))
        return !fitsOf(*label) || !isInside(widget, window);
    if (const auto* box = qobject_cast<const QComboBox*>(&widget))
        return !fitsOf(*box) || !isInside(widget, window);
    if (!qobject_cast<const QAbstractButton*>(&widget) &&
        !qobject_cast<const QAbstractSpinBox*>(&widget))
        return false;
    const QSize least = widget.minimumSizeHint();
    return widget.width() < least.width() || widget.height() < least.height() ||
           !isInside(widget, window);
}

} // namespace

QStringList cutTexts(const QWidget& window)
{
    QStringList cut;
    for (const QWidget* widget : window.findChildren<QWidget*>()) {
        // Other windows of this one answer for themselves.
        if (!widget->isVisible() || widget->window() != &window)
            continue;
        if (const auto* header = qobject_cast<const QHeaderView*>(widget))
            cut += cutSections(*header);
        if (isCut(*widget, window))
            cut += QStringLiteral("%1 \"%2\" of %3 x %4 instead of %5 x %6")
                       .arg(widget->metaObject()->className(), widget->objectName())
                       .arg(widget->width())
                       .arg(widget->height())
                       .arg(widget->sizeHint().width())
                       .arg(widget->sizeHint().height());
    }
    return cut;
}

LargerFont::LargerFont(double factor) : m_before(QApplication::font())
{
    QFont font = m_before;
    font.setPointSizeF(font.pointSizeF() * factor);
    QApplication::setFont(font);
}

LargerFont::~LargerFont()
{
    QApplication::setFont(m_before);
}

void LargerFont::addRows()
{
    QTest::addColumn<double>("factor");
    QTest::newRow("100 %") << 1.0;
    QTest::newRow("125 %") << 1.25;
    QTest::newRow("150 %") << 1.5;
}
