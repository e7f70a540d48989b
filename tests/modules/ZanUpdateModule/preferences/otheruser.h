#pragma once

/// Turns a process of the superuser, for whom permissions do not count, into one of a user without
/// any rights of its own, until this object goes. Another user's process stays what it is.
class OtherUser
{
public:
    OtherUser();
    ~OtherUser();
    OtherUser(const OtherUser&) = delete;
    OtherUser& operator=(const OtherUser&) = delete;

private:
    bool m_wasSuperuser;
};
