#pragma once

#include <faults.h>

#include <QDialog>

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;
class QSpinBox;
class Equipment;

/// Lets faults be armed on the equipment while it runs, and tells which ones are. To be shown
/// beside other windows.
class FaultDialog : public QDialog
{
    Q_OBJECT

public:
    /// @param equipment must outlive the dialog
    explicit FaultDialog(Equipment& equipment, QWidget* parent = nullptr);

private:
    QComboBox* makeModes();
    QComboBox* makeDevices();
    QComboBox* makeMoments();
    void makeLayout();

    Fault wantedFault() const;
    void followMode();
    void followMoment();
    void followSystem();

    Equipment& m_equipment;
    QComboBox* m_mode;
    QComboBox* m_device;
    QComboBox* m_moment;
    QSpinBox* m_number;
    QSpinBox* m_delay;
    QCheckBox* m_everyTime;
    QPushButton* m_arm;
    QPushButton* m_disarm;
    QLabel* m_armed;
};
