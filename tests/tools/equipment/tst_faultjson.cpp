#include <simulatorfixtures.h>

#include <faultjson.h>

#include <testmain.h>

#include <QJsonDocument>

namespace {

const QStringList devices = {"zan-master", "zan-left", "c01"};

Fault read(const QByteArray& json, QString* error)
{
    return faultFromJson(CheckedObject(QJsonDocument::fromJson(json).object(), "f.json", error),
                         devices);
}

void compare(const Fault& actual, const Fault& expected)
{
    QCOMPARE(actual.mode, expected.mode);
    QCOMPARE(actual.device, expected.device);
    QCOMPARE(actual.request, expected.request);
    QCOMPARE(actual.record, expected.record);
    QCOMPARE(actual.seed, expected.seed);
    QCOMPARE(actual.times, expected.times);
    QCOMPARE(actual.delayMs, expected.delayMs);
}

} // namespace

class TestFaultJson : public QObject
{
    Q_OBJECT

private slots:
    void modeAloneTakesTheDefaults()
    {
        QString error;
        const Fault fault = read(R"({"mode": "answer-late"})", &error);
        QVERIFY2(error.isEmpty(), qPrintable(error));
        Fault expected;
        expected.mode = FaultMode::AnswerLate;
        compare(fault, expected);
    }

    void everyModeIsReadAsItIsWritten_data()
    {
        QTest::addColumn<FaultMode>("mode");
        for (const FaultModeInfo& info : faultModes())
            QTest::newRow(qPrintable(info.name)) << info.mode;
    }

    void everyModeIsReadAsItIsWritten()
    {
        QFETCH(const FaultMode, mode);
        for (const bool full : {false, true}) {
            Fault fault;
            fault.mode = mode;
            if (full) {
                fault.device = "zan-left";
                fault.request = "system \xc3\xa4";
                fault.record = 1000000;
                fault.seed = 0xFFFFFFFF;
                fault.times = 0;
                fault.delayMs = maxDurationMs;
            }
            QString error;
            const Fault again = read(QJsonDocument(faultToJson(fault)).toJson(), &error);
            QVERIFY2(error.isEmpty(), qPrintable(error));
            compare(again, fault);
        }
    }

    void wrongFaultIsExplained_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<QString>("reason");
        const auto row = [](const char* name, const QByteArray& json, const QString& reason) {
            QTest::newRow(name) << json << reason;
        };
        row("no mode", "{}", "f.json: mode: missing");
        row("device that is not there", R"({"mode": "lose-power", "device": "zan-right"})",
            "f.json: device: no such controller or camera");
        row("record 0", R"({"mode": "lose-power", "record": 0})",
            "f.json: record: must be a whole number from 1 to 1000000");
        row("seed below all", R"({"mode": "lose-power", "seed": -1})",
            "f.json: seed: must be a whole number from 0 to 4294967295");
        row("seed above all", R"({"mode": "lose-power", "seed": 4294967296})",
            "f.json: seed: must be a whole number from 0 to 4294967295");
        row("times below all", R"({"mode": "lose-power", "times": -1})",
            "f.json: times: must be a whole number from 0 to 1000000");
        row("delay of more than a day", R"({"mode": "answer-late", "delayMs": 86400001})",
            "f.json: delayMs: must be a whole number from 0 to 86400000");
        row("unknown key", R"({"mode": "lose-power", "moment": 1})", "f.json: moment: unknown key");
    }

    void wrongFaultIsExplained()
    {
        QFETCH(const QByteArray, json);
        QString error;
        read(json, &error);
        QTEST(error, "reason");
    }

    void unknownModeIsToldWithThoseThatThereAre()
    {
        QString error;
        read(R"({"mode": "explode"})", &error);
        for (const FaultModeInfo& info : faultModes())
            QVERIFY2(error.contains(info.name), qPrintable(error));
    }
};

ZAN_TEST_MAIN(TestFaultJson)
#include "tst_faultjson.moc"
