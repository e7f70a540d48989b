#include "theme.h"

#include <QApplication>
#include <QPalette>
#include <QStyleFactory>
#include <QToolTip>

namespace {

struct Colours
{
    QRgb window, windowText, base, alternateBase, button, highlight, highlightedText, link,
        disabled;
};

constexpr Colours bright = {0xFFF1F3F5, 0xFF1E252B, 0xFFFFFFFF, 0xFFF5F7F9, 0xFFE9EDF0,
                            0xFF1F6FB2, 0xFFFFFFFF, 0xFF15598F, 0xFF8A939B};
// The base is the lighter one here: the style draws its edges darker than the window, and they
// would vanish on a base that is darker still.
constexpr Colours dark = {0xFF262B30, 0xFFE6EAED, 0xFF343B42, 0xFF3A4249, 0xFF3F474F,
                          0xFF2F7FC6, 0xFFFFFFFF, 0xFF8CC4F2, 0xFF8A949D};

QPalette paletteOf(const Colours& colours)
{
    // The shades of edges follow from the button and the window.
    QPalette palette(QColor(colours.button), QColor(colours.window));
    palette.setColor(QPalette::WindowText, colours.windowText);
    palette.setColor(QPalette::Text, colours.windowText);
    palette.setColor(QPalette::ButtonText, colours.windowText);
    palette.setColor(QPalette::Base, colours.base);
    palette.setColor(QPalette::AlternateBase, colours.alternateBase);
    palette.setColor(QPalette::ToolTipBase, colours.alternateBase);
    palette.setColor(QPalette::ToolTipText, colours.windowText);
    palette.setColor(QPalette::PlaceholderText, colours.disabled);
    palette.setColor(QPalette::Highlight, colours.highlight);
    palette.setColor(QPalette::HighlightedText, colours.highlightedText);
    palette.setColor(QPalette::Link, colours.link);
    palette.setColor(QPalette::LinkVisited, colours.link);
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, colours.disabled);
    palette.setColor(QPalette::Disabled, QPalette::Highlight, colours.disabled);
    return palette;
}

} // namespace

void applyTheme(bool isDark)
{
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    const QPalette palette = paletteOf(isDark ? dark : bright);
    QApplication::setPalette(palette);
    QToolTip::setPalette(palette);
}
