#include "querychannel.h"

#include <recordingchannel.h>

#include <cstring>

namespace {

constexpr int success = 0;
constexpr int failure = 1;

} // namespace

int QueryChannel::get_string(char* value, const char* format, ...)
{
    IOMANAGER_TEXT(text, format);
    const Reply reply = m_interpreter->execute(Operation::GetString, text);
    if (!reply.ok)
        return failure;
    std::strncpy(value, reply.text.constData(), TranscriptForm::replyBytes - 1);
    value[TranscriptForm::replyBytes - 1] = '\0';
    return success;
}

int QueryChannel::get_int(int* value, const char* format, ...)
{
    IOMANAGER_TEXT(text, format);
    const Reply reply = m_interpreter->execute(Operation::GetInt, text);
    if (!reply.ok)
        return failure;
    *value = reply.integer;
    return success;
}

void QueryChannel::prepare_reply(int /*kind*/, int /*timeoutMs*/, int /*pollFollows*/) {}

int QueryChannel::send_command(char* /*reply*/, const char* /*format*/, ...)
{
    return failure;
}

int QueryChannel::poll_reply(int /*mode*/)
{
    return failure;
}

int QueryChannel::set_value(const char* /*format*/, ...)
{
    return failure;
}

void QueryChannel::post_message(const char* /*receiver*/, const char* /*sender*/, int /*kind*/,
                                const char* /*message*/)
{
}

void QueryChannel::register_receiver(const char* /*name*/, MessageReceiver* /*receiver*/) {}

void QueryChannel::get_address(char* address)
{
    *address = '\0';
}
