#pragma once

class ZanController;

/// Whether updates for @p controller have ended: one of the first two models with a mainboard or,
/// as a slave, with a serial number that is no longer supported. Asks nothing; any thread.
bool isDiscontinued(const ZanController& controller);
