#include "runequipment.h"

#include <ZanUpdateModule2GSettingsdlg.h>
#include <newfeaturedialog.h>
#include <widgettestmain.h>

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QWindow>

namespace {

/// What comes in between.
enum class Interruption
{
    Escape,
    CloseButton,
    HiddenKey,
    Quit,
    LostConnection,
    HostWindow,
    EscapeAndHostWindow,
};

} // namespace

Q_DECLARE_METATYPE(Interruption)

/// Every interruption at every moment of a run at which events are served.
class InterruptedRun : public QObject
{
    Q_OBJECT

private slots:
    void serveEventsAtAllThesePlaces_data();
    void serveEventsAtAllThesePlaces();
    void endsInOrder_data();
    void endsInOrder();
};

// ---- Interruptions

static void interrupt(Interruption interruption, ModuleFixture* fixture, QDialog* inFront)
{
    QWindow* const hostWindow = fixture->window->windowHandle();
    QWindow* const window = inFront ? inFront->windowHandle() : hostWindow;
    switch (interruption) {
    case Interruption::Escape:
        QTest::keyClick(window, Qt::Key_Escape);
        break;
    case Interruption::CloseButton:
        window->close();
        break;
    case Interruption::HiddenKey:
        QTest::keyClick(window, Qt::Key_F3);
        break;
    case Interruption::Quit:
        QCoreApplication::quit();
        break;
    case Interruption::LostConnection:
        fixture->channel.die();
        break;
    case Interruption::HostWindow:
        fixture->window->close();
        break;
    case Interruption::EscapeAndHostWindow:
        QTest::keyClick(window, Qt::Key_Escape);
        hostWindow->close();
        break;
    }
    // The quit that follows the host's last window comes before anything else that the user does.
    QCoreApplication::sendPostedEvents(qApp, QEvent::Quit);
}

static const QVector<QPair<Interruption, const char*>>& interruptions()
{
    static const QVector<QPair<Interruption, const char*>> all = {
        {Interruption::Escape, "Escape"},
        {Interruption::CloseButton, "the close button"},
        {Interruption::HiddenKey, "F3"},
        {Interruption::Quit, "a quit"},
        {Interruption::LostConnection, "a lost connection"},
        {Interruption::HostWindow, "the host's window closing"},
        {Interruption::EscapeAndHostWindow, "Escape and the host's window"},
    };
    return all;
}

// ---- What went out

static bool isInOrderOf(const QStringList& sent, const QStringList& whole)
{
    int from = 0;
    for (const QString& record : sent) {
        from = whole.indexOf(record, from) + 1;
        if (from == 0)
            return false;
    }
    return true;
}

static int countOf(const QStringList& calls, const char* part)
{
    return calls.filter(QLatin1String(part)).size();
}

// ---- The tests

void InterruptedRun::serveEventsAtAllThesePlaces_data()
{
    QTest::addColumn<Equipment>("equipment");
    QTest::addColumn<QVector<int>>("kinds"); // of the places, in the order of Place::Kind

    QTest::newRow("a cascade") << Equipment::Cascade << QVector<int>{1, 3, 0, 0, 14};
    QTest::newRow("cameras") << Equipment::Cameras << QVector<int>{1, 3, 2, 0, 10};
    QTest::newRow("a refused block") << Equipment::RefusedBlock << QVector<int>{2, 4, 0, 0, 6};
    QTest::newRow("an old backend") << Equipment::OldBackend << QVector<int>{1, 3, 0, 0, 7};
    QTest::newRow("a factory address") << Equipment::FactoryAddress << QVector<int>{2, 4, 0, 0, 7};
    QTest::newRow("nothing to update") << Equipment::UpToDate << QVector<int>{0, 0, 0, 1, 0};
}

void InterruptedRun::serveEventsAtAllThesePlaces()
{
    QFETCH(const Equipment, equipment);
    QVector<int> kinds(5, 0);
    for (const Place& place : undisturbed(equipment).places)
        ++kinds[place.kind];
    QTEST(kinds, "kinds");
    QStringList sent = sentRecords(undisturbed(equipment).calls);
    QVERIFY(sent.removeDuplicates() == 0);
}

void InterruptedRun::endsInOrder_data()
{
    addRowsOfPlaces("interruption", interruptions());
}

// Where the dialog waits again behind a failed run, the hidden key starts another one.
static bool startsAnother(const Place& place, Interruption interruption, bool isConfirmed)
{
    return interruption == Interruption::HiddenKey && place.kind == Place::InDialog && isConfirmed;
}

static void checkWhatWentOut(const RunRoad& road, const Undisturbed& whole,
                             Interruption interruption, int place)
{
    QStringList sent = sentRecords(road.calls());
    const QStringList all = sentRecords(whole.calls);
    const QStringList before = sentRecords(whole.calls.mid(0, whole.places.at(place).callCount));
    const bool isConfirmed = place > whole.lastBoxBeforeTheRun();
    if (interruption == Interruption::LostConnection) {
        QCOMPARE(sent.mid(0, before.size()), before);
        QVERIFY(isInOrderOf(sent, all));
    } else if (startsAnother(whole.places.at(place), interruption, isConfirmed)) {
        QCOMPARE(sent, all + all);
        return;
    } else if (isConfirmed || interruption == Interruption::HiddenKey) {
        QCOMPARE(sent, all);
    } else {
        QCOMPARE(sent, QStringList());
    }
    QVERIFY(sent.removeDuplicates() == 0);
    QCOMPARE(countOf(road.calls(), "poll_reply"), countOf(road.calls(), "prepare_reply"));
    for (const char* command : {"system reboot", "vornix2 reinit", "AppReadyToShutdown"})
        QVERIFY(countOf(road.calls(), command) <= countOf(whole.calls, command));
}

// Whoever closes the warning about the address has answered it, and the road goes on.
static bool isAnswer(const Place& place, Interruption interruption)
{
    return place.kind == Place::InBox &&
           place.name.startsWith(QLatin1String("The Controller's network")) &&
           (interruption == Interruption::Escape || interruption == Interruption::CloseButton ||
            interruption == Interruption::EscapeAndHostWindow);
}

static void checkWhatIsLeft(const ModuleFixture& fixture)
{
    const ZanUpdateModule2GSettingsdlg* dialog = fixture.dialog();
    for (const char* button : {"pushButton_update", "pushButton_exit"})
        QVERIFY(dialog->findChild<QPushButton*>(QLatin1String(button))->isEnabled());
    for (const QWidget* window : QApplication::topLevelWidgets()) {
        const bool isOurs =
            window == dialog || window == static_cast<const QWidget*>(fixture.viewer());
        QVERIFY(isOurs || !window->inherits("QDialog") || !window->isVisible());
    }
}

static bool isQuit(Interruption interruption)
{
    return interruption == Interruption::Quit || interruption == Interruption::HostWindow ||
           interruption == Interruption::EscapeAndHostWindow;
}

void InterruptedRun::endsInOrder()
{
    QFETCH(const Equipment, equipment);
    QFETCH(const Interruption, interruption);
    QFETCH(const int, place);
    const Undisturbed whole = undisturbed(equipment);
    ModuleFixture fixture(backendOf(equipment));
    connectEquipment(&fixture, equipment);
    fixture.giveParameters();
    fixture.window->show();
    RunRoad road(&fixture);
    road.actAt(place, [&](QDialog* inFront) { interrupt(interruption, &fixture, inFront); });
    road.go();
    QVERIFY(road.hasActed());
    if (isAnswer(whole.places.at(place), interruption)) {
        QCOMPARE(road.calls(), whole.calls);
    } else {
        checkWhatWentOut(road, whole, interruption, place);
        if (isQuit(interruption))
            QCOMPARE(countOf(road.calls(), "system reboot"), 0);
    }
    checkWhatIsLeft(fixture);
    if (QTest::currentTestFailed())
        return;

    fixture.module->about_to_exit_module();
    fixture.module->exit_module();
    QCOMPARE(fixture.window->findChildren<QDialog*>().size(), 0);

    // The host's next start finds everything in order.
    fixture.channel.recover();
    RunRoad again(&fixture);
    again.go();
    QCOMPARE(again.calls(), whole.calls);
    closeUpdateFiles();
}

ZAN_WIDGET_TEST_MAIN(InterruptedRun)

#include "tst_interruptedrun.moc"
