#include "versionclasses.h"

#include <QRegularExpression>

#include <algorithm>
#include <utility>

namespace {

constexpr int highestPart = 65535;

// What an empty reply, or one of letters, is read as.
constexpr VersionInfo lowestVersion{0, -1, -1};

/// The lowest version above @p version that files can bring.
VersionInfo nextUsual(const VersionInfo& version, VersionParts parts)
{
    if (version.mi < 0)
        return parts == PtParts ? VersionInfo(version.ma, 0, 0) : VersionInfo(version.ma, 0);
    if (parts == PtParts && version.pa < highestPart)
        return {version.ma, version.mi, qMax(version.pa + 1, 0)};
    const bool carries = version.mi >= highestPart;
    const VersionInfo next(carries ? version.ma + 1 : version.ma, carries ? 0 : version.mi + 1);
    return parts == PtParts ? VersionInfo(next.ma, next.mi, 0) : next;
}

/// A version between two limits; nullopt if there is none, in whatever form.
std::optional<VersionInfo> between(const VersionInfo& low, const std::optional<VersionInfo>& high,
                                   VersionParts parts)
{
    QVector<VersionInfo> candidates{nextUsual(low, parts)};
    if (high && high->pa >= 0)
        candidates += VersionInfo(high->ma, high->mi);
    candidates += VersionInfo(low.ma, low.mi, low.pa + 1);
    for (const VersionInfo& candidate : qAsConst(candidates)) {
        if (candidate > low && (!high || candidate < *high))
            return candidate;
    }
    return std::nullopt;
}

std::optional<VersionInfo> anyBelow(const VersionInfo& limit, VersionParts parts)
{
    for (const VersionInfo& candidate : {nextUsual(lowestVersion, parts), lowestVersion}) {
        if (candidate < limit)
            return candidate;
    }
    return std::nullopt;
}

VersionCell cellOf(const std::optional<VersionInfo>& from, const std::optional<VersionInfo>& to,
                   const VersionInfo& example, VersionParts parts)
{
    VersionCell cell;
    cell.isLimit = from && to && *from == *to;
    cell.from = from;
    cell.to = to;
    cell.example = example;
    cell.hasUsual = isUsual(example, parts);
    return cell;
}

QString otherText(const PtClass& it)
{
    return QStringLiteral("other pre-releases of ") + it.cell.example.toString();
}

std::pair<int, int> rankOf(const QString& mark)
{
    static const QRegularExpression form(QStringLiteral("^-(alpha|beta|rc)\\.([0-9]{1,5})$"));
    if (mark.isEmpty())
        return {4, 0};
    const QRegularExpressionMatch match = form.match(mark);
    if (!match.hasMatch())
        return {0, 0};
    const QString kind = match.captured(1);
    const int order = kind == QLatin1String("rc") ? 3 : kind == QLatin1String("beta") ? 2 : 1;
    return {order, match.captured(2).toInt()};
}

// A pre-release whose mark is none of @p marks.
QString otherMark(const QStringList& marks)
{
    int number = 1;
    while (marks.contains(QStringLiteral("-beta.%1").arg(number)))
        ++number;
    return QStringLiteral("-beta.%1").arg(number);
}

QVector<PtClass> preReleasesAt(const VersionCell& cell, const QVector<MarkedVersion>& marked)
{
    QStringList marks;
    bool isMarked = false;
    for (const MarkedVersion& it : marked) {
        if (it.version != cell.example)
            continue;
        isMarked = true;
        // A mark that reads as a part of the number makes another version of it, and none reaches
        // beyond a blank.
        const QString text = it.version.toString() + it.mark;
        const bool isWord = !it.mark.isEmpty() && !it.mark.contains(QLatin1Char(' '));
        if (isWord && VersionInfo::fromString(text) == it.version)
            marks += it.mark;
    }
    if (!isMarked)
        return {};
    marks.removeDuplicates();
    std::stable_sort(marks.begin(), marks.end(), isEarlierMark);
    QVector<PtClass> classes{{cell, otherMark(marks), true}};
    for (const QString& mark : qAsConst(marks))
        classes += {cell, mark, false};
    return classes;
}

} // namespace

QString VersionCell::lowText() const
{
    if (!from)
        return QString();
    return (isLimit ? QStringLiteral("from %1") : QStringLiteral("above %1")).arg(from->toString());
}

QString VersionCell::highText() const
{
    if (!to)
        return QString();
    return (isLimit ? QStringLiteral("to %1") : QStringLiteral("below %1")).arg(to->toString());
}

QVector<VersionCell> versionCells(QVector<VersionInfo> limits, VersionParts parts)
{
    std::sort(limits.begin(), limits.end());
    limits.erase(std::unique(limits.begin(), limits.end()), limits.end());
    limits.erase(std::remove_if(limits.begin(), limits.end(),
                                [](const VersionInfo& limit) { return limit < lowestVersion; }),
                 limits.end());
    QVector<VersionCell> cells;
    std::optional<VersionInfo> below;
    for (const VersionInfo& limit : qAsConst(limits)) {
        const auto example = below ? between(*below, limit, parts) : anyBelow(limit, parts);
        if (example)
            cells += cellOf(below, limit, *example, parts);
        cells += cellOf(limit, limit, limit, parts);
        below = limit;
    }
    const VersionInfo start = below.value_or(lowestVersion);
    cells += cellOf(below, std::nullopt, nextUsual(start, parts), parts);
    return cells;
}

QString PtClass::lowText() const
{
    if (!cell.isLimit)
        return cell.lowText();
    return QStringLiteral("from ") + (isOther ? otherText(*this) : reported());
}

QString PtClass::highText() const
{
    if (!cell.isLimit)
        return cell.highText();
    return QStringLiteral("to ") + (isOther ? otherText(*this) : reported());
}

QVector<PtClass> ptClasses(const QVector<VersionInfo>& limits, const QVector<MarkedVersion>& marked)
{
    QVector<PtClass> classes;
    for (const VersionCell& cell : versionCells(limits, PtParts)) {
        if (cell.isLimit)
            classes += preReleasesAt(cell, marked);
        classes += {cell, QString(), false};
    }
    return classes;
}

bool isEarlierMark(const QString& mark, const QString& than)
{
    return rankOf(mark) < rankOf(than);
}
