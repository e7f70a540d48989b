#include "transcript.h"

#include <QFile>

#include <algorithm>
#include <iterator>

namespace {

/// Reads the words of one line. The reason of the first failure stays.
class LineReader
{
public:
    explicit LineReader(const QByteArray& line) : m_line(line) {}

    bool isAtEnd() const { return m_at >= m_line.size(); }
    bool hasFailed() const { return !m_reason.isEmpty(); }
    const QString& reason() const { return m_reason; }
    int position() const { return m_at; }
    QByteArray from(int position) const { return m_line.mid(position, m_at - position); }

    /// Passes the time in front of a call, which may be missing.
    void skipTime();
    /// Letters, digits and underscores; empty if there are none.
    QByteArray word();
    int number();
    VersionInfo version();
    QByteArray quoted();
    /// Passes @p text, which has to come here.
    void expect(const char* text);
    void expectEnd();
    void fail(const QString& reason);

private:
    bool isDigit(int position) const { return at(position) >= '0' && at(position) <= '9'; }
    char escaped();
    char at(int position) const;
    void failHere(const char* expected);

    const QByteArray& m_line;
    int m_at = 0;
    QString m_reason;
};

void LineReader::fail(const QString& reason)
{
    if (!hasFailed())
        m_reason = reason;
}

void LineReader::failHere(const char* expected)
{
    fail(QStringLiteral("%1 is expected at column %2").arg(QLatin1String(expected)).arg(m_at + 1));
}

void LineReader::skipTime()
{
    while (at(m_at) == ' ')
        ++m_at;
    const int start = m_at;
    while (isDigit(m_at))
        ++m_at;
    if (m_at > start)
        expect(" ");
}

QByteArray LineReader::word()
{
    const int start = m_at;
    const auto isPart = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               c == '_';
    };
    while (isPart(at(m_at)))
        ++m_at;
    return from(start);
}

int LineReader::number()
{
    const int start = m_at;
    int end = m_at + (at(m_at) == '-' ? 1 : 0);
    while (isDigit(end))
        ++end;
    bool ok = false;
    const int value = m_line.mid(start, end - start).toInt(&ok);
    if (ok)
        m_at = end;
    else
        failHere("a number");
    return value;
}

VersionInfo LineReader::version()
{
    VersionInfo version;
    version.ma = number();
    expect(" ");
    version.mi = number();
    expect(" ");
    version.pa = number();
    return version;
}

void LineReader::expect(const char* text)
{
    const auto length = static_cast<int>(qstrlen(text));
    if (m_line.mid(m_at, length) == text)
        m_at += length;
    else
        failHere(qPrintable(QStringLiteral("\"%1\"").arg(QLatin1String(text))));
}

void LineReader::expectEnd()
{
    if (!isAtEnd())
        failHere("the end of the line");
}

int hexDigit(char c)
{
    return c == '\0' ? -1 : QByteArrayLiteral("0123456789abcdef").indexOf(c);
}

char LineReader::at(int position) const
{
    return position < m_line.size() ? m_line.at(position) : '\0';
}

// Stands behind the backslash.
char LineReader::escaped()
{
    const char c = at(m_at);
    const int high = hexDigit(at(m_at + 1));
    const int low = hexDigit(at(m_at + 2));
    const int byte = high * 16 + low;
    const bool isByte = c == 'x' && high >= 0 && low >= 0 && byte > 0;
    if (!isByte && c != '"' && c != '\\')
        failHere("one of \\\" \\\\ \\x01 to \\xff");
    m_at += isByte ? 3 : 1;
    return isByte ? static_cast<char>(byte) : c;
}

QByteArray LineReader::quoted()
{
    QByteArray text;
    expect("\"");
    while (!hasFailed() && at(m_at) != '"') {
        const char c = at(m_at);
        if (c < ' ' || c > '~')
            failHere(isAtEnd() ? "a closing quote" : "printable ASCII");
        ++m_at;
        text += c == '\\' ? escaped() : c;
    }
    if (!hasFailed())
        ++m_at;
    return text;
}

/// What stands behind the name of an operation, one letter for each word: a number or a text.
struct CallForm
{
    const char* operation;
    const char* arguments;
    enum Outcome
    {
        Nothing,
        Result,
        ResultAndText,
        ResultAndNumber,
        Text,
    } outcome;
};

constexpr CallForm callForms[] = {
    {"prepare_reply", "nnn", CallForm::Nothing},  {"send_command", "t", CallForm::ResultAndText},
    {"poll_reply", "n", CallForm::ResultAndText}, {"get_string", "t", CallForm::ResultAndText},
    {"get_int", "t", CallForm::ResultAndNumber},  {"set_value", "t", CallForm::Result},
    {"post_message", "ttnt", CallForm::Nothing},  {"register_receiver", "t", CallForm::Nothing},
    {"get_address", "", CallForm::Text},
};

QByteArray readReply(LineReader& reader)
{
    const QByteArray reply = reader.quoted();
    if (reply.size() > TranscriptForm::replyBytes)
        reader.fail(QStringLiteral("a reply has at most %1 bytes").arg(TranscriptForm::replyBytes));
    return reply;
}

void readOutcome(LineReader& reader, CallForm::Outcome form, TranscriptCall* call)
{
    if (form == CallForm::Nothing)
        return;
    reader.expect(" = ");
    if (form == CallForm::Text) {
        call->reply = readReply(reader);
        return;
    }
    call->result = reader.number();
    if (reader.isAtEnd() || form == CallForm::Result)
        return;
    reader.expect(" ");
    if (form == CallForm::ResultAndText)
        call->reply = readReply(reader);
    else
        call->value = reader.number();
}

TranscriptCall readCall(LineReader& reader, int lineNumber)
{
    TranscriptCall call{lineNumber, {}, 0, std::nullopt, std::nullopt};
    reader.skipTime();
    const int start = reader.position();
    const QByteArray operation = reader.word();
    const auto* form =
        std::find_if(std::begin(callForms), std::end(callForms),
                     [&](const CallForm& candidate) { return operation == candidate.operation; });
    if (form == std::end(callForms)) {
        reader.fail(QStringLiteral("there is no such call"));
        return call;
    }
    for (const char* argument = form->arguments; *argument != '\0'; ++argument) {
        reader.expect(" ");
        if (*argument == 'n')
            reader.number();
        else
            reader.quoted();
    }
    call.call = reader.from(start);
    readOutcome(reader, form->outcome, &call);
    reader.expectEnd();
    return call;
}

/// Hands out the lines of a transcript that count: no empty ones, no comments.
class Lines
{
public:
    explicit Lines(const QByteArray& text) : m_text(text) {}

    /// @return false at the end, and at a line that is cut off
    bool next();
    bool isCutOff() const { return m_isCutOff; }
    const QByteArray& line() const { return m_line; }
    int number() const { return m_number; }

private:
    const QByteArray& m_text;
    QByteArray m_line;
    int m_at = 0;
    int m_number = 0;
    bool m_isCutOff = false;
};

bool Lines::next()
{
    do {
        if (m_at >= m_text.size())
            return false;
        ++m_number;
        const int end = m_text.indexOf('\n', m_at);
        m_isCutOff = end < 0;
        if (m_isCutOff)
            return false;
        m_line = m_text.mid(m_at, end - m_at);
        m_at = end + 1;
        // Mail and editors of other systems add it.
        if (m_line.endsWith('\r'))
            m_line.chop(1);
    } while (m_line.isEmpty() || m_line.startsWith('#'));
    return true;
}

class TranscriptReader
{
public:
    explicit TranscriptReader(const QByteArray& text) : m_lines(text) {}

    TranscriptHead readHead();
    QVector<TranscriptCall> readCalls();
    int lastLine() const { return m_lines.number(); }
    /// "line N: REASON"; empty if all is well.
    const QString& error() const { return m_error; }

private:
    /// Reads a line that begins with @p key; @p read takes what stands behind it.
    template <typename Read>
    void readHeadLine(const char* key, const Read& read);
    bool nextLine();
    void fail(const QString& reason);

    Lines m_lines;
    QString m_error;
};

void TranscriptReader::fail(const QString& reason)
{
    if (m_error.isEmpty() && !reason.isEmpty())
        m_error = QStringLiteral("line %1: %2").arg(qMax(1, m_lines.number())).arg(reason);
}

bool TranscriptReader::nextLine()
{
    if (!m_error.isEmpty())
        return false;
    const bool isLine = m_lines.next();
    if (m_lines.isCutOff())
        fail(QStringLiteral("the line is cut off"));
    return isLine;
}

template <typename Read>
void TranscriptReader::readHeadLine(const char* key, const Read& read)
{
    if (!nextLine()) {
        fail(QStringLiteral("the head ends before its line \"%1\"").arg(QLatin1String(key)));
        return;
    }
    LineReader line(m_lines.line());
    line.expect(key);
    line.expect(" ");
    read(line);
    line.expectEnd();
    fail(line.reason());
}

void readFormVersion(LineReader& line)
{
    const int version = line.number();
    if (version != TranscriptForm::version)
        line.fail(QStringLiteral("version %1 of the form is not known").arg(version));
}

void readYesOrNo(LineReader& line, bool* answer)
{
    const QByteArray word = line.word();
    *answer = word == "yes";
    if (!*answer && word != "no")
        line.fail(QStringLiteral("\"yes\" or \"no\" is expected"));
}

TranscriptHead TranscriptReader::readHead()
{
    VersionInfo pt;
    VersionInfo protocol;
    VersionInfo ct;
    QByteArray model;
    bool observer = false;
    readHeadLine("transcript", readFormVersion);
    readHeadLine("system_pt", [&](LineReader& line) { pt = line.version(); });
    readHeadLine("protocol", [&](LineReader& line) { protocol = line.version(); });
    readHeadLine("system_ct", [&](LineReader& line) { ct = line.version(); });
    readHeadLine("model", [&](LineReader& line) { model = line.quoted(); });
    readHeadLine("observer", [&](LineReader& line) { readYesOrNo(line, &observer); });
    return {BackendVersions(pt, protocol, ct, QString::fromUtf8(model)), observer};
}

QVector<TranscriptCall> TranscriptReader::readCalls()
{
    QVector<TranscriptCall> calls;
    while (nextLine()) {
        LineReader line(m_lines.line());
        calls.append(readCall(line, m_lines.number()));
        fail(line.reason());
    }
    return calls;
}

} // namespace

std::optional<Transcript> Transcript::read(const QString& fileName, QString* error)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("%1: %2").arg(fileName, file.errorString());
        return std::nullopt;
    }
    const QByteArray text = file.readAll();
    return parse(text, fileName, error);
}

std::optional<Transcript> Transcript::parse(const QByteArray& text, const QString& fileName,
                                            QString* error)
{
    TranscriptReader reader(text);
    TranscriptHead head = reader.readHead();
    QVector<TranscriptCall> calls = reader.readCalls();
    if (!reader.error().isEmpty()) {
        *error = QStringLiteral("%1: %2").arg(fileName, reader.error());
        return std::nullopt;
    }
    return Transcript{fileName, head, calls, reader.lastLine()};
}
