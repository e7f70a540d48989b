#include "otheruser.h"

#include <QtGlobal>

#include <unistd.h>

static constexpr uid_t SUPERUSER = 0;
static constexpr uid_t NOBODY = 65534;

static void become(uid_t user)
{
    if (seteuid(user) != 0)
        qFatal("cannot become user %u", user);
}

OtherUser::OtherUser() : m_wasSuperuser(geteuid() == SUPERUSER)
{
    if (m_wasSuperuser)
        become(NOBODY);
}

OtherUser::~OtherUser()
{
    if (m_wasSuperuser)
        become(SUPERUSER);
}
