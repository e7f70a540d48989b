#pragma once

#include <QString>

class Narrator;
class QAction;
class QAbstractButton;
class QWidget;
class Screenshots;
class Watchdog;

/// What the played user does in any window, each told to the narrator: reads it out, takes its
/// picture, presses its buttons.
class UserHands
{
public:
    /// All must outlive the hands.
    UserHands(Narrator& narrator, Screenshots& screenshots, Watchdog& watchdog);

    /// Reads @p window out and takes its picture, named @p pictureName.
    void present(QWidget& window, const QString& pictureName);

    /// Takes a picture of @p window, named @p name; a failure is told and no more.
    void takePicture(QWidget& window, const QString& name);

    /// Clicks on @p button.
    void press(QAbstractButton& button);

    /// Clicks on the button of @p window that is called @p name, which must exist.
    void press(const QWidget& window, const char* name);

    /// Chooses @p action in its menu.
    void trigger(QAction& action);

    /// Tells of something that is done or seen. @param kind one word, for example "untick"
    void tell(const char* kind, const QString& text);

    /// Keeps the watchdog quiet. @param place where something has moved
    void feedWatchdog(const QString& place);

private:
    Narrator& m_narrator;
    Screenshots& m_screenshots;
    Watchdog& m_watchdog;
};
