#pragma once

#include <VersionInfo>

#include <QList>

class BackendVersions;
class ZanController;
class ZanDisplay;

/// @file
/// What the rows of the inventory that the user selected come to.

/// The versions of the tracking software among the rows that are selected for a run.
struct SelectedVersions
{
    /// above all that controllers report if no row has one
    VersionInfo lowestInstalled = VersionInfo(99, 9, 9);
    VersionInfo highestOffered = VersionInfo(0, 0, 0); ///< of those with a higher major number
    int controllerRows = 0;                            ///< rows with a controller

    /// Looks at @p rows in their order, which counts; rows of cameras are passed over.
    static SelectedVersions of(const QList<ZanDisplay*>& rows);

    /// Whether a run goes from below @p border to it or beyond it.
    bool crosses(const VersionInfo& border) const
    {
        return lowestInstalled < border && highestOffered >= border;
    }
};

/// The blocks of controller images that a run of these rows counts. A slave that the backend could
/// not be redirected to counts nothing; the run itself has no such test.
int countedBlocks(const QList<ZanDisplay*>& rows, const BackendVersions* beVers);

/// Whether there are rows of slaves, and some but not all rows are selected.
bool isPartOfCascade(const QList<ZanDisplay*>& rows);

/// The controllers of selected rows whose support has ended, once for each row.
QList<ZanController*> discontinuedControllers(const QList<ZanDisplay*>& rows);
