#include "imagelisting.h"

#include "imageformat.h"
#include "imagereader.h"
#include "payload.h"

#include <QJsonArray>

namespace {

QString versionText(const VersionInfo& version)
{
    return version.toString().mid(1);
}

QString appendixText(int type, int number)
{
    if (type == 0 && number == 0)
        return QString();
    if (const char* word = imageformat::preReleaseWord(type))
        return QStringLiteral("-%1.%2").arg(QLatin1String(word)).arg(number);
    return QStringLiteral("-unknown%1.%2").arg(type).arg(number);
}

QString releaseText(const ControllerImage& image)
{
    return versionText(image.release) + appendixText(image.preReleaseType, image.preReleaseNumber);
}

QString dateText(const ImageDate& date)
{
    return QStringLiteral("%1-%2-%3")
        .arg(date.year, 4, 10, QLatin1Char('0'))
        .arg(date.month, 2, 10, QLatin1Char('0'))
        .arg(date.day, 2, 10, QLatin1Char('0'));
}

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

/// Builds the listing of one file.
class Lister
{
public:
    UpdateFileListing list(const QByteArray& bytes);

private:
    void listController(const ControllerImage& image);
    void listCamera(const CameraUpdateFile& file);
    ListingFields contentFields(const RecordBlock& block, PayloadComponent component,
                                const VersionInfo& version);
    QString payloadText(const RecordBlock& block, PayloadComponent component,
                        const VersionInfo& version);
    void noteProblem(const QString& problem);

    UpdateFileListing m_listing;
};

UpdateFileListing Lister::list(const QByteArray& bytes)
{
    const ReadUpdateFile content = readUpdateFile(bytes);
    m_listing.problems = content.problems;
    if (!content.file)
        return m_listing;
    if (const auto* image = std::get_if<ControllerImage>(&*content.file))
        listController(*image);
    else
        listCamera(std::get<CameraUpdateFile>(*content.file));
    return m_listing;
}

void Lister::listController(const ControllerImage& image)
{
    const bool dated = image.layout == ImageLayout::Dated;
    m_listing.head = {{"kind", "controller"},
                      {"layout", dated ? "dated" : "plain"},
                      {"modelFamily", image.modelFamily == 0 ? "ZAN" : "BRIARSCOPE3"},
                      {"release", releaseText(image)}};
    if (dated) {
        m_listing.head.append({"releaseDate", dateText(image.releaseDate)});
        m_listing.head.append({"minorReleaseDate", dateText(image.minorReleaseDate)});
    }
    m_listing.head += ListingFields{{"newPt", versionText(image.newPt)},
                                    {"newCt", versionText(image.newCt)},
                                    {"minPt", versionText(image.minPt)},
                                    {"minCt", versionText(image.minCt)}};
    m_listing.partsName = "blocks";
    for (const ControllerImageBlock& block : image.blocks) {
        const bool system = block.type == SystemBlock;
        const ListingFields entry{{"type", typeText(block.type)},
                                  {"minVersion", versionText(block.minVer)},
                                  {"maxVersion", versionText(block.maxVer)}};
        const ListingFields content =
            system ? contentFields(block, PayloadComponent::ControllerFirmware, image.newCt)
                   : contentFields(block, PayloadComponent::TrackingSoftware, image.newPt);
        m_listing.parts.append(entry + content);
    }
}

void Lister::listCamera(const CameraUpdateFile& file)
{
    QJsonArray models;
    for (const quint16 model : file.models)
        models.append(QStringLiteral("0x%1").arg(model, 4, 16, QLatin1Char('0')));
    m_listing.head = {{"kind", "camera"},
                      {"newVersion", versionText(file.newVer)},
                      {"minVersion", versionText(file.minVer)},
                      {"models", models}};
    m_listing.partsName = "images";
    for (const CameraImage& image : file.images)
        m_listing.parts.append(contentFields(image, PayloadComponent::CameraFirmware, file.newVer));
}

ListingFields Lister::contentFields(const RecordBlock& block, PayloadComponent component,
                                    const VersionInfo& version)
{
    return {{"text", QString::fromLatin1(block.text)},
            {"offset", qint64(block.offset.value_or(0))},
            {"length", qint64(block.length.value_or(0))},
            {"records", qint64(block.recordCount.value_or(0))},
            {"longestRecord", longestRecord(block.records)},
            {"payload", payloadText(block, component, version)}};
}

QString Lister::payloadText(const RecordBlock& block, PayloadComponent component,
                            const VersionInfo& version)
{
    // Whatever stopped the reader within the records has been noted by it.
    if (block.records.isEmpty() || quint32(block.records.size()) != block.recordCount)
        return "incomplete";
    const QByteArray payload = joinRecords(block.records);
    if (!isPayload(payload))
        return "unknown";
    QString error;
    const auto head = readPayload(payload, &error);
    if (!head) {
        noteProblem(error);
        return "damaged";
    }
    QString text =
        componentText(head->component) + " " + versionText(head->version) + head->appendix;
    if (head->component != component || head->version != version)
        noteProblem(QStringLiteral("payload is for %1 instead of %2 %3")
                        .arg(text, componentText(component), versionText(version)));
    return text;
}

void Lister::noteProblem(const QString& problem)
{
    m_listing.problems.append(QStringLiteral("%1[%2]: %3")
                                  .arg(m_listing.partsName)
                                  .arg(m_listing.parts.size())
                                  .arg(problem));
}

QString valueText(const QJsonValue& value)
{
    return value.isArray() ? value.toVariant().toStringList().join(", ")
                           : value.toVariant().toString();
}

QString fieldsText(const ListingFields& fields, const QString& indent)
{
    constexpr int nameWidth = 18;
    QString text;
    for (const auto& field : fields) {
        const QString name = indent + field.first;
        text += name.leftJustified(nameWidth) + valueText(field.second) + '\n';
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

} // namespace

UpdateFileListing listUpdateFile(const QByteArray& bytes)
{
    return Lister().list(bytes);
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

QJsonObject listingJson(const UpdateFileListing& listing)
{
    QJsonObject object = fieldsJson(listing.head);
    QJsonArray parts;
    for (const ListingFields& part : listing.parts)
        parts.append(fieldsJson(part));
    if (!listing.partsName.isEmpty())
        object.insert(listing.partsName, parts);
    object.insert("problems", QJsonArray::fromStringList(listing.problems));
    return object;
}
