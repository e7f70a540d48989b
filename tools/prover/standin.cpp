#include "standin.h"

#include <QRegularExpression>

namespace {

constexpr int bodyBytes = 200;
constexpr quint16 otherBlockType = 7;
constexpr quint16 noMagic = 0;

ImageDate dateOf(const QString& text)
{
    return {text.section('-', 0, 0).toInt(), text.section('-', 1, 1).toInt(),
            text.section('-', 2, 2).toInt()};
}

// Back from the text to the two numbers that it was made of.
void setPreRelease(ControllerImage* image, const QString& mark)
{
    static const QRegularExpression form("^-(alpha|beta|rc|unknown)([0-9]*)\\.([0-9]+)$");
    const QRegularExpressionMatch match = form.match(mark);
    if (!match.hasMatch())
        return;
    const QStringList kinds = {"alpha", "beta", "rc"};
    const int kind = kinds.indexOf(match.captured(1));
    image->preReleaseType = kind >= 0 ? 10 * (kind + 1) : match.captured(2).toInt();
    image->preReleaseNumber = match.captured(3).toInt();
}

QVector<ImageRecord> recordsFor(const BlockContent& content)
{
    if (content.kind == BlockContent::Empty)
        return {};
    QByteArray payload = makePayload(content.head, bodyBytes, 1);
    if (content.kind == BlockContent::Refused) {
        const int last = payload.size() - 1;
        payload[last] = static_cast<char>(payload.at(last) + 1);
    }
    return splitIntoRecords(payload);
}

ControllerImageBlock blockFor(const ZanUpdateBlock& entry, const BlockContent& content)
{
    ControllerImageBlock block;
    block.type =
        entry.type == ZAN_UPDATE_NOTDEFINED ? otherBlockType : static_cast<quint16>(entry.type);
    block.minVer = entry.minVer;
    block.maxVer = entry.maxVer;
    block.records = recordsFor(content);
    if (content.kind == BlockContent::Unreadable)
        block.magic = noMagic;
    return block;
}

} // namespace

ControllerImage standInFor(const DeliveredImage& delivered)
{
    const ZanData& data = *delivered.data;
    ControllerImage image;
    image.layout = data.hasReleaseDates() ? ImageLayout::Dated : ImageLayout::Plain;
    image.modelFamily = data.getSystemModel();
    image.release = data.newVornix2Version();
    image.releaseDate = dateOf(data.getReleaseDate());
    image.minorReleaseDate = dateOf(data.getReleaseMinorDate());
    setPreRelease(&image, data.getPreReleaseAppendix());
    image.newPt = data.newPtVersion();
    image.newCt = data.newCtVersion();
    image.minPt = data.minPtVersion();
    image.minCt = data.minCtVersion();
    for (int index = 0; index < data.getNumberOfUpdateBlocks(); ++index)
        image.blocks += blockFor(*data.getUpdateBlock(index), delivered.blocks.at(index));
    return image;
}
