#pragma once

#include "dialogfixture.h"

#include <QObject>
#include <QStringList>
#include <QVector>

/// Writes down what the dialog shows during a run: at every change of the bar and at every call of
/// the channel, whose hook it takes.
class ShownProgress : public QObject
{
    Q_OBJECT

public:
    explicit ShownProgress(DialogFixture* fixture);
    ~ShownProgress() override;

    /// Each state that differs from the one before it, as "WHAT | MESSAGE | PERCENT".
    const QStringList& states() const { return m_states; }
    /// The values of the bar, each that differs from the one before it.
    QVector<int> values() const;
    /// Writes down what is shown now; for a test that sets a hook of its own.
    void note();

private:
    DialogFixture* m_fixture;
    QStringList m_states;
};
