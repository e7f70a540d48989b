#pragma once

#include "attitude.h"
#include "hardwaresearchhandler.h"
#include "mainwindowhandler.h"
#include "messageboxhandler.h"
#include "newfeatureshandler.h"
#include "resultshandler.h"
#include "updatedialoghandler.h"
#include "userhands.h"

#include <QHash>
#include <QObject>
#include <QSet>
#include <QStringList>
#include <QTimer>

#include <array>
#include <functional>

class MainWindow;
class Narrator;
class Screenshots;
class Watchdog;

/// Plays the user: visits the window on top again and again, and has the handler of its kind read
/// it out, take its picture and do what a user would do there of a certain attitude. Works on the
/// widgets alone.
class UserDriver : public QObject
{
    Q_OBJECT

public:
    /// All must outlive the driver, which begins as soon as events are served.
    UserDriver(MainWindow& window, Narrator& narrator, Screenshots& screenshots, Watchdog& watchdog,
               Attitude attitude = Attitude::Willing);

    /// What is done with the frontend itself.
    MainWindowHandler& mainWindow() { return m_mainWindow; }

    /// The texts with which something was refused.
    const QStringList& refusals() const { return m_refusals; }

private:
    void tick();
    void visit(QWidget& window);
    void handle(QWidget& window, int visit);
    void noteOpened(QWidget& window);
    void forget(QWidget* window);
    void takeLogLine(const QString& sender, const QString& text);

    MainWindow& m_window;
    UserHands m_hands;
    QStringList m_refusals;
    MessageBoxHandler m_messageBoxes;
    UpdateDialogHandler m_updateDialog;
    NewFeaturesHandler m_newFeatures;
    HardwareSearchHandler m_hardwareSearch;
    ResultsHandler m_results;
    MainWindowHandler m_mainWindow;
    std::array<WindowHandler*, 6> m_handlers;

    QTimer m_timer;
    QHash<QWidget*, int> m_visits;
    QSet<QWidget*> m_busy;
};
