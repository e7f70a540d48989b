#include "payloadchecks.h"

#include <releasetext.h>

namespace {

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
        Rule::PayloadVersion, field, payloadText(head),
        payloadText({wanted.component, wanted.version, wanted.appendix.value_or("")}),
        content.start};
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
