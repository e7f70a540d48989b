#include "dialogfixture.h"
#include "exposeddialog.h"

#include <widgettestmain.h>

#include <QSignalSpy>
#include <QTimer>

class Progress : public QObject
{
    Q_OBJECT

private slots:
    void tellsTheRemainingTime_data();
    void tellsTheRemainingTime();
    void showsThePercentageOfStreaming();

    void timerIsMadeButNotStarted();
    void startSetsARunUp();
    void timerTicksUntilItIsStopped();
    void stopLeavesWhatIsShown();

    void showsTheStep_data();
    void showsTheStep();
    void countsTheLastStepDown_data();
    void countsTheLastStepDown();
    void beginsTheLastStepOnce();
    void barNeverFalls();
    void leavesTheValuesOfStreamingAlone();
};

static QString message(const DialogFixture& fixture)
{
    return fixture.label("label_msg")->text();
}

// ---- The text

void Progress::tellsTheRemainingTime_data()
{
    QTest::addColumn<int>("seconds");
    QTest::addColumn<QString>("text");

    QTest::newRow("no time left") << 0 << "";
    QTest::newRow("less than no time left") << -1 << "";
    QTest::newRow("far less than no time left") << -3600 << "";
    QTest::newRow("one second") << 1 << "Estimated remaining time: 1 s";
    QTest::newRow("the last second below a minute") << 59 << "Estimated remaining time: 59 s";
    QTest::newRow("one minute") << 60 << "Estimated remaining time: 1 min 0 s";
    QTest::newRow("one minute and a second") << 61 << "Estimated remaining time: 1 min 1 s";
    QTest::newRow("the worked example") << 123 << "Estimated remaining time: 2 min 3 s";
    QTest::newRow("there is no unit for an hour") << 3600 << "Estimated remaining time: 60 min 0 s";
    QTest::newRow("many minutes without any filling")
        << 60005 << "Estimated remaining time: 1000 min 5 s";
}

void Progress::tellsTheRemainingTime()
{
    QFETCH(const int, seconds);
    DialogFixture fixture;
    nUpdateRemainingSeconds(fixture.dialog) = seconds;
    updateRemainingTimeString(fixture.dialog);
    QTEST(message(fixture), "text");
}

void Progress::showsThePercentageOfStreaming()
{
    DialogFixture fixture;
    iValProgressBar(fixture.dialog) = 42;
    nUpdateRemainingSeconds(fixture.dialog) = 0;
    updateRemainingTimeString(fixture.dialog);
    QCOMPARE(fixture.bar()->value(), 42);
}

// ---- The timer

void Progress::timerIsMadeButNotStarted()
{
    DialogFixture fixture;
    const QTimer* timer = m_progressTimer(fixture.dialog);
    QCOMPARE(timer->interval(), 100);
    QCOMPARE(timer->parent(), static_cast<QObject*>(&fixture.dialog));
    QVERIFY(!timer->isSingleShot());
    QVERIFY(!timer->isActive());
}

void Progress::startSetsARunUp()
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

void Progress::timerTicksUntilItIsStopped()
{
    DialogFixture fixture;
    QSignalSpy ticks(m_progressTimer(fixture.dialog), &QTimer::timeout);
    startProgressTimer(fixture.dialog, 100, 1.0, 20.0);
    setProgressTimerSteps(fixture.dialog, 60);
    // Starting alone shows nothing: the first tick does.
    QCOMPARE(message(fixture), QStringLiteral("Message"));
    QVERIFY(ticks.wait());
    QCOMPARE(message(fixture), QStringLiteral("Estimated remaining time: 1 min 0 s"));
    QCOMPARE(fixture.bar()->value(), 50);

    setProgressTimerSteps(fixture.dialog, 90);
    QVERIFY(ticks.wait());
    QCOMPARE(message(fixture), QStringLiteral("Estimated remaining time: 30 s"));
    QCOMPARE(fixture.bar()->value(), 75);
}

void Progress::stopLeavesWhatIsShown()
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

void Progress::showsTheStep_data()
{
    QTest::addColumn<int>("steps");
    QTest::addColumn<double>("durationStep");
    QTest::addColumn<double>("durationLast");
    QTest::addColumn<int>("step");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("bar");

    const auto row = [](const char* name, int steps, double durationStep, double durationLast,
                        int step, const char* text, int bar) {
        QTest::newRow(name) << steps << durationStep << durationLast << step
                            << QString::fromLatin1(text) << bar;
    };
    row("the start of the worked example", 100000, 0.00027, 27.5, 0,
        "Estimated remaining time: 54 s", 1);
    row("the middle of the worked example", 100000, 0.00027, 27.5, 50000,
        "Estimated remaining time: 41 s", 24);
    row("the last step but one of the worked example", 100000, 0.00027, 27.5, 99999,
        "Estimated remaining time: 27 s", 49);
    row("the last step of the worked example", 100000, 0.00027, 27.5, 100000,
        "Estimated remaining time: 27 s", 49);
    row("a step beyond the last one counts as the last", 100000, 0.00027, 27.5, 100001,
        "Estimated remaining time: 27 s", 49);
    row("below 2 the bar shows 1", 1000, 1.0, 0.0, 19, "Estimated remaining time: 16 min 21 s", 1);
    row("from 2 on it shows what it is", 1000, 1.0, 0.0, 21,
        "Estimated remaining time: 16 min 19 s", 2);
    row("up to 97 it shows what it is", 1000, 1.0, 0.0, 979, "Estimated remaining time: 21 s", 97);
    row("above 97 the bar shows 98", 1000, 1.0, 0.0, 981, "Estimated remaining time: 19 s", 98);
    row("near the end the bar still shows 98", 1000, 1.0, 0.0, 999, "Estimated remaining time: 1 s",
        98);
    row("without steps the first tick is the last step", 0, 0.00027, 27.5, 0,
        "Estimated remaining time: 27 s", 1);
    row("a fraction of a second is no time", 10, 0.05, 0.0, 0, "", 1);
    row("a run that takes no time at all", 0, 0.0, 0.0, 0, "", 1);
}

void Progress::showsTheStep()
{
    QFETCH(const int, steps);
    QFETCH(const double, durationStep);
    QFETCH(const double, durationLast);
    QFETCH(const int, step);
    DialogFixture fixture;
    startProgressTimer(fixture.dialog, steps, durationStep, durationLast);
    setProgressTimerSteps(fixture.dialog, step);
    doProgressTimer(fixture.dialog);
    QTEST(message(fixture), "text");
    QTEST(fixture.bar()->value(), "bar");
    QCOMPARE(m_isLastStep(fixture.dialog), step >= steps);
}

void Progress::countsTheLastStepDown_data()
{
    QTest::addColumn<double>("passedSec");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("bar");

    QTest::newRow("it begins at its whole duration")
        << 0.2 << "Estimated remaining time: 27 s" << 49;
    QTest::newRow("halfway") << 13.7 << "Estimated remaining time: 13 s" << 74;
    QTest::newRow("in its last second") << 26.6 << "" << 98;
    QTest::newRow("when its time is over") << 27.5 << "" << 98;
    QTest::newRow("when it takes longer than it should") << 60.0 << "" << 98;
    QTest::newRow("when it takes a hundred times as long") << 2750.0 << "" << 98;
}

// The moment of the last step lies back in time, so that nobody has to wait.
void Progress::countsTheLastStepDown()
{
    QFETCH(const double, passedSec);
    DialogFixture fixture;
    startProgressTimer(fixture.dialog, 100000, 0.00027, 27.5);
    setProgressTimerSteps(fixture.dialog, 100000);
    m_isLastStep(fixture.dialog) = true;
    m_timLastStep(fixture.dialog) =
        std::chrono::steady_clock::now() - std::chrono::duration_cast<std::chrono::nanoseconds>(
                                               std::chrono::duration<double>(passedSec));
    doProgressTimer(fixture.dialog);
    QTEST(message(fixture), "text");
    QTEST(fixture.bar()->value(), "bar");
}

void Progress::beginsTheLastStepOnce()
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

void Progress::barNeverFalls()
{
    DialogFixture fixture;
    startProgressTimer(fixture.dialog, 3000, 0.00027, 9.5);
    int last = 0;
    for (int step = 0; step <= 3000; ++step) {
        setProgressTimerSteps(fixture.dialog, step);
        doProgressTimer(fixture.dialog);
        const int value = fixture.bar()->value();
        QVERIFY(value >= last && value >= 1 && value <= 98);
        last = value;
    }
    // 0.81 seconds of 10.31.
    QCOMPARE(last, 7);
}

void Progress::leavesTheValuesOfStreamingAlone()
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

ZAN_WIDGET_TEST_MAIN(Progress)

#include "tst_progress.moc"
