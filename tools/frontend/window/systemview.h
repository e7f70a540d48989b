#pragma once

#include "devicetables.h"

#include <QDateTime>
#include <QTimer>
#include <QWidget>

class FaultDialog;
class QGroupBox;
class QPushButton;
class QTableView;

/// The simulated equipment as it really is, beside what the frontend believes: every controller and
/// camera with its versions and what it is doing, and the hands that are laid on it. What may be
/// otherwise by now is grey.
class SystemView : public QWidget
{
    Q_OBJECT

public:
    /// @param equipment must outlive the view
    /// @param observer whether the user may only look on
    explicit SystemView(Equipment& equipment, bool observer = false, QWidget* parent = nullptr);

    /// The controllers have not answered since @p lastAnswer, or answer if that is invalid.
    void setLastAnswer(const QDateTime& lastAnswer);

    /// Whether the hands stay off the power, as an update is under way. Faults can still be armed.
    void setPowerLocked(bool isLocked);

private:
    void makeTables();
    QWidget* makeControllers();
    QWidget* makeCameras();
    QPushButton* makeFaultButton();
    void showFaults();
    void refresh();
    void refreshHands();
    QString whyHandsOff() const;
    QString whyPowerStays() const;
    QString titleOf(const QString& devices) const;
    void powerCycleSelectedCameras();

    Equipment& m_equipment;
    bool m_observer;
    QDateTime m_lastAnswer; // invalid: they answer
    DeviceTable<ControllerState>* m_controllers;
    DeviceTable<CameraState>* m_cameras;
    QGroupBox* m_controllerGroup = nullptr;
    QGroupBox* m_cameraGroup = nullptr;
    QTableView* m_cameraView = nullptr;
    QPushButton* m_controllerPower = nullptr;
    QPushButton* m_cameraPower = nullptr;
    QPushButton* m_faults = nullptr;
    FaultDialog* m_faultDialog = nullptr; // made when it is wanted for the first time
    QTimer m_refresh;
    bool m_isPowerLocked = false;
};
