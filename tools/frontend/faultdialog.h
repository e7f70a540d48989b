#pragma once

#include <faults.h>

#include <QDialog>

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;
class QSpinBox;
class TestBench;

/// Lets faults be armed on a test bench while it runs, and tells which ones are. To be shown beside
/// other windows.
class FaultDialog : public QDialog
{
    Q_OBJECT

public:
    /// @param bench must outlive the dialog
    explicit FaultDialog(TestBench& bench, QWidget* parent = nullptr);

private:
    QComboBox* makeModes();
    QComboBox* makeDevices();
    QComboBox* makeMoments();
    void makeLayout();

    Fault wantedFault() const;
    void followMode();
    void followMoment();
    void followSystem();

    TestBench& m_bench;
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
