#pragma once

#include <QRegExp>
#include <QString>
#include <QStringList>

#include <type_traits>

/// A version of up to three numbers: a release, a protocol, a controller's or camera's firmware.
///
/// A value type that host and plug-in share by layout: three signed 32-bit parts, -1 for an absent
/// one. By convention a present part follows only present parts; nothing enforces that.
class VersionInfo
{
public:
    int ma; ///< major part, -1 if absent
    int mi; ///< minor part, -1 if absent
    int pa; ///< patch part, -1 if absent

    /// A version of these parts; those that are not given are absent.
    // NOLINTNEXTLINE(google-explicit-constructor): a bare number is a version of one part
    constexpr VersionInfo(int majorPart = -1, int minorPart = -1, int patchPart = -1)
        : ma(majorPart), mi(minorPart), pa(patchPart)
    {
    }

    /// Overwrites all three parts.
    constexpr void setVer(int majorPart, int minorPart, int patchPart)
    {
        ma = majorPart;
        mi = minorPart;
        pa = patchPart;
    }

    /// Reads a version text tolerantly: an optional "v", then up to three numbers joined by dots.
    /// Everything from the first other letter or dash on is cut off, so a pre-release appendix does
    /// not count.
    ///
    /// @param ok may be null. If given, it receives the outcome of the last conversion made, and
    /// the
    ///           first part that does not convert ends the reading (that part is 0). If null, such
    ///           a part counts as 0 and the reading goes on.
    /// @return the parts read, the others -1; (0, -1, -1) for a text that makes no sense.
    static VersionInfo fromString(QString s, bool* ok = nullptr)
    {
        s = s.toLower();
        if (s.startsWith(QLatin1Char('v')))
            s.remove(0, 1);
        const int appendix = s.indexOf(QRegExp(QStringLiteral("[a-z-]")));
        if (appendix >= 0)
            s.truncate(appendix);

        const QStringList parts = s.split(QLatin1Char('.'));
        VersionInfo version;
        version.ma = parts.at(0).toInt(ok);
        if ((ok && !*ok) || parts.size() == 1)
            return version;
        version.mi = parts.at(1).toInt(ok);
        if ((ok && !*ok) || parts.size() == 2)
            return version;
        version.pa = parts.at(2).toInt(ok);
        return version;
    }

    /// The version as text with a leading "v", up to its first absent part; empty without a major.
    QString toString() const
    {
        if (ma < 0)
            return QString();
        QString text = QStringLiteral("v%1").arg(ma);
        if (mi < 0)
            return text;
        text += QStringLiteral(".%1").arg(mi);
        if (pa < 0)
            return text;
        return text + QStringLiteral(".%1").arg(pa);
    }

    /// Whether all parts are the same. The order of versions is lexicographic, so an absent part
    /// ranks below 0: 2.7 is less than 2.7.0.
    constexpr bool operator==(const VersionInfo& other) const
    {
        return ma == other.ma && mi == other.mi && pa == other.pa;
    }
    /// Whether any part differs.
    constexpr bool operator!=(const VersionInfo& other) const { return !(*this == other); }
    /// Whether this version comes after @p other.
    constexpr bool operator>(const VersionInfo& other) const
    {
        if (ma != other.ma)
            return ma > other.ma;
        if (mi != other.mi)
            return mi > other.mi;
        return pa > other.pa;
    }
    /// Whether this version comes after @p other or is the same.
    constexpr bool operator>=(const VersionInfo& other) const
    {
        return *this > other || *this == other;
    }
    /// Whether this version comes before @p other.
    constexpr bool operator<(const VersionInfo& other) const { return !(*this >= other); }
    /// Whether this version comes before @p other or is the same.
    constexpr bool operator<=(const VersionInfo& other) const { return !(*this > other); }

    /// The major part, -1 if absent.
    constexpr int major() const { return ma; }
    /// The minor part, -1 if absent.
    constexpr int minor() const { return mi; }
    /// The patch part, -1 if absent.
    constexpr int patch() const { return pa; }
};

static_assert(std::is_trivially_copyable_v<VersionInfo> && std::is_standard_layout_v<VersionInfo>,
              "VersionInfo crosses the border between host and plug-in by value");
static_assert(sizeof(VersionInfo) == 12 && sizeof(int) == 4,
              "VersionInfo is three 32-bit integers and nothing else");
