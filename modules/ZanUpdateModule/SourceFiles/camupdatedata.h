#pragma once

#include <VersionInfo>

#include <QString>
#include <QStringList>

/// The head of one camera update file (docs/formats.md), and what its models ask of an update.
///
/// Read once, at construction. A file that cannot be read leaves an object without models, which
/// fits no camera. Owned by the inventory.
class CamUpdateData
{
public:
    /// @param sFileName full path of the file
    explicit CamUpdateData(const QString& sFileName);

    void setFilename(const QString& fileName) { sFileName = fileName; }
    const QString& getFilename() const { return sFileName; }
    /// Model codes in the form 0x0c01.
    const QStringList& getCamModels() const { return listCamModels; }
    const VersionInfo& getMinVer() const { return minVer; }
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
