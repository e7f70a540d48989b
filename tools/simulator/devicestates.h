#pragma once

#include "scenario.h"
#include "systemstate.h"

#include <payload.h>

#include <QDate>
#include <QString>

/// A controller as it stands now.
struct ControllerState
{
    QString hostName;
    QString address;
    bool slave = false;
    bool available = true;
    int model = 0;
    QString modelDescription;
    QString board;
    int serial = 0;
    QString pt;       ///< tracking software that runs, as the controller reports it
    QString ct;       ///< controller firmware that runs, as the controller reports it
    QString stagedPt; ///< received and verified, to run from the next restart on; or empty
    QString stagedCt;
    QString activity; ///< what it is doing, one line for people
    int recordsReceived = 0;
    int recordsExpected = 0; ///< 0 as long as no update was begun since the last restart
    bool rebooting = false;
};

/// A camera as it stands now.
struct CameraState
{
    QString model;
    QString serial;
    QString description;
    QString version;       ///< firmware that runs, as the camera reports it
    QString stagedVersion; ///< received and verified, to run after a power cycle; or empty
    bool running = true;   ///< false: it did not come back from a power cycle
    bool found = true;     ///< the controller knows it; after a power cycle it must search again
    QString activity;
    int recordsReceived = 0;
    int recordsExpected = 0;
};

/// The devices as the scenario has them.
ControllerState controllerFrom(const ScenarioController& origin, bool slave);
CameraState cameraFrom(const ScenarioCamera& origin);

/// Between a device and what of it is kept in a file.
ControllerMemory memoryOf(const ControllerState& controller);
CameraMemory memoryOf(const CameraState& camera);
void adopt(ControllerState* controller, const ControllerMemory& memory);
void adopt(CameraState* camera, const CameraMemory& memory);

/// Puts a verified update by, to run from the next start of the device on. @p today is the date
/// that a controller reports with its tracking software.
void stage(ControllerState* controller, const PayloadHead& head, QDate today);
void stage(CameraState* camera, const PayloadHead& head, QDate today);
void forgetStaged(ControllerState* controller);
void forgetStaged(CameraState* camera);
/// What was put by runs from now on.
void startStaged(ControllerState* controller);
void startStaged(CameraState* camera);

/// Tells what the device does while nothing is sent to it, under a controller with @p power.
void becomeIdle(ControllerState* controller, Power power);
void becomeIdle(CameraState* camera, Power power);
