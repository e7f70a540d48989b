#pragma once

#include "simulatedsystem.h"

#include <QByteArray>

#include <optional>

/// @file
/// What is seen of a test bench and done to it, as lines of a connection; docs/simulator.md
/// describes them. To be used from the thread of the system.

/// The answer to a line of the bench.
struct BenchReply
{
    bool ok = false;
    QByteArray text;
    bool watches = false; ///< the peer wants to be told of each change from now on
};

/// Does what the line @p text asks for, without the word "bench" before it.
BenchReply performBench(SimulatedSystem& system, const QByteArray& text);

/// The lines that others send for it.
QByteArray benchMeasure(bool measuring);
QByteArray benchPowerCycleCamera(int index);
QByteArray benchArm(const Fault& fault);

/// Everything that can be seen of a system and changes.
struct BenchState
{
    Power power = Power::On;
    Measurement measurement = Measurement::Off;
    qint64 msUntilReachable = 0;
    QVector<ControllerState> controllers;
    QVector<CameraState> cameras;
    QVector<Fault> faults;
};

/// One line of JSON.
QByteArray benchStateToJson(const SimulatedSystem& system);

/// @param scenario the one of the system that the state is about
/// @param error must not be null; receives one line
/// @return nullopt if the text is damaged, or about other devices
std::optional<BenchState> benchStateFromJson(const QByteArray& json, const Scenario& scenario,
                                             QString* error);

/// The state of a system that has not been looked at yet: as its scenario has it.
BenchState benchStateOf(const Scenario& scenario);
