#include "scanbuffer.h"

#include <algorithm>

constexpr int bufferBytes = 256 * 1024;

ScanBuffer::ScanBuffer(QIODevice& device) : m_device(device), m_size(device.size())
{
    m_buffer.reserve(bufferBytes);
}

void ScanBuffer::seek(qint64 offset)
{
    if (offset >= m_start && offset <= m_start + m_buffer.size()) {
        m_position = static_cast<int>(offset - m_start);
        return;
    }
    m_start = offset;
    m_position = 0;
    m_buffer.resize(0);
}

bool ScanBuffer::refill(int count)
{
    const qint64 from = offset();
    if (from + count > m_size || !m_error.isEmpty())
        return false;
    // What is left moves to the front.
    const int left = m_buffer.size() - m_position;
    std::copy_n(m_buffer.constData() + m_position, left, m_buffer.data());
    m_start = from;
    m_position = 0;
    m_buffer.resize(bufferBytes);
    qint64 got = 0;
    if (m_device.seek(from + left))
        got = m_device.read(m_buffer.data() + left, bufferBytes - left);
    m_buffer.resize(left + static_cast<int>(std::max<qint64>(got, 0)));
    if (m_buffer.size() >= count)
        return true;
    m_error = got < 0 ? m_device.errorString()
                      : QStringLiteral("the file became shorter while it was read");
    return false;
}
