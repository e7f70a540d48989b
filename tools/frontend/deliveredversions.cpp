#include "deliveredversions.h"

#include <imagereader.h>
#include <payload.h>
#include <reportedversion.h>

#include <QDir>
#include <QFile>

#include <algorithm>

// Of one version the release is newer than its pre-releases.
static bool isNewer(const DeliveredVersion& version, const DeliveredVersion& than)
{
    if (version.version != than.version)
        return version.version > than.version;
    return version.appendix.isEmpty() && !than.appendix.isEmpty();
}

static void takeNewer(DeliveredVersion* newest, const DeliveredVersion& candidate)
{
    if (isNewer(candidate, *newest))
        *newest = candidate;
}

static std::optional<PayloadHead> payloadOf(const RecordBlock& block)
{
    return readPayload(joinRecords(block.records), nullptr);
}

static QString notNewest(const QString& device, const QString& part, const QString& running,
                         const DeliveredVersion& newest)
{
    const DeliveredVersion now = {reportedVersion(running), reportedAppendix(running)};
    const bool isNewest =
        !isNewer(newest, now) && (now.version != newest.version || now.appendix == newest.appendix);
    if (isNewest)
        return QString();
    return QStringLiteral("%1 runs %2 %3 and not %4").arg(device, part, now.text(), newest.text());
}

int familyOf(int model)
{
    return model == briarscopeFamily ? briarscopeFamily : 0;
}

DeliveredVersions DeliveredVersions::read(const QString& folder)
{
    DeliveredVersions versions;
    for (const QFileInfo& entry : QDir(folder).entryInfoList(QDir::Files)) {
        QFile file(entry.filePath());
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const ReadUpdateFile content = readUpdateFile(file.readAll());
        if (content.file)
            std::visit([&](const auto& update) { versions.add(update); }, *content.file);
    }
    return versions;
}

void DeliveredVersions::add(const ControllerImage& image)
{
    Release& release = m_controllers[image.modelFamily];
    for (const ControllerImageBlock& block : image.blocks) {
        const std::optional<PayloadHead> head = payloadOf(block);
        if (!head)
            continue;
        const bool isPt = head->component == PayloadComponent::TrackingSoftware;
        takeNewer(isPt ? &release.pt : &release.ct, {head->version, head->appendix});
    }
}

void DeliveredVersions::add(const CameraUpdateFile& file)
{
    for (const CameraImage& image : file.images) {
        const std::optional<PayloadHead> head = payloadOf(image);
        for (const quint16 model : file.models) {
            if (head)
                takeNewer(&m_cameras[model], {head->version, head->appendix});
        }
    }
}

QStringList DeliveredVersions::missingIn(const TestBench& bench) const
{
    QStringList missing;
    for (const ControllerState& controller : bench.controllers()) {
        if (!controller.available)
            continue;
        const Release newest = m_controllers.value(familyOf(controller.model));
        missing += notNewest(controller.hostName, QStringLiteral("Pt"), controller.pt, newest.pt);
        missing += notNewest(controller.hostName, QStringLiteral("Ct"), controller.ct, newest.ct);
    }
    for (int index = 0; index < bench.cameras().size(); ++index) {
        const CameraState& camera = bench.cameras().at(index);
        const QString device =
            QStringLiteral("camera %1 (%2)").arg(cameraName(index), camera.serial);
        if (!camera.found)
            missing += QStringLiteral("%1 is not known to the controller").arg(device);
        missing += notNewest(device, QStringLiteral("firmware"), camera.version,
                             m_cameras.value(camera.model.toInt(nullptr, 0)));
    }
    missing.removeAll(QString());
    return missing;
}
