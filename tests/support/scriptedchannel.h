#pragma once

#include <IOManager>

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QStringList>

#include <functional>
#include <map>

class MessageReceiver;

/// The answers to one text, given one after the other; the last one is given again and again.
class ScriptedAnswers
{
public:
    /// Success that delivers @p text, cut to the 199 bytes and terminator of the contract.
    ScriptedAnswers& reply(const QByteArray& text);
    /// Success that delivers a number; get_string() receives it as text.
    ScriptedAnswers& reply(int number);
    /// Success that fills the buffer with @p bytes as they are, 200 at most, without a terminator.
    ScriptedAnswers& replyUnterminated(const QByteArray& bytes);
    /// Success that writes nothing.
    ScriptedAnswers& succeed();
    /// Failure that leaves @p leftBehind in the buffer: whoever shows it trusted a failed query.
    ScriptedAnswers& fail(const QByteArray& leftBehind = QByteArrayLiteral("31 not to be trusted"));
    /// Failure with a number of its own that writes nothing.
    ScriptedAnswers& failWith(int result);

private:
    friend class ScriptedChannel;

    struct Answer
    {
        int result = 0;
        QByteArray text;
        bool isWritten = true;
        bool isTerminated = true;
    };

    ScriptedAnswers& add(const Answer& answer);
    Answer next();

    QList<Answer> m_answers;
    int m_given = 0;
};

/// A host without anything behind it: logs every call and answers what the test told it to.
///
///     ScriptedChannel channel;
///     channel.on("system hostname").reply("alpha");
///     channel.on("vornix2 tracking stop").fail().reply("vornix2 ok"); // fails once, then works
///     channel.onPrefix("system update 40 17 ").fail();                // refuses record 17
///     channel.onPoll().succeed().fail();                              // the second block fails
///     ... let the code under test run ...
///     QCOMPARE(channel.log(), (QStringList{R"(get_string "system hostname")", ...}));
///
/// Unscripted queries fail, as on a dead channel; unscripted settings, commands and polls succeed,
/// commands with the reply "vornix2 ok". A text is looked up as a whole first, then by its longest
/// scripted prefix. The reply of a command that was prepared is written by poll_reply(), and only
/// if that succeeds, so that a buffer that lives too short shows.
///
/// The log holds one line per call, in these forms:
///     prepare_reply 1 20000 1          send_command "vornix2 reinit"     poll_reply 3
///     get_string "system hostname"     get_int "system model"            get_address
///     set_value "system update 2 1 BIwA"
///     post_message standard VORNIX3 1 "text"                             register_receiver NAME
class ScriptedChannel final : public IOManager
{
public:
    struct Message
    {
        QString receiver;
        QString sender;
        int kind;
        QString text;
    };
    using Hook = std::function<void(const QString& call)>;

    /// The answers to @p text; earlier ones to this text are forgotten.
    ScriptedAnswers& on(const QByteArray& text);
    /// The answers to every text that starts with @p prefix, all from one sequence.
    ScriptedAnswers& onPrefix(const QByteArray& prefix);
    /// The answers of poll_reply().
    ScriptedAnswers& onPoll();
    /// From now on everything fails, whatever has been scripted.
    void die() { m_isDead = true; }
    /// As if it had not died; what was prepared before is lost.
    void recover();
    /// What get_address() writes; 127.0.0.1 unless set.
    void setAddress(const QByteArray& address) { m_address = address; }
    /// Called after each call is logged and before it is answered, with the line of the log: the
    /// place to act in the middle of a run.
    void setHook(const Hook& hook) { m_hook = hook; }
    /// Messages are delivered to registered receivers until then.
    void forgetReceivers() { m_receivers.clear(); }

    const QStringList& log() const { return m_log; }
    /// The lines of the log that start with @p prefix.
    QStringList logOf(const QString& prefix) const;
    /// The log so far, which starts anew.
    QStringList takeLog();
    /// Everything posted, to registered receivers or not.
    const QList<Message>& messages() const { return m_messages; }
    /// The texts posted to @p receiver.
    QStringList messagesTo(const QString& receiver) const;

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
    using Answer = ScriptedAnswers::Answer;

    void record(const QString& call);
    Answer exchange(const char* operation, const QByteArray& text, const Answer& unscripted);
    ScriptedAnswers* scripted(const QByteArray& text);
    static void write(char* target, const Answer& answer);

    std::map<QByteArray, ScriptedAnswers> m_byText;
    std::map<QByteArray, ScriptedAnswers> m_byPrefix;
    ScriptedAnswers m_polls;
    bool m_isDead = false;
    QByteArray m_address = QByteArrayLiteral("127.0.0.1");
    Hook m_hook;

    bool m_isPrepared = false;
    char* m_lateTarget = nullptr;
    Answer m_lateAnswer;

    QStringList m_log;
    QList<Message> m_messages;
    QHash<QString, MessageReceiver*> m_receivers;
};
