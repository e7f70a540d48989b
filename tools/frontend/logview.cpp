#include "logview.h"

#include <QFont>
#include <QScrollBar>

static constexpr int SENDER_WIDTH = 10;

bool LogFilter::shows(const QString& messageSender, const QString& messageText) const
{
    return (sender.isEmpty() || sender == messageSender) &&
           (messageSender.contains(text, Qt::CaseInsensitive) ||
            messageText.contains(text, Qt::CaseInsensitive));
}

LogView::LogView(QWidget* parent) : QPlainTextEdit(parent)
{
    setObjectName(QStringLiteral("logView"));
    setAccessibleName(tr("Log"));
    setReadOnly(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setMaximumBlockCount(maxLines);
    setTabChangesFocus(true);
    QFont font(QStringLiteral("monospace"));
    font.setStyleHint(QFont::Monospace);
    setFont(font);
}

void LogView::add(const QString& sender, const QString& text)
{
    const QString lines = lineOf(QTime::currentTime(), sender, text);
    m_messages.push_back({sender, text, lines, lines.count(QLatin1Char('\n')) + 1});
    m_lineCount += m_messages.back().lineCount;
    if (m_filter.shows(sender, text)) {
        ++m_shownCount;
        appendPlainText(lines);
    }
    forgetOldest();
    emit added(sender, text);
}

void LogView::forgetOldest()
{
    while (m_lineCount > maxLines) {
        const Message& oldest = m_messages.front();
        m_lineCount -= oldest.lineCount;
        m_shownCount -= m_filter.shows(oldest.sender, oldest.text) ? 1 : 0;
        m_messages.pop_front();
    }
}

void LogView::setFilter(const LogFilter& filter)
{
    m_filter = filter;
    const QStringList lines = linesOf(filter);
    m_shownCount = lines.size();
    setPlainText(lines.join(QLatin1Char('\n')));
    verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

QStringList LogView::linesOf(const LogFilter& filter) const
{
    QStringList lines;
    for (const Message& message : m_messages) {
        if (filter.shows(message.sender, message.text))
            lines += message.lines;
    }
    return lines;
}

static QString endedLines(QStringList lines)
{
    if (!lines.isEmpty())
        lines += QString();
    return lines.join(QLatin1Char('\n'));
}

QString LogView::wholeText() const
{
    return endedLines(linesOf({}));
}

QString LogView::shownText() const
{
    return endedLines(linesOf(m_filter));
}

QString LogView::lineOf(const QTime& time, const QString& sender, const QString& text)
{
    const QString head =
        QStringLiteral("%1  %2  ")
            .arg(time.toString(QStringLiteral("HH:mm:ss.zzz")), sender.leftJustified(SENDER_WIDTH));
    QStringList lines = text.split(QLatin1Char('\n'));
    return head + lines.join(QLatin1Char('\n') + QString(head.size(), QLatin1Char(' ')));
}
