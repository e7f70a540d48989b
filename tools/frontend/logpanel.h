#pragma once

#include <QGroupBox>

class LogView;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

/// The log with what is done to it: it is filtered by text and by sender, and saved to a file.
class LogPanel : public QGroupBox
{
    Q_OBJECT

public:
    explicit LogPanel(QWidget* parent = nullptr);

    LogView& view() { return *m_view; }

    /// Writes @p text into a file. One that stood there stays as it was if that fails.
    /// @param error must not be null; on failure the file and the reason
    static bool writeFile(const QString& path, const QString& text, QString* error);

private:
    QLayout* makeControls();
    void makeSaveMenu();
    void applyFilter();
    void follow(const QString& sender);
    void updateCount();
    void save(const QString& title, const QString& text);

    LogView* m_view;
    QLineEdit* m_filter;
    QComboBox* m_sender;
    QLabel* m_count;
    QPushButton* m_save;
};
