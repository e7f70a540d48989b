#include "devicestates.h"

#include <utility>

namespace {

QString idleActivity(const ControllerState& controller, Power power)
{
    if (!controller.available)
        return QStringLiteral("Not available");
    if (power == Power::Off)
        return QStringLiteral("No power");
    if (controller.rebooting)
        return QStringLiteral("Restarting");
    if (!controller.stagedPt.isEmpty() || !controller.stagedCt.isEmpty())
        return QStringLiteral("Update received, waits for the restart");
    return QStringLiteral("Ready");
}

QString idleActivity(const CameraState& camera)
{
    if (!camera.running)
        return QStringLiteral("Did not come back");
    if (!camera.found)
        return QStringLiteral("Waits for the search for hardware");
    if (!camera.stagedVersion.isEmpty())
        return QStringLiteral("Update received, waits for the power cycle");
    return QStringLiteral("Ready");
}

QString versionText(const PayloadHead& head)
{
    return head.version.toString() + head.appendix;
}

void startStaged(QString* running, QString* staged)
{
    if (!staged->isEmpty())
        *running = std::exchange(*staged, QString());
}

} // namespace

ControllerState controllerFrom(const ScenarioController& origin, bool slave)
{
    ControllerState controller;
    controller.hostName = origin.hostName;
    controller.address = origin.address;
    controller.slave = slave;
    controller.available = origin.available;
    controller.model = origin.model;
    controller.modelDescription = origin.modelDescription;
    controller.board = origin.board;
    controller.serial = origin.serial;
    controller.pt = origin.pt;
    controller.ct = origin.ct;
    return controller;
}

CameraState cameraFrom(const ScenarioCamera& origin)
{
    CameraState camera;
    camera.model = origin.model;
    camera.serial = origin.serial;
    camera.description = origin.description;
    camera.version = origin.version;
    return camera;
}

ControllerMemory memoryOf(const ControllerState& controller)
{
    return {controller.hostName, controller.available, controller.pt,
            controller.ct,       controller.stagedPt,  controller.stagedCt};
}

CameraMemory memoryOf(const CameraState& camera)
{
    return {camera.model, camera.serial,  camera.running,
            camera.found, camera.version, camera.stagedVersion};
}

void adopt(ControllerState* controller, const ControllerMemory& memory)
{
    controller->available = memory.available;
    controller->pt = memory.pt;
    controller->ct = memory.ct;
    controller->stagedPt = memory.stagedPt;
    controller->stagedCt = memory.stagedCt;
}

void adopt(CameraState* camera, const CameraMemory& memory)
{
    camera->running = memory.running;
    camera->found = memory.found;
    camera->version = memory.version;
    camera->stagedVersion = memory.stagedVersion;
}

void stage(ControllerState* controller, const PayloadHead& head, QDate today)
{
    if (head.component == PayloadComponent::TrackingSoftware)
        controller->stagedPt =
            QStringLiteral("%1 %2").arg(versionText(head), today.toString(Qt::ISODate));
    else
        controller->stagedCt = versionText(head);
}

void stage(CameraState* camera, const PayloadHead& head, QDate /*today*/)
{
    camera->stagedVersion = versionText(head);
}

void forgetStaged(ControllerState* controller)
{
    controller->stagedPt.clear();
    controller->stagedCt.clear();
}

void forgetStaged(CameraState* camera)
{
    camera->stagedVersion.clear();
}

void startStaged(ControllerState* controller)
{
    startStaged(&controller->pt, &controller->stagedPt);
    startStaged(&controller->ct, &controller->stagedCt);
    controller->recordsReceived = 0;
    controller->recordsExpected = 0;
}

void startStaged(CameraState* camera)
{
    startStaged(&camera->version, &camera->stagedVersion);
    camera->recordsReceived = 0;
    camera->recordsExpected = 0;
}

void becomeIdle(ControllerState* controller, Power power)
{
    controller->rebooting =
        controller->available && (power == Power::Restarting || power == Power::Hung);
    controller->activity = idleActivity(*controller, power);
}

void becomeIdle(CameraState* camera, Power /*power*/)
{
    camera->activity = idleActivity(*camera);
}
