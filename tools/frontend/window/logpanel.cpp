#include "logpanel.h"

#include "logview.h"

#include <wholefile.h>

#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QShortcut>

namespace {

constexpr int minShownLines = 2;

} // namespace

LogPanel::LogPanel(QWidget* parent)
    : QGroupBox(tr("Log"), parent), m_view(new LogView), m_filter(new QLineEdit),
      m_sender(new QComboBox), m_count(new QLabel), m_save(new QPushButton(tr("&Save log")))
{
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(makeControls());
    layout->addWidget(m_view);
    m_view->setMinimumHeight(minShownLines * m_view->fontMetrics().lineSpacing());
    makeSaveMenu();

    connect(m_filter, &QLineEdit::textChanged, this, &LogPanel::applyFilter);
    connect(m_sender, QOverload<int>::of(&QComboBox::activated), this, &LogPanel::applyFilter);
    connect(m_view, &LogView::added, this, &LogPanel::follow);
    connect(new QShortcut(QKeySequence::Find, this), &QShortcut::activated, m_filter, [this] {
        m_filter->setFocus(Qt::ShortcutFocusReason);
        m_filter->selectAll();
    });
    auto* escape = new QShortcut(Qt::Key_Escape, m_filter, nullptr, nullptr, Qt::WidgetShortcut);
    connect(escape, &QShortcut::activated, m_filter, &QLineEdit::clear);
}

QLayout* LogPanel::makeControls()
{
    m_filter->setObjectName(QStringLiteral("lineEdit_filter"));
    m_filter->setAccessibleName(tr("Filter of the log"));
    m_filter->setPlaceholderText(tr("Text to look for"));
    m_filter->setClearButtonEnabled(true);
    auto* filterLabel = new QLabel(tr("&Filter:"));
    filterLabel->setBuddy(m_filter);

    m_sender->setObjectName(QStringLiteral("comboBox_sender"));
    m_sender->setAccessibleName(tr("Sender"));
    m_sender->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    m_sender->addItem(tr("All"), QString());
    auto* senderLabel = new QLabel(tr("S&ender:"));
    senderLabel->setBuddy(m_sender);

    m_save->setObjectName(QStringLiteral("pushButton_saveLog"));

    auto* line = new QHBoxLayout;
    line->addWidget(filterLabel);
    line->addWidget(m_filter, 1);
    line->addWidget(senderLabel);
    line->addWidget(m_sender);
    line->addWidget(m_count);
    line->addWidget(m_save);
    return line;
}

void LogPanel::makeSaveMenu()
{
    auto* menu = new QMenu(m_save);
    menu->addAction(tr("&Whole log..."), this,
                    [this] { save(tr("Save the whole log"), m_view->wholeText()); });
    menu->addAction(tr("What is &shown..."), this,
                    [this] { save(tr("Save what the log shows"), m_view->shownText()); });
    m_save->setMenu(menu);
}

void LogPanel::applyFilter()
{
    m_view->setFilter({m_filter->text(), m_sender->currentData().toString()});
    updateCount();
}

void LogPanel::follow(const QString& sender)
{
    if (m_sender->findData(sender) < 0)
        m_sender->addItem(sender, sender);
    updateCount();
}

void LogPanel::updateCount()
{
    const bool isFiltered = !m_filter->text().isEmpty() || m_sender->currentIndex() > 0;
    m_count->setText(isFiltered
                         ? tr("%L1 of %L2").arg(m_view->shownCount()).arg(m_view->messageCount())
                         : QString());
}

void LogPanel::save(const QString& title, const QString& text)
{
    const QString path = QFileDialog::getSaveFileName(
        this, title, QDir(m_saveFolder).filePath(QStringLiteral("vornix3.log")),
        tr("Logs (*.log *.txt);;All files (*)"));
    QString error;
    if (!path.isEmpty() && !writeWholeFile(path, text.toUtf8(), &error))
        QMessageBox::warning(this, title, error);
}
