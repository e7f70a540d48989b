#pragma once

#include <QByteArray>

#include <optional>

/// Decodes the 6-bit text of one record, as a controller or camera does it on its side.
///
/// Strict, so that an encoder's faults show: nullopt for a character outside the alphabet, for a
/// length that no record has (4 k + 1), and for unused high bits of the last word that are not 0.
/// An empty text is a record of no bytes. Safe to call from any thread.
std::optional<QByteArray> decodeSixBit(const QByteArray& text);
