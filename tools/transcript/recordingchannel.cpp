#include "recordingchannel.h"

#include <QFileInfo>

#include <cstdio>
#include <cstring>
#include <utility>

namespace {

QByteArray textIn(const char* buffer)
{
    return buffer
               ? QByteArray(buffer, static_cast<int>(strnlen(buffer, TranscriptForm::replyBytes)))
               : QByteArray();
}

QByteArray number(qint64 value)
{
    return QByteArray::number(value);
}

QByteArray resultText(int result)
{
    return " = " + number(result);
}

QByteArray parts(const VersionInfo& version)
{
    return number(version.ma) + ' ' + number(version.mi) + ' ' + number(version.pa);
}

QString numbered(const QString& file, int number)
{
    const int dot = file.lastIndexOf(QLatin1Char('.'));
    const bool hasSuffix = dot > file.lastIndexOf(QLatin1Char('/')) + 1;
    QString name = file;
    return name.insert(hasSuffix ? dot : name.size(), QStringLiteral("-%1").arg(number));
}

QString withoutRecord(const QString& wantedFile)
{
    QString name = wantedFile;
    for (int i = 2; QFileInfo(name).isFile() && QFileInfo(name).size() > 0; ++i)
        name = numbered(wantedFile, i);
    return name;
}

// Where the room ends, a part is written first, and only the next attempt tells why.
bool writeAll(QFile& file, QByteArray rest)
{
    while (!rest.isEmpty()) {
        const qint64 written = file.write(rest);
        if (written <= 0)
            return false;
        rest.remove(0, static_cast<int>(written));
    }
    return true;
}

} // namespace

QByteArray TranscriptForm::expand(const char* format, va_list arguments)
{
    constexpr int usualBytes = 1024;
    QByteArray text(usualBytes, Qt::Uninitialized);
    va_list again;
    va_copy(again, arguments);
    const int length = qMax(0, std::vsnprintf(text.data(), usualBytes, format, arguments));
    text.resize(length);
    if (length >= usualBytes)
        std::vsnprintf(text.data(), static_cast<std::size_t>(length) + 1, format, again);
    va_end(again);
    return text;
}

QByteArray TranscriptForm::quoted(const QByteArray& bytes)
{
    QByteArray text;
    text.reserve(bytes.size() + 2);
    text += '"';
    for (const char byte : bytes) {
        if (byte == '"' || byte == '\\')
            (text += '\\') += byte;
        else if (byte >= ' ' && byte <= '~')
            text += byte;
        else
            text += "\\x" + QByteArray(1, byte).toHex();
    }
    return text += '"';
}

QByteArray TranscriptForm::call(const char* operation, std::initializer_list<QByteArray> arguments)
{
    QByteArray text(operation);
    for (const QByteArray& argument : arguments)
        (text += ' ') += argument;
    return text;
}

QByteArray TranscriptForm::textCall(const char* operation, const QByteArray& text)
{
    return call(operation, {quoted(text)});
}

QByteArray TranscriptForm::messageCall(const char* receiver, const char* sender, int kind,
                                       const char* message)
{
    return call("post_message", {quoted(receiver), quoted(sender), number(kind), quoted(message)});
}

QByteArray TranscriptForm::prepareCall(int kind, int timeoutMs, int pollFollows)
{
    return call("prepare_reply", {number(kind), number(timeoutMs), number(pollFollows)});
}

QByteArray TranscriptForm::pollCall(int mode)
{
    return call("poll_reply", {number(mode)});
}

QByteArray TranscriptForm::head(const TranscriptHead& head, const QByteArray& program)
{
    const BackendVersions& versions = head.versions;
    const std::initializer_list<QByteArray> lines = {
        call("transcript", {number(version)}),
        textCall("# recorded by", program),
        call("system_pt", {parts(versions.systemPt())}),
        call("protocol", {parts(versions.protocol())}),
        call("system_ct", {parts(versions.systemCt())}),
        textCall("model", versions.zanModel().toUtf8()),
        call("observer", {head.observer ? "yes" : "no"}),
    };
    QByteArray text;
    for (const QByteArray& line : lines)
        text += line + '\n';
    return text;
}

RecordingChannel::Watched RecordingChannel::Watched::watch(const char* buffer)
{
    return {buffer, textIn(buffer)};
}

QByteArray RecordingChannel::Watched::outcome(int result) const
{
    const QByteArray after = textIn(buffer);
    const bool isWritten = buffer && (result == 0 || after != before);
    return isWritten ? resultText(result) + ' ' + TranscriptForm::quoted(after)
                     : resultText(result);
}

RecordingChannel::RecordingChannel(IOManager& channel, const QString& wantedFile,
                                   const TranscriptHead& head, const QString& program)
    : m_channel(channel), m_file(withoutRecord(wantedFile))
{
    m_clock.start();
    // A file that comes into being just now is somebody else's record.
    const auto newOrEmpty = m_file.exists() ? QIODevice::WriteOnly : QIODevice::NewOnly;
    m_file.open(newOrEmpty | QIODevice::Unbuffered);
    put(TranscriptForm::head(head, program.toUtf8()));
}

void RecordingChannel::write(qint64 atMs, const QByteArray& call)
{
    if (isRecording())
        put(number(atMs).rightJustified(9) + ' ' + call + '\n');
}

void RecordingChannel::put(const QByteArray& bytes)
{
    if (m_file.isOpen() && writeAll(m_file, bytes))
        return;
    const QString trouble = QStringLiteral("%1: cannot be written: %2. Nothing more is recorded.")
                                .arg(m_file.fileName(), m_file.errorString());
    m_file.close();
    m_channel.post_message("standard", "Transcript", 1, trouble.toLatin1().constData());
}

// What has no outcome is written before it is passed on: whoever takes it may call back.
void RecordingChannel::prepare_reply(int kind, int timeoutMs, int pollFollows)
{
    write(m_clock.elapsed(), TranscriptForm::prepareCall(kind, timeoutMs, pollFollows));
    m_isPrepared = true;
    m_channel.prepare_reply(kind, timeoutMs, pollFollows);
}

int RecordingChannel::send_command(char* reply, const char* format, ...)
{
    IOMANAGER_TEXT(text, format);
    const qint64 atMs = m_clock.elapsed();
    const bool isLate = std::exchange(m_isPrepared, false);
    const Watched watched = Watched::watch(reply);
    if (isLate)
        m_late = watched;
    const int result = m_channel.send_command(reply, "%s", text.constData());
    write(atMs, TranscriptForm::textCall("send_command", text) +
                    (isLate ? resultText(result) : watched.outcome(result)));
    return result;
}

int RecordingChannel::poll_reply(int mode)
{
    const qint64 atMs = m_clock.elapsed();
    const int result = m_channel.poll_reply(mode);
    const Watched late = std::exchange(m_late, Watched());
    write(atMs, TranscriptForm::pollCall(mode) + late.outcome(result));
    return result;
}

int RecordingChannel::get_string(char* value, const char* format, ...)
{
    IOMANAGER_TEXT(text, format);
    const qint64 atMs = m_clock.elapsed();
    const Watched watched = Watched::watch(value);
    const int result = m_channel.get_string(value, "%s", text.constData());
    write(atMs, TranscriptForm::textCall("get_string", text) + watched.outcome(result));
    return result;
}

int RecordingChannel::get_int(int* value, const char* format, ...)
{
    IOMANAGER_TEXT(text, format);
    const qint64 atMs = m_clock.elapsed();
    const int before = *value;
    const int result = m_channel.get_int(value, "%s", text.constData());
    const bool isWritten = result == 0 || *value != before;
    write(atMs, TranscriptForm::textCall("get_int", text) + resultText(result) +
                    (isWritten ? ' ' + number(*value) : QByteArray()));
    return result;
}

int RecordingChannel::set_value(const char* format, ...)
{
    IOMANAGER_TEXT(text, format);
    const qint64 atMs = m_clock.elapsed();
    if (std::exchange(m_isPrepared, false))
        m_late = Watched();
    const int result = m_channel.set_value("%s", text.constData());
    write(atMs, TranscriptForm::textCall("set_value", text) + resultText(result));
    return result;
}

void RecordingChannel::post_message(const char* receiver, const char* sender, int kind,
                                    const char* message)
{
    write(m_clock.elapsed(), TranscriptForm::messageCall(receiver, sender, kind, message));
    m_channel.post_message(receiver, sender, kind, message);
}

void RecordingChannel::register_receiver(const char* name, MessageReceiver* receiver)
{
    write(m_clock.elapsed(), TranscriptForm::textCall("register_receiver", name));
    m_channel.register_receiver(name, receiver);
}

void RecordingChannel::get_address(char* address)
{
    const qint64 atMs = m_clock.elapsed();
    m_channel.get_address(address);
    write(atMs, TranscriptForm::call("get_address", {}) + " = " +
                    TranscriptForm::quoted(textIn(address)));
}
