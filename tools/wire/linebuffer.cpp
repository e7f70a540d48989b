#include "linebuffer.h"

#include <utility>

void LineBuffer::append(const QByteArray& bytes)
{
    int begin = 0;
    for (int end = bytes.indexOf('\n'); end >= 0; end = bytes.indexOf('\n', begin)) {
        appendPart(bytes.constData() + begin, end - begin);
        if (m_part.endsWith('\r'))
            m_part.chop(1);
        m_lines.push_back(std::exchange(m_part, QByteArray()));
        begin = end + 1;
    }
    appendPart(bytes.constData() + begin, bytes.size() - begin);
}

std::optional<QByteArray> LineBuffer::takeLine()
{
    if (m_lines.empty())
        return std::nullopt;
    QByteArray line = std::move(m_lines.front());
    m_lines.pop_front();
    return line;
}

void LineBuffer::clear()
{
    m_part.clear();
    m_lines.clear();
}

void LineBuffer::appendPart(const char* bytes, int size)
{
    m_part.append(bytes, qMin(size, m_maxBytes - m_part.size()));
}
