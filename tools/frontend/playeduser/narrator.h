#pragma once

#include <QElapsedTimer>
#include <QStringList>

/// Tells line by line what happens in a run that nobody sees.
class Narrator
{
public:
    Narrator() { m_clock.start(); }

    /// Prints one line with the time since the start.
    /// @param kind one word, for example "press"
    void tell(const QString& kind, const QString& text);

    /// What was told, without times: "press: Update".
    const QStringList& told() const { return m_told; }

private:
    QElapsedTimer m_clock;
    QStringList m_told;
};
