#include "globaldefines.h"

#include <BackendVersions>

bool protocolAtLeast(const BackendVersions* beVers, const VersionInfo& version)
{
    return beVers->protocol() >= version;
}

bool isBriarscopeFamily(const BackendVersions* beVers)
{
    return beVers->zanModel().startsWith(QLatin1String("BRIARSCOPE"));
}

bool isPlainBriarscope(const BackendVersions* beVers)
{
    return beVers->zanModel() == QLatin1String("BRIARSCOPE");
}
