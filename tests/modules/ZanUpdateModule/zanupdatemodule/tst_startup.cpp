#include "modulefixture.h"

#include <ZanUpdateModule2GSettingsdlg.h>
#include <modaldriver.h>
#include <newfeaturedialog.h>
#include <widgettestmain.h>

#include <QAction>
#include <QElapsedTimer>

/// What the plug-in confronts the user with at start, with its real timers.
class TestStartup : public QObject
{
    Q_OBJECT

private slots:
    void decidesOnce_data();
    void decidesOnce();
    void opensTheDialogFirstAndWarnsOnTopOfIt();
    void hostMayTurnTheDialogOff_data();
    void hostMayTurnTheDialogOff();
    void warnsOfTheAddressWithoutTheDialog();
};

namespace {

const QString UPDATE_DIALOG = QStringLiteral("ZanUpdateModule2GSettingsdlgClass");
const QString VIEWER = QStringLiteral("NewFeatureDialog");
const QString ADDRESS_WARNING =
    QStringLiteral("The Controller's network is set to 'DHCP';\n"
                   "as it currently is using the fallback IP address,\n"
                   "there might have been no DHCP server present during booting.\n"
                   "\n"
                   "Caution: Possibly the Controller cannot be connected after the update!\n"
                   "\n"
                   "Please set a valid IP address before updating the Controller.\n"
                   "(Settings -> Controller -> IP address and subnet mask)\n");

enum class Equipment
{
    WithoutFiles,
    UpToDate,
    Behind,
};

/// A system at start, and what then comes. Without a word all is up to date.
struct Start
{
    QString model = QStringLiteral("ZAN");
    VersionInfo systemPt = VersionInfo(3, 0, 0);
    Equipment controllers = Equipment::UpToDate;
    Equipment cameras = Equipment::UpToDate;
    bool isAtFallbackAddress = false;
    bool isChannelDead = false;

    QVector<int> delays = {500};
    QStringList windows = {VIEWER};
    QStringList callsOfStart;  ///< after the registration of the receiver
    QStringList callsOfTimers; ///< until all windows are closed
};

} // namespace

Q_DECLARE_METATYPE(Start)

static QStringList addressQueries(bool isDhcp)
{
    QStringList queries{QStringLiteral("get_string \"system net\"")};
    if (isDhcp)
        queries += QStringLiteral("get_address");
    return queries;
}

static Start updateDue(Equipment controllers, Equipment cameras, bool isAtFallbackAddress)
{
    Start start;
    start.controllers = controllers;
    start.cameras = cameras;
    start.isAtFallbackAddress = isAtFallbackAddress;
    start.windows = QStringList{UPDATE_DIALOG};
    if (isAtFallbackAddress) {
        start.delays += 600;
        start.windows += ADDRESS_WARNING;
    }

    // The inventory looks for camera rows at once, as it has no controller rows before it has asked
    // the controllers a second time.
    start.callsOfStart = masterQueries() + cameraQueries();
    if (cameras == Equipment::Behind)
        start.callsOfStart += cameraRowQuery();
    if (controllers != Equipment::Behind)
        start.callsOfStart += cameraQueries();
    start.callsOfStart += addressQueries(isAtFallbackAddress);

    start.callsOfTimers = masterQueries();
    if (controllers != Equipment::Behind)
        start.callsOfTimers += cameraQueries() + cameraRowQuery();
    return start;
}

static Start nothingDue()
{
    Start start;
    start.callsOfStart = masterQueries() + cameraQueries() + cameraQueries();
    return start;
}

static Start briarscope(const QString& model, const VersionInfo& systemPt, Start start)
{
    start.model = model;
    start.systemPt = systemPt;
    return start;
}

void TestStartup::decidesOnce_data()
{
    QTest::addColumn<Start>("start");

    const Equipment behind = Equipment::Behind;
    const Equipment current = Equipment::UpToDate;
    QTest::newRow("the controllers are behind") << updateDue(behind, current, false);
    QTest::newRow("the controllers are behind, at the fallback address")
        << updateDue(behind, current, true);
    QTest::newRow("controllers and cameras are behind") << updateDue(behind, behind, false);
    QTest::newRow("controllers and cameras are behind, at the fallback address")
        << updateDue(behind, behind, true);
    QTest::newRow("the cameras are behind") << updateDue(current, behind, false);
    QTest::newRow("the cameras are behind, at the fallback address")
        << updateDue(current, behind, true);
    QTest::newRow("the cameras are behind and there are no images")
        << updateDue(Equipment::WithoutFiles, behind, false);

    QTest::newRow("all is up to date") << nothingDue();
    Start start = nothingDue();
    start.isAtFallbackAddress = true;
    QTest::newRow("all is up to date, so nobody asks for the address") << start;
    start = nothingDue();
    start.controllers = Equipment::WithoutFiles;
    QTest::newRow("without images the controllers count as up to date") << start;
    start.cameras = Equipment::WithoutFiles;
    start.callsOfStart = masterQueries() + cameraQueries().mid(0, 2) + cameraQueries().mid(0, 2);
    QTest::newRow("nothing is delivered") << start;

    start = nothingDue();
    start.controllers = behind;
    QTest::newRow("BRIARSCOPE3 on 2.8.0 is exempt")
        << briarscope(QStringLiteral("BRIARSCOPE3"), VersionInfo(2, 8, 0), start);
    start = updateDue(current, behind, false);
    start.controllers = behind;
    start.callsOfTimers = masterQueries();
    QTest::newRow("BRIARSCOPE3 on 2.8.0 is exempt, but not its cameras")
        << briarscope(QStringLiteral("BRIARSCOPE3"), VersionInfo(2, 8, 0), start);
    QTest::newRow("BRIARSCOPE on 2.8.1 is not exempt") << briarscope(
        QStringLiteral("BRIARSCOPE"), VersionInfo(2, 8, 1), updateDue(behind, current, false));
    start = nothingDue();
    start.controllers = behind;
    start.callsOfStart.insert(
        masterQueries().size(),
        QStringLiteral("post_message standard VORNIX3 1 \"This version of VORNIX3 is incompatible "
                       "with this BRIARSCOPE! Please use Vornix2 in version v2.7.7.\""));
    QTest::newRow("BRIARSCOPE on 2.7.7 gets no images")
        << briarscope(QStringLiteral("BRIARSCOPE"), VersionInfo(2, 7, 7), start);

    start = updateDue(behind, current, false);
    start.isChannelDead = true;
    start.callsOfStart = masterQueries() + cameraQueries().mid(0, 1) + addressQueries(false);
    QTest::newRow("nothing answers, so the controllers count as behind") << start;
}

static void simulate(ModuleFixture* fixture, const Start& start)
{
    if (start.controllers != Equipment::WithoutFiles)
        fixture->deliverControllerImage(start.controllers == Equipment::Behind);
    if (start.cameras != Equipment::WithoutFiles)
        fixture->deliverCameraFile(start.cameras == Equipment::Behind);
    fixture->deliverNotes();
    fixture->channel.on("system net").reply(start.isAtFallbackAddress ? "dhcp" : "static");
    fixture->channel.setAddress("192.168.0.1");
    if (start.isChannelDead)
        fixture->channel.die();
}

static ExpectedBox addressWarning()
{
    ExpectedBox box;
    box.title = QStringLiteral("Warning");
    box.text = ADDRESS_WARNING;
    box.icon = QMessageBox::Warning;
    return box;
}

// Closes the dialog, or leaves that to the warning that is to come up on top of it.
static void expectWindows(ModalDriver* driver, const Start& start)
{
    const bool isWarned = start.windows.contains(ADDRESS_WARNING);
    driver->expectDialog(start.windows.first(), [isWarned](QDialog& dialog) {
        if (!isWarned)
            dialog.reject();
    });
    if (!isWarned)
        return;
    ExpectedBox box = addressWarning();
    box.inspect = [](QMessageBox& warning) {
        auto* dialog = qobject_cast<QDialog*>(warning.parentWidget());
        QTimer::singleShot(0, dialog, &QDialog::reject);
    };
    driver->expect(box);
}

void TestStartup::decidesOnce()
{
    QFETCH(Start, start);

    ModuleFixture fixture(
        BackendVersions(start.systemPt, VersionInfo(1, 23), VersionInfo(1, 0), start.model));
    simulate(&fixture, start);
    fixture.giveParameters();
    ModalDriver driver;
    expectWindows(&driver, start);

    fixture.module->get_gui_elements();
    QCOMPARE(fixture.channel.takeLog(),
             QStringList{QStringLiteral("register_receiver UpdateModule")} + start.callsOfStart);
    QCOMPARE(armedSingleShots(), start.delays);
    fixture.channel.post_message("UpdateModule", "Main_Window", 1, "v3.1.0");
    fixture.channel.takeLog();

    QVERIFY(waitForSingleShots());
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
    QCOMPARE(driver.seen(), start.windows);
    QCOMPARE(fixture.channel.log(), start.callsOfTimers);
}

void TestStartup::opensTheDialogFirstAndWarnsOnTopOfIt()
{
    ModuleFixture fixture;
    simulate(&fixture, updateDue(Equipment::Behind, Equipment::UpToDate, true));
    fixture.giveParameters();

    // Timers count whole milliseconds.
    static constexpr int ROUNDING_MS = 1;
    QElapsedTimer clock;
    ModalDriver driver;
    driver.expectDialog(UPDATE_DIALOG,
                        [&](QDialog&) { QVERIFY(clock.elapsed() >= 500 - ROUNDING_MS); });
    ExpectedBox box = addressWarning();
    box.inspect = [&](QMessageBox& warning) {
        QVERIFY(clock.elapsed() >= 600 - ROUNDING_MS);
        QVERIFY(fixture.dialog()->isVisible());
        QCOMPARE(warning.parentWidget(), static_cast<QWidget*>(fixture.dialog()));
        QTimer::singleShot(0, fixture.dialog(), &QDialog::reject);
    };
    driver.expect(box);

    clock.start();
    fixture.module->get_gui_elements();
    QVERIFY(waitForSingleShots());
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
}

void TestStartup::hostMayTurnTheDialogOff_data()
{
    QTest::addColumn<QList<QByteArray>>("messages");
    QTest::addColumn<bool>("opens");

    const QByteArray on = "CheckForOldFrontendOrBackend";
    const QByteArray off = "NotCheckForOldFrontendOrBackend";
    QTest::newRow("the host says nothing") << QList<QByteArray>() << true;
    QTest::newRow("the host turns the check on") << QList<QByteArray>{on} << true;
    QTest::newRow("the host turns the check off") << QList<QByteArray>{off} << false;
    QTest::newRow("the host turns the check off and on again")
        << QList<QByteArray>{off, on} << true;
    QTest::newRow("the host's last word counts") << QList<QByteArray>{off, on, off} << false;
    QTest::newRow("a keyword in lower case is a version")
        << QList<QByteArray>{off.toLower()} << true;
}

void TestStartup::hostMayTurnTheDialogOff()
{
    QFETCH(QList<QByteArray>, messages);
    QFETCH(bool, opens);

    ModuleFixture fixture;
    fixture.deliverControllerImage(true);
    fixture.giveParameters();
    const auto close = [](QDialog& dialog) {
        dialog.reject();
    };
    ModalDriver driver;
    if (opens)
        driver.expectDialog(UPDATE_DIALOG, close);
    const QList<_GuiElement*> elements = fixture.module->get_gui_elements();
    for (const QByteArray& message : messages)
        fixture.channel.post_message("UpdateModule", "Main_Window", 1, message.constData());
    QVERIFY(waitForSingleShots());
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));

    // The menu entry opens it regardless.
    driver.expectDialog(UPDATE_DIALOG, close);
    elements.at(1)->menu_entry->trigger();
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
}

void TestStartup::warnsOfTheAddressWithoutTheDialog()
{
    ModuleFixture fixture;
    simulate(&fixture, updateDue(Equipment::Behind, Equipment::UpToDate, true));
    fixture.giveParameters();
    ModalDriver driver;
    driver.expect(addressWarning());
    fixture.module->get_gui_elements();
    fixture.channel.post_message("UpdateModule", "Main_Window", 1,
                                 "NotCheckForOldFrontendOrBackend");
    QVERIFY(waitForSingleShots());
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
    QVERIFY(!fixture.dialog()->isVisible());
}

ZAN_WIDGET_TEST_MAIN(TestStartup)

#include "tst_startup.moc"
