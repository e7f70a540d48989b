#pragma once

#include "linesocket.h"

#include <benchlanguage.h>

#include <QElapsedTimer>

/// The test bench of a system in another process, as it last told of itself.
class RemoteBench final : public TestBench
{
    Q_OBJECT

public:
    /// @param scenario the one of that system
    RemoteBench(const Endpoint& peer, Scenario scenario);

    const Scenario& scenario() const override { return m_scenario; }
    const QVector<ControllerState>& controllers() const override { return m_state.controllers; }
    const QVector<CameraState>& cameras() const override { return m_state.cameras; }
    Measurement measurement() const override { return m_state.measurement; }
    const QVector<Fault>& armedFaults() const override { return m_state.faults; }
    qint64 msUntilReachable() const override;
    bool isReachable() const override { return m_isAtHand && m_state.power == Power::On; }
    bool isAtHand() const override { return m_isAtHand; }
    void catchUp() override;

    void setMeasuring(bool measuring) override;
    void powerCycleCamera(int index) override;
    void powerCycle() override;
    void armFault(const Fault& fault) override;
    void disarmFaults() override;

private:
    void askForState(const QByteArray& how);
    void perform(const QByteArray& text);
    void handleLine(const QByteArray& line);
    void handleClosed();
    void tell(const QString& text);
    void adopt(const QByteArray& json);

    Endpoint m_peer;
    Scenario m_scenario;
    BenchState m_state;
    QElapsedTimer m_stateAge;
    LineSocket m_socket;
    bool m_isAtHand = false;
    int m_statesAskedFor = 0;
    QString m_toldLast;
};
