#pragma once

#include <type_traits>

/// The end of the line for texts that the host posts to a named module.
///
/// Whoever implements it registers with IOManager::register_receiver() and stays its owner; the
/// destructor is not virtual, so nobody deletes a receiver through this interface.
class MessageReceiver
{
public:
    /// Takes one message, on the thread that the host posts from (its user interface thread).
    ///
    /// @param type kind that the sender gave to IOManager::post_message()
    /// @param src  name of the sender, 8-bit and NUL-terminated; valid during the call only
    /// @param msg  the text, 8-bit and NUL-terminated; valid during the call only
    /// @return 0
    virtual int transmit_message(int type, const char* src, const char* msg) = 0;

protected:
    ~MessageReceiver() = default;
};

static_assert(!std::has_virtual_destructor_v<MessageReceiver> &&
                  sizeof(MessageReceiver) == sizeof(void*),
              "MessageReceiver is one virtual operation and no data");
