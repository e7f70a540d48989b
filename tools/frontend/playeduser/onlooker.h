#pragma once

#include <QObject>
#include <QPair>
#include <QString>
#include <QTimer>
#include <QVector>

class MainWindow;
class Narrator;
class QWidget;

/// Tells what a user sees and could click on, and touches nothing: the window on top, what changes
/// in it, where the keyboard's focus is, and the lines of the log.
class Onlooker : public QObject
{
    Q_OBJECT

public:
    /// Both must outlive the onlooker, which begins as soon as events are served.
    Onlooker(MainWindow& window, Narrator& narrator);

private:
    using Line = QPair<QString, QString>; // kind and text

    void look();
    static QVector<Line> linesOf(const QWidget& window);
    void tell(const Line& line);
    void tellFocus(const QWidget* widget);

    MainWindow& m_window;
    Narrator& m_narrator;
    QTimer m_timer;
    const QWidget* m_watched = nullptr; // may be gone, and is only compared
    QVector<Line> m_seen;
    QVector<Line> m_told;
};
