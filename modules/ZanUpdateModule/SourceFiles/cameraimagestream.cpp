#include "cameraimagestream.h"

#include "camfilereader.h"
#include "littleendianreader.h"
#include "replybuffer.h"
#include "sixbitencoding.h"

#include <IOManager>

static CameraImageOutcome failure(int code, quint32 record)
{
    switch (code) {
    case CAMERA_LAST_REPLY_MISSING:
        return {code, QStringLiteral("Update not successful!"), record};
    case CAMERA_REFUSES_UPDATE:
        return {code, QStringLiteral("camera update failed"), record};
    case CAMERA_ERROR_REPLY:
        return {code, QStringLiteral("update failed"), record};
    default:
        return {code, QStringLiteral("cannot read file"), record};
    }
}

QString cameraFileMessage(int code, bool isHeadRead)
{
    if (isHeadRead)
        return QStringLiteral("update not successful ");
    return code == CAM_FILE_WRONG_MAGIC ? QStringLiteral("no software update file ")
                                        : QStringLiteral("cannot read file ");
}

// Cameras confirm nothing: what does not begin as an error is as good as a confirmation.
static int replyCode(const ReplyBuffer<>& res)
{
    if (!res.startsWith("vornix2 err"))
        return 0;
    const QString text = res.latin1().remove(QLatin1Char('"'));
    return text.startsWith(QLatin1String("vornix2 err -26")) ? CAMERA_REFUSES_UPDATE
                                                             : CAMERA_ERROR_REPLY;
}

static int sendCommand(IOManager* iom, const QString& sCmd, bool isLast, double durationLastCmdSec)
{
    static constexpr double GRACE_SECONDS = 10.0;
    ReplyBuffer<> res;
    if (isLast)
        iom->prepare_reply(1, static_cast<int>(GRACE_SECONDS + durationLastCmdSec) * 1000, 1);
    const int failed = iom->send_command(res.forReply(), "%s", sCmd.toLatin1().constData());
    if (isLast && iom->poll_reply(3) != 0)
        return CAMERA_LAST_REPLY_MISSING;
    if (!isLast && failed != 0)
        return CAMERA_RECORD_NOT_SENT;
    return replyCode(res);
}

CameraImageOutcome streamCameraImage(LittleEndianReader& reader, IOManager* iom,
                                     const CameraTransfer& transfer, const CameraTick& tick)
{
    quint32 records = 0;
    int code = readCamImageHead(reader, &records);
    if (code != 0)
        return failure(code, 0);
    tick(0, records);
    const QString begin = QStringLiteral("vornix2 set camera update c%1 %2 ")
                              .arg(transfer.camera + 1, 2, 10, QLatin1Char('0'))
                              .arg(records);
    UpdateRecord dat;
    char cmd[LONG_TEXT_BYTES];
    for (quint32 done = 0; done < records; ++done) {
        const quint32 record = done + 1;
        tick(record, records);
        code = readCamRecord(reader, &dat);
        if (code == 0) {
            encodeSixBit(cmd, dat.data, dat.length);
            if (transfer.isSent)
                code = sendCommand(
                    iom, begin + QStringLiteral("%1 %2").arg(record).arg(QLatin1String(cmd)),
                    record == records, transfer.durationLastCmdSec);
        }
        if (code != 0)
            return failure(code, record);
    }
    return {};
}
