// All headers of the contract under this spelling; twice does no harm.
// Sorting would take the second ones away.
// clang-format off
// NOLINTBEGIN(readability-duplicate-include)
#include <BackendVersions>
#include <IOManager>
#include <MessageReceiver>
#include <ModuleInterface>
#include <VersionInfo>
#include <BackendVersions>
#include <IOManager>
#include <MessageReceiver>
#include <ModuleInterface>
#include <VersionInfo>
// NOLINTEND(readability-duplicate-include)

#include "headernames.h"
// clang-format on

ContractSizes sizesByBareNames()
{
    return {sizeof(BackendVersions), sizeof(IOManager),  sizeof(MessageReceiver),
            sizeof(ModuleInterface), sizeof(GuiElement), sizeof(VersionInfo)};
}
