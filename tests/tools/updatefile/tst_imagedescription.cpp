#include "imagedescription.h"
#include "sampleimages.h"

#include <reasons.h>
#include <testmain.h>

class TestImageDescription : public QObject
{
    Q_OBJECT

private slots:
    void readsEveryKeyOfAController();
    void readsEveryKeyOfACamera();
    void generatesThePayloads();
    void plainLayoutHasNoDates();
    void appendixGoesToPtOnly();
    void releases_data();
    void releases();
    void overridesReachTheBytes();
    void cameraOverridesReachTheBytes();
    void namesTheError_data();
    void namesTheError();
};

namespace {

const char controllerJson[] = R"({
    "kind": "controller",
    "layout": "dated",
    "modelFamily": "BRIARSCOPE3",
    "release": "3.2.1-beta.2",
    "releaseDate": "2025-03-14",
    "minorReleaseDate": "2025-12-31",
    "newPt": "3.2.0",
    "newCt": "1.3",
    "minPt": "2.0.0",
    "minCt": "1.0",
    "blocks": [
        {"type": "firmware", "minVersion": "2.0.0", "maxVersion": "3.1.65535",
         "text": "some text", "records": ["010203", "ff", ""]},
        {"type": "system", "minVersion": "1.0", "maxVersion": "1.2",
         "recordLength": 40, "payload": {"records": 3, "seed": 5}}
    ]
})";

const char cameraJson[] = R"({
    "kind": "camera",
    "newVersion": "1.4.0",
    "minVersion": "1.0.7",
    "models": ["0x0901", "0x0c01"],
    "images": [
        {"text": "first", "records": ["aa"]},
        {"payload": {"records": 1}}
    ]
})";

std::optional<UpdateFile> read(const QByteArray& json, QString* error)
{
    return readImageDescription(json, QStringLiteral("f.json"), nullptr, error);
}

template <typename File>
File readSound(const QByteArray& json)
{
    QString error;
    const auto file = read(json, &error);
    if (!file || !std::holds_alternative<File>(*file))
        qFatal("the description is not sound: %s", qPrintable(error));
    return std::get<File>(*file);
}

QByteArray changed(const char* json, const char* from, const char* to)
{
    return QByteArray(json).replace(from, to);
}

} // namespace

void TestImageDescription::readsEveryKeyOfAController()
{
    const auto image = readSound<ControllerImage>(controllerJson);
    QVERIFY(image.layout == ImageLayout::Dated);
    QCOMPARE(image.modelFamily, briarscopeFamily);
    QVERIFY(image.release == VersionInfo(3, 2, 1));
    QCOMPARE(image.preReleaseType, 20);
    QCOMPARE(image.preReleaseNumber, 2);
    QCOMPARE(image.releaseDate.year, 2025);
    QCOMPARE(image.releaseDate.month, 3);
    QCOMPARE(image.releaseDate.day, 14);
    QCOMPARE(image.minorReleaseDate.month, 12);
    QCOMPARE(image.minorReleaseDate.day, 31);
    QVERIFY(image.newPt == VersionInfo(3, 2, 0));
    QVERIFY(image.newCt == VersionInfo(1, 3));
    QVERIFY(image.minPt == VersionInfo(2, 0, 0));
    QVERIFY(image.minCt == VersionInfo(1, 0));

    QCOMPARE(image.blocks.size(), 2);
    const ControllerImageBlock& firmware = image.blocks[0];
    QCOMPARE(firmware.type, quint16(FirmwareBlock));
    QVERIFY(firmware.minVer == VersionInfo(2, 0, 0));
    QVERIFY(firmware.maxVer == VersionInfo(3, 1, 65535));
    QCOMPARE(firmware.text, QByteArray("some text"));
    QCOMPARE(firmware.records.size(), 3);
    QCOMPARE(firmware.records[0].data, QByteArray("\x01\x02\x03"));
    QCOMPARE(firmware.records[2].data, QByteArray());
    const ControllerImageBlock& system = image.blocks[1];
    QCOMPARE(system.type, quint16(SystemBlock));
    QVERIFY(system.maxVer == VersionInfo(1, 2));
    QCOMPARE(system.text, QByteArray());
    const QVector<ImageRecord> records = allRecords(system);
    QCOMPARE(records.size(), 3);
    QCOMPARE(records[2].data.size(), 40);
}

void TestImageDescription::readsEveryKeyOfACamera()
{
    const auto file = readSound<CameraUpdateFile>(cameraJson);
    QVERIFY(file.newVer == VersionInfo(1, 4, 0));
    QVERIFY(file.minVer == VersionInfo(1, 0, 7));
    QCOMPARE(file.models, (QVector<quint16>{0x0901, 0x0C01}));
    QCOMPARE(file.images.size(), 2);
    QCOMPARE(file.images[0].text, QByteArray("first"));
    QCOMPARE(joinRecords(allRecords(file.images[0])), QByteArray("\xAA"));
    const QVector<ImageRecord> records = allRecords(file.images[1]);
    QCOMPARE(records.size(), 1);
    QCOMPARE(records[0].data.size(), maxRecordBytes);
}

void TestImageDescription::generatesThePayloads()
{
    const auto image = readSound<ControllerImage>(controllerJson);
    const PayloadHead ctHead{PayloadComponent::ControllerFirmware, VersionInfo(1, 3), QString()};
    QCOMPARE(joinRecords(allRecords(image.blocks[1])), makePayload(ctHead, 3 * 40 - 36, 5));

    const auto file = readSound<CameraUpdateFile>(cameraJson);
    const PayloadHead cameraHead{PayloadComponent::CameraFirmware, VersionInfo(1, 4, 0), QString()};
    QCOMPARE(joinRecords(allRecords(file.images[1])), makePayload(cameraHead, 120 - 36, 1));
}

void TestImageDescription::plainLayoutHasNoDates()
{
    QByteArray json = changed(controllerJson, "\"dated\"", "\"plain\"");
    json.replace("\"releaseDate\": \"2025-03-14\",", "");
    json.replace("\"minorReleaseDate\": \"2025-12-31\",", "");
    json.replace("\"modelFamily\": \"BRIARSCOPE3\",", "");
    const auto image = readSound<ControllerImage>(json);
    QVERIFY(image.layout == ImageLayout::Plain);
    QCOMPARE(image.modelFamily, 0);
    QCOMPARE(image.preReleaseType, 0);
    QCOMPARE(controllerImageBytes(image).left(2), QByteArray("\x08\xD2"));
}

void TestImageDescription::appendixGoesToPtOnly()
{
    const auto image = readSound<ControllerImage>(changed(controllerJson,
                                                          "\"records\": [\"010203\", \"ff\", \"\"]",
                                                          "\"payload\": {\"records\": 2}"));
    const auto pt = readPayload(joinRecords(allRecords(image.blocks[0])), nullptr);
    QVERIFY(pt.has_value());
    QVERIFY(pt->version == VersionInfo(3, 2, 0));
    QCOMPARE(pt->appendix, QStringLiteral("-beta.2"));
    const auto ct = readPayload(joinRecords(allRecords(image.blocks[1])), nullptr);
    QVERIFY(ct.has_value());
    QCOMPARE(ct->appendix, QString());
}

void TestImageDescription::releases_data()
{
    QTest::addColumn<QByteArray>("release");
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("number");

    QTest::newRow("final") << QByteArray("3.2.1") << 0 << 0;
    QTest::newRow("alpha") << QByteArray("3.2.1-alpha.0") << 10 << 0;
    QTest::newRow("beta") << QByteArray("3.2.1-beta.11") << 20 << 11;
    QTest::newRow("release candidate") << QByteArray("3.2.1-rc.65535") << 30 << 65535;
}

void TestImageDescription::releases()
{
    QFETCH(const QByteArray, release);
    const auto image = readSound<ControllerImage>(changed(controllerJson, "3.2.1-beta.2", release));
    QVERIFY(image.release == VersionInfo(3, 2, 1));
    QTEST(image.preReleaseType, "type");
    QTEST(image.preReleaseNumber, "number");
}

void TestImageDescription::overridesReachTheBytes()
{
    QByteArray json = changed(controllerJson, "\"blocks\": [", R"("override": {
        "magic": 1, "blockCount": 2, "reserved1": 3, "reserved2": 4, "reserved3": 5,
        "reserved4": 6}, "blocks": [)");
    json.replace("\"text\": \"some text\",", R"("override": {"type": 7, "magic": 8,
        "textLength": 9, "recordCount": 4294967295, "maxRecordLength": 11, "offset": 12,
        "length": 13},)");
    const auto image = readSound<ControllerImage>(json);
    QCOMPARE(int(image.magic.value_or(0)), 1);
    QCOMPARE(int(image.blockCount.value_or(0)), 2);
    QCOMPARE(image.reserved, (std::array<quint16, 4>{3, 4, 5, 6}));
    const ControllerImageBlock& block = image.blocks[0];
    QCOMPARE(int(block.type), 7);
    QCOMPARE(int(block.magic.value_or(0)), 8);
    QCOMPARE(int(block.textLength.value_or(0)), 9);
    QCOMPARE(block.recordCount.value_or(0), 4294967295U);
    QCOMPARE(int(block.maxRecordLength.value_or(0)), 11);
    QCOMPARE(block.offset.value_or(0), 12U);
    QCOMPARE(block.length.value_or(0), 13U);
    QVERIFY(!image.blocks[1].offset.has_value());
}

void TestImageDescription::cameraOverridesReachTheBytes()
{
    QByteArray json = changed(cameraJson, "\"models\"", R"("override": {"magic": 1,
        "modelCount": 2, "imageCount": 3, "reserved4": 4}, "models")");
    json.replace("\"text\": \"first\"", "\"override\": {\"magic\": 5}");
    const auto file = readSound<CameraUpdateFile>(json);
    QCOMPARE(int(file.magic.value_or(0)), 1);
    QCOMPARE(int(file.modelCount.value_or(0)), 2);
    QCOMPARE(int(file.imageCount.value_or(0)), 3);
    QCOMPARE(file.reserved, (std::array<quint16, 4>{0, 0, 0, 4}));
    QCOMPARE(int(file.images[0].magic.value_or(0)), 5);
}

void TestImageDescription::namesTheError_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("error");

    QTest::newRow("no JSON") << QByteArray("{\n") << "f.json: line 2: " + jsonReason("{\n");
    QTest::newRow("no kind") << QByteArray("{}") << "f.json: kind: missing";

    const auto row = [](const char* json, const char* from, const char* to, const char* error) {
        QTest::newRow(error) << changed(json, from, to) << QString(error);
    };
    row(controllerJson, "\"controller\"", "\"display\"",
        "f.json: kind: must be one of \"controller\", \"camera\"");
    row(controllerJson, "\"dated\"", "\"new\"",
        "f.json: layout: must be one of \"plain\", \"dated\"");
    row(controllerJson, "\"BRIARSCOPE3\"", "\"OTHER\"",
        "f.json: modelFamily: must be one of \"ZAN\", \"BRIARSCOPE3\"");
    row(controllerJson, "\"dated\"", "\"plain\"", "f.json: minorReleaseDate: unknown key");
    row(controllerJson, "\"minorReleaseDate\": \"2025-12-31\",", "",
        "f.json: minorReleaseDate: missing");
    row(controllerJson, "2025-03-14", "2025-3-14",
        "f.json: releaseDate: must be a date such as \"2025-12-31\"");
    row(controllerJson, "\"newPt\": \"3.2.0\"", "\"newPt\": \"3.2\"",
        "f.json: newPt: must be a version such as \"1.2.3\"");
    row(controllerJson, "\"newCt\": \"1.3\"", "\"newCt\": \"1.3.0\"",
        "f.json: newCt: must be a version such as \"1.2\"");
    row(controllerJson, "\"minPt\": \"2.0.0\"", "\"minPt\": \"2.0.65536\"",
        "f.json: minPt: must be a version such as \"1.2.3\"");
    row(controllerJson, "\"minCt\": \"1.0\"", "\"minCt\": \"v1.0\"",
        "f.json: minCt: must be a version such as \"1.2\"");
    row(controllerJson, "\"blocks\"", "\"block\"", "f.json: blocks: missing");
    row(controllerJson, "\"system\"", "\"sytem\"",
        "f.json: blocks[1].type: must be one of \"firmware\", \"system\"");
    row(controllerJson, "\"minVersion\": \"1.0\"", "\"minVersion\": \"1.0.0\"",
        "f.json: blocks[1].minVersion: must be a version such as \"1.2\"");
    row(controllerJson, "\"maxVersion\": \"3.1.65535\"", "\"maxVersion\": \"3.1\"",
        "f.json: blocks[0].maxVersion: must be a version such as \"1.2.3\"");
    row(controllerJson, "some text", "12345678901234567890123456789012345678901234567890",
        "f.json: blocks[0].text: must be at most 49 characters");
    row(controllerJson, "some text", "\xE2\x82\xAC", "f.json: blocks[0].text: must be Latin-1");
    row(controllerJson, "\"recordLength\": 40", "\"recordLength\": 121",
        "f.json: blocks[1].recordLength: must be a whole number from 1 to 120");
    row(controllerJson, "\"ff\"", "\"fg\"",
        "f.json: blocks[0].records[1]: must be up to 120 bytes in hexadecimal, such as \"01fe\"");
    row(controllerJson, "\"010203\"", "\"01020\"",
        "f.json: blocks[0].records[0]: must be up to 120 bytes in hexadecimal, such as \"01fe\"");
    row(controllerJson, "\"\"", QByteArray('"' + QByteArray(242, 'a') + '"').constData(),
        "f.json: blocks[0].records[2]: must be up to 120 bytes in hexadecimal, such as \"01fe\"");
    row(controllerJson, "\"payload\": {\"records\": 3, \"seed\": 5}", "\"text\": \"\"",
        "f.json: blocks[1].payload: missing");
    row(controllerJson, "\"text\": \"some text\"", "\"payload\": {\"records\": 3}",
        "f.json: blocks[0].payload: unknown key");
    row(controllerJson, "\"seed\"", "\"sed\"", "f.json: blocks[1].payload.sed: unknown key");
    row(controllerJson, "\"seed\": 5", "\"seed\": -1",
        "f.json: blocks[1].payload.seed: must be a whole number from 0 to 4294967295");
    row(controllerJson, "\"recordLength\": 40", "\"recordLength\": 11",
        "f.json: blocks[1].payload.records: too few for the 36 bytes of a payload's head and "
        "checksum");
    row(controllerJson, "\"records\": 3", "\"records\": 26843546",
        "f.json: blocks[1].payload.records: the payloads of a file must not exceed 1073741824 "
        "bytes");
    row(controllerJson, "\"text\": \"some text\"", "\"override\": {\"reserved1\": 0}",
        "f.json: blocks[0].override.reserved1: unknown key");
    row(controllerJson, "\"text\": \"some text\"", "\"override\": {\"type\": 65536}",
        "f.json: blocks[0].override.type: must be a whole number from 0 to 65535");
    row(controllerJson, "\"modelFamily\"", "\"modelfamily\"", "f.json: modelfamily: unknown key");

    for (const char* release : {"3.2", "3.2.1-beta", "3.2.1-gamma.1", "3.2.1-beta.65536", "v3.2.1",
                                "3.2.1beta.1", "3..1", ""}) {
        QTest::addRow("release \"%s\"", release)
            << changed(controllerJson, "3.2.1-beta.2", release)
            << "f.json: release: must be a version such as \"1.2.3\" or \"1.2.3-beta.4\"";
    }

    row(cameraJson, "\"1.4.0\"", "\"1.4\"",
        R"(f.json: newVersion: must be a version such as "1.2.3" or "1.2.3-beta.4")");
    row(cameraJson, "\"minVersion\": \"1.0.7\",", "", "f.json: minVersion: missing");
    row(cameraJson, "\"0x0c01\"", "\"0x0C01\"",
        "f.json: models[1]: must be a model code such as \"0x0901\"");
    row(cameraJson, "\"0x0901\"", "2305", "f.json: models[0]: must be a text");
    row(cameraJson, "\"first\"", ('"' + QByteArray(201, 'x') + '"').constData(),
        "f.json: images[0].text: must be at most 200 characters");
    row(cameraJson, "\"images\"", "\"layout\": \"plain\", \"images\"",
        "f.json: layout: unknown key");
}

void TestImageDescription::namesTheError()
{
    QFETCH(const QByteArray, json);
    QString error;
    QVERIFY(!read(json, &error));
    QTEST(error, "error");
}

ZAN_TEST_MAIN(TestImageDescription)
#include "tst_imagedescription.moc"
