#include "camupdatedata.h"

#include "comparing.h"
#include "imagefixtures.h"
#include "privateaccess.h"
#include "testmain.h"
#include "truncation.h"

ZAN_EXPOSE(readFileInfo, &CamUpdateData::readFileInfo);
ZAN_EXPOSE(listCamModels, &CamUpdateData::listCamModels);
ZAN_EXPOSE(isMarked, &CamUpdateData::m_bDoUdpate);

class TestCamUpdateData : public QObject
{
    Q_OBJECT

private slots:
    void readsTheHeadOfAFile();
    void namesTheFieldAtWhichTheHeadIsCut();
    void readsNothingBehindTheModels();
    void leavesAnObjectThatFitsNoCamera_data();
    void leavesAnObjectThatFitsNoCamera();
    void knowsTheTimeOfTheLastCommand_data();
    void knowsTheTimeOfTheLastCommand();
    void canBeGivenAnotherFileName();

private:
    FixtureFolder m_folder;
};

static CameraUpdateFile sampleFile()
{
    return cameraFile({0x0901, 0x0c01}, {1, 4, 65535}, {1, 0, 3});
}

void TestCamUpdateData::readsTheHeadOfAFile()
{
    const QString path = m_folder.write("a.VX2znimg", cameraUpdateBytes(sampleFile()));
    CamUpdateData file(path);
    QCOMPARE(file.getFilename(), path);
    QCOMPARE(file.getCamModels(), (QStringList{"0x0901", "0x0c01"}));
    QCOMPARE(file.getNewVer(), VersionInfo(1, 4, 65535));
    QCOMPARE(file.getMinVer(), VersionInfo(1, 0, 3));
    QCOMPARE(readFileInfo(file), 0);
    QCOMPARE(isMarked(file), false);
}

void TestCamUpdateData::namesTheFieldAtWhichTheHeadIsCut()
{
    const QVector<FormatField> fields{{2, -2},  {2, -4},  {2, -5},  {2, -6},  {2, -7},
                                      {2, -8},  {2, -9},  {2, -10}, {2, -11}, {2, -12},
                                      {2, -13}, {2, -14}, {2, -14}};
    const QByteArray bytes = cameraUpdateBytes(sampleFile());
    for (int length = 0; length <= bytes.size(); ++length) {
        CamUpdateData file(m_folder.write("cut", bytes.left(length)));
        const QByteArray context = "cut after " + QByteArray::number(length) + " bytes";
        const int code = codeOfTruncation(fields, length);
        QVERIFY2(readFileInfo(file) == code, context);
        QVERIFY2(file.getCamModels().isEmpty() == (code != 0), context);
        QVERIFY2(file.getNewVer() == (length >= 10 ? VersionInfo(1, 4, 65535) : VersionInfo()),
                 context);
        QVERIFY2(file.getMinVer() == (length >= 18 ? VersionInfo(1, 0, 3) : VersionInfo()),
                 context);
    }
}

void TestCamUpdateData::readsNothingBehindTheModels()
{
    CameraUpdateFile other = sampleFile();
    other.imageCount = 65535;
    CamUpdateData file(m_folder.write("a", cameraUpdateBytes(other).left(26 + 2)));
    QCOMPARE(readFileInfo(file), 0);
    QCOMPARE(file.getCamModels().size(), 2);
}

void TestCamUpdateData::leavesAnObjectThatFitsNoCamera_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("code");

    const ControllerImage image =
        releaseImage({3, 0, 0}, {1, 0}, {firmwareBlock({1, 0, 0}, {2, 9, 9})});
    QTest::newRow("a file of no bytes") << m_folder.write("empty", QByteArray()) << -2;
    QTest::newRow("a file that is missing") << m_folder.path("missing") << -1;
    QTest::newRow("no name") << QString() << -1;
    QTest::newRow("a name beyond Latin-1")
        << m_folder.write(QString::fromUtf8("Ω"), cameraUpdateBytes(sampleFile())) << -1;
    QTest::newRow("a folder") << m_folder.makeFolder("folder") << -2;
    QTest::newRow("a controller image")
        << m_folder.write("image", controllerImageBytes(image)) << -3;
    QTest::newRow("a text") << m_folder.write("text", "no update file") << -3;
}

void TestCamUpdateData::leavesAnObjectThatFitsNoCamera()
{
    QFETCH(QString, path);
    CamUpdateData file(path);
    QTEST(readFileInfo(file), "code");
    QCOMPARE(file.getNewVer(), VersionInfo());
    QCOMPARE(file.getMinVer(), VersionInfo());
    QVERIFY(file.getCamModels().isEmpty());
    QCOMPARE(file.getDurationLastCmdSec(), 30.0);
    QVERIFY(!file.isNeedsSearchHardware());
}

void TestCamUpdateData::knowsTheTimeOfTheLastCommand_data()
{
    QTest::addColumn<QStringList>("models");
    QTest::addColumn<double>("seconds");
    QTest::addColumn<bool>("isSearchedFor");

    const auto row = [](const char* name, const QStringList& models, double seconds, bool search) {
        QTest::newRow(name) << models << seconds << search;
    };
    row("0x0901", {"0x0901"}, 9.5, false);
    row("0x0c01", {"0x0c01"}, 27.5, true);
    row("0x0e01", {"0x0e01"}, 62.0, true);
    row("any other model", {"0x0a01"}, 30.0, false);
    row("no model", {}, 30.0, false);
    row("0x0901 decides before all others", {"0x0e01", "0x0c01", "0x0901"}, 9.5, true);
    row("0x0c01 decides before 0x0e01", {"0x0e01", "0x0c01"}, 27.5, true);
    row("a known model among others", {"0x0a01", "0x0e01", "0x0b01"}, 62.0, true);
    row("another case is another model", {"0x0C01", "0X0E01"}, 30.0, false);
    row("a part of a code is another model", {"0x0c01x", "0x0e0"}, 30.0, false);
}

void TestCamUpdateData::knowsTheTimeOfTheLastCommand()
{
    QFETCH(QStringList, models);
    CamUpdateData file{QString()};
    listCamModels(file) = models;
    QTEST(file.getDurationLastCmdSec(), "seconds");
    QTEST(file.isNeedsSearchHardware(), "isSearchedFor");
}

void TestCamUpdateData::canBeGivenAnotherFileName()
{
    CamUpdateData file(m_folder.write("a", cameraUpdateBytes(sampleFile())));
    file.setFilename("b");
    QCOMPARE(file.getFilename(), QStringLiteral("b"));
    QCOMPARE(file.getNewVer(), VersionInfo(1, 4, 65535));
}

ZAN_TEST_MAIN(TestCamUpdateData)

#include "tst_camupdatedata.moc"
