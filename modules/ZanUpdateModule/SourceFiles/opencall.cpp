#include "opencall.h"

#include <QCoreApplication>
#include <QList>
#include <QTimer>

static int openCalls = 0;
static QList<std::function<void()>> waiting;

// What is done may open calls of its own, in which the host asks for more.
static void doWhatWaits()
{
    while (openCalls == 0 && !waiting.isEmpty())
        waiting.takeFirst()();
}

OpenCall::OpenCall(Origin origin) : m_origin(origin)
{
    ++openCalls;
}

OpenCall::~OpenCall()
{
    --openCalls;
    if (m_origin == Widget && openCalls == 0 && !waiting.isEmpty())
        QTimer::singleShot(0, QCoreApplication::instance(), doWhatWaits);
    else
        doWhatWaits();
}

bool OpenCall::isAny()
{
    return openCalls > 0;
}

void OpenCall::whenNone(const std::function<void()>& act)
{
    waiting.append(act);
    doWhatWaits();
}
