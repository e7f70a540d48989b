#include "releasetext.h"

#include "imagewords.h"

#include <QRegularExpression>
#include <QStringList>

namespace {

std::optional<int> parseNumber(const QString& text)
{
    bool ok = false;
    const int number = text.toUShort(&ok);
    return ok ? std::optional<int>(number) : std::nullopt;
}

} // namespace

QString versionText(const VersionInfo& version)
{
    return version.toString().mid(1);
}

QString preReleaseText(int type, int number)
{
    if (type == 0 && number == 0)
        return QString();
    if (preReleaseWords().contains(type))
        return QStringLiteral("-%1.%2").arg(preReleaseWords().of(type)).arg(number);
    return QStringLiteral("-unknown%1.%2").arg(type).arg(number);
}

QString releaseText(const ControllerImage& image)
{
    return versionText(image.release) +
           preReleaseText(image.preReleaseType, image.preReleaseNumber);
}

QString payloadText(const PayloadHead& head)
{
    const auto component = [&] {
        switch (head.component) {
        case PayloadComponent::TrackingSoftware:
            return QStringLiteral("Pt");
        case PayloadComponent::ControllerFirmware:
            return QStringLiteral("Ct");
        case PayloadComponent::CameraFirmware:
            break;
        }
        return QStringLiteral("camera");
    };
    return component() + QLatin1Char(' ') + versionText(head.version) + head.appendix;
}

QString dateText(const ImageDate& date)
{
    const QLatin1Char zero('0');
    return QStringLiteral("%1-%2-%3")
        .arg(date.year, 4, 10, zero)
        .arg(date.month, 2, 10, zero)
        .arg(date.day, 2, 10, zero);
}

std::optional<VersionInfo> parseVersion(const QString& text, int parts)
{
    static const QRegularExpression form("^[0-9]+(\\.[0-9]+)+\\z");
    const QStringList texts = text.split('.');
    if (!form.match(text).hasMatch() || texts.size() != parts)
        return std::nullopt;
    int numbers[3] = {-1, -1, -1};
    for (int index = 0; index < parts; ++index) {
        const auto number = parseNumber(texts[index]);
        if (!number)
            return std::nullopt;
        numbers[index] = *number;
    }
    return VersionInfo(numbers[0], numbers[1], numbers[2]);
}

std::optional<ReleaseText> parseRelease(const QString& text)
{
    static const QRegularExpression form("^([0-9.]+)(-([a-z]+)([0-9]*)\\.([0-9]+))?\\z");
    const QRegularExpressionMatch match = form.match(text);
    const auto version = parseVersion(match.captured(1), 3);
    if (!version)
        return std::nullopt;
    if (match.captured(2).isEmpty())
        return ReleaseText{*version, 0, 0, QString()};

    const auto number = parseNumber(match.captured(5));
    const auto type = preReleaseWords().valueOf(match.captured(3));
    if (number && type && match.captured(4).isEmpty())
        return ReleaseText{*version, *type, *number, match.captured(2)};
    const auto foreignType = parseNumber(match.captured(4));
    if (number && foreignType && match.captured(3) == QLatin1String("unknown"))
        return ReleaseText{*version, *foreignType, *number, match.captured(2)};
    return std::nullopt;
}

std::optional<ImageDate> parseDate(const QString& text)
{
    static const QRegularExpression form("^([0-9]{4,5})-([0-9]{2,5})-([0-9]{2,5})\\z");
    const QRegularExpressionMatch match = form.match(text);
    const auto year = parseNumber(match.captured(1));
    const auto month = parseNumber(match.captured(2));
    const auto day = parseNumber(match.captured(3));
    if (!year || !month || !day)
        return std::nullopt;
    return ImageDate{*year, *month, *day};
}
