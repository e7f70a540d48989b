#include "journeytable.h"

#include <algorithm>

namespace {

using Journeys = QVector<std::optional<Journey>>;

bool areSame(const std::optional<Journey>& left, const std::optional<Journey>& right)
{
    return left.has_value() == right.has_value() && (!left || *left == *right);
}

/// The ranges of Ct in the row of one class of Pt.
QVector<JourneyRange> rangesOfRow(const Journeys& journeys, int pt, int ctClasses)
{
    QVector<JourneyRange> ranges;
    for (int ct = 0; ct < ctClasses; ++ct) {
        const auto& journey = journeys.at(pt * ctClasses + ct);
        if (!journey)
            continue;
        const bool goesOn = ct > 0 && areSame(journey, journeys.at(pt * ctClasses + ct - 1));
        if (goesOn)
            ranges.last().lastCt = ct;
        else
            ranges += {pt, pt, ct, ct, *journey};
    }
    return ranges;
}

} // namespace

QVector<JourneyRange> joinJourneys(const QVector<std::optional<Journey>>& journeys, int ctClasses)
{
    QVector<JourneyRange> table;
    for (int pt = 0; ctClasses > 0 && pt < journeys.size() / ctClasses; ++pt) {
        for (const JourneyRange& range : rangesOfRow(journeys, pt, ctClasses)) {
            // The latest ranges are the ones that can go on.
            const auto above = std::find_if(table.rbegin(), table.rend(), [&](const auto& it) {
                return it.lastPt == pt - 1 && it.firstCt == range.firstCt &&
                       it.lastCt == range.lastCt && it.journey == range.journey;
            });
            if (above != table.rend())
                above->lastPt = pt;
            else
                table += range;
        }
    }
    return table;
}
