#include "equipmentlines.h"

#include <equipmentlanguage.h>
#include <wirelanguage.h>

#include <algorithm>
#include <iterator>

namespace {

// More make no sense, and a line has to hold them all.
constexpr int maxArmedFaults = 100;
// A reply has to hold it with some words around it.
constexpr int maxNameCharacters = 100;

constexpr char introduction[] = "introduce";

EquipmentAnswer failed(const QString& reason)
{
    return {false, reason.toUtf8(), false};
}

EquipmentAnswer tellScenario(const SimulatedSystem& system)
{
    return {true, scenarioToJson(system.scenario()), false};
}

EquipmentAnswer tellIdentity(const SimulatedSystem& system)
{
    return {true, systemIdentity(scenarioToJson(system.scenario())), false};
}

EquipmentAnswer tellState(const SimulatedSystem& system)
{
    return {true, equipmentToJson(system), false};
}

EquipmentAnswer tellPower(const SimulatedSystem& system)
{
    return {true, powerTexts().of(system.power()).toLatin1(), false};
}

EquipmentAnswer watch(const SimulatedSystem& system)
{
    return {true, equipmentToJson(system), true};
}

/// A line that asks, by its first word.
struct Question
{
    const char* word;
    EquipmentAnswer (*answer)(const SimulatedSystem& system);
};

constexpr Question questions[] = {
    {"scenario", tellScenario}, {"state", tellState},       {"power", tellPower},
    {"watch", watch},           {"identity", tellIdentity},
};

EquipmentAnswer perform(SimulatedSystem& system, const EquipmentCommand& command)
{
    const bool arms = command.kind == EquipmentCommand::Kind::ArmFault;
    if (arms && system.armedFaults().size() >= maxArmedFaults)
        return failed(QStringLiteral("%1 faults are armed already; disarm takes them back")
                          .arg(maxArmedFaults));
    system.perform(command);
    return {true, QByteArray(), false};
}

EquipmentAnswer introduce(const QByteArray& name)
{
    const QString text =
        QString::fromUtf8(name).remove(QLatin1Char('"')).simplified().left(maxNameCharacters);
    return text.isEmpty() ? failed(QStringLiteral("a name is expected"))
                          : EquipmentAnswer{true, QByteArray(), false, text};
}

QString knownWords()
{
    QStringList words;
    for (const Question& question : questions)
        words += QLatin1String(question.word);
    return (words + commandWords() << QLatin1String(introduction)).join(QStringLiteral(", "));
}

} // namespace

EquipmentAnswer answerEquipmentLine(SimulatedSystem& system, const QByteArray& line)
{
    system.settle();
    QByteArray argument = line;
    const QByteArray word = takeWord(&argument);
    const auto* const question = std::find_if(std::begin(questions), std::end(questions),
                                              [&](const Question& it) { return word == it.word; });
    if (question != std::end(questions))
        return question->answer(system);
    if (word == introduction)
        return introduce(argument);
    if (!commandWords().contains(QLatin1String(word)))
        return failed(QStringLiteral("the bench knows: ") + knownWords());
    QString error;
    const std::optional<EquipmentCommand> command =
        readCommandLine(line, system.scenario(), &error);
    return command ? perform(system, *command) : failed(error);
}

QByteArray equipmentToJson(const SimulatedSystem& system)
{
    return reportToJson({system.state(), system.msUntilReachable()}, system.memory());
}
