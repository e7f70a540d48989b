#include "imagelisting.h"

#include <sampleimages.h>
#include <testmain.h>

#include <QBuffer>
#include <QJsonArray>

class TestImageListing : public QObject
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

namespace {

QStringList texts(const UpdateFileListing& listing)
{
    QStringList texts;
    for (const RuleFinding& finding : listing.findings)
        texts += findingText(finding);
    return texts;
}

ControllerImage imageWithPayloads()
{
    ControllerImage image = sampleImage(ImageLayout::Dated, 0, {FirmwareBlock, SystemBlock});
    image.blocks[0].records = splitIntoRecords(
        makePayload({PayloadComponent::TrackingSoftware, image.newPt, "-beta.258"}, 204, 1));
    image.blocks[1].records = splitIntoRecords(
        makePayload({PayloadComponent::ControllerFirmware, image.newCt, QString()}, 64, 1), 50);
    return image;
}

} // namespace

void TestImageListing::textOfAController()
{
    const UpdateFileListing listing = listUpdateFile(controllerImageBytes(imageWithPayloads()));
    QVERIFY(listing.findings.isEmpty());
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

void TestImageListing::textOfACamera()
{
    const UpdateFileListing listing = listUpdateFile(cameraUpdateBytes(sampleCameraFile()));
    QVERIFY(listing.findings.isEmpty());
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

namespace {

QJsonObject jsonOf(const QByteArray& bytes)
{
    QBuffer device;
    device.setData(bytes);
    device.open(QIODevice::ReadOnly);
    return listingJson(scanUpdateFile(device), "/images/f");
}

} // namespace

void TestImageListing::jsonOfAController()
{
    ControllerImage image = sampleImage(ImageLayout::Plain, briarscopeFamily, {FirmwareBlock});
    image.blocks[0].length = 1;
    image.blocks[0].maxRecordLength = 7;
    const QJsonObject shown{{"offset", 60},
                            {"length", 1},
                            {"records", 2},
                            {"longestRecord", 3},
                            {"payload", "unknown"}};
    const QJsonObject block{{"type", "firmware"},
                            {"minVersion", "81.82.83"},
                            {"maxVersion", "97.98.99"},
                            {"text", "abc"},
                            {"recordsOf", QJsonObject{{"file", "/images/f"}, {"block", 0}}},
                            {"override", QJsonObject{{"maxRecordLength", 7}}},
                            {"shown", shown}};
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
        {"override",
         QJsonObject{
             {"reserved1", 225}, {"reserved2", 226}, {"reserved3", 227}, {"reserved4", 228}}},
        {"shown",
         QJsonObject{{"file", "/images/f"},
                     {"problems", QJsonArray{"blocks[0].length (offset 56) is 1, expected the 21 "
                                             "bytes of its head and 2 records"}}}}};
    QCOMPARE(jsonOf(controllerImageBytes(image)), expected);
}

void TestImageListing::whatIsNoUpdateFile()
{
    const UpdateFileListing listing = listUpdateFile("some notes");
    QCOMPARE(texts(listing),
             QStringList{"magic (offset 0) is 0x6f73, expected that of an update file"});
    QCOMPARE(listingText(listing), QString());
    QCOMPARE(jsonOf("some notes").keys(), QStringList{"shown"});
}

void TestImageListing::releases_data()
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

void TestImageListing::releases()
{
    QFETCH(const int, type);
    QFETCH(const int, number);
    ControllerImage image = sampleImage(ImageLayout::Dated, 0, {FirmwareBlock});
    image.preReleaseType = type;
    image.preReleaseNumber = number;
    const QJsonObject json = jsonOf(controllerImageBytes(image));
    QTEST(json.value("release").toString(), "release");
}

void TestImageListing::payloads_data()
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
        "blocks[0].payload (offset 94) is damaged: payload checksum is wrong, expected a payload "
        "as it "
        "was made");
    row(
        "for another version",
        [](ControllerImageBlock& b) {
            set(b, PayloadComponent::TrackingSoftware, VersionInfo(33, 34, 36));
        },
        "Pt 33.34.36",
        "blocks[0].payload (offset 94) is Pt 33.34.36, expected Pt 33.34.35-beta.258");
    row(
        "for another component",
        [](ControllerImageBlock& b) {
            set(b, PayloadComponent::CameraFirmware, VersionInfo(33, 34, 35));
        },
        "camera 33.34.35",
        "blocks[0].payload (offset 94) is camera 33.34.35, expected Pt 33.34.35-beta.258");
    row(
        "cut by the record count", [](ControllerImageBlock& b) { b.records.removeLast(); },
        "damaged",
        "blocks[0].payload (offset 94) is damaged: payload announces 204 bytes of body and has 84, "
        "expected a payload as it was made");
    row(
        "behind a broken block", [](ControllerImageBlock& b) { b.magic = 0; }, "incomplete",
        "blocks[0].magic (offset 94) is 0x0000, expected 0xa258");
}

void TestImageListing::payloads()
{
    QFETCH(const QByteArray, bytes);
    QFETCH(const QString, problem);
    const UpdateFileListing listing = listUpdateFile(bytes);
    const QJsonObject block = jsonOf(bytes).value("blocks").toArray().first().toObject();
    QTEST(block.value("shown").toObject().value("payload").toString(), "payload");
    QCOMPARE(texts(listing), problem.isEmpty() ? QStringList() : QStringList{problem});
}

ZAN_TEST_MAIN(TestImageListing)
#include "tst_imagelisting.moc"
