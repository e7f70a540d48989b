#pragma once

#include <QFrame>

class QLabel;
class QProgressBar;
class QPushButton;

/// A stripe across a window for what its user must not miss. Hidden until it has something to tell.
class Banner : public QFrame
{
    Q_OBJECT

public:
    /// Makes a hidden one.
    explicit Banner(QWidget* parent = nullptr);

    /// Shows it.
    /// @param title what is so, in one sentence
    /// @param lines more about it, each a sentence of its own; may be empty
    void tell(const QString& title, const QStringList& lines);
    /// Shows a bar beside the lines.
    /// @param percent 0 to 100; less than 0: no bar
    /// @param name what it shows, for those who do not see it
    void setShare(int percent, const QString& name = QString());
    /// Shows a button that emits accepted().
    /// @param text empty: no button
    void offer(const QString& text);

signals:
    /// The user took what offer() has offered.
    void accepted();

private:
    QLabel* m_title;
    QLabel* m_lines;
    QProgressBar* m_share;
    QPushButton* m_offer;
};
