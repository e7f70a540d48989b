#pragma once

#include <zanmoduleserver.h>

/// The plug-in's own inventory as an object that anybody may make: the plug-in has one for its
/// whole life, while here many deliveries and systems are looked at in one process.
///
/// Update files are read at construction; refresh() asks the controllers again and rebuilds the
/// rows, which makes earlier pointers to either void. To be used from one thread.
class Inventory : private ZanModuleServer
{
public:
    /// @param programFolder the folder below which the update files are looked for
    /// The channel and the versions must outlive the object.
    Inventory(IOManager* channel, const QString& programFolder, BackendVersions* versions)
        : ZanModuleServer(channel, programFolder, versions)
    {
    }

    /// Asks all controllers again and rebuilds the rows; blocks while they answer.
    void refresh() { redo_fillListZanDisplay(); }

    /// Whether a controller is to be updated, so that the dialog looks for rows of controllers.
    bool isAnyControllerBehind() const
    {
        return !listUpdates.isEmpty() && !allControllersUpToDate(true);
    }
    /// Whether the plug-in asks for an update of the controllers when the frontend starts on a
    /// system with @p versions.
    bool asksForUpdate(const BackendVersions& versions) const
    {
        return isAnyControllerBehind() && !isExemptFromStartPrompt(&versions);
    }

    using ZanModuleServer::getHighestCtVersionFromUpdateFiles;
    using ZanModuleServer::getHighestPtVersionAppendix;
    using ZanModuleServer::getHighestPtVersionFromUpdateFiles;
    using ZanModuleServer::listCamUpdates;
    using ZanModuleServer::listUpdates;
    using ZanModuleServer::listZanController;
    using ZanModuleServer::listZanDisplay;
};
