#pragma once

#include <VersionInfo>

#include <QString>

class BackendVersions;
class IOManager;

/// What is known of one controller: the master, or one slave of a cascade.
///
/// Asks the controller for everything at construction, keeps the answers and serves them without
/// traffic. A query that fails leaves a fallback value, so a dead channel looks like a very old
/// controller. Owned by the inventory; user interface thread only.
class ZanController
{
public:
    VersionInfo currentCt; ///< running Ct of the walk along the images; not copied
    VersionInfo currentPt; ///< running Pt of the walk along the images; not copied

    /// Queries the controller; blocks until all queries are done.
    ///
    /// @param iom    channel, not owned
    /// @param beVers backend's versions, not owned
    /// @param sIp    address of a slave, empty for the master
    ZanController(IOManager* iom, BackendVersions* beVers, QString sIp, bool bSlave);
    ZanController(const ZanController& other);
    /// Copies everything but the running position, which belongs to one walk over one record.
    ZanController& operator=(const ZanController& other);
    ~ZanController() = default;

    /// Repeats all queries and overwrites what they answer, one member after the other.
    void updateVersions();
    /// Tells the master that the next update data are for this controller.
    /// @return whether it agreed; true without traffic on a backend that knows no redirection
    bool setupRedirection();
    /// Whether the controller runs a pre-release of its tracking software.
    bool isPreRelease() const;
    /// Reduces what stood behind the version to the form -beta.3.
    void simplyfyPreReleaseAppendix(QString& s);

    const QString& getVersionStringController() const { return sVerCt; }
    const VersionInfo& getVersionController() const { return verCt; }
    const QString& getVersionStringLumasolver() const { return sVerPt; }
    const VersionInfo& getVersionLumasolver() const { return verPt; }
    const QString& hostname() const { return sHostname; }
    const QString& ip() const { return sIp; }
    bool isSlave() const { return bSlave; }
    const QString& getPreReleaseAppendix() const { return sPreReleaseAppendix; }
    int getSystemModel() const { return systemmodel; }
    const QString& getSystemModelDesc() const { return sSystemModelDesc; }
    int getControllerSerial() const { return iControllerSerial; }
    const QString& getMainboardDesc() const { return sMainboardDesc; }
    bool getNeedUpdate() const { return bNeedUpdate; }
    void setNeedUpdate(bool needUpdate) { bNeedUpdate = needUpdate; }

private:
    void queryHostname(const QByteArray& suffix);
    void queryVersions(const QByteArray& suffix);
    void splitPreReleaseAppendix();
    void queryModel(const QByteArray& suffix);
    void querySerial();
    void queryMainboard();

    IOManager* iom = nullptr;
    BackendVersions* beVers = nullptr;
    QString sHostname;
    int systemmodel = 0;
    QString sSystemModelDesc;
    int iControllerSerial = 0;
    QString sMainboardDesc = QStringLiteral("none");
    QString sIp;
    bool bSlave = false;
    QString sVerCt;
    QString sVerPt;
    VersionInfo verCt;
    VersionInfo verPt;
    QString sPreReleaseAppendix;
    bool bNeedUpdate = true;
};
