#pragma once

#include <QByteArray>
#include <QRandomGenerator>

#include <cstdio>

/// The same bytes on every run, without any order.
inline QByteArray randomBytes(int size)
{
    QByteArray bytes(size, '\0');
    QRandomGenerator generator(4711);
    for (char& byte : bytes)
        byte = static_cast<char>(generator.generate());
    return bytes;
}

/// One line of a benchmark's result.
inline void printRatio(const char* what, double ratio, const char* goal)
{
    std::printf("%-58s %8.3f   %s\n", what, ratio, goal);
}
