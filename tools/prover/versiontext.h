#pragma once

#include <VersionInfo.h>

#include <QString>

#include <optional>

/// How many parts the versions have that update files bring.
enum VersionParts
{
    CtParts = 2,
    PtParts = 3,
};

/// The version that @p text is: @p parts numbers from 0 to 65535 with dots between them, and
/// perhaps a "v" in front. Safe to call from any thread.
/// @return nullopt for anything else
std::optional<VersionInfo> versionOf(const QString& text, VersionParts parts);

/// Whether an update file can bring @p version.
bool isUsual(const VersionInfo& version, VersionParts parts);
