#include "updateprogress.h"

#include "testmain.h"

#include <algorithm>

/// What bar and line show of a run, computed from where it stands.
class TestUpdateProgress : public QObject
{
    Q_OBJECT

private slots:
    void tellsTheRemainingTime_data();
    void tellsTheRemainingTime();

    void showsPercentages_data();
    void showsPercentages();
    void showsEightyThousandRecords();
    void estimatesTheRemainingTime_data();
    void estimatesTheRemainingTime();
    void keepsTheEstimateAtTheLastRecord_data();
    void keepsTheEstimateAtTheLastRecord();

    void showsTheStep_data();
    void showsTheStep();
    void countsTheLastStepDown_data();
    void countsTheLastStepDown();
    void barNeverFalls();
};

// ---- The text

void TestUpdateProgress::tellsTheRemainingTime_data()
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

void TestUpdateProgress::tellsTheRemainingTime()
{
    QFETCH(const int, seconds);
    QTEST(remainingTimeText(seconds), "text");
}

// ---- Blocks of a controller

void TestUpdateProgress::showsPercentages_data()
{
    QTest::addColumn<int>("blocks");
    QTest::addColumn<int>("blocksDone");
    QTest::addColumn<int>("records");
    QTest::addColumn<int>("atFirst");
    QTest::addColumn<int>("atLast");

    const auto row = [](const char* name, int blocks, int blocksDone, int records, int atFirst,
                        int atLast) {
        QTest::newRow(name) << blocks << blocksDone << records << atFirst << atLast;
    };
    row("the end of the only block shows 98, not 100", 1, 0, 1, 98, 98);
    row("halfway through the only block", 1, 0, 2, 50, 98);
    row("the end of the first of two blocks", 2, 0, 1, 50, 50);
    row("the second of two blocks begins where the first one ended", 2, 1, 4, 62, 98);
    row("fractions are cut", 3, 0, 4, 8, 33);
    row("fractions are cut in the middle of a run too", 3, 1, 4, 41, 66);
    row("single precision falls just short of 70", 6, 4, 5, 69, 83);
    row("single precision reaches 90", 9, 8, 10, 90, 98);
    row("less than one is shown as 1", 200, 0, 2, 1, 1);
    row("a block beyond the count of the run", 1, 1, 2, 98, 98);
    row("a block in a run that counts none", 0, 0, 1, 98, 98);
    row("a block beyond a run that counts none", 0, 3, 2, 98, 98);
}

void TestUpdateProgress::showsPercentages()
{
    QFETCH(const int, blocks);
    QFETCH(const int, blocksDone);
    QFETCH(const int, records);
    QTEST(blockProgress({1, records, 0, blocksDone, blocks}, 0).percentage, "atFirst");
    QTEST(blockProgress({records, records, 0, blocksDone, blocks}, 0).percentage, "atLast");
}

// In whole numbers, and without the rounding of single precision.
void TestUpdateProgress::showsEightyThousandRecords()
{
    for (int done = 0; done < 80000; done += 1000) {
        const int expected = std::clamp((done + 1) * 100 / 80000, 1, 98);
        QCOMPARE(blockProgress({done + 1, 80000, 0, 0, 1}, 0).percentage, expected);
    }
    QCOMPARE(blockProgress({80000, 80000, 0, 0, 1}, 0).percentage, 98);
}

void TestUpdateProgress::estimatesTheRemainingTime_data()
{
    QTest::addColumn<int>("blocks");
    QTest::addColumn<int>("blocksDone");
    QTest::addColumn<int>("record");
    QTest::addColumn<int>("records");
    QTest::addColumn<int>("seconds");
    QTest::addColumn<int>("percentage");

    const auto row = [](const char* name, int blocks, int blocksDone, int record, int records,
                        int seconds, int percentage) {
        QTest::newRow(name) << blocks << blocksDone << record << records << seconds << percentage;
    };
    row("the first record of the first of three large blocks", 3, 0, 1, 80000, 123, 1);
    row("the first record of the last of three large blocks", 3, 2, 1, 80000, 41, 66);
    row("in the middle of a large block", 1, 0, 40001, 80000, 26, 50);
    row("a small block takes the time of its last step", 1, 0, 1, 2749, 12, 1);
    row("a second is added for 2750 records", 1, 0, 1, 2750, 13, 1);
    row("the fraction of a second is cut", 1, 0, 1, 5499, 13, 1);
    row("a further block counts as 41 seconds", 2, 0, 1, 10, 53, 5);
    row("a run that counts no blocks keeps its estimate", 0, 0, 1, 10, 7, 98);
    row("a block beyond the count takes time from the estimate", 1, 1, 1, 80000, 0, 98);
}

void TestUpdateProgress::estimatesTheRemainingTime()
{
    QFETCH(const int, blocks);
    QFETCH(const int, blocksDone);
    QFETCH(const int, record);
    QFETCH(const int, records);
    const Progress progress = blockProgress({record, records, 0, blocksDone, blocks}, 7);
    QTEST(progress.seconds, "seconds");
    QTEST(progress.percentage, "percentage");
}

void TestUpdateProgress::keepsTheEstimateAtTheLastRecord_data()
{
    QTest::addColumn<int>("blocks");
    QTest::addColumn<int>("blockIndex");
    QTest::addColumn<int>("blocksDone");
    QTest::addColumn<int>("record"); ///< of two
    QTest::addColumn<int>("seconds");

    QTest::newRow("the only block of the run keeps it") << 1 << 0 << 0 << 2 << 777;
    QTest::newRow("not at the record before") << 1 << 0 << 0 << 1 << 12;
    QTest::newRow("the image's second block keeps it in a run of two blocks")
        << 2 << 1 << 1 << 2 << 777;
    QTest::newRow("the image's second block keeps it even as the first one of the run")
        << 2 << 1 << 0 << 2 << 777;
    QTest::newRow("the image's first block does not keep it even as the last one of the run")
        << 2 << 0 << 1 << 2 << 12;
    QTest::newRow("the first block of several does not keep it") << 3 << 0 << 0 << 2 << 94;
}

void TestUpdateProgress::keepsTheEstimateAtTheLastRecord()
{
    QFETCH(const int, blocks);
    QFETCH(const int, blockIndex);
    QFETCH(const int, blocksDone);
    QFETCH(const int, record);
    QTEST(blockProgress({record, 2, blockIndex, blocksDone, blocks}, 777).seconds, "seconds");
}

// ---- A camera

void TestUpdateProgress::showsTheStep_data()
{
    QTest::addColumn<int>("steps");
    QTest::addColumn<double>("stepSec");
    QTest::addColumn<double>("lastStepSec");
    QTest::addColumn<int>("step");
    QTest::addColumn<int>("seconds");
    QTest::addColumn<int>("percentage");

    const auto row = [](const char* name, int steps, double stepSec, double lastStepSec, int step,
                        int seconds, int percentage) {
        QTest::newRow(name) << steps << stepSec << lastStepSec << step << seconds << percentage;
    };
    row("the start of the worked example", 100000, 0.00027, 27.5, 0, 54, 1);
    row("the middle of the worked example", 100000, 0.00027, 27.5, 50000, 41, 24);
    row("the last step but one of the worked example", 100000, 0.00027, 27.5, 99999, 27, 49);
    row("the last step of the worked example", 100000, 0.00027, 27.5, 100000, 27, 49);
    row("a step beyond the last one counts as the last", 100000, 0.00027, 27.5, 100001, 27, 49);
    row("below 2 the bar shows 1", 1000, 1.0, 0.0, 19, 981, 1);
    row("from 2 on it shows what it is", 1000, 1.0, 0.0, 21, 979, 2);
    row("up to 97 it shows what it is", 1000, 1.0, 0.0, 979, 21, 97);
    row("above 97 the bar shows 98", 1000, 1.0, 0.0, 981, 19, 98);
    row("near the end the bar still shows 98", 1000, 1.0, 0.0, 999, 1, 98);
    row("without steps the first one is the last", 0, 0.00027, 27.5, 0, 27, 1);
    row("a fraction of a second is no time", 10, 0.05, 0.0, 0, 0, 1);
    row("a run that takes no time at all", 0, 0.0, 0.0, 0, 0, 1);
}

void TestUpdateProgress::showsTheStep()
{
    QFETCH(const int, steps);
    QFETCH(const double, stepSec);
    QFETCH(const double, lastStepSec);
    QFETCH(const int, step);
    const Progress progress = timedProgress({steps, stepSec, lastStepSec, step, 0.0});
    QTEST(progress.seconds, "seconds");
    QTEST(progress.percentage, "percentage");
    // Only the last step passes.
    if (step < steps)
        QCOMPARE(timedProgress({steps, stepSec, lastStepSec, step, 9.0}).seconds, progress.seconds);
}

void TestUpdateProgress::countsTheLastStepDown_data()
{
    QTest::addColumn<double>("passedSec");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("percentage");

    QTest::newRow("it begins at its whole duration")
        << 0.2 << "Estimated remaining time: 27 s" << 49;
    QTest::newRow("halfway") << 13.7 << "Estimated remaining time: 13 s" << 74;
    QTest::newRow("in its last second") << 26.6 << "" << 98;
    QTest::newRow("when its time is over") << 27.5 << "" << 98;
    QTest::newRow("when it takes longer than it should") << 60.0 << "" << 98;
    QTest::newRow("when it takes a hundred times as long") << 2750.0 << "" << 98;
}

void TestUpdateProgress::countsTheLastStepDown()
{
    QFETCH(const double, passedSec);
    const Progress progress = timedProgress({100000, 0.00027, 27.5, 100000, passedSec});
    QTEST(remainingTimeText(progress.seconds), "text");
    QTEST(progress.percentage, "percentage");
}

void TestUpdateProgress::barNeverFalls()
{
    int last = 1;
    for (int step = 0; step <= 3000; ++step) {
        const int percentage = timedProgress({3000, 0.00027, 9.5, step, 0.0}).percentage;
        QVERIFY(percentage >= last && percentage <= 98);
        last = percentage;
    }
    // 0.81 seconds of 10.31.
    QCOMPARE(last, 7);
}

ZAN_TEST_MAIN(TestUpdateProgress)

#include "tst_updateprogress.moc"
