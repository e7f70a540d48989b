#include "devicetables.h"

#include <QLocale>

static QString tr(const char* text)
{
    return QObject::tr(text);
}

// Without the date that may stand behind it.
static QString shortVersion(const QString& reported)
{
    return reported.section(QLatin1Char(' '), 0, 0);
}

static QString staged(const ControllerState& controller)
{
    QStringList texts;
    if (!controller.stagedPt.isEmpty())
        texts += tr("Pt %1").arg(shortVersion(controller.stagedPt));
    if (!controller.stagedCt.isEmpty())
        texts += tr("Ct %1").arg(shortVersion(controller.stagedCt));
    return texts.join(QStringLiteral(", "));
}

template <typename Device>
static QString recordsText(const Device& device)
{
    if (device.recordsExpected == 0)
        return QString();
    const QLocale locale;
    return tr("%1 of %2")
        .arg(locale.toString(device.recordsReceived), locale.toString(device.recordsExpected));
}

static QVector<DeviceColumn<ControllerState>> identityColumns()
{
    using State = ControllerState;
    return {
        {tr("Controller"),
         tr("Host name of the controller"),
         [](const State& it) { return it.hostName; },
         {}},
        {tr("Role"),
         tr("Master, or slave of the cascade"),
         [](const State& it) { return it.slave ? tr("Slave") : tr("Master"); },
         {}},
        {tr("Address"), tr("Network address"), [](const State& it) { return it.address; }, {}},
        {tr("Model"), tr("Model of the controller"),
         [](const State& it) { return it.modelDescription; },
         [](const State& it) {
             return tr("%1, model number %2, board %3")
                 .arg(it.modelDescription, QString::number(it.model), it.board);
         }},
        {tr("Serial"),
         tr("Serial number"),
         [](const State& it) { return QString::number(it.serial); },
         {}},
    };
}

static QVector<DeviceColumn<ControllerState>> workColumns()
{
    using State = ControllerState;
    return {
        {tr("Pt"), tr("Version of the tracking software that runs"),
         [](const State& it) { return shortVersion(it.pt); },
         [](const State& it) {
             return it.pt;
         }},
        {tr("Ct"), tr("Version of the controller firmware that runs"),
         [](const State& it) { return shortVersion(it.ct); },
         [](const State& it) {
             return it.ct;
         }},
        {tr("After restart"),
         tr("Versions that were received and run from the next restart on"),
         staged,
         {}},
        {tr("State"),
         tr("What the controller is doing"),
         [](const State& it) { return it.activity; },
         {}},
        {tr("Records"), tr("Records received of the update that comes in"), recordsText<State>, {}},
    };
}

static QVector<DeviceColumn<ControllerState>> controllerColumns()
{
    return identityColumns() + workColumns();
}

static QVector<DeviceColumn<CameraState>> cameraColumns()
{
    using State = CameraState;
    return {
        {tr("Camera"),
         tr("Description of the camera"),
         [](const State& it) { return it.description; },
         {}},
        {tr("Model"), tr("Model code"), [](const State& it) { return it.model; }, {}},
        {tr("Serial"), tr("Serial number"), [](const State& it) { return it.serial; }, {}},
        {tr("Firmware"),
         tr("Version of the firmware that runs"),
         [](const State& it) { return it.version; },
         {}},
        {tr("After power cycle"),
         tr("Version that was received and runs after a power cycle"),
         [](const State& it) { return it.stagedVersion; },
         {}},
        {tr("State"),
         tr("What the camera is doing"),
         [](const State& it) { return it.activity; },
         {}},
        {tr("Records"), tr("Records received of the update that comes in"), recordsText<State>, {}},
    };
}

DeviceNeed needOf(const ControllerState& /*controller*/)
{
    return DeviceNeed::Nothing;
}

DeviceNeed needOf(const CameraState& camera)
{
    if (!camera.running)
        return DeviceNeed::Nothing;
    if (!camera.found)
        return DeviceNeed::HardwareSearch;
    return camera.stagedVersion.isEmpty() ? DeviceNeed::Nothing : DeviceNeed::PowerCycle;
}

DeviceTable<ControllerState>* makeControllerTable(const Equipment& equipment, QObject* parent)
{
    return new DeviceTable<ControllerState>(
        [&equipment]() -> const QVector<ControllerState>& { return equipment.state().controllers; },
        controllerColumns(), parent);
}

DeviceTable<CameraState>* makeCameraTable(const Equipment& equipment, QObject* parent)
{
    return new DeviceTable<CameraState>(
        [&equipment]() -> const QVector<CameraState>& { return equipment.state().cameras; },
        cameraColumns(), parent);
}
