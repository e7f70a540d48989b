#include "proverfixtures.h"

#include <payload.h>

#include <QtGlobal>

ControllerImageBlock payloadBlock(quint16 type, const VersionInfo& minVer,
                                  const VersionInfo& maxVer, const VersionInfo& version,
                                  const QString& appendix)
{
    ControllerImageBlock block =
        type == SystemBlock ? systemBlock(minVer, maxVer) : firmwareBlock(minVer, maxVer);
    const auto component = type == SystemBlock ? PayloadComponent::ControllerFirmware
                                               : PayloadComponent::TrackingSoftware;
    block.records = splitIntoRecords(makePayload({component, version, appendix}, 10, 1));
    return block;
}

VersionInfo justBelow(const VersionInfo& version)
{
    constexpr int highest = 65535;
    if (version.pa > 0)
        return VersionInfo(version.ma, version.mi, version.pa - 1);
    if (version.mi > 0)
        return VersionInfo(version.ma, version.mi - 1, version.pa < 0 ? -1 : highest);
    return VersionInfo(version.ma - 1, highest, version.pa < 0 ? -1 : highest);
}

ControllerImage usualImage(const VersionInfo& pt, const VersionInfo& ct, const VersionInfo& minPt)
{
    ControllerImage image =
        releaseImage(pt, ct,
                     {payloadBlock(FirmwareBlock, minPt, pt, pt),
                      payloadBlock(SystemBlock, VersionInfo(0, 0), justBelow(ct), ct)});
    image.minPt = minPt;
    return image;
}

ControllerImage preReleaseImage(const VersionInfo& pt, const VersionInfo& ct, int kind, int number)
{
    ControllerImage image = usualImage(pt, ct);
    image.preReleaseType = kind;
    image.preReleaseNumber = number;
    const char* word = kind == 10 ? "alpha" : kind == 20 ? "beta" : "rc";
    image.blocks[0] = payloadBlock(FirmwareBlock, VersionInfo(0, 0, 0), justBelow(pt), pt,
                                   QStringLiteral("-%1.%2").arg(QLatin1String(word)).arg(number));
    return image;
}

QString writeDelivery(const FixtureFolder& folder, const QMap<QString, UpdateFile>& files)
{
    const QString path = folder.makeFolder("updates");
    for (auto file = files.begin(); file != files.end(); ++file)
        folder.write("updates/" + file.key(), updateFileBytes(file.value()));
    return path;
}

DeliveredFiles readDelivery(const FixtureFolder& folder, const QMap<QString, UpdateFile>& files)
{
    QString error;
    auto delivery = DeliveredFiles::read(writeDelivery(folder, files), &error);
    if (!delivery)
        qFatal("%s", qPrintable(error));
    return std::move(*delivery);
}
