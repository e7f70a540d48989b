#include "proverfixtures.h"

#include <proof.h>

#include <testmain.h>

#include <QJsonArray>

namespace {

const VersionInfo pt20(2, 0, 0);
const VersionInfo pt25(2, 5, 0);
const VersionInfo pt30(3, 0, 0);
const VersionInfo pt31(3, 1, 0);
const VersionInfo ct00(0, 0);
const VersionInfo ct10(1, 0);
const VersionInfo ct11(1, 1);

using Files = QMap<QString, UpdateFile>;

Proof proofOf(const Files& files, const ProofOptions& options = {})
{
    const FixtureFolder folder;
    const DeliveredFiles delivery = readDelivery(folder, files);
    QString error;
    const std::optional<Proof> proof = proveDelivery(delivery, options, &error);
    if (!proof)
        qFatal("%s", qPrintable(error));
    return *proof;
}

/// Only the family ZAN, and only controllers whose versions update files can bring.
ProofOptions onlyZan()
{
    ProofOptions options;
    options.family = "ZAN";
    return options;
}

/// "RULE | TEXT | CONCERNED" of the errors, or of other weights.
QStringList linesOf(const Proof& proof, Weight weight = Weight::Error)
{
    QStringList lines;
    for (const Finding& finding : proof.findings) {
        if (finding.weight == weight)
            lines += QStringList{finding.ruleName(), finding.text, finding.concerned}.join(" | ");
    }
    return lines;
}

QStringList rulesOf(const Proof& proof, Weight weight = Weight::Error)
{
    QStringList rules;
    for (const Finding& finding : proof.findings) {
        if (finding.weight == weight)
            rules += finding.ruleName();
    }
    rules.removeDuplicates();
    return rules;
}

const Finding& findingOf(const Proof& proof, const QString& rule)
{
    for (const Finding& finding : proof.findings) {
        if (finding.ruleName() == rule)
            return finding;
    }
    qFatal("not found: %s", qPrintable(rule));
}

/// "Pt | Ct | runs | way | ending" of one family.
QStringList tableOf(const Proof& proof, int family = 0)
{
    QStringList lines;
    const FamilyProof& of = proof.families.at(family);
    for (const JourneyRange& range : of.table) {
        QStringList way;
        for (const ReportedVersions& hop : range.journey.hops)
            way += hopText(hop);
        lines +=
            QStringList{ptText(of, range), ctText(of, range), QString::number(range.journey.runs()),
                        way.join(" -> "), endingText(range.journey.ending)}
                .join(" | ");
    }
    return lines;
}

/// The example of a finding: what the master reports.
QString exampleOf(const Finding& finding)
{
    const ScenarioController& master = finding.example->controllers.first();
    return master.pt.section(' ', 0, 0) + ' ' + master.ct;
}

ControllerImage withMaxPt(ControllerImage image, const VersionInfo& max)
{
    image.blocks[0].maxVer = max;
    return image;
}

ControllerImage forBriarscope(ControllerImage image)
{
    image.modelFamily = briarscopeFamily;
    return image;
}

ControllerImage inPlainLayout(ControllerImage image, const QString& mark)
{
    image.layout = ImageLayout::Plain;
    image.blocks[0] = payloadBlock(FirmwareBlock, image.blocks[0].minVer, image.blocks[0].maxVer,
                                   image.newPt, mark);
    return image;
}

} // namespace

class TestProof : public QObject
{
    Q_OBJECT

private slots:
    void chainIsProven();
    void bothFamiliesAreProven();
    void severalRunsAreCounted();
    void preReleaseOfTheNewestReleaseGetsTheFinalOne();
    void camerasAloneAreProven();
    void deliveryOfTheDemoIsProven();

    void rowThatIsNotPossibleStillMovesThePosition();
    void orderOfAPreReleaseAndItsFinalReleaseDecides();
    void harmlessOrderIsNoFinding();
    void tooManyOrdersAreNoProof();
    void newerImageOfTheOtherFamilyLeavesThisOneBehind();
    void markThatNoControllerReportsIsAskedForEver_data();
    void markThatNoControllerReportsIsAskedForEver();
    void rangeWithItsOwnNewPtAndNoWayToCtIsSentForEver();
    void controllerWhoseModelCannotBeAsked();
    void slaveOnAnOldProtocolCountsAsItsMaster();

    void holeInTheChainLeavesNothingToTick();
    void preReleaseThatComesFirstIsKept();
    void runThatFailsIsADeadEnd();
    void unusualVersionsAreNoErrors();
    void familyWithoutImagesIsWarnedOf();
    void briarscopesThatAreTooOldAreNotServed();
    void briarscopeThatIsNotAskedAtStartIsLeftBehind();
    void contentOfAnUnknownKindIsNoted();

    void startIsLimited();
    void progressIsTold();
    void textAndJsonTellAll();
};

void TestProof::chainIsProven()
{
    const Proof proof =
        proofOf({{"a.img", usualImage(pt30, ct10)}, {"b.img", usualImage(pt31, ct11)}}, onlyZan());
    QVERIFY2(proof.holds(), qPrintable(linesOf(proof).join('\n')));
    QCOMPARE(proof.files, (QStringList{"a.img", "b.img"}));
    QCOMPARE(proof.families.size(), 1);
    QCOMPARE(proof.families.first().goal, QString("v3.1.0, Ct v1.1"));
    QCOMPARE(proof.families.first().goalFile, QString("b.img"));
    const QStringList table = tableOf(proof);
    QVERIFY(table.contains("from v0.0.0 to other pre-releases of v3.1.0 | from v0.0 to v1.0 | 1 | "
                           "v3.1.0, Ct v1.1 | newest"));
    QVERIFY(table.contains("from v3.1.0 | from v1.1 | 0 |  | newest"));
}

void TestProof::bothFamiliesAreProven()
{
    const Proof proof = proofOf(
        {{"a.img", usualImage(pt30, ct10)}, {"b.img", forBriarscope(usualImage(pt30, ct10))}});
    QVERIFY2(proof.holds(), qPrintable(linesOf(proof).join('\n')));
    QCOMPARE(proof.families.size(), 2);
    QVERIFY(proof.families.at(1).isServed);
    QVERIFY(tableOf(proof, 1).contains("above v2.7.7 to other pre-releases of v3.0.0 | from v0.0 "
                                       "to v0.65535 | 1 | v3.0.0, Ct v1.0 | newest"));
}

void TestProof::severalRunsAreCounted()
{
    ControllerImage second = usualImage(pt31, ct10, pt30);
    second.minPt = pt30;
    const Proof proof = proofOf({{"a.img", usualImage(pt30, ct10)}, {"b.img", second}}, onlyZan());
    QVERIFY2(proof.holds(), qPrintable(linesOf(proof).join('\n')));
    QVERIFY2(tableOf(proof).contains("from v0.0.0 below v3.0.0 | from v0.0 to v0.65535 | 2 | "
                                     "v3.0.0, Ct v1.0 -> v3.1.0, Ct v1.0 | newest"),
             qPrintable(tableOf(proof).join('\n')));
}

void TestProof::preReleaseOfTheNewestReleaseGetsTheFinalOne()
{
    const Proof proof = proofOf({{"a.img", withMaxPt(usualImage(pt30, ct10), pt30)}}, onlyZan());
    QVERIFY2(proof.holds(), qPrintable(linesOf(proof).join('\n')));
    QVERIFY2(tableOf(proof).contains("from v0.0.0 to other pre-releases of v3.0.0 | from v1.0 | 1 "
                                     "| v3.0.0 | newest"),
             qPrintable(tableOf(proof).join('\n')));
}

void TestProof::camerasAloneAreProven()
{
    const Proof proof = proofOf({{"c.VX2znimg", cameraFile({0x0901}, VersionInfo(1, 4, 0))}});
    QVERIFY(proof.holds());
    QCOMPARE(proof.findings.size(), 0);
    QCOMPARE(tableOf(proof), QStringList{"all | all | 0 |  | newest"});
}

void TestProof::deliveryOfTheDemoIsProven()
{
    QString error;
    const auto delivery = DeliveredFiles::read(QStringLiteral(UPDATE_DIR), &error);
    QVERIFY2(delivery, qPrintable(error));
    ProofOptions options;
    options.pt.from = pt20;
    options.ct.from = ct10;
    const std::optional<Proof> proof = proveDelivery(*delivery, options, &error);
    QVERIFY2(proof && proof->holds(), proof ? qPrintable(proofText(*proof)) : qPrintable(error));
    QVERIFY(proof->families.first().isServed);
}

void TestProof::rowThatIsNotPossibleStillMovesThePosition()
{
    ControllerImage first = usualImage(pt30, ct10);
    first.minPt = pt25;
    ControllerImage second = usualImage(pt31, ct10, pt30);
    second.minPt = VersionInfo(0, 0, 0);
    const Proof proof = proofOf({{"a.img", first}, {"b.img", second}}, onlyZan());
    QCOMPARE(rulesOf(proof), (QStringList{"outside-range"}));
    const Finding& finding = findingOf(proof, "outside-range");
    QCOMPARE(finding.text,
             QString("block 0 of b.img is for v3.0.0 to v3.1.0 and goes to a controller outside "
                     "of that: a row before it moved the position without being possible, or "
                     "brought another version than its image says"));
    QCOMPARE(finding.concerned, QString("Pt below v2.5.0 with Ct all"));
    QCOMPARE(exampleOf(finding), QString("v0.0.0 v0.0"));
}

void TestProof::orderOfAPreReleaseAndItsFinalReleaseDecides()
{
    const Proof proof = proofOf({{"a.img", withMaxPt(preReleaseImage(pt30, ct10, 20, 2), pt30)},
                                 {"b.img", withMaxPt(usualImage(pt30, ct10), pt30)}},
                                onlyZan());
    QCOMPARE(rulesOf(proof), (QStringList{"left-behind", "offered-for-ever", "equal-releases"}));
    QCOMPARE(proof.families.first().orders, 2);
    const Finding& finding = findingOf(proof, "equal-releases");
    QCOMPARE(finding.text,
             QString("the order of images of one release decides where it ends; with b.img before "
                     "a.img it is another end than in the order of the names"));
    QCOMPARE(finding.order, (QVector<int>{1, 0}));
    // With the final image first, the pre-release comes last, and is asked for no more.
    const Finding& forEver = findingOf(proof, "offered-for-ever");
    QCOMPARE(forEver.order, (QVector<int>{1, 0}));
    QVERIFY2(forEver.text.contains("without a pre-release text"), qPrintable(forEver.text));
}

void TestProof::harmlessOrderIsNoFinding()
{
    const Proof proof =
        proofOf({{"a.img", usualImage(pt30, ct10)}, {"b.img", usualImage(pt30, ct10)}}, onlyZan());
    QVERIFY2(proof.holds(), qPrintable(linesOf(proof).join('\n')));
    QCOMPARE(proof.families.first().orders, 2);
}

void TestProof::tooManyOrdersAreNoProof()
{
    Files files;
    for (int number = 1; number <= 5; ++number)
        files.insert(QString("%1.img").arg(number), usualImage(pt30, ct10));
    const Proof proof = proofOf(files, onlyZan());
    QVERIFY(!proof.holds());
    QCOMPARE(linesOf(proof),
             QStringList{"equal-releases | more images of one release than can be looked at: they "
                         "have more than 48 orders | "});
}

void TestProof::newerImageOfTheOtherFamilyLeavesThisOneBehind()
{
    const Proof proof = proofOf(
        {{"a.img", usualImage(pt30, ct10)}, {"b.img", forBriarscope(usualImage(pt31, ct10))}},
        onlyZan());
    QCOMPARE(
        linesOf(proof),
        (QStringList{"nothing-to-tick | the plug-in asks for Pt v3.1.0 (b.img for "
                     "BRIARSCOPE3) and no image gives a row | Pt below v3.1.0 with Ct all",
                     "nothing-to-tick | the plug-in asks for v3.1.0 without a pre-release text "
                     "(b.img for BRIARSCOPE3) and no image gives a row | Pt other "
                     "pre-releases of v3.1.0 with Ct all"}));
    QVERIFY(tableOf(proof).contains("from v0.0.0 to other pre-releases of v3.0.0 | from v1.0 | 1 | "
                                    "v3.0.0 | asked for ever, nothing to tick"));
}

void TestProof::markThatNoControllerReportsIsAskedForEver_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<UpdateFile>("image");
    QTest::addColumn<QString>("mark"); ///< as the plug-in reads it from the image
    QTest::addColumn<QString>("read"); ///< as it reads it from a controller
    QTest::newRow("a number without a dot")
        << "controller_v3.0.0-beta2.img"
        << UpdateFile(inPlainLayout(withMaxPt(usualImage(pt30, ct10), pt30), "-beta2")) << "-beta2"
        << "-beta.99";
    QTest::newRow("a \"v\" earlier in the name")
        << "vx_controller_v3.0.0-beta.2.img"
        << UpdateFile(inPlainLayout(withMaxPt(usualImage(pt30, ct10), pt30), "-beta.2")) << "x"
        << "-.99";
    ControllerImage kindless = withMaxPt(usualImage(pt30, ct10), pt30);
    kindless.preReleaseType = 15;
    kindless.preReleaseNumber = 2;
    kindless.blocks[0] =
        payloadBlock(FirmwareBlock, VersionInfo(0, 0, 0), pt30, pt30, "-unknown15.2");
    QTest::newRow("a kind that is none")
        << "controller.img" << UpdateFile(kindless) << "-unknown15.2"
        << "-.2";
}

void TestProof::markThatNoControllerReportsIsAskedForEver()
{
    QFETCH(const QString, name);
    QFETCH(const UpdateFile, image);
    QFETCH(const QString, mark);
    QFETCH(const QString, read);
    const Proof proof = proofOf({{name, image}}, onlyZan());
    QCOMPARE(rulesOf(proof), QStringList{"offered-for-ever"});
    QCOMPARE(findingOf(proof, "offered-for-ever").text,
             QString("%1 is sent again and again, and what the controllers report after it never "
                     "ends that: the plug-in asks for v3.0.0 with the pre-release text \"%2\" "
                     "(%1) and it does not come")
                 .arg(name, mark));
    QCOMPARE(linesOf(proof, Weight::Warning).filter("mark-never-equal"),
             QStringList{QString("mark-never-equal | %1 has the pre-release text \"%2\"; the "
                                 "plug-in reads it from a controller as \"%3\", so the two are "
                                 "never equal | ")
                             .arg(name, mark, read)});
}

void TestProof::rangeWithItsOwnNewPtAndNoWayToCtIsSentForEver()
{
    ControllerImage image = withMaxPt(usualImage(pt30, ct11), pt30);
    image.blocks.removeLast();
    const Proof proof = proofOf({{"a.img", image}}, onlyZan());
    QCOMPARE(rulesOf(proof), (QStringList{"offered-for-ever", "nothing-to-tick"}));
    const Finding& finding = findingOf(proof, "offered-for-ever");
    QCOMPARE(finding.text,
             QString("a.img is sent again and again, and what the controllers report after it "
                     "never ends that: the plug-in asks for Ct v1.1 (a.img) and it does not come"));
    QCOMPARE(finding.concerned, QString("Pt to v3.0.0 with Ct below v1.1"));
}

void TestProof::controllerWhoseModelCannotBeAsked()
{
    const Proof proof = proofOf({{"a.img", usualImage(pt30, ct10)}});
    const Finding& finding = findingOf(proof, "model-unknown");
    QCOMPARE(finding.text, QString("a BRIARSCOPE3 whose model cannot be asked counts as a ZAN, and "
                                   "is offered images for ZAN"));
    QCOMPARE(finding.example->controllers.first().model, 21);
    QCOMPARE(finding.example->faults.first().request, QByteArray("system model"));
    const Finding& old = findingOf(proof, "model-unknown-on-old-protocol");
    QCOMPARE(old.text,
             QString("below protocol 1.23, no image fits a controller whose model cannot be asked: "
                     "the dialog asks for an update and has nothing to tick"));
    QCOMPARE(old.example->protocol.toString(), QString("v1.22"));
}

void TestProof::slaveOnAnOldProtocolCountsAsItsMaster()
{
    const Proof proof = proofOf(
        {{"a.img", usualImage(pt30, ct10)}, {"b.img", forBriarscope(usualImage(pt30, ct10))}});
    QCOMPARE(linesOf(proof, Weight::Warning).filter("slave-model-unknown"),
             (QStringList{"slave-model-unknown | below protocol 1.23, a slave counts as of the "
                          "master's model: a BRIARSCOPE3 below a ZAN is offered images for ZAN | ",
                          "slave-model-unknown | below protocol 1.23, a slave counts as of the "
                          "master's model: a ZAN below a BRIARSCOPE3 is offered images for "
                          "BRIARSCOPE3 | "}));
}

void TestProof::holeInTheChainLeavesNothingToTick()
{
    const Proof proof = proofOf({{"a.img", usualImage(pt30, ct10)},
                                 {"b.img", usualImage(VersionInfo(3, 2, 0), ct10, pt31)}},
                                onlyZan());
    QCOMPARE(linesOf(proof),
             (QStringList{"nothing-to-tick | the plug-in asks for Pt v3.2.0 (b.img) and no image "
                          "gives a row | Pt below v3.1.0 with Ct all"}));
}

void TestProof::preReleaseThatComesFirstIsKept()
{
    // Its mark is what the plug-in compares with, so whoever runs it counts as up to date.
    const Proof proof =
        proofOf({{"a.img", preReleaseImage(pt30, ct10, 20, 2)}, {"b.img", usualImage(pt30, ct10)}},
                onlyZan());
    QVERIFY(rulesOf(proof).contains("left-behind"));
    QCOMPARE(findingOf(proof, "left-behind").text,
             QString("the plug-in counts the controller as up to date, and the newest release is "
                     "v3.0.0, Ct v1.0"));
}

void TestProof::runThatFailsIsADeadEnd()
{
    ControllerImage image = usualImage(pt30, ct10);
    QByteArray& data = image.blocks[1].records[0].data;
    data[data.size() - 1] = static_cast<char>(data.at(data.size() - 1) + 1);
    const Proof proof = proofOf({{"a.img", image}}, onlyZan());
    QCOMPARE(linesOf(proof),
             (QStringList{"run-fails | block 1 of a.img is not taken: payload checksum is wrong | "
                          "Pt all with Ct to v0.65535"}));
}

void TestProof::unusualVersionsAreNoErrors()
{
    const Proof proof = proofOf({{"a.img", usualImage(pt30, ct10)}}, onlyZan());
    QVERIFY(proof.holds());
    const QStringList warnings = linesOf(proof, Weight::Warning);
    QVERIFY2(warnings.contains("nothing-to-tick | the plug-in asks for Pt v3.0.0 (a.img) and no "
                               "image gives a row (only where versions have a form that no image "
                               "brings) | Pt below v0.0.0 with Ct below v0.0; Pt below v0.0.0 with "
                               "Ct above v0.65535"),
             qPrintable(warnings.join('\n')));
}

void TestProof::familyWithoutImagesIsWarnedOf()
{
    const Proof proof = proofOf({{"a.img", usualImage(pt30, ct10)}});
    QVERIFY(proof.holds());
    QVERIFY(!proof.families.at(1).isServed);
    QVERIFY(rulesOf(proof, Weight::Warning).contains("family-not-served"));
}

void TestProof::briarscopesThatAreTooOldAreNotServed()
{
    ProofOptions options;
    options.family = "BRIARSCOPE3";
    const Proof proof = proofOf({{"a.img", forBriarscope(usualImage(pt30, ct10))}}, options);
    QVERIFY(proof.holds());
    QCOMPARE(tableOf(proof).first(), QString("to v2.7.7 | all | 0 |  | not served by the plug-in"));
}

// The start-up decision leaves 2.7.8 to 2.8.0 out, although nothing in the images says so.
void TestProof::briarscopeThatIsNotAskedAtStartIsLeftBehind()
{
    ProofOptions options;
    options.family = "BRIARSCOPE3";
    ControllerImage image = forBriarscope(usualImage(pt30, ct10));
    image.blocks[0].minVer = VersionInfo(2, 9, 0);
    const Proof proof = proofOf({{"a.img", image}}, options);
    const QStringList table = tableOf(proof);
    const QString from278 = "above v2.7.7 below v2.8.1 | from v0.0 to v0.65535 | 1 | Ct v1.0 | ";
    const QString from281 = "from v2.8.1 below v2.9.0 | from v0.0 to v0.65535 | 1 | Ct v1.0 | ";
    QVERIFY2(table.contains(from278 + "left behind, nothing said"), qPrintable(table.join('\n')));
    QVERIFY2(table.contains(from281 + "asked for ever, nothing to tick"),
             qPrintable(table.join('\n')));
}

void TestProof::contentOfAnUnknownKindIsNoted()
{
    ControllerImage image = usualImage(pt30, ct10);
    for (ControllerImageBlock& block : image.blocks)
        block.records = {QByteArray("firmware")};
    const Proof proof = proofOf({{"a.img", image}}, onlyZan());
    QVERIFY(proof.holds());
    QCOMPARE(linesOf(proof, Weight::Note),
             QStringList{"assumed-content | what the blocks of a.img bring cannot be looked into; "
                         "it is taken to be what the header says | "});
}

void TestProof::startIsLimited()
{
    ProofOptions options = onlyZan();
    options.pt.from = pt20;
    options.pt.to = pt25;
    options.ct.from = ct10;
    const Proof proof = proofOf({{"a.img", usualImage(pt30, ct11, pt20)}}, options);
    QVERIFY2(proof.holds(), qPrintable(linesOf(proof).join('\n')));
    QVERIFY2(
        proofText(proof).endsWith("\nProven: every ZAN controller with Pt from v2.0.0 to v2.5.0 "
                                  "and Ct from v1.0 comes to the newest release of its "
                                  "family.\n"),
        qPrintable(proofText(proof)));
    QCOMPARE(tableOf(proof),
             (QStringList{"from v2.0.0 to v2.5.0 | v1.0 | 1 | v3.0.0, Ct v1.1 | newest",
                          "from v2.0.0 to v2.5.0 | above v1.0 below v1.1 | 2 | v3.0.0 -> v3.0.0 | "
                          "offered for ever",
                          "from v2.0.0 to v2.5.0 | from v1.1 | 1 | v3.0.0 | newest"}));
}

void TestProof::progressIsTold()
{
    ProofOptions options = onlyZan();
    QVector<int> told;
    int last = 0;
    options.progress = [&](int done, int total) {
        told += done;
        last = total;
    };
    proofOf({{"a.img", usualImage(pt30, ct10)}}, options);
    QVERIFY(last > 3);
    QCOMPARE(told.size(), last);
    QCOMPARE(told.constLast(), last);
}

void TestProof::textAndJsonTellAll()
{
    const Proof proof = proofOf({{"a.img", usualImage(pt30, ct10, pt20)}}, onlyZan());
    const QString text = proofText(proof);
    QVERIFY2(text.startsWith("ZAN: the newest release is v3.0.0, Ct v1.0 (a.img)\n  Pt"),
             qPrintable(text));
    QVERIFY(text.contains("error: nothing-to-tick (ZAN): the plug-in asks for Pt v3.0.0 (a.img) "
                          "and no row is possible\n"));
    QVERIFY(text.endsWith("\nNot proven: 2 errors.\n"));
    const QJsonObject json = proofJson(proof);
    QCOMPARE(json.value("proven"), QJsonValue(false));
    QCOMPARE(json.value("scope"), QJsonValue("every ZAN controller"));
    QCOMPARE(json.value("files"), QJsonValue(QJsonArray{"a.img"}));
    const QJsonObject finding = json.value("findings").toArray().first().toObject();
    QCOMPARE(finding.value("rule"), QJsonValue("nothing-to-tick"));
    QCOMPARE(finding.value("weight"), QJsonValue("error"));
    QCOMPARE(finding.value("example"),
             QJsonValue(QJsonObject{{"pt", "v0.0.0"}, {"ct", "v1.0"}, {"model", 2}}));
    const QJsonObject family = json.value("families").toArray().first().toObject();
    QCOMPARE(family.value("newest"), QJsonValue("v3.0.0, Ct v1.0"));
    QCOMPARE(family.value("table").toArray().size(), proof.families.first().table.size());
}

ZAN_TEST_MAIN(TestProof)
#include "tst_proof.moc"
