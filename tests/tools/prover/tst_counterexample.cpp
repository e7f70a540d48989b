#include "proverfixtures.h"

#include <counterexample.h>
#include <plan.h>

#include <testmain.h>

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>

namespace {

using Files = QMap<QString, UpdateFile>;

const VersionInfo pt30(3, 0, 0);
const VersionInfo pt31(3, 1, 0);
const VersionInfo ct10(1, 0);

/// What was proven of some files, and where they are.
struct Case
{
    explicit Case(const Files& files) : delivery(readDelivery(folder, files))
    {
        QString error;
        proof = *proveDelivery(delivery, {}, &error);
    }

    /// Writes the finding of @p rule and reads the scenario that comes of it.
    Scenario scenarioOf(const QString& rule)
    {
        QString error;
        const QString path = folder.path("a b/case.json");
        QDir().mkpath(folder.path("a b"));
        const Finding* finding = proof.counterexample(proofRules().valueOf(rule));
        if (!finding || !writeCounterexample(*finding, delivery, path, &error))
            qFatal("%s", qPrintable(error));
        const std::optional<Scenario> scenario = ScenarioReader::read(path, &error);
        if (!scenario)
            qFatal("%s", qPrintable(error));
        return *scenario;
    }

    FixtureFolder folder;
    DeliveredFiles delivery;
    Proof proof;
};

QStringList rowsOf(const Scenario& scenario)
{
    QString error;
    const auto delivery = DeliveredFiles::read(scenario.updateFolder, &error);
    if (!delivery)
        return {error};
    QStringList rows;
    for (const PlannedRow& row : planUpdates(*delivery, scenario).rows)
        rows +=
            QStringList{row.isTicked ? "[x]" : "[ ]", row.device, row.from, row.to, row.file}.join(
                ' ');
    return rows;
}

ControllerImage withMaxPt(ControllerImage image, const VersionInfo& max)
{
    image.blocks[0].maxVer = max;
    return image;
}

} // namespace

class TestCounterexample : public QObject
{
    Q_OBJECT

private slots:
    void scenarioShowsTheFinding();
    void orderOfEqualReleasesIsLaidOut();
    void modelThatCannotBeAskedIsAFaultOfTheSystem();
    void standInsDoWhatTheImagesDo_data();
    void standInsDoWhatTheImagesDo();
    void earlierCounterexampleIsRenewed();
    void nothingElseIsOverwritten();
};

void TestCounterexample::scenarioShowsTheFinding()
{
    ControllerImage first = usualImage(pt30, ct10);
    first.minPt = VersionInfo(2, 5, 0);
    ControllerImage second = usualImage(pt31, ct10, pt30);
    second.minPt = VersionInfo(0, 0, 0);
    Case shown({{"a.img", first}, {"b.img", second}});
    const Scenario scenario = shown.scenarioOf("outside-range");
    QCOMPARE(scenario.title, QString("outside-range: Pt v0.0.0, Ct v0.0"));
    QCOMPARE(scenario.updateFolder, shown.folder.path("a b/case-files"));
    QCOMPARE(
        rowsOf(scenario),
        (QStringList{"[ ] zan-master v0.0.0 v3.0.0 a.img", "[ ] zan-left v0.0.0 v3.0.0 a.img",
                     "[x] zan-master v3.0.0 v3.1.0 b.img", "[x] zan-left v3.0.0 v3.1.0 b.img"}));
}

void TestCounterexample::orderOfEqualReleasesIsLaidOut()
{
    Case it({{"a.img", withMaxPt(preReleaseImage(pt30, ct10, 20, 2), pt30)},
             {"b.img", usualImage(pt30, ct10)}});
    const Scenario scenario = it.scenarioOf("equal-releases");
    QCOMPARE(QDir(scenario.updateFolder).entryList(QDir::Files),
             (QStringList{"00001-b.img", "00002-a.img"}));
    QCOMPARE(rowsOf(scenario).filter("zan-master"),
             (QStringList{"[x] zan-master v0.0.0 v3.0.0 00001-b.img",
                          "[x] zan-master v3.0.0 v3.0.0 00002-a.img"}));
}

void TestCounterexample::modelThatCannotBeAskedIsAFaultOfTheSystem()
{
    Case it({{"a.img", usualImage(pt30, ct10)}});
    const Scenario scenario = it.scenarioOf("model-unknown");
    QCOMPARE(scenario.controllers.first().model, 21);
    QCOMPARE(scenario.faults.first().request, QByteArray("system model"));
    QCOMPARE(rowsOf(scenario), QStringList{"[x] zan-master v2.7.8 v3.0.0 a.img"});
}

void TestCounterexample::standInsDoWhatTheImagesDo_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<ControllerImage>("image");
    const ControllerImage usual = usualImage(pt30, ct10, VersionInfo(2, 0, 0));
    QTest::newRow("a final release") << "a.img" << usual;
    QTest::newRow("a pre-release") << "a.img" << preReleaseImage(pt30, ct10, 30, 12);
    ControllerImage kindless = usual;
    kindless.preReleaseType = 15;
    QTest::newRow("a kind that is none") << "a.img" << kindless;
    ControllerImage plain = usual;
    plain.layout = ImageLayout::Plain;
    QTest::newRow("the plain layout") << "a_v3.0.0-beta2.img" << plain;
    ControllerImage unknown = usual;
    unknown.blocks[0].records = {QByteArray("firmware")};
    QTest::newRow("content of an unknown kind") << "a.img" << unknown;
    ControllerImage refused = usual;
    refused.blocks[0].records[0].data[45] = '?';
    QTest::newRow("a damaged payload") << "a.img" << refused;
    ControllerImage cut = usual;
    cut.blocks[1].recordCount = 9;
    QTest::newRow("a block that ends too early") << "a.img" << cut;
    ControllerImage empty = usual;
    empty.blocks[0].records.clear();
    QTest::newRow("a block without records") << "a.img" << empty;
    ControllerImage other = usual;
    other.blocks[1].type = 9;
    QTest::newRow("a block of another type") << "a.img" << other;
    ControllerImage briarscope = usual;
    briarscope.modelFamily = briarscopeFamily;
    QTest::newRow("the other family") << "a.img" << briarscope;
}

void TestCounterexample::standInsDoWhatTheImagesDo()
{
    QFETCH(const QString, name);
    QFETCH(const ControllerImage, image);
    Case it({{name, image}});
    QString error;
    const QString path = it.folder.path("case.json");
    QVERIFY2(writeCounterexample(*it.proof.counterexample(), it.delivery, path, &error),
             qPrintable(error));
    const auto standIns = DeliveredFiles::read(counterexampleFolder(path), &error);
    QVERIFY2(standIns, qPrintable(error));
    const std::optional<Proof> proof = proveDelivery(*standIns, {}, &error);
    // Why a block is not taken is told in other words, and what it holds is known now.
    const auto withoutWords = [](const QJsonObject& json) {
        return QJsonDocument(json.value("families").toArray()).toJson();
    };
    QCOMPARE(withoutWords(proofJson(*proof)), withoutWords(proofJson(it.proof)));
    const ZanData& of = *it.delivery.images().front().data;
    const ZanData& standIn = *standIns->images().front().data;
    QCOMPARE(standIn.getReleaseDate(), of.getReleaseDate());
    QCOMPARE(standIn.getReleaseMinorDate(), of.getReleaseMinorDate());
    QCOMPARE(standIn.getPreReleaseAppendix(), of.getPreReleaseAppendix());
}

void TestCounterexample::earlierCounterexampleIsRenewed()
{
    Case it({{"a.img", usualImage(pt30, ct10)}});
    it.scenarioOf("model-unknown");
    const QString left = it.folder.write("a b/case-files/left.img", "left");
    it.scenarioOf("model-unknown-on-old-protocol");
    QVERIFY(!QFile::exists(left));
}

void TestCounterexample::nothingElseIsOverwritten()
{
    Case it({{"a.img", usualImage(pt30, ct10)}});
    const QString mine = it.folder.write("case-files/mine.txt", "mine");
    const QString path = it.folder.path("case.json");
    QString error;
    QVERIFY(!writeCounterexample(*it.proof.counterexample(), it.delivery, path, &error));
    QCOMPARE(error,
             it.folder.path("case-files") +
                 ": is there already, and is not of an earlier case.json; remove it, or name "
                 "another file");
    QVERIFY(QFile::exists(mine));
    QVERIFY(!QFile::exists(path));
}

ZAN_TEST_MAIN(TestCounterexample)
#include "tst_counterexample.moc"
