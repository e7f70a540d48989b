#include "darktheme.h"

#include <QApplication>
#include <QPalette>

bool isDarkTheme(const QWidget* widget)
{
    return QApplication::palette(widget).brush(QPalette::Window).color().lightnessF() < 0.5;
}
