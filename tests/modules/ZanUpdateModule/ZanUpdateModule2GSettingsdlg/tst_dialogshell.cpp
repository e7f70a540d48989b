#include "dialogfixture.h"
#include "expectedboxes.h"
#include "exposeddialog.h"
#include "fixtureimages.h"

#include <comparing.h>
#include <cuttexts.h>
#include <markingtranslator.h>
#include <widgettestmain.h>
#include <zanupdatemessagereceiver.h>

#include <QDir>
#include <QHBoxLayout>
#include <QMetaMethod>
#include <QTextBlock>
#include <QTextDocument>

#include <algorithm>

ZAN_EXPOSE(showWhatIsDue, &UpdateDialog::showWhatIsDue);
ZAN_EXPOSE(frontendVersion, &NewFeatureDialog::vornix2);
ZAN_EXPOSE(isTriggeredAtStart, &NewFeatureDialog::m_trigger_at_startup);

class DialogShell : public QObject
{
    Q_OBJECT

private slots:
    void formIsAsDesigned_data();
    void formIsAsDesigned();
    void formStacksItsWidgets();
    void formRecommendsABackup();
    void formNamesADialogWithoutAName();
    void formTextsCanBeTranslated();
    void slotsAreAsTheHostCallsThem();

    void constructorShowsAWindowAtRest();
    void constructorAsksNothing();
    void constructorSetsItsMembers();
    void constructorPlacesThePreferences();
    void hostMessagesReachTheDialog();
    void hostMessagesReachTheViewer();

    void opensOnTheInventory_data();
    void opensOnTheInventory();
    void nothingIsCutOff_data() { LargerFont::addRows(); }
    void nothingIsCutOff();
    void cameraTextWinsOverTheControllers();
    void opensWithABlankProgressArea();
    void opensOnWhatTheControllersSayNow();
    void returnsTheResultOfTheWindow_data();
    void returnsTheResultOfTheWindow();

    void exitReminds_data();
    void exitReminds();
    void leavesWithoutAReminder_data();
    void leavesWithoutAReminder();
    void f3StartsThoughTheButtonIsGrey();
    void otherKeysStartNothing();

    void startTimerOpensTheDialog_data();
    void startTimerOpensTheDialog();
    void startTimerShowsTheNotesOnce();
    void startTimerShowsNothingWithoutNotes();
    void startTimerShowsNothingThatIsNotDue();
    void warnsOfTheFallbackAddress();
    void translatesOnlyTheTitleOfTheAddressWarning();
    void destructorKeepsWhetherNotesAreDue_data();
    void destructorKeepsWhetherNotesAreDue();
};

static const char* const DIALOG = "ZanUpdateModule2GSettingsdlgClass";

// ---- The form

/// The form on a plain dialog, as it is before the constructor goes on.
class BareForm : public QDialog
{
public:
    BareForm() { ui.setupUi(this); }
    Ui::ZanUpdateModule2GSettingsdlgClass ui;
};

void DialogShell::formIsAsDesigned_data()
{
    QTest::addColumn<QString>("object");
    QTest::addColumn<QByteArray>("property");
    QTest::addColumn<QVariant>("value");

    const auto row = [](const char* object, const char* property, const QVariant& value) {
        QTest::addRow("%s of %s", property, object) << object << QByteArray(property) << value;
    };
    const int leftAndTop = Qt::AlignLeft | Qt::AlignTop;
    row(DIALOG, "size", QSize(900, 600));
    row(DIALOG, "minimumSize", QSize(900, 600));
    row(DIALOG, "windowTitle", "Controller and Camera Update");
    row(DIALOG, "whatsThis", "Update Controller and cameras dialog");
    row("label_updates", "text", "Updates are necessary");
    row("label_updates", "minimumHeight", 66);
    row("label_updates", "alignment", leftAndTop);
    row("label_updates", "wordWrap", true);
    row("tableWidget", "whatsThis", "Controller and cameras should be updated");
    row("tableWidget", "minimumSize", QSize(0, 0));
    row("label_what", "text", "What");
    row("progressBar", "whatsThis", "Progress of update");
    row("progressBar", "value", 24);
    row("label_msg", "text", "Message");
    row("label_controllerisuptodate", "text", "Controller is up to date");
    row("label_controllerisuptodate", "minimumHeight", 40);
    row("label_controllerisuptodate", "alignment", leftAndTop);
    row("line", "frameShape", int(QFrame::HLine));
    row("line", "frameShadow", int(QFrame::Sunken));
    row("pushButton_update", "text", "Update");
    row("pushButton_update", "whatsThis", "Start update");
    row("pushButton_exit", "text", "E&xit");
    row("pushButton_exit", "whatsThis", "Close dialog");
}

void DialogShell::formIsAsDesigned()
{
    QFETCH(const QString, object);
    QFETCH(const QByteArray, property);
    QFETCH(const QVariant, value);
    BareForm form;
    const QObject* found = object == form.objectName() ? &form : form.findChild<QObject*>(object);
    QVERIFY(found);
    QVariant actual = found->property(property.constData());
    QVERIFY(actual.convert(static_cast<int>(value.type())));
    QCOMPARE(actual, value);
}

static QString classAndName(QLayoutItem* item)
{
    const QObject* object = item->widget();
    if (!object)
        object = item->layout();
    return object ? QLatin1String(object->metaObject()->className()) + QLatin1Char(' ') +
                        object->objectName()
                  : QStringLiteral("spacer");
}

static QStringList objectsIn(const QLayout& layout)
{
    QStringList names;
    for (int i = 0; i < layout.count(); ++i)
        names += classAndName(layout.itemAt(i));
    return names;
}

void DialogShell::formStacksItsWidgets()
{
    BareForm form;
    QCOMPARE(form.layout(), static_cast<QLayout*>(form.ui.verticalLayout));
    QCOMPARE(objectsIn(*form.ui.verticalLayout),
             (QStringList{"QLabel label_updates", "QTableWidget tableWidget", "QLabel label_what",
                          "QProgressBar progressBar", "QLabel label_msg",
                          "QLabel label_controllerisuptodate", "QLabel label_recommendBackup",
                          "QFrame line", "QHBoxLayout horizontalLayout"}));
    QCOMPARE(
        objectsIn(*form.ui.horizontalLayout),
        (QStringList{"spacer", "QPushButton pushButton_update", "QPushButton pushButton_exit"}));
    QCOMPARE(form.ui.horizontalSpacer->sizeHint(), QSize(40, 20));
    QCOMPARE(form.ui.horizontalSpacer->expandingDirections(), Qt::Orientations(Qt::Horizontal));
}

void DialogShell::formRecommendsABackup()
{
    BareForm form;
    QTextDocument document;
    document.setHtml(form.ui.label_recommendBackup->text());
    QCOMPARE(document.toPlainText(),
             QStringLiteral("We recommend that you save all VORNIX3 configurations before running "
                            "this update!\n(VORNIX3 -> Configurations -> Backup -> Save)"));
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next())
        QVERIFY(block.begin().fragment().charFormat().fontWeight() > QFont::Medium);
    QCOMPARE(form.ui.label_recommendBackup->text().count(QStringLiteral("font-weight:600")), 2);
    QVERIFY(form.ui.label_recommendBackup->text().contains(
        QStringLiteral("(VORNIX3 -&gt; Configurations -&gt; Backup -&gt; Save)")));
}

void DialogShell::formNamesADialogWithoutAName()
{
    QCOMPARE(BareForm().objectName(), QString::fromLatin1(DIALOG));
    QDialog named;
    named.setObjectName(QStringLiteral("other"));
    Ui::ZanUpdateModule2GSettingsdlgClass ui;
    ui.setupUi(&named);
    QCOMPARE(named.objectName(), QStringLiteral("other"));
}

void DialogShell::formTextsCanBeTranslated()
{
    const MarkingTranslator translator(DIALOG);
    const BareForm form;
    QStringList texts{form.windowTitle(), form.whatsThis(), form.ui.tableWidget->whatsThis(),
                      form.ui.progressBar->whatsThis()};
    for (const QLabel* label : form.findChildren<QLabel*>())
        texts += label->text();
    for (const QPushButton* button : form.findChildren<QPushButton*>())
        texts << button->text() << button->whatsThis();

    QCOMPARE(texts.size(), 13);
    for (const QString& text : qAsConst(texts))
        QVERIFY2(text.startsWith(QLatin1String("* ")), qPrintable(text));
}

void DialogShell::slotsAreAsTheHostCallsThem()
{
    const QMetaObject& meta = UpdateDialog::staticMetaObject;
    QCOMPARE(meta.superClass(), &QDialog::staticMetaObject);
    QStringList found;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        QCOMPARE(method.methodType(), QMetaMethod::Slot);
        found +=
            QStringLiteral("%1 %2 %3")
                .arg(QLatin1String(method.access() == QMetaMethod::Public ? "public" : "private"),
                     QLatin1String(method.typeName()),
                     QString::fromLatin1(method.methodSignature()));
    }
    QCOMPARE(
        found,
        (QStringList{"public int update_and_exec()", "public void onTimer()",
                     "public void onDisplayMsgNoValidIp()", "public void onTimerShowNewFeature()",
                     "public void onSendCheckForOldFrontendOrBackend(bool)",
                     "private void on_tableWidget_cellClicked(int,int)",
                     "private void on_pushButton_update_clicked()",
                     "private void on_pushButton_exit_clicked()",
                     "private void keyPressEvent(QKeyEvent*)",
                     "private void resizeEvent(QResizeEvent*)", "private void doProgressTimer()"}));
}

// ---- Construction

void DialogShell::constructorShowsAWindowAtRest()
{
    DialogFixture fixture;
    QCOMPARE(fixture.dialog.objectName(), QString::fromLatin1(DIALOG));
    QCOMPARE(fixture.bar()->value(), 0);
    QCOMPARE(fixture.label("label_controllerisuptodate")->text(), QString());
    QCOMPARE(fixture.table()->columnCount(), 6);
    QCOMPARE(fixture.table()->rowCount(), 0);
    QVERIFY(!fixture.dialog.isVisible());
}

void DialogShell::constructorAsksNothing()
{
    DialogFixture fixture;
    QCOMPARE(fixture.channel.log(), QStringList{"register_receiver UpdateModule"});
}

void DialogShell::constructorSetsItsMembers()
{
    DialogFixture fixture;
    QCOMPARE(nBlocksMustUpdate(fixture.dialog), 0);
    QCOMPARE(nUpdateRemainingSeconds(fixture.dialog), 0);
    QCOMPARE(iValProgressBar(fixture.dialog), 0);
    QVERIFY(bCheckForOldFrontendBackend(fixture.dialog));
    QVERIFY(!m_bShowWarningv2xxv3xx(fixture.dialog));
    QVERIFY(!m_bIsWolSlavesActive(fixture.dialog));
    QVERIFY(m_timLastStep(fixture.dialog).time_since_epoch().count() == 0);
    QCOMPARE(m_hardware_info_file_dir(fixture.dialog),
             QCoreApplication::applicationDirPath() + QStringLiteral("/hardware_info.txt"));
    QCOMPARE(messageReceiver(fixture.dialog)->parent(), static_cast<QObject*>(&fixture.dialog));
}

void DialogShell::constructorPlacesThePreferences()
{
    DialogFixture fixture;
    const QString folder =
        fixture.home() + QStringLiteral("/.ORV/VORNIX3/modules/zanupdate/v1.2.3/config");
    QCOMPARE(sConfigDir(fixture.dialog), folder);
    QVERIFY(!QDir(fixture.home() + QStringLiteral("/.ORV")).exists());
    // Without a file it is the first start of this version.
    QVERIFY(bShowNewFeatures(fixture.dialog));
}

static void post(DialogFixture* fixture, const char* message)
{
    fixture->channel.post_message("UpdateModule", "frontend", 1, message);
}

void DialogShell::hostMessagesReachTheDialog()
{
    DialogFixture fixture;
    post(&fixture, "NotCheckForOldFrontendOrBackend");
    QVERIFY(!bCheckForOldFrontendBackend(fixture.dialog));
    post(&fixture, "CheckForOldFrontendOrBackend");
    QVERIFY(bCheckForOldFrontendBackend(fixture.dialog));
}

static QImage logoOf(const NewFeatureDialog& viewer)
{
    return viewer.findChild<QLabel*>(QStringLiteral("label_logo"))
        ->pixmap(Qt::ReturnByValue)
        .toImage();
}

void DialogShell::hostMessagesReachTheViewer()
{
    DialogFixture fixture;
    post(&fixture, "v3.4.5");
    QCOMPARE(frontendVersion(fixture.viewer), VersionInfo(3, 4, 5));

    post(&fixture, "DarkThemeDisabled");
    const QImage bright = logoOf(fixture.viewer);
    post(&fixture, "DarkThemeEnabled");
    QVERIFY(!bright.isNull());
    QVERIFY(logoOf(fixture.viewer) != bright);
}

// ---- Opening

/// What the inventory finds, and what the user sees of it.
enum class Found
{
    Nothing,
    Controller,
    ControllerThatCannotYet,
    Camera
};
Q_DECLARE_METATYPE(Found)

static void arrange(DialogFixture* fixture, Found found)
{
    scriptMaster(&fixture->channel, {});
    ControllerImage image =
        releaseImage(VersionInfo(3, 1, 0), VersionInfo(1, 0), {blockOf(FirmwareBlock)});
    if (found == Found::ControllerThatCannotYet)
        image.minPt = VersionInfo(3, 0, 1);
    if (found == Found::Camera) {
        scriptCameras(&fixture->channel, {ScriptedCamera{"0x0a01"}});
        fixture->deliver(QStringLiteral("camera.VX2znimg"),
                         cameraFile({0x0a01}, VersionInfo(1, 1, 0)));
    } else if (found != Found::Nothing) {
        fixture->deliver(QStringLiteral("controller"), image);
    }
}

/// Opens the dialog and looks at it while it is open. @return what update_and_exec() returns
static int open(DialogFixture* fixture, const std::function<void(QDialog&)>& look)
{
    ModalDriver driver;
    driver.expectDialog(QString::fromLatin1(DIALOG), [&](QDialog& dialog) {
        look(dialog);
        dialog.done(dialog.result());
    });
    const int result = fixture->dialog.update_and_exec();
    if (!driver.isDone())
        QTest::qFail("the dialog did not open", __FILE__, __LINE__);
    return result;
}

static const char* const UP_TO_DATE = "Controller(s) and cameras are up to date";
static const char* const CONTROLLER_TEXT =
    "The VORNIX3 frontend has detected that the firmware on your Controller is an older version "
    "than the VORNIX3 version installed on this workstation. \nPlease update your controller.";
static const char* const CAMERA_TEXT =
    "The VORNIX3 frontend has detected that the firmware of your camera(s) is an older version "
    "than available. \nPlease update your camera(s).";

void DialogShell::opensOnTheInventory_data()
{
    QTest::addColumn<Found>("found");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("isBackupVisible");
    QTest::addColumn<bool>("isBackupEnabled");
    QTest::addColumn<bool>("isUpdateEnabled");

    QTest::newRow("nothing to update") << Found::Nothing << UP_TO_DATE << true << false << false;
    QTest::newRow("a controller that is behind")
        << Found::Controller << CONTROLLER_TEXT << true << true << true;
    QTest::newRow("a controller that cannot take its update yet, so that no row is ticked")
        << Found::ControllerThatCannotYet << CONTROLLER_TEXT << true << true << false;
    QTest::newRow("a camera that is behind")
        << Found::Camera << CAMERA_TEXT << false << true << true;
}

void DialogShell::opensOnTheInventory()
{
    QFETCH(const Found, found);
    DialogFixture fixture;
    arrange(&fixture, found);
    open(&fixture, [&](QDialog& dialog) {
        QVERIFY(dialog.isVisible());
        QVERIFY(dialog.isModal());
        QTEST(fixture.label("label_updates")->text(), "text");
        QTEST(fixture.label("label_recommendBackup")->isVisible(), "isBackupVisible");
        QTEST(fixture.label("label_recommendBackup")->isEnabled(), "isBackupEnabled");
        QTEST(fixture.updateButton()->isEnabled(), "isUpdateEnabled");
        QVERIFY(fixture.exitButton()->isEnabled());
    });
}

void DialogShell::nothingIsCutOff()
{
    QFETCH(const double, factor);
    const LargerFont font(factor);
    for (const Found found : {Found::Nothing, Found::Controller, Found::Camera}) {
        DialogFixture fixture;
        arrange(&fixture, found);
        open(&fixture, [factor](QDialog& dialog) {
            QStringList cut = cutTexts(dialog);
            // The columns have set shares of the table, whatever their titles.
            cut.erase(std::remove_if(cut.begin(), cut.end(),
                                     [](const QString& it) { return it.startsWith("Section"); }),
                      cut.end());
            QCOMPARE(cut, QStringList());
            if (factor == 1)
                QCOMPARE(dialog.size(), QSize(900, 600));
        });
    }
}

// The inventory never offers both at once; the window is ready for it.
void DialogShell::cameraTextWinsOverTheControllers()
{
    DialogFixture fixture;
    const auto* controllerRow =
        fixture.addRow(fixture.addMaster({}), releaseImage(VersionInfo(3, 1, 0), VersionInfo(1, 0),
                                                           {blockOf(FirmwareBlock)}));
    fixture.addCameraRow(cameraFile({0x0a01}, VersionInfo(1, 1, 0)));
    fixture.table()->setRowCount(1);
    fillTableRow(fixture.dialog, 0, *controllerRow);

    showWhatIsDue(fixture.dialog);
    QCOMPARE(fixture.label("label_updates")->text(), QString::fromLatin1(CAMERA_TEXT));
    QVERIFY(!fixture.label("label_recommendBackup")->isHidden());
    QVERIFY(fixture.label("label_recommendBackup")->isEnabled());
    QVERIFY(fixture.updateButton()->isEnabled());
}

void DialogShell::opensWithABlankProgressArea()
{
    DialogFixture fixture;
    for (int opening = 0; opening < 2; ++opening) {
        open(&fixture, [&](QDialog&) {
            QCOMPARE(fixture.label("label_what")->text(), QString());
            QCOMPARE(fixture.label("label_msg")->text(), QString());
            QCOMPARE(fixture.bar()->value(), 0);
        });
        // What a run leaves behind.
        showWhatInDialog(fixture.dialog, QStringLiteral("Updating firmware (alpha)"));
        showMessageInDialog(fixture.dialog, QStringLiteral("Update successful"), 100);
        QCOMPARE(fixture.label("label_what")->text(), QStringLiteral("Updating firmware (alpha)"));
        QCOMPARE(fixture.label("label_msg")->text(), QStringLiteral("Update successful"));
        QCOMPARE(fixture.bar()->value(), 100);
    }
}

void DialogShell::opensOnWhatTheControllersSayNow()
{
    DialogFixture fixture;
    arrange(&fixture, Found::Controller);
    open(&fixture, [&](QDialog&) { QCOMPARE(fixture.table()->rowCount(), 1); });
    fixture.channel.on("system version").reply("v3.1.0 2025-01-01");
    open(&fixture, [&](QDialog&) {
        QCOMPARE(fixture.table()->rowCount(), 0);
        QCOMPARE(fixture.label("label_updates")->text(), QString::fromLatin1(UP_TO_DATE));
    });
    fixture.channel.on("system version").reply("v3.0.0 2024-01-01");
    open(&fixture, [&](QDialog&) {
        QCOMPARE(fixture.table()->rowCount(), 1);
        QVERIFY(fixture.updateButton()->isEnabled());
    });
}

void DialogShell::returnsTheResultOfTheWindow_data()
{
    QTest::addColumn<int>("result");
    QTest::newRow("rejected") << 0;
    QTest::newRow("accepted") << 1;
    QTest::newRow("any other result") << 7;
}

void DialogShell::returnsTheResultOfTheWindow()
{
    QFETCH(const int, result);
    DialogFixture fixture;
    QCOMPARE(open(&fixture, [=](QDialog& dialog) { dialog.setResult(result); }), result);
}

// ---- Leaving, and keys

void DialogShell::exitReminds_data()
{
    QTest::addColumn<Found>("found");
    QTest::addColumn<bool>("isReminded");
    QTest::newRow("not without rows") << Found::Nothing << false;
    QTest::newRow("of a row") << Found::Controller << true;
    QTest::newRow("of a row that is not ticked") << Found::ControllerThatCannotYet << true;
    QTest::newRow("of a camera") << Found::Camera << true;
}

void DialogShell::exitReminds()
{
    QFETCH(const Found, found);
    QFETCH(const bool, isReminded);
    DialogFixture fixture;
    arrange(&fixture, found);
    ModalDriver driver;
    driver.expectDialog(QString::fromLatin1(DIALOG),
                        [&](QDialog&) { fixture.exitButton()->click(); });
    if (isReminded) {
        driver.expect(
            notice(QMessageBox::Information,
                   QStringLiteral("To start the update process later,\nopen the update dialog "
                                  "again using the menu\nHelp -> Controller and Camera Update")));
    }
    QCOMPARE(fixture.dialog.update_and_exec(), int(QDialog::Accepted));
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
    QVERIFY(!fixture.dialog.isVisible());
}

void DialogShell::leavesWithoutAReminder_data()
{
    QTest::addColumn<bool>("isByKey");
    QTest::newRow("by Escape") << true;
    QTest::newRow("by the window's close button") << false;
}

void DialogShell::leavesWithoutAReminder()
{
    QFETCH(const bool, isByKey);
    DialogFixture fixture;
    arrange(&fixture, Found::Controller);
    ModalDriver driver;
    driver.expectDialog(QString::fromLatin1(DIALOG), [=](QDialog& dialog) {
        if (isByKey)
            QTest::keyClick(&dialog, Qt::Key_Escape);
        else
            dialog.close();
    });
    QCOMPARE(fixture.dialog.update_and_exec(), int(QDialog::Rejected));
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
}

void DialogShell::f3StartsThoughTheButtonIsGrey()
{
    DialogFixture fixture;
    ModalDriver driver;
    driver.expectDialog(QString::fromLatin1(DIALOG), [&](QDialog& dialog) {
        QVERIFY(!fixture.updateButton()->isEnabled());
        QTest::keyClick(&dialog, Qt::Key_F3);
        dialog.reject();
    });
    driver.expect(cameraConfirmation(QMessageBox::No));
    fixture.dialog.update_and_exec();
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
}

void DialogShell::otherKeysStartNothing()
{
    DialogFixture fixture;
    ModalDriver driver;
    driver.expectDialog(QString::fromLatin1(DIALOG), [](QDialog& dialog) {
        for (const Qt::Key key : {Qt::Key_F2, Qt::Key_F4, Qt::Key_A, Qt::Key_F13})
            QTest::keyClick(&dialog, key);
        QVERIFY(dialog.isVisible());
        dialog.reject();
    });
    fixture.dialog.update_and_exec();
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
}

// ---- What the plug-in's timers call at start

void DialogShell::startTimerOpensTheDialog_data()
{
    QTest::addColumn<QList<QByteArray>>("messages");
    QTest::addColumn<bool>("isOpened");
    QTest::newRow("unless the host says otherwise") << QList<QByteArray>() << true;
    QTest::newRow("not if the host has turned it off")
        << QList<QByteArray>{"NotCheckForOldFrontendOrBackend"} << false;
    QTest::newRow("if the host has turned it off and on again")
        << QList<QByteArray>{"NotCheckForOldFrontendOrBackend", "CheckForOldFrontendOrBackend"}
        << true;
}

void DialogShell::startTimerOpensTheDialog()
{
    QFETCH(const QList<QByteArray>, messages);
    QFETCH(const bool, isOpened);
    DialogFixture fixture;
    for (const QByteArray& message : messages)
        post(&fixture, message.constData());
    fixture.channel.takeLog();

    {
        ModalDriver driver;
        if (isOpened)
            driver.expectDialog(QString::fromLatin1(DIALOG),
                                [](QDialog& dialog) { dialog.reject(); });
        fixture.dialog.onTimer();
        QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
        QCOMPARE(fixture.channel.log().isEmpty(), !isOpened);
    }
    // The menu entry opens it in any case.
    open(&fixture, [](QDialog&) {});
}

void DialogShell::startTimerShowsTheNotesOnce()
{
    DialogFixture fixture;
    fixture.programFolder().deliverNote(QStringLiteral("v3_0_0.html"),
                                        "<html><body>new</body></html>");
    post(&fixture, "v3.0.0");
    ModalDriver driver;
    driver.expectDialog(QStringLiteral("NewFeatureDialog"), [&](QDialog& viewer) {
        QCOMPARE(&viewer, static_cast<QDialog*>(&fixture.viewer));
        QVERIFY(isTriggeredAtStart(fixture.viewer));
        viewer.reject();
    });
    fixture.dialog.onTimerShowNewFeature();
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
    QVERIFY(!isTriggeredAtStart(fixture.viewer));
    QVERIFY(!bShowNewFeatures(fixture.dialog));
    fixture.dialog.onTimerShowNewFeature();
    QCOMPARE(driver.seen().size(), 1);
}

void DialogShell::startTimerShowsNothingWithoutNotes()
{
    DialogFixture fixture;
    ModalDriver driver;
    fixture.dialog.onTimerShowNewFeature();
    QCOMPARE(driver.seen(), QStringList());
    // It counts as shown all the same.
    QVERIFY(!bShowNewFeatures(fixture.dialog));
    QVERIFY(!isTriggeredAtStart(fixture.viewer));
}

void DialogShell::startTimerShowsNothingThatIsNotDue()
{
    DialogFixture fixture;
    fixture.programFolder().deliverNote(QStringLiteral("v3_0_0.html"),
                                        "<html><body>new</body></html>");
    post(&fixture, "v3.0.0");
    bShowNewFeatures(fixture.dialog) = false;
    ModalDriver driver;
    fixture.dialog.onTimerShowNewFeature();
    QCOMPARE(driver.seen(), QStringList());
}

static ExpectedBox addressWarning()
{
    ExpectedBox box;
    box.title = QStringLiteral("Warning");
    box.icon = QMessageBox::Warning;
    box.text =
        QStringLiteral("The Controller's network is set to 'DHCP';\n"
                       "as it currently is using the fallback IP address,\n"
                       "there might have been no DHCP server present during booting.\n"
                       "\n"
                       "Caution: Possibly the Controller cannot be connected after the update!\n"
                       "\n"
                       "Please set a valid IP address before updating the Controller.\n"
                       "(Settings -> Controller -> IP address and subnet mask)\n");
    return box;
}

void DialogShell::warnsOfTheFallbackAddress()
{
    DialogFixture fixture;
    ExpectedBox box = addressWarning();
    box.inspect = [&](QMessageBox& shown) {
        QCOMPARE(shown.parentWidget(), static_cast<QWidget*>(&fixture.dialog));
    };
    ModalDriver driver;
    driver.expect(box);
    fixture.dialog.onDisplayMsgNoValidIp();
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
}

void DialogShell::translatesOnlyTheTitleOfTheAddressWarning()
{
    const MarkingTranslator translator("ZanUpdateModule2GSettingsdlg");
    DialogFixture fixture;
    ExpectedBox box = addressWarning();
    box.title = MarkingTranslator::marked(box.title);
    ModalDriver driver;
    driver.expect(box);
    fixture.dialog.onDisplayMsgNoValidIp();
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
}

// ---- The end

void DialogShell::destructorKeepsWhetherNotesAreDue_data()
{
    QTest::addColumn<bool>("isDue");
    QTest::newRow("they are due") << true;
    QTest::newRow("they have been shown") << false;
}

void DialogShell::destructorKeepsWhetherNotesAreDue()
{
    QFETCH(const bool, isDue);
    DialogFixture fixture;
    const auto makeDialog = [&] {
        return std::make_unique<UpdateDialog>(&fixture.channel, nullptr, &fixture.backend,
                                              QStringLiteral("v9"), &fixture.viewer);
    };
    bShowNewFeatures(*makeDialog()) = isDue;
    QCOMPARE(bShowNewFeatures(*makeDialog()), isDue);
    QCOMPARE(fixture.channel.messages().size(), 0);
}

ZAN_WIDGET_TEST_MAIN(DialogShell)

#include "tst_dialogshell.moc"
