#include "ZanUpdateModule2GSettingsdlg.h"

#include "ZanController.h"
#include "ZanData.h"
#include "ZanDisplay.h"
#include "beforeandafterrun.h"
#include "blockstream.h"
#include "cameraimagestream.h"
#include "camfilereader.h"
#include "camupdatedata.h"
#include "globaldefines.h"
#include "hostlog.h"
#include "littleendianreader.h"
#include "newfeaturedialog.h"
#include "opencall.h"
#include "preferencesfile.h"
#include "searchhardwaredlg.h"
#include "selectedrows.h"
#include "sixbitencoding.h"
#include "updateprogress.h"
#include "zanmoduleserver.h"
#include "zanupdatemessagereceiver.h"

#include <BackendVersions>
#include <IOManager>

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QGridLayout>
#include <QKeyEvent>
#include <QScopedValueRollback>
#include <QShortcut>
#include <QSpacerItem>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <array>

static const char* const TITLE = "VORNIX3";

// ---- Construction and opening

ZanUpdateModule2GSettingsdlg::ZanUpdateModule2GSettingsdlg(IOManager* iom, QWidget* parent,
                                                           BackendVersions* beVers,
                                                           QString moduleVersion,
                                                           NewFeatureDialog* newFeatureDialog)
    : QDialog(parent), iom(iom), beVers(beVers), m_parent(parent),
      m_hardware_info_file_dir(QCoreApplication::applicationDirPath() +
                               QLatin1String("/hardware_info.txt")),
      m_new_feature_dialog(newFeatureDialog),
      sConfigDir(QDir::homePath() + QLatin1String("/.ORV/VORNIX3/modules/zanupdate/") +
                 moduleVersion + QLatin1String("/config"))
{
    ui.setupUi(this);
    setupTablewidget();
    ui.progressBar->setValue(0);
    ui.label_controllerisuptodate->setText(QString());
    loadSettings();
    initMessageReceiver();
    m_progressTimer = new QTimer(this);
    m_progressTimer->setInterval(100);
    connect(m_progressTimer, &QTimer::timeout, this,
            &ZanUpdateModule2GSettingsdlg::doProgressTimer);
}

ZanUpdateModule2GSettingsdlg::~ZanUpdateModule2GSettingsdlg()
{
    delete m_progressTimer;
    saveSettingsToXml();
}

void ZanUpdateModule2GSettingsdlg::initMessageReceiver()
{
    messageReceiver = new ZanUpdateMessageReceiver(this, iom);
    iom->register_receiver("UpdateModule", messageReceiver);
    connect(messageReceiver, &ZanUpdateMessageReceiver::sendCheckForOldFrontendOrBackend, this,
            &ZanUpdateModule2GSettingsdlg::onSendCheckForOldFrontendOrBackend);
    connect(messageReceiver, &ZanUpdateMessageReceiver::sendModuleParentVersion,
            m_new_feature_dialog, &NewFeatureDialog::onSendFEVersion);
    connect(messageReceiver, &ZanUpdateMessageReceiver::sendDarkThemeEnabled, m_new_feature_dialog,
            &NewFeatureDialog::onDarkThemeEnabled);
}

ZanModuleServer* ZanUpdateModule2GSettingsdlg::server() const
{
    return ZanModuleServer::Exemplar(iom, QCoreApplication::applicationDirPath(), beVers);
}

int ZanUpdateModule2GSettingsdlg::update_and_exec()
{
    // A run works on the rows that this would delete.
    if (m_isRunUnderWay || m_isLeaving)
        return QDialog::Rejected;
    const OpenCall call;
    showWhatInDialog(QString());
    showMessageInDialog(QString(), 0);
    updateTablewidget();
    showWhatIsDue();
    if (m_isLeaving)
        return QDialog::Rejected;
    // Larger fonts than usual may need more room than the form demands.
    resize(size().expandedTo(minimumSizeHint()));
    return exec();
}

static QString dueText(bool isCameraUpdate)
{
    if (isCameraUpdate) {
        return QStringLiteral("The VORNIX3 frontend has detected that the firmware of your "
                              "camera(s) is an older version than available. \nPlease update your "
                              "camera(s).");
    }
    return QStringLiteral("The VORNIX3 frontend has detected that the firmware on your Controller "
                          "is an older version than the VORNIX3 version installed on this "
                          "workstation. \nPlease update your controller.");
}

void ZanUpdateModule2GSettingsdlg::showWhatIsDue()
{
    const ZanModuleServer* inventory = server();
    const bool hasRows = ui.tableWidget->rowCount() > 0;
    ui.label_updates->setText(hasRows ? dueText(inventory->isCameraUpdate())
                                      : QStringLiteral("Controller(s) and cameras are up to date"));
    ui.label_recommendBackup->setEnabled(hasRows);
    ui.pushButton_update->setEnabled(hasRows && isMinOneUpdateSelected());
    ui.label_recommendBackup->setVisible(!inventory->isCameraUpdateOnly());
}

void ZanUpdateModule2GSettingsdlg::onTimer()
{
    if (bCheckForOldFrontendBackend)
        update_and_exec();
}

void ZanUpdateModule2GSettingsdlg::onDisplayMsgNoValidIp()
{
    if (m_isLeaving)
        return;
    const OpenCall call;
    QMessageBox::warning(
        this, tr("Warning"),
        QStringLiteral("The Controller's network is set to 'DHCP';\n"
                       "as it currently is using the fallback IP address,\n"
                       "there might have been no DHCP server present during booting.\n"
                       "\n"
                       "Caution: Possibly the Controller cannot be connected after the update!\n"
                       "\n"
                       "Please set a valid IP address before updating the Controller.\n"
                       "(Settings -> Controller -> IP address and subnet mask)\n"),
        QMessageBox::Ok);
}

void ZanUpdateModule2GSettingsdlg::onTimerShowNewFeature()
{
    if (!bShowNewFeatures || m_isLeaving)
        return;
    const OpenCall call;
    m_new_feature_dialog->set_trigger_at_start(true);
    m_new_feature_dialog->update_and_exec();
    m_new_feature_dialog->set_trigger_at_start(false);
    bShowNewFeatures = false;
}

void ZanUpdateModule2GSettingsdlg::onSendCheckForOldFrontendOrBackend(bool flag)
{
    bCheckForOldFrontendBackend = flag;
}

void ZanUpdateModule2GSettingsdlg::on_pushButton_exit_clicked()
{
    const OpenCall call(OpenCall::Widget);
    if (ui.tableWidget->rowCount() > 0) {
        QMessageBox::information(this, TITLE,
                                 QStringLiteral("To start the update process later,\n"
                                                "open the update dialog again using the menu\n"
                                                "Help -> Controller and Camera Update"),
                                 QMessageBox::Ok);
    }
    accept();
}

void ZanUpdateModule2GSettingsdlg::keyPressEvent(QKeyEvent* event)
{
    // The operators' hidden key works whether or not the button is enabled.
    if (event->key() == Qt::Key_F3)
        on_pushButton_update_clicked();
    else
        QDialog::keyPressEvent(event);
}

void ZanUpdateModule2GSettingsdlg::leave()
{
    m_isLeaving = true;
    if (m_isRunConfirmed)
        return;
    for (QMessageBox* box : findChildren<QMessageBox*>())
        box->reject();
    // A window that is not open would pass for the last one that the user closes.
    if (isVisible())
        reject();
}

// Without its parent the window is hidden. The operator goes on seeing what a run does, and a box
// in front of it stays there to be answered.
void ZanUpdateModule2GSettingsdlg::outliveParent()
{
    const bool isShown = isVisible();
    QWidget* const inFront = QApplication::activeModalWidget();
    setParent(nullptr, windowFlags());
    if (!isShown)
        return;
    setModal(inFront == this);
    show();
    if (inFront)
        inFront->raise();
}

void ZanUpdateModule2GSettingsdlg::resizeEvent(QResizeEvent* /*event*/)
{
    setTableColumnWidth();
}

void ZanUpdateModule2GSettingsdlg::showMessageInDialog(const QString& text, int progress)
{
    ui.label_msg->setText(text);
    ui.progressBar->setValue(progress);
}

void ZanUpdateModule2GSettingsdlg::showWhatInDialog(const QString& text)
{
    ui.label_what->setText(text);
}

// ---- Preferences file

void ZanUpdateModule2GSettingsdlg::loadSettings()
{
    const QString file = preferencesFile(sConfigDir);
    if (!QFile::exists(file)) {
        // The ordinary first start of this version of the plug-in.
        bShowNewFeatures = true;
        return;
    }
    QString complaint;
    const QDomDocument xml = readPreferences(file, &complaint);
    if (!complaint.isEmpty()) {
        logToHost(iom, complaint);
        return;
    }
    for (QDomNode node = xml.documentElement().firstChild(); !node.isNull();
         node = node.nextSibling())
        readSettings(node.toElement());
}

void ZanUpdateModule2GSettingsdlg::readSettings(const QDomElement& element)
{
    if (isWhatsNewSetting(element))
        bShowNewFeatures = isShownAtStart(element);
}

void ZanUpdateModule2GSettingsdlg::saveSettingsToXml()
{
    const QString complaint = writePreferences(sConfigDir, bShowNewFeatures);
    if (!complaint.isEmpty())
        logToHost(iom, complaint);
}

// ---- Table of updates

static const std::array<const char*, 6> COLUMN_TITLES = {"Update", "Type",      "From",
                                                         "To",     "Possible?", "Reboot?"};
// Share of the table's width, from column 1 on. The last entry is never used; it stays.
static const std::array<double, 5> colWidth = {0.49, 0.1, 0.1, 0.1, 0.1};

void ZanUpdateModule2GSettingsdlg::setupTablewidget()
{
    QStringList titles;
    for (const char* title : COLUMN_TITLES)
        titles += QString::fromLatin1(title);
    ui.tableWidget->setColumnCount(titles.size());
    ui.tableWidget->setRowCount(0);
    ui.tableWidget->setHorizontalHeaderLabels(titles);
    ui.tableWidget->verticalHeader()->hide();
    ui.tableWidget->horizontalHeader()->setSectionsClickable(false);
    ui.tableWidget->horizontalHeader()->setStretchLastSection(true);
    ui.tableWidget->setSelectionMode(QAbstractItemView::NoSelection);
    ui.tableWidget->setEditTriggers(QAbstractItemView::NoEditTriggers);
    makeTableUsableByKeyboard();
}

// By itself the table keeps the Tab key, and the space bar changes a tick that the run never sees.
void ZanUpdateModule2GSettingsdlg::makeTableUsableByKeyboard()
{
    ui.tableWidget->setTabKeyNavigation(false);
    auto* space = new QShortcut(Qt::Key_Space, ui.tableWidget);
    space->setContext(Qt::WidgetShortcut);
    connect(space, &QShortcut::activated, this, [this] {
        QTableWidgetItem* box = ui.tableWidget->item(ui.tableWidget->currentRow(), 0);
        if (!box || !box->flags().testFlag(Qt::ItemIsUserCheckable))
            return;
        box->setCheckState(box->checkState() == Qt::Checked ? Qt::Unchecked : Qt::Checked);
        on_tableWidget_cellClicked(box->row(), 0);
    });
}

void ZanUpdateModule2GSettingsdlg::updateTablewidget()
{
    ZanModuleServer* inventory = server();
    inventory->redo_fillListZanDisplay();
    const QList<ZanDisplay*>& rows = inventory->listZanDisplay;
    ui.tableWidget->setRowCount(rows.size());
    for (int row = 0; row < rows.size(); ++row)
        fillTableRow(row, *rows.at(row));
    ui.tableWidget->horizontalHeader()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    ui.tableWidget->horizontalHeader()->setStretchLastSection(true);
}

// A row that the inventory did not mark can never be ticked by hand.
static QTableWidgetItem* makeCheckBox(const ZanDisplay& display)
{
    auto* box = new QTableWidgetItem;
    const bool isOffered = display.toBeUpdated() && display.type() != ZAN_UPDATE_NOT_AVAILABLE;
    box->setFlags(isOffered ? Qt::ItemIsUserCheckable | Qt::ItemIsEnabled : Qt::NoItemFlags);
    box->setCheckState(isOffered ? Qt::Checked : Qt::Unchecked);
    return box;
}

void ZanUpdateModule2GSettingsdlg::fillTableRow(int row, const ZanDisplay& display)
{
    ui.tableWidget->setItem(row, 0, makeCheckBox(display));
    int column = 1;
    for (const QString& text :
         {display.typeString(), display.versionFrom().toString(), display.versionTo().toString(),
          display.updatePossibleString(), display.rebootNecessaryString()})
        ui.tableWidget->setItem(row, column++, new QTableWidgetItem(text));
}

void ZanUpdateModule2GSettingsdlg::setTableColumnWidth()
{
    for (int column = 1; column < std::min(ui.tableWidget->columnCount(), 5); ++column) {
        const double width = colWidth.at(column - 1) * ui.tableWidget->width();
        ui.tableWidget->setColumnWidth(column, static_cast<int>(width));
    }
}

bool ZanUpdateModule2GSettingsdlg::isMinOneUpdateSelected() const
{
    for (int row = 0; row < ui.tableWidget->rowCount(); ++row) {
        if (ui.tableWidget->item(row, 0)->checkState() == Qt::Checked)
            return true;
    }
    return false;
}

bool ZanUpdateModule2GSettingsdlg::isCascade() const
{
    return server()->listZanController.size() > 1;
}

bool ZanUpdateModule2GSettingsdlg::isCascadeOnlyPartlySelected() const
{
    return isPartOfCascade(server()->listZanDisplay);
}

void ZanUpdateModule2GSettingsdlg::on_tableWidget_cellClicked(int row, int col)
{
    if (col != 0)
        return;
    const OpenCall call(OpenCall::Widget);
    // A run serves clicks too, and keeps the button disabled to its end.
    ui.pushButton_update->setEnabled(!m_isRunUnderWay && isMinOneUpdateSelected());
    if (ZanDisplay* display = server()->listZanDisplay.value(row))
        display->setToBeUpdated(ui.tableWidget->item(row, 0)->checkState());
    if (!isCascadeOnlyPartlySelected())
        return;
    QMessageBox::warning(
        this, QStringLiteral("Warning"),
        QStringLiteral("You intend to update the Cascaded System only partially!\n\n"
                       "There's the risk of creating an inconsistent system\n"
                       "and the Cascaded System might not work properly thereafter!"),
        QMessageBox::Ok);
}

// ---- Checks before a run

void ZanUpdateModule2GSettingsdlg::on_pushButton_update_clicked()
{
    // The hidden key can arrive here while a run serves events.
    if (m_isRunUnderWay || m_isLeaving)
        return;
    const OpenCall call(OpenCall::Widget);
    const QScopedValueRollback<bool> underWay(m_isRunUnderWay, true);
    if (!passesChecks() || m_isLeaving)
        return;
    ui.pushButton_update->setEnabled(false);
    ui.pushButton_exit->setEnabled(false);
    startUpdate();
    ui.pushButton_update->setEnabled(true);
    ui.pushButton_exit->setEnabled(true);
    if (m_isLeaving)
        leave();
}

static QString discontinuedText(const QList<ZanController*>& discontinuedZan)
{
    QStringList names;
    for (const ZanController* controller : discontinuedZan) {
        names +=
            QStringLiteral("%1 (SN %2)")
                .arg(controller->hostname(), QString::number(controller->getControllerSerial()));
    }
    return QStringLiteral("An update to the selected version is not possible due to discontinued "
                          "support for your controller.\n\nPlease contact O.R.V. for support.\n\n"
                          "Discontinued controllers: %1")
        .arg(names.join(QStringLiteral(", ")));
}

bool ZanUpdateModule2GSettingsdlg::passesChecks()
{
    QList<ZanController*> discontinuedZan;
    if (!zan_is_supported(&discontinuedZan)) {
        QMessageBox::warning(this, TITLE, discontinuedText(discontinuedZan), QMessageBox::Ok);
        return false;
    }
    if (!is_update_possible()) {
        QMessageBox::warning(
            this, TITLE,
            QStringLiteral("Controller Update to the next version is not possible due to "
                           "incompatible hardware.\n\nThe hardware information is saved to: "
                           "\"%1.\"\n\nPlease contact O.R.V. for support.")
                .arg(m_hardware_info_file_dir),
            QMessageBox::Ok);
        return false;
    }
    // A quit of the application ends the box without an answer, which is no consent.
    if (warnInstallNewFirmware(server()) != QMessageBox::Yes || !stopMeasurement(iom))
        return false;
    m_bIsWolSlavesActive = areSlavesWoken(iom);
    return true;
}

bool ZanUpdateModule2GSettingsdlg::zan_is_supported(QList<ZanController*>* discontinuedZan)
{
    *discontinuedZan = discontinuedControllers(server()->listZanDisplay);
    return discontinuedZan->isEmpty();
}

// The hardware is asked for but compared with nothing at present, so nothing is refused here.
bool ZanUpdateModule2GSettingsdlg::is_update_possible()
{
    askForHardware(iom, beVers);
    return true;
}

int ZanUpdateModule2GSettingsdlg::warnInstallNewFirmware(ZanModuleServer* srv)
{
    m_bShowWarningv2xxv3xx = false;
    const SelectedVersions versions = SelectedVersions::of(srv->listZanDisplay);
    return versions.controllerRows == 0 ? confirmCameras() : confirmControllers(versions);
}

static void askYesOrNo(QMessageBox* box)
{
    box->setStandardButtons(QMessageBox::Yes | QMessageBox::No);
    box->setDefaultButton(QMessageBox::No);
    box->setIcon(QMessageBox::Information);
}

int ZanUpdateModule2GSettingsdlg::confirmCameras()
{
    QMessageBox box(this);
    box.setWindowTitle(TITLE);
    box.setText(QStringLiteral("This action will install new firmware to your camera(s)."));
    box.setInformativeText(QStringLiteral("Do you really want to update?"));
    askYesOrNo(&box);
    return box.exec();
}

// Last of all, since a message box lays itself out anew when its texts or its icon are set.
static void widen(QMessageBox* box)
{
    if (auto* grid = qobject_cast<QGridLayout*>(box->layout())) {
        grid->addItem(new QSpacerItem(500, 0, QSizePolicy::Minimum, QSizePolicy::Expanding),
                      grid->rowCount(), 0, 1, grid->columnCount());
    }
}

int ZanUpdateModule2GSettingsdlg::confirmControllers(const SelectedVersions& versions)
{
    int nbWarnings = 0;
    QStringList warntext;
    m_bShowWarningv2xxv3xx = versions.crosses(VersionInfo(3, 0, 0));
    if (m_bShowWarningv2xxv3xx)
        nbWarnings = warnInstallNewFirmware_2xx_3xx(&warntext);
    if (versions.crosses(VersionInfo(4, 0, 0)))
        nbWarnings += warnInstallNewFirmware_3xx_4xx(&warntext);
    if (nbWarnings > 0) {
        warntext.prepend(QStringLiteral("<ul>"));
        warntext.prepend(
            QStringLiteral("<b><font color=#d42020>Please be aware that...</font></b>"));
        warntext << QStringLiteral("</ul>")
                 << QStringLiteral("A downgrade to Vornix2 is only possible by sending the "
                                   "Controller to O.R.V.")
                 << QStringLiteral("<p>")
                 << QStringLiteral("If you are unsure, please contact O.R.V. for support.");
    }
    warntext << QStringLiteral("<p>") << QStringLiteral("<b>Do you really want to update?</b>");

    QMessageBox box(this);
    box.setWindowTitle(TITLE);
    box.setText(QStringLiteral("This action will install new firmware to your Controller."));
    box.setTextFormat(Qt::RichText);
    box.setInformativeText(warntext.join(QString()));
    askYesOrNo(&box);
    widen(&box);
    return box.exec();
}

int ZanUpdateModule2GSettingsdlg::warnInstallNewFirmware_2xx_3xx(QStringList* w)
{
    const QStringList bullets = {
        QStringLiteral("<li>support expires for peripherals: <i>Airwand1</i>, <i>Radio Bridge "
                       "RB1</i> and <i>Gripsense Haptic Sample</i></li>"),
        QStringLiteral("<li>support expires for Controller hardware: <i>Micro-Star MS-x</i>, "
                       "<i>Gigabyte G31/G41x</i>, <i>Asus P5G41</i> and <i>DFI/ACP "
                       "EL331</i></li>"),
        QStringLiteral("<li>in cascaded systems all Controllers will have to be updated to "
                       "VORNIX3</li>")};
    *w += bullets;
    return bullets.size();
}

// A hook of its own for the step across version 4, which needs no warning at present.
int ZanUpdateModule2GSettingsdlg::warnInstallNewFirmware_3xx_4xx(QStringList* /*w*/)
{
    return 0;
}

// ---- Run

// Why a controller's row failed; the results of a run add up.
enum RowFailure : int
{
    BLOCK_FAILED = -33,
    NO_REDIRECTION = -44,
};

bool ZanUpdateModule2GSettingsdlg::confirmStart()
{
    QMessageBox box(QMessageBox::Information, tr("VORNIX3"),
                    tr("Don't stop the update process until it is finished!"),
                    QMessageBox::Ok | QMessageBox::Cancel, this);
    return box.exec() == QMessageBox::Ok; // and not without an answer, as above
}

void ZanUpdateModule2GSettingsdlg::startUpdate()
{
    showMessageInDialog(QString(), 0);
    if (!confirmStart())
        return;
    const QScopedValueRollback<bool> confirmed(m_isRunConfirmed, true);
    ui.label_updates->setText(QStringLiteral("Updating Controller.."));
    nUpdateRemainingSeconds = 0;
    indexBlocksMustUpdate = 0;
    ZanModuleServer* zanMServ = server();
    calcBlocksToUpdate(zanMServ);

    int err = 0;
    int nUpdatesDone = 0;
    // A failed row does not stop the run; the results add up.
    for (ZanDisplay* display : qAsConst(zanMServ->listZanDisplay)) {
        if (display->type() == CAMERA_UPDATE) {
            ui.label_updates->setText(QStringLiteral("Updating camera(s).."));
            err += do_cam_update(display);
            ++nUpdatesDone;
        } else if (display->toBeUpdated() && display->updatePossible()) {
            err += do_zan_update(display);
            ++nUpdatesDone;
        }
    }
    ui.label_updates->setText(QStringLiteral("Updating Controller..finished"));
    if (nUpdatesDone > 0) {
        showMessageUpdateSuccessful(err, false, zanMServ);
    } else {
        QMessageBox::information(this, tr("VORNIX3"),
                                 tr("Nothing was updated, because no update is selected."),
                                 QMessageBox::Ok);
    }
}

void ZanUpdateModule2GSettingsdlg::calcBlocksToUpdate(ZanModuleServer* zanMServ)
{
    nBlocksMustUpdate = countedBlocks(zanMServ->listZanDisplay, beVers);
    indexBlocksMustUpdate = 0;
}

int ZanUpdateModule2GSettingsdlg::do_zan_update(ZanDisplay* display)
{
    showMessageInDialog(QString(), 1);
    for (const int blockIndex : display->updateIndexes()) {
        const ZAN_UPDATE_TYPE type = display->update()->getUpdateBlock(blockIndex)->type;
        showWhatInDialog(blockTitle(type, display->controller()->hostname()));
        if (!display->controller()->setupRedirection())
            return NO_REDIRECTION;
        if (do_update_img_data(display->update(), blockIndex, indexBlocksMustUpdate) < 0) {
            showMessageInDialog(QStringLiteral("Update not successful"), 0);
            return BLOCK_FAILED;
        }
        // The controller needs this pause, and nothing may be sent meanwhile.
        if (type == ZAN_SYSTEM_UPDATE)
            QThread::msleep(2000);
        ++indexBlocksMustUpdate;
    }
    showMessageInDialog(QStringLiteral("Update successful"), 100);
    return 0;
}

// ---- Image streaming

int ZanUpdateModule2GSettingsdlg::do_update_img_data(ZanData* update, int index, int ith)
{
    FILE* stream = update->getUpdateBlockInFile(index);
    if (!stream)
        return -1;
    const BlockOutcome outcome = streamUpdateBlock(stream, *update, index, ith);
    // Only a failure closes the stream. After a success it stays open, as controllers' images
    // always did.
    if (outcome.result != 0) {
        std::fclose(stream);
        showMessageInDialog(outcome.message, outcome.record == 0 ? 1 : iValProgressBar);
    }
    return outcome.result;
}

BlockOutcome ZanUpdateModule2GSettingsdlg::streamUpdateBlock(FILE* stream, const ZanData& update,
                                                             int index, int ith)
{
    LittleEndianReader reader(stream, LittleEndianReader::LargeChunk);
    return streamBlock(
        reader, iom,
        {update.fileName(), update.getSystemModel(), update.getUpdateBlock(index)->type},
        [&](const RecordPlace& place) {
            if (place.record == 0)
                iValProgressBar = 0;
            else
                showBlockProgress({place.record, place.records, index, ith, nBlocksMustUpdate});
        });
}

int ZanUpdateModule2GSettingsdlg::_dat2ascii(char* str, const unsigned char* dat, int ndat)
{
    encodeSixBit(str, dat, ndat);
    return 0;
}

unsigned char ZanUpdateModule2GSettingsdlg::_get_b6word(const unsigned char* dat, int ndat,
                                                        int boffset)
{
    return sixBitWord(dat, ndat, boffset);
}

// ---- Camera run

int ZanUpdateModule2GSettingsdlg::do_cam_update(ZanDisplay* display)
{
    if (!display->toBeUpdated())
        return 0;
    showWhatInDialog(QStringLiteral("Updating cameras"));
    showWhatInDialog(QStringLiteral("Updating camera %1 %2")
                         .arg(display->getCamModelDesc(), display->getCamSerial()));
    const CamUpdateData& file = *display->getCamUpdate();
    const int err = readCamFileInfo(true, display->indexCamForUpdate(), file.getFilename(),
                                    file.getDurationLastCmdSec());
    if (err == 0)
        showMessageInDialog(QStringLiteral("Update of camera successful"), 100);
    else if (err == CAMERA_REFUSES_UPDATE) // operators know a full bar on this failure, too
        showMessageInDialog(QStringLiteral("Update of camera was not successful"), 100);
    return err;
}

int ZanUpdateModule2GSettingsdlg::readCamFileInfo(bool bUpdate, int iCam, const QString& sFileName,
                                                  double durationLastCmdSec)
{
    FILE* fp = std::fopen(sFileName.toLatin1().constData(), "rb");
    int imageCount = 0;
    int code = fp ? readCamFileUpToImages(fp, &imageCount) : -1;
    const bool isHeadRead = code == 0;
    for (int i = 0; code == 0 && i < imageCount; ++i)
        code = readCameraUpdateInfo(fp, bUpdate, iCam, durationLastCmdSec);
    if (fp)
        std::fclose(fp);
    if (code == 0)
        return 0;

    showMessageInDialog(cameraFileMessage(code, isHeadRead) + sFileName, 1);
    return code;
}

int ZanUpdateModule2GSettingsdlg::readCameraUpdateInfo(FILE* fp, bool bUpdate, int iCam,
                                                       double durationLastCmdSec)
{
    LittleEndianReader reader(fp, LittleEndianReader::LargeChunk);
    const CameraImageOutcome outcome = streamCameraImage(
        reader, iom, {iCam, bUpdate, durationLastCmdSec}, [&](quint32 record, quint32 records) {
            if (record == 0)
                beginCameraImage(records, durationLastCmdSec);
            else
                showCameraRecord(record);
        });
    stopProgressTimer();
    if (outcome.code != 0)
        showMessageInDialog(outcome.message, 1);
    return outcome.code;
}

void ZanUpdateModule2GSettingsdlg::beginCameraImage(quint32 records, double durationLastCmdSec)
{
    static constexpr double SECONDS_PER_RECORD = 0.00027;
    iValProgressBar = 0;
    showMessageInDialog(QString(), 0);
    startProgressTimer(static_cast<int>(records), SECONDS_PER_RECORD, durationLastCmdSec);
}

void ZanUpdateModule2GSettingsdlg::showCameraRecord(quint32 record)
{
    setProgressTimerSteps(static_cast<int>(record));
    QCoreApplication::processEvents();
}

// ---- Progress and remaining time

void ZanUpdateModule2GSettingsdlg::showBlockProgress(const RunPosition& position)
{
    const Progress progress = blockProgress(position, nUpdateRemainingSeconds);
    iValProgressBar = progress.percentage;
    nUpdateRemainingSeconds = progress.seconds;
    updateRemainingTimeString();
    QCoreApplication::processEvents();
}

void ZanUpdateModule2GSettingsdlg::updateRemainingTimeString()
{
    showMessageInDialog(remainingTimeText(nUpdateRemainingSeconds), iValProgressBar);
}

void ZanUpdateModule2GSettingsdlg::startProgressTimer(int numSteps, double durationStepSec,
                                                      double durationLastStepSec)
{
    m_numSteps = numSteps;
    m_durationStepSec = durationStepSec;
    m_durationLastStepSec = durationLastStepSec;
    m_actNumSteps = 0;
    m_isLastStep = false;
    m_progressTimer->start();
}

void ZanUpdateModule2GSettingsdlg::setProgressTimerSteps(int steps)
{
    m_actNumSteps = steps;
}

void ZanUpdateModule2GSettingsdlg::stopProgressTimer()
{
    m_progressTimer->stop();
}

void ZanUpdateModule2GSettingsdlg::doProgressTimer()
{
    const auto now = std::chrono::steady_clock::now();
    if (m_actNumSteps >= m_numSteps && !m_isLastStep) {
        m_isLastStep = true;
        m_timLastStep = now;
    }
    const Progress progress =
        timedProgress({m_numSteps, m_durationStepSec, m_durationLastStepSec, m_actNumSteps,
                       std::chrono::duration<double>(now - m_timLastStep).count()});
    showMessageInDialog(remainingTimeText(progress.seconds), progress.percentage);
}

// ---- Completion and restart

void ZanUpdateModule2GSettingsdlg::showMessageUpdateSuccessful(int err, bool bCascade,
                                                               ZanModuleServer* zanMServ)
{
    if (err != 0) {
        showFailure(err);
        return;
    }
    if (!protocolAtLeast(beVers, PROTOCOL_RESTART)) {
        finishOnOldBackend(bCascade);
        return;
    }
    CompletionTexts texts = completionTexts(bCascade, zanMServ);
    const bool isCameraUpdate = zanMServ->isCameraUpdate();
    if (!isCameraUpdate && !isPlainBriarscope(beVers))
        texts.informative += tr("If yes VORNIX3 will be closed");

    QMessageBox box(this);
    box.setWindowTitle(TITLE);
    box.setIcon(QMessageBox::Information);
    box.setText(texts.text);
    box.setInformativeText(texts.informative);
    if (isCameraUpdate) {
        box.setStandardButtons(QMessageBox::Ok);
    } else {
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
        box.setDefaultButton(QMessageBox::Yes);
    }
    if (box.exec() == QMessageBox::Yes)
        restart();
    else
        accept();
}

void ZanUpdateModule2GSettingsdlg::showFailure(int err)
{
    // Failed rows report negative results, so the sum never is plus 300; it stands as it is.
    const QString what = err == 300 ? tr("Camera update failed!\n") : tr("Update failed!\n");
    QMessageBox::critical(this, tr("VORNIX3"),
                          what + tr("Please restart the Controller and try again."),
                          QMessageBox::Ok);
}

void ZanUpdateModule2GSettingsdlg::finishOnOldBackend(bool bCascade)
{
    const QString what = bCascade ? tr("The Cascaded System is updated successfully.\n")
                                  : tr("The Controller is updated successfully.\n");
    QMessageBox::information(this, tr("VORNIX3"),
                             what + tr("Please restart the Controller.\n") +
                                 tr("VORNIX3 will be closed now."),
                             QMessageBox::Ok);
    announceShutdown(iom);
    QCoreApplication::quit();
}

ZanUpdateModule2GSettingsdlg::CompletionTexts
ZanUpdateModule2GSettingsdlg::completionTexts(bool bCascade, ZanModuleServer* zanMServ)
{
    if (bCascade) {
        return {tr("The Cascaded system is updated successfully and must be restarted."),
                tr("Do you want to restart the Cascaded System now?\n(This restart may take a few "
                   "minutes. Do not switch off the Cascaded System during restart.)\n\n")};
    }
    if (isPlainBriarscope(beVers)) {
        return {tr("The BRIARSCOPE is updated successfully and must be restarted."),
                tr("Do you want to shut down the BRIARSCOPE now?\n\nAfter pressing yes, please "
                   "wait until the BRIARSCOPE power LED turns off,\nthen manually power cycle the "
                   "BRIARSCOPE.")};
    }
    if (zanMServ->isCameraUpdate()) {
        searchCamerasAgain(zanMServ);
        return {tr("The cameras are updated successfully and must be restarted manually!"),
                tr("Please power off all updated cameras by disconnecting or turn off any "
                   "connected PoE+ switches.")};
    }
    return {tr("The Controller is updated successfully and must be restarted."),
            tr("Do you want to restart the Controller now?\n(This restart may take a few minutes. "
               "Do not switch off the Controller during restart.)\n\n")};
}

void ZanUpdateModule2GSettingsdlg::searchCamerasAgain(ZanModuleServer* zanMServ)
{
    if (!zanMServ->needsSearchHardware())
        return;
    // The cameras need this time before they can be found, and operators are to do nothing
    // meanwhile.
    QThread::msleep(12000);
    SearchHardwareDlg search(nullptr, iom, QStringLiteral("cameraupdate"));
    if (search.update_and_exec() == QDialog::Accepted)
        logToHost(iom, QStringLiteral("search for new hardware done"));
}

// The order is fixed: the frontend hears of it before the controller goes.
void ZanUpdateModule2GSettingsdlg::restart()
{
    announceShutdown(iom);
    restartControllers(iom, beVers);
    bShowNewFeatures = true;
    QCoreApplication::quit();
}
