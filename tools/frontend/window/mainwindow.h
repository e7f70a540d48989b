#pragma once

#include "windowlook.h"

#include <ModuleInterface.h>
#include <orderedmenus.h>

#include <QAction>
#include <QDateTime>
#include <QMainWindow>
#include <QPointer>
#include <QVector>

class ConnectionPanel;
class LogPanel;
class LogView;
class QLabel;
class QMessageBox;
class RunBanner;
class RunMonitor;
class Equipment;
class SystemView;

/// The frontend's window: menus, the state of the connection, the simulated equipment and the log.
/// Windows of modules open below the equipment, so that it can be watched.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    /// @param equipment must outlive the window
    /// @param observer whether the user may only look on
    MainWindow(Equipment& equipment, bool observer, QWidget* parent = nullptr);

    /// The controllers answer. @param details one line about them
    void showConnected(const QString& details);
    /// The controllers do not answer, so that what is shown of them may be old.
    /// @param lastAnswer invalid: there was none
    void showLost(const QDateTime& lastAnswer);

    /// The frontend's log; owned by the window.
    LogView& log();
    /// Sets the folder that is proposed for a saved log.
    void setSaveFolder(const QString& folder);

    /// Places the menu entries of a module, which stay the module's. Those that must not be used
    /// during a measurement have to do with the controllers: they are disabled as long as one runs
    /// or the controllers do not answer, and chosen by moduleEntryWanted().
    void addModuleEntries(const QList<GuiElement*>& elements);
    /// Takes all of them out again, to be called before the module goes.
    void removeModuleEntries();
    /// @param text what the box "About" says of the module
    void setModuleText(const QString& text) { m_moduleText = text; }

    /// Tells of each run of updates as long as it is under way, and keeps what would disturb it
    /// from being done meanwhile.
    /// @param runs must outlive the window
    void followRuns(const RunMonitor& runs);
    /// Says that the frontend quits when the run is over that is under way.
    void announceQuit();

    /// Whether there is a run of updates whose results can be shown.
    void setHasResults(bool has);

    /// How the window looks now, and how it shall look.
    ///@{
    WindowLook look() const;
    void setLook(const WindowLook& look);
    ///@}

    /// Changes the colours of the whole application.
    void setDarkTheme(bool dark);
    /// Whether the dark theme is shown.
    bool isDarkTheme() const;

signals:
    /// The theme is another one now, whoever changed it.
    void themeChanged(bool dark);
    /// The user has chosen an entry of a module that has to do with the controllers; it is
    /// triggered once that makes sense.
    void moduleEntryWanted(QAction* entry);
    /// The user wants the controller to look for its hardware again.
    void hardwareSearchWanted();
    /// The user wants to see what became of the last update.
    void resultsWanted();

protected:
    /// Keeps the window open as long as a modal one is, and says which; also during a run of
    /// updates, and then asks whether to quit when it is over.
    void closeEvent(QCloseEvent* event) override;
    /// Moves a dialog of this window below the equipment when it is shown, and notices when the
    /// window of a run is left.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct ModuleEntry
    {
        QAction* action;
        QPointer<QAction> shown; ///< in the menu: the action, or what stands in for it
        QPointer<QWidget> window;
    };

    void makeMenus();
    QAction* addAction(const QString& text, const QString& tip, int order, const QString& menu,
                       int menuOrder);
    QWidget* makeContent();
    QAction* makeStandIn(QAction* entry);
    void makeStatusBar();
    void placeBelowEquipment(QWidget* dialog) const;
    bool isRunUnderWay() const;
    void showTitle();
    void followSystem();
    void followRun();
    void beginRun();
    void endRun();
    void showRunWindow();
    void askForQuit();
    void showAbout();

    Equipment& m_equipment;
    bool m_observer;
    bool m_isLost = false;
    OrderedMenus m_menus;
    RunBanner* m_banner;
    ConnectionPanel* m_connection;
    SystemView* m_systemView;
    LogPanel* m_log;
    QLabel* m_measurement;
    QAction* m_searchHardware = nullptr;
    QAction* m_results = nullptr;
    QAction* m_startMeasurement = nullptr;
    QAction* m_stopMeasurement = nullptr;
    QAction* m_darkTheme = nullptr;
    QVector<ModuleEntry> m_moduleEntries;
    const RunMonitor* m_runs = nullptr;
    bool m_isRunUnderWay = false;  // as it was noticed last
    QPointer<QWidget> m_runWindow; // from which the run that is under way was started
    bool m_isRunWindowReopened = false;
    QPointer<QMessageBox> m_quitQuestion;
    bool m_quitsAfterRun = false;
    QString m_moduleText;
};
