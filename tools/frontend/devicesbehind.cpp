#include "devicesbehind.h"

#include <equipment.h>
#include <releasecatalogue.h>
#include <reportedversion.h>

namespace {

QString notNewest(const QString& device, const QString& part, const QString& running,
                  const DeliveredVersion& newest)
{
    const DeliveredVersion now = {reportedVersion(running), reportedAppendix(running)};
    const bool isNewest = !newest.isNewerThan(now) &&
                          (now.version != newest.version || now.appendix == newest.appendix);
    if (isNewest)
        return QString();
    return QStringLiteral("%1 runs %2 %3 and not %4").arg(device, part, now.text(), newest.text());
}

} // namespace

QStringList devicesBehind(const ReleaseCatalogue& delivered, const Equipment& equipment)
{
    QStringList missing;
    for (const ControllerState& controller : equipment.state().controllers) {
        if (!controller.available)
            continue;
        const NewestVersions newest = delivered.newestForController(controller.model);
        missing += notNewest(controller.hostName, QStringLiteral("Pt"), controller.pt, newest.pt);
        missing += notNewest(controller.hostName, QStringLiteral("Ct"), controller.ct, newest.ct);
    }
    for (int index = 0; index < equipment.state().cameras.size(); ++index) {
        const CameraState& camera = equipment.state().cameras.at(index);
        const QString device =
            QStringLiteral("camera %1 (%2)").arg(cameraName(index), camera.serial);
        if (!camera.found)
            missing += QStringLiteral("%1 is not known to the controller").arg(device);
        missing += notNewest(device, QStringLiteral("firmware"), camera.version,
                             delivered.newestForCamera(camera.model.toInt(nullptr, 0)));
    }
    missing.removeAll(QString());
    return missing;
}
