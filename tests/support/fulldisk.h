#pragma once

#include <QtGlobal>

#include <csignal>

#include <sys/resource.h>

/// As long as it lives, no file of this process gets longer than some bytes, as on a disk without
/// room: a write ends in the middle, and the next one fails with "File too large". Needs no rights.
class FullDisk
{
public:
    explicit FullDisk(rlim_t bytes)
    {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        limit(bytes);
    }

    ~FullDisk() { ::setrlimit(RLIMIT_FSIZE, &m_before); }
    Q_DISABLE_COPY(FullDisk)

    /// The same until the end of the process, for one that is about to begin.
    static void limit(rlim_t bytes)
    {
        rlimit limit = {};
        ::getrlimit(RLIMIT_FSIZE, &limit);
        limit.rlim_cur = bytes;
        ::setrlimit(RLIMIT_FSIZE, &limit);
        std::signal(SIGXFSZ, SIG_IGN);
    }

private:
    rlimit m_before = {};
};
