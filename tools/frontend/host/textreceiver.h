#pragma once

#include <MessageReceiver.h>

#include <QString>

#include <functional>

/// A receiver of messages that hands each to a function.
class TextReceiver final : public MessageReceiver
{
public:
    /// Gets sender and text of a message, both read as Latin-1.
    using Take = std::function<void(const QString& sender, const QString& text)>;

    /// @param take called in the thread that sends
    explicit TextReceiver(const Take& take) : m_take(take) {}
    virtual ~TextReceiver() = default;

    int transmit_message(int /*type*/, const char* src, const char* msg) override
    {
        m_take(QString::fromLatin1(src), QString::fromLatin1(msg));
        return 0;
    }

private:
    Take m_take;
};
