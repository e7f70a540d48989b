#include "banner.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QStyle>

namespace {

constexpr int shareWidth = 26; // in characters

} // namespace

Banner::Banner(QWidget* parent)
    : QFrame(parent), m_title(new QLabel), m_lines(new QLabel), m_share(new QProgressBar),
      m_offer(new QPushButton)
{
    setObjectName(QStringLiteral("banner"));
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Highlight);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
    auto* icon = new QLabel;
    const int size = style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, this);
    icon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(size));
    QFont bold = m_title->font();
    bold.setBold(true);
    m_title->setFont(bold);
    for (QLabel* label : {m_title, m_lines}) {
        label->setWordWrap(true);
        label->setTextFormat(Qt::PlainText);
    }
    m_share->setTextVisible(false);
    m_share->setFixedWidth(fontMetrics().averageCharWidth() * shareWidth);
    m_offer->setObjectName(QStringLiteral("pushButton_banner"));
    connect(m_offer, &QPushButton::clicked, this, &Banner::accepted);

    auto* texts = new QVBoxLayout;
    texts->addWidget(m_title);
    texts->addWidget(m_lines);
    auto* side = new QVBoxLayout;
    side->addStretch();
    side->addWidget(m_offer);
    side->addWidget(m_share);
    side->addStretch();
    auto* layout = new QHBoxLayout(this);
    layout->addWidget(icon);
    layout->addLayout(texts, 1);
    layout->addLayout(side);
    hide();
    setShare(-1);
    offer(QString());
}

void Banner::tell(const QString& title, const QStringList& lines)
{
    m_title->setText(title);
    m_lines->setText(lines.join(QLatin1Char('\n')));
    m_lines->setHidden(lines.isEmpty());
    if (!isHidden() && accessibleName() == title)
        return;
    setAccessibleName(title);
    show();
    QAccessibleEvent alert(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

void Banner::setShare(int percent, const QString& name)
{
    m_share->setAccessibleName(name);
    m_share->setHidden(percent < 0);
    m_share->setValue(qMax(0, percent));
}

void Banner::offer(const QString& text)
{
    m_offer->setText(text);
    m_offer->setHidden(text.isEmpty());
}
