#pragma once

#include <imagescan.h>

#include <QJsonObject>
#include <QJsonValue>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVector>

/// @file
/// What `imagetool show` tells about a file. All functions are safe to call from any thread.

/// Named values in the order in which they are shown.
using ListingFields = QVector<QPair<QString, QJsonValue>>;

/// The content of one update file, ready to be shown to people.
struct UpdateFileListing
{
    ListingFields head;            ///< of the whole file
    QString partsName;             ///< "blocks" or "images"
    QVector<ListingFields> parts;  ///< one for each block or image
    QVector<RuleFinding> findings; ///< of what was scanned, and of the payloads
};

/// Lists a file. Besides the format itself, the payloads are looked at: one that is damaged, or for
/// another version than the file's head says, is a finding.
UpdateFileListing listUpdateFile(const ScannedFile& scanned);

/// The same of the whole content of a file.
UpdateFileListing listUpdateFile(const QByteArray& bytes);

/// The listing without its findings as text, one value per line.
QString listingText(const UpdateFileListing& listing);

/// The listing as the description of the file, from which `imagetool build` makes the same bytes
/// unless there are findings. What a description has no key for stands under "shown".
/// @param fileName the absolute path of the file, from which the records are to be taken
QJsonObject listingJson(const ScannedFile& scanned, const QString& fileName);
