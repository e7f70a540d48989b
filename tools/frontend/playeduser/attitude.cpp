#include "attitude.h"

#include <algorithm>

const QVector<AttitudeInfo>& attitudes()
{
    static const QVector<AttitudeInfo> all = {
        {Attitude::Willing, "willing"}, {Attitude::Later, "later"},
        {Attitude::Partial, "partial"}, {Attitude::Idle, "idle"},
        {Attitude::Curious, "curious"},
    };
    return all;
}

std::optional<Attitude> attitudeNamed(const QString& name)
{
    const auto found = std::find_if(attitudes().begin(), attitudes().end(),
                                    [&](const AttitudeInfo& info) { return name == info.name; });
    return found == attitudes().end() ? std::nullopt : std::make_optional(found->attitude);
}
