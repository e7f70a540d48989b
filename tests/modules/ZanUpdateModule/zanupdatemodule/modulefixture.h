#pragma once

#include <patience.h>

#include <fixturefiles.h>
#include <programfolder.h>
#include <scriptedcascade.h>
#include <scriptedchannel.h>
#include <zanupdatemodule.h>

#include <BackendVersions>

#include <QStringList>
#include <QVector>
#include <QWidget>

#include <memory>

class NewFeatureDialog;
class ZanUpdateModule2GSettingsdlg;

/// The plug-in object with a scripted host around it, in a home folder of its own.
///
/// The host is connected to a master with one camera; nothing is delivered beside the program until
/// a test delivers it. There can be one fixture at a time.
class ModuleFixture
{
public:
    explicit ModuleFixture(const BackendVersions& backend = BackendVersions(VersionInfo(3, 0, 0),
                                                                            VersionInfo(1, 23),
                                                                            VersionInfo(1, 0),
                                                                            QStringLiteral("ZAN")));
    ~ModuleFixture();
    ModuleFixture(const ModuleFixture&) = delete;
    ModuleFixture& operator=(const ModuleFixture&) = delete;

    /// Delivers an image that brings Pt 3.1.0 and Ct 1.0. @param isMasterBehind at Pt 3.0.0
    void deliverControllerImage(bool isMasterBehind);
    /// Delivers a file that brings the camera's model to 1.1.0. @param isCameraBehind at 1.0.0
    void deliverCameraFile(bool isCameraBehind);
    /// Delivers the notes of 3.0.0 and 3.1.0.
    void deliverNotes() const;

    /// Gives the plug-in all its parameters.
    void giveParameters(bool isObserver = false);

    /// The dialogs, as long as they belong to the window; null otherwise.
    NewFeatureDialog* viewer() const;
    ZanUpdateModule2GSettingsdlg* dialog() const;

    QString preferencesFile() const;
    /// The bytes of the preferences file; null if there is none.
    QByteArray preferences() const;

private:
    FixtureFolder m_home;

public:
    ProgramFolder delivered;
    ScriptedChannel channel;
    BackendVersions backend;
    std::unique_ptr<QWidget> window;
    std::unique_ptr<ZanUpdateModule> module;
};

/// The calls with which a master without slaves is asked for everything.
QStringList masterQueries();
/// The calls with which the camera is asked for everything that decides on an update.
QStringList cameraQueries();
/// The call that follows if there is one.
QStringList cameraRowQuery();

/// The delays of the one-shot timers that wait for their time, ascending.
QVector<int> armedSingleShots();
/// Lets the one-shot timers that wait fire now, in the order of their delays.
void fireSingleShots();
/// Waits until every one-shot timer has had its time and what it called has returned.
/// @return whether that came to an end within some seconds
bool waitForSingleShots();
