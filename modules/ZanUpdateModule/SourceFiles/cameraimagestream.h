#pragma once

#include <QString>
#include <QtGlobal>

#include <functional>

class IOManager;
class LittleEndianReader;

/// @file
/// Streams an image of a camera update file to a camera; docs/command-language.md describes what
/// goes out.

/// Why a camera did not take an image, beside the codes of camfilereader.h.
enum CameraFailure : int
{
    CAMERA_RECORD_NOT_SENT = -200,
    CAMERA_LAST_REPLY_MISSING = -222,
    CAMERA_REFUSES_UPDATE = -300,
    CAMERA_ERROR_REPLY = -333,
};

/// What happens to the images of a file.
struct CameraTransfer
{
    int camera;                ///< index, from 0
    bool isSent;               ///< false: they are read and encoded only
    double durationLastCmdSec; ///< that the camera's model takes for its last record
};

/// How the streaming of an image ended.
struct CameraImageOutcome
{
    int code = 0;       ///< 0, a CameraFailure, or a code of camfilereader.h
    QString message;    ///< what the user is told; empty after a success
    quint32 record = 0; ///< the record that failed, from 1; 0 if it was none
};

/// What the user is told in front of the file's name when @p code ended it, behind its head or in
/// it.
QString cameraFileMessage(int code, bool isHeadRead);

/// Is told the record that is next, from 1, and how many there are; 0 when the records begin. It
/// may serve events.
using CameraTick = std::function<void(quint32 record, quint32 records)>;

/// Sends the image that @p reader stands at, record by record, each with a reply that is looked at.
CameraImageOutcome streamCameraImage(LittleEndianReader& reader, IOManager* iom,
                                     const CameraTransfer& transfer, const CameraTick& tick);
