#include "simulatedsystem.h"

#include <wholefile.h>

#include <QAbstractEventDispatcher>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <utility>

namespace {

constexpr qint64 maxStateBytes = Q_INT64_C(1) << 20;

// The content of a state file, damaged as it may be; nullopt if it is none, or none of its own.
std::optional<QByteArray> readState(const QString& path, QString* error)
{
    QFile file(path);
    if (!QFileInfo(path).isFile())
        *error = QStringLiteral("%1: is no regular file, so it is left as it is").arg(path);
    else if (!file.open(QIODevice::ReadOnly))
        *error = QStringLiteral("%1: %2").arg(path, file.errorString());
    else if (QByteArray text = file.read(maxStateBytes); isStateText(text))
        return text;
    else
        *error = QStringLiteral("%1: holds no state of a simulated system, so it is left as it is; "
                                "name another file, or move it away")
                     .arg(path);
    return std::nullopt;
}

} // namespace

SimulatedSystem::SimulatedSystem(Scenario scenario, Clock nowMs, QObject* parent)
    : Equipment(parent), m_scenario(std::move(scenario)), m_nowMs(std::move(nowMs)),
      m_state(untouchedEquipment(m_scenario))
{
    m_state.measurement = m_scenario.measurement;
    m_state.faults = FaultPlan(m_scenario.faults);
    if (!m_nowMs)
        m_nowMs = QDateTime::currentMSecsSinceEpoch;
    allBecomeIdle();

    m_restartTimer.setSingleShot(true);
    connect(&m_restartTimer, &QTimer::timeout, this, &SimulatedSystem::settle);
}

qint64 SimulatedSystem::msUntilReachable() const
{
    switch (m_state.power) {
    case Power::On:
        return 0;
    case Power::Restarting:
        return qBound<qint64>(0, m_restartEndsMs - m_nowMs(), m_scenario.timing.bootMs);
    case Power::Hung:
    case Power::Off:
        break;
    }
    return -1;
}

std::optional<QString> SimulatedSystem::loadState(const QString& path, QString* error)
{
    m_stateFile = path;
    if (!QFileInfo::exists(path))
        return QString();
    QString damage;
    const std::optional<QByteArray> json = readState(path, error);
    const std::optional<SystemMemory> memory =
        json ? stateFromJson(*json, m_scenario, path, &damage) : std::nullopt;
    if (memory) {
        adopt(*memory);
        return QString();
    }
    if (json && setDamagedFileAside(path, error))
        return damage;
    m_stateFile.clear();
    return std::nullopt;
}

bool SimulatedSystem::holdsState(const QString& path)
{
    QString reason;
    return readState(path, &reason).has_value();
}

bool SimulatedSystem::removeState(const QString& path, QString* error)
{
    QFile file(path);
    if (!file.exists())
        return true;
    if (!readState(path, error))
        return false;
    if (file.remove())
        return true;
    *error = QStringLiteral("%1: %2").arg(path, file.errorString());
    return false;
}

bool SimulatedSystem::saveState()
{
    if (m_stateFile.isEmpty())
        return true;
    QDir().mkpath(QFileInfo(m_stateFile).path());
    QString error;
    if (writeWholeFile(m_stateFile, stateToJson(memory()), &error))
        return true;
    emit trouble(error);
    return false;
}

void SimulatedSystem::perform(const EquipmentCommand& command)
{
    switch (command.kind) {
    case EquipmentCommand::Kind::StartMeasurement:
        setMeasuring(true);
        break;
    case EquipmentCommand::Kind::StopMeasurement:
        setMeasuring(false);
        break;
    case EquipmentCommand::Kind::PowerCycle:
        powerCycle();
        break;
    case EquipmentCommand::Kind::PowerCycleCamera:
        powerCycleCamera(command.camera);
        break;
    case EquipmentCommand::Kind::ArmFault:
        armFault(command.fault);
        break;
    case EquipmentCommand::Kind::DisarmFaults:
        disarmFaults();
        break;
    }
}

void SimulatedSystem::setMeasuring(bool measuring)
{
    if (!isReachable())
        return;
    const bool refuses = m_scenario.measurement == Measurement::Unstoppable;
    const Measurement running = refuses ? Measurement::Unstoppable : Measurement::Running;
    m_state.measurement = measuring ? running : Measurement::Off;
    keepState();
}

void SimulatedSystem::powerCycleCamera(int index)
{
    if (index < 0 || index >= m_state.cameras.size())
        return;
    if (index == m_receivingCamera)
        dropReception(QString());
    CameraState& camera = m_state.cameras[index];
    camera.running = true;
    camera.found = false;
    for (const Fault& fault : m_state.faults.takeForRestart({cameraName(index)})) {
        if (fault.mode == FaultMode::NeverComeBack)
            camera.running = false;
        else
            forgetStaged(&camera);
    }
    startStaged(&camera);
    becomeIdle(&camera, m_state.power);
    keepState();
}

void SimulatedSystem::powerCycle()
{
    for (int index = 0; index < m_state.controllers.size(); ++index)
        m_state.controllers[index].available = m_scenario.controllers.at(index).available;
    goDown(Power::Restarting);
}

void SimulatedSystem::armFault(const Fault& fault)
{
    m_state.faults.add(fault);
    emit changed();
}

void SimulatedSystem::disarmFaults()
{
    m_state.faults.clear();
    emit changed();
}

std::optional<Fault> SimulatedSystem::takeFault(const ExchangeMoment& moment)
{
    const std::optional<Fault> fault = m_state.faults.takeForExchange(moment);
    if (fault)
        emit changed();
    return fault;
}

int SimulatedSystem::slaveAt(const QString& address) const
{
    for (int index = 1; index < m_state.controllers.size(); ++index) {
        if (m_state.controllers.at(index).address == address)
            return index;
    }
    return -1;
}

void SimulatedSystem::setUpdateTarget(int index)
{
    dropReception(QStringLiteral("Update broken off: redirected"));
    m_updateTarget = index;
}

const BlockReceiver& SimulatedSystem::takeRecord(PayloadComponent component, int count, int number,
                                                 const QByteArray& text)
{
    directReceptionTo(noCamera);
    return receive(&m_state.controllers[m_updateTarget], component, count, number, text);
}

const BlockReceiver& SimulatedSystem::takeCameraRecord(int index, int count, int number,
                                                       const QByteArray& text)
{
    directReceptionTo(index);
    CameraState& camera = m_state.cameras[index];
    receive(&camera, PayloadComponent::CameraFirmware, count, number, text);
    if (m_receiver.refused())
        forgetStaged(&camera);
    return m_receiver;
}

void SimulatedSystem::setUpdatedBy(const QString& name)
{
    if (std::exchange(m_state.updatedBy, name) != name)
        emit changed();
}

void SimulatedSystem::dropReception(const QString& reason)
{
    if (m_receiver.state() == BlockReceiver::State::Receiving) {
        if (m_receivingCamera == noCamera) {
            m_state.controllers[m_updateTarget].activity = reason;
        } else {
            m_state.cameras[m_receivingCamera].activity = reason;
            forgetStaged(&m_state.cameras[m_receivingCamera]);
        }
        emit changed();
    }
    m_receiver.drop();
}

bool SimulatedSystem::stopMeasurement()
{
    if (m_state.measurement == Measurement::Unstoppable)
        return false;
    if (m_state.measurement == Measurement::Running)
        setMeasuring(false);
    return true;
}

void SimulatedSystem::searchHardware()
{
    dropReception(QString());
    for (CameraState& camera : m_state.cameras) {
        camera.found = camera.running;
        becomeIdle(&camera, m_state.power);
    }
    keepState();
}

void SimulatedSystem::restart()
{
    const bool comesBack = applyRestartFaults();
    goDown(comesBack ? Power::Restarting : Power::Hung);
}

void SimulatedSystem::shutDown()
{
    // Whoever gives power back by hand sees the system come up, so only the versions matter here.
    applyRestartFaults();
    goDown(Power::Off);
}

void SimulatedSystem::settle()
{
    if (m_state.power != Power::Restarting)
        return;
    // A clock that was set back must not make the restart longer than a restart is.
    const qint64 now = m_nowMs();
    m_restartEndsMs = qMin(m_restartEndsMs, now + m_scenario.timing.bootMs);
    if (now >= m_restartEndsMs)
        finishRestart();
    else
        armRestartTimer();
}

// Returns whether the master comes back by itself.
bool SimulatedSystem::applyRestartFaults()
{
    bool masterComesBack = true;
    QStringList hostNames;
    for (const ControllerState& controller : qAsConst(m_state.controllers))
        hostNames.append(controller.hostName);
    for (const Fault& fault : m_state.faults.takeForRestart(hostNames)) {
        for (ControllerState& controller : m_state.controllers) {
            if (!fault.concerns(controller.hostName))
                continue;
            if (fault.mode == FaultMode::ComeBackOld)
                forgetStaged(&controller);
            else if (controller.slave)
                controller.available = false;
            else
                masterComesBack = false;
        }
    }
    return masterComesBack;
}

void SimulatedSystem::goDown(Power power)
{
    m_receiver.drop();
    m_receivingCamera = noCamera;
    m_updateTarget = 0;
    m_state.measurement = Measurement::Off;
    m_state.power = power;
    ++m_outages;
    m_restartEndsMs = m_nowMs() + m_scenario.timing.bootMs;
    allBecomeIdle();
    armRestartTimer();
    keepState();
}

void SimulatedSystem::finishRestart()
{
    m_state.power = Power::On;
    for (ControllerState& controller : m_state.controllers) {
        if (controller.available)
            startStaged(&controller);
    }
    allBecomeIdle();
    keepState();
}

void SimulatedSystem::armRestartTimer()
{
    if (m_state.power == Power::Restarting && QAbstractEventDispatcher::instance())
        m_restartTimer.start(static_cast<int>(msUntilReachable()));
}

void SimulatedSystem::allBecomeIdle()
{
    for (ControllerState& controller : m_state.controllers)
        becomeIdle(&controller, m_state.power);
    for (CameraState& camera : m_state.cameras)
        becomeIdle(&camera, m_state.power);
}

SystemMemory SimulatedSystem::memory() const
{
    SystemMemory memory;
    memory.scenario = m_scenario.name;
    memory.power = m_state.power;
    memory.restartEndsMs = m_restartEndsMs;
    memory.measurement = m_state.measurement;
    for (const ControllerState& controller : m_state.controllers)
        memory.controllers.append(memoryOf(controller));
    for (const CameraState& camera : m_state.cameras)
        memory.cameras.append(memoryOf(camera));
    return memory;
}

void SimulatedSystem::adopt(const SystemMemory& memory)
{
    m_state.power = memory.power;
    m_restartEndsMs = memory.restartEndsMs;
    m_state.measurement = memory.measurement;
    for (int index = 0; index < m_state.controllers.size(); ++index)
        ::adopt(&m_state.controllers[index], memory.controllers.at(index));
    for (int index = 0; index < m_state.cameras.size(); ++index)
        ::adopt(&m_state.cameras[index], memory.cameras.at(index));
    allBecomeIdle();
    settle();
    emit changed();
}

QDate SimulatedSystem::today() const
{
    return QDateTime::fromMSecsSinceEpoch(m_nowMs(), Qt::UTC).date();
}

void SimulatedSystem::keepState()
{
    saveState();
    emit changed();
}

void SimulatedSystem::directReceptionTo(int camera)
{
    if (camera == m_receivingCamera)
        return;
    dropReception(QStringLiteral("Update broken off: another device was addressed"));
    m_receivingCamera = camera;
}

template <typename Device>
const BlockReceiver& SimulatedSystem::receive(Device* device, PayloadComponent component, int count,
                                              int number, const QByteArray& text)
{
    const BlockReceiver::State state = m_receiver.take(component, count, number, text);
    if (state == BlockReceiver::State::Receiving) {
        noteProgress(device);
        return m_receiver;
    }
    device->recordsReceived = m_receiver.received();
    device->recordsExpected = m_receiver.expected();
    if (state == BlockReceiver::State::Complete) {
        stage(device, m_receiver.head(), today());
        becomeIdle(device, m_state.power);
        saveState();
    } else {
        device->activity = QStringLiteral("Update refused: %1").arg(m_receiver.reason());
    }
    emit changed();
    return m_receiver;
}

// Tells the views once per percent: they could not follow every record.
template <typename Device>
void SimulatedSystem::noteProgress(Device* device)
{
    const int received = m_receiver.received();
    const int expected = m_receiver.expected();
    device->recordsReceived = received;
    device->recordsExpected = expected;
    if (received == 1)
        device->activity = QStringLiteral("Receiving an update");
    if (received == 1 || received * 100LL / expected != (received - 1) * 100LL / expected)
        emit changed();
}
