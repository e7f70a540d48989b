#pragma once

#include <ZanData.h>
#include <payload.h>

#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QVector>

#include <memory>
#include <optional>
#include <vector>

/// What a controller makes of the records of one block.
struct BlockContent
{
    /// What comes of sending the block.
    enum Kind
    {
        Brings,     ///< a sound payload: the controller reports what stands in its head
        Assumed,    ///< content of an unknown kind: taken to bring what the image's header says
        Empty,      ///< no record: nothing is sent and nothing changes
        Refused,    ///< a payload that a controller refuses
        Unreadable, ///< the plug-in cannot read all records
    };

    Kind kind = Unreadable; ///< decides which of the other values count
    int records = 0;        ///< commands that the block takes, one for each record
    PayloadHead head;       ///< in Brings and Assumed: what the controller reports from then on
    QString reason;         ///< in Refused and Unreadable: one line

    /// Whether a run goes on behind the block.
    bool isTaken() const { return kind == Brings || kind == Assumed || kind == Empty; }
};

/// One controller update image of a delivery.
struct DeliveredImage
{
    QString name;                  ///< of the file, without a folder
    std::unique_ptr<ZanData> data; ///< as the plug-in reads it
    QVector<BlockContent> blocks;  ///< one for each block of the table
};

/// A folder of update files, with what the plug-in's own readers see in it. Nothing in the folder
/// is written; what the plug-in is to read is linked from a temporary folder, as its path decides
/// which files can be opened, and at the desk of whoever delivers it is another one.
///
/// To be used from one thread.
class DeliveredFiles
{
public:
    /// Reads @p folder: the folder of the update files, or one that has them in a
    /// "controller_update", which is looked for as the plug-in does. No update file at all is a
    /// failure.
    /// @param error must not be null; receives one line "FOLDER: REASON" on failure
    static std::optional<DeliveredFiles> read(const QString& folder, QString* error);

    /// Ascending by release; those of one release by name.
    const std::vector<DeliveredImage>& images() const { return m_images; }
    /// The names of all other files, by name.
    const QStringList& otherFiles() const { return m_otherFiles; }
    /// Full path of the file @p name of the delivery.
    QString filePath(const QString& name) const;

    /// A program's folder whose "controller_update" has all files under their own names.
    QString programFolder() const { return m_links->path(); }

    /// Links images in another order of names: @p order holds indexes into images(). Each name gets
    /// a number in front, which is not part of what the plug-in reads out of a name.
    /// @param error must not be null
    /// @return a program's folder, which goes with the object; null on failure
    std::unique_ptr<QTemporaryDir> layOut(const QVector<int>& order, QString* error) const;

    /// The name of image @p index when it is laid out at @p position.
    QString nameAt(int position, int index) const;

private:
    explicit DeliveredFiles(const QString& folder);

    bool hasUpdateFile() const;
    bool link(QString* error);
    void readImages();

    QString m_folder;
    std::unique_ptr<QTemporaryDir> m_links;
    std::vector<DeliveredImage> m_images;
    QStringList m_otherFiles;
};
