#include "recordedsleep.h"

#include <QThread>
#include <QtTest>

static RecordedSleep::Listener s_listener;

RecordedSleep::RecordedSleep(const Listener& listener)
{
    s_listener = listener;
}

RecordedSleep::~RecordedSleep()
{
    s_listener = {};
}

// The linker takes this definition before the one in Qt's library.
void QThread::msleep(unsigned long milliseconds)
{
    if (s_listener)
        s_listener(static_cast<int>(milliseconds));
    else
        QTest::qFail("unexpected sleep", __FILE__, __LINE__);
}
