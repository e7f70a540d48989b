#include <stepsback.h>

#include <testmain.h>

namespace {

SystemReport reportOf(const QVector<SystemReport::Controller>& controllers,
                      const QVector<SystemReport::Camera>& cameras = {})
{
    SystemReport report;
    report.isReachable = true;
    report.controllers = controllers;
    report.cameras = cameras;
    return report;
}

PlannedUpdate stepTo(const QString& planned, Part part = Part::TrackingSoftware,
                     const QString& device = "master")
{
    PlannedUpdate step;
    step.device = device;
    step.part = part;
    step.planned = planned;
    return step;
}

QStringList textsOf(const QVector<StepBack>& steps)
{
    QStringList texts;
    for (const StepBack& step : steps)
        texts += stepBackText(step);
    return texts;
}

} // namespace

class TestStepsBack : public QObject
{
    Q_OBJECT

private slots:
    void versionsAreCompared_data()
    {
        QTest::addColumn<QString>("runs");
        QTest::addColumn<QString>("planned");
        QTest::addColumn<bool>("isBack");
        QTest::newRow("newer") << "v3.1.0"
                               << "v3.3.0" << false;
        QTest::newRow("the same once more") << "v3.3.0"
                                            << "v3.3.0" << false;
        QTest::newRow("older in the last number") << "v3.3.1"
                                                  << "v3.3.0" << true;
        QTest::newRow("older in the first number, newer in the others") << "v4.0.0"
                                                                        << "v3.9.9" << true;
        QTest::newRow("a part that is left out counts as 0") << "v1.4.0"
                                                             << "v1.4" << false;
        QTest::newRow("a part that is left out on the other side") << "v1.4"
                                                                   << "v1.4.0" << false;
        QTest::newRow("ten is more than nine") << "v1.10"
                                               << "v1.9" << true;
        QTest::newRow("a release over its own pre-release") << "v3.3.0-rc.1"
                                                            << "v3.3.0" << false;
        QTest::newRow("a pre-release over its release") << "v3.3.0"
                                                        << "v3.3.0-rc.1" << true;
        QTest::newRow("a pre-release over another one") << "v3.3.0-rc.2"
                                                        << "v3.3.0-rc.1" << false;
    }

    void versionsAreCompared()
    {
        QFETCH(const QString, runs);
        QFETCH(const QString, planned);
        QFETCH(const bool, isBack);
        const SystemReport report = reportOf({{"master", 2, runs, "v1.4"}});
        const QString text =
            QString("Tracking software of master: runs %1, would get %2").arg(runs, planned);
        QCOMPARE(textsOf(stepsBack({stepTo(planned)}, report, SystemReport())),
                 isBack ? QStringList{text} : QStringList());
    }

    void lowestStepOfAChainIsTold()
    {
        const SystemReport report = reportOf({{"master", 2, "v3.3.0", "v1.4"}});
        QCOMPARE(textsOf(stepsBack({stepTo("v3.1.0"), stepTo("v1.2", Part::ControllerFirmware),
                                    stepTo("v3.0.0"), stepTo("v3.3.0")},
                                   report, SystemReport())),
                 (QStringList{"Tracking software of master: runs v3.3.0, would get v3.0.0",
                              "Controller firmware of master: runs v1.4, would get v1.2"}));
    }

    void whatWasKnownCountsWhereNothingIsAnswered()
    {
        const SystemReport now = reportOf({{"master", 2, "v3.3.0", ""}}, {{"T9 C-1", ""}});
        const SystemReport known =
            reportOf({{"master", 2, "v3.1.0", "v1.4"}}, {{"T9 C-1", "v1.3.0"}});
        const QVector<PlannedUpdate> steps{stepTo("v3.2.0"),
                                           stepTo("v1.2", Part::ControllerFirmware),
                                           stepTo("v1.4.0", Part::CameraFirmware, "T9 C-1")};
        QCOMPARE(textsOf(stepsBack(steps, now, known)),
                 (QStringList{"Tracking software of master: runs v3.3.0, would get v3.2.0",
                              "Controller firmware of master: runs v1.4, would get v1.2"}));
    }

    void whatNobodyKnowsIsTold()
    {
        const SystemReport now = reportOf({{"master", 2, "v3.3.0", ""}});
        QCOMPARE(textsOf(stepsBack({stepTo("v1.2", Part::ControllerFirmware),
                                    stepTo("v1.4.0", Part::CameraFirmware, "")},
                                   now, SystemReport())),
                 (QStringList{"Controller firmware of master: does not tell what it runs, would "
                              "get v1.2",
                              "Camera firmware of a device without a name: does not tell what it "
                              "runs, would get v1.4.0"}));
    }

    void ofDevicesWithOneNameTheLowestCounts()
    {
        const SystemReport now = reportOf({}, {{"T9", "v1.5.0"}, {"T9", "v1.3.0"}});
        QCOMPARE(
            stepsBack({stepTo("v1.4.0", Part::CameraFirmware, "T9")}, now, SystemReport()).size(),
            0);
        QCOMPARE(
            textsOf(stepsBack({stepTo("v1.2.0", Part::CameraFirmware, "T9")}, now, SystemReport())),
            QStringList{"Camera firmware of T9: runs v1.3.0, would get v1.2.0"});
    }
};

ZAN_TEST_MAIN(TestStepsBack)
#include "tst_stepsback.moc"
