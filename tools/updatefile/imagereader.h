#pragma once

#include "updatefile.h"

#include <QStringList>
#include <QVector>

#include <limits>

/// What was found in a file that may be an update file.
struct ReadUpdateFile
{
    /// As much of the file as could be read; nullopt if it is no update file. Magics, counts,
    /// offsets and lengths are set to what stands in the file.
    std::optional<UpdateFile> file;

    /// What no reader and no device would take, one line each.
    QStringList problems;
};

/// Reads an update file with all its records, which should therefore not be large; imagescan.h is
/// for any size. Any bytes will do; nothing is trusted. Writing what was read without problems
/// gives the same bytes again, if the blocks lie in table order without gaps. Safe to call from any
/// thread.
ReadUpdateFile readUpdateFile(const QByteArray& bytes);

/// Reads every file in @p folder, by name; what is no update file, or cannot be opened, is left
/// out.
/// @param mostBytes of each file to be read, enough for its head if that is all that matters; what
///        lies behind them is missing in the result
QVector<UpdateFile> readUpdateFiles(const QString& folder,
                                    qint64 mostBytes = std::numeric_limits<qint64>::max());
