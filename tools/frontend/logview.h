#pragma once

#include <QDateTime>
#include <QPlainTextEdit>

/// The frontend's log: one line for each message, with its time and sender.
class LogView : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit LogView(QWidget* parent = nullptr);

    /// Appends a message. Line ends inside of @p text go on below it, indented.
    void add(const QString& sender, const QString& text);

    /// The line of a message: its time of day, the sender and the text.
    static QString lineOf(const QTime& time, const QString& sender, const QString& text);

signals:
    void added(const QString& sender, const QString& text);
};
