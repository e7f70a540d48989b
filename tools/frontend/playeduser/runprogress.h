#pragma once

#include <QString>

class QWidget;

/// What the update dialog shows of a run, and when that is worth a line: at each new step and every
/// tenth of it.
class RunProgress
{
public:
    /// Reads the dialog. @return whether it shows something else than at the last look
    bool look(const QWidget& updateDialog);

    /// What is to be told since the last call; empty if nothing is.
    QString line();

    /// At the last look.
    int percent() const { return m_percent; }

private:
    QString m_what;
    QString m_message;
    int m_percent = 0;
    QString m_state; // as it was looked at
    QString m_told;  // the step
};

/// The text of the label @p name in @p window; empty if there is none.
QString labelText(const QWidget& window, const char* name);
