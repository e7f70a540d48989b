#include "reportedversion.h"

namespace {

QString firstWord(const QString& text)
{
    return text.section(QLatin1Char(' '), 0, 0);
}

bool belongsToNumber(QChar character)
{
    return character == QLatin1Char('.') ||
           (character >= QLatin1Char('0') && character <= QLatin1Char('9'));
}

} // namespace

VersionInfo reportedVersion(const QString& text)
{
    return VersionInfo::fromString(firstWord(text));
}

QString reportedAppendix(const QString& text)
{
    const QString word = firstWord(text);
    int end = word.startsWith(QLatin1Char('v'), Qt::CaseInsensitive) ? 1 : 0;
    while (end < word.size() && belongsToNumber(word.at(end)))
        ++end;
    return word.mid(end);
}
