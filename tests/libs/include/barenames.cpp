// All headers of the contract under this spelling; twice does no harm.
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

#include "headernames.h"

ContractSizes sizesByBareNames()
{
    return {sizeof(BackendVersions), sizeof(IOManager),  sizeof(MessageReceiver),
            sizeof(ModuleInterface), sizeof(GuiElement), sizeof(VersionInfo)};
}
