#include "hostname.h"

#include <QCoreApplication>
#include <QSysInfo>

#include <pwd.h>
#include <unistd.h>

namespace {

// Not every user of a machine has a name.
QString userName()
{
    const passwd* const entry = ::getpwuid(::geteuid());
    return entry ? QString::fromLocal8Bit(entry->pw_name) : QString::number(::geteuid());
}

} // namespace

QString nameOfThisHost()
{
    return QStringLiteral("%1@%2, process %3")
        .arg(userName(), QSysInfo::machineHostName())
        .arg(QCoreApplication::applicationPid());
}
