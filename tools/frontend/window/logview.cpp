#include "logview.h"

#include <timestamp.h>

#include <QFont>
#include <QLocale>
#include <QScrollBar>

namespace {

constexpr int senderWidth = 10;

} // namespace

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
    addAt(QDateTime::currentDateTime(), sender, text);
}

void LogView::addAt(const QDateTime& time, const QString& sender, const QString& text)
{
    const QString lines = lineOf(timeOfDay(time.time()), sender, text);
    m_messages.push_back({time, sender, text, lines, lines.count(QLatin1Char('\n')) + 1});
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

QString LogView::datedText(const LogFilter& filter) const
{
    QString text;
    for (const Message& message : m_messages) {
        if (filter.shows(message.sender, message.text))
            text +=
                lineOf(timestamp(message.time), message.sender, message.text) + QLatin1Char('\n');
    }
    return text;
}

QString LogView::wholeText() const
{
    return datedText({});
}

QString LogView::shownText() const
{
    return datedText(m_filter);
}

QString LogView::timeOfDay(const QTime& time)
{
    return QLocale::c().toString(time, QStringLiteral("HH:mm:ss.zzz"));
}

QString LogView::lineOf(const QString& time, const QString& sender, const QString& text)
{
    const QString head = QStringLiteral("%1  %2  ").arg(time, sender.leftJustified(senderWidth));
    QStringList lines = text.split(QLatin1Char('\n'));
    return head + lines.join(QLatin1Char('\n') + QString(head.size(), QLatin1Char(' ')));
}
