#include "remoteequipment.h"

#include <wirelanguage.h>

#include <QDeadlineTimer>

#include <utility>

namespace {

constexpr int maxStateLine = 1 << 20;
constexpr int maxToldCharacters = 200;
constexpr int catchUpMs = LineSocket::answerMs;
constexpr char stateTag[] = "#state";
constexpr char identityTag[] = "#identity";
constexpr char aliveTag[] = "#alive";

} // namespace

RemoteEquipment::RemoteEquipment(const Endpoint& peer, Scenario scenario, QByteArray identity,
                                 QString name)
    : m_peer(peer), m_scenario(std::move(scenario)), m_identity(std::move(identity)),
      m_name(std::move(name)), m_report{untouchedEquipment(m_scenario), 0},
      m_socket(peer, maxStateLine)
{
    connect(&m_socket, &LineSocket::opened, this, &RemoteEquipment::handleOpened);
    connect(&m_socket, &LineSocket::lineReceived, this, &RemoteEquipment::handleLine);
    connect(&m_socket, &LineSocket::closed, this, &RemoteEquipment::handleClosed);
    m_quiet.setInterval(quietMs);
    connect(&m_quiet, &QTimer::timeout, this, [this] {
        m_socket.write(equipmentLine(aliveTag, "power"));
        m_socket.expectLine();
    });
    m_socket.open();
}

qint64 RemoteEquipment::msUntilReachable() const
{
    if (!m_isAtHand)
        return -1;
    if (m_report.state.power != Power::Restarting)
        return m_report.msUntilReachable;
    return qMax<qint64>(0, m_report.msUntilReachable - m_reportAge.elapsed());
}

void RemoteEquipment::catchUp()
{
    if (m_socket.isOpen())
        askForState("state");
    const QDeadlineTimer deadline(catchUpMs);
    while ((m_statesAskedFor > 0 || !m_socket.isOpen()) && !deadline.hasExpired())
        m_socket.waitForActivity(static_cast<int>(deadline.remainingTime()));
}

void RemoteEquipment::handleOpened()
{
    if (!m_identity.isEmpty())
        m_socket.write(equipmentLine(identityTag, "identity"));
    // The answer to this one counts only if that to the other one was right.
    askForState("watch");
    m_socket.expectLine();
    m_quiet.start();
}

void RemoteEquipment::handleIdentity(const QByteArray& identity)
{
    m_isExchanged = identity != m_identity;
    if (m_isExchanged)
        tell(tr("Another system is served at %1 now. It is taken up when no window is open.")
                 .arg(m_peer.text()));
}

void RemoteEquipment::askForState(const QByteArray& how)
{
    ++m_statesAskedFor;
    m_socket.write(equipmentLine(stateTag, how));
}

void RemoteEquipment::perform(const EquipmentCommand& command)
{
    if (!m_isAtHand)
        emit trouble(tr("%1 cannot be reached, so nothing was done.").arg(m_peer.text()));
    else if (isInOtherHands())
        emit trouble(tr("%1 updates the system, so nothing was done.").arg(state().updatedBy));
    else
        m_socket.write(equipmentLine(QByteArray(), commandLine(command)));
}

void RemoteEquipment::handleLine(const QByteArray& line)
{
    m_quiet.start();
    QByteArray state = line;
    if (takeWord(&state) == "state") {
        if (!m_isExchanged)
            adopt(state);
        return;
    }
    const std::optional<WireReply> reply = readReply(line);
    if (!reply)
        return;
    if (reply->tag == identityTag)
        handleIdentity(reply->text);
    else if (!reply->ok)
        tell(QStringLiteral("%1: %2").arg(m_peer.text(), QString::fromUtf8(reply->text)));
    else if (reply->tag == stateTag && !m_isExchanged)
        adopt(reply->text);
    if (reply->tag == stateTag)
        m_statesAskedFor = qMax(0, m_statesAskedFor - 1);
}

void RemoteEquipment::handleClosed()
{
    m_statesAskedFor = 0;
    m_quiet.stop();
    m_report.state.updatedBy.clear();
    if (!std::exchange(m_isAtHand, false))
        return;
    tell(tr("The connection to %1 is lost.").arg(m_peer.text()));
    emit changed();
}

void RemoteEquipment::adopt(const QByteArray& json)
{
    QString error;
    const std::optional<EquipmentReport> report = reportFromJson(json, m_scenario, &error);
    if (!report) {
        tell(QStringLiteral("%1: %2").arg(m_peer.text(), error));
        return;
    }
    m_report = *report;
    if (m_report.state.updatedBy == m_name)
        m_report.state.updatedBy.clear();
    m_reportAge.start();
    m_isAtHand = true;
    m_toldLast.clear();
    emit changed();
}

// The peer may send anything, and as often as it likes.
void RemoteEquipment::tell(const QString& text)
{
    const QString line = text.left(maxToldCharacters);
    if (std::exchange(m_toldLast, line) != line)
        emit trouble(line);
}
