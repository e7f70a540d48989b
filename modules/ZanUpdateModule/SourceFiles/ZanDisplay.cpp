#include "ZanDisplay.h"

#include "ZanController.h"
#include "ZanData.h"
#include "camupdatedata.h"

#include <QtCore/Qt>

ZanDisplay::ZanDisplay(ZanController* controller, ZanData* update)
    : m_controller(controller), m_update(update)
{
    if (controller && update)
        tryApplyUpdate(&controller->currentCt, &controller->currentPt);
    bToBeUpdated = updatePossible();
}

ZanDisplay::ZanDisplay(CamUpdateData* camUpdate, int iCam, const QString& model,
                       const QString& serial, const QString& modelDesc, const VersionInfo& from,
                       bool preRelease)
    : nType(CAMERA_UPDATE), m_isPossible(true), m_isRebootNecessary(true), viFrom(from),
      viTo(camUpdate->getNewVer()), m_iCam(iCam), m_camUpdate(camUpdate),
      m_bIsCamPreRelease(preRelease), m_sCamModel(model), m_sCamModelDesc(modelDesc),
      m_sCamSerial(serial)
{
    bToBeUpdated = updatePossible();
}

void ZanDisplay::setToBeUpdated(int state)
{
    bToBeUpdated = state == Qt::Checked;
}

bool ZanDisplay::updatePossible() const
{
    return nType == CAMERA_UPDATE || (m_isPossible && !m_update_index.isEmpty());
}

QString ZanDisplay::typeString() const
{
    switch (nType) {
    case ZAN_FIRMWARE_UPDATE:
        return QStringLiteral("Firmware update (%1)").arg(m_controller->hostname());
    case ZAN_SYSTEM_UPDATE:
        return QStringLiteral("System update (%1)").arg(m_controller->hostname());
    case ZAN_UPDATE_NOT_AVAILABLE:
        return QStringLiteral("- no update available -");
    case CAMERA_UPDATE:
        return getCameraUpdateInfo();
    default:
        return QString();
    }
}

QString ZanDisplay::getCameraUpdateInfo() const
{
    const bool both = !m_sCamModelDesc.isEmpty() && !m_sCamSerial.isEmpty();
    const QString which =
        both ? m_sCamModelDesc + QLatin1Char(' ') + m_sCamSerial : m_sCamModelDesc + m_sCamSerial;
    return which.isEmpty() ? QStringLiteral("Camera firmware update")
                           : QStringLiteral("Camera firmware update (%1)").arg(which);
}

static QString yesOrNo(bool yes)
{
    return yes ? QStringLiteral("yes") : QStringLiteral("no");
}

QString ZanDisplay::rebootNecessaryString() const
{
    return nType == ZAN_UPDATE_NOT_AVAILABLE ? QString() : yesOrNo(m_isRebootNecessary);
}

QString ZanDisplay::updatePossibleString() const
{
    return nType == ZAN_UPDATE_NOT_AVAILABLE ? QString() : yesOrNo(updatePossible());
}

void ZanDisplay::tryApplyUpdate(VersionInfo* currentCt, VersionInfo* currentPt)
{
    if (!m_update)
        return;
    const VersionInfo& verPt = m_controller->getVersionLumasolver();
    const VersionInfo& verCt = m_controller->getVersionController();
    const bool isToUpdate = verPt < m_update->newPtVersion() || verCt < m_update->newCtVersion();
    const bool isOfThisRelease = verPt == m_update->newVornix2Version();
    // A controller on a pre-release is offered the final image of the same version in any case.
    const bool isOnPreRelease = isOfThisRelease && m_controller->isPreRelease();
    const bool wasPtEqual = isOfThisRelease && !isOnPreRelease;
    if (!isToUpdate && !isOnPreRelease)
        return;

    // Compared with what the controller reports, not with the running position. A row that cannot
    // be taken yet stays visible as such, so the blocks are chosen in either case.
    m_isPossible = verPt >= m_update->minPtVersion() && verCt >= m_update->minCtVersion();

    if (!chooseBlocks(*currentCt, currentPt))
        return;
    // Its Pt already is the release: shown as a system update even with a firmware block in it.
    if (wasPtEqual)
        nType = ZAN_SYSTEM_UPDATE;
    if (nType == ZAN_SYSTEM_UPDATE) {
        viFrom = *currentCt;
        viTo = m_update->newCtVersion();
    }
    *currentCt = m_update->newCtVersion();
}

static bool isWithin(const VersionInfo& version, const ZanUpdateBlock& block)
{
    return version >= block.minVer && version <= block.maxVer;
}

// Returns whether a system block was chosen. Its version does not move inside the walk, so every
// system block whose range holds the start position is taken; a firmware block moves its version
// at once.
bool ZanDisplay::chooseBlocks(const VersionInfo& currentCt, VersionInfo* currentPt)
{
    bool flagCt = false;
    for (int i = 0; i < m_update->getNumberOfUpdateBlocks(); ++i) {
        const ZanUpdateBlock& block = *m_update->getUpdateBlock(i);
        if (block.type == ZAN_FIRMWARE_UPDATE && isWithin(*currentPt, block)) {
            chooseFirmwareBlock(i, currentPt);
        } else if (block.type == ZAN_SYSTEM_UPDATE && isWithin(currentCt, block)) {
            m_update_index.append(i);
            flagCt = true;
            if (nType == ZAN_UPDATE_NOT_AVAILABLE)
                nType = ZAN_SYSTEM_UPDATE;
        }
    }
    return flagCt;
}

void ZanDisplay::chooseFirmwareBlock(int index, VersionInfo* currentPt)
{
    m_update_index.append(index);
    viFrom = *currentPt;
    viTo = m_update->newPtVersion();
    *currentPt = m_update->newPtVersion();
    nType = ZAN_FIRMWARE_UPDATE;
    m_isRebootNecessary = true;
}
