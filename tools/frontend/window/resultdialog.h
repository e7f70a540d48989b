#pragma once

#include <plannedrun.h>

#include <QDialog>
#include <QUrl>

#include <functional>

class QLabel;
class QTableWidget;

/// Shows what became of a run of updates, device by device, and hands out its log file.
class ResultDialog : public QDialog
{
    Q_OBJECT

public:
    /// Opens a file with what the desktop has for it. @return whether there is something
    using Open = std::function<bool(const QUrl&)>;

    /// A window without a run, not yet shown.
    explicit ResultDialog(QWidget* parent = nullptr);

    /// @param logFile that the button opens
    void showRun(const PlannedRun& run, const QString& logFile);

    /// Replaces the desktop's way to open a file, which says whether there is one.
    void setOpen(const Open& open) { m_open = open; }

private:
    void fill(const PlannedRun& run);
    void adaptColumns();
    void openLog();
    void copyLog();
    void tell(const QString& text);
    void adaptSize();

    QLabel* m_summary;
    QTableWidget* m_table;
    QLabel* m_message;
    QString m_logFile;
    QString m_logText;
    Open m_open;
};
