#include "updatetable.h"

#include <updateplan.h>

#include <widgettestmain.h>

using Rows = std::initializer_list<UpdateTable::Row>;

namespace {

/// A master and a slave at 3.1.0 and 1.2, and two cameras.
SystemReport reportBefore()
{
    SystemReport report;
    report.isReachable = true;
    report.controllers = {{"master", 2, "v3.1.0", "v1.2"}, {"left", 2, "v3.1.0-rc.2", "v1.2"}};
    report.cameras = {{"T9 C-1", "v1.3.0-beta.1"}, {"T9 C-2", "v1.3.0"}};
    return report;
}

/// A chain of releases of which the first comes as a pre-release.
ReleaseCatalogue releases()
{
    return ReleaseCatalogue({{0, {3, 2, 0}, {1, 3}, QString("-beta.2"), {{{1, 0}, {1, 2}}}},
                             {0, {3, 3, 0}, {1, 4}, QString(), {{{1, 3}, {1, 3}}}},
                             {21, {3, 3, 0}, {1, 9}, QString(), {{{1, 0}, {1, 8}}}},
                             {0, {3, 4, 0}, {1, 5}, std::nullopt, {}},
                             {0, {3, 5, 0}, {1, 6}, QString(), {{{1, 0}, {1, 9}}}},
                             {0, {3, 5, 0}, {1, 6}, QString("-rc.1"), {{{1, 0}, {1, 9}}}}});
}

QStringList planTexts(const UpdateTable& table)
{
    QStringList texts;
    for (const PlannedUpdate& it : readPlan(*table.model(), reportBefore(), releases()).updates)
        texts += resultTexts(it).join(" | ") + (it.isExact ? " | exact" : "");
    return texts;
}

const QString notAsked = " | - | unconfirmed | It has not been asked yet.";

} // namespace

class TestUpdatePlan : public QObject
{
    Q_OBJECT

private slots:
    void tableIsKnownByItsColumns();
    void chainIsOneUpdateToItsEnd();
    void devicesKeepTheOrderOfTheRun();
    void whatIsNotTakenIsSkipped();
    void firmwareThatComesAlongIsPlannedToo();
    void firmwareThatDoesNotApplyIsNotPlanned();
    void controllerThatDoesNotTellItsFirmwareRunsNone();
    void stepsAreWhatIsSent();
    void unclearReleasesGoByTheNumbers();
    void camerasGoByTheirNames();
    void fromIsInTheWordsOfTheDevice();
    void whatIsNoUpdateIsLeftOut();
};

void TestUpdatePlan::tableIsKnownByItsColumns()
{
    const UpdateTable table{};
    QVERIFY(isUpdateTable(*table.model()));
    UpdateTable other{};
    other.setHorizontalHeaderItem(3, new QTableWidgetItem("Until"));
    QVERIFY(!isUpdateTable(*other.model()));
    QVERIFY(!isUpdateTable(*QTableWidget(2, 5).model()));
}

void TestUpdatePlan::chainIsOneUpdateToItsEnd()
{
    const UpdateTable table{{true, {"Firmware update (master)", "v3.1.0", "v3.2.0", "yes", "yes"}},
                            {true, {"Firmware update (master)", "v3.2.0", "v3.3.0", "yes", "yes"}}};
    QCOMPARE(planTexts(table),
             (QStringList{"master | Tracking software | v3.1.0 | v3.3.0" + notAsked + " | exact",
                          "master | Controller firmware | v1.2 | v1.4" + notAsked}));
}

void TestUpdatePlan::devicesKeepTheOrderOfTheRun()
{
    const UpdateTable table{{true, {"System update (left)", "v1.2", "v1.3", "yes", "no"}},
                            {true, {"System update (master)", "v1.2", "v1.3", "yes", "no"}},
                            {true, {"System update (left)", "v1.3", "v1.4", "yes", "no"}}};
    QCOMPARE(planTexts(table),
             (QStringList{"left | Controller firmware | v1.2 | v1.4" + notAsked,
                          "master | Controller firmware | v1.2 | v1.3" + notAsked}));
}

void TestUpdatePlan::whatIsNotTakenIsSkipped()
{
    const UpdateTable table{{true, {"Firmware update (master)", "v3.1.0", "v3.2.0", "yes", "yes"}},
                            {false, {"Firmware update (master)", "v3.2.0", "v3.3.0", "yes", "yes"}},
                            {false, {"Firmware update (left)", "v3.1.0", "v3.2.0", "no", "yes"}},
                            {false, {"Firmware update (left)", "v3.2.0", "v3.3.0", "no", "yes"}}};
    QCOMPARE(planTexts(table),
             (QStringList{
                 "master | Tracking software | v3.1.0 | v3.2.0-beta.2" + notAsked + " | exact",
                 "master | Controller firmware | v1.2 | v1.3" + notAsked,
                 "master | Tracking software | v3.2.0 | v3.3.0 | - | skipped | It was not ticked.",
                 "left | Tracking software | v3.1.0-rc.2 | v3.3.0 | - | skipped | It was not "
                 "possible from the version that ran."}));
}

void TestUpdatePlan::firmwareThatComesAlongIsPlannedToo()
{
    // The second release starts from the firmware that the system update brings.
    const UpdateTable table{{true, {"System update (master)", "v1.2", "v1.3", "yes", "no"}},
                            {true, {"Firmware update (master)", "v3.1.0", "v3.3.0", "yes", "yes"}}};
    QCOMPARE(planTexts(table),
             (QStringList{"master | Controller firmware | v1.2 | v1.4" + notAsked,
                          "master | Tracking software | v3.1.0 | v3.3.0" + notAsked + " | exact"}));
}

void TestUpdatePlan::firmwareThatDoesNotApplyIsNotPlanned()
{
    const UpdateTable table{{true, {"Firmware update (master)", "v3.1.0", "v3.3.0", "yes", "yes"}},
                            {true, {"Firmware update (left)", "v3.1.0", "v3.4.0", "yes", "yes"}}};
    QCOMPARE(planTexts(table),
             (QStringList{"master | Tracking software | v3.1.0 | v3.3.0" + notAsked + " | exact",
                          "left | Tracking software | v3.1.0-rc.2 | v3.4.0" + notAsked}));
}

// The module takes blocks for it that start from there.
void TestUpdatePlan::controllerThatDoesNotTellItsFirmwareRunsNone()
{
    SystemReport before = reportBefore();
    before.controllers.first().ct.clear();
    const ReleaseCatalogue blocks({{0, {3, 2, 0}, {1, 3}, QString(), {{{0, 0}, {1, 2}}}},
                                   {0, {3, 3, 0}, {1, 4}, QString(), {{{1, 0}, {1, 3}}}}});
    const UpdateTable table{{true, {"Firmware update (master)", "v3.1.0", "v3.2.0", "yes", "yes"}},
                            {true, {"Firmware update (master)", "v3.2.0", "v3.3.0", "yes", "yes"}}};
    const QVector<PlannedUpdate> updates = readPlan(*table.model(), before, blocks).updates;
    QCOMPARE(updates.size(), 2);
    QCOMPARE(resultTexts(updates.constLast()).join(" | "),
             "master | Controller firmware | v0.0.0 | v1.4" + notAsked);
}

void TestUpdatePlan::stepsAreWhatIsSent()
{
    const UpdateTable table{{true, {"Firmware update (master)", "v3.1.0", "v3.2.0", "yes", "yes"}},
                            {true, {"Firmware update (master)", "v3.2.0", "v3.3.0", "yes", "yes"}},
                            {false, {"System update (left)", "v1.2", "v1.3", "yes", "no"}}};
    QStringList steps;
    for (const PlannedUpdate& it : readPlan(*table.model(), reportBefore(), releases()).steps)
        steps += resultTexts(it).mid(0, 4).join(" | ");
    QCOMPARE(steps, (QStringList{"master | Tracking software | v3.1.0 | v3.2.0-beta.2",
                                 "master | Controller firmware | v1.2 | v1.3",
                                 "master | Tracking software | v3.2.0 | v3.3.0",
                                 "master | Controller firmware | v1.3 | v1.4"}));
}

void TestUpdatePlan::unclearReleasesGoByTheNumbers()
{
    const UpdateTable table{{true, {"Firmware update (master)", "v3.1.0", "v3.5.0", "yes", "yes"}},
                            {true, {"Firmware update (left)", "v3.1.0", "v4.0.0", "yes", "yes"}}};
    QCOMPARE(planTexts(table),
             (QStringList{"master | Tracking software | v3.1.0 | v3.5.0" + notAsked,
                          "left | Tracking software | v3.1.0-rc.2 | v4.0.0" + notAsked}));
}

void TestUpdatePlan::camerasGoByTheirNames()
{
    const UpdateTable table{
        {true, {"Camera firmware update (T9 C-2)", "v1.3.0", "v1.4.0", "yes", "yes"}},
        {true, {"Camera firmware update (T9 C-2)", "v1.3.0", "v1.5.0", "yes", "yes"}},
        {false, {"Camera firmware update (T9 (old) C-3)", "v1.3.0", "v1.4.0", "yes", "yes"}},
        {true, {"Camera firmware update", "v1.0.0", "v1.4.0", "yes", "yes"}}};
    QCOMPARE(planTexts(table),
             (QStringList{"T9 C-2 | Camera firmware | v1.3.0 | v1.5.0" + notAsked,
                          "T9 (old) C-3 | Camera firmware | v1.3.0 | v1.4.0 | - | skipped | It was "
                          "not ticked.",
                          "Camera without a name | Camera firmware | v1.0.0 | v1.4.0" + notAsked}));
}

void TestUpdatePlan::fromIsInTheWordsOfTheDevice()
{
    const UpdateTable table{
        {true, {"Camera firmware update (T9 C-1)", "v1.3.0", "v1.4.0", "yes", "yes"}},
        {true, {"Firmware update (left)", "v3.0.0", "v3.1.0", "yes", "yes"}},
        {true, {"Firmware update (unknown)", "v3.0.0", "v3.1.0", "yes", "yes"}}};
    QCOMPARE(planTexts(table),
             (QStringList{"T9 C-1 | Camera firmware | v1.3.0-beta.1 | v1.4.0" + notAsked,
                          "left | Tracking software | v3.0.0 | v3.1.0" + notAsked,
                          "unknown | Tracking software | v3.0.0 | v3.1.0" + notAsked}));
}

void TestUpdatePlan::whatIsNoUpdateIsLeftOut()
{
    const UpdateTable table{{false, {"- no update available -", "", "", "", ""}}};
    QCOMPARE(planTexts(table), QStringList());
}

ZAN_WIDGET_TEST_MAIN(TestUpdatePlan)
#include "tst_updateplan.moc"
