#include "warningguard.h"

#include <QStringList>
#include <QtTest>

#include <cstdio>

static QtMessageHandler s_nextHandler = nullptr;
static QStringList s_expected;
static int s_counted = 0;

// What the platform without a display says of itself says nothing about the program.
static bool isOfPlatform(const QString& text)
{
    return text == QLatin1String("This plugin does not support propagateSizeHints()") ||
           text == QLatin1String("This plugin does not support raise()");
}

static bool isWarning(QtMsgType type)
{
    return type == QtWarningMsg || type == QtCriticalMsg;
}

static void handleMessage(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    if (isWarning(type) && (s_expected.removeOne(text) || isOfPlatform(text)))
        return;
    if (s_nextHandler)
        s_nextHandler(type, context, text);
    if (isWarning(type))
        QTest::qFail(qPrintable(QStringLiteral("unexpected warning: ") + text), __FILE__, __LINE__);
}

void failOnUnexpectedWarnings()
{
    const QtMessageHandler previous = qInstallMessageHandler(handleMessage);
    if (previous != handleMessage)
        s_nextHandler = previous;
}

static void countMessage(QtMsgType type, const QMessageLogContext& /*context*/, const QString& text)
{
    std::fprintf(stderr, "after the tests: %s\n", qPrintable(text));
    if (isWarning(type) && !isOfPlatform(text))
        ++s_counted;
}

void countWarnings()
{
    qInstallMessageHandler(countMessage);
}

int countedWarnings()
{
    return s_counted;
}

ExpectedWarning::ExpectedWarning(const QString& text) : m_text(text)
{
    s_expected += text;
}

ExpectedWarning::~ExpectedWarning()
{
    if (s_expected.removeOne(m_text))
        QTest::qFail(qPrintable(QStringLiteral("missing warning: ") + m_text), __FILE__, __LINE__);
}
