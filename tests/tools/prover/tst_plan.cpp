#include "proverfixtures.h"

#include <plan.h>

#include <testmain.h>

#include <QJsonArray>

namespace {

/// A row as the table shows it, with what a run of it takes.
QString lineOf(const PlannedRow& row)
{
    QStringList blocks;
    for (const int block : row.blocks)
        blocks += QString::number(block);
    return QStringList{row.isTicked ? "[x]" : "[ ]",
                       row.device,
                       row.file,
                       row.type,
                       row.from,
                       row.to,
                       row.possible,
                       row.reboot,
                       blocks.join(','),
                       QString::number(row.commands),
                       QString::number(row.seconds)}
        .join(" | ");
}

QStringList linesOf(const UpdatePlan& plan)
{
    QStringList lines;
    for (const PlannedRow& row : plan.rows)
        lines += lineOf(row);
    return lines;
}

QStringList reasonsOf(const UpdatePlan& plan)
{
    QStringList reasons;
    for (const FileWithoutRow& file : plan.withoutRow)
        reasons += QStringList{file.device, file.file, file.reason}.join(" | ");
    return reasons;
}

const VersionInfo pt20(2, 0, 0);
const VersionInfo pt30(3, 0, 0);
const VersionInfo pt31(3, 1, 0);
const VersionInfo ct10(1, 0);
const VersionInfo ct11(1, 1);

Scenario cascade()
{
    Scenario scenario = singleController("v2.0.0", "v1.0", 2);
    ScenarioController slave = scenario.controllers.first();
    slave.hostName = "zan-left";
    slave.address = "192.168.7.21";
    slave.pt = "v3.0.0";
    scenario.controllers += slave;
    ScenarioCamera camera;
    camera.model = "0x0901";
    camera.serial = "C1";
    camera.version = "v1.0.0";
    scenario.cameras = {camera};
    return scenario;
}

} // namespace

class TestPlan : public QObject
{
    Q_OBJECT

private slots:
    void chainIsShownRowByRow();
    void rowThatIsNotPossibleYetIsNotCounted();
    void slavesHaveRowsOfTheirOwn();
    void camerasFollowWhereNoControllerHasARow();
    void exemptBriarscopeIsNotAskedAtStart();
    void oldProtocolsKnowNoRedirection();
    void eachFileWithoutARowTellsWhy_data();
    void eachFileWithoutARowTellsWhy();
    void textTellsAll();
    void jsonTellsAll();
};

void TestPlan::chainIsShownRowByRow()
{
    const FixtureFolder folder;
    const DeliveredFiles delivery = readDelivery(
        folder, {{"a.img", usualImage(pt31, ct11)}, {"b.img", usualImage(pt30, ct10)}});
    const UpdatePlan plan = planUpdates(delivery, singleController("v2.0.0", "v0.9", 2));
    QVERIFY(plan.asksForUpdate);
    QCOMPARE(linesOf(plan),
             (QStringList{"[x] | zan-master | b.img | Firmware update (zan-master) | v2.0.0 | "
                          "v3.0.0 | yes | yes | 0,1 | 4 | 24",
                          "[x] | zan-master | a.img | Firmware update (zan-master) | v3.0.0 | "
                          "v3.1.0 | yes | yes | 0,1 | 4 | 24"}));
    QCOMPARE(plan.withoutRow.size(), 0);
    QCOMPARE(plan.commands, 8);
    QCOMPARE(plan.seconds, 3 * 41 + 12);
}

void TestPlan::rowThatIsNotPossibleYetIsNotCounted()
{
    const FixtureFolder folder;
    ControllerImage second = usualImage(pt31, ct11);
    second.minPt = pt30;
    const DeliveredFiles delivery =
        readDelivery(folder, {{"a.img", usualImage(pt30, ct10)}, {"b.img", second}});
    const UpdatePlan plan = planUpdates(delivery, singleController("v2.0.0", "v0.9", 20));
    QCOMPARE(linesOf(plan),
             (QStringList{"[x] | zan-master | a.img | Firmware update (zan-master) | v2.0.0 | "
                          "v3.0.0 | yes | yes | 0,1 | 4 | 24",
                          "[ ] | zan-master | b.img | Firmware update (zan-master) | v3.0.0 | "
                          "v3.1.0 | no | yes | 0,1 | 4 | 24"}));
    QCOMPARE(plan.commands, 4);
    QCOMPARE(plan.seconds, 41 + 12);
}

void TestPlan::slavesHaveRowsOfTheirOwn()
{
    const FixtureFolder folder;
    const DeliveredFiles delivery = readDelivery(
        folder, {{"a.img", usualImage(pt30, ct10)}, {"b.img", usualImage(pt31, ct10)}});
    const UpdatePlan plan = planUpdates(delivery, cascade());
    QCOMPARE(linesOf(plan),
             (QStringList{"[x] | zan-master | a.img | Firmware update (zan-master) | v2.0.0 | "
                          "v3.0.0 | yes | yes | 0 | 2 | 12",
                          "[x] | zan-master | b.img | Firmware update (zan-master) | v3.0.0 | "
                          "v3.1.0 | yes | yes | 0 | 2 | 12",
                          "[x] | zan-left | b.img | Firmware update (zan-left) | v3.0.0 | v3.1.0 "
                          "| yes | yes | 0 | 2 | 12"}));
    QCOMPARE(reasonsOf(plan),
             (QStringList{"zan-left | a.img | it brings Pt v3.0.0 and Ct v1.0, and the controller "
                          "runs no less"}));
}

void TestPlan::camerasFollowWhereNoControllerHasARow()
{
    const FixtureFolder folder;
    const DeliveredFiles delivery =
        readDelivery(folder, {{"c.VX2znimg", cameraFile({0x0901}, VersionInfo(1, 4, 0))},
                              {"d.VX2znimg", cameraFile({0x0c01}, VersionInfo(1, 4, 0))}});
    const UpdatePlan plan = planUpdates(delivery, cascade());
    QVERIFY(!plan.asksForUpdate);
    QCOMPARE(linesOf(plan), (QStringList{"[x] | c01 | c.VX2znimg | Camera firmware update (C1) | "
                                         "v1.0.0 | v1.4.0 | yes | yes |  | 2 | 9"}));
    QCOMPARE(reasonsOf(plan), QStringList{" | d.VX2znimg | no camera is of model 0x0c01"});
}

// The table of the dialog has the row all the same; the user has to open it.
void TestPlan::exemptBriarscopeIsNotAskedAtStart()
{
    const FixtureFolder folder;
    ControllerImage image = usualImage(pt30, ct10);
    image.modelFamily = briarscopeFamily;
    const DeliveredFiles delivery = readDelivery(folder, {{"a.img", image}});
    const UpdatePlan exempt = planUpdates(delivery, singleController("v2.8.0", "v0.9", 21));
    QVERIFY(!exempt.asksForUpdate);
    QCOMPARE(exempt.rows.size(), 1);
    QCOMPARE(exempt.withoutRow.size(), 0);
    QVERIFY(planUpdates(delivery, singleController("v2.8.1", "v0.9", 21)).asksForUpdate);
}

void TestPlan::oldProtocolsKnowNoRedirection()
{
    const FixtureFolder folder;
    const DeliveredFiles delivery = readDelivery(folder, {{"a.img", usualImage(pt30, ct10)}});
    Scenario scenario = singleController("v2.0.0", "v0.9", 2);
    scenario.protocol = VersionInfo(1, 6);
    QCOMPARE(planUpdates(delivery, scenario).commands, 2);
}

void TestPlan::eachFileWithoutARowTellsWhy_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<UpdateFile>("file");
    QTest::addColumn<QStringList>("reasons");
    ControllerImage foreign = usualImage(pt31, ct10);
    foreign.modelFamily = briarscopeFamily;
    QTest::newRow("an image of the other family")
        << "b.img" << UpdateFile(foreign)
        << QStringList{" | b.img | it is for the family BRIARSCOPE3, and the controller reports "
                       "model 2"};
    QTest::newRow("an image that brings no more")
        << "b.img" << UpdateFile(usualImage(VersionInfo(1, 0, 0), VersionInfo(0, 9)))
        << QStringList{" | b.img | it brings Pt v1.0.0 and Ct v0.9, and the controller runs no "
                       "less"};
    QTest::newRow("an image whose blocks are for others")
        << "b.img"
        << UpdateFile(releaseImage(pt31, ct10,
                                   {firmwareBlock(VersionInfo(1, 0, 0), VersionInfo(1, 9, 0))}))
        << QStringList{" | b.img | no block applies at Pt v3.0.0 and Ct v1.0: its blocks are for "
                       "Pt v1.0.0 to v1.9.0"};
    ControllerImage blockless = usualImage(pt31, ct10);
    for (ControllerImageBlock& block : blockless.blocks)
        block.type = 7;
    QTest::newRow("an image without blocks of a known type")
        << "b.img" << UpdateFile(blockless)
        << QStringList{" | b.img | it has neither a firmware nor a system block"};
    QTest::newRow("a camera file while a controller has a row")
        << "b.VX2znimg" << UpdateFile(cameraFile({0x0901}, VersionInfo(1, 4, 0)))
        << QStringList{" | b.VX2znimg | cameras are offered only where no controller has a row"};
    QTest::newRow("the seal of the delivery, which nobody expects a row for")
        << "SHA256SUMS" << UpdateFile(cameraFile({0x0901}, VersionInfo(1, 4, 0))) << QStringList();
    QTest::newRow("a camera file under another name")
        << "b.img" << UpdateFile(cameraFile({0x0901}, VersionInfo(1, 4, 0)))
        << QStringList{" | b.img | it is no controller update image that the plug-in can read"};
}

void TestPlan::eachFileWithoutARowTellsWhy()
{
    QFETCH(const QString, name);
    QFETCH(const UpdateFile, file);
    const FixtureFolder folder;
    const DeliveredFiles delivery =
        readDelivery(folder, {{"a.img", usualImage(pt30, ct10)}, {name, file}});
    const UpdatePlan plan = planUpdates(delivery, singleController("v2.0.0", "v1.0", 2));
    QCOMPARE(plan.rows.size(), 1);
    QTEST(reasonsOf(plan), "reasons");
}

void TestPlan::textTellsAll()
{
    const FixtureFolder folder;
    const DeliveredFiles delivery = readDelivery(
        folder, {{"a.img", usualImage(pt30, ct10)}, {"b.img", usualImage(pt31, ct11)}});
    QCOMPARE(
        planText(planUpdates(delivery, singleController("v3.0.0", "v1.0", 2))),
        QString("       Type                          From    To      Possible?  Reboot?  "
                "Blocks  Commands  Time  File\n"
                "  [x]  Firmware update (zan-master)  v3.0.0  v3.1.0  yes        yes      "
                "0,1     4         24 s  b.img\n"
                "\n"
                "A run with the ticked rows: 4 commands, 53 s by the dialog's first estimate\n"
                "\n"
                "The dialog asks for an update of the controllers at each start.\n"
                "\n"
                "Without a row:\n"
                "  a.img: it brings Pt v3.0.0 and Ct v1.0, and the controller runs no less\n"));
    QCOMPARE(planText(planUpdates(delivery, singleController("v3.1.0", "v1.1", 2))),
             QString("The table of updates is empty.\n"
                     "\n"
                     "Without a row:\n"
                     "  a.img: the controller counts as up to date: it runs Pt v3.1.0 and Ct v1.1, "
                     "and the images bring no more\n"
                     "  b.img: the controller counts as up to date: it runs Pt v3.1.0 and Ct v1.1, "
                     "and the images bring no more\n"));
}

void TestPlan::jsonTellsAll()
{
    const FixtureFolder folder;
    const DeliveredFiles delivery = readDelivery(
        folder, {{"a.img", usualImage(pt30, ct10)}, {"b.img", usualImage(pt31, ct11)}});
    const QJsonObject row{{"ticked", true},
                          {"device", "zan-master"},
                          {"file", "b.img"},
                          {"type", "Firmware update (zan-master)"},
                          {"from", "v3.0.0"},
                          {"to", "v3.1.0"},
                          {"possible", "yes"},
                          {"reboot", "yes"},
                          {"blocks", QJsonArray{0, 1}},
                          {"commands", 4},
                          {"seconds", 24}};
    const QJsonObject withoutRow{
        {"file", "a.img"},
        {"reason", "it brings Pt v3.0.0 and Ct v1.0, and the controller runs no less"}};
    QCOMPARE(planJson(planUpdates(delivery, singleController("v3.0.0", "v1.0", 2))),
             (QJsonObject{{"asksForUpdate", true},
                          {"rows", QJsonArray{row}},
                          {"withoutRow", QJsonArray{withoutRow}},
                          {"commands", 4},
                          {"seconds", 53}}));
}

ZAN_TEST_MAIN(TestPlan)
#include "tst_plan.moc"
