#pragma once

#include <VersionInfo>

#include <QString>
#include <QStringList>

/// Seconds that a camera needs for the last command of an image, if the image is for @p models: the
/// first model that asks for a time of its own decides. Safe to call from any thread.
double durationLastCmdSec(const QStringList& models);

/// The head of one camera update file (docs/formats.md), and what its models ask of an update.
///
/// Read once, at construction. A file that cannot be read leaves an object without models, which
/// fits no camera. Owned by the inventory.
class CamUpdateData
{
public:
    /// @param sFileName full path of the file
    explicit CamUpdateData(const QString& sFileName);

    /// Names another file, which is not read: models and versions stay those of the first.
    void setFilename(const QString& fileName) { sFileName = fileName; }
    /// Full path of the file.
    const QString& getFilename() const { return sFileName; }
    /// Model codes in the form 0x0c01.
    const QStringList& getCamModels() const { return listCamModels; }
    /// Lowest firmware from which a camera can take the file.
    const VersionInfo& getMinVer() const { return minVer; }
    /// Firmware of a camera that took the file.
    const VersionInfo& getNewVer() const { return newVer; }

    /// Seconds that a camera of these models needs for the last command of an image.
    double getDurationLastCmdSec() const;
    /// Whether a camera of these models must be searched for again after the update.
    bool isNeedsSearchHardware() const;

private:
    int readFileInfo();

    QString sFileName;
    QStringList listCamModels;
    VersionInfo minVer;
    VersionInfo newVer;
    bool m_bDoUdpate = false; // of no further use at present; the spelling is the member's name
};
