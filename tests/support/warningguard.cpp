#include "warningguard.h"

#include <QStringList>
#include <QtTest>

static QtMessageHandler s_nextHandler = nullptr;
static QStringList s_expected;

// What the platform without a display says of itself says nothing about the program.
static bool isOfPlatform(const QString& text)
{
    return text == QLatin1String("This plugin does not support propagateSizeHints()") ||
           text == QLatin1String("This plugin does not support raise()");
}

static void handleMessage(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    const bool isWarning = type == QtWarningMsg || type == QtCriticalMsg;
    if (isWarning && (s_expected.removeOne(text) || isOfPlatform(text)))
        return;
    if (s_nextHandler)
        s_nextHandler(type, context, text);
    if (isWarning)
        QTest::qFail(qPrintable(QStringLiteral("unexpected warning: ") + text), __FILE__, __LINE__);
}

void failOnUnexpectedWarnings()
{
    const QtMessageHandler previous = qInstallMessageHandler(handleMessage);
    if (previous != handleMessage)
        s_nextHandler = previous;
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
