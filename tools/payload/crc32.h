#pragma once

#include <QByteArray>

/// The CRC-32 of @p data as IEEE 802.3 defines it: reflected polynomial 0xEDB88320, start value and
/// final exclusive-or 0xFFFFFFFF. Safe to call from any thread.
quint32 crc32(const QByteArray& data);
