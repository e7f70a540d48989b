#include "screenshots.h"

#include <QDir>
#include <QFile>
#include <QPixmap>
#include <QWidget>

Screenshots::Screenshots(const QString& folder, const QString& counterFile)
    : m_folder(folder), m_counterFile(counterFile)
{
}

QString Screenshots::save(QWidget& window, const QString& name, QString* error)
{
    error->clear();
    if (m_folder.isEmpty())
        return QString();
    const int number = nextNumber();
    QString file = QStringLiteral("%1-%2.png").arg(number, 2, 10, QLatin1Char('0')).arg(name);
    QFile counter(m_counterFile);
    if (!QDir().mkpath(m_folder) || !window.grab().save(m_folder + '/' + file)) {
        *error = QStringLiteral("%1/%2 cannot be written").arg(m_folder, file);
        return QString();
    }
    if (counter.open(QIODevice::WriteOnly))
        counter.write(QByteArray::number(number));
    return file;
}

int Screenshots::nextNumber() const
{
    QFile counter(m_counterFile);
    return counter.open(QIODevice::ReadOnly) ? counter.readAll().toInt() + 1 : 1;
}
