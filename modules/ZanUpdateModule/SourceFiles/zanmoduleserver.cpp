#include "zanmoduleserver.h"

#include "ZanController.h"
#include "ZanData.h"
#include "ZanDisplay.h"
#include "camupdatedata.h"
#include "filenames.h"
#include "globaldefines.h"
#include "hostlog.h"
#include "replybuffer.h"

#include <BackendVersions>
#include <IOManager>

#include <QDir>

#include <algorithm>
#include <memory>

ZanModuleServer* ZanModuleServer::m_exemplar = nullptr;

ZanModuleServer* ZanModuleServer::Exemplar(IOManager* iomgr, const QString& sApplicationDirPath,
                                           BackendVersions* bv)
{
    if (!m_exemplar)
        m_exemplar = new ZanModuleServer(iomgr, sApplicationDirPath, bv);
    return m_exemplar;
}

void ZanModuleServer::ReleaseExemplar()
{
    delete m_exemplar;
    m_exemplar = nullptr;
}

// The controllers are asked before any image is known, as hosts know it: their need-update flags
// mean something only after the first redo_fillListZanDisplay().
ZanModuleServer::ZanModuleServer(IOManager* iomgr, const QString& sApplicationDirPath,
                                 BackendVersions* bv)
    : iom(iomgr), beVers(bv), m_sApplicationDirPath(sApplicationDirPath)
{
    fillListZanController();
    if (setUpdateControllerPath()) {
        readControllerUpdateFiles();
        readCameraUpdateFiles();
    }
    fillListZanDisplay();
}

template <typename T>
static void deleteAll(QList<T*>* list)
{
    while (!list->isEmpty())
        delete list->takeFirst();
}

ZanModuleServer::~ZanModuleServer()
{
    deleteAll(&listUpdates);
    deleteAll(&listZanDisplay);
    deleteAll(&listZanController);
    deleteAll(&listCamUpdates);
}

bool ZanModuleServer::needsSearchHardware() const
{
    return std::any_of(listZanDisplay.begin(), listZanDisplay.end(), [](const ZanDisplay* row) {
        return row->toBeUpdated() && row->getCamUpdate() &&
               row->getCamUpdate()->isNeedsSearchHardware();
    });
}

void ZanModuleServer::redo_fillListZanDisplay()
{
    fillListZanController();
    fillListZanDisplay();
}

bool ZanModuleServer::isUpToDate(const ZanController& controller, bool updatePrerelease) const
{
    if (highestPtVersion > controller.getVersionLumasolver() ||
        highestCtVersion > controller.getVersionController())
        return false;
    const bool isOnOtherPreRelease =
        controller.isPreRelease() && controller.getVersionLumasolver() == highestPtVersion &&
        controller.getPreReleaseAppendix() != sHighestPtVersionAppendix;
    return !(updatePrerelease && isOnOtherPreRelease);
}

bool ZanModuleServer::allControllersUpToDate(bool updatePrerelease) const
{
    return std::all_of(
        listZanController.begin(), listZanController.end(),
        [&](const ZanController* controller) { return isUpToDate(*controller, updatePrerelease); });
}

void ZanModuleServer::updateControllersNeedUpdate()
{
    for (ZanController* controller : qAsConst(listZanController)) {
        if (isUpToDate(*controller, true))
            controller->setNeedUpdate(false);
    }
}

bool ZanModuleServer::hasFailedUpdate() const
{
    return std::any_of(listZanController.begin(), listZanController.end(),
                       [&](const ZanController* controller) {
                           return controller->getVersionLumasolver() == highestPtVersion &&
                                  controller->getVersionController() < highestCtVersion;
                       });
}

bool ZanModuleServer::isCameraUpdateOnly() const
{
    const auto decisive =
        std::find_if(listZanDisplay.begin(), listZanDisplay.end(), [](const ZanDisplay* row) {
            return row->type() != ZAN_UPDATE_NOTDEFINED && row->type() != ZAN_UPDATE_NOT_AVAILABLE;
        });
    return decisive != listZanDisplay.end() && (*decisive)->type() == CAMERA_UPDATE;
}

VersionInfo ZanModuleServer::getHighestPtVersionFromController() const
{
    VersionInfo highest(0, 0, 0);
    for (const ZanController* controller : listZanController)
        highest = std::max(highest, controller->getVersionLumasolver());
    return highest;
}

// ---- Controllers

void ZanModuleServer::fillListZanController()
{
    deleteAll(&listZanController);
    listZanController.append(new ZanController(iom, beVers, QString(), false));
    // For controllers without a cascade the flags are left alone: all of them stay set.
    if (!protocolAtLeast(beVers, PROTOCOL_CASCADE))
        return;

    int iNumSlaves = 0;
    if (iom->get_int(&iNumSlaves, "cascade number_of_connected_slaves") != 0)
        iNumSlaves = 0;
    for (int i = 1; i <= std::min(iNumSlaves, MAX_COUNTED_ENTRIES); ++i)
        appendAvailableSlave(i);
    updateControllersNeedUpdate();
}

void ZanModuleServer::appendAvailableSlave(int number)
{
    ReplyBuffer<> ip;
    if (iom->get_string(ip.forReply(), "cascade connected_slave d%2.2d", number) != 0)
        return;
    ReplyBuffer<> access;
    if (iom->get_string(access.forReply(), "cascade connected_slave_available %s", ip.text()) != 0)
        return;
    if (access.equals("yes"))
        listZanController.append(new ZanController(iom, beVers, ip.latin1(), true));
}

// ---- Update files

bool ZanModuleServer::setUpdateControllerPath()
{
    const QString name = QStringLiteral("controller_update");
    sUpdateControllerPath = searchDir(m_sApplicationDirPath, name);
    if (!sUpdateControllerPath.isEmpty())
        return true;
    sUpdateControllerPath = m_sApplicationDirPath + QDir::separator() + name;
    return false;
}

QString ZanModuleServer::searchDir(const QString& sDir, const QString& sSearchDir) const
{
    return searchDirectory(sDir, sSearchDir);
}

// These bounds exempt 2.8 without a patch but not 2.7 without one; that is meant.
bool isExemptFromStartPrompt(const BackendVersions* beVers)
{
    return isBriarscopeFamily(beVers) && beVers->systemPt() >= VersionInfo(2, 7, 0) &&
           beVers->systemPt() < VersionInfo(2, 8, 1);
}

bool ZanModuleServer::isTooOldForBriarscope() const
{
    return isBriarscopeFamily(beVers) && beVers->systemPt() <= VersionInfo(2, 7, 7);
}

void ZanModuleServer::readControllerUpdateFiles()
{
    if (isTooOldForBriarscope()) {
        logToHost(iom, QStringLiteral("This version of VORNIX3 is incompatible with this "
                                      "BRIARSCOPE! Please use Vornix2 in version v2.7.7."));
        return;
    }
    const QDir dir(sUpdateControllerPath + QDir::separator());
    if (!dir.exists())
        return;
    // No name filter: the magic decides what is an image.
    for (const QString& entry : dir.entryList(QDir::Files)) {
        auto image = std::make_unique<ZanData>(dir.filePath(entry));
        if (image->isValid())
            listUpdates.append(image.release());
    }
    std::stable_sort(listUpdates.begin(), listUpdates.end(),
                     [](const ZanData* a, const ZanData* b) {
                         return a->newVornix2Version() < b->newVornix2Version();
                     });
    updateHighestVersions();
}

void ZanModuleServer::updateHighestVersions()
{
    highestCtVersion = VersionInfo();
    highestPtVersion = VersionInfo();
    for (const ZanData* image : qAsConst(listUpdates)) {
        highestCtVersion = std::max(highestCtVersion, image->newCtVersion());
        if (image->newPtVersion() > highestPtVersion) {
            highestPtVersion = image->newPtVersion();
            sHighestPtVersionAppendix = image->getPreReleaseAppendix();
        }
    }
}

void ZanModuleServer::readCameraUpdateFiles()
{
    deleteAll(&listCamUpdates);
    QDir dir(sUpdateControllerPath + QDir::separator());
    if (!dir.exists())
        return;
    dir.setNameFilters({QStringLiteral("*.VX2znimg")});
    dir.setSorting(QDir::Name);
    for (const QString& entry : dir.entryList())
        listCamUpdates.append(new CamUpdateData(dir.filePath(entry)));
}

// ---- Rows

void ZanModuleServer::fillListZanDisplay()
{
    deleteAll(&listZanDisplay);
    bWithCameraUpdate = false;
    if (!allControllersUpToDate(true))
        addControllersToListZanDisplay();
    // Cameras follow when the controllers are up to date.
    if (listZanDisplay.isEmpty())
        addCameraUpdatesToListZanDisplay();
}

void ZanModuleServer::addControllersToListZanDisplay()
{
    for (ZanController* controller : qAsConst(listZanController)) {
        controller->currentCt = controller->getVersionController();
        controller->currentPt = controller->getVersionLumasolver();
    }
    if (listUpdates.isEmpty()) {
        listZanDisplay.append(new ZanDisplay(nullptr, nullptr));
        return;
    }
    for (ZanData* image : qAsConst(listUpdates)) {
        for (ZanController* controller : qAsConst(listZanController))
            addControllerRow(controller, image);
    }
}

void ZanModuleServer::addControllerRow(ZanController* controller, ZanData* image)
{
    if (!controller->getNeedUpdate() || !image->canUpdateSystemModel(controller->getSystemModel()))
        return;
    auto row = std::make_unique<ZanDisplay>(controller, image);
    if (!row->updateIndexes().isEmpty())
        listZanDisplay.append(row.release());
}

// ---- Cameras

/// What a camera says of itself.
struct ZanModuleServer::Camera
{
    int index = 0; ///< counted from 0
    QString model;
    QString serial;
    VersionInfo version;
    bool isPreRelease = false;
};

bool ZanModuleServer::allCamerasUpToDate()
{
    return checkCameraUpdates(false);
}

void ZanModuleServer::addCameraUpdatesToListZanDisplay()
{
    checkCameraUpdates(true);
}

bool ZanModuleServer::isUpdateImgContainsModel(const QString& sModel) const
{
    return std::any_of(
        listCamUpdates.begin(), listCamUpdates.end(),
        [&](const CamUpdateData* file) { return file->getCamModels().contains(sModel); });
}

bool ZanModuleServer::askCamera(int iCam, Camera* camera)
{
    ReplyBuffer<> res;
    if (iom->get_string(res.forReply(), "camera camera c%02d", iCam + 1) != 0)
        return false;
    camera->index = iCam;
    camera->model = res.latin1().section(QLatin1Char(' '), 0, 0);
    camera->serial = res.latin1().section(QLatin1Char(' '), 1, 1);
    if (!isUpdateImgContainsModel(camera->model))
        return false;

    if (iom->get_string(res.forReply(), "camera version c%02d", iCam + 1) != 0)
        return false;
    camera->version = VersionInfo::fromString(res.latin1());
    camera->isPreRelease = !res.latin1().remove(camera->version.toString()).isEmpty();
    return true;
}

// A final release replaces its own pre-release, so there equal versions qualify.
static bool isApplicable(const CamUpdateData& file, const QString& model,
                         const VersionInfo& version, bool isPreRelease)
{
    if (!file.getCamModels().contains(model) || version < file.getMinVer())
        return false;
    return isPreRelease ? version <= file.getNewVer() : version < file.getNewVer();
}

bool ZanModuleServer::checkCameraUpdates(bool doAddToListZanDisplay)
{
    int num_cams = 0;
    if (iom->get_int(&num_cams, "camera number_of_cameras") != 0)
        num_cams = 0;
    bool ret = true;
    for (int iCam = 0; iCam < std::min(num_cams, MAX_COUNTED_ENTRIES); ++iCam) {
        Camera camera;
        if (!askCamera(iCam, &camera))
            continue;
        for (CamUpdateData* file : qAsConst(listCamUpdates)) {
            if (!isApplicable(*file, camera.model, camera.version, camera.isPreRelease))
                continue;
            if (!doAddToListZanDisplay)
                return false;
            addCameraRow(file, camera);
            ret = false;
        }
    }
    return ret;
}

void ZanModuleServer::addCameraRow(CamUpdateData* camUpdate, const Camera& camera)
{
    ReplyBuffer<> res;
    if (iom->get_string(res.forReply(), "camera model_desc %s",
                        camera.model.toLatin1().constData()) != 0)
        res.set("");
    const QString modelDesc = res.latin1().remove(QLatin1Char('"'));
    listZanDisplay.append(new ZanDisplay(camUpdate, camera.index, camera.model, camera.serial,
                                         modelDesc, camera.version, camera.isPreRelease));
    bWithCameraUpdate = true;
}
