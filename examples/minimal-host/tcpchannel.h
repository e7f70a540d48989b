#pragma once

#include <IOManager.h>
#include <MessageReceiver.h>

#include <QDeadlineTimer>
#include <QHash>
#include <QTcpSocket>

#include <utility>

// The line of a printf-style call, in which texts are Latin-1.
#define EXCHANGE(shape, reply)                                                                     \
    va_list arguments;                                                                             \
    va_start(arguments, format);                                                                   \
    char text[1024] = shape " ";                                                                   \
    std::vsnprintf(text + sizeof shape, sizeof text - sizeof shape, format, arguments);            \
    va_end(arguments);                                                                             \
    return exchange(text, reply)

/// The command channel to a simulated system: each text is a line, and so is its reply.
class TcpChannel final : public IOManager
{
public:
    explicit TcpChannel(QTcpSocket& socket) : m_socket(socket) {}
    void prepare_reply(int, int timeoutMs, int) override { m_preparedMs = timeoutMs; }
    int poll_reply(int) override { return receive(m_deadline, m_preparedReply); }
    int send_command(char* reply, const char* format, ...) override { EXCHANGE("command", reply); }
    int get_string(char* value, const char* format, ...) override { EXCHANGE("get", value); }
    int get_int(int* value, const char* format, ...) override { EXCHANGE("int", value); }
    int set_value(const char* format, ...) override
    {
        char* const none = nullptr;
        EXCHANGE("set", none);
    }
    void post_message(const char* to, const char* from, int kind, const char* text) override
    {
        std::printf("%s to %s: %s\n", from, to, text);
        if (MessageReceiver* receiver = m_receivers.value(to))
            receiver->transmit_message(kind, from, text);
    }
    void register_receiver(const char* name, MessageReceiver* it) override
    {
        m_receivers[name] = it;
    }
    void get_address(char* address) override { qstrcpy(address, "127.0.0.1"); }

private:
    // What was prepared is only sent: poll_reply() waits for its reply.
    int exchange(const char* text, char* reply)
    {
        m_tag = '#' + QByteArray::number(++m_number) + ' ';
        m_socket.write(m_tag + text + '\n');
        const int preparedMs = std::exchange(m_preparedMs, 0);
        m_deadline.setRemainingTime(preparedMs > 0 ? preparedMs : 5000);
        m_preparedReply = reply;
        return preparedMs > 0 ? 0 : receive(m_deadline, reply);
    }

    int exchange(const char* text, int* number)
    {
        char digits[replyBytes] = "";
        const int result = exchange(text, digits);
        *number = atoi(digits);
        return result;
    }

    // The tag tells the reply from one that comes too late for an earlier text.
    int receive(const QDeadlineTimer& deadline, char* reply)
    {
        do {
            while (m_socket.canReadLine()) {
                const QByteArray line = m_socket.readLine().chopped(1);
                if (line.startsWith(m_tag + "ok") && reply)
                    qstrncpy(reply, line.mid(m_tag.size() + 3).constData(), replyBytes);
                if (line.startsWith(m_tag))
                    return line.startsWith(m_tag + "ok") ? 0 : 1;
            }
        } while (m_socket.waitForReadyRead(static_cast<int>(deadline.remainingTime())));
        return 1;
    }

    static constexpr int replyBytes = 200; // of every buffer, with the zero byte
    QTcpSocket& m_socket;
    int m_number = 0;
    QByteArray m_tag;                // of the last text
    int m_preparedMs = 0;            // for the next text; 0: it is not prepared
    QDeadlineTimer m_deadline;       // of the last text
    char* m_preparedReply = nullptr; // its buffer; null for a setting
    QHash<QByteArray, MessageReceiver*> m_receivers;
};
