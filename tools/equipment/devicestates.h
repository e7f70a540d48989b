#pragma once

#include "scenario.h"
#include "systemstate.h"

#include <payload.h>

#include <QDate>
#include <QString>

/// A controller as it stands now.
struct ControllerState
{
    QString hostName;         ///< name under which faults and views know it
    QString address;          ///< dotted IPv4; a slave is addressed by it
    bool slave = false;       ///< reached through the master
    bool available = true;    ///< only a slave can be missing
    int model = 0;            ///< number that it reports
    QString modelDescription; ///< what it calls its model
    QString board;            ///< what it calls its mainboard; may be empty
    int serial = 0;           ///< 0 to 999999999
    QString pt;               ///< tracking software that runs, as the controller reports it
    QString ct;               ///< controller firmware that runs, as the controller reports it
    QString stagedPt;         ///< received and verified, to run from the next restart on; or empty
    QString stagedCt;         ///< likewise
    QString activity;         ///< what it is doing, one line for people
    int recordsReceived = 0;  ///< of the block that came last
    int recordsExpected = 0;  ///< 0 as long as no update was begun since the last restart
    bool rebooting = false;   ///< answers nothing until the restart ends
};

/// A camera as it stands now.
struct CameraState
{
    QString model;           ///< for example "0x0901"
    QString serial;          ///< one word of Latin-1
    QString description;     ///< of its model, for people
    QString version;         ///< firmware that runs, as the camera reports it
    QString stagedVersion;   ///< received and verified, to run after a power cycle; or empty
    bool running = true;     ///< false: it did not come back from a power cycle
    bool found = true;       ///< the controller knows it; after a power cycle it must search again
    QString activity;        ///< what it is doing, one line for people
    int recordsReceived = 0; ///< of the image that came last
    int recordsExpected = 0; ///< 0 as long as no update was begun since its last start
};

/// A device as the scenario has it, before anything was done to it.
///@{
ControllerState controllerFrom(const ScenarioController& origin, bool slave);
CameraState cameraFrom(const ScenarioCamera& origin);
///@}

/// What of the device is kept in a file.
///@{
ControllerMemory memoryOf(const ControllerState& controller);
CameraMemory memoryOf(const CameraState& camera);
///@}

/// Gives the device what a file kept of it; all else stays as it was.
///@{
void adopt(ControllerState* controller, const ControllerMemory& memory);
void adopt(CameraState* camera, const CameraMemory& memory);
///@}

/// Puts a verified update by, to run from the next start of the device on. @p today is the date
/// that a controller reports with its tracking software.
///@{
void stage(ControllerState* controller, const PayloadHead& head, QDate today);
void stage(CameraState* camera, const PayloadHead& head, QDate today);
///@}

/// Throws away what was put by: the device goes on with what it runs.
///@{
void forgetStaged(ControllerState* controller);
void forgetStaged(CameraState* camera);
///@}

/// What was put by runs from now on.
///@{
void startStaged(ControllerState* controller);
void startStaged(CameraState* camera);
///@}

/// Tells what the device does while nothing is sent to it, under a controller with @p power.
///@{
void becomeIdle(ControllerState* controller, Power power);
void becomeIdle(CameraState* camera, Power power);
///@}
