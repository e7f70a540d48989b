#pragma once

#include <BackendVersions.h>
#include <IOManager.h>

#include <QByteArray>
#include <QElapsedTimer>
#include <QFile>

#include <cstdarg>
#include <initializer_list>

/// @file
/// Records what passes a host's command channel. This header and its source need nothing but the
/// host contract and Qt Core: a host may copy both. docs/transcripts.md shows how, and describes
/// the file that is written.

/// Makes @p text, a QByteArray, of the arguments behind @p format of a printf-style operation.
#define IOMANAGER_TEXT(text, format)                                                               \
    va_list text##Arguments;                                                                       \
    va_start(text##Arguments, format);                                                             \
    const QByteArray text = TranscriptForm::expand(format, text##Arguments);                       \
    va_end(text##Arguments)

/// What a host gives to the module beside the channel; it stands at the head of a transcript.
struct TranscriptHead
{
    BackendVersions versions; ///< what the backend reports
    bool observer;            ///< whether the frontend only looks on
};

/// The form of a transcript, for whoever writes or reads one. Safe to use from any thread.
struct TranscriptForm
{
    /// Version of the form; another one is not read.
    static constexpr int version = 1;
    /// The most bytes that a host writes into a buffer, the terminating zero included.
    static constexpr int replyBytes = 200;

    /// Expands a printf-style text of any length.
    static QByteArray expand(const char* format, va_list arguments) IOMANAGER_PRINTF(1, 0);
    /// @p bytes in double quotes, in printable ASCII: `\"`, `\\`, and `\x0a` for any other byte.
    static QByteArray quoted(const QByteArray& bytes);
    /// A call as the transcript shows it, the outcome left out: `get_string "system hostname"`.
    /// @param arguments numbers, and texts that are quoted()
    static QByteArray call(const char* operation, std::initializer_list<QByteArray> arguments);
    /// The same for an operation that carries one text.
    static QByteArray textCall(const char* operation, const QByteArray& text);
    /// The same for post_message().
    static QByteArray messageCall(const char* receiver, const char* sender, int kind,
                                  const char* message);
    /// The same for prepare_reply().
    static QByteArray prepareCall(int kind, int timeoutMs, int pollFollows);
    /// The same for poll_reply().
    static QByteArray pollCall(int mode);
    /// The first lines of a transcript.
    /// @param program name and version of what records, for people
    static QByteArray head(const TranscriptHead& head, const QByteArray& program);
};

/// A command channel that passes every call on to another one and writes it to a file, to be handed
/// to the module in the place of that other one.
///
/// Each line is in the file when the call returns, so that a process that is killed leaves a record
/// of all that it did. If the file cannot be written, that is reported once to the receiver
/// "standard" of the other channel; nothing more is recorded then, and the calls go on undisturbed.
/// To be used from the thread of the other channel.
class RecordingChannel final : public IOManager
{
public:
    /// @param channel must outlive this one
    /// @param wantedFile where to record; its folder must exist. A record that is there already is
    ///        kept: then the file gets a number, "run-2.transcript" for "run.transcript"
    /// @param program name and version of the host, for people
    RecordingChannel(IOManager& channel, const QString& wantedFile, const TranscriptHead& head,
                     const QString& program);
    virtual ~RecordingChannel() = default;
    RecordingChannel(const RecordingChannel&) = delete;
    RecordingChannel& operator=(const RecordingChannel&) = delete;

    /// The file that is written.
    QString fileName() const { return m_file.fileName(); }
    /// False from when the file could not be written.
    bool isRecording() const { return m_file.isOpen(); }

    void prepare_reply(int kind, int timeoutMs, int pollFollows) override;
    int send_command(char* reply, const char* format, ...) override IOMANAGER_PRINTF(3, 4);
    int poll_reply(int mode) override;
    int get_string(char* value, const char* format, ...) override IOMANAGER_PRINTF(3, 4);
    int get_int(int* value, const char* format, ...) override IOMANAGER_PRINTF(3, 4);
    int set_value(const char* format, ...) override IOMANAGER_PRINTF(2, 3);
    void post_message(const char* receiver, const char* sender, int kind,
                      const char* message) override;
    void register_receiver(const char* name, MessageReceiver* receiver) override;
    void get_address(char* address) override;

private:
    /// A buffer of the caller that the host is about to write a reply into. A failed call counts as
    /// having written only if the text is another one afterwards.
    struct Watched
    {
        const char* buffer = nullptr;
        QByteArray before;

        static Watched watch(const char* buffer);
        QByteArray outcome(int result) const;
    };

    void write(qint64 atMs, const QByteArray& call);
    void put(const QByteArray& bytes);

    IOManager& m_channel;
    QFile m_file;
    QElapsedTimer m_clock;
    bool m_isPrepared = false;
    Watched m_late; ///< the reply that poll_reply() brings
};
