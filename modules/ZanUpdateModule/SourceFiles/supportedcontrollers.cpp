#include "supportedcontrollers.h"

#include "ZanController.h"

static bool isSupportedBoard(const QString& description)
{
    const QString board = description.toUpper();
    for (const char* supported :
         {"SB330", "SB331", "SB332", "SB333", "D3231", "FUJITSU", "CINCOZE"}) {
        if (board.contains(QLatin1String(supported)))
            return true;
    }
    return false;
}

static bool isSupportedSlaveSerial(int serial)
{
    switch (serial) {
    case 124:
    case 258:
    case 350:
    case 457:
        return true;
    case 521:
    case 522:
    case 533:
        return false;
    default:
        return serial > 517;
    }
}

bool isDiscontinued(const ZanController& controller)
{
    if (controller.getSystemModel() != 0 && controller.getSystemModel() != 2)
        return false;
    return controller.isSlave() ? !isSupportedSlaveSerial(controller.getControllerSerial())
                                : !isSupportedBoard(controller.getMainboardDesc());
}
