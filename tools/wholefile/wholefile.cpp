#include "wholefile.h"

#include <QFile>
#include <QSaveFile>

bool writeWholeFile(const QString& path, const QByteArray& bytes, QString* error)
{
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit())
        return true;
    *error = QStringLiteral("%1: %2").arg(path, file.errorString());
    return false;
}

void setDamagedFileAside(const QString& path)
{
    const QString aside = path + QLatin1String(".damaged");
    QFile::remove(aside);
    QFile::rename(path, aside);
}
