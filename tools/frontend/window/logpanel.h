#pragma once

#include <QDir>
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
    /// An empty log.
    explicit LogPanel(QWidget* parent = nullptr);

    /// The log itself, to which messages are added; owned by the panel.
    LogView& view() { return *m_view; }

    /// Sets the folder that is proposed for a saved log; the user's home if none is set.
    void setSaveFolder(const QString& folder) { m_saveFolder = folder; }

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
    QString m_saveFolder = QDir::homePath();
};
