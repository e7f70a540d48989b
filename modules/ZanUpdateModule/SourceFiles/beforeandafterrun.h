#pragma once

class BackendVersions;
class IOManager;

/// @file
/// What the plug-in asks and tells over the channel before and after a run.

/// Asks for the list of hardware, on backends that have one. It is compared with nothing at
/// present.
void askForHardware(IOManager* iom, const BackendVersions* beVers);

/// Stops a measurement that runs. A refusal is told to the host's log.
/// @return whether none runs now
bool stopMeasurement(IOManager* iom);

/// Whether the slaves are woken over the network.
bool areSlavesWoken(IOManager* iom);

/// Tells the frontend's main window that the application is about to end.
void announceShutdown(IOManager* iom);

/// Restarts the controllers, or shuts a plain BRIARSCOPE down.
void restartControllers(IOManager* iom, const BackendVersions* beVers);
