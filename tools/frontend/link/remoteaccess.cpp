#include "remoteaccess.h"

#include "hostname.h"

#include <checkedjson.h>
#include <wirelanguage.h>

#include <QDeadlineTimer>
#include <QJsonDocument>

namespace {

constexpr int answerTimeoutMs = 5000;
constexpr int maxScenarioLine = 1 << 20;
constexpr char scenarioTag[] = "#scenario";

/// Asks once, over a connection of its own.
class ScenarioQuestion
{
public:
    explicit ScenarioQuestion(const Endpoint& peer) : m_socket(peer, maxScenarioLine)
    {
        QObject::connect(&m_socket, &LineSocket::opened,
                         [this] { m_socket.write(equipmentLine(scenarioTag, "scenario")); });
        QObject::connect(&m_socket, &LineSocket::lineReceived, [this](const QByteArray& line) {
            if (!m_isOver)
                finish(readReply(line), QObject::tr("its answer is not understood"));
        });
        QObject::connect(&m_socket, &LineSocket::closed, [this] {
            if (!m_isOver)
                finish(std::nullopt, m_socket.errorText());
        });
    }

    std::optional<WireReply> ask(QString* error)
    {
        const QDeadlineTimer deadline(answerTimeoutMs);
        m_socket.open();
        while (!m_isOver && !deadline.hasExpired())
            m_socket.waitForActivity(static_cast<int>(deadline.remainingTime()));
        if (!m_answer)
            *error = m_reason;
        return m_answer;
    }

private:
    void finish(const std::optional<WireReply>& answer, const QString& reason)
    {
        m_isOver = true;
        m_reason = reason;
        if (answer && answer->tag == scenarioTag)
            m_answer = answer;
    }

    LineSocket m_socket;
    std::optional<WireReply> m_answer;
    QString m_reason = QObject::tr("no answer");
    bool m_isOver = false;
};

std::optional<Scenario> scenarioFrom(const WireReply& answer, QString* error)
{
    if (!answer.ok) {
        *error = QObject::tr("it does not tell its scenario");
        return std::nullopt;
    }
    const std::optional<QJsonObject> object =
        parseJsonObject(answer.text, QStringLiteral("scenario"), error);
    if (!object)
        return std::nullopt;
    CheckedObject root(*object, QStringLiteral("scenario"), error);
    const QString name = root.text(QStringLiteral("name"));
    root.object(QStringLiteral("scenario"));
    root.finish();
    if (!root.ok())
        return std::nullopt;
    const QJsonObject content = object->value(QStringLiteral("scenario")).toObject();
    return ScenarioReader::parse(QJsonDocument(content).toJson(), name + QStringLiteral(".json"),
                                 error);
}

} // namespace

std::unique_ptr<RemoteAccess> RemoteAccess::connectTo(const Endpoint& peer, QString* error)
{
    QString reason;
    const std::optional<WireReply> answer = ScenarioQuestion(peer).ask(&reason);
    const std::optional<Scenario> scenario = answer ? scenarioFrom(*answer, &reason) : std::nullopt;
    if (scenario)
        return std::unique_ptr<RemoteAccess>(
            new RemoteAccess(peer, *scenario, systemIdentity(answer->text)));
    *error = QObject::tr("%1: there is no simulated system: %2").arg(peer.text(), reason);
    return nullptr;
}

RemoteAccess::RemoteAccess(const Endpoint& peer, const Scenario& scenario,
                           const QByteArray& identity)
    : m_identity(identity), m_equipment(peer, scenario, identity, nameOfThisHost()),
      m_link(peer, scenario.address(), identity, nameOfThisHost())
{
    // So that nothing is shown at first that is not so.
    m_equipment.catchUp();
    m_link.catchUp(answerTimeoutMs);
}
