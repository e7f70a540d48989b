#include "encounter.h"

#include <imagefixtures.h>
#include <payload.h>
#include <transcript.h>

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

namespace {

template <typename Block>
void fill(Block* block, PayloadComponent component, const VersionInfo& version)
{
    const int bytes = recordsOfAnUpdate * maxRecordBytes - payloadOverhead;
    block->text = version.toString().toLatin1();
    block->records = splitIntoRecords(makePayload({component, version, QString()}, bytes, 1));
}

QByteArray controllerUpdate()
{
    const VersionInfo version(3, 3, 0);
    ControllerImageBlock block = firmwareBlock(VersionInfo(3, 0, 0), VersionInfo(3, 2, 65535));
    fill(&block, PayloadComponent::TrackingSoftware, version);
    return controllerImageBytes(releaseImage(version, VersionInfo(1, 3), {block}));
}

QByteArray cameraUpdate()
{
    const VersionInfo version(1, 4, 0);
    CameraUpdateFile file = cameraFile({0x0901}, version);
    fill(&file.images.first(), PayloadComponent::CameraFirmware, version);
    return cameraUpdateBytes(file);
}

QStringList linesOf(const QByteArray& output)
{
    return QString::fromLocal8Bit(output).split('\n', Qt::SkipEmptyParts);
}

// "KIND: TEXT" of a line such as "   0.12 s  window    VORNIX3".
QStringList toldIn(const QByteArray& output)
{
    static const QRegularExpression form("^ *[0-9.]+ s  (.{9}) (.*)$");
    QStringList told;
    for (const QString& line : linesOf(output)) {
        const QRegularExpressionMatch match = form.match(line);
        const QString kind = match.captured(1).trimmed();
        if (kind != "progress")
            told += match.hasMatch() ? kind + ": " + match.captured(2) : line;
    }
    return told;
}

QStringList recordsIn(const Transcript& transcript)
{
    static const QRegularExpression redirection("^set_value \"system redirect_update ([^ \"]+)\"$");
    static const QRegularExpression record("^(?:set_value \"system (?:update|ctupdt)|"
                                           "send_command \"vornix2 set camera update (c\\d+)) "
                                           "\\d+ (\\d+) ");
    QString target;
    QStringList records;
    for (const TranscriptCall& call : transcript.calls) {
        const QString text = QString::fromLatin1(call.call);
        const QRegularExpressionMatch sent = record.match(text);
        const QRegularExpressionMatch redirected = redirection.match(text);
        if (redirected.hasMatch())
            target = redirected.captured(1);
        if (sent.hasMatch())
            records +=
                (sent.captured(1).isEmpty() ? target : sent.captured(1)) + ": " + sent.captured(2);
    }
    return records;
}

} // namespace

QMap<QString, QByteArray> smallUpdates()
{
    return {{"v3.3.0.vx3img", controllerUpdate()}, {"0x0901.VX2znimg", cameraUpdate()}};
}

QStringList FrontendStart::boxes() const
{
    QStringList boxes;
    for (const QStringList& texts : windows("VORNIX3"))
        boxes += texts.join(' ');
    return boxes;
}

QList<QStringList> FrontendStart::windows(const QString& title) const
{
    QList<QStringList> windows;
    for (auto line = told.begin(); line != told.end(); ++line) {
        if (*line != "window: " + title)
            continue;
        QStringList texts;
        while (line + 1 != told.end() && (line + 1)->startsWith(": "))
            texts += (++line)->mid(2);
        if (!texts.isEmpty())
            texts.removeLast();
        windows += texts;
    }
    return windows;
}

QStringList FrontendStart::results() const
{
    const QList<QStringList> all = windows("Results of the Update");
    return all.isEmpty() ? QStringList() : all.last();
}

QString FrontendStart::ending() const
{
    return told.isEmpty() ? QString() : told.last();
}

QString FrontendStart::text() const
{
    return QStringLiteral("--- exit code %1\n%2\n%3%4")
        .arg(QString::number(code), told.join('\n'), errors, trouble);
}

Encounter::Encounter(QString frontend, const QByteArray& scenario) : m_frontend(std::move(frontend))
{
    QString error;
    const std::optional<Scenario> read =
        ScenarioReader::read(m_folder.write("faults.json", scenario), &error);
    if (!read)
        qFatal("%s", qPrintable(error));
    m_scenario = *read;
    connect(&m_process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
            &Encounter::takeStart);
    connect(&m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError reason) {
        if (reason == QProcess::FailedToStart)
            takeStart();
    });
}

bool Encounter::startSystem(const QStringList& options)
{
    m_system = std::make_unique<SimulatedProgram>(
        QStringList{"--listen", "127.0.0.1:0", "--scenario", m_folder.path("faults.json"),
                    "--state", m_folder.path("system/state.json")} +
        options);
    m_endpoint = m_system->endpoint();
    return m_endpoint.has_value();
}

bool Encounter::arm(const Fault& fault)
{
    return m_endpoint &&
           ask(*m_endpoint, "bench " + commandLine({EquipmentCommand::Kind::ArmFault, 0, fault}))
               .startsWith("ok");
}

bool Encounter::giveCamerasPower()
{
    const QVector<CameraState>& cameras = m_starts.last().equipment.cameras;
    bool isTaken = true;
    for (int index = 0; index < cameras.size(); ++index) {
        if (!cameras.at(index).running)
            isTaken &=
                ask(*m_endpoint, "bench " + commandLine({EquipmentCommand::Kind::PowerCycleCamera,
                                                         index})) == "ok";
    }
    return isTaken;
}

void Encounter::killSystem()
{
    m_system->kill();
}

void Encounter::startFrontend()
{
    m_process.start(m_frontend,
                    {"--headless", "--connect", m_endpoint ? m_endpoint->text() : QString(),
                     "--state-dir", m_folder.path("frontend"), "--record", recordFile()});
}

QString Encounter::recordFile() const
{
    return m_folder.path(QStringLiteral("start-%1.transcript").arg(m_starts.size() + 1));
}

EquipmentState Encounter::equipment(QString* error) const
{
    const QByteArray reply = m_endpoint ? ask(*m_endpoint, "bench state") : QByteArray();
    const QByteArray words = "ok ";
    if (reply.startsWith(words)) {
        const std::optional<EquipmentReport> report =
            reportFromJson(reply.mid(words.size()), m_scenario, error);
        if (report)
            return report->state;
    } else {
        *error = QStringLiteral("bench state: ") + QString::fromLocal8Bit(reply);
    }
    return untouchedEquipment(m_scenario);
}

void Encounter::takeStart()
{
    FrontendStart start;
    start.equipment = equipment(&start.trouble);
    if (m_process.exitStatus() == QProcess::NormalExit)
        start.code = m_process.exitCode();
    start.told = toldIn(m_process.readAllStandardOutput());
    start.errors = QString::fromLocal8Bit(m_process.readAllStandardError());
    QString error;
    if (const std::optional<Transcript> transcript = Transcript::read(recordFile(), &error))
        start.sent = recordsIn(*transcript);
    else
        start.trouble += error;
    m_starts += start;
    m_systemErrors += QString::fromLocal8Bit(m_system->errorOutput());
    emit ended();
}

QString Encounter::text() const
{
    QStringList texts;
    for (const FrontendStart& start : m_starts)
        texts += start.text();
    return texts.join('\n') + m_systemErrors;
}
