#include "moment.h"

#include <QLocale>
#include <QRegularExpression>

// The short form has no seconds, the long one has the zone as well.
static QString timeFormat(const QLocale& locale)
{
    static const QRegularExpression zone(QStringLiteral(R"(,?\s*[(\[]?\bt+\b[)\]]?\s*)"));
    return locale.timeFormat(QLocale::LongFormat).remove(zone);
}

QString momentText(const QDateTime& time, const QDateTime& now)
{
    const QLocale locale;
    const QDateTime local = time.toLocalTime();
    const QString text = locale.toString(local.time(), timeFormat(locale));
    if (local.date() == now.toLocalTime().date())
        return text;
    return locale.toString(local.date(), QLocale::ShortFormat) + QLatin1Char(' ') + text;
}
