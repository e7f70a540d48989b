#include "faultdialog.h"

#include "permission.h"

#include <equipment.h>
#include <payload.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>

namespace {

/// Ways to tell when a fault strikes, in the order of the box.
enum Moment
{
    UsualMoment,
    GivenRecord,
    RandomRecord,
};

} // namespace

FaultDialog::FaultDialog(Equipment& equipment, QWidget* parent)
    : QDialog(parent), m_equipment(equipment), m_mode(makeModes()), m_device(makeDevices()),
      m_moment(makeMoments()), m_number(new QSpinBox), m_delay(new QSpinBox),
      m_everyTime(new QCheckBox(tr("&Every time, not only once"))),
      m_arm(new QPushButton(tr("&Arm"))), m_disarm(new QPushButton(tr("&Disarm all"))),
      m_armed(new QLabel)
{
    m_number->setObjectName(QStringLiteral("spinBox_faultNumber"));
    m_number->setRange(1, maxRecords);
    m_number->setAccessibleName(tr("Number of the record, or seed"));
    m_delay->setObjectName(QStringLiteral("spinBox_faultDelay"));
    m_delay->setRange(1, maxDurationMs / 1000);
    m_delay->setValue(Fault().delayMs / 1000);
    m_delay->setSuffix(tr(" s"));
    m_everyTime->setObjectName(QStringLiteral("checkBox_everyTime"));
    m_arm->setObjectName(QStringLiteral("pushButton_armFault"));
    m_arm->setStatusTip(tr("Have the fault strike when its moment comes"));
    m_disarm->setObjectName(QStringLiteral("pushButton_disarmFaults"));
    m_disarm->setStatusTip(tr("Forget all faults that have not struck yet"));
    m_armed->setObjectName(QStringLiteral("label_armedFaults"));
    m_armed->setWordWrap(true);
    setObjectName(QStringLiteral("faultDialog"));
    setWindowTitle(tr("Faults on demand"));
    makeLayout();

    connect(m_mode, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &FaultDialog::followMode);
    connect(m_moment, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &FaultDialog::followMoment);
    connect(m_arm, &QPushButton::clicked, this, [this] {
        m_equipment.perform({EquipmentCommand::Kind::ArmFault, 0, wantedFault()});
    });
    connect(m_disarm, &QPushButton::clicked, this,
            [this] { m_equipment.perform({EquipmentCommand::Kind::DisarmFaults}); });
    connect(&equipment, &Equipment::changed, this, &FaultDialog::followSystem);
    followMode();
    followSystem();
}

QComboBox* FaultDialog::makeModes()
{
    auto* box = new QComboBox;
    box->setObjectName(QStringLiteral("comboBox_faultMode"));
    for (const FaultModeInfo& info : faultModes())
        box->addItem(info.title, info.name);
    return box;
}

QComboBox* FaultDialog::makeDevices()
{
    auto* box = new QComboBox;
    box->setObjectName(QStringLiteral("comboBox_faultDevice"));
    box->addItem(tr("any device"), QString());
    for (const QString& name : m_equipment.scenario().deviceNames())
        box->addItem(name, name);
    return box;
}

QComboBox* FaultDialog::makeMoments()
{
    auto* box = new QComboBox;
    box->setObjectName(QStringLiteral("comboBox_faultMoment"));
    box->addItems({tr("at its usual moment"), tr("at record"), tr("at a random record, seed")});
    return box;
}

void FaultDialog::makeLayout()
{
    auto* moment = new QHBoxLayout;
    moment->addWidget(m_moment, 1);
    moment->addWidget(m_number);

    auto* form = new QFormLayout;
    form->addRow(tr("&Fault:"), m_mode);
    form->addRow(tr("De&vice:"), m_device);
    auto* momentLabel = new QLabel(tr("&Moment:"));
    momentLabel->setBuddy(m_moment); // a row with a layout gets none by itself
    form->addRow(momentLabel, moment);
    form->addRow(tr("&Late by:"), m_delay);
    form->addRow(QString(), m_everyTime);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    buttons->addButton(m_arm, QDialogButtonBox::ActionRole);
    buttons->addButton(m_disarm, QDialogButtonBox::ActionRole);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(m_armed, 1);
    layout->addWidget(buttons);
}

Fault FaultDialog::wantedFault() const
{
    Fault fault;
    fault.mode = faultModes().at(m_mode->currentIndex()).mode;
    fault.device = m_device->currentData().toString();
    fault.delayMs = m_delay->value() * 1000;
    fault.times = m_everyTime->isChecked() ? 0 : 1;
    if (m_moment->isEnabled() && m_moment->currentIndex() == GivenRecord)
        fault.record = m_number->value();
    if (m_moment->isEnabled() && m_moment->currentIndex() == RandomRecord)
        fault.seed = static_cast<quint32>(m_number->value());
    return fault;
}

// What strikes at a restart knows no records.
void FaultDialog::followMode()
{
    const FaultModeInfo& info = faultModes().at(m_mode->currentIndex());
    m_moment->setEnabled(info.moment == FaultMoment::Exchange);
    m_delay->setEnabled(info.mode == FaultMode::AnswerLate);
    followMoment();
}

void FaultDialog::followMoment()
{
    m_number->setEnabled(m_moment->isEnabled() && m_moment->currentIndex() != UsualMoment);
}

void FaultDialog::followSystem()
{
    QStringList lines;
    for (const Fault& fault : m_equipment.state().faults.armed())
        lines += fault.text();
    m_armed->setText(lines.isEmpty() ? tr("No fault is armed.")
                                     : tr("Armed:\n%1").arg(lines.join(QLatin1Char('\n'))));
    const QString whyNot = m_equipment.isAtHand() ? QString() : whyNotAtHand();
    permit(*m_arm, whyNot);
    permit(*m_disarm, whyNot.isEmpty() && lines.isEmpty() ? tr("No fault is armed.") : whyNot);
}
