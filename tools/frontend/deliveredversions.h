#pragma once

#include <testbench.h>

#include <QHash>
#include <QStringList>

/// The family whose images fit controllers of @p model.
int familyOf(int model);

/// A version with its pre-release text, "" for a release.
struct DeliveredVersion
{
    VersionInfo version;
    QString appendix;

    QString text() const { return version.toString() + appendix; }
};

/// The newest versions that a folder of update files brings, read by the tools' own reader and not
/// by the update module.
class DeliveredVersions
{
public:
    /// Reads every file in @p folder; what is no update file does not count.
    static DeliveredVersions read(const QString& folder);

    /// One line for each device of @p bench that does not run the newest versions that there are
    /// for its model, or was not found again. A controller that is not available is left out.
    QStringList missingIn(const TestBench& bench) const;

private:
    /// What there is for one family of controllers.
    struct Release
    {
        DeliveredVersion pt;
        DeliveredVersion ct;
    };

    void add(const struct ControllerImage& image);
    void add(const struct CameraUpdateFile& file);

    QHash<int, Release> m_controllers;      // by family
    QHash<int, DeliveredVersion> m_cameras; // by model code
};
