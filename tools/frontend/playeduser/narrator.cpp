#include "narrator.h"

#include <cstdio>

namespace {

constexpr int kindWidth = 9;

} // namespace

void Narrator::tell(const QString& kind, const QString& text)
{
    m_told += QStringLiteral("%1: %2").arg(kind, text);
    const QString line = QStringLiteral("%1 s  %2 %3\n")
                             .arg(static_cast<double>(m_clock.elapsed()) / 1000.0, 7, 'f', 2)
                             .arg(kind.leftJustified(kindWidth), text);
    std::fputs(line.toLocal8Bit().constData(), stdout);
    std::fflush(stdout);
}
