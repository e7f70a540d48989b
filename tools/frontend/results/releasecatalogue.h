#pragma once

#include <VersionInfo.h>

#include <QHash>
#include <QString>
#include <QVector>

#include <optional>

/// The folder in which a module of the program in @p programDir looks for update files; if it finds
/// none, where it looks first.
QString updateFolder(const QString& programDir);

/// What one controller image says of the release that it brings.
struct Release
{
    /// The controller firmware that a system block can start from.
    struct Range
    {
        VersionInfo lowest;  ///< belongs to the range
        VersionInfo highest; ///< belongs to the range
    };

    int modelFamily = 0;             ///< the model number in the image
    VersionInfo pt;                  ///< tracking software after the update
    VersionInfo ct;                  ///< controller firmware after the update of a system block
    std::optional<QString> appendix; ///< pre-release text of Pt; nullopt: the image does not tell
    QVector<Range> systemBlocks;     ///< in the order of the image's table

    /// The controller firmware after this release on a controller that runs @p before.
    VersionInfo ctAfter(VersionInfo before) const;
};

/// A version with its pre-release text, "" for a release.
struct DeliveredVersion
{
    VersionInfo version; ///< all parts that the file gives
    QString appendix;    ///< for example "-beta.2"

    /// Of one version the release is newer than its pre-releases, and those are equally new.
    bool isNewerThan(const DeliveredVersion& other) const;
    /// For example "v3.1.0-beta.2".
    QString text() const { return version.toString() + appendix; }
};

/// The newest versions that devices of one kind would report after an update.
struct NewestVersions
{
    DeliveredVersion pt; ///< what "system version" would tell
    DeliveredVersion ct; ///< what "system controller_version" would tell
};

/// What the update files of a folder bring, read by the tools' own reader and not by the update
/// module. What is no update file does not count.
class ReleaseCatalogue
{
public:
    ReleaseCatalogue() = default;
    /// A catalogue of these releases, without reading any file.
    explicit ReleaseCatalogue(const QVector<Release>& releases) : m_releases(releases) {}

    /// Reads the heads of all files in @p folder: enough for find(), however large they are.
    static ReleaseCatalogue readHeads(const QString& folder);
    /// Reads all files in @p folder with what devices would make of their blocks.
    static ReleaseCatalogue readAll(const QString& folder);

    /// The release that brings @p pt to controllers of @p model; nullopt if there is none, or
    /// several.
    std::optional<Release> find(VersionInfo pt, int model) const;

    /// The newest versions in the blocks for controllers of @p model. Parts that nothing brings
    /// are no newer than any version.
    NewestVersions newestForController(int model) const;
    /// The same for cameras of the code @p model.
    DeliveredVersion newestForCamera(int model) const { return m_cameras.value(model); }

private:
    void addHead(const struct ControllerImage& image);
    void addHead(const struct CameraUpdateFile& /*file*/) {}
    void addContent(const ControllerImage& image);
    void addContent(const CameraUpdateFile& file);

    QVector<Release> m_releases;
    QHash<int, NewestVersions> m_controllers; // by family
    QHash<int, DeliveredVersion> m_cameras;   // by model code
};
