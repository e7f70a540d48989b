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
    /// Copies as the assignment does.
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

    /// Ct as reported, up to the first blank; v0.0.0 if it cannot be asked.
    const QString& getVersionStringController() const { return sVerCt; }
    /// Ct, the version of the controller's own software.
    const VersionInfo& getVersionController() const { return verCt; }
    /// Pt as a bare version, without what stands behind it.
    const QString& getVersionStringLumasolver() const { return sVerPt; }
    /// Pt, the version of the tracking software.
    const VersionInfo& getVersionLumasolver() const { return verPt; }
    /// Empty if it cannot be asked.
    const QString& hostname() const { return sHostname; }
    /// Address of a slave, by which the master is told whom a command concerns; empty for the
    /// master.
    const QString& ip() const { return sIp; }
    /// Whether it is reached through the master.
    bool isSlave() const { return bSlave; }
    /// What marks the running Pt as a pre-release, in the form -beta.3; empty for a release.
    const QString& getPreReleaseAppendix() const { return sPreReleaseAppendix; }
    /// Model number; 0 if it cannot be asked, -1 on an older backend that does not tell it.
    int getSystemModel() const { return systemmodel; }
    /// Model text without its quotation marks.
    const QString& getSystemModelDesc() const { return sSystemModelDesc; }
    /// 0 if it cannot be asked, or on a backend that knows no cascades.
    int getControllerSerial() const { return iControllerSerial; }
    /// Text without its quotation marks; none for slaves and if it cannot be asked.
    const QString& getMainboardDesc() const { return sMainboardDesc; }
    /// Whether rows are made for it; means something only once the inventory has compared it.
    bool getNeedUpdate() const { return bNeedUpdate; }
    /// Keeps the inventory's verdict.
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
