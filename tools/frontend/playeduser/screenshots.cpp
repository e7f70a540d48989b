#include "screenshots.h"

#include <wholefile.h>

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QPixmap>
#include <QWidget>

namespace {

QString numberText(int number)
{
    return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0'));
}

} // namespace

Screenshots::Screenshots(const QString& folder, const QString& counterFile)
    : m_folder(folder), m_counterFile(counterFile)
{
}

std::optional<QString> Screenshots::save(QWidget& window, const QString& name, QString* error)
{
    if (m_folder.isEmpty())
        return QString();
    const int number = nextNumber();
    QString file = QStringLiteral("%1-%2.png").arg(numberText(number), name);
    QBuffer picture;
    if (!QDir().mkpath(m_folder) || !picture.open(QIODevice::WriteOnly) ||
        !window.grab().save(&picture, "PNG")) {
        *error = QStringLiteral("%1/%2 cannot be written").arg(m_folder, file);
        return std::nullopt;
    }
    if (!writeWholeFile(m_folder + '/' + file, picture.data(), error) ||
        !writeWholeFile(m_counterFile, QByteArray::number(number), error))
        return std::nullopt;
    return file;
}

int Screenshots::nextNumber() const
{
    QFile counter(m_counterFile);
    int number = counter.open(QIODevice::ReadOnly) ? counter.readAll().toInt() + 1 : 1;
    while (isTaken(number))
        ++number;
    return number;
}

bool Screenshots::isTaken(int number) const
{
    return !QDir(m_folder).entryList({numberText(number) + QLatin1String("-*")}).isEmpty();
}
