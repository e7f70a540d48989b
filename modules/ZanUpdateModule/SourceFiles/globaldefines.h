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

// Protocol versions from which a backend knows a group of commands.
inline constexpr VersionInfo PROTOCOL_MAINBOARD(0, 15);
inline constexpr VersionInfo PROTOCOL_HARDWARE_LIST(0, 17);
inline constexpr VersionInfo PROTOCOL_RESTART(0, 17);
inline constexpr VersionInfo PROTOCOL_CASCADE(1, 7);
inline constexpr VersionInfo PROTOCOL_SLAVE_MODEL(1, 23);

/// The commands number slaves and cameras with two digits; a larger count is a garbled reply.
inline constexpr int MAX_NUMBERED_DEVICES = 99;

/// No system has more hardware entries; a larger count is a garbled reply.
inline constexpr int MAX_HARDWARE_ENTRIES = 1000;

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
