#pragma once

#include <ZanUpdateModule2GSettingsdlg.h>
#include <privateaccess.h>

/// @file
/// The private members of the dialog that the tests call and look at, each under its own name.

using UpdateDialog = ZanUpdateModule2GSettingsdlg;

// Image streaming and the run of a row
ZAN_EXPOSE(_dat2ascii, &UpdateDialog::_dat2ascii);
ZAN_EXPOSE(_get_b6word, &UpdateDialog::_get_b6word);
ZAN_EXPOSE(do_update_img_data, &UpdateDialog::do_update_img_data);
ZAN_EXPOSE(do_zan_update, &UpdateDialog::do_zan_update);
ZAN_EXPOSE(calcBlocksToUpdate, &UpdateDialog::calcBlocksToUpdate);
ZAN_EXPOSE(nBlocksMustUpdate, &UpdateDialog::nBlocksMustUpdate);
ZAN_EXPOSE(indexBlocksMustUpdate, &UpdateDialog::indexBlocksMustUpdate);
ZAN_EXPOSE(nUpdateRemainingSeconds, &UpdateDialog::nUpdateRemainingSeconds);
ZAN_EXPOSE(iValProgressBar, &UpdateDialog::iValProgressBar);

// Camera run
ZAN_EXPOSE(do_cam_update, &UpdateDialog::do_cam_update);
ZAN_EXPOSE(readCamFileInfo, &UpdateDialog::readCamFileInfo);
ZAN_EXPOSE(readCameraUpdateInfo, &UpdateDialog::readCameraUpdateInfo);

// Progress
ZAN_EXPOSE(updateRemainingTimeString, &UpdateDialog::updateRemainingTimeString);
ZAN_EXPOSE(startProgressTimer, &UpdateDialog::startProgressTimer);
ZAN_EXPOSE(setProgressTimerSteps, &UpdateDialog::setProgressTimerSteps);
ZAN_EXPOSE(stopProgressTimer, &UpdateDialog::stopProgressTimer);
ZAN_EXPOSE(doProgressTimer, &UpdateDialog::doProgressTimer);
ZAN_EXPOSE(m_progressTimer, &UpdateDialog::m_progressTimer);
ZAN_EXPOSE(m_numSteps, &UpdateDialog::m_numSteps);
ZAN_EXPOSE(m_durationStepSec, &UpdateDialog::m_durationStepSec);
ZAN_EXPOSE(m_durationLastStepSec, &UpdateDialog::m_durationLastStepSec);
ZAN_EXPOSE(m_actNumSteps, &UpdateDialog::m_actNumSteps);
ZAN_EXPOSE(m_isLastStep, &UpdateDialog::m_isLastStep);
ZAN_EXPOSE(m_timLastStep, &UpdateDialog::m_timLastStep);

// Shell and table
ZAN_EXPOSE(messageReceiver, &UpdateDialog::messageReceiver);
ZAN_EXPOSE(bCheckForOldFrontendBackend, &UpdateDialog::bCheckForOldFrontendBackend);
ZAN_EXPOSE(bShowNewFeatures, &UpdateDialog::bShowNewFeatures);
ZAN_EXPOSE(m_bShowWarningv2xxv3xx, &UpdateDialog::m_bShowWarningv2xxv3xx);
ZAN_EXPOSE(m_bIsWolSlavesActive, &UpdateDialog::m_bIsWolSlavesActive);
ZAN_EXPOSE(m_hardware_info_file_dir, &UpdateDialog::m_hardware_info_file_dir);
ZAN_EXPOSE(sConfigDir, &UpdateDialog::sConfigDir);
ZAN_EXPOSE(showMessageInDialog, &UpdateDialog::showMessageInDialog);
ZAN_EXPOSE(showWhatInDialog, &UpdateDialog::showWhatInDialog);
ZAN_EXPOSE(updateTablewidget, &UpdateDialog::updateTablewidget);
ZAN_EXPOSE(fillTableRow, &UpdateDialog::fillTableRow);
ZAN_EXPOSE(setTableColumnWidth, &UpdateDialog::setTableColumnWidth);
ZAN_EXPOSE(isMinOneUpdateSelected, &UpdateDialog::isMinOneUpdateSelected);
ZAN_EXPOSE(isCascade, &UpdateDialog::isCascade);
ZAN_EXPOSE(clickCell, &UpdateDialog::on_tableWidget_cellClicked);

// Checks, run and completion
ZAN_EXPOSE(clickUpdate, &UpdateDialog::on_pushButton_update_clicked);
ZAN_EXPOSE(zan_is_supported, &UpdateDialog::zan_is_supported);
ZAN_EXPOSE(is_update_possible, &UpdateDialog::is_update_possible);
ZAN_EXPOSE(warnInstallNewFirmware, &UpdateDialog::warnInstallNewFirmware);
ZAN_EXPOSE(warnInstallNewFirmware_2xx_3xx, &UpdateDialog::warnInstallNewFirmware_2xx_3xx);
ZAN_EXPOSE(warnInstallNewFirmware_3xx_4xx, &UpdateDialog::warnInstallNewFirmware_3xx_4xx);
ZAN_EXPOSE(showMessageUpdateSuccessful, &UpdateDialog::showMessageUpdateSuccessful);
