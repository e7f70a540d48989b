#include "withoutrow.h"

#include "inventory.h"

#include <ZanController.h>
#include <ZanDisplay.h>
#include <camupdatedata.h>
#include <checksumlist.h>

#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <algorithm>

namespace {

QString versionsText(const VersionInfo& pt, const VersionInfo& ct)
{
    return QStringLiteral("Pt %1 and Ct %2").arg(pt.toString(), ct.toString());
}

QString rangesText(const ZanData& image)
{
    QStringList ranges;
    for (int index = 0; index < image.getNumberOfUpdateBlocks(); ++index) {
        const ZanUpdateBlock& block = *image.getUpdateBlock(index);
        const bool movesPt = block.type == ZAN_FIRMWARE_UPDATE;
        if (movesPt || block.type == ZAN_SYSTEM_UPDATE)
            ranges +=
                QStringLiteral("%1 %2 to %3")
                    .arg(movesPt ? "Pt" : "Ct", block.minVer.toString(), block.maxVer.toString());
    }
    return ranges.join(QStringLiteral(", "));
}

QString whyNoBlock(const ZanData& image, const VersionInfo& pt, const VersionInfo& ct)
{
    const QString ranges = rangesText(image);
    if (ranges.isEmpty())
        return QStringLiteral("it has neither a firmware nor a system block");
    return QStringLiteral("no block applies at %1: its blocks are for %2")
        .arg(versionsText(pt, ct), ranges);
}

// The running position of the controller must be the one at which the image finds it. Empty if the
// image gives it a row.
QString whyNoRow(ZanController* controller, ZanData* image)
{
    if (!image->canUpdateSystemModel(controller->getSystemModel()))
        return QStringLiteral("it is for the family %1, and the controller reports model %2")
            .arg(image->getSystemModelDesc())
            .arg(controller->getSystemModel());
    const VersionInfo pt = controller->currentPt;
    const VersionInfo ct = controller->currentCt;
    const ZanDisplay row(controller, image);
    if (!row.updateIndexes().isEmpty())
        return QString();
    const bool bringsMore = controller->getVersionLumasolver() < image->newPtVersion() ||
                            controller->getVersionController() < image->newCtVersion();
    const bool isPreReleaseOfIt = controller->isPreRelease() &&
                                  controller->getVersionLumasolver() == image->newVornix2Version();
    if (bringsMore || isPreReleaseOfIt)
        return whyNoBlock(*image, pt, ct);
    return QStringLiteral("it brings %1, and the controller runs no less")
        .arg(versionsText(image->newPtVersion(), image->newCtVersion()));
}

/// The walk along the images that the inventory makes, once more and with a look at each step.
class Walk
{
public:
    explicit Walk(Inventory& inventory) : m_inventory(inventory) {}

    /// One reason for each image of the inventory, empty where there is a row.
    QStringList reasons(ZanController* controller) const;

private:
    Inventory& m_inventory;
};

QStringList Walk::reasons(ZanController* controller) const
{
    controller->currentPt = controller->getVersionLumasolver();
    controller->currentCt = controller->getVersionController();
    const bool isLeftOut = !m_inventory.isAnyControllerBehind() || !controller->getNeedUpdate();
    QStringList reasons;
    for (ZanData* image : qAsConst(m_inventory.listUpdates)) {
        reasons += isLeftOut
                       ? QStringLiteral("the controller counts as up to date: it runs %1, and the "
                                        "images bring no more")
                             .arg(versionsText(controller->getVersionLumasolver(),
                                               controller->getVersionController()))
                       : whyNoRow(controller, image);
    }
    return reasons;
}

QString whyOtherFile(const QString& name)
{
    return name.endsWith(QLatin1String(".VX2znimg")) || isPartOfSeal(QFile::encodeName(name))
               ? QString()
               : QStringLiteral("it is no controller update image that the plug-in can read");
}

QString whyNoCameraRow(const CamUpdateData& file, const Inventory& inventory,
                       const Scenario& scenario)
{
    if (file.getCamModels().isEmpty())
        return QStringLiteral("it is no camera update file that the plug-in can read");
    const QList<ZanDisplay*>& rows = inventory.listZanDisplay;
    if (!rows.isEmpty() && rows.constFirst()->type() != CAMERA_UPDATE)
        return QStringLiteral("cameras are offered only where no controller has a row");
    const bool hasCamera = std::any_of(
        scenario.cameras.begin(), scenario.cameras.end(),
        [&](const ScenarioCamera& camera) { return file.getCamModels().contains(camera.model); });
    if (!hasCamera)
        return QStringLiteral("no camera is of model %1")
            .arg(file.getCamModels().join(QStringLiteral(", ")));
    return QStringLiteral("no camera of model %1 runs %2 or more and less than %3")
        .arg(file.getCamModels().join(QStringLiteral(", ")), file.getMinVer().toString(),
             file.getNewVer().toString());
}

bool hasRow(const Inventory& inventory, const CamUpdateData* file)
{
    return std::any_of(inventory.listZanDisplay.begin(), inventory.listZanDisplay.end(),
                       [&](const ZanDisplay* row) { return row->getCamUpdate() == file; });
}

QString nameOf(const QString& path)
{
    return QFileInfo(path).fileName();
}

QVector<FileWithoutRow> imagesWithoutRow(Inventory& inventory)
{
    QVector<QStringList> reasons; // by controller
    for (ZanController* controller : qAsConst(inventory.listZanController))
        reasons += Walk(inventory).reasons(controller);
    QVector<FileWithoutRow> files;
    for (int image = 0; image < inventory.listUpdates.size(); ++image) {
        const QString name = nameOf(inventory.listUpdates.at(image)->fileName());
        const bool isTheSame =
            std::all_of(reasons.begin(), reasons.end(), [&](const QStringList& list) {
                return list.at(image) == reasons.constFirst().at(image);
            });
        for (int index = 0; index < (isTheSame ? 1 : reasons.size()); ++index) {
            const QString reason = reasons.at(index).at(image);
            const QString device =
                isTheSame ? QString() : inventory.listZanController.at(index)->hostname();
            if (!reason.isEmpty())
                files += {device, name, reason};
        }
    }
    return files;
}

QVector<FileWithoutRow> unreadImages(const DeliveredFiles& delivery)
{
    QVector<FileWithoutRow> files;
    for (const DeliveredImage& image : delivery.images())
        files += {QString(), image.name,
                  QStringLiteral("the plug-in reads no image on a BRIARSCOPE this old")};
    return files;
}

} // namespace

QVector<FileWithoutRow> filesWithoutRow(const DeliveredFiles& delivery, Inventory& inventory,
                                        const Scenario& scenario)
{
    QVector<FileWithoutRow> files =
        inventory.listUpdates.isEmpty() ? unreadImages(delivery) : imagesWithoutRow(inventory);
    for (const CamUpdateData* file : qAsConst(inventory.listCamUpdates)) {
        // A controller image under that name has its rows all the same.
        const bool isImage = std::any_of(
            delivery.images().begin(), delivery.images().end(),
            [&](const DeliveredImage& image) { return image.name == nameOf(file->getFilename()); });
        if (!isImage && !hasRow(inventory, file))
            files += {QString(), nameOf(file->getFilename()),
                      whyNoCameraRow(*file, inventory, scenario)};
    }
    for (const QString& name : delivery.otherFiles()) {
        if (const QString reason = whyOtherFile(name); !reason.isEmpty())
            files += {QString(), name, reason};
    }
    return files;
}
