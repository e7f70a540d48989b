#pragma once

#include <QByteArray>
#include <QList>

class ScriptedChannel;

/// What one controller answers to the queries of its record, each text as it travels.
struct ScriptedController
{
    QByteArray hostname = "alpha";
    QByteArray ct = "v1.0";
    QByteArray pt = "v3.0.0 2024-05-06";
    int model = 0;
    QByteArray modelDescription = "\"ZAN\"";
    int serial = 4711;
    QByteArray board = "\"B1 board\""; ///< of a master only
};

/// A slave as the master knows it.
struct ScriptedSlave
{
    QByteArray address;
    ScriptedController controller;
    QByteArray available = "yes";
};

/// What one camera answers.
struct ScriptedCamera
{
    QByteArray model = "0x0901";
    QByteArray serial = "C100";
    QByteArray version = "v1.0.0";
    QByteArray description = "\"Camera\""; ///< goes by the model: the last one of a model counts
};

/// Has @p channel answer as this master.
void scriptMaster(ScriptedChannel* channel, const ScriptedController& master);

/// Has @p channel answer for these slaves, numbered from 1; the count goes with them.
void scriptSlaves(ScriptedChannel* channel, const QList<ScriptedSlave>& slaves);

/// Has @p channel answer for these cameras, numbered from 1; the count goes with them.
void scriptCameras(ScriptedChannel* channel, const QList<ScriptedCamera>& cameras);
