#include <simulatorfixtures.h>

#include <equipmentlanguage.h>
#include <equipmentlines.h>

#include <testmain.h>

#include <QJsonDocument>
#include <QJsonObject>

namespace {

QJsonObject objectIn(const QByteArray& json)
{
    return QJsonDocument::fromJson(json).object();
}

template <typename Device>
QStringList activitiesIn(const QVector<Device>& devices)
{
    QStringList texts;
    for (const Device& device : devices)
        texts.append(QStringLiteral("%1 %2/%3")
                         .arg(device.activity)
                         .arg(device.recordsReceived)
                         .arg(device.recordsExpected));
    return texts;
}

// Everything that can be seen of a system, as one text.
QString seen(const QVector<ControllerState>& controllers, const QVector<CameraState>& cameras)
{
    QStringList texts;
    for (const ControllerState& it : controllers)
        texts += QStringList{it.hostName,
                             it.address,
                             it.pt,
                             it.ct,
                             it.stagedPt,
                             it.stagedCt,
                             it.board,
                             it.modelDescription,
                             QString::number(it.serial),
                             QString::number(it.model),
                             it.slave ? "slave" : "master",
                             it.available ? "there" : "missing",
                             it.rebooting ? "rebooting" : "up"}
                     .join('|');
    for (const CameraState& it : cameras)
        texts += QStringList{it.model,
                             it.serial,
                             it.description,
                             it.version,
                             it.stagedVersion,
                             it.running ? "runs" : "dead",
                             it.found ? "found" : "lost"}
                     .join('|');
    return (texts + activitiesIn(controllers) + activitiesIn(cameras)).join('\n');
}

QByteArray armLine(const Fault& fault)
{
    return commandLine({EquipmentCommand::Kind::ArmFault, 0, fault});
}

void compareWithItsState(const SimulatedSystem& system)
{
    QString error;
    const std::optional<EquipmentReport> report =
        reportFromJson(equipmentToJson(system), system.scenario(), &error);
    QVERIFY2(report, qPrintable(error));
    const EquipmentState& state = report->state;
    QCOMPARE(seen(state.controllers, state.cameras), seen(system.controllers(), system.cameras()));
    QCOMPARE(state.power, system.power());
    QCOMPARE(state.measurement, system.measurement());
    QCOMPARE(report->msUntilReachable, system.msUntilReachable());
    QCOMPARE(state.updatedBy, system.state().updatedBy);
    const QVector<Fault>& faults = state.faults.armed();
    QCOMPARE(faults.size(), system.armedFaults().size());
    for (int i = 0; i < faults.size(); ++i)
        QCOMPARE(armLine(faults.at(i)), armLine(system.armedFaults().at(i)));
}

} // namespace

class TestEquipmentLines : public QObject
{
    Q_OBJECT

private slots:
    void scenarioIsTold()
    {
        SimulatedSite equipment("cascade");
        const EquipmentAnswer reply = answerEquipmentLine(equipment.system, "scenario");
        QVERIFY(reply.ok && !reply.watches);
        QVERIFY(!reply.text.contains('\n'));
        QCOMPARE(objectIn(reply.text).value("name").toString(), QString("cascade"));
        QCOMPARE(objectIn(reply.text).value("scenario").toObject(),
                 objectIn(equipment.system.scenario().source));
    }

    void identityIsThatOfTheScenario()
    {
        SimulatedSite cascade("cascade");
        SimulatedSite again("cascade");
        again.system.setMeasuring(true);
        SimulatedSite single("single");
        const EquipmentAnswer reply = answerEquipmentLine(cascade.system, "identity");
        QVERIFY(reply.ok && !reply.watches);
        QCOMPARE(reply.text, systemIdentity(answerEquipmentLine(cascade.system, "scenario").text));
        QCOMPARE(answerEquipmentLine(again.system, "identity").text, reply.text);
        QVERIFY(answerEquipmentLine(single.system, "identity").text != reply.text);
    }

    void stateIsToldOnceOrFromNowOn()
    {
        SimulatedSite equipment("cascade");
        const EquipmentAnswer once = answerEquipmentLine(equipment.system, "state");
        const EquipmentAnswer always = answerEquipmentLine(equipment.system, "watch");
        QVERIFY(once.ok && !once.watches);
        QVERIFY(always.ok && always.watches);
        QCOMPARE(once.text, equipmentToJson(equipment.system));
        QCOMPARE(always.text, once.text);
        QVERIFY(!once.text.contains('\n'));
    }

    void powerIsToldAsItIsByTheClock()
    {
        SimulatedSite equipment("cascade");
        const auto power = [&] {
            return answerEquipmentLine(equipment.system, "power").text;
        };
        QCOMPARE(power(), QByteArray("on"));
        equipment.system.restart();
        QCOMPARE(power(), QByteArray("restarting"));
        equipment.nowMs += equipment.system.scenario().timing.bootMs;
        QCOMPARE(power(), QByteArray("on"));
        equipment.system.shutDown();
        QCOMPARE(power(), QByteArray("off"));
        QVERIFY(answerEquipmentLine(equipment.system, "power-cycle").ok);
        QCOMPARE(power(), QByteArray("restarting"));
    }

    void hungSystemIsToldAsSuch()
    {
        SimulatedSite equipment("single");
        Fault fault;
        fault.mode = FaultMode::NeverComeBack;
        QVERIFY(answerEquipmentLine(equipment.system, armLine(fault)).ok);
        equipment.system.restart();
        QCOMPARE(answerEquipmentLine(equipment.system, "power").text, QByteArray("hung"));
    }

    void handsReachTheSystem()
    {
        SimulatedSite equipment("cameras");
        QVERIFY(answerEquipmentLine(equipment.system,
                                    commandLine({EquipmentCommand::Kind::StartMeasurement}))
                    .ok);
        QCOMPARE(equipment.system.measurement(), Measurement::Running);
        QVERIFY(answerEquipmentLine(equipment.system,
                                    commandLine({EquipmentCommand::Kind::StopMeasurement}))
                    .ok);
        QCOMPARE(equipment.system.measurement(), Measurement::Off);

        QVERIFY(answerEquipmentLine(equipment.system,
                                    commandLine({EquipmentCommand::Kind::PowerCycleCamera, 1}))
                    .ok);
        QVERIFY(equipment.system.cameras().at(0).found);
        QVERIFY(!equipment.system.cameras().at(1).found);

        Fault fault;
        fault.mode = FaultMode::LosePower;
        fault.device = "c01";
        fault.record = 12;
        const int armed = equipment.system.armedFaults().size();
        QVERIFY(answerEquipmentLine(equipment.system, armLine(fault)).ok);
        QCOMPARE(equipment.system.armedFaults().size(), armed + 1);
        QCOMPARE(armLine(equipment.system.armedFaults().constLast()), armLine(fault));
        QVERIFY(answerEquipmentLine(equipment.system, "disarm").ok);
        QVERIFY(equipment.system.armedFaults().isEmpty());
    }

    void faultsThatCanBeArmedAreLimited()
    {
        SimulatedSite equipment("single");
        for (int i = 0; i < 100; ++i)
            QVERIFY(answerEquipmentLine(equipment.system, armLine(Fault())).ok);
        const EquipmentAnswer reply = answerEquipmentLine(equipment.system, armLine(Fault()));
        QVERIFY(!reply.ok);
        QCOMPARE(reply.text, QByteArray("100 faults are armed already; disarm takes them back"));
        QCOMPARE(equipment.system.armedFaults().size(), 100);
    }

    void peerIsKnownByItsName_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QString>("name");
        QTest::newRow("as it says")
            << QByteArray("introduce ann@console-3, process 4711") << "ann@console-3, process 4711";
        QTest::newRow("in UTF-8") << QByteArray("introduce J\xC3\xBCrgen") << "Jürgen";
        QTest::newRow("without what would break a reply")
            << QByteArray("introduce \"ann\"\t at  home") << "ann at home";
        QTest::newRow("a long one is cut")
            << "introduce " + QByteArray(500, 'x') << QString(100, 'x');
    }

    void peerIsKnownByItsName()
    {
        QFETCH(const QByteArray, line);
        SimulatedSite equipment("single");
        const EquipmentAnswer reply = answerEquipmentLine(equipment.system, line);
        QVERIFY(reply.ok);
        QTEST(reply.name, "name");
        QCOMPARE(answerEquipmentLine(equipment.system, "power").name, QString());
    }

    void whatCannotBeDoneIsExplained_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QString>("reason");
        const auto row = [](const char* name, const QByteArray& line, const QString& reason) {
            QTest::newRow(name) << line << reason;
        };
        const QString known =
            "the bench knows: scenario, state, power, watch, identity, power-cycle, "
            "power-cycle-camera, measure, arm, disarm, introduce";
        row("nothing", "", known);
        row("unknown word", "dance", known);
        row("word with a zero byte behind it", QByteArray("state\0", 6), known);
        row("introduction without a name", "introduce \" \"", "a name is expected");
        row("camera that is not there", "power-cycle-camera c99", "no such camera");
        row("camera without its name", "power-cycle-camera", "no such camera");
        row("camera by its bare number", "power-cycle-camera 1", "no such camera");
        row("measurement without a word", "measure", "on or off is expected");
        row("measurement with another word", "measure maybe", "on or off is expected");
        row("fault of an unknown device", R"(arm {"mode": "lose-power", "device": "nobody"})",
            "fault: device: no such controller or camera");
        row("fault without a mode", "arm {}", "fault: mode: missing");
        row("fault that is a list", "arm []", "fault: line 1: must be an object");
    }

    void whatCannotBeDoneIsExplained()
    {
        QFETCH(const QByteArray, line);
        SimulatedSite equipment("cameras");
        const QByteArray before = equipmentToJson(equipment.system);
        const EquipmentAnswer reply = answerEquipmentLine(equipment.system, line);
        QVERIFY(!reply.ok);
        QVERIFY(!reply.watches);
        QTEST(QString::fromUtf8(reply.text), "reason");
        QCOMPARE(equipmentToJson(equipment.system), before);
    }

    void faultThatIsNoJsonIsRefused()
    {
        SimulatedSite equipment("single");
        for (const QByteArray& text :
             {QByteArray("arm"), QByteArray("arm {"), QByteArray("arm \0", 5)}) {
            const EquipmentAnswer reply = answerEquipmentLine(equipment.system, text);
            QVERIFY(!reply.ok);
            QVERIFY2(reply.text.startsWith("fault: line 1"), reply.text.constData());
        }
    }

    void stateComesBackAsItWas_data()
    {
        QTest::addColumn<QString>("scenario");
        for (const QString& name : Scenario::shipped())
            QTest::newRow(qPrintable(name)) << name;
    }

    void stateComesBackAsItWas()
    {
        QFETCH(const QString, scenario);
        SimulatedSite equipment(scenario);
        compareWithItsState(equipment.system);
        equipment.set("system update 24 1 " + recordTexts(trackingSoftware({9, 9, 9})).at(0));
        compareWithItsState(equipment.system);
        equipment.send("system update", trackingSoftware({9, 9, 9}, "-beta.1"));
        if (!equipment.system.cameras().isEmpty())
            equipment.sendToCamera("c01", cameraFirmware({9, 9, 9}));
        compareWithItsState(equipment.system);
        equipment.system.restart();
        equipment.nowMs += 1000;
        compareWithItsState(equipment.system);
        equipment.bringUp();
        compareWithItsState(equipment.system);
        equipment.system.powerCycleCamera(0);
        equipment.system.setMeasuring(true);
        equipment.system.setUpdatedBy("ann@console");
        compareWithItsState(equipment.system);
        equipment.system.shutDown();
        compareWithItsState(equipment.system);
    }

    void stateBeforeTheFirstLookIsTheScenarios_data() { stateComesBackAsItWas_data(); }

    void stateBeforeTheFirstLookIsTheScenarios()
    {
        QFETCH(const QString, scenario);
        const EquipmentState state = untouchedEquipment(shippedScenario(scenario));
        const SimulatedSite equipment(scenario);
        QCOMPARE(state.controllers.size(), equipment.system.controllers().size());
        for (int i = 0; i < state.controllers.size(); ++i) {
            QCOMPARE(state.controllers.at(i).hostName, equipment.controller(i).hostName);
            QCOMPARE(state.controllers.at(i).pt, equipment.controller(i).pt);
            QCOMPARE(state.controllers.at(i).slave, i > 0);
        }
        QCOMPARE(state.cameras.size(), equipment.system.cameras().size());
    }

    void damagedStateIsRefused_data()
    {
        QTest::addColumn<QByteArray>("from");
        QTest::addColumn<QByteArray>("to");
        QTest::addColumn<QString>("reason");
        const auto row = [](const char* name, const QByteArray& from, const QByteArray& to,
                            const QString& reason) {
            QTest::newRow(name) << from << to << reason;
        };
        row("another format", "state-1", "state-2",
            R"(state: memory.format: must be one of "simulated-system-state-1")");
        row("another scenario", R"("scenario":"single")", R"("scenario":"cascade")",
            "state: memory.scenario: must be \"single\" as in the scenario");
        row("another device", R"("hostName":"zan-master")", R"("hostName":"mallory")",
            "state: memory.controllers[0].hostName: must be \"zan-master\" as in the scenario");
        row("a time that is none", R"("msUntilReachable":0)", R"("msUntilReachable":-2)",
            "state: msUntilReachable: must be a whole number from -1 to 86400000");
        row("no faults", R"("faults":[])", R"("faults":{})", "state: faults: must be a list");
        row("a fault that is none", R"("faults":[])", R"("faults":[{}])",
            "state: faults[0].mode: missing");
        row("a key too many", R"("faults":[])", R"("faults":[],"x":1)", "state: x: unknown key");
        row("too few devices", R"("cameras":[],"controllers":[{)",
            R"("cameras":[],"controllers":[],"more":[{)",
            "state: controllers: must have 1 entries");
        row("a count of records that is none", R"("received":0)", R"("received":-1)",
            "state: controllers[0].received: must be a whole number from 0 to 1000000");
    }

    void damagedStateIsRefused()
    {
        QFETCH(const QByteArray, from);
        QFETCH(const QByteArray, to);
        const SimulatedSite equipment("single");
        QByteArray json = equipmentToJson(equipment.system);
        QVERIFY2(json.contains(from), json.constData());
        json.replace(json.indexOf(from), from.size(), to);
        QString error;
        QVERIFY(!reportFromJson(json, equipment.system.scenario(), &error));
        QTEST(error, "reason");
    }

    void everyPrefixOfAStateIsRefused()
    {
        const SimulatedSite equipment("single");
        const QByteArray json = equipmentToJson(equipment.system);
        for (int size = 0; size < json.size(); ++size) {
            QString error;
            QVERIFY(!reportFromJson(json.left(size), equipment.system.scenario(), &error));
            QVERIFY2(error.startsWith("state: "), qPrintable(error));
        }
    }
};

ZAN_TEST_MAIN(TestEquipmentLines)
#include "tst_equipmentlines.moc"
