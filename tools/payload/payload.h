#pragma once

#include "crc32.h"

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
    PayloadComponent component =
        PayloadComponent::TrackingSoftware; ///< what is brought to the version
    VersionInfo version;                    ///< numbers from 0 to 65534, or -1 for an absent one
    QString appendix; ///< pre-release text such as "-beta.2"; Latin-1, at most 16 characters
};

/// The most bytes that a controller or camera takes in one record.
constexpr int maxRecordBytes = 120;

/// The most records that a controller or camera takes for one block or camera image.
constexpr int maxRecords = 1000000;

/// The most bytes that it takes for one, so that no sender can fill its memory.
constexpr int maxBlockBytes = 64 * 1024 * 1024;

/// Bytes that a payload has beside its body: the head and the checksum.
constexpr int payloadOverhead = 36;

/// The longest pre-release text that the head has room for, in characters.
constexpr int payloadAppendixLength = 16;

/// Builds a payload of payloadOverhead + @p bodySize bytes. The body looks random, but is the same
/// for the same @p bodySize and @p seed on every machine. A longer appendix is cut off.
QByteArray makePayload(const PayloadHead& head, int bodySize, quint32 seed);

/// The bytes of makePayload() one after the other, so that a large payload needs no memory.
class PayloadStream
{
public:
    /// Of a payload as makePayload() builds it; @p bodySize must not be negative.
    PayloadStream(const PayloadHead& head, qint64 bodySize, quint32 seed);

    /// Writes the next @p size bytes to @p to; there must be so many left.
    void read(char* to, int size);

private:
    char next();

    QByteArray m_head;
    QByteArray m_checksum; // empty until the body has been read
    qint64 m_bodySize;
    qint64 m_position = 0;
    quint32 m_state;
    Crc32 m_crc;
};

/// Verifies a payload piece by piece, so that a large one needs no memory.
class PayloadVerifier
{
public:
    /// Takes the next @p size bytes.
    void add(const char* data, int size);

    /// Whether the bytes so far begin as a payload does; nothing else is looked at.
    bool isPayload() const;

    /// What readPayload() gives for all bytes so far.
    std::optional<PayloadHead> finish(QString* error) const;

private:
    QString damage() const;

    QByteArray m_head; // the first bytes, at most a payload's head
    QByteArray m_tail; // the last bytes, which may be the checksum
    qint64 m_size = 0;
    bool m_isForeign = false; // it does not begin as a payload does
    Crc32 m_crc;              // of all but the tail
};

/// Whether @p bytes begin as a payload does; nothing else is looked at.
bool isPayload(const QByteArray& bytes);

/// Verifies a payload and reads its head.
///
/// @param error may be null; on failure one line that says what is wrong
/// @return nullopt if the payload is damaged: too short, foreign magic, a body size other than what
///         stands there, a wrong checksum or an unknown component.
std::optional<PayloadHead> readPayload(const QByteArray& payload, QString* error);
