#include "modulefixture.h"

#include <ZanUpdateModule2GSettingsdlg.h>
#include <imagefixtures.h>
#include <newfeaturedialog.h>
#include <zanmoduleserver.h>

#include <QAbstractEventDispatcher>
#include <QFile>
#include <QPointer>
#include <QtTest>

#include <algorithm>
#include <utility>
#include <vector>

// Qt keeps the object behind QTimer::singleShot() as a child of the thread's event dispatcher until
// what it calls has returned.
static QObjectList singleShots()
{
    QObjectList found;
    for (QObject* child : QAbstractEventDispatcher::instance()->children()) {
        if (qstrcmp(child->metaObject()->className(), "QSingleShotTimer") == 0)
            found += child;
    }
    return found;
}

ModuleFixture::ModuleFixture(const BackendVersions& backend)
    : backend(backend), window(std::make_unique<QWidget>()),
      module(std::make_unique<ZanUpdateModule>())
{
    qputenv("HOME", QFile::encodeName(m_home.path()));
    // Other users may look into it, as into most homes.
    QFile::setPermissions(m_home.path(), QFile::Permissions(0x7755));
    scriptMaster(&channel, ScriptedController());
    scriptSlaves(&channel, {});
    scriptCameras(&channel, {ScriptedCamera()});
}

ModuleFixture::~ModuleFixture()
{
    if (module)
        module->exit_module();
    ZanModuleServer::ReleaseExemplar();
    // Armed for dialogs that are gone.
    qDeleteAll(singleShots());
}

void ModuleFixture::deliverControllerImage(bool isMasterBehind)
{
    const VersionInfo newPt(3, 1, 0);
    const ControllerImage image = releaseImage(
        newPt, VersionInfo(1, 0), {firmwareBlock(VersionInfo(0, 0, 0), VersionInfo(3, 0, 99))});
    delivered.deliverUpdate(QStringLiteral("controller.img"), controllerImageBytes(image));

    ScriptedController master;
    master.pt = isMasterBehind ? "v3.0.0 2024-05-06" : "v3.1.0 2024-05-06";
    scriptMaster(&channel, master);
}

void ModuleFixture::deliverCameraFile(bool isCameraBehind)
{
    delivered.deliverUpdate(QStringLiteral("camera.VX2znimg"),
                            cameraUpdateBytes(cameraFile({0x0901}, VersionInfo(1, 1, 0))));
    ScriptedCamera camera;
    camera.version = isCameraBehind ? "v1.0.0" : "v1.1.0";
    scriptCameras(&channel, {camera});
}

void ModuleFixture::deliverNotes() const
{
    for (const char* name : {"v3_0_0.html", "v3_1_0.html"})
        delivered.deliverNote(QLatin1String(name), "<html><body><p>text</p></body></html>");
}

void ModuleFixture::giveParameters(bool isObserver)
{
    module->set_param(QStringLiteral("CommandManager"), QVariant::fromValue<IOManager*>(&channel));
    module->set_param(QStringLiteral("ModuleParent"), QVariant::fromValue(window.get()));
    module->set_param(QStringLiteral("BackendVersions"), QVariant::fromValue(&backend));
    module->set_param(QStringLiteral("ObserverMode"), isObserver);
}

NewFeatureDialog* ModuleFixture::viewer() const
{
    return window ? window->findChild<NewFeatureDialog*>() : nullptr;
}

ZanUpdateModule2GSettingsdlg* ModuleFixture::dialog() const
{
    return window ? window->findChild<ZanUpdateModule2GSettingsdlg*>() : nullptr;
}

QString ModuleFixture::preferencesFile() const
{
    return m_home.path(
        QStringLiteral(".ORV/VORNIX3/modules/zanupdate/v2.0.0/config/zanupdate-preferences.xml"));
}

QByteArray ModuleFixture::preferences() const
{
    QFile file(preferencesFile());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QStringList masterQueries()
{
    return {QStringLiteral("get_string \"system hostname\""),
            QStringLiteral("get_string \"system controller_version\""),
            QStringLiteral("get_string \"system version\""),
            QStringLiteral("get_int \"system model\""),
            QStringLiteral("get_string \"system model_description\""),
            QStringLiteral("get_int \"system controller_serial\""),
            QStringLiteral("get_string \"system extra motherboard\""),
            QStringLiteral("get_int \"cascade number_of_connected_slaves\"")};
}

QStringList cameraQueries()
{
    return {QStringLiteral("get_int \"camera number_of_cameras\""),
            QStringLiteral("get_string \"camera camera c01\""),
            QStringLiteral("get_string \"camera version c01\"")};
}

QStringList cameraRowQuery()
{
    return {QStringLiteral("get_string \"camera model_desc 0x0901\"")};
}

QVector<int> armedSingleShots()
{
    QVector<int> delays;
    for (QObject* timer : singleShots()) {
        for (const auto& info : QAbstractEventDispatcher::instance()->registeredTimers(timer))
            delays += info.interval;
    }
    std::sort(delays.begin(), delays.end());
    return delays;
}

void fireSingleShots()
{
    using Timer = std::pair<int, QPointer<QObject>>;
    std::vector<Timer> timers;
    for (QObject* timer : singleShots()) {
        const auto infos = QAbstractEventDispatcher::instance()->registeredTimers(timer);
        if (!infos.isEmpty())
            timers.emplace_back(infos.first().interval, timer);
    }
    std::sort(timers.begin(), timers.end(),
              [](const Timer& a, const Timer& b) { return a.first < b.first; });
    for (const Timer& timer : timers) {
        QTimerEvent event(0); // it does not look at the number
        if (timer.second)
            QCoreApplication::sendEvent(timer.second, &event);
    }
}

bool waitForSingleShots()
{
    return QTest::qWaitFor([] { return singleShots().isEmpty(); }, patienceMs);
}
