#pragma once

#include <VersionInfo.h>
#include <payload.h>

#include <QByteArray>
#include <QVector>

#include <array>
#include <memory>
#include <optional>
#include <utility>
#include <variant>

/// @file
/// The two update file formats as plain values; docs/formats.md describes their bytes.
///
/// An absent part of a version is written as 0xFFFF. Fields of type std::optional stand for what
/// the writer computes: set one to write something else, for a file that is meant to be wrong.

/// One binary record.
struct ImageRecord
{
    // NOLINTNEXTLINE(google-explicit-constructor): a record is its bytes
    /// A record of these bytes, which announces their number as its length.
    ImageRecord(QByteArray bytes = QByteArray()) : data(std::move(bytes)) {}

    QByteArray data;                        ///< at most maxRecordBytes in a valid file
    std::optional<quint16> announcedLength; ///< `ndat`
};

/// Cuts @p payload into records of @p recordLength bytes; the last one may be shorter.
QVector<ImageRecord> splitIntoRecords(const QByteArray& payload, int recordLength = maxRecordBytes);

/// The data of all records, joined together.
QByteArray joinRecords(const QVector<ImageRecord>& records);

/// What is known of the records of a block without holding them.
struct RecordTotals
{
    qint64 count = 0; ///< of records
    qint64 bytes = 0; ///< of their data
    int longest = 0;  ///< bytes of data in the longest one; 0 if there are none
};

/// Takes records one after the other.
class RecordSink
{
public:
    virtual ~RecordSink() = default;

    /// Takes a record of @p size bytes. @return false to get no more of them
    virtual bool take(const char* data, int size) = 0;
};

/// Records that are read or made while a file is written, and so need no memory.
class RecordSource
{
public:
    virtual ~RecordSource() = default;

    /// What feed() is going to give.
    virtual RecordTotals totals() const = 0;

    /// Gives all records to @p sink, as often as it is called.
    /// @param error must not be null; receives one line on failure
    /// @return whether @p sink got what it wanted, even if that was less than all
    virtual bool feed(RecordSink& sink, QString* error) const = 0;
};

/// What a controller block and a camera image have in common: a text and a stream of records.
struct RecordBlock
{
    QByteArray text;              ///< at most 49 bytes in a controller block, 200 in a camera image
    QVector<ImageRecord> records; ///< in the order in which they are sent
    std::shared_ptr<const RecordSource> source; ///< in the place of records, unless null

    std::optional<quint16> magic;       ///< first word of the block; that of its kind unless set
    std::optional<quint16> textLength;  ///< bytes of the text unless set
    std::optional<quint32> recordCount; ///< number of records unless set
    std::optional<quint16> maxRecordLength; ///< bytes in the longest record unless set
    std::optional<quint32> offset; ///< in the block or image table, from the start of the file
    std::optional<quint32> length; ///< in the block or image table, in bytes
};

/// The totals of the block's records, or of its source.
RecordTotals recordTotals(const RecordBlock& block);

/// Types of a controller block. The table can hold any other number as well.
enum BlockType : quint16
{
    FirmwareBlock = 1, ///< moves Pt; versions of three parts
    SystemBlock = 2,   ///< moves Ct; versions of two parts
};

/// One entry of the block table with its block.
struct ControllerImageBlock : RecordBlock
{
    quint16 type = FirmwareBlock; ///< a BlockType, or any other number
    VersionInfo minVer;           ///< lowest version of the component from which the block applies
    VersionInfo maxVer;           ///< highest version of the component to which the block applies
};

/// The two forms of the head of a controller update image.
enum class ImageLayout
{
    Plain, ///< the older header; a pre-release is told by the file's name
    Dated, ///< the newer header with pre-release numbers and dates
};

/// A date as three words of the file; nothing checks that it is one.
struct ImageDate
{
    int year = 0;  ///< four digits in a sound file
    int month = 0; ///< from 1 in a sound file
    int day = 0;   ///< from 1 in a sound file
};

/// The model family of controllers whose images have magics of their own.
constexpr int briarscopeFamily = 21;

/// A controller update image.
struct ControllerImage
{
    ImageLayout layout = ImageLayout::Dated; ///< decides which fields the head has
    int modelFamily = 0;                     ///< 0, or briarscopeFamily

    VersionInfo release;    ///< the release that the image belongs to, three parts
    int preReleaseType = 0; ///< dated layout only: 0 none, 10 alpha, 20 beta, 30 release candidate
    int preReleaseNumber = 0;   ///< dated layout only
    ImageDate releaseDate;      ///< dated layout only
    ImageDate minorReleaseDate; ///< dated layout only

    VersionInfo newPt; ///< Pt after the update
    VersionInfo newCt; ///< Ct after the update, two parts
    VersionInfo minPt; ///< lowest Pt that the update can start from
    VersionInfo minCt; ///< lowest Ct that the update can start from, two parts

    QVector<ControllerImageBlock> blocks; ///< in the order of the table

    std::array<quint16, 4> reserved{}; ///< in file order
    std::optional<quint16> magic;      ///< that of layout and model family unless set
    std::optional<quint16> blockCount; ///< number of blocks unless set
};

/// One image of a camera update file.
struct CameraImage : RecordBlock
{
    /// In the table; that of the file unless set.
    std::optional<VersionInfo> newVer;
    /// In the table; that of the file unless set.
    std::optional<VersionInfo> minVer;
};

/// A camera update file.
struct CameraUpdateFile
{
    VersionInfo newVer;          ///< firmware after the update, three parts
    VersionInfo minVer;          ///< lowest firmware that the update can start from, three parts
    QVector<quint16> models;     ///< model codes, for example 0x0901
    QVector<CameraImage> images; ///< in the order of the table

    std::array<quint16, 4> reserved{}; ///< the words of unknown meaning, in file order
    std::optional<quint16> magic;      ///< that of camera update files unless set
    std::optional<quint16> modelCount; ///< number of models unless set
    std::optional<quint16> imageCount; ///< number of images unless set
};

/// Either kind of update file.
using UpdateFile = std::variant<ControllerImage, CameraUpdateFile>;
