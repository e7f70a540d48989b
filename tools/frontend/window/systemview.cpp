#include "systemview.h"

#include "faultdialog.h"
#include "moment.h"
#include "otherhostbanner.h"
#include "permission.h"

#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QStyledItemDelegate>
#include <QTableView>

namespace {

constexpr int refreshMs = 50;
constexpr int minShownRows = 3;
constexpr int maxShownRows = 8;
constexpr int columnGap = 12;
constexpr int rowGap = 4;
// No block of full records has more.
const QLatin1String longestRecords("750,000 of 750,000");

/// Leaves room between the columns, and shows the fraction behind progressRole as a bar.
class DeviceDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        return QStyledItemDelegate::sizeHint(option, index) + QSize(columnGap, rowGap);
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override
    {
        const QVariant fraction = index.data(progressRole);
        if (!fraction.isValid()) {
            QStyledItemDelegate::paint(painter, option, index);
            return;
        }
        QStyleOptionProgressBar bar;
        bar.rect = option.rect.adjusted(3, 3, -3, -3);
        bar.palette = option.palette;
        if (index.data(Qt::ForegroundRole).isValid())
            bar.palette.setCurrentColorGroup(QPalette::Disabled);
        bar.fontMetrics = option.fontMetrics;
        bar.direction = option.direction;
        bar.state = QStyle::State_Enabled | QStyle::State_Horizontal;
        bar.minimum = 0;
        bar.maximum = 1000;
        bar.progress = static_cast<int>(fraction.toDouble() * bar.maximum);
        bar.text = index.data().toString();
        bar.textVisible = true;
        bar.textAlignment = Qt::AlignCenter;
        option.widget->style()->drawControl(QStyle::CE_ProgressBar, &bar, painter, option.widget);
    }
};

/// As high as its rows, as long as they are not too many.
class DeviceView : public QTableView
{
public:
    QSize sizeHint() const override { return {1000, heightOf(maxShownRows)}; }
    QSize minimumSizeHint() const override { return {200, heightOf(minShownRows)}; }

private:
    int heightOf(int maxRows) const
    {
        const int rows = qMin(model()->rowCount(), maxRows);
        return horizontalHeader()->sizeHint().height() + rows * verticalHeader()->sectionSize(0) +
               2 * frameWidth();
    }
};

QTableView* makeDeviceView(QAbstractTableModel* model, const QString& name)
{
    auto* view = new DeviceView;
    view->setAccessibleName(name);
    view->setModel(model);
    view->setItemDelegate(new DeviceDelegate(view));
    view->setAlternatingRowColors(true);
    view->setShowGrid(false);
    view->setWordWrap(false);
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view->setSelectionBehavior(QAbstractItemView::SelectRows);
    view->setTabKeyNavigation(false);
    view->verticalHeader()->hide();
    view->verticalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);

    QHeaderView* header = view->horizontalHeader();
    header->setHighlightSections(false);
    header->setSectionResizeMode(QHeaderView::ResizeToContents);
    // The one that takes what the others leave still shows its title.
    header->setSectionResizeMode(header->count() - 2, QHeaderView::Stretch);
    header->setMinimumSectionSize(header->sectionSizeHint(header->count() - 2));
    header->setSectionResizeMode(header->count() - 1, QHeaderView::Fixed);
    header->resizeSection(header->count() - 1,
                          view->fontMetrics().horizontalAdvance(longestRecords) + 2 * columnGap);
    return view;
}

QHBoxLayout* rightAligned(const QList<QWidget*>& widgets)
{
    auto* line = new QHBoxLayout;
    line->addStretch();
    for (QWidget* widget : widgets)
        line->addWidget(widget);
    return line;
}

} // namespace

SystemView::SystemView(Equipment& equipment, bool observer, QWidget* parent)
    : QWidget(parent), m_equipment(equipment), m_observer(observer),
      m_controllers(makeControllerTable(equipment, this)),
      m_cameras(makeCameraTable(equipment, this))
{
    makeTables();
    refresh();

    // A stream of records changes the system more often than eyes can follow.
    m_refresh.setSingleShot(true);
    m_refresh.setInterval(refreshMs);
    connect(&m_refresh, &QTimer::timeout, this, &SystemView::refresh);
    connect(&equipment, &Equipment::changed, this, [this] {
        if (!m_refresh.isActive())
            m_refresh.start();
    });
}

void SystemView::makeTables()
{
    const EquipmentState& state = m_equipment.state();
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    if (state.controllers.isEmpty()) {
        layout->addWidget(
            new QLabel(tr("A transcript is replayed; there are no devices to show.")));
        return;
    }
    layout->addWidget(makeControllers(), state.controllers.size());
    if (!state.cameras.isEmpty())
        layout->addWidget(makeCameras(), state.cameras.size());
}

QWidget* SystemView::makeControllers()
{
    m_controllerGroup = new QGroupBox;
    auto* layout = new QVBoxLayout(m_controllerGroup);
    layout->addWidget(makeDeviceView(m_controllers, titleOf(tr("Controllers"))));
    m_controllerPower = new QPushButton(tr("Power-c&ycle the controllers"));
    m_controllerPower->setObjectName(QStringLiteral("pushButton_powerCycleControllers"));
    m_controllerPower->setStatusTip(tr("Take power off all controllers and give it back"));
    connect(m_controllerPower, &QPushButton::clicked, this,
            [this] { m_equipment.perform({EquipmentCommand::Kind::PowerCycle}); });
    layout->addLayout(rightAligned({makeFaultButton(), m_controllerPower}));
    return m_controllerGroup;
}

QWidget* SystemView::makeCameras()
{
    m_cameraGroup = new QGroupBox;
    auto* layout = new QVBoxLayout(m_cameraGroup);
    m_cameraView = makeDeviceView(m_cameras, titleOf(tr("Cameras")));
    m_cameraView->setObjectName(QStringLiteral("tableView_cameras"));
    layout->addWidget(m_cameraView);
    m_cameraPower = new QPushButton(tr("&Power-cycle the selected cameras"));
    m_cameraPower->setObjectName(QStringLiteral("pushButton_powerCycleCameras"));
    m_cameraPower->setStatusTip(tr("Take power off the selected cameras and give it back"));
    connect(m_cameraPower, &QPushButton::clicked, this, &SystemView::powerCycleSelectedCameras);
    connect(m_cameraView->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &SystemView::refreshHands);
    layout->addLayout(rightAligned({m_cameraPower}));
    return m_cameraGroup;
}

QPushButton* SystemView::makeFaultButton()
{
    m_faults = new QPushButton;
    m_faults->setObjectName(QStringLiteral("pushButton_faults"));
    m_faults->setStatusTip(tr("Choose what shall go wrong"));
    connect(m_faults, &QPushButton::clicked, this, &SystemView::showFaults);
    return m_faults;
}

void SystemView::showFaults()
{
    if (!m_faultDialog)
        m_faultDialog = new FaultDialog(m_equipment, window());
    m_faultDialog->show();
    m_faultDialog->raise();
    m_faultDialog->activateWindow();
}

void SystemView::setLastAnswer(const QDateTime& lastAnswer)
{
    m_lastAnswer = lastAnswer;
    refresh();
}

// Of a system that is at hand everything is seen as it is, also without power.
QString SystemView::titleOf(const QString& devices) const
{
    if (m_equipment.isAtHand() || !m_lastAnswer.isValid())
        return tr("%1 (simulated)").arg(devices);
    return tr("%1 (simulated) as they were at %2").arg(devices, momentText(m_lastAnswer));
}

void SystemView::refresh()
{
    if (!m_controllerGroup)
        return;
    const bool isOld = m_lastAnswer.isValid() || !m_equipment.isAtHand();
    m_controllers->refresh(isOld);
    m_cameras->refresh(isOld);
    m_controllerGroup->setTitle(titleOf(tr("Controllers")));
    if (m_cameraGroup)
        m_cameraGroup->setTitle(titleOf(tr("Cameras")));
    refreshHands();
}

void SystemView::refreshHands()
{
    const int armed = m_equipment.state().faults.armed().size();
    m_faults->setText(armed == 0 ? tr("Fa&ults on demand...")
                                 : tr("Fa&ults on demand (%1 armed)...").arg(armed));
    permit(*m_faults, whyHandsOff());
    permit(*m_controllerPower, whyPowerStays());
    if (!m_cameraPower)
        return;
    const bool isNoneSelected = !m_cameraView->selectionModel()->hasSelection();
    permit(*m_cameraPower, whyPowerStays().isEmpty() && isNoneSelected
                               ? tr("No camera is selected.")
                               : whyPowerStays());
}

QString SystemView::whyHandsOff() const
{
    if (m_observer)
        return whyObserversMayNot();
    if (!m_equipment.isAtHand())
        return whyNotAtHand();
    return m_equipment.isInOtherHands() ? otherHostText(m_equipment) : QString();
}

QString SystemView::whyPowerStays() const
{
    if (!whyHandsOff().isEmpty() || !m_isPowerLocked)
        return whyHandsOff();
    return tr("%1 To see what a loss of power does to it, arm that fault.").arg(whyNotDuringRun());
}

void SystemView::setPowerLocked(bool isLocked)
{
    m_isPowerLocked = isLocked;
    refresh();
}

void SystemView::powerCycleSelectedCameras()
{
    for (const QModelIndex& row : m_cameraView->selectionModel()->selectedRows())
        m_equipment.perform({EquipmentCommand::Kind::PowerCycleCamera, row.row()});
}
