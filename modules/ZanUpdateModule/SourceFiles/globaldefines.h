#pragma once

#include <VersionInfo>

class BackendVersions;

/// Kind of a block of a controller update image, and of a row of the update table.
enum ZAN_UPDATE_TYPE
{
    ZAN_UPDATE_NOTDEFINED = 0,    ///< block of an unknown type; no row has it
    ZAN_FIRMWARE_UPDATE = 1,      ///< moves Pt, the version of the tracking software
    ZAN_SYSTEM_UPDATE = 2,        ///< moves Ct, the controller's own version
    ZAN_UPDATE_NOT_AVAILABLE = 3, ///< row without anything to offer; no block has it
    CAMERA_UPDATE = 4             ///< row of a camera's firmware; no block has it
};

/// Protocol version from which a backend tells the controller's mainboard.
inline constexpr VersionInfo PROTOCOL_MAINBOARD(0, 15);
/// Protocol version from which a backend lists the hardware.
inline constexpr VersionInfo PROTOCOL_HARDWARE_LIST(0, 17);
/// Protocol version from which a backend restarts the system.
inline constexpr VersionInfo PROTOCOL_RESTART(0, 17);
/// Protocol version from which a backend knows slaves, serial numbers and redirected updates.
inline constexpr VersionInfo PROTOCOL_CASCADE(1, 7);
/// Protocol version from which a backend tells the model of each slave.
inline constexpr VersionInfo PROTOCOL_SLAVE_MODEL(1, 23);

/// Counts that a controller reports (slaves, cameras, pieces of hardware) are followed up to here:
/// no system has so many, and each costs a query.
inline constexpr int MAX_COUNTED_ENTRIES = 10000;

/// Records of update files carry at most this many bytes.
inline constexpr int MAX_RECORD_BYTES = 120;

/// One binary record of an update file, as it goes out in one command.
struct UpdateRecord
{
    int length = 0;                      ///< in bytes, at most MAX_RECORD_BYTES
    const unsigned char* data = nullptr; ///< valid until the next record is read
};

/// Whether the backend speaks the command protocol @p version or a later one.
bool protocolAtLeast(const BackendVersions* beVers, const VersionInfo& version);

/// Whether the backend's model text names a system of the BRIARSCOPE family.
bool isBriarscopeFamily(const BackendVersions* beVers);

/// Whether the backend's model text is just BRIARSCOPE: the other systems of the family restart
/// like any controller.
bool isPlainBriarscope(const BackendVersions* beVers);
