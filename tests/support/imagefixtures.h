#pragma once

#include "fixturefiles.h"

#include <imagewriter.h>

#include <QMetaType>

/// @file
/// Short ways to the update files that tests need; imagewriter.h has everything else.

/// A firmware block that applies from @p minVer to @p maxVer, with two records.
ControllerImageBlock firmwareBlock(const VersionInfo& minVer, const VersionInfo& maxVer);

/// A system block likewise; the versions have two parts.
ControllerImageBlock systemBlock(const VersionInfo& minVer, const VersionInfo& maxVer);

/// A final release in the dated layout for the model family 0, which may be applied from any
/// version on. The release is named after @p newPt.
ControllerImage releaseImage(const VersionInfo& newPt, const VersionInfo& newCt,
                             const QVector<ControllerImageBlock>& blocks);

/// A camera update file with one image of two records.
CameraUpdateFile cameraFile(const QVector<quint16>& models, const VersionInfo& newVer,
                            const VersionInfo& minVer = VersionInfo(0, 0, 0));

Q_DECLARE_METATYPE(CameraUpdateFile)
Q_DECLARE_METATYPE(ControllerImage)
