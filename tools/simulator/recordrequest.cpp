#include "recordrequest.h"

#include <QList>

#include <algorithm>

namespace {

std::optional<int> plainNumber(const QByteArray& word, int minDigits = 1)
{
    const bool onlyDigits =
        std::all_of(word.begin(), word.end(), [](char byte) { return byte >= '0' && byte <= '9'; });
    bool fits = false;
    const int number = word.toInt(&fits);
    if (!onlyDigits || !fits || word.size() < minDigits)
        return std::nullopt;
    return number;
}

// The last words of every record: count, number and text, from word @p first on. The text may be
// empty, but its blank must be there.
void readRecord(RecordRequest* request, const QList<QByteArray>& words, int first)
{
    if (words.size() != first + 3)
        return;
    request->count = plainNumber(words.at(first)).value_or(0);
    request->number = plainNumber(words.at(first + 1)).value_or(0);
    request->text = words.at(first + 2);
}

} // namespace

std::optional<RecordRequest> RecordRequest::fromSetting(const QByteArray& setting)
{
    RecordRequest request;
    if (setting.startsWith("system ctupdt "))
        request.component = PayloadComponent::ControllerFirmware;
    else if (!setting.startsWith("system update "))
        return std::nullopt;
    readRecord(&request, setting.split(' '), 2);
    return request;
}

std::optional<RecordRequest> RecordRequest::fromCommand(const QByteArray& command)
{
    if (!command.startsWith("vornix2 set camera update "))
        return std::nullopt;
    const QList<QByteArray> words = command.split(' ');
    const std::optional<int> camera = numberBehind('c', words.value(4), 2);
    if (!camera || *camera < 1)
        return std::nullopt;

    RecordRequest request;
    request.component = PayloadComponent::CameraFirmware;
    request.camera = *camera - 1;
    readRecord(&request, words, 5);
    return request;
}

std::optional<int> numberBehind(char letter, const QByteArray& word, int minDigits)
{
    if (!word.startsWith(letter))
        return std::nullopt;
    return plainNumber(word.mid(1), minDigits);
}
