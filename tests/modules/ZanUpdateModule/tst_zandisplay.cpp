#include "ZanDisplay.h"

#include "ZanController.h"
#include "ZanData.h"
#include "camupdatedata.h"
#include "comparing.h"
#include "imagefixtures.h"
#include "scriptedcascade.h"
#include "scriptedchannel.h"
#include "testmain.h"

#include <BackendVersions>

#include <memory>

using Blocks = QVector<ControllerImageBlock>;

class TestZanDisplay : public QObject
{
    Q_OBJECT

private slots:
    void choosesBlocks_data();
    void choosesBlocks();
    void walksAlongAChainOfReleases();
    void showsARowThatCannotBeTakenYet_data();
    void showsARowThatCannotBeTakenYet();
    void namesAControllerRow_data();
    void namesAControllerRow();
    void isAPlaceholderWithoutControllerOrImage_data();
    void isAPlaceholderWithoutControllerOrImage();
    void describesACamera_data();
    void describesACamera();
    void holdsACamera();
    void isSelectedByACheckState_data();
    void isSelectedByACheckState();

private:
    std::unique_ptr<ZanController> controller(const QByteArray& pt, const QByteArray& ct);
    std::unique_ptr<ZanData> image(const ControllerImage& sample);

    FixtureFolder m_folder;
    ScriptedChannel m_channel;
    BackendVersions m_versions{{3, 0, 0}, {1, 23}, {1, 0}, QStringLiteral("ZAN")};
};

// A controller record at the start of its walk.
std::unique_ptr<ZanController> TestZanDisplay::controller(const QByteArray& pt,
                                                          const QByteArray& ct)
{
    ScriptedController answers;
    answers.pt = pt;
    answers.ct = ct;
    scriptMaster(&m_channel, answers);
    auto record = std::make_unique<ZanController>(&m_channel, &m_versions, QString(), false);
    record->currentPt = record->getVersionLumasolver();
    record->currentCt = record->getVersionController();
    return record;
}

std::unique_ptr<ZanData> TestZanDisplay::image(const ControllerImage& sample)
{
    return std::make_unique<ZanData>(m_folder.write("image", controllerImageBytes(sample)));
}

static const ControllerImageBlock FIRMWARE = firmwareBlock({1, 0, 0}, {2, 9, 9});
static const ControllerImageBlock SYSTEM = systemBlock({1, 0}, {1, 9});

static ControllerImageBlock unknownBlock()
{
    ControllerImageBlock block = systemBlock({0, 0}, {65535, 65535});
    block.type = 7;
    return block;
}

// What a row chose and shows, and where it left the controller's running position.
static QString described(const ZanDisplay& row, const ZanController& controller)
{
    QStringList indexes;
    for (const int index : row.updateIndexes())
        indexes += QString::number(index);
    const QString type = row.type() == ZAN_FIRMWARE_UPDATE        ? QStringLiteral("firmware")
                         : row.type() == ZAN_SYSTEM_UPDATE        ? QStringLiteral("system")
                         : row.type() == ZAN_UPDATE_NOT_AVAILABLE ? QStringLiteral("nothing")
                                                                  : QStringLiteral("?");
    return QStringLiteral("%1 [%2] %3>%4 reboot:%5 possible:%6 at %7 %8")
        .arg(type, indexes.join(QLatin1Char(' ')), row.versionFrom().toString(),
             row.versionTo().toString(), row.rebootNecessaryString(), row.updatePossibleString(),
             controller.currentPt.toString(), controller.currentCt.toString());
}

void TestZanDisplay::choosesBlocks_data()
{
    QTest::addColumn<QByteArray>("pt");
    QTest::addColumn<QByteArray>("ct");
    QTest::addColumn<ControllerImage>("sample");
    QTest::addColumn<QString>("description");

    // The image brings Pt 3.0.0 and Ct 2.0, and its release is named 3.0.0, unless a row says so.
    const auto row = [](const char* name, const char* pt, const char* ct, const Blocks& blocks,
                        const char* description) {
        QTest::newRow(name) << QByteArray(pt) << QByteArray(ct)
                            << releaseImage({3, 0, 0}, {2, 0}, blocks) << QString(description);
    };
    row("a firmware block", "v2.7.7", "v1.5", {FIRMWARE},
        "firmware [0] v2.7.7>v3.0.0 reboot:yes possible:yes at v3.0.0 v1.5");
    row("a system block", "v2.7.7", "v1.5", {SYSTEM},
        "system [0] v1.5>v2.0 reboot:no possible:yes at v2.7.7 v2.0");
    row("a firmware and a system block", "v2.7.7", "v1.5", {FIRMWARE, SYSTEM},
        "firmware [0 1] v2.7.7>v3.0.0 reboot:yes possible:yes at v3.0.0 v2.0");
    row("a system and a firmware block", "v2.7.7", "v1.5", {SYSTEM, FIRMWARE},
        "firmware [0 1] v2.7.7>v3.0.0 reboot:yes possible:yes at v3.0.0 v2.0");
    row("no block that applies", "v2.7.7", "v1.5",
        {firmwareBlock({1, 0, 0}, {1, 9, 9}), systemBlock({0, 1}, {0, 9})},
        "nothing [] > reboot: possible: at v2.7.7 v1.5");
    row("blocks of unknown types alone", "v2.7.7", "v1.5", {unknownBlock(), unknownBlock()},
        "nothing [] > reboot: possible: at v2.7.7 v1.5");
    row("a block of an unknown type is passed over", "v2.7.7", "v1.5",
        {unknownBlock(), SYSTEM, unknownBlock(), FIRMWARE},
        "firmware [1 3] v2.7.7>v3.0.0 reboot:yes possible:yes at v3.0.0 v2.0");
    row("two system blocks are both taken", "v2.7.7", "v1.5",
        {SYSTEM, systemBlock({1, 5}, {1, 5}), systemBlock({2, 0}, {2, 9})},
        "system [0 1] v1.5>v2.0 reboot:no possible:yes at v2.7.7 v2.0");

    row("the lower limit of a firmware block applies", "v1.0.0", "v1.5", {FIRMWARE},
        "firmware [0] v1.0.0>v3.0.0 reboot:yes possible:yes at v3.0.0 v1.5");
    row("the upper limit of a firmware block applies", "v2.9.9", "v1.5", {FIRMWARE},
        "firmware [0] v2.9.9>v3.0.0 reboot:yes possible:yes at v3.0.0 v1.5");
    row("one below the limits of a firmware block", "v0.9.9", "v1.5", {FIRMWARE},
        "nothing [] > reboot: possible: at v0.9.9 v1.5");
    row("one above the limits of a firmware block", "v2.9.10", "v1.5", {FIRMWARE},
        "nothing [] > reboot: possible: at v2.9.10 v1.5");
    row("the lower limit of a system block applies", "v2.7.7", "v1.0", {SYSTEM},
        "system [0] v1.0>v2.0 reboot:no possible:yes at v2.7.7 v2.0");
    row("the upper limit of a system block applies", "v2.7.7", "v1.9", {SYSTEM},
        "system [0] v1.9>v2.0 reboot:no possible:yes at v2.7.7 v2.0");
    row("a patch part lies above the upper limit of a system block", "v2.7.7", "v1.4.1",
        {systemBlock({1, 2}, {1, 4})}, "nothing [] > reboot: possible: at v2.7.7 v1.4.1");
    row("a patch part lies above the lower limit of a system block", "v2.7.7", "v1.2.1",
        {systemBlock({1, 2}, {1, 4})},
        "system [0] v1.2.1>v2.0 reboot:no possible:yes at v2.7.7 v2.0");

    row("neither version is behind", "v3.1.0", "v2.0",
        {firmwareBlock({0, 0, 0}, {9, 0, 0}), systemBlock({0, 0}, {9, 0})},
        "nothing [] > reboot: possible: at v3.1.0 v2.0");
    row("both versions are above", "v4.0.0", "v3.0",
        {firmwareBlock({0, 0, 0}, {9, 0, 0}), systemBlock({0, 0}, {9, 0})},
        "nothing [] > reboot: possible: at v4.0.0 v3.0");
    row("only Pt is behind, and every block applies", "v2.7.7", "v2.0",
        {firmwareBlock({0, 0, 0}, {2, 9, 9}), systemBlock({0, 0}, {9, 0})},
        "firmware [0 1] v2.7.7>v3.0.0 reboot:yes possible:yes at v3.0.0 v2.0");
    row("only Ct is behind, and every block applies", "v3.1.0", "v1.5",
        {firmwareBlock({0, 0, 0}, {9, 0, 0}), systemBlock({0, 0}, {9, 0})},
        "firmware [0 1] v3.1.0>v3.0.0 reboot:yes possible:yes at v3.0.0 v2.0");

    row("the release's Pt with an older Ct", "v3.0.0", "v1.5", {FIRMWARE, SYSTEM},
        "system [1] v1.5>v2.0 reboot:no possible:yes at v3.0.0 v2.0");
    row("the release's Pt with a firmware block is shown as a system update", "v3.0.0", "v1.5",
        {firmwareBlock({1, 0, 0}, {3, 0, 0}), SYSTEM},
        "system [0 1] v1.5>v2.0 reboot:yes possible:yes at v3.0.0 v2.0");
    row("the release's Pt with a firmware block alone is not", "v3.0.0", "v1.5",
        {firmwareBlock({1, 0, 0}, {3, 0, 0})},
        "firmware [0] v3.0.0>v3.0.0 reboot:yes possible:yes at v3.0.0 v1.5");
    row("the release's own Pt and Ct", "v3.0.0", "v2.0",
        {firmwareBlock({0, 0, 0}, {9, 0, 0}), systemBlock({0, 0}, {9, 0})},
        "nothing [] > reboot: possible: at v3.0.0 v2.0");
    row("a pre-release of the release is offered it", "v3.0.0-rc.1", "v2.0",
        {firmwareBlock({3, 0, 0}, {3, 0, 0}), systemBlock({2, 0}, {2, 0})},
        "firmware [0 1] v3.0.0>v3.0.0 reboot:yes possible:yes at v3.0.0 v2.0");
    row("a pre-release of the release is offered a system block", "v3.0.0-rc.1", "v2.0",
        {systemBlock({2, 0}, {2, 0})},
        "system [0] v2.0>v2.0 reboot:no possible:yes at v3.0.0 v2.0");
    row("a pre-release outside the blocks' limits is offered nothing", "v3.0.0-rc.1", "v2.0",
        {FIRMWARE, SYSTEM}, "nothing [] > reboot: possible: at v3.0.0 v2.0");
    row("a pre-release of another version counts as that version", "v3.1.0-rc.1", "v2.0",
        {firmwareBlock({0, 0, 0}, {9, 0, 0})}, "nothing [] > reboot: possible: at v3.1.0 v2.0");

    ControllerImage named = releaseImage({3, 0, 0}, {2, 0}, {FIRMWARE, SYSTEM});
    named.release = {2, 7, 7};
    QTest::newRow("the name of the release decides, not the Pt that it brings")
        << QByteArray("v2.7.7") << QByteArray("v1.5") << named
        << QStringLiteral("system [0 1] v1.5>v2.0 reboot:yes possible:yes at v3.0.0 v2.0");

    QTest::newRow("two firmware blocks, the second at the position that the first moved to")
        << QByteArray("v1.5.0") << QByteArray("v1.5")
        << releaseImage({2, 5, 0}, {2, 0},
                        {firmwareBlock({1, 0, 0}, {1, 9, 9}), firmwareBlock({2, 0, 0}, {2, 9, 9})})
        << QStringLiteral("firmware [0 1] v2.5.0>v2.5.0 reboot:yes possible:yes at v2.5.0 v1.5");
    QTest::newRow("two firmware blocks in the other order, the second alone")
        << QByteArray("v1.5.0") << QByteArray("v1.5")
        << releaseImage({2, 5, 0}, {2, 0},
                        {firmwareBlock({2, 0, 0}, {2, 9, 9}), firmwareBlock({1, 0, 0}, {1, 9, 9})})
        << QStringLiteral("firmware [1] v1.5.0>v2.5.0 reboot:yes possible:yes at v2.5.0 v1.5");
}

void TestZanDisplay::choosesBlocks()
{
    QFETCH(QByteArray, pt);
    QFETCH(QByteArray, ct);
    QFETCH(ControllerImage, sample);
    const auto record = controller(pt, ct);
    const auto data = image(sample);
    const ZanDisplay row(record.get(), data.get());
    QTEST(described(row, *record), "description");
    QCOMPARE(row.controller(), record.get());
    QCOMPARE(row.update(), data.get());
    QCOMPARE(row.toBeUpdated(), row.updatePossible());
    QCOMPARE(row.updatePossible(), !row.updateIndexes().isEmpty());
    QCOMPARE(row.getVersionFrom(), row.versionFrom());
    QCOMPARE(row.getVersionTo(), row.versionTo());
    QCOMPARE(row.rebootNecessary(), row.rebootNecessaryString() == QLatin1String("yes"));
    QCOMPARE(row.getCamUpdate(), nullptr);
    QCOMPARE(row.indexCamForUpdate(), 0);
}

void TestZanDisplay::walksAlongAChainOfReleases()
{
    const auto record = controller("v1.0.0", "v1.5");
    const auto a = std::make_unique<ZanData>(
        m_folder.write("a", controllerImageBytes(releaseImage({2, 0, 0}, {1, 8},
                                                              {firmwareBlock({1, 0, 0}, {1, 9, 9}),
                                                               systemBlock({1, 5}, {1, 5})}))));
    ControllerImage second = releaseImage(
        {3, 0, 0}, {2, 0}, {firmwareBlock({2, 0, 0}, {2, 9, 9}), systemBlock({1, 8}, {1, 8})});
    const auto b = std::make_unique<ZanData>(m_folder.write("b", controllerImageBytes(second)));
    second.minPt = {2, 0, 0};
    const auto bAfterA =
        std::make_unique<ZanData>(m_folder.write("c", controllerImageBytes(second)));

    const ZanDisplay first(record.get(), a.get());
    QCOMPARE(described(first, *record),
             QString("firmware [0 1] v1.0.0>v2.0.0 reboot:yes possible:yes at v2.0.0 v1.8"));
    QCOMPARE(described(ZanDisplay(record.get(), b.get()), *record),
             QString("firmware [0 1] v2.0.0>v3.0.0 reboot:yes possible:yes at v3.0.0 v2.0"));

    // What may be installed depends on what the controller reports, not on the rows before.
    record->currentPt = VersionInfo(2, 0, 0);
    record->currentCt = VersionInfo(1, 8);
    const ZanDisplay later(record.get(), bAfterA.get());
    QCOMPARE(described(later, *record),
             QString("firmware [0 1] v2.0.0>v3.0.0 reboot:yes possible:no at v3.0.0 v2.0"));
    QVERIFY(!later.toBeUpdated());

    const auto installed = controller("v2.0.0", "v1.8");
    const ZanDisplay now(installed.get(), bAfterA.get());
    QCOMPARE(described(now, *installed),
             QString("firmware [0 1] v2.0.0>v3.0.0 reboot:yes possible:yes at v3.0.0 v2.0"));
    QVERIFY(now.toBeUpdated());
}

void TestZanDisplay::showsARowThatCannotBeTakenYet_data()
{
    QTest::addColumn<QByteArray>("pt");
    QTest::addColumn<QByteArray>("ct");
    QTest::addColumn<bool>("isPossible");

    // The image may be applied from Pt 2.7.7 and Ct 1.4 on.
    QTest::newRow("both are high enough") << QByteArray("v2.7.7") << QByteArray("v1.4") << true;
    QTest::newRow("Pt is too low") << QByteArray("v2.7.6") << QByteArray("v1.4") << false;
    QTest::newRow("Ct is too low") << QByteArray("v2.7.7") << QByteArray("v1.3.9") << false;
    QTest::newRow("both are too low") << QByteArray("v1.0.0") << QByteArray("v1.0") << false;
    QTest::newRow("Pt without patch is too low")
        << QByteArray("v2.7") << QByteArray("v1.4") << false;
}

void TestZanDisplay::showsARowThatCannotBeTakenYet()
{
    QFETCH(QByteArray, pt);
    QFETCH(QByteArray, ct);
    QFETCH(bool, isPossible);
    ControllerImage sample = releaseImage({3, 0, 0}, {2, 0}, {FIRMWARE, SYSTEM});
    sample.minPt = {2, 7, 7};
    sample.minCt = {1, 4};
    const auto record = controller(pt, ct);
    const auto data = image(sample);
    const ZanDisplay row(record.get(), data.get());
    QCOMPARE(row.updateIndexes(), (QVector<int>{0, 1}));
    QCOMPARE(row.updatePossible(), isPossible);
    QCOMPARE(row.updatePossibleString(), QString(isPossible ? "yes" : "no"));
    QCOMPARE(row.toBeUpdated(), isPossible);
    QCOMPARE(row.rebootNecessaryString(), QString("yes"));
}

void TestZanDisplay::namesAControllerRow_data()
{
    QTest::addColumn<QByteArray>("hostname");
    QTest::addColumn<bool>("isFirmware");
    QTest::addColumn<QString>("text");

    const auto row = [](const char* name, const char* hostname, bool isFirmware, const char* text) {
        QTest::newRow(name) << QByteArray(hostname) << isFirmware << QString::fromUtf8(text);
    };
    row("a firmware row", "alpha", true, "Firmware update (alpha)");
    row("a system row", "alpha", false, "System update (alpha)");
    row("a host name beyond ASCII", "größe", true, "Firmware update (größe)");
    row("a host name with a placeholder", "%1", false, "System update (%1)");
    row("no host name", "", true, "Firmware update ()");
}

void TestZanDisplay::namesAControllerRow()
{
    QFETCH(bool, isFirmware);
    QFETCH(QByteArray, hostname);
    ScriptedController answers;
    answers.hostname = hostname;
    answers.pt = "v2.7.7";
    answers.ct = "v1.5";
    scriptMaster(&m_channel, answers);
    ZanController record(&m_channel, &m_versions, QString(), false);
    record.currentPt = record.getVersionLumasolver();
    record.currentCt = record.getVersionController();
    const auto data = image(releaseImage({3, 0, 0}, {2, 0}, {isFirmware ? FIRMWARE : SYSTEM}));
    const ZanDisplay row(&record, data.get());
    QTEST(row.typeString(), "text");
}

void TestZanDisplay::isAPlaceholderWithoutControllerOrImage_data()
{
    QTest::addColumn<bool>("hasController");
    QTest::addColumn<bool>("hasImage");

    QTest::newRow("neither") << false << false;
    QTest::newRow("no image") << true << false;
    QTest::newRow("no controller") << false << true;
}

void TestZanDisplay::isAPlaceholderWithoutControllerOrImage()
{
    QFETCH(bool, hasController);
    QFETCH(bool, hasImage);
    const auto record = controller("v2.7.7", "v1.5");
    const auto data = image(releaseImage({3, 0, 0}, {2, 0}, {FIRMWARE}));
    const ZanDisplay row(hasController ? record.get() : nullptr, hasImage ? data.get() : nullptr);
    QCOMPARE(row.type(), ZAN_UPDATE_NOT_AVAILABLE);
    QCOMPARE(row.typeString(), QStringLiteral("- no update available -"));
    QCOMPARE(row.rebootNecessaryString(), QString());
    QCOMPARE(row.updatePossibleString(), QString());
    QVERIFY(!row.updatePossible());
    QVERIFY(!row.toBeUpdated());
    QVERIFY(!row.rebootNecessary());
    QVERIFY(row.updateIndexes().isEmpty());
    QCOMPARE(row.versionFrom(), VersionInfo());
    QCOMPARE(row.versionTo(), VersionInfo());
    QCOMPARE(row.controller() != nullptr, hasController);
    QCOMPARE(row.update() != nullptr, hasImage);
    QCOMPARE(row.getCamUpdate(), nullptr);
    QCOMPARE(row.indexCamForUpdate(), 0);
    QVERIFY(!row.getCamPreRelease());
    QVERIFY(row.getCamModel().isEmpty() && row.getCamModelDesc().isEmpty() &&
            row.getCamSerial().isEmpty());
}

void TestZanDisplay::describesACamera_data()
{
    QTest::addColumn<QString>("description");
    QTest::addColumn<QString>("serial");
    QTest::addColumn<QString>("text");

    const auto row = [](const char* name, const char* description, const char* serial,
                        const char* text) {
        QTest::newRow(name) << QString(description) << QString(serial) << QString(text);
    };
    row("description and serial", "Wide", "C100", "Camera firmware update (Wide C100)");
    row("no serial", "Wide", "", "Camera firmware update (Wide)");
    row("no description", "", "C100", "Camera firmware update (C100)");
    row("neither", "", "", "Camera firmware update");
    row("placeholders in both", "%2", "%1", "Camera firmware update (%2 %1)");
}

void TestZanDisplay::describesACamera()
{
    QFETCH(QString, description);
    QFETCH(QString, serial);
    CamUpdateData file(
        m_folder.write("camera", cameraUpdateBytes(cameraFile({0x0901}, {1, 4, 0}))));
    const ZanDisplay row(&file, 3, QStringLiteral("0x0901"), serial, description, {1, 2, 3}, false);
    QTEST(row.getCameraUpdateInfo(), "text");
    QTEST(row.typeString(), "text");
}

void TestZanDisplay::holdsACamera()
{
    CamUpdateData file(
        m_folder.write("camera", cameraUpdateBytes(cameraFile({0x0901}, {1, 4, 0}))));
    for (const bool preRelease : {false, true}) {
        const ZanDisplay row(&file, 3, QStringLiteral("0x0901"), QStringLiteral("C100"),
                             QStringLiteral("Wide"), {1, 2, 3}, preRelease);
        QCOMPARE(row.type(), CAMERA_UPDATE);
        QCOMPARE(row.indexCamForUpdate(), 3);
        QCOMPARE(row.getCamUpdate(), &file);
        QCOMPARE(row.getCamModel(), QStringLiteral("0x0901"));
        QCOMPARE(row.getCamSerial(), QStringLiteral("C100"));
        QCOMPARE(row.getCamModelDesc(), QStringLiteral("Wide"));
        QCOMPARE(row.getCamPreRelease(), preRelease);
        QCOMPARE(row.versionFrom(), VersionInfo(1, 2, 3));
        QCOMPARE(row.versionTo(), VersionInfo(1, 4, 0));
        QVERIFY(row.updatePossible());
        QVERIFY(row.toBeUpdated());
        QVERIFY(row.rebootNecessary());
        QCOMPARE(row.updatePossibleString(), QStringLiteral("yes"));
        QCOMPARE(row.rebootNecessaryString(), QStringLiteral("yes"));
        QCOMPARE(row.controller(), nullptr);
        QCOMPARE(row.update(), nullptr);
        QVERIFY(row.updateIndexes().isEmpty());
    }
}

void TestZanDisplay::isSelectedByACheckState_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<bool>("isSelected");

    QTest::newRow("checked") << int(Qt::Checked) << true;
    QTest::newRow("unchecked") << int(Qt::Unchecked) << false;
    QTest::newRow("checked in part") << int(Qt::PartiallyChecked) << false;
    QTest::newRow("a state that there is not") << 3 << false;
    QTest::newRow("a negative state") << -2 << false;
}

void TestZanDisplay::isSelectedByACheckState()
{
    QFETCH(int, state);
    const auto record = controller("v2.7.7", "v1.5");
    const auto data = image(releaseImage({3, 0, 0}, {2, 0}, {FIRMWARE}));
    for (const int before : {int(Qt::Checked), int(Qt::Unchecked)}) {
        ZanDisplay row(record.get(), data.get());
        row.setToBeUpdated(before);
        row.setToBeUpdated(state);
        QTEST(row.toBeUpdated(), "isSelected");
    }
}

ZAN_TEST_MAIN(TestZanDisplay)

#include "tst_zandisplay.moc"
