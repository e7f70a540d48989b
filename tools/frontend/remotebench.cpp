#include "remotebench.h"

#include <wirelanguage.h>

#include <QDeadlineTimer>

#include <utility>

static constexpr int MAX_STATE_LINE = 1 << 20;
static constexpr int MAX_TOLD_CHARACTERS = 200;
static constexpr int CATCH_UP_MS = 1000;
static constexpr char STATE_TAG[] = "#state";

RemoteBench::RemoteBench(const Endpoint& peer, Scenario scenario)
    : m_peer(peer), m_scenario(std::move(scenario)), m_state(benchStateOf(m_scenario)),
      m_socket(peer, MAX_STATE_LINE)
{
    connect(&m_socket, &LineSocket::opened, this, [this] { askForState("watch"); });
    connect(&m_socket, &LineSocket::lineReceived, this, &RemoteBench::handleLine);
    connect(&m_socket, &LineSocket::closed, this, &RemoteBench::handleClosed);
    m_socket.open();
}

qint64 RemoteBench::msUntilReachable() const
{
    if (!m_isAtHand)
        return -1;
    if (m_state.power != Power::Restarting)
        return m_state.msUntilReachable;
    return qMax<qint64>(0, m_state.msUntilReachable - m_stateAge.elapsed());
}

void RemoteBench::catchUp()
{
    if (m_socket.isOpen())
        askForState("state");
    const QDeadlineTimer deadline(CATCH_UP_MS);
    while ((m_statesAskedFor > 0 || !m_socket.isOpen()) && !deadline.hasExpired())
        m_socket.waitForActivity(static_cast<int>(deadline.remainingTime()));
}

void RemoteBench::setMeasuring(bool measuring)
{
    perform(benchMeasure(measuring));
}

void RemoteBench::powerCycleCamera(int index)
{
    perform(benchPowerCycleCamera(index));
}

void RemoteBench::powerCycle()
{
    perform("power-cycle");
}

void RemoteBench::armFault(const Fault& fault)
{
    perform(benchArm(fault));
}

void RemoteBench::disarmFaults()
{
    perform("disarm");
}

void RemoteBench::askForState(const QByteArray& how)
{
    ++m_statesAskedFor;
    m_socket.write(benchLine(STATE_TAG, how));
}

void RemoteBench::perform(const QByteArray& text)
{
    if (m_isAtHand)
        m_socket.write(benchLine(QByteArray(), text));
    else
        emit trouble(tr("%1 cannot be reached, so nothing was done.").arg(m_peer.text()));
}

void RemoteBench::handleLine(const QByteArray& line)
{
    QByteArray state = line;
    if (takeWord(&state) == "state") {
        adopt(state);
        return;
    }
    const std::optional<WireReply> reply = readReply(line);
    if (!reply)
        return;
    if (!reply->ok)
        tell(QStringLiteral("%1: %2").arg(m_peer.text(), QString::fromUtf8(reply->text)));
    else if (reply->tag == STATE_TAG)
        adopt(reply->text);
    if (reply->tag == STATE_TAG)
        m_statesAskedFor = qMax(0, m_statesAskedFor - 1);
}

void RemoteBench::handleClosed()
{
    m_statesAskedFor = 0;
    if (!std::exchange(m_isAtHand, false))
        return;
    tell(tr("The connection to %1 is lost.").arg(m_peer.text()));
    emit changed();
}

void RemoteBench::adopt(const QByteArray& json)
{
    QString error;
    const std::optional<BenchState> state = benchStateFromJson(json, m_scenario, &error);
    if (!state) {
        tell(QStringLiteral("%1: %2").arg(m_peer.text(), error));
        return;
    }
    m_state = *state;
    m_stateAge.start();
    m_isAtHand = true;
    m_toldLast.clear();
    emit changed();
}

// The peer may send anything, and as often as it likes.
void RemoteBench::tell(const QString& text)
{
    const QString line = text.left(MAX_TOLD_CHARACTERS);
    if (std::exchange(m_toldLast, line) != line)
        emit trouble(line);
}
