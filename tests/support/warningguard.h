#pragma once

#include <QString>

/// Fails the running test on every warning that no ExpectedWarning announced. Installs its message
/// handler over the one that is in force and hands everything on to that.
void failOnUnexpectedWarnings();

/// From now on, with no test running any more, counts the warnings instead.
void countWarnings();

/// How many warnings came since countWarnings().
int countedWarnings();

/// Announces one warning, which is then not shown; fails the test if it has not come when the
/// object goes.
///
///     const ExpectedWarning warning("QFSFileEngine::open: No file name specified");
///
/// It takes the place of QTest::ignoreMessage(), which is of no use under the message handler of
/// the tests.
class ExpectedWarning
{
public:
    explicit ExpectedWarning(const QString& text);
    ~ExpectedWarning();
    ExpectedWarning(const ExpectedWarning&) = delete;
    ExpectedWarning& operator=(const ExpectedWarning&) = delete;

private:
    QString m_text;
};
