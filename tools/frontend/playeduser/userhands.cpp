#include "userhands.h"

#include "narrator.h"
#include "screenshots.h"
#include "watchdog.h"
#include "windowtexts.h"

#include <QAbstractButton>
#include <QAction>

namespace {

QString withoutMnemonic(QString text)
{
    return text.remove(QLatin1Char('&'));
}

} // namespace

UserHands::UserHands(Narrator& narrator, Screenshots& screenshots, Watchdog& watchdog)
    : m_narrator(narrator), m_screenshots(screenshots), m_watchdog(watchdog)
{
}

void UserHands::present(QWidget& window, const QString& pictureName)
{
    const QString title = window.windowTitle();
    feedWatchdog(title);
    tell("window", title);
    for (const QString& line : windowTexts(window))
        tell("", line);
    takePicture(window, pictureName);
}

void UserHands::takePicture(QWidget& window, const QString& name)
{
    QString error;
    const auto file = m_screenshots.save(window, name, &error);
    if (!file)
        tell("error", error);
    else if (!file->isEmpty())
        tell("picture", *file);
}

void UserHands::press(QAbstractButton& button)
{
    tell("press", withoutMnemonic(button.text()));
    button.click();
}

void UserHands::press(const QWidget& window, const char* name)
{
    press(*window.findChild<QAbstractButton*>(QLatin1String(name)));
}

void UserHands::trigger(QAction& action)
{
    tell("menu", withoutMnemonic(action.text()));
    action.trigger();
}

void UserHands::tell(const char* kind, const QString& text)
{
    m_narrator.tell(QLatin1String(kind), text);
}

void UserHands::feedWatchdog(const QString& place)
{
    m_watchdog.feed(place);
}
