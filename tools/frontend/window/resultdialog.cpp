#include "resultdialog.h"

#include "windowsize.h"

#include <QApplication>
#include <QClipboard>
#include <QDesktopServices>
#include <QDir>
#include <QFontMetrics>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr int maxShownRows = 12;
// In widths of a letter: remarks longer than that are wrapped.
constexpr int remarkLetters = 48;
constexpr int columnGap = 12;

QLabel* makeLabel(const QString& name)
{
    auto* label = new QLabel;
    label->setObjectName(name);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    return label;
}

QFont boldOf(QFont font)
{
    font.setBold(true);
    return font;
}

QLabel* makeSummary()
{
    QLabel* label = makeLabel(QStringLiteral("label_summary"));
    label->setFont(boldOf(label->font()));
    return label;
}

QTableWidget* makeTable()
{
    QStringList titles;
    for (const ResultColumn& column : resultColumns())
        titles += column.title;
    auto* table = new QTableWidget(0, titles.size());
    table->setObjectName(QStringLiteral("table_results"));
    table->setAccessibleName(QApplication::translate("ResultDialog", "Results"));
    table->setHorizontalHeaderLabels(titles);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setAlternatingRowColors(true);
    table->setShowGrid(false);
    table->setTabKeyNavigation(false);
    table->verticalHeader()->hide();
    QHeaderView* header = table->horizontalHeader();
    header->setHighlightSections(false);
    header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    header->setSectionsClickable(false);
    header->setStretchLastSection(true);
    return table;
}

QPushButton* makeButton(const QString& text, const QString& name)
{
    auto* button = new QPushButton(text);
    button->setObjectName(name);
    button->setAutoDefault(false);
    return button;
}

int columnOf(ResultField field)
{
    const QVector<ResultColumn> columns = resultColumns();
    const auto* found = std::find_if(columns.begin(), columns.end(),
                                     [&](const ResultColumn& it) { return it.field == field; });
    return static_cast<int>(found - columns.begin());
}

} // namespace

ResultDialog::ResultDialog(QWidget* parent)
    : QDialog(parent), m_summary(makeSummary()), m_table(makeTable()),
      m_message(makeLabel(QStringLiteral("label_message"))), m_open(QDesktopServices::openUrl)
{
    setObjectName(QStringLiteral("updateResultDialog"));
    setWindowTitle(tr("Results of the Update"));
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);

    auto* open = makeButton(tr("&Open log file"), QStringLiteral("pushButton_openLog"));
    auto* copy = makeButton(tr("&Copy"), QStringLiteral("pushButton_copyLog"));
    auto* close = makeButton(tr("C&lose"), QStringLiteral("pushButton_close"));
    copy->setToolTip(tr("Copy the log file's text to the clipboard"));
    close->setDefault(true);
    connect(open, &QPushButton::clicked, this, &ResultDialog::openLog);
    connect(copy, &QPushButton::clicked, this, &ResultDialog::copyLog);
    connect(close, &QPushButton::clicked, this, &QDialog::accept);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(open);
    buttons->addWidget(copy);
    buttons->addStretch();
    buttons->addWidget(close);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_summary);
    layout->addWidget(m_table, 1);
    layout->addWidget(m_message);
    layout->addLayout(buttons);
    close->setFocus();
}

void ResultDialog::showRun(const PlannedRun& run, const QString& logFile)
{
    m_logFile = logFile;
    m_logText = run.logText();
    tell(QString());
    fill(run);
    if (!isVisible())
        adaptSize();
    QDialog::show();
    activateWindow();
}

void ResultDialog::fill(const PlannedRun& run)
{
    m_summary->setText(run.summary());
    m_table->setRowCount(run.updates.size());
    for (int row = 0; row < run.updates.size(); ++row) {
        const QStringList texts = resultTexts(run.updates.at(row));
        for (int column = 0; column < texts.size(); ++column)
            m_table->setItem(row, column, new QTableWidgetItem(texts.at(column)));
        const bool isFailed = run.updates.at(row).outcome == Outcome::Failed;
        m_table->item(row, columnOf(ResultField::Outcome))
            ->setFont(isFailed ? boldOf(font()) : font());
    }
    adaptColumns();
}

void ResultDialog::adaptColumns()
{
    m_table->resizeColumnsToContents();
    for (int column = 0; column < m_table->columnCount(); ++column)
        m_table->setColumnWidth(column, m_table->columnWidth(column) + columnGap);
    // A wrapped text has no width of its own to go by.
    const QFontMetrics metrics = m_table->fontMetrics();
    const int remarkColumn = columnOf(ResultField::Remark);
    int width = m_table->horizontalHeader()->sectionSizeHint(remarkColumn);
    for (int row = 0; row < m_table->rowCount(); ++row)
        width = qMax(width, metrics.horizontalAdvance(m_table->item(row, remarkColumn)->text()));
    const int widest = metrics.averageCharWidth() * remarkLetters;
    m_table->setColumnWidth(remarkColumn, qMin(width, widest) + columnGap);
    m_table->resizeRowsToContents();
}

// As large as the table, as long as the screen has room for it.
void ResultDialog::adaptSize()
{
    const int frame = 2 * m_table->frameWidth();
    int height = frame + m_table->horizontalHeader()->sizeHint().height();
    for (int row = 0; row < qMin(m_table->rowCount(), maxShownRows); ++row)
        height += m_table->rowHeight(row);
    m_table->setMinimumHeight(qMin(height, 3 * m_table->horizontalHeader()->sizeHint().height()));
    const QMargins margins = layout()->contentsMargins();
    const QSize table(m_table->horizontalHeader()->length() + frame +
                          m_table->style()->pixelMetric(QStyle::PM_ScrollBarExtent),
                      height);
    const int width = table.width() + margins.left() + margins.right();
    const int others = layout()->totalHeightForWidth(width) - m_table->sizeHint().height();
    resize(fittingSize(*this, {width, others + height}));
}

void ResultDialog::openLog()
{
    if (m_open(QUrl::fromLocalFile(m_logFile)))
        tell(tr("Opened: %1").arg(QDir::toNativeSeparators(m_logFile)));
    else
        tell(tr("No program was found that opens the log file: %1")
                 .arg(QDir::toNativeSeparators(m_logFile)));
}

void ResultDialog::copyLog()
{
    QApplication::clipboard()->setText(m_logText);
    tell(tr("Copied."));
}

void ResultDialog::tell(const QString& text)
{
    m_message->setText(text);
    m_message->setVisible(!text.isEmpty());
}
