#pragma once

#include "devicetables.h"

#include <QTimer>
#include <QWidget>

class FaultDialog;
class QPushButton;
class QTableView;

/// The simulated equipment as it really is, beside what the frontend believes: every controller and
/// camera with its versions and what it is doing, and the hands that are laid on it.
class SystemView : public QWidget
{
    Q_OBJECT

public:
    /// @param bench must outlive the view
    explicit SystemView(TestBench& bench, QWidget* parent = nullptr);

private:
    QWidget* makeControllers();
    QWidget* makeCameras();
    QPushButton* makeFaultButton();
    void showFaults();
    void refresh();
    void powerCycleSelectedCameras();

    TestBench& m_bench;
    DeviceTable<ControllerState>* m_controllers;
    DeviceTable<CameraState>* m_cameras;
    QTableView* m_cameraView = nullptr;
    QPushButton* m_cameraPower = nullptr;
    QPushButton* m_faults = nullptr;
    FaultDialog* m_faultDialog = nullptr; // made when it is wanted for the first time
    QTimer m_refresh;
};
