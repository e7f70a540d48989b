#pragma once

#include "updatefile.h"

#include <functional>

class QIODevice;

/// @file
/// Writes update files. The same value always gives the same bytes. Nothing is checked: numbers are
/// cut to the width of their field. All functions are safe to call from any thread.

/// Called now and then with the bytes written so far and those of the whole file.
using WriteProgress = std::function<void(qint64 done, qint64 total)>;

/// Writes a controller update image (header, block table, then the blocks in table order) or a
/// camera update file (head, image table, then the images in table order). Records that a source
/// gives are written as they come.
///
/// @param device open for writing; may be sequential
/// @param progress may be empty
/// @param error must not be null; receives one line on failure
bool writeUpdateFile(const UpdateFile& file, QIODevice& device, const WriteProgress& progress,
                     QString* error);

/// The bytes of a controller update image, whose sources must not fail.
QByteArray controllerImageBytes(const ControllerImage& image);

/// The bytes of a camera update file, whose sources must not fail.
QByteArray cameraUpdateBytes(const CameraUpdateFile& file);

/// The bytes of either.
QByteArray updateFileBytes(const UpdateFile& file);
