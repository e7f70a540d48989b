#include <runbanner.h>

#include <widgettestmain.h>

#include <QAccessible>
#include <QDialog>
#include <QEventLoop>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>

namespace {

const QString title =
    "An update is under way. Do not switch off the controllers, the cameras or this "
    "computer.";
const QString mayNot = "Measurements, the search for hardware, other updates and quitting have to "
                       "wait until it is over.";

Reply reply(const QByteArray& text, bool ok)
{
    Reply reply;
    reply.ok = ok;
    reply.text = text;
    return reply;
}

/// A banner that follows a monitor, inside of the one call that a run is.
struct Followed
{
    Followed() { banner.follow(monitor); }

    void set(const QByteArray& text, const std::optional<Reply>& answer = reply("ok", true))
    {
        monitor.sent(Operation::SetValue, text);
        monitor.answered(Operation::SetValue, text, answer);
    }

    QStringList texts() const
    {
        QStringList texts;
        for (const QLabel* label : banner.findChildren<QLabel*>()) {
            if (!label->isHidden() && !label->text().isEmpty())
                texts += label->text().split('\n');
        }
        return texts;
    }
    const QPushButton& button() const { return *banner.findChild<QPushButton*>(); }
    const QProgressBar& share() const { return *banner.findChild<QProgressBar*>(); }

    RunMonitor monitor;
    RunBanner banner;
};

/// Calls @p module from an event loop, as a user's click does, and returns when its run is over.
template <typename Module>
void runInACall(const RunMonitor& monitor, const Module& module)
{
    QEventLoop loop;
    QObject::connect(&monitor, &RunMonitor::ended, &loop, &QEventLoop::quit);
    QTimer::singleShot(0, module);
    loop.exec();
}

} // namespace

class TestRunBanner : public QObject
{
    Q_OBJECT

private slots:
    void stepsAreToldToTheLetter();
    void failuresAreTold();
    void bannerIsThereAsLongAsTheRun();
    void nextRunBeginsWithoutTheFailuresOfTheLast();
    void windowThatIsInTheWayIsNamed();
    void wayBackToTheWindowIsOffered();
    void quittingIsAnnounced();
    void screenReaderReadsWhatIsSo();
};

void TestRunBanner::stepsAreToldToTheLetter()
{
    Followed it;
    it.monitor.answered(Operation::GetString, "system hostname", reply("zan-master", true));
    it.set("system redirect_update none");
    QCOMPARE(it.texts(), (QStringList{title, "The first step begins.", mayNot}));
    QCOMPARE(it.share().value(), 0);
    it.set("system update 3 1 AB");
    QCOMPARE(it.texts(),
             (QStringList{title, "Step 1: tracking software of zan-master, 33 %", mayNot}));
    QCOMPARE(it.share().value(), 33);
    it.set("system update 3 2 AB");
    it.monitor.sent(Operation::SetValue, "system update 3 3 AB");
    QCOMPARE(it.texts(), (QStringList{title,
                                      "Step 1: tracking software of zan-master. All records are "
                                      "sent; the device has to confirm the last one.",
                                      mayNot}));
    QCOMPARE(it.share().value(), 66);
    it.monitor.answered(Operation::SetValue, "system update 3 3 AB", reply("ok", true));
    QCOMPARE(it.texts().at(1), QString("Step 1: tracking software of zan-master, 100 %"));
    it.set("system redirect_update none");
    it.monitor.sent(Operation::SetValue, "system ctupdt 9 1 AB");
    QCOMPARE(it.texts().at(1), QString("Step 2: controller firmware of zan-master, 0 %"));
}

void TestRunBanner::failuresAreTold()
{
    Followed it;
    it.set("system update 3 1 AB");
    it.set("system update 3 2 AB", reply("vornix2 err -7 \"flash is full\"", false));
    QCOMPARE(it.texts(), (QStringList{title, "Step 1: tracking software of the master, 33 %",
                                      "Failed so far: 1. The last one: tracking software of the "
                                      "master, record 2 of 3: error -7 (flash is full).",
                                      mayNot}));
    it.set("system redirect_update 10.0.0.2", std::nullopt);
    QCOMPARE(it.texts().at(2), QString("Failed so far: 2. The last one: update of 10.0.0.2, "
                                       "switching to the device: no answer."));
}

void TestRunBanner::bannerIsThereAsLongAsTheRun()
{
    Followed it;
    QVERIFY(it.banner.isHidden());
    runInACall(it.monitor, [&] {
        it.set("system update 3 1 AB");
        QVERIFY(!it.banner.isHidden());
    });
    QVERIFY(it.banner.isHidden());
}

void TestRunBanner::nextRunBeginsWithoutTheFailuresOfTheLast()
{
    Followed it;
    runInACall(it.monitor, [&] {
        it.set("system update 3 1 AB", std::nullopt);
        it.banner.setQuitting(true);
        it.banner.setWindowLeft(true);
    });
    runInACall(it.monitor, [&] {
        it.set("system redirect_update none");
        QCOMPARE(it.texts(), (QStringList{title, "The first step begins.", mayNot}));
        QVERIFY(it.button().isHidden());
    });
}

void TestRunBanner::windowThatIsInTheWayIsNamed()
{
    Followed it;
    runInACall(it.monitor, [&] {
        it.set("system update 3 1 AB");
        {
            QDialog window;
            window.setWindowTitle("About");
            QObject::connect(&it.monitor, &RunMonitor::heldUp, &window, [&] {
                QCOMPARE(it.texts().constFirst(),
                         QString("An update waits until the window \"About\" is closed."));
                window.reject();
            });
            window.exec();
        }
        it.set("system update 3 2 AB");
        QCOMPARE(it.texts().constFirst(), title);
        QEventLoop withoutAWindow;
        QObject::connect(&it.monitor, &RunMonitor::heldUp, &withoutAWindow, &QEventLoop::quit);
        while (it.monitor.isHeldUp())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        withoutAWindow.exec();
        QCOMPARE(it.texts().constFirst(), QString("An update waits for an answer."));
    });
}

void TestRunBanner::wayBackToTheWindowIsOffered()
{
    Followed it;
    it.set("system update 3 1 AB");
    QVERIFY(it.button().isHidden());
    it.banner.setWindowLeft(true);
    QVERIFY(!it.button().isHidden());
    QCOMPARE(it.button().text(), QString("Show the update &window"));
    const QSignalSpy accepted(&it.banner, &Banner::accepted);
    it.banner.findChild<QPushButton*>()->click();
    QCOMPARE(accepted.size(), 1);
    it.banner.setWindowLeft(false);
    QVERIFY(it.button().isHidden());
}

void TestRunBanner::quittingIsAnnounced()
{
    Followed it;
    it.banner.setQuitting(true); // without a run there is nothing to say
    QVERIFY(it.banner.isHidden());
    it.set("system update 3 1 AB");
    it.banner.setQuitting(true);
    QCOMPARE(it.texts().constLast(), QString("The frontend quits when it is over."));
    it.banner.setQuitting(false);
    QCOMPARE(it.texts().constLast(), mayNot);
}

void TestRunBanner::screenReaderReadsWhatIsSo()
{
    Followed it;
    it.set("system update 3 1 AB");
    const auto nameOf = [](QWidget* widget) {
        return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
    };
    QCOMPARE(nameOf(&it.banner), title);
    QCOMPARE(nameOf(it.banner.findChild<QProgressBar*>()), QString("Share of the step"));
}

ZAN_WIDGET_TEST_MAIN(TestRunBanner)
#include "tst_runbanner.moc"
