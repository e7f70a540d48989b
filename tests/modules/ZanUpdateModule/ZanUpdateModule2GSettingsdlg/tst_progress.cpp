#include "dialogfixture.h"
#include "exposeddialog.h"

#include <widgettestmain.h>

#include <QSignalSpy>
#include <QTimer>

/// What the dialog shows of its progress; what it reckons is a unit of its own.
class TestProgress : public QObject
{
    Q_OBJECT

private slots:
    void showsThePercentageAndTimeOfStreaming();

    void timerIsMadeButNotStarted();
    void startSetsARunUp();
    void timerTicksUntilItIsStopped();
    void stopLeavesWhatIsShown();

    void beginsTheLastStepWhenItIsReached();
    void beginsTheLastStepOnce();
    void countsTheLastStepDown();
    void leavesTheValuesOfStreamingAlone();
};

static QString message(const DialogFixture& fixture)
{
    return fixture.label("label_msg")->text();
}

void TestProgress::showsThePercentageAndTimeOfStreaming()
{
    DialogFixture fixture;
    iValProgressBar(fixture.dialog) = 42;
    nUpdateRemainingSeconds(fixture.dialog) = 0;
    updateRemainingTimeString(fixture.dialog);
    QCOMPARE(fixture.bar()->value(), 42);
    QCOMPARE(message(fixture), QString());
    nUpdateRemainingSeconds(fixture.dialog) = 61;
    updateRemainingTimeString(fixture.dialog);
    QCOMPARE(fixture.bar()->value(), 42);
    QCOMPARE(message(fixture), QStringLiteral("Estimated remaining time: 1 min 1 s"));
}

// ---- The timer

void TestProgress::timerIsMadeButNotStarted()
{
    DialogFixture fixture;
    const QTimer* timer = m_progressTimer(fixture.dialog);
    QCOMPARE(timer->interval(), 100);
    QCOMPARE(timer->parent(), static_cast<QObject*>(&fixture.dialog));
    QVERIFY(!timer->isSingleShot());
    QVERIFY(!timer->isActive());
}

void TestProgress::startSetsARunUp()
{
    DialogFixture fixture;
    m_actNumSteps(fixture.dialog) = 7;
    m_isLastStep(fixture.dialog) = true;
    startProgressTimer(fixture.dialog, 3000, 0.00027, 9.5);
    QCOMPARE(m_numSteps(fixture.dialog), 3000);
    QCOMPARE(m_durationStepSec(fixture.dialog), 0.00027);
    QCOMPARE(m_durationLastStepSec(fixture.dialog), 9.5);
    QCOMPARE(m_actNumSteps(fixture.dialog), 0);
    QVERIFY(!m_isLastStep(fixture.dialog));
    QVERIFY(m_progressTimer(fixture.dialog)->isActive());

    setProgressTimerSteps(fixture.dialog, 12);
    QCOMPARE(m_actNumSteps(fixture.dialog), 12);
    stopProgressTimer(fixture.dialog);
    QVERIFY(!m_progressTimer(fixture.dialog)->isActive());
}

void TestProgress::timerTicksUntilItIsStopped()
{
    DialogFixture fixture;
    QSignalSpy ticks(m_progressTimer(fixture.dialog), &QTimer::timeout);
    startProgressTimer(fixture.dialog, 100, 1.0, 20.0);
    setProgressTimerSteps(fixture.dialog, 60);
    // Starting alone shows nothing: the first tick does.
    QCOMPARE(message(fixture), QStringLiteral("Message"));
    QVERIFY(ticks.wait(patienceMs));
    QCOMPARE(message(fixture), QStringLiteral("Estimated remaining time: 1 min 0 s"));
    QCOMPARE(fixture.bar()->value(), 50);

    setProgressTimerSteps(fixture.dialog, 90);
    QVERIFY(ticks.wait(patienceMs));
    QCOMPARE(message(fixture), QStringLiteral("Estimated remaining time: 30 s"));
    QCOMPARE(fixture.bar()->value(), 75);
}

void TestProgress::stopLeavesWhatIsShown()
{
    DialogFixture fixture;
    startProgressTimer(fixture.dialog, 100, 1.0, 20.0);
    setProgressTimerSteps(fixture.dialog, 60);
    doProgressTimer(fixture.dialog);
    stopProgressTimer(fixture.dialog);
    QCOMPARE(message(fixture), QStringLiteral("Estimated remaining time: 1 min 0 s"));
    QCOMPARE(fixture.bar()->value(), 50);
}

// ---- One tick

void TestProgress::beginsTheLastStepWhenItIsReached()
{
    DialogFixture fixture;
    startProgressTimer(fixture.dialog, 10, 1.0, 5.0);
    setProgressTimerSteps(fixture.dialog, 9);
    doProgressTimer(fixture.dialog);
    QVERIFY(!m_isLastStep(fixture.dialog));
    setProgressTimerSteps(fixture.dialog, 10);
    doProgressTimer(fixture.dialog);
    QVERIFY(m_isLastStep(fixture.dialog));
}

void TestProgress::beginsTheLastStepOnce()
{
    DialogFixture fixture;
    startProgressTimer(fixture.dialog, 10, 1.0, 5.0);
    setProgressTimerSteps(fixture.dialog, 10);
    const auto before = std::chrono::steady_clock::now();
    doProgressTimer(fixture.dialog);
    const auto begin = m_timLastStep(fixture.dialog);
    QVERIFY(begin >= before && begin <= std::chrono::steady_clock::now());
    doProgressTimer(fixture.dialog);
    QVERIFY(m_timLastStep(fixture.dialog) == begin);
}

// Its begin lies back in time, so that nobody has to wait.
void TestProgress::countsTheLastStepDown()
{
    DialogFixture fixture;
    startProgressTimer(fixture.dialog, 1000, 1.0, 10000.0);
    setProgressTimerSteps(fixture.dialog, 1000);
    m_isLastStep(fixture.dialog) = true;
    m_timLastStep(fixture.dialog) = std::chrono::steady_clock::now() - std::chrono::hours(1);
    doProgressTimer(fixture.dialog);
    // 4600 seconds of 11000, or 6400 seconds left, less what the test itself takes.
    QVERIFY(fixture.bar()->value() >= 41 && fixture.bar()->value() < 98);
    const QString text = message(fixture);
    QVERIFY2(text.section(' ', 3, 3).toInt() <= 106, qPrintable(text));
}

void TestProgress::leavesTheValuesOfStreamingAlone()
{
    DialogFixture fixture;
    iValProgressBar(fixture.dialog) = 42;
    nUpdateRemainingSeconds(fixture.dialog) = 43;
    startProgressTimer(fixture.dialog, 100, 1.0, 20.0);
    setProgressTimerSteps(fixture.dialog, 60);
    doProgressTimer(fixture.dialog);
    QCOMPARE(iValProgressBar(fixture.dialog), 42);
    QCOMPARE(nUpdateRemainingSeconds(fixture.dialog), 43);
}

ZAN_WIDGET_TEST_MAIN(TestProgress)

#include "tst_progress.moc"
