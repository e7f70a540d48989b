#include "releasecatalogue.h"

#include "deliveredversions.h"

#include <imageformat.h>
#include <imagereader.h>

#include <QDir>
#include <QFile>

#include <algorithm>

// The header and a block table of more entries than images have.
static constexpr qint64 HEAD_BYTES = 4096;

static std::optional<QString> appendixOf(const ControllerImage& image)
{
    if (image.layout != ImageLayout::Dated)
        return std::nullopt;
    if (image.preReleaseType == 0 && image.preReleaseNumber == 0)
        return QString();
    if (const char* word = imageformat::preReleaseWord(image.preReleaseType))
        return QStringLiteral("-%1.%2").arg(QLatin1String(word)).arg(image.preReleaseNumber);
    return std::nullopt;
}

static Release releaseOf(const ControllerImage& image)
{
    Release release{image.modelFamily, image.newPt, image.newCt, appendixOf(image), {}};
    for (const ControllerImageBlock& block : image.blocks) {
        if (block.type == SystemBlock)
            release.systemBlocks.append({block.minVer, block.maxVer});
    }
    return release;
}

VersionInfo Release::ctAfter(VersionInfo before) const
{
    const bool applies =
        std::any_of(systemBlocks.begin(), systemBlocks.end(), [&](const Range& range) {
            return before >= range.lowest && before <= range.highest;
        });
    return applies ? ct : before;
}

ReleaseCatalogue ReleaseCatalogue::read(const QString& folder)
{
    QVector<Release> releases;
    for (const QFileInfo& entry : QDir(folder).entryInfoList(QDir::Files)) {
        QFile file(entry.filePath());
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const ReadUpdateFile content = readUpdateFile(file.read(HEAD_BYTES));
        const auto* image = content.file ? std::get_if<ControllerImage>(&*content.file) : nullptr;
        if (image)
            releases += releaseOf(*image);
    }
    return ReleaseCatalogue(releases);
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
