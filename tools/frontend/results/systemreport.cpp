#include "systemreport.h"

#include <reply.h>

#include <algorithm>
#include <iterator>

QString replyText(const QByteArray& key, const QByteArray& reply)
{
    static const char* const utf8Keys[] = {"system hostname", "system model_description",
                                           "system extra"};
    const bool isUtf8 =
        std::any_of(std::begin(utf8Keys), std::end(utf8Keys),
                    [&](const char* beginning) { return key.startsWith(beginning); });
    return isUtf8 ? QString::fromUtf8(reply) : QString::fromLatin1(reply);
}

std::optional<QString> ChannelQueries::text(const QByteArray& key)
{
    char reply[replyBytes + 1] = {}; // the last byte stays zero
    if (m_channel.get_string(reply, "%s", key.constData()) != 0)
        return std::nullopt;
    return replyText(key, reply);
}

std::optional<int> ChannelQueries::number(const QByteArray& key)
{
    int value = 0;
    if (m_channel.get_int(&value, "%s", key.constData()) != 0)
        return std::nullopt;
    return value;
}

namespace {

QString withoutQuotes(QString text)
{
    return text.remove(QLatin1Char('"'));
}

QString firstWord(const QString& text)
{
    return text.section(QLatin1Char(' '), 0, 0);
}

QByteArray twoDigits(int number)
{
    return QByteArray::number(number).rightJustified(2, '0');
}

/// @param suffix empty for the master, "_slave ADDRESS" for a slave
SystemReport::Controller askController(Queries& queries, const QString& hostName,
                                       const QByteArray& suffix, int fallbackModel)
{
    SystemReport::Controller controller;
    controller.hostName = hostName;
    controller.pt = firstWord(queries.text("system version" + suffix).value_or(QString()));
    controller.ct =
        firstWord(queries.text("system controller_version" + suffix).value_or(QString()));
    controller.model = queries.number("system model" + suffix).value_or(fallbackModel);
    return controller;
}

void askSlave(Queries& queries, int number, SystemReport* report)
{
    const std::optional<QString> address =
        queries.text("cascade connected_slave d" + twoDigits(number));
    if (!address)
        return;
    const QByteArray key = address->toLatin1();
    if (queries.text("cascade connected_slave_available " + key) != QLatin1String("yes"))
        return;
    const QByteArray suffix = "_slave " + key;
    if (const std::optional<QString> hostName = queries.text("system hostname" + suffix))
        report->controllers +=
            askController(queries, *hostName, suffix, report->controllers.constFirst().model);
}

void askCamera(Queries& queries, int number, SystemReport* report)
{
    const std::optional<QString> identity = queries.text("camera camera c" + twoDigits(number));
    const std::optional<QString> version = queries.text("camera version c" + twoDigits(number));
    if (!identity || !version)
        return;
    const QByteArray model = firstWord(*identity).toLatin1();
    QStringList name{withoutQuotes(queries.text("camera model_desc " + model).value_or(QString())),
                     identity->section(QLatin1Char(' '), 1, 1)};
    name.removeAll(QString());
    report->cameras.append({name.join(QLatin1Char(' ')), firstWord(*version)});
}

} // namespace

SystemReport SystemReport::ask(Queries& queries)
{
    SystemReport report;
    const std::optional<QString> master = queries.text("system hostname");
    if (!master)
        return report;
    report.isReachable = true;
    report.controllers += askController(queries, *master, QByteArray(), 0);
    const int slaves = queries.number("cascade number_of_connected_slaves").value_or(0);
    for (int number = 1; number <= slaves; ++number)
        askSlave(queries, number, &report);
    const int cameras = queries.number("camera number_of_cameras").value_or(0);
    for (int number = 1; number <= cameras; ++number)
        askCamera(queries, number, &report);
    return report;
}

QStringList SystemReport::versions(Part part, const QString& device) const
{
    QStringList versions;
    for (const Controller& it : controllers) {
        if (part != Part::CameraFirmware && it.hostName == device)
            versions += part == Part::TrackingSoftware ? it.pt : it.ct;
    }
    for (const Camera& it : cameras) {
        if (part == Part::CameraFirmware && it.name == device)
            versions += it.version;
    }
    versions.removeAll(QString());
    versions.removeDuplicates();
    return versions;
}

const SystemReport::Controller* SystemReport::controller(const QString& hostName) const
{
    const auto found = std::find_if(controllers.begin(), controllers.end(),
                                    [&](const Controller& it) { return it.hostName == hostName; });
    return found == controllers.end() ? nullptr : &*found;
}
