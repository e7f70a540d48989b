#pragma once

#include <IOManager.h>
#include <commandinterpreter.h>

#include <optional>

/// A command channel that asks a simulated system, for the plug-in's inventory: queries alone.
/// Settings and commands fail, and messages are dropped. To be used from one thread.
class QueryChannel final : public IOManager
{
public:
    /// From now on @p system is asked; it must outlive the next question.
    void connectTo(SimulatedSystem& system) { m_interpreter.emplace(system); }

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
    std::optional<CommandInterpreter> m_interpreter;
};
