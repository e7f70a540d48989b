#include "updateturn.h"

#include <recordrequest.h>
#include <simulatedsystem.h>

namespace {

bool isPartOfUpdate(Operation operation, const QByteArray& text)
{
    if (operation == Operation::SetValue)
        return text.startsWith("system redirect_update ") || RecordRequest::fromSetting(text);
    return operation == Operation::Command && RecordRequest::fromCommand(text);
}

bool endsUpdates(Operation operation, const QByteArray& text)
{
    return operation == Operation::Command &&
           (text == "vornix2 reinit" || text == "vornix2 system reboot" ||
            text == "vornix2 system shutdown");
}

} // namespace

UpdateTurn::UpdateTurn(SimulatedSystem& system, const Patience& patience)
    : m_system(system), m_patience(patience)
{
    m_end.setSingleShot(true);
    connect(&m_end, &QTimer::timeout, this, &UpdateTurn::end);
}

QString UpdateTurn::whyNot(const QObject& peer, const QString& name, Operation operation,
                           const QByteArray& text)
{
    const bool isPart = isPartOfUpdate(operation, text);
    if (m_peer && m_peer != &peer && (isPart || endsUpdates(operation, text)))
        return QStringLiteral("%1 updates the system").arg(m_system.state().updatedBy);
    if (isPart) {
        m_peer = &peer;
        m_end.start(m_patience.behindRecordMs);
        m_system.setUpdatedBy(name);
    } else if (m_peer == &peer && m_end.remainingTime() > m_patience.behindOtherTextMs) {
        m_end.start(m_patience.behindOtherTextMs);
    }
    return QString();
}

void UpdateTurn::leave(const QObject& peer)
{
    if (m_peer == &peer)
        end();
}

void UpdateTurn::end()
{
    m_end.stop();
    m_peer = nullptr;
    m_system.setUpdatedBy(QString());
}
