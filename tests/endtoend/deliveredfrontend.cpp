#include "deliveredfrontend.h"

#include <QFile>
#include <QFileInfo>

DeliveredFrontend::DeliveredFrontend(const QMap<QString, QByteArray>& updateFiles)
{
    const QFileInfo built(QStringLiteral(DEMO_FRONTEND));
    for (auto file = updateFiles.begin(); file != updateFiles.end(); ++file)
        m_folder.write("controller_update/" + file.key(), file.value());
    // No link, since a running program is known by where it really is.
    if (!QFile::copy(built.filePath(), program()) ||
        !QFile::link(built.path() + "/modules", m_folder.path("modules")))
        qFatal("cannot lay out %s", qPrintable(program()));
}
