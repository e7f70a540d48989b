#pragma once

#include <deliveredfiles.h>

#include <fixturefiles.h>
#include <imagefixtures.h>

#include <QMap>

/// @file
/// Deliveries for tests: images whose blocks carry small payloads that simulated devices take.

/// A block that brings @p version; @p type is a BlockType.
ControllerImageBlock payloadBlock(quint16 type, const VersionInfo& minVer,
                                  const VersionInfo& maxVer, const VersionInfo& version,
                                  const QString& appendix = QString());

/// What a release engineer usually makes: a final release that takes every controller from @p minPt
/// and Ct 0.0 on, its own pre-releases among them. Marks and ranges may be changed afterwards.
ControllerImage usualImage(const VersionInfo& pt, const VersionInfo& ct,
                           const VersionInfo& minPt = VersionInfo(0, 0, 0));

/// The same as a pre-release of @p kind (10 alpha, 20 beta, 30 release candidate), which takes no
/// other pre-release.
ControllerImage preReleaseImage(const VersionInfo& pt, const VersionInfo& ct, int kind, int number);

/// The version just below @p version that a range can end with.
VersionInfo justBelow(const VersionInfo& version);

/// Update files by name, written below @p folder. @return the folder that they are in
QString writeDelivery(const FixtureFolder& folder, const QMap<QString, UpdateFile>& files);

/// The same, read; ends the test program if that fails.
DeliveredFiles readDelivery(const FixtureFolder& folder, const QMap<QString, UpdateFile>& files);

Q_DECLARE_METATYPE(UpdateFile)
