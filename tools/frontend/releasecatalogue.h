#pragma once

#include <VersionInfo.h>

#include <QString>
#include <QVector>

#include <optional>

/// What one controller image says of the release that it brings.
struct Release
{
    /// The controller firmware that a system block can start from.
    struct Range
    {
        VersionInfo lowest;
        VersionInfo highest;
    };

    int modelFamily = 0;
    VersionInfo pt;
    VersionInfo ct;
    std::optional<QString> appendix; ///< pre-release text of Pt; nullopt: the image does not tell
    QVector<Range> systemBlocks;

    /// The controller firmware after this release on a controller that runs @p before.
    VersionInfo ctAfter(VersionInfo before) const;
};

/// The releases that the controller images of a folder bring. Only the heads of the files are read.
class ReleaseCatalogue
{
public:
    ReleaseCatalogue() = default;
    explicit ReleaseCatalogue(const QVector<Release>& releases) : m_releases(releases) {}

    /// Reads every file in @p folder; what is no controller image does not count.
    static ReleaseCatalogue read(const QString& folder);

    /// The release that brings @p pt to controllers of @p model; nullopt if there is none, or
    /// several.
    std::optional<Release> find(VersionInfo pt, int model) const;

private:
    QVector<Release> m_releases;
};
