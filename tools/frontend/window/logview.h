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

    /// Whether a message passes.
    bool shows(const QString& messageSender, const QString& messageText) const;
};

/// The frontend's log: one line for each message, with its time and sender. Of a long one the
/// oldest messages go.
class LogView : public QPlainTextEdit
{
    Q_OBJECT

public:
    /// Of a log with more lines than these the oldest messages go.
    static constexpr int maxLines = 20000;

    /// An empty log.
    explicit LogView(QWidget* parent = nullptr);

    /// Appends a message. Line ends inside of @p text go on below it, indented.
    void add(const QString& sender, const QString& text);
    /// The same of a message that came at @p time.
    void addAt(const QDateTime& time, const QString& sender, const QString& text);

    /// Shows the messages that @p filter lets through, at once and from now on. The others are
    /// kept.
    void setFilter(const LogFilter& filter);

    /// Messages that are kept, shown or not.
    int messageCount() const { return static_cast<int>(m_messages.size()); }
    /// Messages that the filter lets through.
    int shownCount() const { return m_shownCount; }

    /// The log as text for a file: a timestamp() before each message, a line end behind each line.
    QString wholeText() const;
    /// Likewise, what the filter lets through.
    QString shownText() const;

    /// A time as the shown lines begin with it, in the same digits everywhere.
    static QString timeOfDay(const QTime& time);
    /// The lines of a message, without a line end behind the last.
    static QString lineOf(const QString& time, const QString& sender, const QString& text);

signals:
    /// A message has come, whether it is shown or not.
    void added(const QString& sender, const QString& text);

private:
    struct Message
    {
        QDateTime time;
        QString sender;
        QString text;
        QString lines; ///< as they are shown
        int lineCount;
    };

    void forgetOldest();
    QStringList linesOf(const LogFilter& filter) const;
    QString datedText(const LogFilter& filter) const;

    std::deque<Message> m_messages;
    int m_lineCount = 0;
    int m_shownCount = 0;
    LogFilter m_filter;
};
