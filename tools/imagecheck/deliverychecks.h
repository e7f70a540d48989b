#pragma once

#include <imagescan.h>

/// @file
/// What is wrong with update files that are delivered together. Safe to call from any thread.

/// One file of a delivery.
struct DeliveredFile
{
    QString path;        ///< as its findings name it
    ScannedFile scanned; ///< what was read of it, which may be cut short or no update file
};

/// What is wrong between the files of one folder, with the file of each finding.
QVector<RuleFinding> checkDelivery(const QVector<DeliveredFile>& files);

/// The folder from which the plug-in reads update files, if it is delivered with @p folder: itself,
/// or the first "controller_update" below it.
QString updateFolderOf(const QString& folder);

/// What lies in or below @p folder so that the plug-in never looks at it.
QVector<RuleFinding> checkFolders(const QString& folder);

/// Whether a file that is no update file was not meant to be one either, as far as its name tells.
bool isForeignToDeliveries(const QString& path);

/// Whether the file is a seal, which may lie beside update files.
bool isSealOfDelivery(const QString& path);
