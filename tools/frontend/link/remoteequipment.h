#pragma once

#include "linesocket.h"

#include <equipmentlanguage.h>

#include <QElapsedTimer>

/// The equipment of a system in another process, as it last told of itself. One that says nothing
/// for a while is asked whether it is there, and is not at hand if it stays silent.
class RemoteEquipment final : public Equipment
{
    Q_OBJECT

public:
    /// How long it is left alone that says nothing.
    static constexpr int quietMs = 1000;

    /// @param scenario the one of that system
    /// @param identity of that system; empty: whatever answers will do
    /// @param name by which the system knows this host, so that it is not taken for another one
    RemoteEquipment(const Endpoint& peer, Scenario scenario, QByteArray identity = QByteArray(),
                    QString name = QString());

    /// Whether another system has taken its place at the other end.
    bool isExchanged() const { return m_isExchanged; }

    const Scenario& scenario() const override { return m_scenario; }
    const EquipmentState& state() const override { return m_report.state; }
    qint64 msUntilReachable() const override;
    void perform(const EquipmentCommand& command) override;
    bool isAtHand() const override { return m_isAtHand; }
    void catchUp() override;

private:
    void handleOpened();
    void handleIdentity(const QByteArray& identity);
    void askForState(const QByteArray& how);
    void handleLine(const QByteArray& line);
    void handleClosed();
    void tell(const QString& text);
    void adopt(const QByteArray& json);

    Endpoint m_peer;
    Scenario m_scenario;
    QByteArray m_identity;
    QString m_name;
    EquipmentReport m_report;
    QElapsedTimer m_reportAge;
    LineSocket m_socket;
    QTimer m_quiet;
    bool m_isAtHand = false;
    bool m_isExchanged = false;
    int m_statesAskedFor = 0;
    QString m_toldLast;
};
