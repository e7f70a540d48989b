#include "runwitness.h"

#include <errorreply.h>
#include <runmonitor.h>

namespace {

// A dialog that stays open after a failed run asks this again before it begins another one.
bool precedesRun(Operation operation, const QByteArray& text)
{
    return operation == Operation::GetString && text == "status active";
}

bool isRestart(Operation operation, const QByteArray& text)
{
    return operation == Operation::Command &&
           (text == "vornix2 system reboot" || text == "vornix2 system shutdown");
}

/// Answers from what was answered before.
class Memory final : public Queries
{
public:
    explicit Memory(const QHash<QByteArray, Reply>& answers) : m_answers(answers) {}

    std::optional<QString> text(const QByteArray& key) override
    {
        const auto answer = m_answers.find(key);
        return answer == m_answers.end() ? std::nullopt
                                         : std::make_optional(replyText(key, answer->text));
    }

    std::optional<int> number(const QByteArray& key) override
    {
        const auto answer = m_answers.find(key);
        return answer == m_answers.end() ? std::nullopt : std::make_optional(answer->integer);
    }

private:
    const QHash<QByteArray, Reply>& m_answers;
};

} // namespace

bool RunWitness::sending(Operation operation, const QByteArray& text)
{
    if (precedesRun(operation, text))
        endRun();
    if (!RunMonitor::belongsToRun(operation, text))
        return true;
    if (m_run == Run::None) {
        m_run = Run::UnderWay;
        emit runBegins();
    }
    return isRunning();
}

void RunWitness::answered(Operation operation, const QByteArray& text,
                          const std::optional<Reply>& reply)
{
    if (isRestart(operation, text) && !reply)
        emit restartUnanswered();
    else if (isRestart(operation, text) && !isErrorReply(reply->text))
        emit restartAccepted();
    if (operation != Operation::GetString && operation != Operation::GetInt)
        return;
    if (!reply || !reply->ok) {
        m_answers.remove(text);
        return;
    }
    m_answers.insert(text, *reply);
    m_known.insert(text, *reply);
}

SystemReport RunWitness::lastAnswers() const
{
    Memory memory(m_answers);
    return SystemReport::ask(memory);
}

SystemReport RunWitness::lastKnown() const
{
    Memory memory(m_known);
    return SystemReport::ask(memory);
}
