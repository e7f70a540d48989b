#include "onlooker.h"

#include "narrator.h"
#include "windowtexts.h"

#include <logview.h>
#include <mainwindow.h>

#include <QAbstractButton>
#include <QApplication>

namespace {

constexpr int lookIntervalMs = 50;

} // namespace

Onlooker::Onlooker(MainWindow& window, Narrator& narrator) : m_window(window), m_narrator(narrator)
{
    connect(&window.log(), &LogView::added, this,
            [this](const QString& sender, const QString& text) {
                tell({QStringLiteral("log"), QStringLiteral("%1: %2").arg(sender, text)});
            });
    connect(qApp, &QApplication::focusChanged, this,
            [this](const QWidget* /*old*/, const QWidget* now) { tellFocus(now); });
    connect(&m_timer, &QTimer::timeout, this, &Onlooker::look);
    m_timer.start(lookIntervalMs);
}

// Tells what stands there at two looks only, as windows move about while they open.
void Onlooker::look()
{
    const QWidget* dialog = QApplication::activeModalWidget();
    const QWidget& top = dialog ? *dialog : m_window;
    if (m_watched != &top) {
        m_watched = &top;
        m_seen.clear();
        m_told.clear();
    }
    const QVector<Line> lines = linesOf(top);
    QVector<Line> steady;
    for (const Line& line : lines) {
        if (!m_seen.contains(line))
            continue;
        steady += line;
        if (!m_told.contains(line))
            tell(line);
    }
    m_seen = lines;
    m_told = steady;
}

// What is read comes last: whoever waits for it knows the places by then.
QVector<Onlooker::Line> Onlooker::linesOf(const QWidget& window)
{
    QVector<Line> lines;
    if (!window.isVisible())
        return lines;
    lines += {QStringLiteral("window"), window.windowTitle()};
    for (const QString& place : windowPlaces(window))
        lines += {QStringLiteral("place"), place};
    for (const QString& text : windowTexts(window))
        lines += {QString(), text};
    return lines;
}

void Onlooker::tell(const Line& line)
{
    m_narrator.tell(line.first, line.second);
}

void Onlooker::tellFocus(const QWidget* widget)
{
    const auto* button = qobject_cast<const QAbstractButton*>(widget);
    const QString name = widget ? widget->objectName() : QString();
    tell({QStringLiteral("focus"), button ? button->text().remove(QLatin1Char('&')) : name});
}
