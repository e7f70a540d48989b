#pragma once

#include "program.h"

#include <QPoint>

#include <memory>
#include <optional>

/// An X server of its own, and the hands of a user on it: all keys and clicks go through the window
/// system.
class Desktop
{
public:
    Desktop();

    /// Empty if all is well, otherwise what is missing.
    const QString& trouble() const { return m_trouble; }

    /// Variables for programs that show windows on it.
    QStringList environment() const;

    /// Waits for a window with exactly this title, which may be behind another one. @return whether
    /// it is there
    bool shows(const QString& title) const;
    /// Gives the keyboard to the window with exactly this title, once it is there. One that a modal
    /// window blocks hands it on at once.
    /// @return whether it has it
    bool focus(const QString& title) const;
    /// Presses a key, or several in a row, such as "alt+y" or "Return".
    void press(const QStringList& keys) const;
    void click(QPoint place) const;

    /// Saves what the screen shows, for whoever looks at a failure, if a program for that is there.
    void savePicture(const QString& file) const;

private:
    /// @return the window with exactly this title; empty: there is none
    QString windowWith(const QString& title) const;
    /// @return what it printed, without the last line end; nullopt if it failed
    std::optional<QString> run(const QString& program, const QStringList& arguments) const;

    std::unique_ptr<Program> m_server;
    QString m_display;
    QString m_trouble;
};
