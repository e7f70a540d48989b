#include "imagelisting.h"
#include "sampleimages.h"

#include <testmain.h>

#include <QJsonArray>

class ImageListingTest : public QObject
{
    Q_OBJECT

private slots:
    void textOfAController();
    void textOfACamera();
    void jsonOfAController();
    void whatIsNoUpdateFile();
    void releases_data();
    void releases();
    void payloads_data();
    void payloads();
};

static ControllerImage imageWithPayloads()
{
    ControllerImage image = sampleImage(ImageLayout::Dated, 0, {FirmwareBlock, SystemBlock});
    image.blocks[0].records = splitIntoRecords(
        makePayload({PayloadComponent::TrackingSoftware, image.newPt, "-beta.258"}, 204, 1));
    image.blocks[1].records = splitIntoRecords(
        makePayload({PayloadComponent::ControllerFirmware, image.newCt, QString()}, 64, 1), 50);
    return image;
}

void ImageListingTest::textOfAController()
{
    const UpdateFileListing listing = listUpdateFile(controllerImageBytes(imageWithPayloads()));
    QCOMPARE(listing.problems, QStringList());
    QCOMPARE(listingText(listing), QStringLiteral("kind              controller\n"
                                                  "layout            dated\n"
                                                  "modelFamily       ZAN\n"
                                                  "release           17.18.19-beta.258\n"
                                                  "releaseDate       2025-03-14\n"
                                                  "minorReleaseDate  2026-11-30\n"
                                                  "newPt             33.34.35\n"
                                                  "newCt             49.50\n"
                                                  "minPt             65.66.67\n"
                                                  "minCt             68.69\n"
                                                  "blocks[0]\n"
                                                  "  type            firmware\n"
                                                  "  minVersion      81.82.83\n"
                                                  "  maxVersion      97.98.99\n"
                                                  "  text            abc\n"
                                                  "  offset          94\n"
                                                  "  length          257\n"
                                                  "  records         2\n"
                                                  "  longestRecord   120\n"
                                                  "  payload         Pt 33.34.35-beta.258\n"
                                                  "blocks[1]\n"
                                                  "  type            system\n"
                                                  "  minVersion      81.82\n"
                                                  "  maxVersion      97.98\n"
                                                  "  text            abc\n"
                                                  "  offset          351\n"
                                                  "  length          117\n"
                                                  "  records         2\n"
                                                  "  longestRecord   50\n"
                                                  "  payload         Ct 49.50\n"));
}

void ImageListingTest::textOfACamera()
{
    const UpdateFileListing listing = listUpdateFile(cameraUpdateBytes(sampleCameraFile()));
    QCOMPARE(listing.problems, QStringList());
    QCOMPARE(listingText(listing), QStringLiteral("kind              camera\n"
                                                  "newVersion        17.18.19\n"
                                                  "minVersion        33.34.35\n"
                                                  "models            0x0901, 0x0c01\n"
                                                  "images[0]\n"
                                                  "  text            abc\n"
                                                  "  offset          70\n"
                                                  "  length          21\n"
                                                  "  records         2\n"
                                                  "  longestRecord   3\n"
                                                  "  payload         unknown\n"
                                                  "images[1]\n"
                                                  "  text            second\n"
                                                  "  offset          91\n"
                                                  "  length          20\n"
                                                  "  records         1\n"
                                                  "  longestRecord   2\n"
                                                  "  payload         unknown\n"));
}

void ImageListingTest::jsonOfAController()
{
    ControllerImage image = sampleImage(ImageLayout::Plain, briarscopeFamily, {FirmwareBlock});
    image.blocks[0].length = 1;
    const QJsonObject block{{"type", "firmware"},
                            {"minVersion", "81.82.83"},
                            {"maxVersion", "97.98.99"},
                            {"text", "abc"},
                            {"offset", 60},
                            {"length", 1},
                            {"records", 2},
                            {"longestRecord", 3},
                            {"payload", "unknown"}};
    const QJsonObject expected{
        {"kind", "controller"},
        {"layout", "plain"},
        {"release", "17.18.19"},
        {"modelFamily", "BRIARSCOPE3"},
        {"newPt", "33.34.35"},
        {"newCt", "49.50"},
        {"minPt", "65.66.67"},
        {"minCt", "68.69"},
        {"blocks", QJsonArray{block}},
        {"problems", QJsonArray{"blocks[0]: the table says 1 bytes, there are 21"}}};
    QCOMPARE(listingJson(listUpdateFile(controllerImageBytes(image))), expected);
}

void ImageListingTest::whatIsNoUpdateFile()
{
    const UpdateFileListing listing = listUpdateFile("some notes");
    QCOMPARE(listing.problems, QStringList{"offset 0: 0x6f73 is not the magic of an update file"});
    QCOMPARE(listingText(listing), QString());
    QCOMPARE(listingJson(listing).keys(), QStringList{"problems"});
}

void ImageListingTest::releases_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("release");

    QTest::newRow("final") << 0 << 0 << "17.18.19";
    QTest::newRow("alpha") << 10 << 1 << "17.18.19-alpha.1";
    QTest::newRow("beta") << 20 << 0 << "17.18.19-beta.0";
    QTest::newRow("release candidate") << 30 << 3 << "17.18.19-rc.3";
    QTest::newRow("unknown type") << 40 << 3 << "17.18.19-unknown40.3";
    QTest::newRow("number without type") << 0 << 3 << "17.18.19-unknown0.3";
}

void ImageListingTest::releases()
{
    QFETCH(const int, type);
    QFETCH(const int, number);
    ControllerImage image = sampleImage(ImageLayout::Dated, 0, {FirmwareBlock});
    image.preReleaseType = type;
    image.preReleaseNumber = number;
    const QJsonObject json = listingJson(listUpdateFile(controllerImageBytes(image)));
    QTEST(json.value("release").toString(), "release");
}

void ImageListingTest::payloads_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("payload");
    QTest::addColumn<QString>("problem");

    const auto row = [](const char* name, void (*change)(ControllerImageBlock&),
                        const char* payload, const char* problem) {
        ControllerImage image = imageWithPayloads();
        change(image.blocks[0]);
        QTest::newRow(name) << controllerImageBytes(image) << QString(payload) << QString(problem);
    };
    const auto setPayload = [](ControllerImageBlock& block, PayloadComponent component,
                               const VersionInfo& version) {
        block.records = splitIntoRecords(makePayload({component, version, QString()}, 10, 1));
    };
    static const auto set = setPayload;

    row(
        "sound", [](ControllerImageBlock&) {}, "Pt 33.34.35-beta.258", "");
    row(
        "not of the simulated devices",
        [](ControllerImageBlock& b) { b.records = {QByteArray("VXPK")}; }, "unknown", "");
    row(
        "damaged", [](ControllerImageBlock& b) { b.records[1].data[3] = '?'; }, "damaged",
        "blocks[0]: payload checksum is wrong");
    row(
        "for another version",
        [](ControllerImageBlock& b) {
            set(b, PayloadComponent::TrackingSoftware, VersionInfo(33, 34, 36));
        },
        "Pt 33.34.36", "blocks[0]: payload is for Pt 33.34.36 instead of Pt 33.34.35");
    row(
        "for another component",
        [](ControllerImageBlock& b) {
            set(b, PayloadComponent::CameraFirmware, VersionInfo(33, 34, 35));
        },
        "camera 33.34.35", "blocks[0]: payload is for camera 33.34.35 instead of Pt 33.34.35");
    row(
        "cut by the record count", [](ControllerImageBlock& b) { b.records.removeLast(); },
        "damaged", "blocks[0]: payload announces 204 bytes of body and has 84");
    row(
        "behind a broken block", [](ControllerImageBlock& b) { b.magic = 0; }, "incomplete",
        "blocks[0]: offset 94: block magic is 0x0000, not 0xa258");
}

void ImageListingTest::payloads()
{
    QFETCH(const QByteArray, bytes);
    QFETCH(const QString, problem);
    const UpdateFileListing listing = listUpdateFile(bytes);
    const QJsonObject block = listingJson(listing).value("blocks").toArray().first().toObject();
    QTEST(block.value("payload").toString(), "payload");
    QCOMPARE(listing.problems, problem.isEmpty() ? QStringList() : QStringList{problem});
}

ZAN_TEST_MAIN(ImageListingTest)
#include "tst_imagelisting.moc"
