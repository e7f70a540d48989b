#include "shownprogress.h"

ShownProgress::ShownProgress(DialogFixture* fixture) : m_fixture(fixture)
{
    connect(fixture->bar(), &QProgressBar::valueChanged, this, &ShownProgress::note);
    fixture->channel.setHook([this](const QString&) { note(); });
}

ShownProgress::~ShownProgress()
{
    m_fixture->channel.setHook({});
}

void ShownProgress::note()
{
    const QString state =
        QStringLiteral("%1 | %2 | %3")
            .arg(m_fixture->label("label_what")->text(), m_fixture->label("label_msg")->text())
            .arg(m_fixture->bar()->value());
    if (m_states.isEmpty() || m_states.last() != state)
        m_states += state;
}

QVector<int> ShownProgress::values() const
{
    QVector<int> values;
    for (const QString& state : m_states) {
        const int value = state.section(QStringLiteral(" | "), -1).toInt();
        if (values.isEmpty() || values.last() != value)
            values += value;
    }
    return values;
}
