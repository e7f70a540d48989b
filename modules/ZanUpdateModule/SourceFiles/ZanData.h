#pragma once

#include "globaldefines.h"

#include <VersionInfo>

#include <QString>
#include <QVector>

#include <cstdio>

class LittleEndianReader;

/// One entry of an image's block table.
struct ZanUpdateBlock
{
    /// ZAN_UPDATE_NOTDEFINED for a type that the module does not know
    ZAN_UPDATE_TYPE type = ZAN_UPDATE_NOTDEFINED;
    int offset = 0;     ///< position of the block's first byte in the file; may be nonsense
    int length = 0;     ///< as read; no decision depends on it
    VersionInfo minVer; ///< lowest version of the updated component from which the block applies
    VersionInfo maxVer; ///< highest version of the updated component to which the block applies
};

/// The head and the block table of one controller update image (docs/formats.md).
///
/// Read once, at construction; the blocks' content stays on disk. A file that is no image, or ends
/// too early, leaves an invalid object. Owned by the inventory, never copied; rows point to it.
class ZanData
{
public:
    /// @param fileName full path of the file; neither its name nor its extension has to fit
    explicit ZanData(const QString& fileName);
    ZanData(const ZanData&) = delete;
    ZanData& operator=(const ZanData&) = delete;

    /// Full path of the file, as given.
    const QString& fileName() const { return sFileName; }
    /// Whether there is at least one block.
    bool isValid() const { return !blocks.isEmpty(); }
    /// Length of the block table, blocks of unknown type included; 0 if the image is invalid.
    int getNumberOfUpdateBlocks() const { return blocks.size(); }
    /// Block @p i, valid as long as this object; null if there is none.
    const ZanUpdateBlock* getUpdateBlock(int i) const;
    /// A fresh stream on the first byte of block @p i, which the caller must close; null if there
    /// is no such block or the file cannot be opened.
    FILE* getUpdateBlockInFile(int i) const;

    /// The release that the image belongs to.
    VersionInfo newVornix2Version() const { return newVX2Ver; }
    /// Lowest Ct from which a controller can take the image.
    VersionInfo minCtVersion() const { return minCtVer; }
    /// Ct of a controller that took the image.
    VersionInfo newCtVersion() const { return newCtVer; }
    /// Lowest Pt from which a controller can take the image.
    VersionInfo minPtVersion() const { return minPtVer; }
    /// Upper limit of the last firmware block; 0.2.0 without one.
    VersionInfo maxPtVersion() const { return maxPtVer; }
    /// Pt of a controller that took the image.
    VersionInfo newPtVersion() const { return newPtVer; }
    /// Pre-release mark such as -beta.3, from the dated head or else from the file's name; empty
    /// for a release.
    QString getPreReleaseAppendix() const { return sPreReleaseAppendix; }
    /// 0 or 21, by the magic; -1 for another one; 0 if the file cannot be read.
    int getSystemModel() const { return systemModel; }
    /// ZAN or BRIARSCOPE3, by the magic; UNKNOWN for another one; ZAN if the file cannot be read.
    QString getSystemModelDesc() const { return systemModelDesc; }
    /// Whether the image fits a controller that reports the model number @p model.
    bool canUpdateSystemModel(int model) const;
    /// Whether the head has dates and could be read up to them.
    bool hasReleaseDates() const { return m_hasReleaseDates; }
    /// In the form 2025-03-14, digits as in the file; empty without dates.
    const QString& getReleaseDate() const { return m_releaseDate; }
    /// Date of the minor release, in the same form; empty without dates.
    const QString& getReleaseMinorDate() const { return m_releaseMinorDate; }

private:
    int readFileInfo();
    int readMagic(LittleEndianReader& reader, bool* hasDates);
    int readRelease(LittleEndianReader& reader, bool hasDates);
    int readPreReleaseAndDates(LittleEndianReader& reader);
    int readComponentVersions(LittleEndianReader& reader);
    int readBlockTable(LittleEndianReader& reader);
    int readBlock(LittleEndianReader& reader, ZanUpdateBlock* block);
    static QString getPreReleaseAppendixFromFilename(const QString& path);
    static QString getPreReleaseAppendix(int type, int number);

    QString sFileName;
    VersionInfo newVX2Ver;
    QString sPreReleaseAppendix;
    VersionInfo minCtVer = VersionInfo(0, 2);
    VersionInfo newCtVer = VersionInfo(0, 2);
    VersionInfo minPtVer = VersionInfo(0, 2, 0);
    VersionInfo maxPtVer = VersionInfo(0, 2, 0);
    VersionInfo newPtVer = VersionInfo(0, 2, 0);
    bool m_hasReleaseDates = false;
    QString m_releaseDate;
    QString m_releaseMinorDate;
    QVector<ZanUpdateBlock> blocks;
    int systemModel = 0;
    QString systemModelDesc = QStringLiteral("ZAN");
};
