#pragma once

#include <QDateTime>
#include <QPlainTextEdit>
#include <QStringList>

#include <deque>

/// Which messages of the log to show: those of one sender, those with a text in them, or both.
struct LogFilter
{
    QString text;   ///< anywhere in sender or text of a message, whatever the case; empty: any
    QString sender; ///< empty: any

    bool shows(const QString& messageSender, const QString& messageText) const;
};

/// The frontend's log: one line for each message, with its time and sender. Of a long one the
/// oldest messages go.
class LogView : public QPlainTextEdit
{
    Q_OBJECT

public:
    static constexpr int maxLines = 20000;

    explicit LogView(QWidget* parent = nullptr);

    /// Appends a message. Line ends inside of @p text go on below it, indented.
    void add(const QString& sender, const QString& text);

    /// Shows the messages that @p filter lets through, at once and from now on. The others are
    /// kept.
    void setFilter(const LogFilter& filter);

    int messageCount() const { return static_cast<int>(m_messages.size()); }
    int shownCount() const { return m_shownCount; }

    /// The log as text, with a line end behind each line.
    QString wholeText() const;
    QString shownText() const;

    /// The line of a message: its time of day, the sender and the text.
    static QString lineOf(const QTime& time, const QString& sender, const QString& text);

signals:
    void added(const QString& sender, const QString& text);

private:
    struct Message
    {
        QString sender;
        QString text;
        QString lines; ///< as they are shown
        int lineCount;
    };

    void forgetOldest();
    QStringList linesOf(const LogFilter& filter) const;

    std::deque<Message> m_messages;
    int m_lineCount = 0;
    int m_shownCount = 0;
    LogFilter m_filter;
};
