#include "checksumlist.h"

#include <QSet>

#include <algorithm>
#include <optional>

namespace {

constexpr int digestDigits = 64;
constexpr int nameColumn = digestDigits + 2; // a blank and the mark stand before a name
constexpr int mostProblems = 100;            // of a file that may be anything

struct Escape
{
    char letter;
    char meaning;
};

constexpr Escape escapes[] = {{'\\', '\\'}, {'n', '\n'}, {'r', '\r'}};

QByteArray escaped(const QByteArray& name)
{
    QByteArray result;
    for (const char byte : name) {
        const auto* escape = std::find_if(std::begin(escapes), std::end(escapes),
                                          [byte](const Escape& e) { return e.meaning == byte; });
        if (escape == std::end(escapes))
            result += byte;
        else
            (result += '\\') += escape->letter;
    }
    return result;
}

std::optional<QByteArray> unescaped(const QByteArray& text)
{
    QByteArray result;
    for (int i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            result += text[i];
            continue;
        }
        const char letter = ++i < text.size() ? text[i] : '\0';
        const auto* escape = std::find_if(std::begin(escapes), std::end(escapes),
                                          [letter](const Escape& e) { return e.letter == letter; });
        if (escape == std::end(escapes))
            return std::nullopt;
        result += escape->meaning;
    }
    return result;
}

bool isHexadecimal(const QByteArray& text)
{
    return std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
    });
}

std::optional<SealedFile> readLine(QByteArray line)
{
    const bool isEscaped = line.startsWith('\\');
    if (isEscaped)
        line.remove(0, 1);
    if (line.size() <= nameColumn || line[digestDigits] != ' ' ||
        (line[digestDigits + 1] != ' ' && line[digestDigits + 1] != '*'))
        return std::nullopt;
    const QByteArray digest = line.left(digestDigits);
    const QByteArray written = line.mid(nameColumn);
    const std::optional<QByteArray> name = isEscaped ? unescaped(written) : written;
    if (!isHexadecimal(digest) || !name)
        return std::nullopt;
    return SealedFile{*name, QByteArray::fromHex(digest)};
}

// What keeps a name from being that of a file in the folder; empty if nothing does.
QString complaintAbout(const QByteArray& name)
{
    if (name.contains('\0') || name.contains('/') || name == "." || name == "..")
        return QStringLiteral("%1 is no name of a file in this folder").arg(shownName(name));
    if (isPartOfSeal(name))
        return QStringLiteral("%1 cannot be listed, as it is part of the seal")
            .arg(shownName(name));
    return QString();
}

QString shownBytes(const QByteArray& bytes)
{
    QString result;
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        if (value >= 0x20 && value < 0x7f && byte != '\\')
            result += QLatin1Char(byte);
        else
            result += QStringLiteral("\\x%1").arg(value, 2, 16, QLatin1Char('0'));
    }
    return result;
}

} // namespace

bool isPartOfSeal(const QByteArray& name)
{
    return name == checksumListName || name == signatureName;
}

QByteArray checksumListText(QVector<SealedFile> files)
{
    std::sort(files.begin(), files.end(),
              [](const SealedFile& a, const SealedFile& b) { return a.name < b.name; });
    QByteArray text;
    for (const SealedFile& file : qAsConst(files)) {
        const QByteArray name = escaped(file.name);
        if (name != file.name)
            text += '\\';
        text += file.sha256.toHex() + "  " + name + '\n';
    }
    return text;
}

ChecksumList readChecksumList(const QByteArray& text)
{
    ChecksumList list;
    QSet<QByteArray> names;
    QList<QByteArray> lines = text.split('\n');
    if (lines.last().isEmpty())
        lines.removeLast();
    for (int i = 0; i < lines.size(); ++i) {
        const std::optional<SealedFile> file = readLine(lines[i]);
        QString complaint;
        if (!file)
            complaint = QStringLiteral("is not a checksum and a name as sha256sum writes them");
        else if (names.contains(file->name))
            complaint = QStringLiteral("%1 is listed twice").arg(shownName(file->name));
        else
            complaint = complaintAbout(file->name);

        if (complaint.isEmpty()) {
            names.insert(file->name);
            list.files.append(*file);
            continue;
        }
        list.problems += QStringLiteral("line %1: %2").arg(i + 1).arg(complaint);
        if (list.problems.size() == mostProblems) {
            list.problems += QStringLiteral("is read no further, as too many lines are wrong");
            break;
        }
    }
    return list;
}

QString shownName(const QByteArray& name)
{
    const QString decoded = QString::fromUtf8(name);
    if (decoded.toUtf8() != name)
        return shownBytes(name);
    QString result;
    for (const uint character : decoded.toUcs4()) {
        const QString text = QString::fromUcs4(&character, 1);
        const QByteArray bytes = text.toUtf8();
        if (const QByteArray escape = escaped(bytes); escape != bytes)
            result += QString::fromLatin1(escape);
        else
            result += QChar::isPrint(character) ? text : shownBytes(bytes);
    }
    return result;
}
