#include <devicesbehind.h>
#include <releasecatalogue.h>

#include <simulatorfixtures.h>

#include <imagewriter.h>

#include <fixturefiles.h>
#include <testmain.h>

namespace {

RecordBlock blockOf(const QByteArray& payload)
{
    RecordBlock block;
    block.records = splitIntoRecords(payload);
    return block;
}

ControllerImageBlock controllerBlock(BlockType type, const QByteArray& payload)
{
    ControllerImageBlock block;
    static_cast<RecordBlock&>(block) = blockOf(payload);
    block.type = type;
    return block;
}

QByteArray controllerFile(VersionInfo pt, VersionInfo ct, const QString& appendix = {},
                          int family = 0)
{
    ControllerImage image;
    image.modelFamily = family;
    image.release = pt;
    image.newPt = pt;
    image.newCt = ct;
    image.blocks = {controllerBlock(FirmwareBlock, trackingSoftware(pt, appendix)),
                    controllerBlock(SystemBlock, controllerFirmware(ct))};
    return controllerImageBytes(image);
}

QByteArray cameraFile(quint16 model, VersionInfo version)
{
    CameraUpdateFile file;
    file.newVer = version;
    file.models = {model};
    CameraImage image;
    static_cast<RecordBlock&>(image) = blockOf(cameraFirmware(version));
    file.images = {image};
    return cameraUpdateBytes(file);
}

/// Two controllers and a camera with these versions.
Scenario scenarioWith(const QString& pt, const QString& ct, const QString& camera)
{
    Scenario scenario = shippedScenario(QStringLiteral("cascade"));
    scenario.controllers.resize(2);
    for (ScenarioController& controller : scenario.controllers) {
        controller.pt = pt;
        controller.ct = ct;
    }
    scenario.controllers[0].hostName = QStringLiteral("master");
    scenario.controllers[1].hostName = QStringLiteral("slave");
    scenario.cameras = {{"0x0901", "C-1", camera, "Camera"}};
    return scenario;
}

FixtureFolder& delivered()
{
    static FixtureFolder folder;
    folder.write("old.vx3img", controllerFile({3, 1, 0}, {1, 3}));
    folder.write("beta.vx3img", controllerFile({3, 2, 0}, {1, 2}, "-beta.2"));
    folder.write("final.vx3img", controllerFile({3, 2, 0}, {1, 2}));
    folder.write("other-family.vx3img", controllerFile({9, 0, 0}, {9, 0}, {}, briarscopeFamily));
    folder.write("camera.VX2znimg", cameraFile(0x0901, {1, 4, 0}));
    folder.write("newer-for-others.VX2znimg", cameraFile(0x0c01, {7, 0, 0}));
    folder.write("notes.txt", "no update file");
    return folder;
}

} // namespace

class TestDevicesBehind : public QObject
{
    Q_OBJECT

private slots:
    void devicesBehindAreNamed_data()
    {
        QTest::addColumn<QString>("pt");
        QTest::addColumn<QString>("ct");
        QTest::addColumn<QString>("camera");
        QTest::addColumn<QStringList>("missing");
        QTest::newRow("all at the newest") << "v3.2.0 2025-01-01"
                                           << "v1.3"
                                           << "v1.4.0" << QStringList{};
        QTest::newRow("all beyond the newest") << "v3.3.0-rc.1 2025-01-01"
                                               << "v1.10"
                                               << "v2.0.0" << QStringList{};
        QTest::newRow("all behind")
            << "v3.1.9 2025-01-01"
            << "v1.2"
            << "v1.3.9"
            << QStringList{"master runs Pt v3.1.9 and not v3.2.0",
                           "master runs Ct v1.2 and not v1.3",
                           "slave runs Pt v3.1.9 and not v3.2.0", "slave runs Ct v1.2 and not v1.3",
                           "camera c01 (C-1) runs firmware v1.3.9 and not v1.4.0"};
        QTest::newRow("pre-releases of the newest")
            << "v3.2.0-beta.2 2025-01-01"
            << "v1.3"
            << "v1.4.0-rc.1"
            << QStringList{"master runs Pt v3.2.0-beta.2 and not v3.2.0",
                           "slave runs Pt v3.2.0-beta.2 and not v3.2.0",
                           "camera c01 (C-1) runs firmware v1.4.0-rc.1 and not v1.4.0"};
    }

    void devicesBehindAreNamed()
    {
        QFETCH(const QString, pt);
        QFETCH(const QString, ct);
        QFETCH(const QString, camera);
        const SimulatedSystem system(scenarioWith(pt, ct, camera));
        QTEST(devicesBehind(ReleaseCatalogue::readAll(delivered().path()), system), "missing");
    }

    void controllersThatAreNotThereDoNotCount()
    {
        Scenario scenario = scenarioWith("v3.2.0", "v1.3", "v1.4.0");
        scenario.controllers[1].pt = QStringLiteral("v2.0.0");
        scenario.controllers[1].available = false;
        const SimulatedSystem system(scenario);
        QCOMPARE(devicesBehind(ReleaseCatalogue::readAll(delivered().path()), system),
                 QStringList{});
    }

    void otherFamilyHasItsOwnReleases()
    {
        Scenario scenario = scenarioWith("v3.2.0", "v1.3", "v1.4.0");
        scenario.controllers[1].model = briarscopeFamily;
        const SimulatedSystem system(scenario);
        QCOMPARE(devicesBehind(ReleaseCatalogue::readAll(delivered().path()), system),
                 (QStringList{"slave runs Pt v3.2.0 and not v9.0.0",
                              "slave runs Ct v1.3 and not v9.0"}));
    }

    void cameraMustBeFoundAgain()
    {
        SimulatedSystem system(scenarioWith("v3.2.0", "v1.3", "v1.4.0"));
        system.powerCycleCamera(0);
        const ReleaseCatalogue newest = ReleaseCatalogue::readAll(delivered().path());
        QCOMPARE(devicesBehind(newest, system),
                 QStringList{"camera c01 (C-1) is not known to the controller"});
        system.searchHardware();
        QCOMPARE(devicesBehind(newest, system), QStringList{});
    }

    void withoutUpdateFilesNothingIsMissing()
    {
        const FixtureFolder empty;
        const SimulatedSystem system(scenarioWith("v1.0.0", "v1.0", "v1.0.0"));
        QCOMPARE(devicesBehind(ReleaseCatalogue::readAll(empty.path()), system), QStringList{});
        QCOMPARE(devicesBehind(ReleaseCatalogue::readAll("/nowhere"), system), QStringList{});
    }
};

ZAN_TEST_MAIN(TestDevicesBehind)
#include "tst_devicesbehind.moc"
