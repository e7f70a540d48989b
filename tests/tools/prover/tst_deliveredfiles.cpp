#include "proverfixtures.h"

#include <testmain.h>

#include <QDir>

namespace {

QStringList namesOf(const DeliveredFiles& delivery)
{
    QStringList names;
    for (const DeliveredImage& image : delivery.images())
        names += image.name;
    return names;
}

const VersionInfo pt(3, 0, 0);
const VersionInfo ct(1, 0);

ControllerImage imageOf(const ControllerImageBlock& block)
{
    return releaseImage(pt, ct, {block});
}

ControllerImageBlock soundBlock()
{
    return payloadBlock(FirmwareBlock, VersionInfo(0, 0, 0), pt, VersionInfo(3, 0, 1), "-beta.2");
}

} // namespace

class TestDeliveredFiles : public QObject
{
    Q_OBJECT

private slots:
    void imagesStandInTheOrderOfTheirReleases();
    void folderOfAProgramWillDo();
    void folderIsLookedForAsThePlugInDoes();
    void whatCannotBeReadIsTold();
    void contentOfABlockIsTried_data();
    void contentOfABlockIsTried();
    void unknownContentIsTakenAtItsHeadersWord();
    void otherOrderIsLaidOutUnderNewNames();
};

void TestDeliveredFiles::imagesStandInTheOrderOfTheirReleases()
{
    const FixtureFolder folder;
    const DeliveredFiles delivery =
        readDelivery(folder, {{"a.img", usualImage(VersionInfo(3, 1, 0), ct)},
                              {"c.img", usualImage(pt, ct)},
                              {"B.img", usualImage(pt, ct)},
                              {"cam.VX2znimg", cameraFile({0x0901}, VersionInfo(1, 4, 0))}});
    QCOMPARE(namesOf(delivery), (QStringList{"B.img", "c.img", "a.img"}));
    QCOMPARE(delivery.otherFiles(), QStringList{"cam.VX2znimg"});
}

void TestDeliveredFiles::folderOfAProgramWillDo()
{
    const FixtureFolder folder;
    folder.write("controller_update/a.img", updateFileBytes(usualImage(pt, ct)));
    QString error;
    const auto delivery = DeliveredFiles::read(folder.path(), &error);
    QVERIFY2(delivery, qPrintable(error));
    QCOMPARE(namesOf(*delivery), QStringList{"a.img"});
    QCOMPARE(delivery->filePath("a.img"), folder.path("controller_update/a.img"));
}

// As deep as the plug-in looks: otherwise a wrong delivery would count as an empty one.
void TestDeliveredFiles::folderIsLookedForAsThePlugInDoes()
{
    const FixtureFolder folder;
    folder.write("bin/frontend/controller_update/a.img", updateFileBytes(usualImage(pt, ct)));
    folder.write("old/controller_update/b.img", updateFileBytes(usualImage(pt, ct)));
    QString error;
    const auto delivery = DeliveredFiles::read(folder.path(), &error);
    QVERIFY2(delivery, qPrintable(error));
    QCOMPARE(namesOf(*delivery), QStringList{"a.img"});
}

void TestDeliveredFiles::whatCannotBeReadIsTold()
{
    const FixtureFolder folder;
    QString error;
    QVERIFY(!DeliveredFiles::read(folder.path("none"), &error));
    QCOMPARE(error, folder.path("none") + ": there is no such folder");
    const QString file = folder.write("file", "text");
    QVERIFY(!DeliveredFiles::read(file, &error));
    QCOMPARE(error, file + ": there is no such folder");
}

void TestDeliveredFiles::contentOfABlockIsTried_data()
{
    QTest::addColumn<ControllerImage>("image");
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("records");
    QTest::addColumn<QString>("reason");
    QTest::newRow("a sound payload")
        << imageOf(soundBlock()) << int(BlockContent::Brings) << 1 << QString();
    ControllerImageBlock cut = soundBlock();
    cut.records = splitIntoRecords(joinRecords(cut.records), 3);
    QTest::newRow("a sound payload in short records")
        << imageOf(cut) << int(BlockContent::Brings) << 16 << QString();
    QTest::newRow("content of an unknown kind") << imageOf(firmwareBlock(VersionInfo(0, 0, 0), pt))
                                                << int(BlockContent::Assumed) << 2 << QString();
    ControllerImageBlock none = soundBlock();
    none.records.clear();
    QTest::newRow("no record at all")
        << imageOf(none) << int(BlockContent::Empty) << 0 << QString();
    ControllerImageBlock damaged = soundBlock();
    damaged.records[0].data[40] = static_cast<char>(damaged.records[0].data[40] + 1);
    QTest::newRow("a damaged payload") << imageOf(damaged) << int(BlockContent::Refused) << 1
                                       << QString("payload checksum is wrong");
    ControllerImageBlock swapped = soundBlock();
    swapped.records = payloadBlock(SystemBlock, VersionInfo(0, 0), ct, ct).records;
    QTest::newRow("a payload for another component")
        << imageOf(swapped) << int(BlockContent::Refused) << 1
        << QString("payload is for another component");
    ControllerImageBlock announced = soundBlock();
    announced.recordCount = 9;
    QTest::newRow("fewer records than announced")
        << imageOf(announced) << int(BlockContent::Unreadable) << 0
        << QString("the file ends inside the block");
    ControllerImageBlock elsewhere = soundBlock();
    elsewhere.offset = 2;
    QTest::newRow("an offset where no block stands")
        << imageOf(elsewhere) << int(BlockContent::Unreadable) << 0
        << QString("no block stands at its offset");
}

void TestDeliveredFiles::contentOfABlockIsTried()
{
    QFETCH(const ControllerImage, image);
    const FixtureFolder folder;
    const DeliveredFiles delivery = readDelivery(folder, {{"a.img", image}});
    const BlockContent& content = delivery.images().front().blocks.constFirst();
    QTEST(int(content.kind), "kind");
    QTEST(content.records, "records");
    QTEST(content.reason, "reason");
    if (content.kind == BlockContent::Brings) {
        QCOMPARE(content.head.version, VersionInfo(3, 0, 1));
        QCOMPARE(content.head.appendix, QString("-beta.2"));
    }
}

void TestDeliveredFiles::unknownContentIsTakenAtItsHeadersWord()
{
    const FixtureFolder folder;
    ControllerImage image = releaseImage(
        pt, ct, {firmwareBlock(VersionInfo(0, 0, 0), pt), systemBlock(VersionInfo(0, 0), ct)});
    image.preReleaseType = 20;
    image.preReleaseNumber = 4;
    const DeliveredFiles delivery = readDelivery(folder, {{"a.img", image}});
    const QVector<BlockContent>& blocks = delivery.images().front().blocks;
    QCOMPARE(blocks.at(0).head.version, pt);
    QCOMPARE(blocks.at(0).head.appendix, QString("-beta.4"));
    QCOMPARE(blocks.at(1).head.version, ct);
    QCOMPARE(blocks.at(1).head.appendix, QString());
}

void TestDeliveredFiles::otherOrderIsLaidOutUnderNewNames()
{
    const FixtureFolder folder;
    const DeliveredFiles delivery =
        readDelivery(folder, {{"a.img", usualImage(pt, ct)}, {"b.img", usualImage(pt, ct)}});
    QString error;
    const auto program = delivery.layOut({1, 0}, &error);
    QVERIFY2(program, qPrintable(error));
    QCOMPARE(QDir(program->filePath("controller_update")).entryList(QDir::Files),
             (QStringList{"00001-b.img", "00002-a.img"}));
}

ZAN_TEST_MAIN(TestDeliveredFiles)
#include "tst_deliveredfiles.moc"
