#include "scriptedcascade.h"

#include "scriptedchannel.h"

#include <QString>

static void scriptController(ScriptedChannel* channel, const ScriptedController& controller,
                             const QByteArray& suffix)
{
    channel->on("system hostname" + suffix).reply(controller.hostname);
    channel->on("system controller_version" + suffix).reply(controller.ct);
    channel->on("system version" + suffix).reply(controller.pt);
    channel->on("system model" + suffix).reply(controller.model);
    channel->on("system model_description" + suffix).reply(controller.modelDescription);
}

void scriptMaster(ScriptedChannel* channel, const ScriptedController& master)
{
    scriptController(channel, master, QByteArray());
    channel->on("system controller_serial").reply(master.serial);
    channel->on("system extra motherboard").reply(master.board);
}

static QByteArray twoDigits(int number)
{
    return QString::number(number).rightJustified(2, QLatin1Char('0')).toLatin1();
}

void scriptSlaves(ScriptedChannel* channel, const QList<ScriptedSlave>& slaves)
{
    channel->on("cascade number_of_connected_slaves").reply(slaves.size());
    for (int i = 0; i < slaves.size(); ++i) {
        const ScriptedSlave& slave = slaves.at(i);
        const ScriptedController& controller = slave.controller;
        channel->on("cascade connected_slave d" + twoDigits(i + 1)).reply(slave.address);
        channel->on("cascade connected_slave_available " + slave.address).reply(slave.available);
        channel->on("cascade connected_slave_controller " + slave.address)
            .reply(controller.hostname + ' ' + QByteArray::number(controller.serial));
        scriptController(channel, controller, "_slave " + slave.address);
    }
}

void scriptCameras(ScriptedChannel* channel, const QList<ScriptedCamera>& cameras)
{
    channel->on("camera number_of_cameras").reply(cameras.size());
    for (int i = 0; i < cameras.size(); ++i) {
        const ScriptedCamera& camera = cameras.at(i);
        channel->on("camera camera c" + twoDigits(i + 1)).reply(camera.model + ' ' + camera.serial);
        channel->on("camera version c" + twoDigits(i + 1)).reply(camera.version);
        channel->on("camera model_desc " + camera.model).reply(camera.description);
    }
}
