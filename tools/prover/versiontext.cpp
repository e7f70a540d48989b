#include "versiontext.h"

namespace {

constexpr int highestPart = 65535;

bool isWord(int part)
{
    return part >= 0 && part <= highestPart;
}

} // namespace

bool isUsual(const VersionInfo& version, VersionParts parts)
{
    const bool hasPatch = parts == PtParts ? isWord(version.pa) : version.pa == -1;
    return isWord(version.ma) && isWord(version.mi) && hasPatch;
}

std::optional<VersionInfo> versionOf(const QString& text, VersionParts parts)
{
    const VersionInfo version = VersionInfo::fromString(text);
    const QString numbers = text.startsWith(QLatin1Char('v')) ? text : QLatin1Char('v') + text;
    // Told again in the same words, or it was something else.
    if (!isUsual(version, parts) || version.toString() != numbers)
        return std::nullopt;
    return version;
}
