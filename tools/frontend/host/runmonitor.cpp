#include "runmonitor.h"

#include <errorreply.h>

#include <QCoreApplication>
#include <QEvent>
#include <QRegularExpression>
#include <QThread>

namespace {

constexpr int lookIntervalMs = 100;

const QByteArray redirection = QByteArrayLiteral("system redirect_update ");
const QByteArray hostNameQuery = QByteArrayLiteral("system hostname");
const QByteArray cameraQuery = QByteArrayLiteral("camera camera ");
const QByteArray descriptionQuery = QByteArrayLiteral("camera model_desc ");

bool isRedirection(Operation operation, const QByteArray& text)
{
    return operation == Operation::SetValue && text.startsWith(redirection);
}

// The kind of block that goes by this word of a setting.
std::optional<RunStep::Kind> kindOf(const QByteArray& word)
{
    if (word == "update")
        return RunStep::Kind::TrackingSoftware;
    if (word == "ctupdt")
        return RunStep::Kind::ControllerFirmware;
    if (word.isEmpty())
        return RunStep::Kind::Unknown;
    return std::nullopt;
}

// A command has arrived as soon as there is a reply; what that says is another matter.
bool isTaken(const std::optional<Reply>& reply)
{
    return reply && reply->ok && !isErrorReply(reply->text);
}

} // namespace

int RunStep::percent() const
{
    return records > 0 ? static_cast<int>(taken * qint64(100) / records) : 0;
}

QString RunStep::text() const
{
    switch (kind) {
    case Kind::Unknown:
        break;
    case Kind::TrackingSoftware:
        return RunMonitor::tr("tracking software of %1").arg(device);
    case Kind::ControllerFirmware:
        return RunMonitor::tr("controller firmware of %1").arg(device);
    case Kind::CameraFirmware:
        return RunMonitor::tr("firmware of camera %1").arg(device);
    }
    return RunMonitor::tr("update of %1").arg(device);
}

QString RunFailure::text() const
{
    const QString what =
        record > 0
            ? RunMonitor::tr("%1, record %2 of %3").arg(step.text()).arg(record).arg(step.records)
            : RunMonitor::tr("%1, switching to the device").arg(step.text());
    if (!isAnswered)
        return RunMonitor::tr("%1: no answer").arg(what);
    if (error == 0)
        return RunMonitor::tr("%1: refused").arg(what);
    return reason.isEmpty() ? RunMonitor::tr("%1: error %2").arg(what).arg(error)
                            : RunMonitor::tr("%1: error %2 (%3)").arg(what).arg(error).arg(reason);
}

RunMonitor::RunMonitor()
{
    m_look.setInterval(lookIntervalMs);
    connect(&m_look, &QTimer::timeout, this, &RunMonitor::look);
}

bool RunMonitor::belongsToRun(Operation operation, const QByteArray& text)
{
    return isRedirection(operation, text) || recordIn(operation, text);
}

std::optional<RunMonitor::Record> RunMonitor::recordIn(Operation operation, const QByteArray& text)
{
    if (operation != Operation::SetValue && operation != Operation::Command)
        return std::nullopt;
    const bool isForCamera = operation == Operation::Command;
    const QByteArray beginning = isForCamera ? "vornix2 set camera update " : "system ";
    if (!text.startsWith(beginning))
        return std::nullopt;
    const QList<QByteArray> words = text.mid(beginning.size()).split(' ');
    const std::optional<RunStep::Kind> kind =
        isForCamera ? RunStep::Kind::CameraFirmware : kindOf(words.constFirst());
    const int records = words.value(1).toInt();
    const int number = words.value(2).toInt();
    if (!kind || words.size() != 4 || number < 1 || number > records)
        return std::nullopt;
    return Record{*kind, isForCamera ? words.constFirst() : QByteArray(), records, number};
}

void RunMonitor::sent(Operation operation, const QByteArray& text)
{
    const std::optional<Record> record = recordIn(operation, text);
    if (!record && !isRedirection(operation, text))
        return;
    if (!m_isRunning)
        begin();
    if (!record) {
        choose(text.mid(redirection.size()));
        return;
    }
    if (!m_isInStep || record->number == 1)
        enter(*record);
    m_step.isAwaited = record->number == record->records;
    tell();
}

void RunMonitor::answered(Operation operation, const QByteArray& text,
                          const std::optional<Reply>& reply)
{
    if (operation == Operation::GetString) {
        remember(text, reply && reply->ok ? reply->text : QByteArray());
    } else if (!m_isRunning) {
        return;
    } else if (const std::optional<Record> record = recordIn(operation, text)) {
        finish(*record, reply);
    } else if (isRedirection(operation, text)) {
        choose(text.mid(redirection.size()));
        if (!isTaken(reply))
            fail(0, reply);
    }
}

void RunMonitor::begin()
{
    m_isRunning = true;
    m_loopLevel = QThread::currentThread()->loopLevel();
    m_isInStep = false;
    m_steps = 0;
    m_step = {};
    m_target.clear();
    // Qt deletes it when control has come back to the event loop that the module was called from,
    // whatever loops are entered and left before: that is when the call is over.
    auto* call = new QObject;
    connect(call, &QObject::destroyed, this, &RunMonitor::end);
    call->deleteLater();
    m_look.start();
    emit began();
}

void RunMonitor::end()
{
    m_look.stop();
    m_isRunning = false;
    m_isHeldUp = false;
    m_step.isAwaited = false;
    emit ended();
}

void RunMonitor::look()
{
    // A loop that has nothing new to do would not look for what is to be deleted.
    QCoreApplication::postEvent(this, new QEvent(QEvent::None));
    const bool isHeldUp = QThread::currentThread()->loopLevel() > m_loopLevel;
    if (isHeldUp == m_isHeldUp)
        return;
    m_isHeldUp = isHeldUp;
    if (isHeldUp)
        emit heldUp();
    else
        emit progressed(m_step);
}

void RunMonitor::choose(const QByteArray& target)
{
    m_target = target == "none" ? QByteArray() : target;
    m_isInStep = false;
}

void RunMonitor::enter(const Record& record)
{
    m_isInStep = true;
    m_step = {};
    m_step.number = ++m_steps;
    m_step.device = record.camera.isEmpty() ? controllerName() : cameraName(record.camera);
    m_step.kind = record.kind;
    m_step.records = record.records;
    m_toldPercent = -1;
}

void RunMonitor::finish(const Record& record, const std::optional<Reply>& reply)
{
    if (!m_isInStep)
        enter(record);
    m_step.isAwaited = false;
    if (!isTaken(reply)) {
        fail(record.number, reply);
        return;
    }
    m_step.taken = record.number;
    m_isInStep = record.number < record.records;
    tell();
}

void RunMonitor::fail(int record, const std::optional<Reply>& reply)
{
    RunFailure failure{m_step, record, reply.has_value(), 0, QString()};
    if (record == 0) {
        failure.step = {};
        failure.step.device = controllerName();
    }
    static const QRegularExpression error(
        QStringLiteral("^vornix2 err \"?(-?\\d+)\"? *\"?([^\"]*)"));
    const auto found = error.match(reply ? QString::fromLatin1(reply->text) : QString());
    failure.error = found.captured(1).toInt();
    failure.reason = found.captured(2).trimmed();
    m_isInStep = false;
    emit failed(failure);
}

void RunMonitor::tell()
{
    if (m_step.percent() == m_toldPercent && m_step.isAwaited == m_toldAwaited)
        return;
    m_toldPercent = m_step.percent();
    m_toldAwaited = m_step.isAwaited;
    emit progressed(m_step);
}

void RunMonitor::remember(const QByteArray& key, const QByteArray& value)
{
    if (key.startsWith(hostNameQuery) || key.startsWith(cameraQuery) ||
        key.startsWith(descriptionQuery))
        m_answers.insert(key, value);
}

QString RunMonitor::controllerName() const
{
    const QByteArray key =
        m_target.isEmpty() ? hostNameQuery : hostNameQuery + "_slave " + m_target;
    const QString name = QString::fromUtf8(m_answers.value(key));
    if (!name.isEmpty())
        return name;
    return m_target.isEmpty() ? tr("the master") : QString::fromLatin1(m_target);
}

// The name that the module's table has for it.
QString RunMonitor::cameraName(const QByteArray& camera) const
{
    const QString identity = QString::fromLatin1(m_answers.value(cameraQuery + camera));
    const QString model = identity.section(QLatin1Char(' '), 0, 0);
    QString description = QString::fromLatin1(m_answers.value(descriptionQuery + model.toLatin1()));
    QStringList name{description.remove(QLatin1Char('"')),
                     identity.section(QLatin1Char(' '), 1, 1)};
    name.removeAll(QString());
    return name.isEmpty() ? QString::fromLatin1(camera) : name.join(QLatin1Char(' '));
}
