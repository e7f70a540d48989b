#include "wirelanguage.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

/// The word before a text, and the operation that it stands for.
struct Keyword
{
    const char* word;
    Operation operation;
};

constexpr Keyword keywords[] = {{"get", Operation::GetString},
                                {"int", Operation::GetInt},
                                {"set", Operation::SetValue},
                                {"command", Operation::Command}};

constexpr char commandWord[] = "vornix2";
constexpr char equipmentWord[] = "bench";
constexpr char okWord[] = "ok";
constexpr char failedWord[] = "failed";

QByteArray takeTag(QByteArray* line)
{
    return line->startsWith('#') ? takeWord(line) : QByteArray();
}

QByteArray tagged(const QByteArray& tag, const QByteArray& rest)
{
    return (tag.isEmpty() ? rest : tag + ' ' + rest) + '\n';
}

} // namespace

QByteArray takeWord(QByteArray* line)
{
    const int blank = line->indexOf(' ');
    if (blank < 0)
        return std::exchange(*line, QByteArray());
    QByteArray word = line->left(blank);
    line->remove(0, blank + 1);
    return word;
}

std::optional<QByteArray> requestLine(const QByteArray& tag, Operation operation,
                                      const QByteArray& text)
{
    if (text.contains('\n') || text.endsWith('\r'))
        return std::nullopt;
    // Commands can be told by their first word, so that they read as they are.
    if (operation == Operation::Command && text.startsWith(commandWord))
        return tagged(tag, text);
    const auto* const keyword =
        std::find_if(std::begin(keywords), std::end(keywords),
                     [operation](const Keyword& it) { return it.operation == operation; });
    return tagged(tag, QByteArray(keyword->word) + ' ' + text);
}

QByteArray equipmentLine(const QByteArray& tag, const QByteArray& text)
{
    return tagged(tag, QByteArray(equipmentWord) + ' ' + text);
}

WireRequest readRequest(const QByteArray& line)
{
    WireRequest request;
    request.text = line;
    request.tag = takeTag(&request.text);
    if (request.text.startsWith(commandWord)) {
        request.kind = WireRequest::Kind::Command;
        return request;
    }
    const QByteArray word = takeWord(&request.text);
    if (word == equipmentWord)
        request.kind = WireRequest::Kind::Equipment;
    for (const Keyword& keyword : keywords) {
        if (word == keyword.word) {
            request.kind = WireRequest::Kind::Command;
            request.operation = keyword.operation;
        }
    }
    return request;
}

QByteArray replyLine(const QByteArray& tag, bool ok, const QByteArray& text)
{
    const QByteArray word(ok ? okWord : failedWord);
    return tagged(tag, text.isEmpty() ? word : word + ' ' + QByteArray(text).replace('\n', ' '));
}

std::optional<WireReply> readReply(const QByteArray& line)
{
    WireReply reply;
    reply.text = line;
    reply.tag = takeTag(&reply.text);
    const QByteArray word = takeWord(&reply.text);
    if (word != okWord && word != failedWord)
        return std::nullopt;
    reply.ok = word == okWord;
    return reply;
}
