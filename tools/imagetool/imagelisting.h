#pragma once

#include <QByteArray>
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

/// The content of one update file, ready to be shown to people or programs.
struct UpdateFileListing
{
    ListingFields head;
    QString partsName;            ///< "blocks" or "images"
    QVector<ListingFields> parts; ///< one for each block or image
    QStringList problems;         ///< one line each; empty for a sound file
};

/// Lists @p bytes, the content of a file. Besides the format itself, the payloads are verified: one
/// that is damaged, or for another version than the file's head says, is a problem.
UpdateFileListing listUpdateFile(const QByteArray& bytes);

/// The listing without its problems as text, one value per line.
QString listingText(const UpdateFileListing& listing);

/// The listing as JSON, the problems in a list "problems".
QJsonObject listingJson(const UpdateFileListing& listing);
