#pragma once

#include "versiontext.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

/// @file
/// Cuts all versions into finitely many classes; docs/proving-deliveries.md tells why one version
/// of each is enough. All functions are safe to call from any thread.

/// A class of versions: one limit, or everything between two limits.
struct VersionCell
{
    std::optional<VersionInfo> from; ///< the limit, or the one below; none: the lowest class
    std::optional<VersionInfo> to;   ///< the limit, or the one above; none: the highest class
    bool isLimit = false;            ///< from and to are the one version of the class
    VersionInfo example;   ///< a version of the class, one that files can bring if it has any
    bool hasUsual = false; ///< whether it has one

    QString lowText() const;  ///< "from v3.1.0" or "above v3.1.0"; empty for the lowest class
    QString highText() const; ///< "to v3.1.0" or "below v3.1.0"; empty for the highest class
};

/// The classes in ascending order, from the version of an empty reply on.
QVector<VersionCell> versionCells(QVector<VersionInfo> limits, VersionParts parts);

/// What a controller may run as tracking software: a class of versions and, at a limit where it
/// matters, what it reports behind the version.
struct PtClass
{
    VersionCell cell;     ///< its versions
    QString mark;         ///< as reported, for example "-beta.2"; empty for a release
    bool isOther = false; ///< stands for every pre-release that is none of the images'

    /// The reply of the controller, without a date.
    QString reported() const { return cell.example.toString() + mark; }
    /// As VersionCell::lowText(), with what stands behind the version: "from v3.1.0-beta.2".
    QString lowText() const;
    /// As VersionCell::highText(), with what stands behind the version: "to v3.1.0-beta.2".
    QString highText() const;
};

/// A version of tracking software at which pre-releases come apart, with a mark that an image gives
/// it; the mark may be empty.
struct MarkedVersion
{
    VersionInfo version; ///< three parts
    QString mark;        ///< for example "-beta.2"
};

/// The classes of tracking software in ascending order. At each version of @p marked the
/// pre-releases come apart: each of its marks, and one that is none of them.
QVector<PtClass> ptClasses(const QVector<VersionInfo>& limits,
                           const QVector<MarkedVersion>& marked);

/// The range from class @p first to class @p last, as people say it: "v3.1.0", "from v2.0.0 below
/// v3.1.0", "all".
template <typename Class>
QString rangeText(const Class& first, const Class& last)
{
    const QString low = first.lowText();
    const QString high = last.highText();
    // "from v3.1.0" and "to v3.1.0"
    QString only = low.section(QLatin1Char(' '), 1);
    if (low.startsWith(QLatin1String("from ")) && high == QLatin1String("to ") + only)
        return only;
    QString text = (low + QLatin1Char(' ') + high).trimmed();
    return text.isEmpty() ? QStringLiteral("all") : text;
}

/// Where a pre-release stands among those of one version: alpha, beta, rc by their numbers, then
/// the release; a mark of another form stands below them all.
bool isEarlierMark(const QString& mark, const QString& than);
