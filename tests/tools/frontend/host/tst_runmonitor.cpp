#include "scriptedlink.h"

#include <hostchannel.h>
#include <runmonitor.h>

#include <testmain.h>

#include <QEventLoop>

Q_DECLARE_METATYPE(Operation)
Q_DECLARE_METATYPE(std::optional<Reply>)

namespace {

Reply replyOf(const QByteArray& text, bool ok = true)
{
    Reply reply;
    reply.ok = ok;
    reply.text = text;
    return reply;
}

Reply ok()
{
    return replyOf("vornix2 ok");
}

/// A monitor, and what it told, in order.
class Told
{
public:
    Told()
    {
        QObject::connect(&monitor, &RunMonitor::began, [this] { lines += "began"; });
        QObject::connect(&monitor, &RunMonitor::ended, [this] { lines += "ended"; });
        QObject::connect(&monitor, &RunMonitor::heldUp, [this] { lines += "held up"; });
        QObject::connect(&monitor, &RunMonitor::progressed, [this](const RunStep& step) {
            lines += QStringLiteral("%1. %2: %3 of %4, %5 %%6")
                         .arg(QString::number(step.number), step.text())
                         .arg(step.taken)
                         .arg(step.records)
                         .arg(step.percent())
                         .arg(step.isAwaited ? ", awaited" : "");
        });
        QObject::connect(&monitor, &RunMonitor::failed, [this](const RunFailure& failure) {
            lines += "failed: " + failure.text();
        });
    }

    void query(const QByteArray& key, const QByteArray& value)
    {
        exchange(Operation::GetString, key, replyOf(value));
    }
    void set(const QByteArray& text, const std::optional<Reply>& reply = ok())
    {
        exchange(Operation::SetValue, text, reply);
    }
    void command(const QByteArray& text, const std::optional<Reply>& reply = ok())
    {
        exchange(Operation::Command, text, reply);
    }
    void block(const QByteArray& word, int records)
    {
        for (int i = 1; i <= records; ++i)
            set(record(word, records, i));
    }

    static QByteArray record(const QByteArray& word, int records, int number)
    {
        return "system " + word + ' ' + QByteArray::number(records) + ' ' +
               QByteArray::number(number) + " AB";
    }

    void exchange(Operation operation, const QByteArray& text, const std::optional<Reply>& reply)
    {
        monitor.sent(operation, text);
        monitor.answered(operation, text, reply);
    }

    RunMonitor monitor;
    QStringList lines;
};

} // namespace

class TestRunMonitor : public QObject
{
    Q_OBJECT

private slots:
    void runBeginsWithItsFirstText_data();
    void runBeginsWithItsFirstText();
    void cascadeIsToldStepByStep();
    void blockIsToldPercentByPercent();
    void cameraHasTheNameOfTheTable();
    void namesThatAreNotKnown();
    void failuresAreToldInFull_data();
    void failuresAreToldInFull();
    void failedDeviceIsLeftForTheNext();
    void lossOfTheConnectionFailsTheRest();
    void lastRecordIsAwaitedUntilItsPoll();
    void nothingIsToldOutsideOfARun();
    void runIsOverWhenItsCallReturns();
    void runThatAWindowHoldsUp();
    void secondRunIsAnother();
};

void TestRunMonitor::runBeginsWithItsFirstText_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("begins");
    const auto row = [](const char* name, Operation operation, const char* text, bool begins) {
        QTest::newRow(name) << operation << QByteArray(text) << begins;
    };
    row("redirection to the master", Operation::SetValue, "system redirect_update none", true);
    row("redirection to a slave", Operation::SetValue, "system redirect_update 10.0.0.1", true);
    row("tracking software", Operation::SetValue, "system update 9 1 AB", true);
    row("controller firmware", Operation::SetValue, "system ctupdt 9 1 AB", true);
    row("a block of another kind", Operation::SetValue, "system  9 1 AB", true);
    row("a record without bytes", Operation::SetValue, "system update 9 1 ", true);
    row("camera", Operation::Command, "vornix2 set camera update c01 9 1 AB", true);
    row("a query of that name", Operation::GetString, "system update 9 1 AB", false);
    row("another setting", Operation::SetValue, "system net dhcp", false);
    row("another setting with four words", Operation::SetValue, "system fan 9 1 AB", false);
    row("another command", Operation::Command, "vornix2 reinit", false);
    row("no number of records", Operation::SetValue, "system update x 1 AB", false);
    row("record 0", Operation::SetValue, "system update 9 0 AB", false);
    row("a record too many", Operation::SetValue, "system update 9 10 AB", false);
    row("a word too many", Operation::SetValue, "system update 9 1 AB C", false);
    row("cut off", Operation::SetValue, "system update 9", false);
    row("nothing", Operation::SetValue, "", false);
}

void TestRunMonitor::runBeginsWithItsFirstText()
{
    QFETCH(const Operation, operation);
    QFETCH(const QByteArray, text);
    Told told;
    told.monitor.sent(operation, text);
    QTEST(told.monitor.isRunning(), "begins");
    QTEST(RunMonitor::belongsToRun(operation, text), "begins");
    QTEST(told.lines.contains("began"), "begins");
}

void TestRunMonitor::cascadeIsToldStepByStep()
{
    Told told;
    told.query("system hostname", "zan-m\xC3\xA4ster");
    told.query("system hostname_slave 10.0.0.1", "zan-slave-1");
    told.set("system redirect_update none");
    told.block("ctupdt", 1);
    told.set("system redirect_update 10.0.0.1");
    told.block("update", 2);
    told.set("system redirect_update none");
    told.block("", 1);
    QCOMPARE(told.lines,
             (QStringList{
                 "began",
                 QStringLiteral("1. controller firmware of zan-m\u00E4ster: 0 of 1, 0 %, awaited"),
                 QStringLiteral("1. controller firmware of zan-m\u00E4ster: 1 of 1, 100 %"),
                 "2. tracking software of zan-slave-1: 0 of 2, 0 %",
                 "2. tracking software of zan-slave-1: 1 of 2, 50 %",
                 "2. tracking software of zan-slave-1: 1 of 2, 50 %, awaited",
                 "2. tracking software of zan-slave-1: 2 of 2, 100 %",
                 QStringLiteral("3. update of zan-m\u00E4ster: 0 of 1, 0 %, awaited"),
                 QStringLiteral("3. update of zan-m\u00E4ster: 1 of 1, 100 %"),
             }));
    QCOMPARE(told.monitor.step().number, 3);
}

// Of the 1000000 records that a block can have, no more is told than a person can follow.
void TestRunMonitor::blockIsToldPercentByPercent()
{
    Told told;
    told.block("update", 1000);
    QCOMPARE(told.lines.size(), 1 + 101 + 1); // it begins, 0 to 100 %, the last is awaited
    QCOMPARE(told.lines.at(51), QString("1. tracking software of the master: 500 of 1000, 50 %"));
    RunStep longest;
    longest.records = 1000000;
    longest.taken = 999999;
    QCOMPARE(longest.percent(), 99);
    QCOMPARE(RunStep().percent(), 0);
}

void TestRunMonitor::cameraHasTheNameOfTheTable()
{
    Told told;
    told.query("camera camera c01", "0x0901 12345");
    told.query("camera model_desc 0x0901", "\"SmartCam 4\"");
    told.command("vornix2 set camera update c01 1 1 AB");
    told.command("vornix2 set camera update c01 2 1 AB");
    told.command("vornix2 set camera update c01 2 2 AB");
    QCOMPARE(told.lines, (QStringList{
                             "began",
                             "1. firmware of camera SmartCam 4 12345: 0 of 1, 0 %, awaited",
                             "1. firmware of camera SmartCam 4 12345: 1 of 1, 100 %",
                             "2. firmware of camera SmartCam 4 12345: 0 of 2, 0 %",
                             "2. firmware of camera SmartCam 4 12345: 1 of 2, 50 %",
                             "2. firmware of camera SmartCam 4 12345: 1 of 2, 50 %, awaited",
                             "2. firmware of camera SmartCam 4 12345: 2 of 2, 100 %",
                         }));
}

void TestRunMonitor::namesThatAreNotKnown()
{
    Told told;
    told.query("system hostname", "zan-master");
    told.exchange(Operation::GetString, "system hostname", std::nullopt); // and not any more
    told.block("update", 1);
    QCOMPARE(told.monitor.step().device, QString("the master"));
    told.set("system redirect_update 10.0.0.7");
    told.block("update", 1);
    QCOMPARE(told.monitor.step().device, QString("10.0.0.7"));
    told.command("vornix2 set camera update c02 1 1 AB");
    QCOMPARE(told.monitor.step().device, QString("c02"));
}

void TestRunMonitor::failuresAreToldInFull_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<std::optional<Reply>>("reply");
    QTest::addColumn<QString>("failure");
    const std::optional<Reply> none;
    const QByteArray update = "system update 9 3 AB";
    const QByteArray camera = "vornix2 set camera update c01 9 3 AB";
    const QString ofSoftware = "failed: tracking software of the master, record 3 of 9: ";
    const QString ofCamera = "failed: firmware of camera c01, record 3 of 9: ";

    QTest::newRow("record without an answer")
        << Operation::SetValue << update << none << ofSoftware + "no answer";
    QTest::newRow("refused record with number and reason")
        << Operation::SetValue << update
        << std::make_optional(replyOf("vornix2 err -7 \"flash is full\"", false))
        << ofSoftware + "error -7 (flash is full)";
    QTest::newRow("refused record with a number")
        << Operation::SetValue << update << std::make_optional(replyOf("vornix2 err -7", false))
        << ofSoftware + "error -7";
    QTest::newRow("refused record with garbage")
        << Operation::SetValue << update << std::make_optional(replyOf("\x81\x99", false))
        << ofSoftware + "refused";
    QTest::newRow("camera's record without an answer")
        << Operation::Command << camera << none << ofCamera + "no answer";
    QTest::newRow("camera's error, which is a reply like any other")
        << Operation::Command << camera << std::make_optional(replyOf("vornix2 err -26"))
        << ofCamera + "error -26";
    QTest::newRow("camera's error in quotes")
        << Operation::Command << camera << std::make_optional(replyOf("vornix2 err \"-26\""))
        << ofCamera + "error -26";
    QTest::newRow("redirection without an answer")
        << Operation::SetValue << QByteArray("system redirect_update 10.0.0.1") << none
        << "failed: update of 10.0.0.1, switching to the device: no answer";
    QTest::newRow("refused redirection")
        << Operation::SetValue << QByteArray("system redirect_update none")
        << std::make_optional(replyOf("vornix2 err -2 \"no such device\"", false))
        << "failed: update of the master, switching to the device: error -2 (no such device)";
}

void TestRunMonitor::failuresAreToldInFull()
{
    QFETCH(const Operation, operation);
    QFETCH(const QByteArray, text);
    QFETCH(const std::optional<Reply>, reply);
    QFETCH(const QString, failure);
    Told told;
    told.exchange(operation, text, reply);
    QCOMPARE(told.lines.constFirst(), QString("began"));
    QCOMPARE(told.lines.constLast(), failure);
    QCOMPARE(told.lines.filter("failed").size(), 1);
    QVERIFY(told.monitor.isRunning());
    QVERIFY(!told.monitor.step().isAwaited);
}

void TestRunMonitor::failedDeviceIsLeftForTheNext()
{
    Told told;
    told.set("system redirect_update 10.0.0.1");
    told.set(Told::record("update", 3, 1));
    told.set(Told::record("update", 3, 2), replyOf("vornix2 err -1", false));
    told.set("system redirect_update none");
    told.block("update", 1);
    QCOMPARE(told.lines.mid(3),
             (QStringList{"failed: tracking software of 10.0.0.1, record 2 of 3: error -1",
                          "2. tracking software of the master: 0 of 1, 0 %, awaited",
                          "2. tracking software of the master: 1 of 1, 100 %"}));
}

void TestRunMonitor::lossOfTheConnectionFailsTheRest()
{
    ScriptedLink link;
    HostChannel channel(link);
    Told told;
    channel.addWatcher(told.monitor);
    link.answer(ok());
    channel.set_value("system redirect_update %s", "10.0.0.1");
    channel.set_value("system update 9 1 AB");
    ++link.connectionNumber;
    channel.set_value("system redirect_update none");
    channel.set_value("system redirect_update 10.0.0.2");
    channel.prepare_reply(1, 100, 1);
    channel.set_value("system update 1 1 AB");
    channel.poll_reply(3);
    channel.removeWatcher(told.monitor);
    QCOMPARE(told.lines, (QStringList{
                             "began",
                             "1. tracking software of 10.0.0.1: 0 of 9, 0 %",
                             "failed: tracking software of 10.0.0.1, record 1 of 9: no answer",
                             "failed: update of the master, switching to the device: no answer",
                             "failed: update of 10.0.0.2, switching to the device: no answer",
                             "failed: tracking software of 10.0.0.2, record 1 of 1: no answer",
                         }));
}

void TestRunMonitor::lastRecordIsAwaitedUntilItsPoll()
{
    ScriptedLink link;
    HostChannel channel(link);
    Told told;
    channel.addWatcher(told.monitor);
    channel.prepare_reply(1, 20000, 1);
    channel.set_value("system update 1 1 AB");
    QVERIFY(told.monitor.step().isAwaited);
    bool wasAwaited = false;
    link.duringWait = [&] {
        wasAwaited = told.monitor.step().isAwaited;
    };
    link.answer(ok());
    channel.poll_reply(3);
    QVERIFY(wasAwaited);
    QVERIFY(!told.monitor.step().isAwaited);
    QCOMPARE(told.monitor.step().taken, 1);
    channel.removeWatcher(told.monitor);
}

void TestRunMonitor::nothingIsToldOutsideOfARun()
{
    Told told;
    told.query("status active", "mea");
    told.command("vornix2 system reboot");
    told.monitor.answered(Operation::SetValue, "system update 9 1 AB", std::nullopt); // never sent
    QCOMPARE(told.lines, QStringList());
}

void TestRunMonitor::runIsOverWhenItsCallReturns()
{
    Told told;
    QEventLoop loop;
    QObject::connect(&told.monitor, &RunMonitor::ended, &loop, &QEventLoop::quit);
    QTimer::singleShot(0, [&] {
        told.block("update", 1);
        // As the module serves events between its records.
        for (int i = 0; i < 3; ++i) {
            QCoreApplication::processEvents();
            QVERIFY(told.monitor.isRunning());
        }
        told.lines += "the call returns";
    });
    loop.exec();
    QVERIFY(!told.monitor.isRunning());
    QCOMPARE(told.lines.mid(told.lines.size() - 2), (QStringList{"the call returns", "ended"}));
}

void TestRunMonitor::runThatAWindowHoldsUp()
{
    Told told;
    QEventLoop loop;
    QObject::connect(&told.monitor, &RunMonitor::ended, &loop, &QEventLoop::quit);
    QTimer::singleShot(0, [&] {
        told.set(Told::record("update", 2, 1));
        QEventLoop window;
        QObject::connect(&told.monitor, &RunMonitor::heldUp, &window, &QEventLoop::quit);
        window.exec();
        QVERIFY(told.monitor.isHeldUp());
        while (told.monitor.isHeldUp())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        QVERIFY(told.monitor.isRunning());
        told.set(Told::record("update", 2, 2));
    });
    loop.exec();
    const QString half = "1. tracking software of the master: 1 of 2, 50 %";
    QCOMPARE(told.lines, (QStringList{
                             "began",
                             "1. tracking software of the master: 0 of 2, 0 %",
                             half,
                             "held up",
                             half,
                             half + ", awaited",
                             "1. tracking software of the master: 2 of 2, 100 %",
                             "ended",
                         }));
    QVERIFY(!told.monitor.isHeldUp());
}

void TestRunMonitor::secondRunIsAnother()
{
    Told told;
    for (int run = 0; run < 2; ++run) {
        QEventLoop loop;
        QObject::connect(&told.monitor, &RunMonitor::ended, &loop, &QEventLoop::quit);
        QTimer::singleShot(0, [&] {
            told.set("system redirect_update 10.0.0.1");
            told.block("update", 1);
        });
        loop.exec();
    }
    QCOMPARE(told.lines.filter("began").size(), 2);
    QCOMPARE(told.lines.filter("ended").size(), 2);
    QCOMPARE(told.monitor.step().number, 1);
}

ZAN_TEST_MAIN(TestRunMonitor)
#include "tst_runmonitor.moc"
