#include "modulefixture.h"

#include <ZanUpdateModule2GSettingsdlg.h>
#include <comparing.h>
#include <imagefixtures.h>
#include <markingtranslator.h>
#include <modaldriver.h>
#include <newfeaturedialog.h>
#include <privateaccess.h>
#include <vtableindex.h>
#include <warningguard.h>
#include <widgettestmain.h>
#include <zanmoduleserver.h>

#include <QAction>
#include <QLabel>
#include <QMainWindow>
#include <QPushButton>
#include <QScopeGuard>
#include <QTextEdit>

#include <array>
#include <new>

ZAN_EXPOSE(iom, &ZanUpdateModule::iom);
ZAN_EXPOSE(mod_parent, &ZanUpdateModule::mod_parent);
ZAN_EXPOSE(beVers, &ZanUpdateModule::beVers);
ZAN_EXPOSE(bObserverMode, &ZanUpdateModule::bObserverMode);
ZAN_EXPOSE(gui_zanUpdateModule, &ZanUpdateModule::gui_zanUpdateModule);
ZAN_EXPOSE(gui_zanUpdateDlg, &ZanUpdateModule::gui_zanUpdateDlg);
ZAN_EXPOSE(gui_whatisnew, &ZanUpdateModule::gui_whatisnew);
ZAN_EXPOSE(zanUpdateDlg, &ZanUpdateModule::zanUpdateDlg);
ZAN_EXPOSE(m_new_feature_dialog, &ZanUpdateModule::m_new_feature_dialog);
ZAN_EXPOSE(hasZanValidIP, &ZanUpdateModule::hasZanValidIP);
ZAN_EXPOSE(controllerIsUpToDate, &ZanUpdateModule::controllerIsUpToDate);
ZAN_EXPOSE(camerasUpToDate, &ZanUpdateModule::camerasUpToDate);

Q_DECLARE_METATYPE(ScriptedChannel*)

/// The plug-in object: parameters, menu entries, the questions of its start, and its end.
class TestZanUpdateModule : public QObject
{
    Q_OBJECT

private slots:
    void keepsTheOrderOfItsOperations();
    void startsEmpty();
    void introducesItself();
    void takesItsParameters();
    void setsOneParameter_data();
    void setsOneParameter();
    void recognisesTheFallbackAddress_data();
    void recognisesTheFallbackAddress();
    void recognisesTheFallbackAddressOnAnyProtocol();
    void exemptsBriarscopeFromThePrompt_data();
    void exemptsBriarscopeFromThePrompt();
    void countsControllersAsUpToDateWithoutImages();
    void countsAPreReleaseOfTheNewestVersionAsBehind();
    void asksForCameras_data();
    void asksForCameras();
    void offersTheViewerFirst();
    void offersTheUpdateDialogSecond();
    void keepsTheSpareRecordUnused();
    void speaksTheUsersLanguage();
    void menuEntriesOpenTheirWindows();
    void tellsAHostWhatIsMissing_data();
    void tellsAHostWhatIsMissing();
    void buildsItsDialogsOnce();
    void asksTheChannelNothingForAnObserver();
    void showsAnObserverNoNotes();
    void leavesAnObserversPreferencesAlone_data();
    void leavesAnObserversPreferencesAlone();
    void deliversHostMessages();
    void releasesTheInventoryOnly();
    void deletesTheViewerBeforeTheUpdateDialog();
    void mayExitAtAnyTime_data();
    void mayExitAtAnyTime();
    void buildsAnewAfterItsExit();
    void leavesItsDialogsToTheirParent();

private:
    QMainWindow m_mainWindow;
};

// ---- Construction and parameters

void TestZanUpdateModule::keepsTheOrderOfItsOperations()
{
    const int first = vtableIndex(&ZanUpdateModule::get_module_name);
    QVERIFY(first > vtableIndex(&QObject::eventFilter));
    QCOMPARE(vtableIndex(&ZanUpdateModule::get_module_version), first + 1);
    QCOMPARE(vtableIndex(&ZanUpdateModule::get_gui_elements), first + 2);
    QCOMPARE(vtableIndex(&ZanUpdateModule::set_param), first + 3);
    QCOMPARE(vtableIndex(&ZanUpdateModule::about_to_exit_module), first + 4);
    QCOMPARE(vtableIndex(&ZanUpdateModule::exit_module), first + 5);
}

// In memory that holds other things first, as a host's does.
void TestZanUpdateModule::startsEmpty()
{
    alignas(ZanUpdateModule) std::array<char, sizeof(ZanUpdateModule)> memory;
    memory.fill('\xA5');
    auto* constructed = new (memory.data()) ZanUpdateModule;
    const auto destroy = qScopeGuard([constructed] { constructed->~ZanUpdateModule(); });
    ZanUpdateModule& module = *constructed;
    QVERIFY(!module.parent());
    QVERIFY(!bObserverMode(module));
    QVERIFY(!zanUpdateDlg(module));
    QVERIFY(!m_new_feature_dialog(module));
    for (const GuiElement& element :
         {gui_zanUpdateModule(module), gui_zanUpdateDlg(module), gui_whatisnew(module)}) {
        QVERIFY(!element.content);
        QVERIFY(!element.menu_entry);
    }
    const QMetaObject& meta = ZanUpdateModule::staticMetaObject;
    QCOMPARE(meta.methodCount(), meta.methodOffset());
}

void TestZanUpdateModule::introducesItself()
{
    const ZanUpdateModule module;
    QCOMPARE(module.get_module_name(), QStringLiteral("GUI Controller Update"));
    QCOMPARE(module.get_module_version(), QStringLiteral("v2.0.0"));
}

void TestZanUpdateModule::takesItsParameters()
{
    ModuleFixture fixture;
    fixture.giveParameters(true);
    QCOMPARE(iom(*fixture.module), static_cast<IOManager*>(&fixture.channel));
    QCOMPARE(mod_parent(*fixture.module), fixture.window.get());
    QCOMPARE(beVers(*fixture.module), &fixture.backend);
    QVERIFY(bObserverMode(*fixture.module));

    QVERIFY(QMetaType::type("IOManager*") != QMetaType::UnknownType);
    QVERIFY(QMetaType::type("BackendVersions*") != QMetaType::UnknownType);
    QVERIFY(QMetaType::type("QWidget*") != QMetaType::UnknownType);
}

// What a module holds, by the letters of its parameters: C, P, B and O; a dash for null or false.
static QString held(ZanUpdateModule& module)
{
    QString letters = QStringLiteral("----");
    if (iom(module))
        letters[0] = QLatin1Char('C');
    if (mod_parent(module))
        letters[1] = QLatin1Char('P');
    if (beVers(module))
        letters[2] = QLatin1Char('B');
    if (bObserverMode(module))
        letters[3] = QLatin1Char('O');
    return letters;
}

void TestZanUpdateModule::setsOneParameter_data()
{
    QTest::addColumn<bool>("isSetBefore");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("heldAfterwards");

    static ScriptedChannel channel;
    static QWidget* const window = nullptr;
    static BackendVersions backend{VersionInfo(), VersionInfo(), VersionInfo(), QString()};
    const QVariant channelValue = QVariant::fromValue<IOManager*>(&channel);
    const QVariant backendValue = QVariant::fromValue(&backend);
    const auto row = [](const char* name, bool isSetBefore, const char* key, const QVariant& value,
                        const char* heldAfterwards) {
        QTest::newRow(name) << isSetBefore << QString::fromLatin1(key) << value
                            << QString::fromLatin1(heldAfterwards);
    };

    row("the channel", false, "CommandManager", channelValue, "C---");
    row("the backend's versions", false, "BackendVersions", backendValue, "--B-");
    row("the observer flag", false, "ObserverMode", true, "---O");
    row("the observer flag, cleared again", true, "ObserverMode", false, "CPB-");
    row("a null parent window", true, "ModuleParent", QVariant::fromValue(window), "C-BO");
    row("an unknown key changes nothing", false, "CommandChannel", channelValue, "----");
    row("an unknown key keeps what is set", true, "CommandChannel", QVariant(), "CPBO");
    row("an empty key changes nothing", true, "", QVariant(), "CPBO");
    row("keys are case sensitive", false, "commandmanager", channelValue, "----");
    row("a key with a blank is another key", false, "CommandManager ", channelValue, "----");
    row("a number is no channel", true, "CommandManager", 42, "-PBO");
    row("a text is no channel", true, "CommandManager", QStringLiteral("IOManager*"), "-PBO");
    row("another pointer is no channel", true, "CommandManager", backendValue, "-PBO");
    row("an empty value is no channel", true, "CommandManager", QVariant(), "-PBO");
    row("a main window is a parent window", false, "ModuleParent",
        QVariant::fromValue(&m_mainWindow), "-P--");
    row("a main window that is known as an object only is a parent window", false, "ModuleParent",
        QVariant::fromValue<QObject*>(&m_mainWindow), "-P--");
    row("an object that is no window is no parent window", true, "ModuleParent",
        QVariant::fromValue<QObject*>(QCoreApplication::instance()), "C-BO");
    row("a channel that is known as what it is is no channel", true, "CommandManager",
        QVariant::fromValue(&channel), "-PBO");
    row("a channel is no parent window", true, "ModuleParent", channelValue, "C-BO");
    row("a channel is no record of versions", true, "BackendVersions", channelValue, "CP-O");
    row("a text is no observer flag", true, "ObserverMode", QStringLiteral("true"), "CPB-");
    row("a number is no observer flag", true, "ObserverMode", 1, "CPB-");
    row("an empty value is no observer flag", true, "ObserverMode", QVariant(), "CPB-");
}

void TestZanUpdateModule::setsOneParameter()
{
    QFETCH(bool, isSetBefore);
    QFETCH(QString, key);
    QFETCH(QVariant, value);
    QFETCH(QString, heldAfterwards);

    ModuleFixture fixture;
    if (isSetBefore)
        fixture.giveParameters(true);
    fixture.module->set_param(key, value);
    QCOMPARE(held(*fixture.module), heldAfterwards);
}

// ---- The questions of the start

void TestZanUpdateModule::recognisesTheFallbackAddress_data()
{
    QTest::addColumn<QByteArray>("net"); // null: the query fails
    QTest::addColumn<QByteArray>("address");
    QTest::addColumn<bool>("isValid");

    const auto dhcp = [](const char* name, const char* address, bool isValid) {
        QTest::newRow(name) << QByteArray("dhcp") << QByteArray(address) << isValid;
    };
    dhcp("the factory address is a fallback", "192.168.0.1", false);
    dhcp("its neighbour is valid", "192.168.0.2", true);
    dhcp("another third section is valid", "192.168.1.1", true);
    dhcp("another second section is valid", "192.169.0.1", true);
    dhcp("another first section is valid", "10.168.0.1", true);
    dhcp("numbers decide, not their spelling", "192.168.00.01", false);
    dhcp("sections are decimal", "0xC0.168.0.1", true);
    dhcp("what follows the fourth section does not count", "192.168.0.1.7", false);
    dhcp("a text without dots is valid", "192", true);
    dhcp("three sections are valid", "192.168.0", true);
    dhcp("an empty section is valid", "192..0.1", true);
    dhcp("a section that is no number is valid", "192.168.0.x", true);
    dhcp("a number with an appendix is valid", "192.168.0.1a", true);
    dhcp("a name is valid", "localhost", true);
    dhcp("the empty address is valid", "", true);

    const auto other = [](const char* name, const QByteArray& net) {
        QTest::newRow(name) << net << QByteArray("192.168.0.1") << true;
    };
    other("a static address is valid", "static");
    other("the reply is case sensitive", "DHCP");
    other("the reply is compared as a whole", "dhcp ");
    other("an empty reply is no fallback", "");
    other("a failing query is no fallback", QByteArray());
}

void TestZanUpdateModule::recognisesTheFallbackAddress()
{
    QFETCH(QByteArray, net);
    QFETCH(QByteArray, address);
    QFETCH(bool, isValid);

    ModuleFixture fixture;
    fixture.giveParameters();
    if (net.isNull())
        fixture.channel.on("system net").fail("dhcp");
    else
        fixture.channel.on("system net").reply(net);
    fixture.channel.setAddress(address);

    QCOMPARE(hasZanValidIP(*fixture.module), isValid);
    QStringList expected{QStringLiteral("get_string \"system net\"")};
    if (net == "dhcp")
        expected += QStringLiteral("get_address");
    QCOMPARE(fixture.channel.log(), expected);
}

void TestZanUpdateModule::recognisesTheFallbackAddressOnAnyProtocol()
{
    ModuleFixture fixture(
        BackendVersions(VersionInfo(), VersionInfo(), VersionInfo(), QStringLiteral("ZAN")));
    fixture.giveParameters();
    fixture.channel.on("system net").reply("dhcp");
    fixture.channel.setAddress("192.168.0.1");
    QVERIFY(!hasZanValidIP(*fixture.module));
}

void TestZanUpdateModule::exemptsBriarscopeFromThePrompt_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<VersionInfo>("systemPt");
    QTest::addColumn<bool>("isUpToDate");

    const auto row = [](const char* name, const char* model, const VersionInfo& systemPt,
                        bool isUpToDate) {
        QTest::newRow(name) << QString::fromLatin1(model) << systemPt << isUpToDate;
    };
    row("2.7.0 is exempt", "BRIARSCOPE", VersionInfo(2, 7, 0), true);
    row("2.7.9 is exempt", "BRIARSCOPE", VersionInfo(2, 7, 9), true);
    row("2.8.0 is exempt", "BRIARSCOPE3", VersionInfo(2, 8, 0), true);
    row("2.8 without a patch is exempt", "BRIARSCOPE3", VersionInfo(2, 8), true);
    row("2.7 without a patch is not exempt", "BRIARSCOPE", VersionInfo(2, 7), false);
    row("2.8.1 is not exempt", "BRIARSCOPE", VersionInfo(2, 8, 1), false);
    row("2.6.99 is not exempt", "BRIARSCOPE", VersionInfo(2, 6, 99), false);
    row("2.9.0 is not exempt", "BRIARSCOPE", VersionInfo(2, 9, 0), false);
    row("3.7.0 is not exempt", "BRIARSCOPE", VersionInfo(3, 7, 0), false);
    row("no version is not exempt", "BRIARSCOPE", VersionInfo(), false);
    row("the model's beginning counts", "BRIARSCOPE-X 12", VersionInfo(2, 8, 0), true);
    row("the model is case sensitive", "Briarscope", VersionInfo(2, 8, 0), false);
    row("the model does not count inside the text", "A BRIARSCOPE", VersionInfo(2, 8, 0), false);
    row("other models are not exempt", "ZAN", VersionInfo(2, 8, 0), false);
    row("no model is not exempt", "", VersionInfo(2, 8, 0), false);
}

// The inventory of another system, so that it has images whatever this backend's version is.
void TestZanUpdateModule::exemptsBriarscopeFromThePrompt()
{
    QFETCH(QString, model);
    QFETCH(VersionInfo, systemPt);
    QFETCH(bool, isUpToDate);

    ModuleFixture fixture(BackendVersions(systemPt, VersionInfo(1, 23), VersionInfo(1, 0), model));
    fixture.deliverControllerImage(true);
    BackendVersions other(VersionInfo(3, 0, 0), VersionInfo(1, 23), VersionInfo(1, 0), QString());
    const ZanModuleServer* inventory =
        ZanModuleServer::Exemplar(&fixture.channel, QCoreApplication::applicationDirPath(), &other);
    QCOMPARE(inventory->listUpdates.size(), 1);

    fixture.giveParameters();
    QCOMPARE(controllerIsUpToDate(*fixture.module), isUpToDate);
}

void TestZanUpdateModule::countsControllersAsUpToDateWithoutImages()
{
    ModuleFixture fixture;
    ScriptedController ancient;
    ancient.pt = "v0.0.1 1999-01-01";
    scriptMaster(&fixture.channel, ancient);
    fixture.giveParameters();
    QVERIFY(controllerIsUpToDate(*fixture.module));
}

void TestZanUpdateModule::countsAPreReleaseOfTheNewestVersionAsBehind()
{
    ModuleFixture fixture;
    fixture.deliverControllerImage(false);
    ScriptedController master;
    master.pt = "v3.1.0-beta.1 2024-05-06";
    scriptMaster(&fixture.channel, master);
    fixture.giveParameters();
    QVERIFY(!controllerIsUpToDate(*fixture.module));
}

void TestZanUpdateModule::asksForCameras_data()
{
    QTest::addColumn<bool>("isBehind");
    QTest::newRow("a camera is behind") << true;
    QTest::newRow("the camera is up to date") << false;
}

void TestZanUpdateModule::asksForCameras()
{
    QFETCH(bool, isBehind);

    ModuleFixture fixture;
    fixture.deliverCameraFile(isBehind);
    fixture.giveParameters();
    QVERIFY(controllerIsUpToDate(*fixture.module));
    fixture.channel.takeLog();
    QCOMPARE(camerasUpToDate(*fixture.module), !isBehind);
    QCOMPARE(fixture.channel.log(), cameraQueries());
}

// ---- Menu entries

void TestZanUpdateModule::offersTheViewerFirst()
{
    ModuleFixture fixture;
    fixture.giveParameters();
    const QList<_GuiElement*> elements = fixture.module->get_gui_elements();
    QCOMPARE(elements.size(), 2);

    const GuiElement& element = *elements.at(0);
    QCOMPARE(&element, &gui_whatisnew(*fixture.module));
    QCOMPARE(element.menu_name, QStringLiteral("&Help"));
    QCOMPARE(element.menu_order_number, 700);
    QCOMPARE(element.menu_entry_order_number, 30);
    QCOMPARE(element.action_active_during_measurement, 1);
    QCOMPARE(element.content, static_cast<QWidget*>(fixture.viewer()));
    QCOMPARE(element.content->parentWidget(), fixture.window.get());
    QCOMPARE(element.menu_entry->parent(), fixture.module.get());
    QCOMPARE(element.menu_entry->text(), QStringLiteral("Wh&at's New?"));
    QCOMPARE(element.menu_entry->statusTip(),
             QStringLiteral("Get to know new features for the current version"));
    QCOMPARE(element.menu_entry->whatsThis(),
             QStringLiteral("Get to know new features for the current version"));
}

void TestZanUpdateModule::offersTheUpdateDialogSecond()
{
    ModuleFixture fixture;
    fixture.giveParameters();
    const QList<_GuiElement*> elements = fixture.module->get_gui_elements();
    QCOMPARE(elements.size(), 2);

    const GuiElement& element = *elements.at(1);
    QCOMPARE(&element, &gui_zanUpdateDlg(*fixture.module));
    QCOMPARE(element.menu_name, QStringLiteral("&Help"));
    QCOMPARE(element.menu_order_number, 700);
    QCOMPARE(element.menu_entry_order_number, 31);
    QCOMPARE(element.action_active_during_measurement, 0);
    QCOMPARE(element.content, static_cast<QWidget*>(fixture.dialog()));
    QCOMPARE(element.content->parentWidget(), fixture.window.get());
    QCOMPARE(element.menu_entry->parent(), fixture.module.get());
    QCOMPARE(element.menu_entry->text(), QStringLiteral("&Controller and Camera Update"));
    QCOMPARE(element.menu_entry->statusTip(),
             QStringLiteral("Open Controller and Camera Update dialog"));
    QCOMPARE(element.menu_entry->whatsThis(), QStringLiteral("Controller and Camera Update"));
}

void TestZanUpdateModule::keepsTheSpareRecordUnused()
{
    ModuleFixture fixture;
    fixture.giveParameters();
    const QList<_GuiElement*> elements = fixture.module->get_gui_elements();
    QVERIFY(!elements.contains(&gui_zanUpdateModule(*fixture.module)));
    QVERIFY(!gui_zanUpdateModule(*fixture.module).menu_entry);
    QVERIFY(!gui_zanUpdateModule(*fixture.module).content);
}

void TestZanUpdateModule::speaksTheUsersLanguage()
{
    const MarkingTranslator translator("ZanUpdateModule");
    ModuleFixture fixture;
    fixture.giveParameters();
    QStringList texts{fixture.module->get_module_name()};
    for (const _GuiElement* element : fixture.module->get_gui_elements()) {
        const QAction& action = *element->menu_entry;
        texts << element->menu_name << action.text() << action.statusTip() << action.whatsThis();
    }

    QCOMPARE(texts.size(), 9);
    QCOMPARE(texts.filter(QRegExp(QStringLiteral("^\\* "))), texts);
    QCOMPARE(fixture.module->get_module_version(), QStringLiteral("v2.0.0"));
}

// The preferences of a user who has seen the notes: nothing opens by itself, however slow a test
// is.
static void keepTheStartQuiet(const ModuleFixture& fixture)
{
    writeFixture(fixture.preferencesFile(), "<VORNIX><WHATISNEW/></VORNIX>");
}

void TestZanUpdateModule::menuEntriesOpenTheirWindows()
{
    ModuleFixture fixture;
    keepTheStartQuiet(fixture);
    fixture.giveParameters();
    const QList<_GuiElement*> elements = fixture.module->get_gui_elements();

    ModalDriver driver;
    driver.expectDialog(QStringLiteral("NewFeatureDialog"), [&](QDialog& dialog) {
        QCOMPARE(&dialog, elements.at(0)->content);
        dialog.reject();
    });
    elements.at(0)->menu_entry->trigger();
    driver.expectDialog(QStringLiteral("ZanUpdateModule2GSettingsdlgClass"), [&](QDialog& dialog) {
        QCOMPARE(&dialog, elements.at(1)->content);
        dialog.reject();
    });
    elements.at(1)->menu_entry->trigger();
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
}

void TestZanUpdateModule::tellsAHostWhatIsMissing_data()
{
    QTest::addColumn<bool>("areParametersGiven");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("named");

    const auto wrong = [](const char* name, const char* key, const QVariant& value,
                          const char* named) {
        QTest::newRow(name) << true << QString::fromLatin1(key) << value
                            << QString::fromLatin1(named);
    };
    const char* const channel = "CommandManager (IOManager*)";
    const char* const versions = "BackendVersions (BackendVersions*)";
    const char* const observer = "ObserverMode (bool)";
    static ScriptedChannel other;
    QTest::newRow("nothing was given")
        << false << "unknown" << QVariant()
        << QStringLiteral("CommandManager (IOManager*), BackendVersions (BackendVersions*)");
    wrong("a null channel", "CommandManager", QVariant::fromValue<IOManager*>(nullptr), channel);
    wrong("a channel as an untyped pointer", "CommandManager",
          QVariant::fromValue<void*>(static_cast<IOManager*>(&other)), channel);
    wrong("a channel under the name of its class", "CommandManager", QVariant::fromValue(&other),
          channel);
    wrong("null versions", "BackendVersions", QVariant::fromValue<BackendVersions*>(nullptr),
          versions);
    wrong("versions as a text", "BackendVersions", QStringLiteral("v3.0.0"), versions);
    wrong("an observer as a text", "ObserverMode", QStringLiteral("true"), observer);
    wrong("no observer as a number", "ObserverMode", 0, observer);
}

void TestZanUpdateModule::tellsAHostWhatIsMissing()
{
    QFETCH(bool, areParametersGiven);
    QFETCH(QString, key);
    QFETCH(QVariant, value);
    QFETCH(QString, named);

    ModuleFixture fixture;
    if (areParametersGiven)
        fixture.giveParameters();
    fixture.module->set_param(key, value);
    {
        const ExpectedWarning warning("ZanUpdateModule: no menu entries, as these parameters are "
                                      "null or of another type: " +
                                      named);
        QVERIFY(fixture.module->get_gui_elements().isEmpty());
    }
    QVERIFY(!fixture.viewer());
    QVERIFY(!fixture.dialog());
    QCOMPARE(armedSingleShots(), QVector<int>());
    QCOMPARE(fixture.channel.log(), QStringList());
    fixture.module->about_to_exit_module();
    fixture.module->exit_module();

    fixture.giveParameters();
    QCOMPARE(fixture.module->get_gui_elements().size(), 2);
}

void TestZanUpdateModule::buildsItsDialogsOnce()
{
    ModuleFixture fixture;
    fixture.deliverControllerImage(true);
    fixture.giveParameters();
    const QList<_GuiElement*> first = fixture.module->get_gui_elements();
    QCOMPARE(fixture.channel.logOf(QStringLiteral("register_receiver")),
             QStringList{QStringLiteral("register_receiver UpdateModule")});
    const QVector<int> armed = armedSingleShots();
    QCOMPARE(armed, QVector<int>{500});
    fixture.channel.takeLog();

    QCOMPARE(fixture.module->get_gui_elements(), first);
    QCOMPARE(armedSingleShots(), armed);
    QCOMPARE(fixture.channel.log(), QStringList());
    QCOMPARE(fixture.window->findChildren<QDialog*>(QString(), Qt::FindDirectChildrenOnly).size(),
             2);
    QCOMPARE(fixture.module->findChildren<QAction*>().size(), 2);
}

// ---- Observers

void TestZanUpdateModule::asksTheChannelNothingForAnObserver()
{
    ModuleFixture fixture;
    fixture.deliverControllerImage(true);
    fixture.deliverCameraFile(true);
    fixture.giveParameters(true);
    const QList<_GuiElement*> elements = fixture.module->get_gui_elements();
    QCOMPARE(elements, QList<_GuiElement*>{&gui_whatisnew(*fixture.module)});
    QCOMPARE(fixture.module->get_gui_elements(), elements);
    QVERIFY(fixture.viewer());
    QVERIFY(!fixture.dialog());
    QCOMPARE(armedSingleShots(), QVector<int>());

    fixture.module->about_to_exit_module();
    fixture.module->exit_module();
    QCOMPARE(fixture.channel.log(), QStringList());
}

void TestZanUpdateModule::showsAnObserverNoNotes()
{
    ModuleFixture fixture;
    fixture.deliverNotes();
    fixture.giveParameters(true);
    const QList<_GuiElement*> elements = fixture.module->get_gui_elements();
    // Nobody is registered, so the viewer never learns the frontend's version.
    fixture.channel.post_message("UpdateModule", "Main_Window", 1, "v3.1.0");

    ModalDriver driver;
    driver.expectDialog(QStringLiteral("NewFeatureDialog"), [](QDialog& dialog) {
        const auto* page = dialog.findChild<QTextEdit*>(QStringLiteral("textEdit"));
        QCOMPARE(page->toPlainText().trimmed(), QStringLiteral("No new feature available!"));
        const auto* more = dialog.findChild<QPushButton*>(QStringLiteral("pushButton_show_more"));
        QVERIFY(!more->isEnabled());
        dialog.reject();
    });
    elements.at(0)->menu_entry->trigger();
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
}

void TestZanUpdateModule::leavesAnObserversPreferencesAlone_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("there is no file") << QByteArray();
    QTest::newRow("there is a file") << QByteArray("<VORNIX><WHATISNEW/></VORNIX>");
    QTest::newRow("there is a broken file") << QByteArray("<VORNIX>");
}

void TestZanUpdateModule::leavesAnObserversPreferencesAlone()
{
    QFETCH(QByteArray, bytes);

    ModuleFixture fixture;
    if (!bytes.isNull())
        writeFixture(fixture.preferencesFile(), bytes);
    fixture.giveParameters(true);
    fixture.module->get_gui_elements();
    fixture.module->exit_module();
    QCOMPARE(fixture.preferences(), bytes);
    QCOMPARE(fixture.preferences().isNull(), bytes.isNull());
    QCOMPARE(fixture.channel.log(), QStringList());
}

// ---- Host messages

void TestZanUpdateModule::deliversHostMessages()
{
    ModuleFixture fixture;
    keepTheStartQuiet(fixture);
    fixture.deliverNotes();
    fixture.giveParameters();
    fixture.module->get_gui_elements();
    const auto post = [&](const char* text) {
        fixture.channel.post_message("UpdateModule", "Main_Window", 1, text);
    };

    const auto* logo = fixture.viewer()->findChild<QLabel*>(QStringLiteral("label_logo"));
    const auto shownLogo = [&] {
        return logo->pixmap(Qt::ReturnByValue).toImage();
    };
    post("DarkThemeEnabled");
    QCOMPARE(shownLogo(), QPixmap(QStringLiteral(":/orv_transparent02.png")).toImage());
    post("DarkThemeDisabled");
    QCOMPARE(shownLogo(), QPixmap(QStringLiteral(":/orv_transparent02-brightmode.png")).toImage());

    post("v3.0.5");
    ModalDriver driver;
    driver.expectDialog(QStringLiteral("NewFeatureDialog"), [](QDialog& dialog) {
        const auto* page = dialog.findChild<QTextEdit*>(QStringLiteral("textEdit"));
        QVERIFY(page->toPlainText().startsWith(QLatin1String("VORNIX3 v3.0.0\n")));
        dialog.reject();
    });
    fixture.viewer()->update_and_exec();
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
}

// ---- The end

void TestZanUpdateModule::releasesTheInventoryOnly()
{
    ModuleFixture fixture;
    fixture.giveParameters();
    fixture.module->get_gui_elements();
    fixture.channel.takeLog();

    fixture.module->about_to_exit_module();
    QCOMPARE(fixture.channel.log(), QStringList());
    QVERIFY(fixture.viewer());
    QVERIFY(fixture.dialog());
    QCOMPARE(fixture.module->get_gui_elements().size(), 2);

    // Whoever asks next gets a new one, which asks the controllers anew.
    controllerIsUpToDate(*fixture.module);
    QCOMPARE(fixture.channel.log(), masterQueries() + cameraQueries().mid(0, 2));
    fixture.module->about_to_exit_module();
    fixture.module->about_to_exit_module();
}

void TestZanUpdateModule::deletesTheViewerBeforeTheUpdateDialog()
{
    ModuleFixture fixture;
    fixture.giveParameters();
    fixture.module->get_gui_elements();
    QStringList events;
    connect(fixture.viewer(), &QObject::destroyed, this, [&] {
        // The update dialog writes the preferences as it goes, so it is still there.
        events += fixture.preferences().isNull() ? QStringLiteral("viewer")
                                                 : QStringLiteral("viewer, too late");
    });
    connect(fixture.dialog(), &QObject::destroyed, this, [&] {
        events += fixture.preferences().isNull() ? QStringLiteral("dialog without preferences")
                                                 : QStringLiteral("dialog");
    });

    fixture.module->exit_module();
    QCOMPARE(events, (QStringList{QStringLiteral("viewer"), QStringLiteral("dialog")}));
    QVERIFY(!gui_whatisnew(*fixture.module).content);
    QVERIFY(!gui_zanUpdateDlg(*fixture.module).content);
    QVERIFY(!m_new_feature_dialog(*fixture.module));
    QVERIFY(!zanUpdateDlg(*fixture.module));
    QCOMPARE(fixture.module->findChildren<QAction*>().size(), 2);
    QVERIFY(gui_whatisnew(*fixture.module).menu_entry);
    QVERIFY(gui_zanUpdateDlg(*fixture.module).menu_entry);
}

void TestZanUpdateModule::mayExitAtAnyTime_data()
{
    QTest::addColumn<bool>("isBuilt");
    QTest::addColumn<bool>("isObserver");
    QTest::newRow("before anything is built") << false << false;
    QTest::newRow("before anything is built for an observer") << false << true;
    QTest::newRow("after all is built") << true << false;
    QTest::newRow("after the viewer is built for an observer") << true << true;
}

void TestZanUpdateModule::mayExitAtAnyTime()
{
    QFETCH(bool, isBuilt);
    QFETCH(bool, isObserver);

    ModuleFixture fixture;
    fixture.giveParameters(isObserver);
    if (isBuilt)
        fixture.module->get_gui_elements();
    fixture.module->exit_module();
    fixture.module->exit_module();
    QVERIFY(!fixture.viewer());
    QVERIFY(!fixture.dialog());
    QCOMPARE(!fixture.preferences().isNull(), isBuilt && !isObserver);
}

void TestZanUpdateModule::buildsAnewAfterItsExit()
{
    ModuleFixture fixture;
    fixture.deliverControllerImage(true);
    fixture.giveParameters();
    fixture.module->get_gui_elements();
    fixture.module->about_to_exit_module();
    const QStringList firstStart = fixture.channel.takeLog();
    fixture.module->exit_module();
    QCOMPARE(armedSingleShots(), QVector<int>{500}); // of a dialog that is gone
    QVERIFY(waitForSingleShots());

    const QList<_GuiElement*> elements = fixture.module->get_gui_elements();
    QCOMPARE(elements.size(), 2);
    QCOMPARE(elements.at(0)->content, static_cast<QWidget*>(fixture.viewer()));
    QCOMPARE(elements.at(1)->content, static_cast<QWidget*>(fixture.dialog()));
    QCOMPARE(fixture.channel.log(), firstStart);
    QCOMPARE(armedSingleShots(), QVector<int>{500});
    QCOMPARE(fixture.module->findChildren<QAction*>().size(), 4);
}

void TestZanUpdateModule::leavesItsDialogsToTheirParent()
{
    ModuleFixture fixture;
    fixture.giveParameters();
    fixture.module->get_gui_elements();
    const QPointer<NewFeatureDialog> viewer = fixture.viewer();
    const QPointer<ZanUpdateModule2GSettingsdlg> dialog = fixture.dialog();

    fixture.module.reset();
    QVERIFY(viewer);
    QVERIFY(dialog);
    QVERIFY(fixture.preferences().isNull());

    fixture.window.reset();
    QVERIFY(!viewer);
    QVERIFY(!dialog);
    QVERIFY(!fixture.preferences().isNull());
}

ZAN_WIDGET_TEST_MAIN(TestZanUpdateModule)

#include "tst_zanupdatemodule.moc"
