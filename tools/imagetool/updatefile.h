#pragma once

#include <VersionInfo.h>

#include <QByteArray>
#include <QVector>

#include <array>
#include <optional>
#include <utility>
#include <variant>

/// @file
/// The two update file formats as plain values; docs/formats.md describes their bytes.
///
/// An absent part of a version is written as 0xFFFF. Fields of type std::optional stand for what
/// the writer computes: set one to write something else, for a file that is wrong on purpose.

/// The most bytes that a controller or camera takes in one record.
constexpr int maxRecordBytes = 120;

/// One binary record.
struct ImageRecord
{
    // NOLINTNEXTLINE(google-explicit-constructor): a record is its bytes
    ImageRecord(QByteArray bytes = QByteArray()) : data(std::move(bytes)) {}

    QByteArray data;                        ///< at most maxRecordBytes in a valid file
    std::optional<quint16> announcedLength; ///< `ndat`
};

/// Cuts @p payload into records of @p recordLength bytes; the last one may be shorter.
QVector<ImageRecord> splitIntoRecords(const QByteArray& payload, int recordLength = maxRecordBytes);

/// The data of all records, joined together.
QByteArray joinRecords(const QVector<ImageRecord>& records);

/// Bytes in the longest of the records; 0 if there are none.
int longestRecord(const QVector<ImageRecord>& records);

/// What a controller block and a camera image have in common: a text and a stream of records.
struct RecordBlock
{
    QByteArray text; ///< at most 49 bytes in a controller block, 200 in a camera image
    QVector<ImageRecord> records;

    std::optional<quint16> magic;
    std::optional<quint16> textLength;
    std::optional<quint32> recordCount;
    std::optional<quint16> maxRecordLength;
    std::optional<quint32> offset; ///< in the block or image table, from the start of the file
    std::optional<quint32> length; ///< in the block or image table, in bytes
};

/// Types of a controller block. The table can hold any other number as well.
enum BlockType : quint16
{
    FirmwareBlock = 1, ///< moves Pt; versions of three parts
    SystemBlock = 2,   ///< moves Ct; versions of two parts
};

/// One entry of the block table with its block.
struct ControllerImageBlock : RecordBlock
{
    quint16 type = FirmwareBlock;
    VersionInfo minVer; ///< lowest version of the component from which the block applies
    VersionInfo maxVer; ///< highest version of the component to which the block applies
};

enum class ImageLayout
{
    Plain, ///< the older header; a pre-release is told by the file's name
    Dated, ///< the newer header with pre-release numbers and dates
};

/// A date as three words of the file; nothing checks that it is one.
struct ImageDate
{
    int year = 0;
    int month = 0;
    int day = 0;
};

/// The model family of controllers whose images have magics of their own.
constexpr int briarscopeFamily = 21;

/// A controller update image.
struct ControllerImage
{
    ImageLayout layout = ImageLayout::Dated;
    int modelFamily = 0; ///< 0, or briarscopeFamily

    VersionInfo release;
    int preReleaseType = 0; ///< dated layout only: 0 none, 10 alpha, 20 beta, 30 release candidate
    int preReleaseNumber = 0;   ///< dated layout only
    ImageDate releaseDate;      ///< dated layout only
    ImageDate minorReleaseDate; ///< dated layout only

    VersionInfo newPt; ///< Pt after the update
    VersionInfo newCt; ///< Ct after the update, two parts
    VersionInfo minPt; ///< lowest Pt that the update can start from
    VersionInfo minCt; ///< lowest Ct that the update can start from, two parts

    QVector<ControllerImageBlock> blocks;

    std::array<quint16, 4> reserved{}; ///< in file order
    std::optional<quint16> magic;
    std::optional<quint16> blockCount;
};

/// One image of a camera update file.
struct CameraImage : RecordBlock
{
    // The table's versions; those of the file unless set.
    std::optional<VersionInfo> newVer;
    std::optional<VersionInfo> minVer;
};

/// A camera update file.
struct CameraUpdateFile
{
    VersionInfo newVer;
    VersionInfo minVer;
    QVector<quint16> models; ///< model codes, for example 0x0901
    QVector<CameraImage> images;

    std::array<quint16, 4> reserved{}; ///< the words of unknown meaning, in file order
    std::optional<quint16> magic;
    std::optional<quint16> modelCount;
    std::optional<quint16> imageCount;
};

/// Either kind of update file.
using UpdateFile = std::variant<ControllerImage, CameraUpdateFile>;
