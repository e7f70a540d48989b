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
    /// @param equipment must outlive the view
    explicit SystemView(Equipment& equipment, QWidget* parent = nullptr);

    /// Whether the hands stay off the power, as an update is under way. Faults can still be armed.
    void setPowerLocked(bool isLocked);

private:
    QWidget* makeControllers();
    QWidget* makeCameras();
    QPushButton* makeFaultButton();
    void showFaults();
    void refresh();
    void followLock();
    void powerCycleSelectedCameras();

    Equipment& m_equipment;
    DeviceTable<ControllerState>* m_controllers;
    DeviceTable<CameraState>* m_cameras;
    QTableView* m_cameraView = nullptr;
    QPushButton* m_controllerPower = nullptr;
    QPushButton* m_cameraPower = nullptr;
    QPushButton* m_faults = nullptr;
    FaultDialog* m_faultDialog = nullptr; // made when it is wanted for the first time
    QTimer m_refresh;
    bool m_isPowerLocked = false;
};
