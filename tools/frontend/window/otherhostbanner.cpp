#include "otherhostbanner.h"

#include <equipment.h>

#include <QApplication>
#include <QMessageBox>

namespace {

/// How far a block has come that a device is about to receive.
struct Reception
{
    QString device;
    int received = 0;
    int expected = 0; ///< 0: nothing is received
};

Reception receptionIn(const EquipmentState& state)
{
    Reception found;
    const auto look = [&found](const QString& name, const auto& device) {
        if (device.recordsReceived > 0 && device.recordsReceived < device.recordsExpected)
            found = {name, device.recordsReceived, device.recordsExpected};
    };
    for (const ControllerState& controller : state.controllers)
        look(controller.hostName, controller);
    for (const CameraState& camera : state.cameras)
        look(QStringLiteral("%1 %2").arg(camera.description, camera.serial), camera);
    return found;
}

} // namespace

OtherHostBanner::OtherHostBanner(const Equipment& equipment, QWidget* parent)
    : Banner(parent), m_equipment(equipment)
{
    setObjectName(QStringLiteral("otherHostBanner"));
    connect(&equipment, &Equipment::changed, this, &OtherHostBanner::follow);
    follow();
}

void OtherHostBanner::follow()
{
    if (!m_equipment.isInOtherHands()) {
        hide();
        return;
    }
    QStringList lines;
    const Reception reception = receptionIn(m_equipment.state());
    if (reception.expected > 0)
        lines += tr("%1: %L2 of %L3 records")
                     .arg(reception.device)
                     .arg(reception.received)
                     .arg(reception.expected);
    lines += tr("You can only look on until that is over: nothing can be changed from here, and "
                "nothing can be updated.");
    tell(otherHostText(m_equipment), lines);
    setShare(reception.expected > 0
                 ? static_cast<int>(reception.received * qint64(100) / reception.expected)
                 : -1,
             tr("How much %1 has received").arg(reception.device));
}

QString otherHostText(const Equipment& equipment)
{
    return OtherHostBanner::tr("%1 updates this system.").arg(equipment.state().updatedBy);
}

void refuseForOtherHost(const Equipment& equipment, QWidget* window)
{
    QWidget* dialog = QApplication::activeModalWidget();
    QMessageBox box(QMessageBox::Information, QStringLiteral("VORNIX3"), otherHostText(equipment),
                    QMessageBox::Ok, dialog ? dialog : window);
    box.setObjectName(QStringLiteral("otherHost"));
    box.setTextFormat(Qt::PlainText); // a name could be taken for markup
    box.setInformativeText(
        OtherHostBanner::tr("Nothing was sent from here. Do not restart the controllers; open the "
                            "update dialog again when that update is over."));
    box.exec();
}
