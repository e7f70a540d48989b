#include "hostlog.h"

#include <IOManager>

#include <QString>

void logToHost(IOManager* iom, const QString& text)
{
    iom->post_message("standard", "VORNIX3", 1, text.toLatin1().constData());
}
