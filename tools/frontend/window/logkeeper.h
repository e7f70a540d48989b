#pragma once

#include <QFile>
#include <QObject>

class LogView;

/// Keeps a log in a file, so that the next start goes on with it however this one ends. The file
/// has a line of JSON for each message.
class LogKeeper : public QObject
{
    Q_OBJECT

public:
    /// So many messages of earlier starts are shown; the older ones go.
    static constexpr int maxEarlier = 2000;

    /// @param log must outlive the keeper
    explicit LogKeeper(LogView& log);

    /// Shows the messages that @p file holds, if there is such a file, and adds each message of the
    /// log to it from now on. A line that is damaged is left out.
    /// @param error must not be null; on failure "FILE: REASON", and nothing more is kept
    bool keepIn(const QString& file, QString* error);

signals:
    /// A message could not be kept, and neither will those after it. @p reason is one line.
    void failed(const QString& reason);

private:
    bool showEarlier(QString* error);
    void append(const QString& sender, const QString& text);

    LogView& m_log;
    QFile m_file; // open as long as messages are kept
};
