// All headers of the contract under this spelling; twice does no harm.
// Sorting would take the second ones away.
// clang-format off
// NOLINTBEGIN(readability-duplicate-include)
#include <BackendVersions.h>
#include <IOManager.h>
#include <MessageReceiver.h>
#include <ModuleInterface.h>
#include <VersionInfo.h>
#include <BackendVersions.h>
#include <IOManager.h>
#include <MessageReceiver.h>
#include <ModuleInterface.h>
#include <VersionInfo.h>
// NOLINTEND(readability-duplicate-include)

#include "headernames.h"
// clang-format on

ContractSizes sizesBySuffixedNames()
{
    return {sizeof(BackendVersions), sizeof(IOManager),  sizeof(MessageReceiver),
            sizeof(ModuleInterface), sizeof(GuiElement), sizeof(VersionInfo)};
}
