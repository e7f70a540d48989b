#include "beforeandafterrun.h"

#include "globaldefines.h"
#include "hostlog.h"
#include "replybuffer.h"

#include <IOManager>

#include <QString>

#include <algorithm>

void askForHardware(IOManager* iom, const BackendVersions* beVers)
{
    if (!protocolAtLeast(beVers, PROTOCOL_HARDWARE_LIST))
        return;
    int iCount = 0;
    if (iom->get_int(&iCount, "system extra number_of_hardware") != 0)
        iCount = 0;
    for (int i = 1; i <= std::min(iCount, MAX_COUNTED_ENTRIES); ++i) {
        ReplyBuffer<> r;
        if (iom->get_string(r.forReply(), "system extra hardware h%d", i) != 0)
            break;
    }
}

bool stopMeasurement(IOManager* iom)
{
    ReplyBuffer<LONG_TEXT_BYTES> res;
    // Controllers that do not know the query run no measurement: its result does not count, and an
    // empty text leads to no stop command.
    (void)iom->get_string(res.forReply(), "status active");
    if (!res.equals("mea"))
        return true;
    ReplyBuffer<LONG_TEXT_BYTES> result;
    (void)iom->send_command(result.forReply(), "vornix2 tracking stop");
    if (result.equals("vornix2 ok"))
        return true;
    logToHost(iom, QStringLiteral("measurement stop unsuccessful"));
    return false;
}

bool areSlavesWoken(IOManager* iom)
{
    ReplyBuffer<LONG_TEXT_BYTES> res;
    if (iom->get_string(res.forReply(), "cascade wol_slaves") != 0)
        res.set("no");
    return res.equals("yes");
}

void announceShutdown(IOManager* iom)
{
    // The sender's spelling is the host's.
    iom->post_message("Main_Window", "ZanUpateModule", 1, "AppReadyToShutdown");
}

void restartControllers(IOManager* iom, const BackendVersions* beVers)
{
    ReplyBuffer<> result;
    if (isPlainBriarscope(beVers))
        (void)iom->send_command(result.forReply(), "vornix2 system shutdown");
    else
        (void)iom->send_command(result.forReply(), "vornix2 system reboot");
}
