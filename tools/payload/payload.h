#pragma once

#include <VersionInfo.h>

#include <QByteArray>
#include <QString>

#include <optional>

/// @file
/// What the records of one controller block or one camera image carry, joined together. The layout
/// is described in docs/formats.md. All functions are safe to call from any thread.

/// The component that a payload brings to a new version.
enum class PayloadComponent : quint16
{
    TrackingSoftware = 1,   ///< Pt, moved by firmware blocks
    ControllerFirmware = 2, ///< Ct, moved by system blocks
    CameraFirmware = 3,     ///< the firmware of a camera
};

/// What a payload says about itself.
struct PayloadHead
{
    PayloadComponent component = PayloadComponent::TrackingSoftware;
    VersionInfo version; ///< numbers from 0 to 65534, or -1 for an absent one
    QString appendix;    ///< pre-release text such as "-beta.2"; Latin-1, at most 16 characters
};

/// Bytes that a payload has beside its body: the head and the checksum.
constexpr int payloadOverhead = 36;

/// The longest pre-release text that the head has room for, in characters.
constexpr int payloadAppendixLength = 16;

/// Builds a payload of payloadOverhead + @p bodySize bytes. The body looks random, but is the same
/// for the same @p bodySize and @p seed on every machine. A longer appendix is cut off.
QByteArray makePayload(const PayloadHead& head, int bodySize, quint32 seed);

/// Whether @p bytes begin as a payload does; nothing else is looked at.
bool isPayload(const QByteArray& bytes);

/// Verifies a payload and reads its head.
///
/// @param error may be null; receives one line that says what is wrong, empty if all is well.
/// @return nullopt if the payload is damaged: too short, foreign magic, a body size other than what
///         stands there, a wrong checksum or an unknown component.
std::optional<PayloadHead> readPayload(const QByteArray& payload, QString* error);
