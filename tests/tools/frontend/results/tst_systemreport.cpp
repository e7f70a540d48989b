#include <simulatorfixtures.h>

#include <hostchannel.h>
#include <simulatorlink.h>
#include <systemreport.h>

#include <testmain.h>

namespace {

/// A system that is asked as fast as it can be, and the texts that it was asked.
struct Line
{
    explicit Line(const Scenario& scenario)
        : system(scenario), link(system, SimulatorLink::Pace::Fast), channel(link), queries(channel)
    {
    }

    SimulatedSystem system;
    SimulatorLink link;
    HostChannel channel;
    ChannelQueries queries;
};

QStringList textsOf(const SystemReport& report)
{
    QStringList texts;
    for (const SystemReport::Controller& it : report.controllers)
        texts +=
            QStringLiteral("%1 %2 %3 %4").arg(it.hostName, QString::number(it.model), it.pt, it.ct);
    for (const SystemReport::Camera& it : report.cameras)
        texts += it.name + ": " + it.version;
    return texts;
}

} // namespace

class TestSystemReport : public QObject
{
    Q_OBJECT

private slots:
    void devicesAreAskedOverTheChannel_data();
    void devicesAreAskedOverTheChannel();
    void preReleaseTextIsKeptAndTheDateIsNot();
    void lettersBeyondAsciiComeThrough();
    void missingDevicesAreLeftOut();
    void systemThatDoesNotAnswerIsNotAskedMore();
    void versionsGoByName();
};

void TestSystemReport::devicesAreAskedOverTheChannel_data()
{
    QTest::addColumn<QString>("scenario");
    QTest::addColumn<QStringList>("texts");
    QTest::newRow("a cascade") << "cascade"
                               << QStringList{"zan-master 2 v3.1.0 v1.2", "zan-left 2 v3.1.0 v1.2",
                                              "zan-right 2 v3.1.0 v1.2"};
    QTest::newRow("a slave that is not available")
        << "slave-missing" << QStringList{"zan-master 2 v3.1.0 v1.2", "zan-left 2 v3.1.0 v1.2"};
    QTest::newRow("a protocol without slaves")
        << "protocol-1.6" << QStringList{"zan-master 2 v3.1.0 v1.2"};
    QTest::newRow("cameras") << "cameras"
                             << QStringList{"zan-master 2 v3.3.0 v1.4",
                                            "Tracking camera T9 C-4101: v1.3.0",
                                            "Tracking camera T9 C-4102: v1.3.0",
                                            "Tracking camera T12 C-5201: v2.0.0",
                                            "Tracking camera T14 C-6301: v1.5.0"};
}

void TestSystemReport::devicesAreAskedOverTheChannel()
{
    QFETCH(const QString, scenario);
    Line line(shippedScenario(scenario));
    const SystemReport report = SystemReport::ask(line.queries);
    QVERIFY(report.isReachable);
    QTEST(textsOf(report), "texts");
}

void TestSystemReport::preReleaseTextIsKeptAndTheDateIsNot()
{
    Scenario scenario = shippedScenario("cameras");
    scenario.controllers[0].pt = "v3.3.0-rc.1 2025-09-01";
    scenario.cameras[0].version = "v1.3.0-beta.2";
    Line line(scenario);
    const SystemReport report = SystemReport::ask(line.queries);
    QCOMPARE(report.controllers.constFirst().pt, QString("v3.3.0-rc.1"));
    QCOMPARE(report.cameras.constFirst().version, QString("v1.3.0-beta.2"));
}

void TestSystemReport::lettersBeyondAsciiComeThrough()
{
    Scenario scenario = shippedScenario("cameras");
    scenario.controllers[0].hostName = "zan-Größe-Ω";
    scenario.cameras = {{"0x0901", "Nö-1", "v1.3.0", "Kamera Köln"}};
    Line line(scenario);
    QCOMPARE(textsOf(SystemReport::ask(line.queries)),
             (QStringList{"zan-Größe-Ω 2 v3.3.0 v1.4", "Kamera Köln Nö-1: v1.3.0"}));
}

void TestSystemReport::missingDevicesAreLeftOut()
{
    Line line(shippedScenario("cameras"));
    line.system.powerCycleCamera(1);
    QCOMPARE(
        textsOf(SystemReport::ask(line.queries)),
        (QStringList{"zan-master 2 v3.3.0 v1.4", "Tracking camera T9 C-4101: v1.3.0",
                     "Tracking camera T12 C-5201: v2.0.0", "Tracking camera T14 C-6301: v1.5.0"}));
}

void TestSystemReport::systemThatDoesNotAnswerIsNotAskedMore()
{
    /// Counts what it is asked.
    class Silence : public Queries
    {
    public:
        std::optional<QString> text(const QByteArray& key) override
        {
            asked += key;
            return std::nullopt;
        }
        std::optional<int> number(const QByteArray& key) override
        {
            asked += key;
            return std::nullopt;
        }
        QByteArrayList asked;
    } silence;
    const SystemReport report = SystemReport::ask(silence);
    QVERIFY(!report.isReachable);
    QVERIFY(report.controllers.isEmpty());
    QCOMPARE(silence.asked, QByteArrayList{"system hostname"});
}

void TestSystemReport::versionsGoByName()
{
    SystemReport report;
    report.controllers = {{"left", 2, "v3.1.0", "v1.2"},
                          {"twin", 2, "v3.1.0", "v1.2"},
                          {"twin", 2, "v3.2.0", "v1.2"},
                          {"mute", 2, "", ""}};
    report.cameras = {{"left", "v9.0.0"}};
    QCOMPARE(report.versions(Part::TrackingSoftware, "left"), QStringList{"v3.1.0"});
    QCOMPARE(report.versions(Part::ControllerFirmware, "left"), QStringList{"v1.2"});
    QCOMPARE(report.versions(Part::CameraFirmware, "left"), QStringList{"v9.0.0"});
    QCOMPARE(report.versions(Part::TrackingSoftware, "twin"), (QStringList{"v3.1.0", "v3.2.0"}));
    QCOMPARE(report.versions(Part::ControllerFirmware, "twin"), QStringList{"v1.2"});
    QCOMPARE(report.versions(Part::TrackingSoftware, "mute"), QStringList());
    QCOMPARE(report.versions(Part::TrackingSoftware, "nobody"), QStringList());
}

ZAN_TEST_MAIN(TestSystemReport)
#include "tst_systemreport.moc"
