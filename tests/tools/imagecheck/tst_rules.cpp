#include "soundimages.h"

#include <commandline.h>
#include <fixturefiles.h>
#include <testmain.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {

const QString imageName = QStringLiteral("controller_v3.3.0.vx3img");
const QString cameraName = QStringLiteral("camera_v1.4.0.VX2znimg");

/// Files that break one rule, and what is to be said of them.
struct Breach
{
    QVector<QPair<QString, QByteArray>> files; ///< names from the checked folder; or one file alone
    bool isFolder = false;
    QString line; ///< the finding, with %1 for the checked folder
};

Breach inFile(const QString& name, const QByteArray& bytes, const QString& line)
{
    return {{{name, bytes}}, false, name + ": " + line};
}

Breach inImage(const std::function<void(ControllerImage&)>& change, const QString& line)
{
    ControllerImage image = soundImage();
    change(image);
    return inFile(imageName, controllerImageBytes(image), line);
}

Breach inBlock(const std::function<void(ControllerImageBlock&)>& change, const QString& line)
{
    return inImage([&](ControllerImage& image) { change(image.blocks[1]); }, line);
}

Breach inCamera(const std::function<void(CameraUpdateFile&)>& change, const QString& line)
{
    CameraUpdateFile file = soundCameraFile();
    change(file);
    return inFile(cameraName, cameraUpdateBytes(file), line);
}

Breach inFolder(const QVector<QPair<QString, QByteArray>>& files, const QString& line)
{
    return {files, true, "%1/" + line};
}

Breach inChain(const QVector<ControllerImage>& images, const QString& line)
{
    QVector<QPair<QString, QByteArray>> files;
    for (const ControllerImage& image : images)
        files.append({QString("%1.vx3img").arg(files.size()), controllerImageBytes(image)});
    return inFolder(files, line);
}

QByteArray withGap()
{
    ControllerImage image = soundImage();
    const int blockBytes = 2 + 2 + 3 + 4 + 2 + 2 * 2 + 136;
    const int tablesEnd = 54 + 22 + 18;
    image.blocks[1].offset = tablesEnd + blockBytes + 4;
    return controllerImageBytes(image).insert(tablesEnd + blockBytes, "gap!");
}

ControllerImage imageOf(const VersionInfo& pt, const VersionInfo& ct, const VersionInfo& fromPt,
                        const VersionInfo& minPt)
{
    ControllerImage image = soundImage();
    image.release = pt;
    image.newPt = pt;
    image.newCt = ct;
    image.minPt = minPt;
    image.blocks = {firmware(image, fromPt, pt),
                    system(image, VersionInfo(1, 0), VersionInfo(ct.ma, ct.mi - 1))};
    return image;
}

ControllerImage betaOfSoundImage(int type)
{
    ControllerImage image = soundImage();
    image.preReleaseType = type;
    image.preReleaseNumber = 2;
    image.blocks[0] = firmware(image, VersionInfo(2, 0, 0), VersionInfo(3, 3, 0),
                               type == 20 ? "-beta.2" : "-unknown40.2");
    return image;
}

Breach breachOfPlainName(const QString& name, const QString& line)
{
    return inFile(name, controllerImageBytes(soundImage(ImageLayout::Plain)), line);
}

// ---- One for each rule

Breach breachInStructure(Rule rule)
{
    switch (rule) {
    case Rule::Magic:
        return inFile(imageName, "some notes",
                      "error: magic (offset 0) is 0x6f73, expected that of an update file [magic]");
    case Rule::CutShort:
        return inFile(imageName, controllerImageBytes(soundImage()).left(60),
                      "error: blocks[0].minVersion (offset 56) is cut off by the end of the file, "
                      "expected 6 bytes [cut-short]");
    case Rule::NoBlocks:
        return inImage(
            [](ControllerImage& image) {
                image.blocks.clear();
                image.minPt = image.newPt;
                image.minCt = image.newCt;
            },
            "error: blockCount (offset 52) is 0, expected at least 1 [no-blocks]");
    case Rule::NoModels:
        return inCamera([](CameraUpdateFile& file) { file.models.clear(); },
                        "error: modelCount (offset 20) is 0, expected at least 1 [no-models]");
    case Rule::NoImages:
        return inCamera([](CameraUpdateFile& file) { file.images.clear(); },
                        "error: imageCount (offset 26) is 0, expected at least 1 [no-images]");
    case Rule::BlockType:
        return inImage(
            [](ControllerImage& image) {
                image.blocks.append(image.blocks[0]);
                image.blocks[2].type = 7;
            },
            "error: blocks[2].type (offset 94) is 7, expected 1 (firmware) or 2 (system) "
            "[block-type]");
    case Rule::BlockMagic:
        return inBlock(
            [](ControllerImageBlock& block) { block.magic = 0xA25A; },
            "error: blocks[1].magic (offset 247) is 0xa25a, expected 0xa258 [block-magic]");
    case Rule::TextLength:
        return inBlock(
            [](ControllerImageBlock& block) { block.text = QByteArray(50, 'x'); },
            "error: blocks[1].textLength (offset 249) is 50, expected at most 49 [text-length]");
    case Rule::EmptyBlock:
        return inBlock(
            [](ControllerImageBlock& block) { block.records.clear(); },
            "error: blocks[1].recordCount (offset 254) is 0, expected at least 1 [empty-block]");
    case Rule::RecordLength:
        return inBlock([](ControllerImageBlock& block) { block.maxRecordLength = 99; },
                       "error: blocks[1].records[0] (offset 260) is 100 bytes long, expected at "
                       "most 99 [record-length]");
    case Rule::RecordCount:
        return inBlock([](ControllerImageBlock& block) { block.length = 1; },
                       "error: blocks[1].length (offset 90) is 1, expected the 153 bytes of its "
                       "head and 2 records [record-count]");
    case Rule::TooManyRecords:
        return inBlock(
            [](ControllerImageBlock& block) {
                block.records = QVector<ImageRecord>(maxRecords + 1);
            },
            "error: blocks[1].records (offset 247) is 1000001 records, expected at most 1000000 "
            "[too-many-records]");
    case Rule::TooManyBytes:
        return inBlock(
            [](ControllerImageBlock& block) {
                block.records = QVector<ImageRecord>(maxBlockBytes / maxRecordBytes + 1,
                                                     QByteArray(maxRecordBytes, 'x'));
            },
            "error: blocks[1].records (offset 247) is 67108920 bytes, expected at most 67108864 "
            "[too-many-bytes]");
    default:
        return {};
    }
}

Breach breachInPlaces(Rule rule)
{
    const auto twoSystemBlocks = [](ControllerImage& image) {
        image.blocks[1].maxVer = VersionInfo(1, 1);
        image.blocks.append(system(image, VersionInfo(1, 2), VersionInfo(1, 3)));
    };
    switch (rule) {
    case Rule::BlockTwice:
        return inImage(
            [&](ControllerImage& image) {
                twoSystemBlocks(image);
                image.blocks[2].offset = 54 + 22 + 18 + 18;
            },
            "error: blocks[2].offset (offset 104) is 112, expected another place than that of "
            "blocks[0] [block-twice]");
    case Rule::Overlap:
        return inImage(
            [&](ControllerImage& image) {
                twoSystemBlocks(image);
                image.blocks[2].offset = 54 + 22 + 18 + 18 + 1;
            },
            "error: blocks[2].offset (offset 104) is 113, expected a place outside of blocks[0], "
            "which ends at 265 [overlap]");
    case Rule::ImageOffset:
        return inCamera([](CameraUpdateFile& file) { file.images[0].offset = 1; },
                        "error: images[0].offset (offset 40) is 1, expected 48 [image-offset]");
    case Rule::ImageVersion:
        return inCamera(
            [](CameraUpdateFile& file) { file.images[0].newVer = VersionInfo(1, 5, 0); },
            "warning: images[0].newVersion (offset 28) is 1.5.0, expected 1.4.0 as in the head "
            "[image-version]");
    case Rule::Gap:
        return inFile(
            imageName, withGap(),
            "warning: the place before blocks[1] (offset 247) is 4 bytes, expected nothing [gap]");
    case Rule::LeftOver:
        return inFile(
            imageName, controllerImageBytes(soundImage()) + "more",
            "warning: the end of the file (offset 400) is 4 bytes, expected nothing [left-over]");
    case Rule::PayloadDamaged:
        return inBlock([](ControllerImageBlock& block) { block.records[1].data[3] = '?'; },
                       "error: blocks[1].payload (offset 247) is damaged: payload checksum is "
                       "wrong, expected a payload as it was made [payload-damaged]");
    case Rule::PayloadVersion:
        return inImage(
            [](ControllerImage& image) { image.blocks[0].records = image.blocks[1].records; },
            "error: blocks[0].payload (offset 94) is Ct 1.4, expected Pt 3.3.0 [payload-version]");
    default:
        return {};
    }
}

Breach breachInVersions(Rule rule)
{
    switch (rule) {
    case Rule::EmptyRange:
        return inBlock([](ControllerImageBlock& block) { block.minVer = VersionInfo(1, 4); },
                       "error: blocks[1].minVersion (offset 78) is 1.4, expected at most "
                       "maxVersion 1.3 [empty-range]");
    case Rule::RangeOverlap:
        return inImage(
            [](ControllerImage& image) {
                image.blocks.append(system(image, VersionInfo(1, 1), VersionInfo(1, 2)));
            },
            "warning: blocks[2].minVersion (offset 96) is 1.1 to 1.2, expected versions outside of "
            "blocks[1], 1.0 to 1.3 [range-overlap]");
    case Rule::RangeAboveNew:
        return inBlock([](ControllerImageBlock& block) { block.maxVer = VersionInfo(1, 5); },
                       "warning: blocks[1].maxVersion (offset 82) is 1.5, expected at most newCt "
                       "1.4 [range-above-new]");
    case Rule::NewBelowMin:
        return inImage(
            [](ControllerImage& image) { image.minCt = VersionInfo(1, 5); },
            "error: newCt (offset 34) is 1.4, expected at least minCt 1.5 [new-below-min]");
    case Rule::ReleaseNotPt:
        return inImage(
            [](ControllerImage& image) { image.release = VersionInfo(3, 3, 1); },
            "warning: release (offset 4) is 3.3.1, expected newPt 3.3.0 [release-not-pt]");
    case Rule::PtWithoutFirmware:
        return inImage([](ControllerImage& image) { image.blocks.removeFirst(); },
                       "error: newPt (offset 28) is 3.3.0, expected minPt 2.0.0, as there is no "
                       "firmware block [pt-without-firmware]");
    case Rule::CtWithoutSystem:
        return inImage([](ControllerImage& image) { image.blocks.removeLast(); },
                       "error: newCt (offset 34) is 1.4, expected minCt 1.0, as there is no system "
                       "block [ct-without-system]");
    case Rule::PtRange:
        return inImage(
            [](ControllerImage& image) { image.blocks[0].minVer = VersionInfo(2, 1, 0); },
            "error: blocks[0].minVersion (offset 56) is 2.1.0, expected a range with 2.0.0 to "
            "below 2.1.0, from where newPt 3.3.0 is not reached [pt-range]");
    case Rule::CtRange:
        return inBlock([](ControllerImageBlock& block) { block.maxVer = VersionInfo(1, 2); },
                       "error: blocks[1].maxVersion (offset 82) is 1.2, expected a range with 1.3 "
                       "to below 1.4, from where newCt 1.4 is not reached [ct-range]");
    case Rule::OwnPreReleases:
        return inImage(
            [](ControllerImage& image) { image.blocks[0].maxVer = VersionInfo(3, 2, 65535); },
            "warning: blocks[0].maxVersion (offset 62) is 3.2.65535, expected at least newPt "
            "3.3.0, if there were pre-releases [own-pre-releases]");
    case Rule::Date:
        return inImage(
            [](ControllerImage& image) {
                image.releaseDate = {2025, 2, 30};
            },
            "error: releaseDate (offset 14) is 2025-02-30, expected a date [date]");
    case Rule::PreReleaseKind:
        return inFile(imageName, controllerImageBytes(betaOfSoundImage(40)),
                      "error: preReleaseType (offset 10) is 40 with number 2, expected 0 with "
                      "number 0, 10, 20 or 30 [pre-release-kind]");
    default:
        return {};
    }
}

Breach breachInNames(Rule rule)
{
    switch (rule) {
    case Rule::NameMark:
        return breachOfPlainName("server_v3.3.0.vx3img",
                                 "error: the pre-release in the name is \"er\", expected nothing, "
                                 "or for example \"-beta.2\" [name-mark]");
    case Rule::NamePreRelease:
        return breachOfPlainName("controller_v3.3.0-beta.1.vx3img",
                                 "error: the pre-release in the name is \"-beta.1\", expected \"\" "
                                 "as in blocks[0].payload [name-pre-release]");
    case Rule::NameLatin1:
        return inFile("€.vx3img", controllerImageBytes(soundImage()),
                      "error: name is €.vx3img, expected letters of ASCII, or at least of Latin-1 "
                      "[name-latin-1]");
    case Rule::NameAscii:
        return inFile("ü.vx3img", controllerImageBytes(soundImage()),
                      "warning: name is ü.vx3img, expected letters of ASCII [name-ascii]");
    case Rule::CameraEnding:
        return inFile(
            "camera.img", cameraUpdateBytes(soundCameraFile()),
            "error: name is camera.img, expected a name that ends with .VX2znimg [camera-ending]");
    case Rule::WaitingTimes:
        return inCamera(
            [](CameraUpdateFile& file) {
                file.models = {0x0901, 0x0C01};
            },
            "error: models[1] (offset 24) is 0x0c01, which needs 27.5 s, expected a model that "
            "needs 9.5 s as the file gets [waiting-times]");
    default:
        return {};
    }
}

Breach breachInDelivery(Rule rule)
{
    const VersionInfo start(2, 0, 0);
    switch (rule) {
    case Rule::ForeignFile:
        return inFolder({{"controller_v3.3.0.vx3img", controllerImageBytes(soundImage())},
                         {"notes.txt", "some notes"}},
                        "notes.txt: warning: the file is no update file, expected only update "
                        "files [foreign-file]");
    case Rule::ReleaseTwice:
        return inChain({betaOfSoundImage(20), soundImage()},
                       "1.vx3img: error: release (offset 4) is 3.3.0, expected another release "
                       "than 3.3.0-beta.2 of 0.vx3img [release-twice]");
    case Rule::MinUnreachable:
        return inChain(
            {soundOlderImage(),
             imageOf(VersionInfo(3, 3, 0), VersionInfo(1, 4), start, VersionInfo(3, 1, 0))},
            "1.vx3img: error: the way to release 3.3.0 is from Pt 3.1.0 and Ct 1.0, expected at "
            "most Pt 3.0.0 and Ct 1.2, as 0.vx3img leaves them [min-unreachable]");
    case Rule::ChainHole:
        return inChain(
            {soundOlderImage(),
             imageOf(VersionInfo(3, 2, 0), VersionInfo(1, 3), VersionInfo(3, 1, 0),
                     VersionInfo(3, 1, 0)),
             imageOf(VersionInfo(3, 3, 0), VersionInfo(1, 4), VersionInfo(3, 1, 0),
                     VersionInfo(3, 1, 0))},
            "1.vx3img: error: the way to release 3.2.0 is Pt 3.1.0 to 3.2.0, Ct 1.0 to 1.2, "
            "expected ranges with Pt 3.0.0 and Ct 1.2, as 0.vx3img leaves them [chain-hole]");
    case Rule::NothingLeads:
        return inChain(
            {soundOlderImage(), imageOf(VersionInfo(3, 3, 0), VersionInfo(1, 4),
                                        VersionInfo(3, 1, 0), VersionInfo(3, 1, 0))},
            "1.vx3img: error: the way to release 3.3.0 is Pt 3.1.0 to 3.3.0, Ct 1.0 to 1.3, "
            "expected ranges with Pt 3.0.0 and Ct 1.2, as 0.vx3img leaves them [nothing-leads]");
    case Rule::CameraFileTwice:
        return inFolder({{"a.VX2znimg", cameraUpdateBytes(soundCameraFile())},
                         {"b.VX2znimg", cameraUpdateBytes(soundCameraFile())}},
                        "b.VX2znimg: warning: models[0] (offset 22) is 0x0c01, expected a model "
                        "that a.VX2znimg is not for [camera-file-twice]");
    case Rule::NestedFolder:
        return inFolder({{"bin/controller_update/a.vx3img", controllerImageBytes(soundImage())},
                         {"old/controller_update/a.vx3img", controllerImageBytes(soundImage())}},
                        "old/controller_update: error: controller_update is never read, expected "
                        "only %1/bin/controller_update, which is found first [nested-folder]");
    default:
        return {};
    }
}

Breach breachOf(Rule rule)
{
    for (const auto make :
         {breachInStructure, breachInPlaces, breachInVersions, breachInNames, breachInDelivery}) {
        const Breach breach = make(rule);
        if (!breach.files.isEmpty())
            return breach;
    }
    return {};
}

QStringList linesOfFile(const QString& name, const QByteArray& bytes)
{
    QStringList lines;
    for (RuleFinding finding : checkUpdateFile(scan(bytes), name)) {
        finding.file = name;
        lines += findingLine(finding);
    }
    return lines;
}

QStringList linesOfFolder(const QString& folder, int* exitCode)
{
    QString out;
    QString messages;
    QTextStream outStream(&out);
    QTextStream messageStream(&messages);
    *exitCode = runVerb(imageTool(), {"check", "--strict", folder}, {outStream, messageStream});
    return (out + messages).split('\n', Qt::SkipEmptyParts);
}

} // namespace

class TestRules : public QObject
{
    Q_OBJECT

private slots:
    void tableIsInTheOrderOfTheEnumeration();
    void manualListsTheTable();
    void soundFilesBreakNoRule();
    void findsJustThatRule_data();
    void findsJustThatRule();
};

void TestRules::tableIsInTheOrderOfTheEnumeration()
{
    QStringList names;
    for (const RuleInfo& info : allRules()) {
        QCOMPARE(static_cast<int>(info.rule), names.size());
        QVERIFY2(!names.contains(info.name), info.name);
        names += info.name;
        QVERIFY(ruleNamed(info.name) == info.rule);
    }
    QCOMPARE(names.size(), static_cast<int>(Rule::NestedFolder) + 1);
    QVERIFY(!ruleNamed("no-rule"));
}

void TestRules::manualListsTheTable()
{
    QString table = "|---|---|---|\n";
    for (const RuleInfo& info : allRules())
        table +=
            QString("| `%1` | %2 | %3 |\n").arg(info.name, severityWord(info.severity), info.what);
    QFile manual(QStringLiteral(MANUAL));
    QVERIFY(manual.open(QIODevice::ReadOnly));
    QVERIFY(QString::fromUtf8(manual.readAll()).contains(table + '\n'));
}

void TestRules::soundFilesBreakNoRule()
{
    QCOMPARE(linesOfFile(imageName, controllerImageBytes(soundImage())), QStringList());
    QCOMPARE(linesOfFile(imageName, controllerImageBytes(soundImage(ImageLayout::Plain))),
             QStringList());
    QCOMPARE(linesOfFile(imageName, controllerImageBytes(betaOfSoundImage(20))), QStringList());
    QCOMPARE(linesOfFile(cameraName, cameraUpdateBytes(soundCameraFile())), QStringList());

    const FixtureFolder folder;
    folder.write("old.vx3img", controllerImageBytes(soundOlderImage()));
    folder.write("new.vx3img", controllerImageBytes(soundImage()));
    folder.write("camera.VX2znimg", cameraUpdateBytes(soundCameraFile()));
    folder.write("SHA256SUMS", "a seal");
    int exitCode = -1;
    QCOMPARE(linesOfFolder(folder.path(), &exitCode), QStringList());
    QCOMPARE(exitCode, 0);
}

void TestRules::findsJustThatRule_data()
{
    QTest::addColumn<int>("rule");
    for (const RuleInfo& info : allRules())
        QTest::newRow(info.name) << static_cast<int>(info.rule);
}

void TestRules::findsJustThatRule()
{
    QFETCH(const int, rule);
    const Breach breach = breachOf(static_cast<Rule>(rule));
    QVERIFY2(!breach.files.isEmpty(), "there is no file that breaks this rule");
    if (!breach.isFolder) {
        const auto& file = breach.files.first();
        QCOMPARE(linesOfFile(file.first, file.second), QStringList{breach.line});
        return;
    }
    const FixtureFolder folder;
    for (const auto& file : breach.files) {
        folder.makeFolder(QFileInfo(file.first).path());
        folder.write(file.first, file.second);
    }
    int exitCode = -1;
    QCOMPARE(linesOfFolder(folder.path(), &exitCode).join('\n'), breach.line.arg(folder.path()));
    QCOMPARE(exitCode, 3);
}

ZAN_TEST_MAIN(TestRules)
#include "tst_rules.moc"
