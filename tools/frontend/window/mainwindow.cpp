#include "mainwindow.h"

#include "connectionpanel.h"
#include "logpanel.h"
#include "otherhostbanner.h"
#include "permission.h"
#include "runbanner.h"
#include "systemview.h"
#include "theme.h"
#include "windowsize.h"

#include <equipment.h>
#include <version.h>

#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QSplitter>
#include <QStatusBar>
#include <QStyle>
#include <QVBoxLayout>

#include <utility>

namespace {

// Order numbers of the frontend's own menus; modules know where theirs go between them.
constexpr int menuFile = 100;
constexpr int menuMeasurement = 200;
constexpr int menuView = 300;
constexpr int menuHelp = 700;

} // namespace

MainWindow::MainWindow(Equipment& equipment, bool observer, QWidget* parent)
    : QMainWindow(parent), m_equipment(equipment), m_observer(observer), m_menus(menuBar()),
      m_banner(new RunBanner), m_connection(new ConnectionPanel(equipment, observer)),
      m_systemView(new SystemView(equipment, observer)), m_log(new LogPanel),
      m_measurement(new QLabel)
{
    setObjectName(QStringLiteral("mainWindow"));
    showTitle();
    makeMenus();
    setCentralWidget(makeContent());
    makeStatusBar();
    resize(fittingSize(*this, {1180, 900}));
    connect(&equipment, &Equipment::changed, this, &MainWindow::followSystem);
    followSystem();
    qApp->installEventFilter(this);
}

QAction* MainWindow::addAction(const QString& text, const QString& tip, int order,
                               const QString& menu, int menuOrder)
{
    auto* action = new QAction(text, this);
    action->setStatusTip(tip);
    m_menus.place(action, order, menu, menuOrder);
    return action;
}

LogView& MainWindow::log()
{
    return m_log->view();
}

void MainWindow::makeMenus()
{
    QAction* quit = addAction(tr("&Quit"), tr("Leave the frontend"), 100, tr("&VORNIX3"), menuFile);
    quit->setObjectName(QStringLiteral("actionQuit"));
    quit->setShortcut(QKeySequence::Quit);
    connect(quit, &QAction::triggered, this, &MainWindow::close);

    m_searchHardware = addAction(tr("Search for &hardware..."),
                                 tr("Have the controller look for new or changed hardware"), 50,
                                 tr("&VORNIX3"), menuFile);
    m_searchHardware->setObjectName(QStringLiteral("actionSearchHardware"));
    connect(m_searchHardware, &QAction::triggered, this, &MainWindow::hardwareSearchWanted);

    m_results = addAction(tr("&Results of the last update..."),
                          tr("Show what the devices report after the last update"), 60,
                          tr("&VORNIX3"), menuFile);
    m_results->setObjectName(QStringLiteral("actionResults"));
    m_results->setEnabled(false);
    connect(m_results, &QAction::triggered, this, &MainWindow::resultsWanted);

    m_startMeasurement =
        addAction(tr("&Start"), tr("Start a measurement"), 10, tr("&Measurement"), menuMeasurement);
    connect(m_startMeasurement, &QAction::triggered, this,
            [this] { m_equipment.perform({EquipmentCommand::Kind::StartMeasurement}); });
    m_stopMeasurement = addAction(tr("S&top"), tr("Stop the measurement that runs"), 20,
                                  tr("&Measurement"), menuMeasurement);
    connect(m_stopMeasurement, &QAction::triggered, this,
            [this] { m_equipment.perform({EquipmentCommand::Kind::StopMeasurement}); });

    m_darkTheme = addAction(tr("&Dark theme"), tr("Switch between the dark and the bright theme"),
                            10, tr("V&iew"), menuView);
    m_darkTheme->setObjectName(QStringLiteral("actionDarkTheme"));
    m_darkTheme->setCheckable(true);
    connect(m_darkTheme, &QAction::toggled, this, [this](bool dark) {
        applyTheme(dark);
        emit themeChanged(dark);
    });

    QAction* about = addAction(tr("&About"), tr("Versions of the frontend and its modules"), 90,
                               tr("&Help"), menuHelp);
    about->setObjectName(QStringLiteral("actionAbout"));
    connect(about, &QAction::triggered, this, &MainWindow::showAbout);
}

QWidget* MainWindow::makeContent()
{
    auto* splitter = new QSplitter(Qt::Vertical);
    splitter->addWidget(m_systemView);
    splitter->addWidget(m_log);
    splitter->setChildrenCollapsible(false);
    splitter->setStretchFactor(0, 0);
    splitter->setStretchFactor(1, 1);

    auto* content = new QWidget;
    auto* layout = new QVBoxLayout(content);
    layout->addWidget(m_banner);
    layout->addWidget(new OtherHostBanner(m_equipment));
    layout->addWidget(m_connection);
    layout->addWidget(splitter, 1);
    return content;
}

void MainWindow::makeStatusBar()
{
    if (m_observer)
        statusBar()->addPermanentWidget(new QLabel(tr("Observer")));
    statusBar()->addPermanentWidget(m_measurement);
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event)
{
    auto* dialog = event->type() == QEvent::Show ? qobject_cast<QDialog*>(watched) : nullptr;
    // Only where it has not been moved by hand.
    if (dialog && dialog->parentWidget() == this && !dialog->testAttribute(Qt::WA_Moved))
        placeBelowEquipment(dialog);
    const bool comesOrGoes = event->type() == QEvent::Show || event->type() == QEvent::Hide;
    if (comesOrGoes && watched == m_runWindow)
        m_banner->setWindowLeft(event->type() == QEvent::Hide);
    return QMainWindow::eventFilter(watched, event);
}

void MainWindow::placeBelowEquipment(QWidget* dialog) const
{
    const QRect room = screen()->availableGeometry();
    const int below = m_systemView->mapToGlobal(m_systemView->rect().bottomLeft()).y();
    const int title = style()->pixelMetric(QStyle::PM_TitleBarHeight);
    const int lowest = room.bottom() - dialog->height() - title;
    const int left = geometry().center().x() - dialog->width() / 2;
    dialog->move(qMax(room.left(), left), qMax(room.top(), qMin(below, lowest)));
}

void MainWindow::addModuleEntries(const QList<GuiElement*>& elements)
{
    for (const GuiElement* element : elements) {
        QAction* action = element->menu_entry;
        const bool anytime = element->action_active_during_measurement != 0;
        QAction* shown = anytime ? action : makeStandIn(action);
        m_menus.place(shown, element->menu_entry_order_number, element->menu_name,
                      element->menu_order_number);
        m_moduleEntries += ModuleEntry{action, shown, element->content};
    }
    followSystem();
}

// In the menu in the place of an entry that must not simply be triggered.
QAction* MainWindow::makeStandIn(QAction* entry)
{
    auto* standIn = new QAction(this);
    const auto follow = [entry, standIn] {
        standIn->setText(entry->text());
        standIn->setStatusTip(entry->statusTip());
        standIn->setWhatsThis(entry->whatsThis());
    };
    follow();
    connect(entry, &QAction::changed, standIn, follow);
    connect(standIn, &QAction::triggered, this, [this, entry] { emit moduleEntryWanted(entry); });
    return standIn;
}

void MainWindow::removeModuleEntries()
{
    for (const ModuleEntry& entry : qAsConst(m_moduleEntries)) {
        m_menus.remove(entry.shown);
        if (entry.shown != entry.action)
            entry.shown->deleteLater();
    }
    m_moduleEntries.clear();
}

void MainWindow::showConnected(const QString& details)
{
    m_isLost = false;
    m_connection->showConnected(details);
    m_systemView->setLastAnswer(QDateTime());
    showTitle();
    followSystem();
}

void MainWindow::showLost(const QDateTime& lastAnswer)
{
    m_isLost = true;
    m_connection->showWaiting(lastAnswer);
    m_systemView->setLastAnswer(lastAnswer);
    showTitle();
    followSystem();
}

// The title of the scenario tells how the system was before anything happened to it.
void MainWindow::showTitle()
{
    const QString title = m_isLost ? tr("VORNIX3 %1 - %2 (no answer)") : tr("VORNIX3 %1 - %2");
    setWindowTitle(title.arg(QLatin1String(frontendVersion), m_equipment.scenario().address()));
}

void MainWindow::setHasResults(bool has)
{
    m_results->setEnabled(has);
}

void MainWindow::setSaveFolder(const QString& folder)
{
    m_log->setSaveFolder(folder);
}

WindowLook MainWindow::look() const
{
    return {isMaximized() ? normalGeometry().size() : size(), isMaximized(), isDarkTheme()};
}

void MainWindow::setLook(const WindowLook& look)
{
    resize(fittingSize(*this, look.size));
    if (look.isMaximized)
        setWindowState(Qt::WindowMaximized);
    setDarkTheme(look.isDark);
}

void MainWindow::setDarkTheme(bool dark)
{
    m_darkTheme->setChecked(dark);
}

bool MainWindow::isDarkTheme() const
{
    return m_darkTheme->isChecked();
}

void MainWindow::followSystem()
{
    const bool measuring = m_equipment.state().measurement != Measurement::Off;
    m_measurement->setText(measuring ? tr("Measurement runs") : tr("No measurement"));
    m_measurement->setEnabled(!m_isLost);
    const bool answers = m_equipment.isReachable() && !m_isLost;
    const bool isInOtherHands = m_equipment.isInOtherHands();
    const QString whyNotStart = !answers          ? whyNotAnswered()
                                : isRunUnderWay() ? whyNotDuringRun()
                                : isInOtherHands  ? otherHostText(m_equipment)
                                : measuring       ? tr("A measurement runs.")
                                                  : QString();
    const QString whyNotStop = !answers         ? whyNotAnswered()
                               : isInOtherHands ? otherHostText(m_equipment)
                               : !measuring     ? tr("No measurement runs.")
                                                : QString();
    permit(*m_searchHardware, m_observer ? whyObserversMayNot() : whyNotStart);
    permit(*m_startMeasurement, m_observer ? whyObserversMayNot() : whyNotStart);
    permit(*m_stopMeasurement, m_observer ? whyObserversMayNot() : whyNotStop);
    for (const ModuleEntry& entry : qAsConst(m_moduleEntries)) {
        if (entry.shown == entry.action) {
            permit(*entry.action, isRunUnderWay() ? whyNotDuringRun() : QString());
            continue;
        }
        permit(*entry.action, whyNotStart);
        permit(*entry.shown, whyNotStart);
    }
}

bool MainWindow::isRunUnderWay() const
{
    return m_runs && m_runs->isRunning() && !m_runs->isHeldUp();
}

void MainWindow::followRuns(const RunMonitor& runs)
{
    m_runs = &runs;
    m_banner->follow(runs);
    connect(m_banner, &Banner::accepted, this, &MainWindow::showRunWindow);
    connect(&runs, &RunMonitor::began, this, &MainWindow::beginRun);
    connect(&runs, &RunMonitor::progressed, this, &MainWindow::followRun);
    connect(&runs, &RunMonitor::heldUp, this, &MainWindow::followRun);
    connect(&runs, &RunMonitor::ended, this, &MainWindow::endRun);
}

void MainWindow::followRun()
{
    if (m_isRunUnderWay == isRunUnderWay())
        return;
    m_isRunUnderWay = isRunUnderWay();
    m_systemView->setPowerLocked(m_isRunUnderWay);
    followSystem();
}

void MainWindow::beginRun()
{
    m_runWindow.clear();
    for (const ModuleEntry& entry : qAsConst(m_moduleEntries)) {
        if (entry.window && entry.window->isVisible())
            m_runWindow = entry.window;
    }
    followRun();
}

// A window that was left ended its modal loop, so one that was shown again has to go: it would
// stand there without any.
void MainWindow::endRun()
{
    if (m_runWindow && m_isRunWindowReopened)
        m_runWindow->hide();
    m_runWindow.clear();
    m_isRunWindowReopened = false;
    delete m_quitQuestion;
    followRun();
    if (std::exchange(m_quitsAfterRun, false))
        QApplication::quit();
}

void MainWindow::showRunWindow()
{
    if (!m_runWindow)
        return;
    m_isRunWindowReopened = true;
    m_runWindow->show();
    m_runWindow->raise();
    m_runWindow->activateWindow();
}

void MainWindow::announceQuit()
{
    m_banner->setQuitting(true);
}

// Boxes that do not wait for their answer themselves, as a run would stand still so long.
void MainWindow::showAbout()
{
    auto* box = new QMessageBox(
        QMessageBox::Information, tr("About VORNIX3"),
        tr("VORNIX3 demo frontend %1\n\n%2").arg(QLatin1String(frontendVersion), m_moduleText),
        QMessageBox::Ok, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

void MainWindow::askForQuit()
{
    auto* box =
        new QMessageBox(QMessageBox::Warning, tr("Quit VORNIX3"),
                        tr("An update is under way. The frontend does not quit before it is over."),
                        QMessageBox::NoButton, this);
    box->setInformativeText(tr("Shall it quit by itself then?"));
    const QPushButton* quit = box->addButton(tr("&Quit when it is over"), QMessageBox::AcceptRole);
    box->setDefaultButton(box->addButton(tr("&Do not quit"), QMessageBox::RejectRole));
    box->setAttribute(Qt::WA_DeleteOnClose);
    connect(box, &QMessageBox::buttonClicked, this, [this, quit](const QAbstractButton* button) {
        m_quitsAfterRun = button == quit;
        m_banner->setQuitting(m_quitsAfterRun);
    });
    box->open();
    m_quitQuestion = box;
}

// What runs behind an open dialog must come to its end first.
void MainWindow::closeEvent(QCloseEvent* event)
{
    if (QWidget* dialog = QApplication::activeModalWidget()) {
        dialog->raise();
        dialog->activateWindow();
        statusBar()->showMessage(
            tr("Please close the window \"%1\" first.").arg(dialog->windowTitle()));
        event->ignore();
    } else if (m_runs && m_runs->isRunning()) {
        askForQuit();
        event->ignore();
    } else {
        QMainWindow::closeEvent(event);
    }
}
