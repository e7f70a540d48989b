#include "logkeeper.h"

#include "logview.h"

#include <timestamp.h>
#include <wholefile.h>

#include <QJsonDocument>
#include <QJsonObject>

namespace {

// More than the messages that are shown again can have, unless they are very long.
constexpr qint64 maxBytes = Q_INT64_C(4) << 20;

/// A message as it stands in the file.
struct KeptMessage
{
    QDateTime time;
    QString sender;
    QString text;
};

QByteArray lineOf(const KeptMessage& message)
{
    const QJsonObject object{{"time", message.time.toUTC().toString(Qt::ISODateWithMs)},
                             {"sender", message.sender},
                             {"text", message.text}};
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

std::optional<KeptMessage> readMessage(const QByteArray& line)
{
    const QJsonObject object = QJsonDocument::fromJson(line).object();
    const QDateTime time = QDateTime::fromString(object["time"].toString(), Qt::ISODateWithMs);
    if (!time.isValid() || !object["sender"].isString() || !object["text"].isString())
        return std::nullopt;
    return KeptMessage{time.toLocalTime(), object["sender"].toString(), object["text"].toString()};
}

} // namespace

LogKeeper::LogKeeper(LogView& log) : m_log(log) {}

bool LogKeeper::keepIn(const QString& file, QString* error)
{
    m_file.setFileName(file);
    if (m_file.exists() && !showEarlier(error))
        return false;
    if (!m_file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered)) {
        *error = QStringLiteral("%1: %2").arg(file, m_file.errorString());
        return false;
    }
    connect(&m_log, &LogView::added, this, &LogKeeper::append);
    return true;
}

// The file is written anew, so that it does not grow for ever, and each new line begins as one.
bool LogKeeper::showEarlier(QString* error)
{
    QFile source(m_file.fileName());
    if (!source.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("%1: %2").arg(source.fileName(), source.errorString());
        return false;
    }
    if (source.size() > maxBytes)
        source.seek(source.size() - maxBytes);
    const QList<QByteArray> lines = source.readAll().split('\n');
    QVector<KeptMessage> messages;
    for (const QByteArray& line : lines) {
        if (const std::optional<KeptMessage> message = readMessage(line))
            messages += *message;
    }
    messages = messages.mid(qMax(0, messages.size() - maxEarlier));
    QByteArray content;
    for (const KeptMessage& message : qAsConst(messages)) {
        m_log.addAt(message.time, message.sender, message.text);
        content += lineOf(message);
    }
    return writeWholeFile(source.fileName(), content, error);
}

void LogKeeper::append(const QString& sender, const QString& text)
{
    const qint64 before = m_file.size();
    if (!m_file.isOpen() || writeAll(m_file, lineOf({QDateTime::currentDateTime(), sender, text})))
        return;
    const QString reason = m_file.errorString();
    m_file.resize(before);
    m_file.close();
    emit failed(QStringLiteral("%1: %2").arg(m_file.fileName(), reason));
}
