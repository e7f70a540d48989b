#pragma once

#include "updatefile.h"

/// @file
/// Writes update files. The same value always gives the same bytes. Nothing is checked: numbers are
/// cut to the width of their field. All functions are safe to call from any thread.

/// The bytes of a controller update image: header, block table, then the blocks in table order.
QByteArray controllerImageBytes(const ControllerImage& image);

/// The bytes of a camera update file: head, image table, then the images in table order.
QByteArray cameraUpdateBytes(const CameraUpdateFile& file);

/// The bytes of either.
QByteArray updateFileBytes(const UpdateFile& file);
