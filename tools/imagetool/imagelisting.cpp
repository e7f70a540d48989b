#include "imagelisting.h"

#include "fieldoffsets.h"
#include "releasetext.h"

#include <QBuffer>
#include <QJsonArray>

namespace {

QString typeText(quint16 type)
{
    if (type == FirmwareBlock)
        return "firmware";
    return type == SystemBlock ? QString("system") : QString::number(type);
}

QString componentText(PayloadComponent component)
{
    switch (component) {
    case PayloadComponent::TrackingSoftware:
        return "Pt";
    case PayloadComponent::ControllerFirmware:
        return "Ct";
    default:
        return "camera";
    }
}

QString payloadName(const PayloadHead& head)
{
    return componentText(head.component) + ' ' + versionText(head.version) + head.appendix;
}

QString payloadText(const ScannedContent& content)
{
    if (!content.isComplete)
        return "incomplete";
    if (!content.isPayload)
        return "unknown";
    return content.payload ? payloadName(*content.payload) : QString("damaged");
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
    const bool dated = image.layout == ImageLayout::Dated;
    ListingFields head{{"kind", "controller"},
                       {"layout", dated ? "dated" : "plain"},
                       {"modelFamily", image.modelFamily == 0 ? "ZAN" : "BRIARSCOPE3"},
                       {"release", releaseText(image)}};
    if (dated) {
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
    return {{"kind", "camera"},
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
            {"payload", payloadText(content)}};
}

template <typename Block>
void listParts(const QVector<Block>& blocks, const ScannedFile& scanned, UpdateFileListing* listing)
{
    for (int index = 0; index < blocks.size(); ++index)
        listing->parts.append(rangeOf(blocks[index]) +
                              ListingFields{{"text", QString::fromLatin1(blocks[index].text)}} +
                              contentFields(blocks[index], scanned.contents.value(index)));
}

/// What the payload of a block has to be.
struct WantedPayload
{
    PayloadComponent component;
    VersionInfo version;
    std::optional<QString> appendix; ///< nullopt: the file does not say
};

std::optional<RuleFinding> payloadFinding(const ScannedContent& content,
                                          const WantedPayload& wanted, const QString& field)
{
    if (!content.isPayload)
        return std::nullopt;
    if (!content.payload)
        return RuleFinding{Rule::PayloadDamaged, field,
                           QStringLiteral("damaged: ") + content.payloadDamage,
                           QStringLiteral("a payload as it was made"), content.start};
    const PayloadHead& head = *content.payload;
    if (head.component == wanted.component && head.version == wanted.version &&
        head.appendix == wanted.appendix.value_or(head.appendix))
        return std::nullopt;
    return RuleFinding{
        Rule::PayloadVersion, field, payloadName(head),
        payloadName({wanted.component, wanted.version, wanted.appendix.value_or("")}),
        content.start};
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
    if (block.type != FirmwareBlock && block.type != SystemBlock)
        overrides.insert("type", block.type);
    QJsonObject object = contentJson(block, content, overrides, recordsOf);
    object.insert("type", typeText(block.type == FirmwareBlock ? FirmwareBlock : SystemBlock));
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

QVector<RuleFinding> payloadFindings(const ScannedFile& scanned)
{
    QVector<RuleFinding> findings;
    const auto look = [&](int index, const char* parts, const WantedPayload& wanted) {
        const QString field = QStringLiteral("%1[%2].payload").arg(QLatin1String(parts)).arg(index);
        if (const auto finding = payloadFinding(scanned.contents.value(index), wanted, field))
            findings.append(*finding);
    };
    if (const auto* image = scanned.file ? std::get_if<ControllerImage>(&*scanned.file) : nullptr) {
        std::optional<QString> appendix;
        if (image->layout == ImageLayout::Dated)
            appendix = preReleaseText(image->preReleaseType, image->preReleaseNumber);
        for (int index = 0; index < image->blocks.size(); ++index) {
            if (image->blocks[index].type == SystemBlock)
                look(index, "blocks",
                     {PayloadComponent::ControllerFirmware, image->newCt, QString()});
            else
                look(index, "blocks", {PayloadComponent::TrackingSoftware, image->newPt, appendix});
        }
    } else if (scanned.file) {
        const auto& file = std::get<CameraUpdateFile>(*scanned.file);
        for (int index = 0; index < file.images.size(); ++index)
            look(index, "images", {PayloadComponent::CameraFirmware, file.newVer, std::nullopt});
    }
    return findings;
}

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
