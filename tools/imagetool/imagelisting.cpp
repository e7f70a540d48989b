#include "imagelisting.h"

#include <fieldoffsets.h>
#include <imagewords.h>
#include <payloadchecks.h>
#include <releasetext.h>

#include <QBuffer>
#include <QJsonArray>

namespace {

QString typeText(quint16 type)
{
    const auto known = static_cast<BlockType>(type);
    return blockTypeWords().contains(known) ? blockTypeWords().of(known) : QString::number(type);
}

QString contentText(const ScannedContent& content)
{
    if (!content.isComplete)
        return "incomplete";
    if (!content.isPayload)
        return "unknown";
    return content.payload ? payloadText(*content.payload) : QString("damaged");
}

QString modelText(quint16 model)
{
    return QStringLiteral("0x%1").arg(model, 4, 16, QLatin1Char('0'));
}

QJsonArray modelsOf(const CameraUpdateFile& file)
{
    QJsonArray models;
    for (const quint16 model : file.models)
        models.append(modelText(model));
    return models;
}

ListingFields headOf(const ControllerImage& image)
{
    ListingFields head{{"kind", kindWords().of(UpdateFileKind::Controller)},
                       {"layout", layoutWords().of(image.layout)},
                       {"modelFamily", modelFamilyWords().of(image.modelFamily)},
                       {"release", releaseText(image)}};
    if (image.layout == ImageLayout::Dated) {
        head.append({"releaseDate", dateText(image.releaseDate)});
        head.append({"minorReleaseDate", dateText(image.minorReleaseDate)});
    }
    return head + ListingFields{{"newPt", versionText(image.newPt)},
                                {"newCt", versionText(image.newCt)},
                                {"minPt", versionText(image.minPt)},
                                {"minCt", versionText(image.minCt)}};
}

ListingFields headOf(const CameraUpdateFile& file)
{
    return {{"kind", kindWords().of(UpdateFileKind::Camera)},
            {"newVersion", versionText(file.newVer)},
            {"minVersion", versionText(file.minVer)},
            {"models", modelsOf(file)}};
}

ListingFields rangeOf(const ControllerImageBlock& block)
{
    return {{"type", typeText(block.type)},
            {"minVersion", versionText(block.minVer)},
            {"maxVersion", versionText(block.maxVer)}};
}

ListingFields rangeOf(const CameraImage& /*image*/)
{
    return {};
}

ListingFields contentFields(const RecordBlock& block, const ScannedContent& content)
{
    return {{"offset", qint64(block.offset.value_or(0))},
            {"length", qint64(block.length.value_or(0))},
            {"records", qint64(block.recordCount.value_or(0))},
            {"longestRecord", content.totals.longest},
            {"payload", contentText(content)}};
}

template <typename Block>
void listParts(const QVector<Block>& blocks, const ScannedFile& scanned, UpdateFileListing* listing)
{
    for (int index = 0; index < blocks.size(); ++index)
        listing->parts.append(rangeOf(blocks[index]) +
                              ListingFields{{"text", QString::fromLatin1(blocks[index].text)}} +
                              contentFields(blocks[index], scanned.contents.value(index)));
}

QString fieldsText(const ListingFields& fields, const QString& indent)
{
    constexpr int nameWidth = 18;
    QString text;
    for (const auto& field : fields) {
        const QJsonValue& value = field.second;
        const QString name = indent + field.first;
        text += name.leftJustified(nameWidth) +
                (value.isArray() ? value.toVariant().toStringList().join(", ")
                                 : value.toVariant().toString()) +
                '\n';
    }
    return text;
}

QJsonObject fieldsJson(const ListingFields& fields)
{
    QJsonObject object;
    for (const auto& field : fields)
        object.insert(field.first, field.second);
    return object;
}

QJsonObject reservedWords(const std::array<quint16, 4>& words)
{
    QJsonObject overrides;
    for (int index = 0; index < 4; ++index) {
        if (words[index] != 0)
            overrides.insert(QStringLiteral("reserved%1").arg(index + 1), words[index]);
    }
    return overrides;
}

void insertOverrides(QJsonObject* object, const QJsonObject& overrides)
{
    if (!overrides.isEmpty())
        object->insert("override", overrides);
}

/// Describes one block or camera image.
QJsonObject contentJson(const RecordBlock& block, const ScannedContent& content,
                        QJsonObject overrides, const QJsonObject& recordsOf)
{
    QJsonObject object{{"recordsOf", recordsOf},
                       {"shown", fieldsJson(contentFields(block, content))}};
    if (!block.text.isEmpty())
        object.insert("text", QString::fromLatin1(block.text));
    if (content.isComplete && *block.maxRecordLength != content.totals.longest)
        overrides.insert("maxRecordLength", *block.maxRecordLength);
    insertOverrides(&object, overrides);
    return object;
}

QJsonObject blockJson(const ControllerImageBlock& block, const ScannedContent& content,
                      const QJsonObject& recordsOf)
{
    QJsonObject overrides;
    const auto known = static_cast<BlockType>(block.type);
    const bool isForeign = !blockTypeWords().contains(known);
    if (isForeign)
        overrides.insert("type", block.type);
    QJsonObject object = contentJson(block, content, overrides, recordsOf);
    object.insert("type", blockTypeWords().of(isForeign ? SystemBlock : known));
    object.insert("minVersion", versionText(block.minVer));
    object.insert("maxVersion", versionText(block.maxVer));
    return object;
}

QJsonObject imageJson(const CameraImage& image, const CameraUpdateFile& file,
                      const ScannedContent& content, const QJsonObject& recordsOf)
{
    QJsonObject object = contentJson(image, content, {}, recordsOf);
    if (image.newVer != file.newVer)
        object.insert("newVersion", versionText(*image.newVer));
    if (image.minVer != file.minVer)
        object.insert("minVersion", versionText(*image.minVer));
    return object;
}

QJsonObject fileJson(const ControllerImage& image, const ScannedFile& scanned,
                     const QString& fileName)
{
    QJsonObject object = fieldsJson(headOf(image));
    QJsonArray blocks;
    for (const ControllerImageBlock& block : image.blocks)
        blocks.append(blockJson(block, scanned.contents.value(blocks.size()),
                                {{"file", fileName}, {"block", blocks.size()}}));
    object.insert("blocks", blocks);
    insertOverrides(&object, reservedWords(image.reserved));
    return object;
}

QJsonObject fileJson(const CameraUpdateFile& file, const ScannedFile& scanned,
                     const QString& fileName)
{
    QJsonObject object = fieldsJson(headOf(file));
    QJsonArray images;
    for (const CameraImage& image : file.images)
        images.append(imageJson(image, file, scanned.contents.value(images.size()),
                                {{"file", fileName}, {"block", images.size()}}));
    object.insert("images", images);
    insertOverrides(&object, reservedWords(file.reserved));
    return object;
}

} // namespace

UpdateFileListing listUpdateFile(const ScannedFile& scanned)
{
    UpdateFileListing listing;
    listing.findings = scanned.findings + payloadFindings(scanned);
    if (!scanned.file)
        return listing;
    if (const auto* image = std::get_if<ControllerImage>(&*scanned.file)) {
        listing.head = headOf(*image);
        listing.partsName = "blocks";
        listParts(image->blocks, scanned, &listing);
    } else {
        const auto& file = std::get<CameraUpdateFile>(*scanned.file);
        listing.head = headOf(file);
        listing.partsName = "images";
        listParts(file.images, scanned, &listing);
    }
    return listing;
}

UpdateFileListing listUpdateFile(const QByteArray& bytes)
{
    QBuffer device;
    device.setData(bytes);
    device.open(QIODevice::ReadOnly);
    return listUpdateFile(scanUpdateFile(device));
}

QString listingText(const UpdateFileListing& listing)
{
    QString text = fieldsText(listing.head, QString());
    int index = 0;
    for (const ListingFields& part : listing.parts) {
        text += QStringLiteral("%1[%2]\n").arg(listing.partsName).arg(index++);
        text += fieldsText(part, "  ");
    }
    return text;
}

QJsonObject listingJson(const ScannedFile& scanned, const QString& fileName)
{
    QJsonObject object;
    if (scanned.file)
        object = std::visit([&](const auto& file) { return fileJson(file, scanned, fileName); },
                            *scanned.file);
    QJsonArray problems;
    for (const RuleFinding& finding : listUpdateFile(scanned).findings)
        problems.append(findingText(finding));
    object.insert("shown", QJsonObject{{"file", fileName}, {"problems", problems}});
    return object;
}
