#include "queries.h"

#include "recordrequest.h"

#include <errorreply.h>
#include <protocolversions.h>

#include <algorithm>
#include <iterator>

namespace {

// What a query asks about: a device or an entry of a list, told by the last word of its text.
enum class Subject
{
    Master,
    System,
    Slave,         // by its address; it must be available
    ListedSlave,   // by its address; it may be missing
    SlaveNumber,   // d01
    CameraNumber,  // c01; the controller must know it
    CameraModel,   // 0x0901
    HardwareEntry, // h1
};

struct Query
{
    const char* key; // without the word that tells the subject
    Subject subject;
    VersionInfo since; // of the protocol
    QByteArray (*value)(const SimulatedSystem& system, int index);
};

QByteArray quoted(const QByteArray& text)
{
    return '"' + text + '"';
}

QByteArray yesOrNo(bool yes)
{
    return yes ? QByteArrayLiteral("yes") : QByteArrayLiteral("no");
}

const ControllerState& controllerAt(const SimulatedSystem& system, int index)
{
    return system.controllers().at(index);
}

QByteArray hostName(const SimulatedSystem& system, int index)
{
    return controllerAt(system, index).hostName.toUtf8();
}

QByteArray controllerVersion(const SimulatedSystem& system, int index)
{
    return controllerAt(system, index).ct.toLatin1();
}

QByteArray trackingVersion(const SimulatedSystem& system, int index)
{
    return controllerAt(system, index).pt.toLatin1();
}

QByteArray model(const SimulatedSystem& system, int index)
{
    return QByteArray::number(controllerAt(system, index).model);
}

QByteArray modelDescription(const SimulatedSystem& system, int index)
{
    return quoted(controllerAt(system, index).modelDescription.toUtf8());
}

QByteArray serial(const SimulatedSystem& system, int index)
{
    return QByteArray::number(controllerAt(system, index).serial);
}

QByteArray board(const SimulatedSystem& system, int index)
{
    return quoted(controllerAt(system, index).board.toUtf8());
}

QByteArray address(const SimulatedSystem& system, int index)
{
    return controllerAt(system, index).address.toLatin1();
}

QByteArray availability(const SimulatedSystem& system, int index)
{
    return yesOrNo(controllerAt(system, index).available);
}

QByteArray hostNameAndSerial(const SimulatedSystem& system, int index)
{
    return hostName(system, index) + ' ' + serial(system, index);
}

QByteArray slaveCount(const SimulatedSystem& system, int /*index*/)
{
    return QByteArray::number(system.controllers().size() - 1);
}

QByteArray wakeOnLan(const SimulatedSystem& system, int /*index*/)
{
    return yesOrNo(system.scenario().wakeOnLan);
}

QByteArray addressMode(const SimulatedSystem& system, int /*index*/)
{
    return system.scenario().dhcp ? QByteArrayLiteral("dhcp") : QByteArrayLiteral("static");
}

QByteArray activeMode(const SimulatedSystem& system, int /*index*/)
{
    return system.measurement() == Measurement::Off ? QByteArrayLiteral("idle")
                                                    : QByteArrayLiteral("mea");
}

QByteArray hardwareCount(const SimulatedSystem& system, int /*index*/)
{
    return QByteArray::number(system.scenario().hardware.size());
}

QByteArray hardwareText(const SimulatedSystem& system, int index)
{
    return quoted(system.scenario().hardware.at(index).toUtf8());
}

QByteArray cameraCount(const SimulatedSystem& system, int /*index*/)
{
    return QByteArray::number(system.cameras().size());
}

QByteArray cameraIdentity(const SimulatedSystem& system, int index)
{
    const CameraState& camera = system.cameras().at(index);
    return camera.model.toLatin1() + ' ' + camera.serial.toLatin1();
}

QByteArray cameraVersion(const SimulatedSystem& system, int index)
{
    return system.cameras().at(index).version.toLatin1();
}

QByteArray cameraDescription(const SimulatedSystem& system, int index)
{
    return quoted(system.cameras().at(index).description.toLatin1());
}

constexpr VersionInfo always;

constexpr Query queries[] = {
    {"system hostname", Subject::Master, always, hostName},
    {"system hostname_slave", Subject::Slave, protocolWithCascade, hostName},
    {"system controller_version", Subject::Master, always, controllerVersion},
    {"system controller_version_slave", Subject::Slave, protocolWithCascade, controllerVersion},
    {"system version", Subject::Master, always, trackingVersion},
    {"system version_slave", Subject::Slave, protocolWithCascade, trackingVersion},
    {"system model", Subject::Master, always, model},
    {"system model_slave", Subject::Slave, protocolWithSlaveModels, model},
    {"system model_description", Subject::Master, always, modelDescription},
    {"system model_description_slave", Subject::Slave, protocolWithSlaveModels, modelDescription},
    {"system controller_serial", Subject::Master, protocolWithCascade, serial},
    {"system extra motherboard", Subject::Master, protocolWithBoard, board},
    {"system extra number_of_hardware", Subject::System, protocolWithHardware, hardwareCount},
    {"system extra hardware", Subject::HardwareEntry, protocolWithHardware, hardwareText},
    {"system net", Subject::System, always, addressMode},
    {"status active", Subject::System, always, activeMode},
    {"cascade number_of_connected_slaves", Subject::System, protocolWithCascade, slaveCount},
    {"cascade connected_slave", Subject::SlaveNumber, protocolWithCascade, address},
    {"cascade connected_slave_available", Subject::ListedSlave, protocolWithCascade, availability},
    {"cascade connected_slave_controller", Subject::Slave, protocolWithCascade, hostNameAndSerial},
    {"cascade wol_slaves", Subject::System, always, wakeOnLan},
    {"camera number_of_cameras", Subject::System, always, cameraCount},
    {"camera camera", Subject::CameraNumber, always, cameraIdentity},
    {"camera version", Subject::CameraNumber, always, cameraVersion},
    {"camera model_desc", Subject::CameraModel, always, cameraDescription},
};

bool hasArgument(Subject subject)
{
    return subject != Subject::Master && subject != Subject::System;
}

const Query* queryOf(const QByteArray& key, bool withArgument)
{
    const auto* found =
        std::find_if(std::begin(queries), std::end(queries), [&](const Query& query) {
            return key == query.key && hasArgument(query.subject) == withArgument;
        });
    return found == std::end(queries) ? nullptr : found;
}

std::optional<int> within(std::optional<int> number, int first, int count)
{
    if (!number || *number < first || *number >= first + count)
        return std::nullopt;
    return number;
}

std::optional<int> slaveIndex(const SimulatedSystem& system, const QByteArray& address)
{
    const int index = system.slaveAt(QString::fromUtf8(address));
    return index < 0 ? std::nullopt : std::optional<int>(index);
}

std::optional<int> availableSlaveIndex(const SimulatedSystem& system, const QByteArray& address)
{
    const std::optional<int> index = slaveIndex(system, address);
    return index && controllerAt(system, *index).available ? index : std::nullopt;
}

std::optional<int> cameraIndex(const SimulatedSystem& system, const QByteArray& word)
{
    const std::optional<int> number =
        within(numberBehind('c', word, 2), 1, system.cameras().size());
    if (!number || !system.cameras().at(*number - 1).found)
        return std::nullopt;
    return *number - 1;
}

std::optional<int> cameraOfModel(const SimulatedSystem& system, const QByteArray& modelText)
{
    for (int index = 0; index < system.cameras().size(); ++index) {
        if (system.cameras().at(index).model.toLatin1() == modelText)
            return index;
    }
    return std::nullopt;
}

std::optional<int> hardwareIndex(const SimulatedSystem& system, const QByteArray& word)
{
    const std::optional<int> number =
        within(numberBehind('h', word, 1), 1, system.scenario().hardware.size());
    return number ? std::optional<int>(*number - 1) : std::nullopt;
}

// The index that the last word of a query stands for; nullopt if there is no such device.
std::optional<int> indexOf(const SimulatedSystem& system, Subject subject, const QByteArray& word)
{
    switch (subject) {
    case Subject::Master:
    case Subject::System:
        break;
    case Subject::Slave:
        return availableSlaveIndex(system, word);
    case Subject::ListedSlave:
        return slaveIndex(system, word);
    case Subject::SlaveNumber:
        return within(numberBehind('d', word, 2), 1, system.controllers().size() - 1);
    case Subject::CameraNumber:
        return cameraIndex(system, word);
    case Subject::CameraModel:
        return cameraOfModel(system, word);
    case Subject::HardwareEntry:
        return hardwareIndex(system, word);
    }
    return 0;
}

} // namespace

std::optional<QByteArray> queryValue(const SimulatedSystem& system, const QByteArray& text,
                                     QByteArray* error)
{
    const int blank = text.lastIndexOf(' ');
    const Query* query = queryOf(text, false);
    if (!query)
        query = queryOf(text.left(blank), true);
    if (!query || system.scenario().protocol < query->since) {
        *error = errorReply(ErrorCode::UnknownText, QStringLiteral("unknown text"));
        return std::nullopt;
    }
    const std::optional<int> index = indexOf(system, query->subject, text.mid(blank + 1));
    if (!index) {
        *error = errorReply(ErrorCode::NoSuchDevice, QStringLiteral("no such device"));
        return std::nullopt;
    }
    return query->value(system, *index);
}
