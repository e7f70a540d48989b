#pragma once

class QWidget;

/// What the played user does with one kind of window.
class WindowHandler
{
public:
    WindowHandler() = default;
    virtual ~WindowHandler() = default;
    WindowHandler(const WindowHandler&) = delete;
    WindowHandler& operator=(const WindowHandler&) = delete;

    /// Whether @p window is of that kind.
    virtual bool isFor(const QWidget& window) const = 0;

    /// Reads the window out and does one thing there; it may serve events and close the window.
    /// @param visit counts from 1 since the window opened; visits go on while it is on top
    virtual void handle(QWidget& window, int visit) = 0;
};
