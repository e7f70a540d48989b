#include "modulefixture.h"

#include <ZanUpdateModule2GSettingsdlg.h>
#include <imagefixtures.h>
#include <modaldriver.h>
#include <widgettestmain.h>

#include <QFile>
#include <QMap>
#include <QTableWidget>

#include <sys/inotify.h>
#include <unistd.h>

namespace {

constexpr int IMAGES = 12;
constexpr int FILES = 500;

/// Who is connected, and how far behind.
struct Installation
{
    VersionInfo protocol = VersionInfo(1, 23);
    int slaves = 64;
    int availableEvery = 1; ///< each slave whose number this divides is available
    bool areControllersBehind = true;
    int cameras = 40;
    bool areCamerasServed = true; ///< by both camera files
    bool areCamerasBehind = true;
};

/// Counts how often the files of a folder are opened.
class OpenedFiles
{
public:
    explicit OpenedFiles(const QString& folder) : m_queue(inotify_init1(IN_NONBLOCK))
    {
        // With the closing as well, or two openings in a row would count as one.
        if (inotify_add_watch(m_queue, QFile::encodeName(folder).constData(),
                              IN_OPEN | IN_CLOSE_NOWRITE) < 0)
            qFatal("cannot watch %s", qPrintable(folder));
    }
    ~OpenedFiles() { ::close(m_queue); }
    OpenedFiles(const OpenedFiles&) = delete;
    OpenedFiles& operator=(const OpenedFiles&) = delete;

    /// Since the object was made or this was last called, by file name.
    QMap<QString, int> take()
    {
        QMap<QString, int> counts;
        QByteArray events(65536, Qt::Uninitialized);
        ssize_t size = 0;
        while ((size = ::read(m_queue, events.data(), static_cast<size_t>(events.size()))) > 0)
            count(events.left(static_cast<int>(size)), &counts);
        return counts;
    }

private:
    static void count(const QByteArray& events, QMap<QString, int>* counts)
    {
        for (int at = 0; at < events.size();) {
            inotify_event event;
            memcpy(&event, events.constData() + at, sizeof event);
            const char* name = events.constData() + at + sizeof event;
            if ((event.mask & IN_OPEN) != 0 && (event.mask & IN_ISDIR) == 0)
                ++(*counts)[QFile::decodeName(name)];
            at += static_cast<int>(sizeof event + event.len);
        }
    }

    int m_queue;
};

} // namespace

Q_DECLARE_METATYPE(Installation)

/// What a large installation costs when the frontend starts and when the dialog opens.
class Scale : public QObject
{
    Q_OBJECT

private slots:
    void asksWhatItMustAndNoMore_data();
    void asksWhatItMustAndNoMore();
};

// ---- The installation

static QByteArray addressOf(int slave)
{
    return "10.0.0." + QByteArray::number(slave);
}

static bool isAvailable(const Installation& installation, int slave)
{
    return slave % installation.availableEvery == 0;
}

static void connectControllers(ScriptedChannel* channel, const Installation& installation)
{
    ScriptedController controller;
    controller.pt = installation.areControllersBehind ? "v3.0.0" : "v3.12.0";
    scriptMaster(channel, controller);
    QList<ScriptedSlave> slaves;
    for (int number = 1; number <= installation.slaves; ++number) {
        ScriptedSlave slave;
        slave.address = addressOf(number);
        slave.controller = controller;
        slave.available = isAvailable(installation, number) ? "yes" : "no";
        slaves += slave;
    }
    scriptSlaves(channel, slaves);
}

static void connectCameras(ScriptedChannel* channel, const Installation& installation)
{
    ScriptedCamera camera;
    camera.model = installation.areCamerasServed ? "0x0901" : "0x0c01";
    camera.version = installation.areCamerasBehind ? "v1.0.0" : "v1.2.0";
    QList<ScriptedCamera> cameras;
    for (int number = 1; number <= installation.cameras; ++number)
        cameras += camera;
    scriptCameras(channel, cameras);
}

// A chain of releases, two camera files and what else may lie there. How often each is opened.
static QMap<QString, int> deliverFiles(const ProgramFolder& folder)
{
    QMap<QString, int> openings;
    const auto deliver = [&](const QString& name, const QByteArray& bytes, int count) {
        folder.deliverUpdate(name, bytes);
        openings.insert(name, count);
    };
    for (int i = 1; i <= IMAGES; ++i) {
        const ControllerImageBlock block =
            firmwareBlock(VersionInfo(3, i - 1, 0), VersionInfo(3, i - 1, 99));
        deliver(
            QStringLiteral("release%1").arg(i),
            controllerImageBytes(releaseImage(VersionInfo(3, i, 0), VersionInfo(1, 0), {block})),
            1);
    }
    // First looked at like every file, then read for its name.
    for (int i = 1; i <= 2; ++i) {
        deliver(QStringLiteral("camera%1.VX2znimg").arg(i),
                cameraUpdateBytes(cameraFile({0x0901}, VersionInfo(1, i, 0))), 2);
    }
    while (openings.size() < FILES)
        deliver(QStringLiteral("other%1").arg(openings.size()), "neither of both", 1);
    return openings;
}

// ---- What it has to cost

static QString query(const QString& text)
{
    return QStringLiteral("get_string \"%1\"").arg(text);
}

static QString numberQuery(const QString& text)
{
    return QStringLiteral("get_int \"%1\"").arg(text);
}

static QString numbered(const char* text, int number)
{
    return query(QLatin1String(text) + QString::number(number).rightJustified(2, QLatin1Char('0')));
}

static QStringList modelQueries(const QString& suffix)
{
    return {numberQuery(QStringLiteral("system model") + suffix),
            query(QStringLiteral("system model_description") + suffix)};
}

static QStringList versionQueries(const QString& suffix)
{
    return {query(QStringLiteral("system hostname") + suffix),
            query(QStringLiteral("system controller_version") + suffix),
            query(QStringLiteral("system version") + suffix)};
}

static QStringList callsForMaster(const VersionInfo& protocol)
{
    QStringList calls = versionQueries(QString()) + modelQueries(QString());
    if (protocol >= VersionInfo(1, 7))
        calls += numberQuery(QStringLiteral("system controller_serial"));
    if (protocol >= VersionInfo(0, 15))
        calls += query(QStringLiteral("system extra motherboard"));
    return calls;
}

static QStringList callsForSlave(const Installation& installation, int number)
{
    const QString address = QString::fromLatin1(addressOf(number));
    const QString suffix = QStringLiteral("_slave ") + address;
    QStringList calls = {numbered("cascade connected_slave d", number),
                         query(QStringLiteral("cascade connected_slave_available ") + address)};
    if (!isAvailable(installation, number))
        return calls;
    const bool isModelKnown = installation.protocol >= VersionInfo(1, 23);
    calls += versionQueries(suffix) + modelQueries(isModelKnown ? suffix : QString());
    return calls +
           QStringList{query(QStringLiteral("cascade connected_slave_controller ") + address)};
}

static QStringList callsForControllers(const Installation& installation)
{
    QStringList calls = callsForMaster(installation.protocol);
    if (installation.protocol < VersionInfo(1, 7))
        return calls;
    calls += numberQuery(QStringLiteral("cascade number_of_connected_slaves"));
    for (int number = 1; number <= installation.slaves; ++number)
        calls += callsForSlave(installation, number);
    return calls;
}

// Once for each file that serves the camera.
static QStringList callsForRows(const Installation& installation)
{
    const QString model = query(QStringLiteral("camera model_desc 0x0901"));
    return installation.areCamerasBehind ? QStringList{model, model} : QStringList{};
}

static QStringList callsForCameras(const Installation& installation)
{
    QStringList calls{numberQuery(QStringLiteral("camera number_of_cameras"))};
    for (int number = 1; number <= installation.cameras; ++number) {
        calls += numbered("camera camera c", number);
        if (installation.areCamerasServed)
            calls += QStringList{numbered("camera version c", number)} + callsForRows(installation);
    }
    return calls;
}

// The question whether any camera is behind ends with the first one that is.
static QStringList callsForFirstCameraBehind(const Installation& installation)
{
    if (installation.areCamerasServed && installation.areCamerasBehind)
        return callsForCameras(installation).mid(0, 3);
    return callsForCameras(installation);
}

static QStringList callsOfOpening(const Installation& installation)
{
    QStringList calls = callsForControllers(installation);
    if (!installation.areControllersBehind)
        calls += callsForCameras(installation);
    return calls;
}

static QStringList callsOfStart(const Installation& installation)
{
    QStringList calls{QStringLiteral("register_receiver UpdateModule")};
    calls += callsForControllers(installation);
    // The controllers are not yet known to need anything, but for those of old backends.
    const bool hasRows =
        installation.areControllersBehind && installation.protocol < VersionInfo(1, 7);
    if (!hasRows)
        calls += callsForCameras(installation);
    if (!installation.areControllersBehind)
        calls += callsForFirstCameraBehind(installation);
    const bool areCamerasDue = installation.areCamerasServed && installation.areCamerasBehind;
    if (installation.areControllersBehind || areCamerasDue)
        calls += query(QStringLiteral("system net"));
    return calls;
}

static int rowsOf(const Installation& installation)
{
    if (installation.areControllersBehind) {
        int controllers = 1;
        for (int slave = 1; slave <= installation.slaves; ++slave) {
            if (installation.protocol >= VersionInfo(1, 7) && isAvailable(installation, slave))
                ++controllers;
        }
        return controllers * IMAGES;
    }
    const bool areCamerasDue = installation.areCamerasServed && installation.areCamerasBehind;
    return areCamerasDue ? installation.cameras * 2 : 0;
}

// ---- The test

void Scale::asksWhatItMustAndNoMore_data()
{
    QTest::addColumn<Installation>("installation");
    QTest::addColumn<int>("callCount"); // of an opening, worked out by hand

    const auto add = [](const char* name, int callCount,
                        const std::function<void(Installation&)>& change) {
        Installation installation;
        change(installation);
        QTest::newRow(name) << installation << callCount;
    };
    add("a master alone", 8, [](Installation& i) { i.slaves = 0; });
    add("a slave", 8 + 8, [](Installation& i) { i.slaves = 1; });
    add("8 slaves", 8 + 8 * 8, [](Installation& i) { i.slaves = 8; });
    add("64 slaves", 8 + 64 * 8, [](Installation&) {});
    add("64 slaves, of which every other one is away", 8 + 32 * 2 + 32 * 8,
        [](Installation& i) { i.availableEvery = 2; });
    add("64 slaves of unknown model", 8 + 64 * 8,
        [](Installation& i) { i.protocol = VersionInfo(1, 22); });
    add("64 slaves on a backend without cascades", 6,
        [](Installation& i) { i.protocol = VersionInfo(1, 6); });
    add("64 slaves on a backend without mainboards", 5,
        [](Installation& i) { i.protocol = VersionInfo(0, 14); });
    add("as many slaves as two digits can number", 8 + 99 * 8,
        [](Installation& i) { i.slaves = 99; });
    add("more slaves than two digits can number", 8 + 120 * 8,
        [](Installation& i) { i.slaves = 120; });
    add("64 slaves up to date and 40 cameras behind", 8 + 64 * 8 + 1 + 40 * 4,
        [](Installation& i) { i.areControllersBehind = false; });
    add("40 cameras up to date", 8 + 64 * 8 + 1 + 40 * 2, [](Installation& i) {
        i.areControllersBehind = false;
        i.areCamerasBehind = false;
    });
    add("40 cameras that no file is for", 8 + 64 * 8 + 1 + 40, [](Installation& i) {
        i.areControllersBehind = false;
        i.areCamerasServed = false;
    });
    add("more cameras than two digits can number", 8 + 1 + 120 * 4, [](Installation& i) {
        i.areControllersBehind = false;
        i.slaves = 0;
        i.cameras = 120;
    });
}

void Scale::asksWhatItMustAndNoMore()
{
    QFETCH(const Installation, installation);
    ModuleFixture fixture(BackendVersions(VersionInfo(3, 0, 0), installation.protocol,
                                          VersionInfo(1, 0), QStringLiteral("ZAN")));
    connectControllers(&fixture.channel, installation);
    connectCameras(&fixture.channel, installation);
    fixture.channel.on("system net").reply("static");
    const QMap<QString, int> openings = deliverFiles(fixture.delivered);
    OpenedFiles opened(QCoreApplication::applicationDirPath() +
                       QStringLiteral("/controller_update"));
    fixture.giveParameters();

    fixture.module->get_gui_elements();
    QCOMPARE(fixture.channel.takeLog(), callsOfStart(installation));
    QCOMPARE(opened.take(), openings);

    // The second opening costs what the first one does.
    for (int opening = 1; opening <= 2; ++opening) {
        ModalDriver driver;
        driver.expectDialog(fixture.dialog()->objectName(),
                            [](QDialog& dialog) { dialog.reject(); });
        fixture.dialog()->update_and_exec();
        QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
        const QStringList calls = fixture.channel.takeLog();
        QCOMPARE(calls, callsOfOpening(installation));
        QTEST(calls.size(), "callCount");
        QCOMPARE(fixture.dialog()->findChild<QTableWidget*>()->rowCount(), rowsOf(installation));
        QCOMPARE(opened.take(), (QMap<QString, int>()));
    }
}

ZAN_WIDGET_TEST_MAIN(Scale)

#include "tst_scale.moc"
