#include "runequipment.h"

#include <ZanUpdateModule2GSettingsdlg.h>
#include <modaldriver.h>
#include <newfeaturedialog.h>
#include <privateaccess.h>
#include <widgettestmain.h>
#include <zanmoduleserver.h>

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTableWidget>
#include <QTimer>

#include <functional>

namespace {

/// How a host ends the plug-in without waiting for it.
enum class EarlyEnd
{
    AboutToExit,
    Exit,
    AboutToExitAndExit,
    ParentGoes,
    ParentGoesAndExit,
};

} // namespace

ZAN_EXPOSE(exemplar, &ZanModuleServer::m_exemplar);

Q_DECLARE_METATYPE(EarlyEnd)
Q_DECLARE_METATYPE(std::function<void(QWidget*)>)

/// Hosts that end the plug-in while it serves events: in a run, at an open window, or inside a call
/// of their own channel.
class LeavingHost : public QObject
{
    Q_OBJECT

private slots:
    void findsOrderAtEachPlace_data();
    void findsOrderAtEachPlace();
    void findsOrderInsideACall_data();
    void findsOrderInsideACall();
    void seesARunThatOutlivesItsWindow();
    void keepsItsInventoryAsLongAsADialogIsOpen();
    void getsNoEntriesBeforeItsExitIsOver();
    void mayForgetTheModuleMeanwhile();
    void mayTakeItsWindowAwayBeforeAnythingIsBuilt();
    void mayTakeItsWindowAwayAtRest();
    void isHeldUpByNoOtherWindow();
    void mayShowTheDialogWithoutItsMenuEntry_data();
    void mayShowTheDialogWithoutItsMenuEntry();
};

// ---- Early ends

static const QVector<QPair<EarlyEnd, const char*>>& earlyEnds()
{
    static const QVector<QPair<EarlyEnd, const char*>> all = {
        {EarlyEnd::AboutToExit, "about_to_exit_module"},
        {EarlyEnd::Exit, "exit_module"},
        {EarlyEnd::AboutToExitAndExit, "both exits"},
        {EarlyEnd::ParentGoes, "the parent's end"},
        {EarlyEnd::ParentGoesAndExit, "the parent's end and exit_module"},
    };
    return all;
}

static void endEarly(EarlyEnd end, ModuleFixture* fixture)
{
    if (end == EarlyEnd::ParentGoes || end == EarlyEnd::ParentGoesAndExit)
        fixture->window.reset();
    if (end == EarlyEnd::AboutToExit || end == EarlyEnd::AboutToExitAndExit)
        fixture->module->about_to_exit_module();
    if (end == EarlyEnd::Exit || end == EarlyEnd::AboutToExitAndExit ||
        end == EarlyEnd::ParentGoesAndExit)
        fixture->module->exit_module();
}

static bool releasesInventory(EarlyEnd end)
{
    return end == EarlyEnd::AboutToExit || end == EarlyEnd::AboutToExitAndExit;
}

// ---- What is left

static void checkNothingIsLeft(const ModuleFixture& fixture)
{
    for (const QWidget* window : QApplication::topLevelWidgets())
        QVERIFY2(!window->inherits("QDialog"), qPrintable(window->windowTitle()));
    QVERIFY(!fixture.preferences().isNull());
}

// A run that has begun goes its whole way, with its report and the restart after it; before that,
// what is open closes.
static void checkRoad(const RunRoad& road, const Undisturbed& whole, bool goesOn)
{
    if (goesOn) {
        QCOMPARE(road.calls(), whole.calls);
    } else {
        QCOMPARE(road.calls(), whole.calls.mid(0, road.calls().size()));
        QCOMPARE(sentRecords(road.calls()), QStringList());
    }
}

static void checkTheNextStart(ModuleFixture* fixture, const Undisturbed& whole)
{
    if (!fixture->window) {
        fixture->window = std::make_unique<QWidget>();
        fixture->giveParameters();
    }
    RunRoad again(fixture);
    again.go();
    QCOMPARE(again.calls(), whole.calls);
    closeUpdateFiles();
}

// ---- Places

void LeavingHost::findsOrderAtEachPlace_data()
{
    addRowsOfPlaces("end", earlyEnds());
}

void LeavingHost::findsOrderAtEachPlace()
{
    QFETCH(const Equipment, equipment);
    QFETCH(const EarlyEnd, end);
    QFETCH(const int, place);
    const Undisturbed whole = undisturbed(equipment);
    ModuleFixture fixture(backendOf(equipment));
    connectEquipment(&fixture, equipment);
    fixture.giveParameters();
    fixture.window->show();
    RunRoad road(&fixture);
    road.actAt(place, [&](QDialog*) {
        endEarly(end, &fixture);
        QVERIFY(exemplar());
    });
    road.go();
    QVERIFY(road.hasActed());
    checkRoad(road, whole, end == EarlyEnd::AboutToExit || place > whole.lastBoxBeforeTheRun());
    QCOMPARE(!exemplar(), releasesInventory(end));
    if (end != EarlyEnd::AboutToExit)
        checkNothingIsLeft(fixture);
    if (QTest::currentTestFailed())
        return;

    fixture.module->about_to_exit_module();
    fixture.module->exit_module();
    checkNothingIsLeft(fixture);
    checkTheNextStart(&fixture, whole);
}

// ---- Calls

// The plug-in's calls, by their numbers on the road; two stand for all that are much alike.
static QVector<int> tellingCalls(const QStringList& calls)
{
    QStringList known;
    QVector<int> numbers;
    for (int i = 0; i < calls.size(); ++i) {
        const QString kind = calls.at(i).section(QLatin1Char(' '), 0, 2);
        if (known.count(kind) < 2 && !kind.startsWith(QLatin1String("post_message UpdateModule")))
            numbers += i;
        known += kind;
    }
    return numbers;
}

void LeavingHost::findsOrderInsideACall_data()
{
    QTest::addColumn<Equipment>("equipment");
    QTest::addColumn<EarlyEnd>("end");
    QTest::addColumn<int>("call");

    for (const auto& equipment : equipments()) {
        // Its calls are those of the refused block, and very many.
        if (equipment.first == Equipment::Cascade)
            continue;
        const QStringList calls = undisturbed(equipment.first).calls;
        for (const auto& end : earlyEnds()) {
            for (const int call : tellingCalls(calls)) {
                const QString name =
                    QStringLiteral("%1: %2 in call %3, %4")
                        .arg(equipment.second, end.second, QString::number(call), calls.at(call));
                QTest::newRow(qPrintable(name)) << equipment.first << end.first << call;
            }
        }
    }
}

// The start that comes behind get_gui_elements() needs an inventory again.
static bool isReleasedBeforeTheStart(const QStringList& calls, EarlyEnd end, int call)
{
    const QString version = QStringLiteral("post_message UpdateModule Main_Window 1 \"v3.0.0\"");
    return end == EarlyEnd::AboutToExit && call <= calls.indexOf(version);
}

// The channel of a host may serve events while it waits for a controller.
void LeavingHost::findsOrderInsideACall()
{
    QFETCH(const Equipment, equipment);
    QFETCH(const EarlyEnd, end);
    QFETCH(const int, call);
    const Undisturbed whole = undisturbed(equipment);
    ModuleFixture fixture(backendOf(equipment));
    connectEquipment(&fixture, equipment);
    fixture.giveParameters();
    bool hasEnded = false;
    fixture.channel.setHook([&](const QString&) {
        if (hasEnded || fixture.channel.log().size() - 1 != call)
            return;
        hasEnded = true;
        endEarly(end, &fixture);
    });
    RunRoad road(&fixture);
    road.go();
    QVERIFY(hasEnded);
    if (isReleasedBeforeTheStart(whole.calls, end, call)) {
        QCOMPARE(sentRecords(road.calls()), sentRecords(whole.calls));
    } else {
        checkRoad(road, whole, end == EarlyEnd::AboutToExit || call >= whole.callsBeforeTheRun());
        QCOMPARE(!exemplar(), releasesInventory(end));
    }
    if (end != EarlyEnd::AboutToExit)
        checkNothingIsLeft(fixture);
    closeUpdateFiles();
}

// ---- One by one

// The number of the first place of the kind.
static int firstPlace(const Undisturbed& whole, Place::Kind kind)
{
    for (int i = 0; i < whole.places.size(); ++i) {
        if (whole.places.at(i).kind == kind)
            return i;
    }
    return -1;
}

// Operators are told not to switch anything off: they go on seeing what the run does.
void LeavingHost::seesARunThatOutlivesItsWindow()
{
    const Undisturbed whole = undisturbed(Equipment::Cameras);
    ModuleFixture fixture(backendOf(Equipment::Cameras));
    connectEquipment(&fixture, Equipment::Cameras);
    fixture.giveParameters();
    fixture.window->show();
    RunRoad road(&fixture);
    QPointer<ZanUpdateModule2GSettingsdlg> dialog;
    road.actAt(firstPlace(whole, Place::InRun), [&](QDialog* inFront) {
        dialog = fixture.dialog();
        QCOMPARE(inFront, dialog.data());
        fixture.window.reset();
        QVERIFY(dialog);
        QVERIFY(dialog->isVisible());
        QVERIFY(dialog->isModal());
        QVERIFY(!dialog->parentWidget());
    });
    road.go();
    QVERIFY(road.hasActed());
    QVERIFY(!dialog);
}

// Its table would go on to show rows that are gone.
void LeavingHost::keepsItsInventoryAsLongAsADialogIsOpen()
{
    const Undisturbed whole = undisturbed(Equipment::OldBackend);
    ModuleFixture fixture(backendOf(Equipment::OldBackend));
    connectEquipment(&fixture, Equipment::OldBackend);
    fixture.giveParameters();
    RunRoad road(&fixture);
    road.actAt(firstPlace(whole, Place::InDialog), [&](QDialog* inFront) {
        auto* table = inFront->findChild<QTableWidget*>();
        const int untaken = table->rowCount() - 1;
        QVERIFY(untaken > 0);
        fixture.module->about_to_exit_module();
        table->item(untaken, 0)->setCheckState(Qt::Unchecked);
        emit table->cellClicked(untaken, 0);
    });
    road.go();
    // What the user took away stays away, and nobody is asked anew.
    const QStringList queries = road.calls().filter(QStringLiteral("system version"));
    QCOMPARE(queries.size(), whole.calls.filter(QStringLiteral("system version")).size());
    const QStringList sent = sentRecords(road.calls());
    const QStringList all = sentRecords(whole.calls);
    QVERIFY(!sent.isEmpty());
    QVERIFY(sent.size() < all.size());
    QCOMPARE(sent, all.mid(0, sent.size()));
    QVERIFY(!exemplar());
    closeUpdateFiles();
}

void LeavingHost::getsNoEntriesBeforeItsExitIsOver()
{
    const Undisturbed whole = undisturbed(Equipment::OldBackend);
    ModuleFixture fixture(backendOf(Equipment::OldBackend));
    connectEquipment(&fixture, Equipment::OldBackend);
    fixture.giveParameters();
    RunRoad road(&fixture);
    road.actAt(firstPlace(whole, Place::InRun), [&](QDialog*) {
        fixture.module->exit_module();
        const ExpectedWarning warning("ZanUpdateModule: no menu entries, as exit_module() waits "
                                      "for an open window or a run");
        QVERIFY(fixture.module->get_gui_elements().isEmpty());
    });
    road.go();
    QVERIFY(road.hasActed());
    QCOMPARE(road.calls(), whole.calls);
    fixture.module->about_to_exit_module();
    checkTheNextStart(&fixture, whole);
}

void LeavingHost::mayForgetTheModuleMeanwhile()
{
    const Undisturbed whole = undisturbed(Equipment::OldBackend);
    ModuleFixture fixture(backendOf(Equipment::OldBackend));
    connectEquipment(&fixture, Equipment::OldBackend);
    fixture.giveParameters();
    RunRoad road(&fixture);
    road.actAt(firstPlace(whole, Place::InRun), [&](QDialog*) {
        fixture.module->exit_module();
        fixture.module.reset();
    });
    road.go();
    QCOMPARE(road.calls(), whole.calls);
    // As without an exit, the dialogs go with their parent.
    QVERIFY(fixture.dialog());
    fixture.window.reset();
    checkNothingIsLeft(fixture);
    closeUpdateFiles();
}

void LeavingHost::mayTakeItsWindowAwayBeforeAnythingIsBuilt()
{
    ModuleFixture fixture;
    fixture.giveParameters();
    fixture.window.reset();
    const QList<_GuiElement*> elements = fixture.module->get_gui_elements();
    QCOMPARE(elements.size(), 2);
    for (const _GuiElement* element : elements)
        QVERIFY(!element->content->parentWidget());
}

void LeavingHost::mayTakeItsWindowAwayAtRest()
{
    ModuleFixture fixture;
    fixture.giveParameters();
    const QList<_GuiElement*> elements = fixture.module->get_gui_elements();
    const QPointer<QWidget> viewer = elements.at(0)->content;
    const QPointer<QWidget> dialog = elements.at(1)->content;
    fixture.window.reset();
    QVERIFY(!viewer);
    QVERIFY(!dialog);
    QVERIFY(!fixture.preferences().isNull());
    QVERIFY(!elements.at(0)->content);
    QVERIFY(!elements.at(1)->content);
    fixture.module->exit_module();

    fixture.window = std::make_unique<QWidget>();
    fixture.giveParameters();
    QCOMPARE(fixture.module->get_gui_elements().size(), 2);
    QVERIFY(fixture.dialog());
}

// A parent that the host had named before is none of the dialogs' business.
void LeavingHost::isHeldUpByNoOtherWindow()
{
    ModuleFixture fixture;
    auto other = std::make_unique<QWidget>();
    fixture.giveParameters();
    fixture.module->set_param(QStringLiteral("ModuleParent"), QVariant::fromValue(other.get()));
    fixture.giveParameters();
    QCOMPARE(fixture.module->get_gui_elements().size(), 2);
    other.reset();
    QCOMPARE(fixture.module->get_gui_elements().size(), 2);
    QVERIFY(fixture.viewer());
    QVERIFY(fixture.dialog());
}

// ---- A dialog that is shown otherwise

void LeavingHost::mayShowTheDialogWithoutItsMenuEntry_data()
{
    QTest::addColumn<QString>("box");
    QTest::addColumn<std::function<void(QWidget*)>>("open");
    using Open = std::function<void(QWidget*)>;

    QTest::newRow("the reminder")
        << "To start the update process later," << Open([](QWidget* dialog) {
               dialog->findChild<QPushButton*>(QStringLiteral("pushButton_exit"))->click();
           });
    QTest::newRow("the first question")
        << "This action will install new firmware to your Controller."
        << Open([](QWidget* dialog) { QTest::keyClick(dialog, Qt::Key_F3); });
    QTest::newRow("a click on the table")
        << "You intend to update the Cascaded System only partially!" << Open([](QWidget* dialog) {
               auto* table = dialog->findChild<QTableWidget*>();
               table->item(0, 0)->setCheckState(Qt::Unchecked);
               const QRect cell = table->visualItemRect(table->item(0, 0));
               QTest::mouseClick(table->viewport(), Qt::LeftButton, Qt::NoModifier,
                                 cell.topRight() - QPoint(2, -2));
           });
}

// The start opens the dialog, and the user closes it.
static void fillTable(const QString& dialogName)
{
    ModalDriver driver;
    driver.expectDialog(dialogName, [](QDialog& opened) { opened.reject(); });
    fireSingleShots();
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
}

// Then no event loop of the plug-in's is below the box, but widgets that go on behind it.
void LeavingHost::mayShowTheDialogWithoutItsMenuEntry()
{
    QFETCH(const QString, box);
    QFETCH(const std::function<void(QWidget*)>, open);
    ModuleFixture fixture;
    connectEquipment(&fixture, Equipment::Cascade);
    fixture.giveParameters();
    const QPointer<QWidget> dialog = fixture.module->get_gui_elements().at(1)->content;
    fillTable(dialog->objectName());

    bool hasEnded = false;
    dialog->show();
    QTimer::singleShot(0, [&] {
        const auto* inFront = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        QVERIFY(inFront && inFront->text().startsWith(box));
        fixture.module->exit_module();
        QVERIFY(dialog);
        hasEnded = true;
    });
    open(dialog);
    QVERIFY(hasEnded);
    QTRY_VERIFY_WITH_TIMEOUT(!dialog, patienceMs);
    checkNothingIsLeft(fixture);
}

ZAN_WIDGET_TEST_MAIN(LeavingHost)

#include "tst_leavinghost.moc"
