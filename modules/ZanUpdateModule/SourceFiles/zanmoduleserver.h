#pragma once

#include <VersionInfo>

#include <QList>
#include <QString>

class BackendVersions;
class CamUpdateData;
class IOManager;
class ZanController;
class ZanData;
class ZanDisplay;

/// The inventory: which controllers answer, which update files lie beside the frontend, and which
/// updates can therefore be offered.
///
/// A singleton, created by whoever asks first and released when the module is about to exit. It
/// owns what its lists hold. Update files are read once, at construction; controllers and rows are
/// rebuilt by redo_fillListZanDisplay(), which makes every pointer to one of them void. User
/// interface thread only; construction and rebuilding block while the controllers answer.
class ZanModuleServer
{
public:
    /// The instance. The arguments count only for the call that creates it.
    static ZanModuleServer* Exemplar(IOManager* iomgr, const QString& sApplicationDirPath,
                                     BackendVersions* bv);
    /// Destroys the instance, if there is one.
    static void ReleaseExemplar();

    ZanModuleServer(const ZanModuleServer&) = delete;
    ZanModuleServer& operator=(const ZanModuleServer&) = delete;

    /// Whether a camera that is marked to be updated must be searched for afterwards.
    bool needsSearchHardware() const;
    /// Asks all controllers again and rebuilds the rows.
    void redo_fillListZanDisplay();

    /// Newest Ct that an image brings; VersionInfo() without images.
    VersionInfo getHighestCtVersionFromUpdateFiles() const { return highestCtVersion; }
    /// Newest Pt that an image brings; VersionInfo() without images.
    VersionInfo getHighestPtVersionFromUpdateFiles() const { return highestPtVersion; }
    /// Pre-release mark of the image with the newest Pt; empty for a release.
    QString getHighestPtVersionAppendix() const { return sHighestPtVersionAppendix; }

    /// Whether no controller is below what the image files bring.
    ///
    /// @param updatePrerelease whether a controller on another pre-release of the newest version
    ///                         counts as out of date
    bool allControllersUpToDate(bool updatePrerelease) const;
    /// Whether some controller took the newest Pt but not the newest Ct.
    bool hasFailedUpdate() const;
    /// Whether there is a camera row.
    bool isCameraUpdate() const { return bWithCameraUpdate; }
    /// Whether the first row that offers anything is a camera row.
    bool isCameraUpdateOnly() const;
    /// Asks the cameras. @return whether no update file applies to any of them
    bool allCamerasUpToDate();

    QList<ZanController*> listZanController; ///< master first, then its available slaves
    QList<ZanData*> listUpdates;             ///< valid images, ascending by release
    QList<CamUpdateData*> listCamUpdates;    ///< camera update files, by file name
    QList<ZanDisplay*> listZanDisplay;       ///< the current rows of the update table

protected:
    /// Reads the update files and asks the controllers. Neither pointer is owned.
    ZanModuleServer(IOManager* iomgr, const QString& sApplicationDirPath, BackendVersions* bv);
    ~ZanModuleServer();

private:
    struct Camera;

    void updateHighestVersions();
    void fillListZanController();
    void appendAvailableSlave(int number);
    void fillListZanDisplay();
    void addControllersToListZanDisplay();
    void addControllerRow(ZanController* controller, ZanData* image);
    void readControllerUpdateFiles();
    bool isTooOldForBriarscope() const;
    bool setUpdateControllerPath();
    QString searchDir(const QString& sDir, const QString& sSearchDir) const;
    void readCameraUpdateFiles();
    void addCameraUpdatesToListZanDisplay();
    bool checkCameraUpdates(bool doAddToListZanDisplay);
    bool askCamera(int iCam, Camera* camera);
    void addCameraRow(CamUpdateData* camUpdate, const Camera& camera);
    bool isUpdateImgContainsModel(const QString& sModel) const;
    VersionInfo getHighestPtVersionFromController() const;
    bool isUpToDate(const ZanController& controller, bool updatePrerelease) const;
    void updateControllersNeedUpdate();

    static ZanModuleServer* m_exemplar;

    IOManager* iom;
    BackendVersions* beVers;
    QString m_sApplicationDirPath;
    QString sUpdateControllerPath;
    VersionInfo highestCtVersion;
    VersionInfo highestPtVersion;
    QString sHighestPtVersionAppendix;
    bool bWithCameraUpdate = false;
};

/// Whether the user of a system with @p beVers is not asked for an update of the controllers at
/// start, whatever is delivered; the dialog offers it all the same. Safe to call from any thread.
bool isExemptFromStartPrompt(const BackendVersions* beVers);
