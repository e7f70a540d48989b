#pragma once

#include <functional>

/// Takes the place of QThread::msleep() in a program that links recordedsleep.cpp: nobody waits,
/// and the test learns how long it would have been.
///
/// A sleep while there is no such object fails the test.
class RecordedSleep
{
public:
    using Listener = std::function<void(int milliseconds)>;

    explicit RecordedSleep(const Listener& listener);
    ~RecordedSleep();
    RecordedSleep(const RecordedSleep&) = delete;
    RecordedSleep& operator=(const RecordedSleep&) = delete;
};
