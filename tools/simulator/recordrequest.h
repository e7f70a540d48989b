#pragma once

#include <payload.h>

#include <QByteArray>

#include <optional>

/// A text of the command language that carries one record of an update, rightly or not: it is left
/// to the receiver to refuse count and number.
struct RecordRequest
{
    /// Stands in the place of a camera's index.
    static constexpr int toController = -1;

    /// what the record is meant for
    PayloadComponent component = PayloadComponent::TrackingSoftware;
    int camera = toController; ///< index of the camera from 0; it need not exist
    int count = 0;             ///< records of the block; 0 if the text has no valid number there
    int number = 0;            ///< number of this record from 1; 0 likewise
    QByteArray text;           ///< the record in 6-bit text

    /// Reads the text of a setting; nullopt if it is another one.
    static std::optional<RecordRequest> fromSetting(const QByteArray& setting);
    /// Reads the text of a command; nullopt if it is another one.
    static std::optional<RecordRequest> fromCommand(const QByteArray& command);
};

/// Reads a number that follows a letter, as in "c01" or "h3": nothing but digits, and no fewer than
/// @p minDigits. @return nullopt for anything else, or if an int cannot hold it
std::optional<int> numberBehind(char letter, const QByteArray& word, int minDigits);
