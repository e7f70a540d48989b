#pragma once

#include <QByteArray>
#include <QStringList>
#include <QVector>

/// @file
/// The list of checksums that seals a folder, in the form that `sha256sum --check` reads, and how
/// names of files are shown. Names are bytes here, as they are to the system: what they mean must
/// not depend on a locale. Safe to use from any thread.

/// Name of the list in the folder that it seals.
constexpr char checksumListName[] = "SHA256SUMS";

/// Name of the signature of that list, beside it.
constexpr char signatureName[] = "SHA256SUMS.minisig";

/// Whether @p name is one of the two files above, which no list can hold.
bool isPartOfSeal(const QByteArray& name);

/// One file and its checksum.
struct SealedFile
{
    QByteArray name;   ///< without a folder
    QByteArray sha256; ///< 32 bytes
};

/// The list of @p files, one line for each in the order of their bytes, with the names escaped as
/// sha256sum does.
QByteArray checksumListText(QVector<SealedFile> files);

/// What a list says.
struct ChecksumList
{
    QVector<SealedFile> files; ///< no name twice, and each one of a file in the folder itself
    QStringList problems;      ///< "line 3: REASON" for each line that says something else
};

/// Reads a list of any origin: in any order, and with both marks (" " and "*") before the names.
ChecksumList readChecksumList(const QByteArray& text);

/// @p name for people and for JSON: as UTF-8, with backslashes and line ends escaped as sha256sum
/// does, and with every other byte or character that cannot be shown in hexadecimal ("\\x1b").
QString shownName(const QByteArray& name);
