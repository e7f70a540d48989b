#include "logview.h"

#include <QFont>

static constexpr int MAX_LINES = 20000;
static constexpr int SENDER_WIDTH = 10;

LogView::LogView(QWidget* parent) : QPlainTextEdit(parent)
{
    setObjectName(QStringLiteral("logView"));
    setAccessibleName(tr("Log"));
    setReadOnly(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setMaximumBlockCount(MAX_LINES);
    setTabChangesFocus(true);
    QFont font(QStringLiteral("monospace"));
    font.setStyleHint(QFont::Monospace);
    setFont(font);
}

void LogView::add(const QString& sender, const QString& text)
{
    appendPlainText(lineOf(QTime::currentTime(), sender, text));
    emit added(sender, text);
}

QString LogView::lineOf(const QTime& time, const QString& sender, const QString& text)
{
    const QString head =
        QStringLiteral("%1  %2  ")
            .arg(time.toString(QStringLiteral("HH:mm:ss.zzz")), sender.leftJustified(SENDER_WIDTH));
    QStringList lines = text.split(QLatin1Char('\n'));
    return head + lines.join(QLatin1Char('\n') + QString(head.size(), QLatin1Char(' ')));
}
