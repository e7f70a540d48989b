#include "runroad.h"

#include <ZanUpdateModule2GSettingsdlg.h>
#include <imagefixtures.h>
#include <widgettestmain.h>

#include <QApplication>
#include <QDir>
#include <QMap>
#include <QMessageBox>
#include <QPushButton>
#include <QWindow>

#include <unistd.h>

namespace {

/// What is connected, and how its update ends if nothing comes in between.
enum class Equipment
{
    Cascade,      ///< a master two releases behind and two slaves one release behind
    Cameras,      ///< two cameras, of which one has to be searched for afterwards
    RefusedBlock, ///< a master and a slave that refuse records; the run goes on with the rest
    OldBackend,   ///< one controller, which is restarted by hand
};

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

/// An update on its undisturbed road, which every other one is measured by.
struct Undisturbed
{
    QVector<Place> places;
    QStringList calls;
};

} // namespace

Q_DECLARE_METATYPE(Equipment)
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

// ---- Equipment

// No two records of an image are alike, nor two images'.
static QVector<ImageRecord> records(int image, int block, int count)
{
    QVector<ImageRecord> records;
    for (int i = 0; i < count; ++i) {
        QByteArray bytes;
        for (const int value : {image, block, i % 256, i / 256})
            bytes += static_cast<char>(value);
        records += ImageRecord(bytes);
    }
    return records;
}

static ControllerImageBlock withRecords(ControllerImageBlock block,
                                        const QVector<ImageRecord>& records)
{
    block.records = records;
    return block;
}

static void deliverReleases(const ModuleFixture& fixture, int firstLength)
{
    const VersionInfo first(3, 1, 0);
    const VersionInfo second(3, 2, 0);
    fixture.delivered.deliverUpdate(
        QStringLiteral("first"),
        controllerImageBytes(releaseImage(
            first, VersionInfo(1, 1),
            {withRecords(firmwareBlock(VersionInfo(3, 0, 0), VersionInfo(3, 0, 99)),
                         records(1, 1, firstLength)),
             withRecords(systemBlock(VersionInfo(1, 0), VersionInfo(1, 0)), records(1, 2, 2))})));
    fixture.delivered.deliverUpdate(
        QStringLiteral("second"),
        controllerImageBytes(releaseImage(
            second, VersionInfo(1, 2),
            {withRecords(firmwareBlock(first, VersionInfo(3, 1, 99)), records(2, 1, 3)),
             withRecords(systemBlock(VersionInfo(1, 1), VersionInfo(1, 1)), records(2, 2, 1))})));
}

// The slaves are one release ahead of the master.
static void connectControllers(ModuleFixture* fixture, int slaveCount, int firstLength = 5)
{
    ScriptedController master;
    master.board = "\"Fujitsu D3231\"";
    scriptMaster(&fixture->channel, master);
    QList<ScriptedSlave> slaves;
    for (int i = 1; i <= slaveCount; ++i) {
        ScriptedSlave slave;
        slave.address = "10.0.0." + QByteArray::number(i);
        slave.controller.hostname = "slave" + QByteArray::number(i);
        slave.controller.serial = 600 + i;
        slave.controller.pt = "v3.1.0 2024-05-06";
        slave.controller.ct = "v1.1";
        slaves += slave;
    }
    scriptSlaves(&fixture->channel, slaves);
    deliverReleases(*fixture, firstLength);
}

static void connectCameras(ModuleFixture* fixture)
{
    QList<ScriptedCamera> cameras;
    for (const int model : {0x0901, 0x0c01}) {
        CameraUpdateFile file = cameraFile({static_cast<quint16>(model)}, VersionInfo(1, 1, 0));
        file.images = {file.images.first(), file.images.first()};
        file.images[0].records = records(model, 1, 3);
        file.images[1].records = records(model, 2, 2);
        ScriptedCamera camera;
        camera.model = "0x0" + QByteArray::number(model, 16);
        cameras += camera;
        fixture->delivered.deliverUpdate(QString::fromLatin1(camera.model) +
                                             QLatin1String(".VX2znimg"),
                                         cameraUpdateBytes(file));
    }
    scriptCameras(&fixture->channel, cameras);
}

static void connectEquipment(ModuleFixture* fixture, Equipment equipment)
{
    fixture->channel.on("system extra number_of_hardware").reply(0);
    fixture->channel.on("status active").reply("");
    switch (equipment) {
    case Equipment::Cascade:
        // Long enough that events are served in the middle of a block as well.
        connectControllers(fixture, 2, 1002);
        break;
    case Equipment::Cameras:
        connectCameras(fixture);
        break;
    case Equipment::RefusedBlock:
        connectControllers(fixture, 1);
        fixture->channel.onPrefix("system update 3 2 ").fail();
        break;
    case Equipment::OldBackend:
        connectControllers(fixture, 0);
        break;
    }
}

static BackendVersions backendOf(Equipment equipment)
{
    const VersionInfo protocol =
        equipment == Equipment::OldBackend ? VersionInfo(0, 16) : VersionInfo(1, 23);
    return BackendVersions(VersionInfo(3, 0, 0), protocol, VersionInfo(1, 0),
                           QStringLiteral("ZAN"));
}

// Blocks that went out leave their file open, as the contract with hosts has it, which adds up over
// so many runs.
static void closeUpdateFiles()
{
    const QDir open(QStringLiteral("/proc/self/fd"));
    for (const QFileInfo& file : open.entryInfoList(QDir::Files | QDir::System)) {
        if (file.symLinkTarget().contains(QLatin1String("/controller_update/")))
            ::close(file.fileName().toInt());
    }
}

static Undisturbed undisturbed(Equipment equipment)
{
    static QMap<Equipment, Undisturbed> known;
    if (!known.contains(equipment)) {
        ModuleFixture fixture(backendOf(equipment));
        connectEquipment(&fixture, equipment);
        fixture.giveParameters();
        RunRoad road(&fixture);
        road.go();
        known.insert(equipment, {road.places(), road.calls()});
        closeUpdateFiles();
    }
    return known.value(equipment);
}

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

static const QVector<QPair<Equipment, const char*>>& equipments()
{
    static const QVector<QPair<Equipment, const char*>> all = {
        {Equipment::Cascade, "a cascade"},
        {Equipment::Cameras, "cameras"},
        {Equipment::RefusedBlock, "a refused block"},
        {Equipment::OldBackend, "an old backend"},
    };
    return all;
}

// ---- What went out

static QString textOf(const QString& call)
{
    return call.section(QLatin1Char('"'), 1, 1);
}

static bool isRecord(const QString& call)
{
    const QString text = textOf(call);
    return text.startsWith(QLatin1String("system update ")) ||
           text.startsWith(QLatin1String("system ctupdt ")) ||
           text.startsWith(QLatin1String("vornix2 set camera update "));
}

// The records, each behind the controller that it went to.
static QStringList sentRecords(const QStringList& calls)
{
    static const QString redirection = QStringLiteral("system redirect_update ");
    QString target;
    QStringList sent;
    for (const QString& call : calls) {
        if (textOf(call).startsWith(redirection))
            target = textOf(call).mid(redirection.size());
        else if (isRecord(call))
            sent += target + QLatin1Char(' ') + textOf(call);
    }
    return sent;
}

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

// The number of the place at which the run has its last confirmation before it.
static int lastBoxBeforeTheRun(const QVector<Place>& places)
{
    int last = 0;
    while (places.at(last).kind != Place::InRun)
        ++last;
    return last - 1;
}

// ---- The tests

void InterruptedRun::serveEventsAtAllThesePlaces_data()
{
    QTest::addColumn<Equipment>("equipment");
    QTest::addColumn<QVector<int>>("kinds"); // of the places, in the order of Place::Kind

    QTest::newRow("a cascade") << Equipment::Cascade << QVector<int>{1, 3, 0, 14};
    QTest::newRow("cameras") << Equipment::Cameras << QVector<int>{1, 3, 2, 10};
    QTest::newRow("a refused block") << Equipment::RefusedBlock << QVector<int>{2, 4, 0, 6};
    QTest::newRow("an old backend") << Equipment::OldBackend << QVector<int>{1, 3, 0, 7};
}

void InterruptedRun::serveEventsAtAllThesePlaces()
{
    QFETCH(const Equipment, equipment);
    QVector<int> kinds(4, 0);
    for (const Place& place : undisturbed(equipment).places)
        ++kinds[place.kind];
    QTEST(kinds, "kinds");
    QStringList sent = sentRecords(undisturbed(equipment).calls);
    QVERIFY(sent.removeDuplicates() == 0);
}

void InterruptedRun::endsInOrder_data()
{
    QTest::addColumn<Equipment>("equipment");
    QTest::addColumn<Interruption>("interruption");
    QTest::addColumn<int>("place");

    for (const auto& equipment : equipments()) {
        const QVector<Place> places = undisturbed(equipment.first).places;
        for (const auto& interruption : interruptions()) {
            for (int i = 0; i < places.size(); ++i) {
                const QString name = QStringLiteral("%1: %2 at place %3, %4")
                                         .arg(equipment.second, interruption.second)
                                         .arg(i)
                                         .arg(places.at(i).name);
                QTest::newRow(qPrintable(name)) << equipment.first << interruption.first << i;
            }
        }
    }
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
    const bool isConfirmed = place > lastBoxBeforeTheRun(whole.places);
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

static void checkWhatIsLeft(const ModuleFixture& fixture)
{
    const ZanUpdateModule2GSettingsdlg* dialog = fixture.dialog();
    for (const char* button : {"pushButton_update", "pushButton_exit"})
        QVERIFY(dialog->findChild<QPushButton*>(QLatin1String(button))->isEnabled());
    for (const QWidget* window : QApplication::topLevelWidgets())
        QVERIFY(window == dialog || !window->inherits("QDialog") || !window->isVisible());
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
    ModuleFixture fixture(backendOf(equipment));
    connectEquipment(&fixture, equipment);
    fixture.giveParameters();
    fixture.window->show();
    RunRoad road(&fixture);
    road.actAt(place, [&](QDialog* inFront) { interrupt(interruption, &fixture, inFront); });
    road.go();
    QVERIFY(road.hasActed());
    checkWhatWentOut(road, undisturbed(equipment), interruption, place);
    if (isQuit(interruption))
        QCOMPARE(countOf(road.calls(), "system reboot"), 0);
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
    QCOMPARE(again.calls(), undisturbed(equipment).calls);
    closeUpdateFiles();
}

ZAN_WIDGET_TEST_MAIN(InterruptedRun)

#include "tst_interruptedrun.moc"
