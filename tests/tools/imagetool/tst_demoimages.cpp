#include "imagelisting.h"

#include <deliverychecks.h>
#include <filechecks.h>
#include <imagereader.h>
#include <testmain.h>

#include <QDir>

Q_DECLARE_METATYPE(VersionInfo)

class TestDemoImages : public QObject
{
    Q_OBJECT

private slots:
    void filesAreExactlyThese();
    void everyFileIsSound();
    void rulesAreBrokenOnPurposeOnly();
    void chainsLeadToTheNewestRelease_data();
    void chainsLeadToTheNewestRelease();
    void controllerImagesHaveRealisticSizes();
    void plainNameSaysFinal();
};

namespace {

const QDir updateDir(QStringLiteral(UPDATE_DIR));

QByteArray bytesOf(const QString& name)
{
    QFile file(updateDir.filePath(name));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qPrintable(file.fileName()));
    return file.readAll();
}

// The names are such that their order is that of the releases.
QVector<ControllerImage> controllerImages()
{
    QVector<ControllerImage> images;
    for (const QString& name : updateDir.entryList({"*.vx3img"}, QDir::Files, QDir::Name))
        images.append(std::get<ControllerImage>(*readUpdateFile(bytesOf(name)).file));
    return images;
}

} // namespace

void TestDemoImages::filesAreExactlyThese()
{
    QCOMPARE(updateDir.entryList(QDir::Files, QDir::Name),
             (QStringList{"camera_0x0901_v1.4.0.VX2znimg", "camera_0x0a01_v1.1.0.VX2znimg",
                          "camera_0x0a01_v1.2.0.VX2znimg", "camera_0x0c01_v2.1.0.VX2znimg",
                          "camera_0x0e01_v1.6.0.VX2znimg", "controller_v3.1.0.vx3img",
                          "controller_v3.2.0-beta.2.vx3img", "controller_v3.3.0.vx3img"}));
}

void TestDemoImages::everyFileIsSound()
{
    for (const QString& name : updateDir.entryList(QDir::Files)) {
        const UpdateFileListing listing = listUpdateFile(bytesOf(name));
        QVERIFY2(listing.findings.isEmpty(), qPrintable(name));
        QVERIFY2(!listingText(listing).contains("unknown"), qPrintable(name));
    }
}

void TestDemoImages::rulesAreBrokenOnPurposeOnly()
{
    QVector<DeliveredFile> files;
    QVector<RuleFinding> findings = checkFolders(updateDir.path());
    for (const QString& name : updateDir.entryList(QDir::Files, QDir::Name)) {
        QFile file(updateDir.filePath(name));
        QVERIFY(file.open(QIODevice::ReadOnly));
        files.append({name, scanUpdateFile(file)});
        for (RuleFinding finding : checkUpdateFile(files.last().scanned, name)) {
            finding.file = name;
            findings += finding;
        }
    }
    findings += checkDelivery(files);
    QStringList lines;
    for (const RuleFinding& finding : findings)
        lines += findingLine(finding);
    const QStringList expected{
        // There were no pre-releases of 3.1.0.
        "controller_v3.1.0.vx3img: warning: blocks[0].maxVersion (offset 46) is 3.0.65535, "
        "expected "
        "at least newPt 3.1.0, if there were pre-releases [own-pre-releases]",
        // The demo shows what two files for one model do.
        "camera_0x0a01_v1.2.0.VX2znimg: warning: models[0] (offset 22) is 0x0a01, expected a model "
        "that camera_0x0a01_v1.1.0.VX2znimg is not for [camera-file-twice]"};
    QCOMPARE(lines, expected);
}

void TestDemoImages::chainsLeadToTheNewestRelease_data()
{
    QTest::addColumn<VersionInfo>("pt");
    QTest::addColumn<VersionInfo>("ct");
    QTest::addColumn<bool>("isPreRelease");
    QTest::addColumn<QVector<int>>("blocksOfEachImage");

    QTest::newRow("three releases behind")
        << VersionInfo(2, 9, 0) << VersionInfo(1, 1) << false << QVector<int>{2, 2, 2};
    QTest::newRow("two releases behind")
        << VersionInfo(3, 1, 0) << VersionInfo(1, 2) << false << QVector<int>{0, 2, 2};
    QTest::newRow("one release behind")
        << VersionInfo(3, 2, 0) << VersionInfo(1, 3) << false << QVector<int>{0, 0, 2};
    QTest::newRow("system behind, so that its own tracking software comes again")
        << VersionInfo(3, 3, 0) << VersionInfo(1, 3) << false << QVector<int>{0, 0, 2};
    QTest::newRow("a pre-release of the newest release")
        << VersionInfo(3, 3, 0) << VersionInfo(1, 4) << true << QVector<int>{0, 0, 1};
    QTest::newRow("up to date") << VersionInfo(3, 3, 0) << VersionInfo(1, 4) << false
                                << QVector<int>{0, 0, 0};
}

void TestDemoImages::chainsLeadToTheNewestRelease()
{
    QFETCH(VersionInfo, pt);
    QFETCH(VersionInfo, ct);
    QFETCH(bool, isPreRelease);
    const VersionInfo startPt = pt;
    const VersionInfo startCt = ct;
    QVector<int> blocksOfEachImage;
    for (const ControllerImage& image : controllerImages()) {
        int chosen = 0;
        const bool isOffered = startPt < image.newPt || startCt < image.newCt ||
                               (isPreRelease && startPt == image.release);
        for (const ControllerImageBlock& block : image.blocks) {
            const bool firmware = block.type == FirmwareBlock;
            VersionInfo& current = firmware ? pt : ct;
            if (!isOffered || current < block.minVer || current > block.maxVer)
                continue;
            current = firmware ? image.newPt : image.newCt;
            ++chosen;
        }
        QVERIFY(startPt >= image.minPt && startCt >= image.minCt);
        blocksOfEachImage.append(chosen);
    }
    QTEST(blocksOfEachImage, "blocksOfEachImage");
    QVERIFY(pt == VersionInfo(3, 3, 0));
    QVERIFY(ct == VersionInfo(1, 4));
}

void TestDemoImages::controllerImagesHaveRealisticSizes()
{
    for (const ControllerImage& image : controllerImages()) {
        QCOMPARE(image.blocks[0].records.size(), 40000);
        QCOMPARE(image.blocks[1].records.size(), 20000);
        QCOMPARE(image.blocks[0].records.last().data.size(), maxRecordBytes);
    }
}

// In the plain layout readers take the pre-release from the file's name.
void TestDemoImages::plainNameSaysFinal()
{
    const ControllerImage oldest = controllerImages().first();
    QVERIFY(oldest.layout == ImageLayout::Plain);
    QVERIFY(oldest.release == VersionInfo(3, 1, 0));
    QVERIFY(controllerImages()[1].layout == ImageLayout::Dated);
}

ZAN_TEST_MAIN(TestDemoImages)
#include "tst_demoimages.moc"
