#pragma once

#include <IOManager>

#include <cstdarg>
#include <cstdio>
#include <cstring>

/// A channel that expands every command's text, as a host must, and does nothing else. Every call
/// succeeds; queries answer with an empty text and 0.
class FormattingChannel final : public IOManager
{
public:
    void prepare_reply(int /*kind*/, int /*timeoutMs*/, int /*pollFollows*/) override {}
    int poll_reply(int /*mode*/) override { return 0; }
    void post_message(const char* /*receiver*/, const char* /*sender*/, int /*kind*/,
                      const char* /*message*/) override
    {
    }
    void register_receiver(const char* /*name*/, MessageReceiver* /*receiver*/) override {}
    void get_address(char* address) override { *address = '\0'; }

    int send_command(char* reply, const char* format, ...) override
    {
        va_list arguments;
        va_start(arguments, format);
        expand(format, arguments);
        va_end(arguments);
        *reply = '\0';
        return 0;
    }
    int get_string(char* value, const char* /*format*/, ...) override
    {
        *value = '\0';
        return 0;
    }
    int get_int(int* value, const char* /*format*/, ...) override
    {
        *value = 0;
        return 0;
    }
    int set_value(const char* format, ...) override
    {
        va_list arguments;
        va_start(arguments, format);
        expand(format, arguments);
        va_end(arguments);
        return 0;
    }

    const char* lastText() const { return m_text; }

private:
    void expand(const char* format, va_list arguments)
    {
        std::vsnprintf(m_text, sizeof m_text, format, arguments);
    }

    char m_text[1024] = {};
};
