#include "runprogress.h"

#include <QLabel>
#include <QProgressBar>

QString labelText(const QWidget& window, const char* name)
{
    const auto* label = window.findChild<QLabel*>(QLatin1String(name));
    return label ? label->text() : QString();
}

bool RunProgress::look(const QWidget& updateDialog)
{
    m_percent = updateDialog.findChild<QProgressBar*>()->value();
    m_what = labelText(updateDialog, "label_what");
    m_message = labelText(updateDialog, "label_msg");
    const QString before = m_state;
    m_state = m_what + m_message + QString::number(m_percent);
    return m_state != before;
}

QString RunProgress::line()
{
    const QString step = m_what + QString::number(m_percent / 10);
    if (step == m_told || m_what.isEmpty())
        return QString();
    m_told = step;
    return QStringLiteral("%1 %2 % %3").arg(m_what).arg(m_percent, 3).arg(m_message);
}
