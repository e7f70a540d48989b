#pragma once

#include "updatefile.h"

#include <QStringList>

/// What was found in a file that may be an update file.
struct ReadUpdateFile
{
    /// As much of the file as could be read; nullopt if it is no update file. Magics, counts,
    /// offsets and lengths are set to what stands in the file.
    std::optional<UpdateFile> file;

    /// What is wrong, one line each with its place, for example "blocks[1]: offset 98: ...". Empty
    /// for a file that every device and reader would take.
    QStringList problems;
};

/// Reads an update file with all its records. Any bytes will do; nothing is trusted. Writing what
/// was read without problems gives the same bytes again, if the blocks lie in table order without
/// gaps. Safe to call from any thread.
ReadUpdateFile readUpdateFile(const QByteArray& bytes);
