#pragma once

#include "banner.h"

class Equipment;

/// Tells that another host updates the system, which one and how far it is, and that the user can
/// only look on meanwhile.
class OtherHostBanner : public Banner
{
    Q_OBJECT

public:
    /// @param equipment must outlive the banner
    explicit OtherHostBanner(const Equipment& equipment, QWidget* parent = nullptr);

private:
    void follow();

    const Equipment& m_equipment;
};

/// One sentence about the host that updates the system.
QString otherHostText(const Equipment& equipment);

/// Tells in a box that a run was not begun, as another host updates the system.
/// @param window stands behind the box where no modal window does
void refuseForOtherHost(const Equipment& equipment, QWidget* window);
