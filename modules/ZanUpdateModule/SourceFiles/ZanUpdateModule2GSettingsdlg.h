#pragma once

#include "ui_ZanUpdateModule2GSettingsdlg.h"

#include <QDialog>
#include <QList>
#include <QMessageBox>
#include <QString>
#include <QStringList>

#include <chrono>
#include <cstdio>

class BackendVersions;
class IOManager;
class NewFeatureDialog;
class QDomElement;
class QTimer;
class ZanController;
class ZanData;
class ZanDisplay;
class ZanModuleServer;
class ZanUpdateMessageReceiver;
struct BlockOutcome;
struct RunPosition;
struct SelectedVersions;

/// The window "Controller and Camera Update": the table of possible updates, the run that carries
/// them out, and the report after it.
///
/// Built once by the plug-in, outside observer mode; reads the preferences at construction and
/// writes them at destruction. User interface thread only. A run blocks that thread and keeps the
/// window alive by serving events between records.
class ZanUpdateModule2GSettingsdlg : public QDialog
{
    Q_OBJECT

public:
    /// @param iom              channel, not owned
    /// @param parent           parent window, from the host
    /// @param beVers           backend's versions, not owned
    /// @param moduleVersion    version text of the plug-in; each version has its own preferences
    /// @param newFeatureDialog the what's-new viewer, not owned; it must already exist
    ZanUpdateModule2GSettingsdlg(IOManager* iom, QWidget* parent, BackendVersions* beVers,
                                 QString moduleVersion, NewFeatureDialog* newFeatureDialog);
    ~ZanUpdateModule2GSettingsdlg() override;

    /// From now on the window does not open, and nothing starts a run. What is open closes without
    /// an answer; a run that the user has begun goes to its end before, with its report.
    void leave();
    /// Goes on without the parent, which is about to be destroyed.
    void outliveParent();

public slots:
    /// Asks the controllers again, fills the table and runs the window modally.
    /// @return what QDialog::exec() returns; at once QDialog::Rejected while a run is under way
    int update_and_exec();
    /// Opens the window at start, unless the host has turned the check off.
    void onTimer();
    /// Warns that the controller fell back to its factory address.
    void onDisplayMsgNoValidIp();
    /// Shows the what's-new viewer at start, if it is still due.
    void onTimerShowNewFeature();
    /// Takes the host's word on whether the window may open at start.
    void onSendCheckForOldFrontendOrBackend(bool flag);

private slots:
    void on_tableWidget_cellClicked(int row, int col);
    void on_pushButton_update_clicked();
    void on_pushButton_exit_clicked();
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void doProgressTimer();

private:
    /// Texts of the box that ends a successful run.
    struct CompletionTexts
    {
        QString text;
        QString informative;
    };

    ZanModuleServer* server() const;
    void initMessageReceiver();
    void showMessageInDialog(const QString& text, int progress);
    void showWhatInDialog(const QString& text);

    // Preferences file
    void loadSettings();
    void readSettings(const QDomElement& element);
    void saveSettingsToXml();

    // Table of updates
    void setupTablewidget();
    void makeTableUsableByKeyboard();
    void updateTablewidget();
    void fillTableRow(int row, const ZanDisplay& display);
    void setTableColumnWidth();
    bool isMinOneUpdateSelected() const;
    bool isCascade() const;
    bool isCascadeOnlyPartlySelected() const;
    void showWhatIsDue();

    // Checks before a run
    bool zan_is_supported(QList<ZanController*>* discontinuedZan);
    bool is_update_possible();
    int warnInstallNewFirmware(ZanModuleServer* srv);
    int confirmCameras();
    int confirmControllers(const SelectedVersions& versions);
    int warnInstallNewFirmware_2xx_3xx(QStringList* w);
    int warnInstallNewFirmware_3xx_4xx(QStringList* w);
    bool passesChecks();

    // Run
    void startUpdate();
    bool confirmStart();
    void calcBlocksToUpdate(ZanModuleServer* zanMServ);
    int do_zan_update(ZanDisplay* display);
    int do_update_img_data(ZanData* update, int index, int ith);
    BlockOutcome streamUpdateBlock(FILE* stream, const ZanData& update, int index, int ith);
    void showBlockProgress(const RunPosition& position);
    int _dat2ascii(char* str, const unsigned char* dat, int ndat);
    unsigned char _get_b6word(const unsigned char* dat, int ndat, int boffset);
    int do_cam_update(ZanDisplay* display);
    int readCamFileInfo(bool bUpdate, int iCam, const QString& sFileName,
                        double durationLastCmdSec);
    int readCameraUpdateInfo(FILE* fp, bool bUpdate, int iCam, double durationLastCmdSec);
    void beginCameraImage(quint32 records, double durationLastCmdSec);
    void showCameraRecord(quint32 record);

    // Progress
    void updateRemainingTimeString();
    void startProgressTimer(int numSteps, double durationStepSec, double durationLastStepSec);
    void setProgressTimerSteps(int steps);
    void stopProgressTimer();

    // Completion
    void showMessageUpdateSuccessful(int err, bool bCascade, ZanModuleServer* zanMServ);
    void showFailure(int err);
    void finishOnOldBackend(bool bCascade);
    CompletionTexts completionTexts(bool bCascade, ZanModuleServer* zanMServ);
    void searchCamerasAgain(ZanModuleServer* zanMServ);
    void restart();

    Ui::ZanUpdateModule2GSettingsdlgClass ui;
    IOManager* iom;
    BackendVersions* beVers;
    QWidget* m_parent;
    ZanUpdateMessageReceiver* messageReceiver = nullptr;
    int nBlocksMustUpdate = 0;
    int indexBlocksMustUpdate = 0;
    int nUpdateRemainingSeconds = 0;
    int iValProgressBar = 0;
    bool bCheckForOldFrontendBackend = true;
    bool bShowNewFeatures = false;
    bool m_bShowWarningv2xxv3xx = false;
    QTimer* m_progressTimer = nullptr;
    int m_numSteps = 0;
    double m_durationStepSec = 0.0;
    double m_durationLastStepSec = 0.0;
    int m_actNumSteps = 0;
    bool m_isLastStep = false;
    std::chrono::time_point<std::chrono::steady_clock, std::chrono::nanoseconds> m_timLastStep;
    QString m_hardware_info_file_dir;
    bool m_bIsWolSlavesActive = false;
    NewFeatureDialog* m_new_feature_dialog;
    QString sConfigDir;
    bool m_isRunUnderWay = false;  ///< nothing may start a run, or rebuild the rows, inside a run
    bool m_isRunConfirmed = false; ///< it has the user's last word, and nothing ends it early
    bool m_isLeaving = false;
};
