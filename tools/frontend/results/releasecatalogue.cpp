#include "releasecatalogue.h"

#include <imagereader.h>
#include <imagewords.h>
#include <payload.h>
#include <releasetext.h>
#include <updatefolder.h>

#include <algorithm>

namespace {

// The header and a block table of more entries than images have.
constexpr qint64 headBytes = 4096;

int familyOf(int model)
{
    return model == briarscopeFamily ? briarscopeFamily : 0;
}

void takeNewer(DeliveredVersion* newest, const DeliveredVersion& candidate)
{
    if (candidate.isNewerThan(*newest))
        *newest = candidate;
}

std::optional<PayloadHead> payloadOf(const RecordBlock& block)
{
    return readPayload(joinRecords(block.records), nullptr);
}

std::optional<QString> appendixOf(const ControllerImage& image)
{
    if (image.layout != ImageLayout::Dated)
        return std::nullopt;
    const bool isFinal = image.preReleaseType == 0 && image.preReleaseNumber == 0;
    if (!isFinal && !preReleaseWords().contains(image.preReleaseType))
        return std::nullopt;
    return preReleaseText(image.preReleaseType, image.preReleaseNumber);
}

Release releaseOf(const ControllerImage& image)
{
    Release release{image.modelFamily, image.newPt, image.newCt, appendixOf(image), {}};
    for (const ControllerImageBlock& block : image.blocks) {
        if (block.type == SystemBlock)
            release.systemBlocks.append({block.minVer, block.maxVer});
    }
    return release;
}

} // namespace

QString updateFolder(const QString& programDir)
{
    const QString found = findUpdateFolder(programDir);
    return found.isEmpty() ? programDir + QLatin1Char('/') + updateFolderName : found;
}

VersionInfo Release::ctAfter(VersionInfo before) const
{
    const bool applies =
        std::any_of(systemBlocks.begin(), systemBlocks.end(), [&](const Range& range) {
            return before >= range.lowest && before <= range.highest;
        });
    return applies ? ct : before;
}

bool DeliveredVersion::isNewerThan(const DeliveredVersion& other) const
{
    if (version != other.version)
        return version > other.version;
    return appendix.isEmpty() && !other.appendix.isEmpty();
}

ReleaseCatalogue ReleaseCatalogue::readHeads(const QString& folder)
{
    ReleaseCatalogue catalogue;
    for (const UpdateFile& file : readUpdateFiles(folder, headBytes))
        std::visit([&](const auto& update) { catalogue.addHead(update); }, file);
    return catalogue;
}

ReleaseCatalogue ReleaseCatalogue::readAll(const QString& folder)
{
    ReleaseCatalogue catalogue;
    const auto add = [&](const auto& update) {
        catalogue.addHead(update);
        catalogue.addContent(update);
    };
    for (const UpdateFile& file : readUpdateFiles(folder))
        std::visit(add, file);
    return catalogue;
}

void ReleaseCatalogue::addHead(const ControllerImage& image)
{
    m_releases += releaseOf(image);
}

void ReleaseCatalogue::addContent(const ControllerImage& image)
{
    NewestVersions& newest = m_controllers[image.modelFamily];
    for (const ControllerImageBlock& block : image.blocks) {
        const std::optional<PayloadHead> head = payloadOf(block);
        if (!head)
            continue;
        const bool isPt = head->component == PayloadComponent::TrackingSoftware;
        takeNewer(isPt ? &newest.pt : &newest.ct, {head->version, head->appendix});
    }
}

void ReleaseCatalogue::addContent(const CameraUpdateFile& file)
{
    for (const CameraImage& image : file.images) {
        const std::optional<PayloadHead> head = payloadOf(image);
        for (const quint16 model : file.models) {
            if (head)
                takeNewer(&m_cameras[model], {head->version, head->appendix});
        }
    }
}

std::optional<Release> ReleaseCatalogue::find(VersionInfo pt, int model) const
{
    std::optional<Release> found;
    for (const Release& release : m_releases) {
        if (release.pt != pt || release.modelFamily != familyOf(model))
            continue;
        if (found)
            return std::nullopt;
        found = release;
    }
    return found;
}

NewestVersions ReleaseCatalogue::newestForController(int model) const
{
    return m_controllers.value(familyOf(model));
}
