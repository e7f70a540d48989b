#pragma once

#include <QString>
#include <QVector>

#include <optional>

/// How the user behaves that is played without hands.
enum class Attitude
{
    Willing, ///< wants all updates
    Later,   ///< leaves the update for later
    Partial, ///< takes one update off and goes on with the others
    Idle,    ///< takes all updates off and tries to update all the same
    Curious, ///< opens what there is in the menus, and leaves the update for later
};

/// An attitude with its name.
struct AttitudeInfo
{
    Attitude attitude; ///< the one that is named
    const char* name;  ///< on the command line
};

/// All attitudes, with their names on the command line.
const QVector<AttitudeInfo>& attitudes();

/// @return nullopt if no attitude has that name
std::optional<Attitude> attitudeNamed(const QString& name);
