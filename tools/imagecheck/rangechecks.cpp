#include "rangechecks.h"

#include <fieldoffsets.h>
#include <releasetext.h>

#include <algorithm>

namespace {

/// One of the two components of a controller, and what an image says of it.
struct Component
{
    quint16 blockType;
    const char* blockWord;
    const char* newName;
    VersionInfo newVer;
    const char* minName;
    VersionInfo minVer;
    Rule withoutBlock;
    Rule notReached;
};

/// A range of a block with its place in the file.
struct Range
{
    int index;
    VersionInfo lowest;
    VersionInfo highest;
    qint64 lowestOffset;
    qint64 highestOffset;

    bool holds(const VersionInfo& version) const { return version >= lowest && version <= highest; }
    QString text() const { return versionText(lowest) + " to " + versionText(highest); }
};

QVector<Component> componentsOf(const ControllerImage& image)
{
    return {{FirmwareBlock, "firmware", "newPt", image.newPt, "minPt", image.minPt,
             Rule::PtWithoutFirmware, Rule::PtRange},
            {SystemBlock, "system", "newCt", image.newCt, "minCt", image.minCt,
             Rule::CtWithoutSystem, Rule::CtRange}};
}

/// Checks the ranges of one image.
class RangeCheck
{
public:
    RangeCheck(const ControllerImage& image, bool isFinal) : m_image(image), m_isFinal(isFinal) {}

    QVector<RuleFinding> run();

private:
    QVector<Range> rangesOf(quint16 type) const; // by where they begin
    bool findsEmptyRange(const QVector<Range>& ranges);
    void checkOverlaps(const QVector<Range>& ranges);
    void checkReach(const Component& component, const QVector<Range>& ranges);
    void checkHighest(const Component& component, const QVector<Range>& ranges);
    void addMissing(const Component& component, const Range& nearest, const VersionInfo& from,
                    const VersionInfo& end);
    void checkOwnPreReleases(const QVector<Range>& firmware);
    QString field(const Range& range, const char* name) const
    {
        return QStringLiteral("blocks[%1].%2").arg(range.index).arg(QLatin1String(name));
    }

    const ControllerImage& m_image;
    const bool m_isFinal;
    QVector<RuleFinding> m_findings;
};

QVector<RuleFinding> RangeCheck::run()
{
    for (const Component& component : componentsOf(m_image)) {
        const QVector<Range> ranges = rangesOf(component.blockType);
        if (findsEmptyRange(ranges))
            continue;
        checkOverlaps(ranges);
        checkHighest(component, ranges);
        checkReach(component, ranges);
        if (component.blockType == FirmwareBlock)
            checkOwnPreReleases(ranges);
    }
    return m_findings;
}

QVector<Range> RangeCheck::rangesOf(quint16 type) const
{
    QVector<Range> ranges;
    qint64 entry = headSize(m_image);
    for (int index = 0; index < m_image.blocks.size(); ++index) {
        const ControllerImageBlock& block = m_image.blocks[index];
        if (block.type == type)
            ranges.append({index, block.minVer, block.maxVer,
                           entry + entryFields(block, "minVersion").offset(),
                           entry + entryFields(block, "maxVersion").offset()});
        entry += entryFields(block).size();
    }
    std::sort(ranges.begin(), ranges.end(),
              [](const Range& a, const Range& b) { return a.lowest < b.lowest; });
    return ranges;
}

bool RangeCheck::findsEmptyRange(const QVector<Range>& ranges)
{
    bool isAnyEmpty = false;
    for (const Range& range : ranges) {
        if (range.lowest <= range.highest)
            continue;
        isAnyEmpty = true;
        m_findings.append({Rule::EmptyRange, field(range, "minVersion"), versionText(range.lowest),
                           QStringLiteral("at most maxVersion %1").arg(versionText(range.highest)),
                           range.lowestOffset});
    }
    return isAnyEmpty;
}

void RangeCheck::checkOverlaps(const QVector<Range>& ranges)
{
    const Range* furthest = nullptr;
    for (const Range& range : ranges) {
        if (furthest && range.lowest <= furthest->highest) {
            const auto [former, latter] = std::minmax(
                *furthest, range, [](const Range& a, const Range& b) { return a.index < b.index; });
            m_findings.append({Rule::RangeOverlap, field(latter, "minVersion"), latter.text(),
                               QStringLiteral("versions outside of blocks[%1], %2")
                                   .arg(former.index)
                                   .arg(former.text()),
                               latter.lowestOffset});
        }
        if (!furthest || range.highest > furthest->highest)
            furthest = &range;
    }
}

void RangeCheck::checkHighest(const Component& component, const QVector<Range>& ranges)
{
    for (const Range& range : ranges) {
        if (range.highest > component.newVer)
            m_findings.append(
                {Rule::RangeAboveNew, field(range, "maxVersion"), versionText(range.highest),
                 QStringLiteral("at most %1 %2")
                     .arg(QLatin1String(component.newName), versionText(component.newVer)),
                 range.highestOffset});
    }
}

// Each version from the minimum to below the new one has to be in a range: a controller that has
// another one keeps it, while the inventory waits for the new one for ever.
void RangeCheck::checkReach(const Component& component, const QVector<Range>& ranges)
{
    if (component.newVer <= component.minVer)
        return;
    if (ranges.isEmpty()) {
        m_findings.append({component.withoutBlock, component.newName, versionText(component.newVer),
                           QStringLiteral("%1 %2, as there is no %3 block")
                               .arg(QLatin1String(component.minName), versionText(component.minVer),
                                    QLatin1String(component.blockWord)),
                           headOffset(m_image, component.newName)});
        return;
    }
    std::optional<VersionInfo> position = component.minVer;
    const Range* furthest = &ranges.first();
    for (const Range& range : ranges) {
        if (!position || *position >= component.newVer)
            return;
        if (range.lowest > *position)
            addMissing(component, range, *position, std::min(range.lowest, component.newVer));
        if (range.highest >= furthest->highest)
            furthest = &range;
        if (range.highest >= *position)
            position = versionAfter(range.highest, imageformat::versionParts(component.blockType));
    }
    if (position && *position < component.newVer)
        addMissing(component, *furthest, *position, component.newVer);
}

// Of the range that would have to be longer: the one that begins behind, or the last one before.
void RangeCheck::addMissing(const Component& component, const Range& nearest,
                            const VersionInfo& from, const VersionInfo& end)
{
    const bool isTooHigh = nearest.lowest > from;
    m_findings.append(
        {component.notReached, field(nearest, isTooHigh ? "minVersion" : "maxVersion"),
         versionText(isTooHigh ? nearest.lowest : nearest.highest),
         QStringLiteral("a range with %1 to below %2, from where %3 %4 is not reached")
             .arg(versionText(from), versionText(end), QLatin1String(component.newName),
                  versionText(component.newVer)),
         isTooHigh ? nearest.lowestOffset : nearest.highestOffset});
}

void RangeCheck::checkOwnPreReleases(const QVector<Range>& firmware)
{
    if (!m_isFinal || firmware.isEmpty() || m_image.newPt != m_image.release)
        return;
    const Range* highest = &firmware.first();
    for (const Range& range : firmware) {
        if (range.holds(m_image.newPt))
            return;
        if (range.highest > highest->highest)
            highest = &range;
    }
    m_findings.append({Rule::OwnPreReleases, field(*highest, "maxVersion"),
                       versionText(highest->highest),
                       QStringLiteral("at least newPt %1, if there were pre-releases")
                           .arg(versionText(m_image.newPt)),
                       highest->highestOffset});
}

} // namespace

std::optional<VersionInfo> versionAfter(VersionInfo version, int parts)
{
    constexpr int last = 0xFFFF;
    if (parts == 3) {
        if (version.pa < last)
            return VersionInfo(version.ma, version.mi, version.pa + 1);
        version.pa = 0;
    }
    if (version.mi < last)
        return VersionInfo(version.ma, version.mi + 1, version.pa);
    if (version.ma < last)
        return VersionInfo(version.ma + 1, 0, version.pa);
    return std::nullopt;
}

QVector<RuleFinding> checkRanges(const ControllerImage& image, bool isFinal)
{
    return RangeCheck(image, isFinal).run();
}
