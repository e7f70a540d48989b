#pragma once

#include <QMetaType>

#include <type_traits>

class MessageReceiver;

/// @def IOMANAGER_PRINTF(text, first)
/// Lets the compiler check printf-style arguments; positions count from 1, `this` included.
#if defined(__GNUC__)
#define IOMANAGER_PRINTF(text, first) __attribute__((format(printf, text, first)))
#else
#define IOMANAGER_PRINTF(text, first)
#endif

/// The host's channel: to the controllers by text commands, and to the host's other modules.
///
/// The host implements and owns it; the plug-in holds a plain pointer until exit_module() has freed
/// its dialogs and calls it on the user interface thread only. All text is 8-bit and
/// NUL-terminated. Every `int` result is 0 for success and anything else for failure. The words of
/// the command language are described in docs/command-language.md; no text that the plug-in sends
/// to a controller is longer than 234 bytes without its NUL. Without prepare_reply() an exchange
/// may take as long as the host lets it.
///
/// A host may have further virtual operations of its own in its implementing class; the order of
/// these nine is part of the contract.
class IOManager
{
public:
    /// Announces that the next command or setting runs long; poll_reply() completes the exchange.
    ///
    /// @param kind        1 at every call
    /// @param timeoutMs   time that the controller may take, in milliseconds
    /// @param pollFollows 1 if poll_reply() comes directly after the command, 0 if the caller
    ///                    returns to its event loop first: then the command must not wait, and one
    ///                    poll_reply() comes a second later, which waits for what is left of the
    ///                    time. There are no repeated polls.
    ///
    /// Between this call and poll_reply() a host that uses the channel itself, from its event loop,
    /// must not let that take the prepared reply.
    virtual void prepare_reply(int kind, int timeoutMs, int pollFollows) = 0;

    /// Sends a command and writes the controller's complete reply, at most 200 bytes with its NUL,
    /// into @p reply. After prepare_reply() the reply may come later: @p reply must then stay valid
    /// until poll_reply() has returned, and the result of this call does not count.
    virtual int send_command(char* reply, const char* format, ...) IOMANAGER_PRINTF(3, 4) = 0;

    /// Waits until the prepared reply has arrived or its time has run out.
    ///
    /// @param mode 3 at every call
    /// @return for a setting 0 only if the controller confirmed it: a refusal is a failure like a
    ///         time-out. For a command 0 if a reply arrived, whatever it says: the text in the
    ///         buffer of send_command() tells that.
    virtual int poll_reply(int mode) = 0;

    /// Asks for a parameter's value as text, without the echo of its name.
    ///
    /// @param value buffer of the caller; the host writes at most 200 bytes including the
    ///              terminating NUL. Not to be trusted after a failure.
    virtual int get_string(char* value, const char* format, ...) IOMANAGER_PRINTF(3, 4) = 0;

    /// Asks for a parameter's value as a number. @p value is not to be trusted after a failure.
    virtual int get_int(int* value, const char* format, ...) IOMANAGER_PRINTF(3, 4) = 0;

    /// Sends a setting. After prepare_reply() only the result of poll_reply() counts.
    virtual int set_value(const char* format, ...) IOMANAGER_PRINTF(2, 3) = 0;

    /// Delivers a text to the module registered under the name @p receiver.
    ///
    /// @param kind 1 at every call
    virtual void post_message(const char* receiver, const char* sender, int kind,
                              const char* message) = 0;

    /// From now on messages to @p name end in @p receiver, which stays the caller's. There is no
    /// way to unregister: after exit_module() the host must not post to "UpdateModule" any more.
    virtual void register_receiver(const char* name, MessageReceiver* receiver) = 0;

    /// Writes the address of the connected controller into @p address (200 bytes), as dotted IPv4
    /// text.
    virtual void get_address(char* address) = 0;

protected:
    ~IOManager() = default;
};

static_assert(!std::has_virtual_destructor_v<IOManager> && sizeof(IOManager) == sizeof(void*),
              "IOManager is nine virtual operations and no data");

Q_DECLARE_METATYPE(IOManager*)
