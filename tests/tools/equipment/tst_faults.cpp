#include "simulatorfixtures.h"

#include <testmain.h>

#include <QSet>

class TestFaults : public QObject
{
    Q_OBJECT

private slots:
    void textTellsWhatWasChosen_data()
    {
        QTest::addColumn<Fault>("fault");
        QTest::addColumn<QString>("text");
        Fault fault;
        QTest::newRow("nothing but the mode") << fault << "Refuse a record: any device";
        fault.device = "zan-left";
        fault.record = 10;
        QTest::newRow("a record of a device") << fault << "Refuse a record: zan-left, record 10";
        fault.times = 0;
        QTest::newRow("every time") << fault << "Refuse a record: zan-left, record 10, every time";
        fault.times = 3;
        fault.request = "system version";
        QTest::newRow("a request, several times")
            << fault << "Refuse a record: zan-left, at \"system version\", 3 times";
        Fault late;
        late.mode = FaultMode::AnswerLate;
        late.seed = 7;
        late.delayMs = 2500;
        QTest::newRow("late at a random record")
            << late << "Answer the last record late: any device, random record, seed 7, 2.5 s late";
    }

    void textTellsWhatWasChosen()
    {
        QFETCH(const Fault, fault);
        QTEST(fault.text(), "text");
    }

    void everyModeHasItsOwnNameAndTitle();
    void strikesTheRecord_data();
    void strikesTheRecord();
    void seedPicksARecordOfTheBlock();
    void strikesItsDeviceOnly();
    void strikesARequestByItsBeginning();
    void strikesAsOftenAsItMay_data();
    void strikesAsOftenAsItMay();
    void restartFaultsStrikeAtRestartsOnly();
    void clearDisarms();
};

namespace {

// Numbers of the records of a block of 200 at which the plan strikes.
QList<int> strikes(FaultPlan plan, const QString& device = QStringLiteral("zan-left"))
{
    QList<int> records;
    for (int record = 1; record <= 200; ++record) {
        if (plan.takeForExchange({"system update", device, record, 200}))
            records.append(record);
    }
    return records;
}

Fault faultOf(FaultMode mode)
{
    Fault fault;
    fault.mode = mode;
    return fault;
}

} // namespace

void TestFaults::everyModeHasItsOwnNameAndTitle()
{
    QSet<QString> names;
    QSet<QString> titles;
    for (int index = 0; index < faultModes().size(); ++index) {
        const FaultModeInfo& info = faultModes().at(index);
        QCOMPARE(static_cast<int>(info.mode), index);
        QCOMPARE(faultModeInfo(info.mode).name, info.name);
        names.insert(info.name);
        titles.insert(info.title);
    }
    QCOMPARE(names.size(), faultModes().size());
    QCOMPARE(titles.size(), faultModes().size());
}

void TestFaults::strikesTheRecord_data()
{
    QTest::addColumn<FaultMode>("mode");
    QTest::addColumn<int>("record");
    QTest::addColumn<QList<int>>("expected");
    QTest::newRow("that is told") << FaultMode::RefuseRecord << 17 << QList<int>{17};
    QTest::newRow("in the middle, untold") << FaultMode::LosePower << 0 << QList<int>{100};
    QTest::newRow("that is the last, untold") << FaultMode::StaySilent << 0 << QList<int>{200};
    QTest::newRow("beyond the block: none") << FaultMode::RefuseRecord << 201 << QList<int>{};
    QTest::newRow("of a restart: none") << FaultMode::NeverComeBack << 17 << QList<int>{};
}

void TestFaults::strikesTheRecord()
{
    QFETCH(FaultMode, mode);
    QFETCH(int, record);
    Fault fault = faultOf(mode);
    fault.record = record;
    QTEST(strikes(FaultPlan({fault})), "expected");
}

void TestFaults::seedPicksARecordOfTheBlock()
{
    QSet<int> records;
    for (quint32 seed = 0; seed < 100; ++seed) {
        Fault fault = faultOf(FaultMode::RefuseRecord);
        fault.seed = seed;
        const QList<int> first = strikes(FaultPlan({fault}));
        QCOMPARE(first.size(), 1);
        QCOMPARE(strikes(FaultPlan({fault})), first);
        records.insert(first.first());
    }
    QVERIFY2(records.size() > 60, "the records of 100 seeds hardly differ");
}

void TestFaults::strikesItsDeviceOnly()
{
    Fault fault = faultOf(FaultMode::RefuseRecord);
    fault.device = QStringLiteral("zan-right");
    QCOMPARE(strikes(FaultPlan({fault})), QList<int>());
    QCOMPARE(strikes(FaultPlan({fault}), QStringLiteral("zan-right")), QList<int>{100});
}

void TestFaults::strikesARequestByItsBeginning()
{
    Fault fault = faultOf(FaultMode::AnswerGarbage);
    fault.request = "system host";
    FaultPlan plan({fault});
    QVERIFY(!plan.takeForExchange({"system version", QString(), 0, 0}));
    QVERIFY(plan.takeForExchange({"system hostname", QString(), 0, 0}));
    QVERIFY(!plan.takeForExchange({"system hostname", QString(), 0, 0}));
    QCOMPARE(strikes(FaultPlan({fault})), QList<int>());
}

void TestFaults::strikesAsOftenAsItMay_data()
{
    QTest::addColumn<int>("times");
    QTest::addColumn<int>("expected");
    QTest::newRow("once") << 1 << 1;
    QTest::newRow("twice") << 2 << 2;
    QTest::newRow("every time") << 0 << 5;
}

void TestFaults::strikesAsOftenAsItMay()
{
    QFETCH(int, times);
    Fault fault = faultOf(FaultMode::RefuseRecord);
    fault.times = times;
    FaultPlan plan({fault});
    int struck = 0;
    for (int block = 0; block < 5; ++block)
        struck += plan.takeForExchange({"system update", QStringLiteral("zan-left"), 1, 2}) ? 1 : 0;
    QTEST(struck, "expected");
    QCOMPARE(plan.armed().isEmpty(), times != 0);
}

void TestFaults::restartFaultsStrikeAtRestartsOnly()
{
    Fault old = faultOf(FaultMode::ComeBackOld);
    old.device = QStringLiteral("zan-left");
    FaultPlan plan({old, faultOf(FaultMode::RefuseRecord), faultOf(FaultMode::NeverComeBack)});
    QCOMPARE(plan.takeForRestart({QStringLiteral("zan-master")}).size(), 1);
    const QVector<Fault> taken =
        plan.takeForRestart({QStringLiteral("zan-master"), QStringLiteral("zan-left")});
    QCOMPARE(taken.size(), 1);
    QCOMPARE(taken.first().mode, FaultMode::ComeBackOld);
    QCOMPARE(plan.armed().size(), 1);
}

void TestFaults::clearDisarms()
{
    FaultPlan plan;
    plan.add(faultOf(FaultMode::RefuseRecord));
    QCOMPARE(plan.armed().size(), 1);
    plan.clear();
    QCOMPARE(strikes(plan), QList<int>());
}

ZAN_TEST_MAIN(TestFaults)
#include "tst_faults.moc"
