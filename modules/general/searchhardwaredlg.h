#pragma once

#include "ui_searchhardwaredlg.h"

#include <QDialog>
#include <QString>

class IOManager;

/// Has the controller search for its hardware again, and waits for it behind a busy display.
///
/// Runs by itself with the mode text "cameraupdate", and on the user's confirmation with any other.
/// Both outcomes of a search accept the dialog; they differ in the line in the host's log. User
/// interface thread only; the outcome is waited for on it, for up to 90 seconds.
class SearchHardwareDlg : public QDialog
{
    Q_OBJECT

public:
    /// Asks for what decides the time-out. @param iom channel, not owned @param type mode text
    SearchHardwareDlg(QWidget* parent, IOManager* iom, QString type);
    ~SearchHardwareDlg() override;

public slots:
    /// Runs the dialog modally. @return 1 after a search, 0 if the user cancelled before it
    int update_and_exec();

private slots:
    void on_pushButton_ok_clicked();
    void on_pushButton_cancel_clicked();
    void onTimer();

private:
    void calcTimeoutSeconds();
    /// Escape counts as Cancel: from the start of the search on the user cannot leave, as the reply
    /// goes into this object.
    void reject() override;

    Ui::SearchHardwareDlgClass ui;
    IOManager* iom;
    int timeoutSeconds = 0;
    char m_res[200] = {};
    QString m_type;
    bool m_isReplyDue = false; ///< m_res has to live until poll_reply() has returned
};
