#pragma once

#include <QDateTime>
#include <QStackedWidget>

class QLabel;
class QProgressBar;
class QPushButton;
class QTimer;
class Equipment;

/// The head of the main window: what the frontend is connected to or, while the controllers do not
/// answer, a page that says so and how long it will be.
class ConnectionPanel : public QStackedWidget
{
    Q_OBJECT

public:
    /// @param equipment must outlive the panel
    /// @param observer whether the user may only look on
    explicit ConnectionPanel(Equipment& equipment, bool observer = false,
                             QWidget* parent = nullptr);

    /// @param details one line about the backend
    void showConnected(const QString& details);
    /// Says that the controllers do not answer, and keeps telling how long it will be.
    /// @param lastAnswer invalid: there was none
    void showWaiting(const QDateTime& lastAnswer = QDateTime());

private:
    QWidget* makeConnectedPage();
    QWidget* makeWaitingPage();
    void updateWaiting();
    QString remainingText(qint64 leftMs) const;

    Equipment& m_equipment;
    QTimer* m_clock;
    QLabel* m_title;
    QLabel* m_details;
    QLabel* m_waiting;
    QLabel* m_remaining;
    QProgressBar* m_bar;
    QPushButton* m_power;
};
