#pragma once

#include <QByteArray>
#include <QLocale>

#include <ctime>
#include <optional>

/// Has a test run in another language and time zone for as long as it lives.
class Elsewhere
{
public:
    /// @param language such as "ar_EG", whose numbers have digits of their own
    /// @param zone as in TZ; "XXX-5:45" is ahead of UTC by 5:45 hours, and needs no zone database
    Elsewhere(const char* language, const char* zone)
    {
        QLocale::setDefault(QLocale(QLatin1String(language)));
        setZone(QByteArray(zone));
    }
    ~Elsewhere()
    {
        QLocale::setDefault(m_locale);
        setZone(m_zone);
    }
    Elsewhere(const Elsewhere&) = delete;
    Elsewhere& operator=(const Elsewhere&) = delete;

private:
    static std::optional<QByteArray> currentZone()
    {
        return qEnvironmentVariableIsSet("TZ") ? std::make_optional(qgetenv("TZ")) : std::nullopt;
    }

    static void setZone(const std::optional<QByteArray>& zone)
    {
        if (zone)
            qputenv("TZ", *zone);
        else
            qunsetenv("TZ");
        tzset();
    }

    const QLocale m_locale;
    const std::optional<QByteArray> m_zone = currentZone();
};
