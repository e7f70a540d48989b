#pragma once

#include <ZanUpdateModule2GSettingsdlg.h>
#include <fixturefiles.h>
#include <newfeaturedialog.h>
#include <programfolder.h>
#include <scriptedcascade.h>
#include <scriptedchannel.h>
#include <updatefile.h>
#include <zanmoduleserver.h>

#include <BackendVersions>

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTableWidget>

#include <functional>

/// What the host's backend says of itself.
struct Backend
{
    VersionInfo protocol = VersionInfo(1, 23);
    QString model = QStringLiteral("ZAN");
    VersionInfo pt = VersionInfo(3, 0, 0);
};

/// The update dialog with its viewer on a scripted host, in a home folder of its own, with the
/// update files that lie beside the test program.
///
/// The inventory is made by the dialog when it needs it, and goes with the fixture. There can be
/// one fixture at a time, as there is one inventory and one folder beside the program.
class DialogFixture
{
public:
    explicit DialogFixture(const Backend& backend = {});
    ~DialogFixture();
    DialogFixture(const DialogFixture&) = delete;
    DialogFixture& operator=(const DialogFixture&) = delete;

    /// Delivers an update file. To be called before the inventory is made. @return its full path
    QString deliver(const QString& fileName, const UpdateFile& file);
    /// The inventory, made if there is none yet.
    ZanModuleServer* inventory();
    /// The inventory after it has asked everything again and rebuilt its rows.
    ZanModuleServer* refreshedInventory();

    /// Adds a controller to the inventory by hand; it lives until the inventory is refreshed.
    ZanController* addMaster(const ScriptedController& controller);
    ZanController* addSlave(const ScriptedSlave& slave);
    /// Adds a selected row by hand, with an image that lies nowhere near the inventory's.
    ZanDisplay* addRow(ZanController* controller, const ControllerImage& image);
    /// Adds a camera row by hand.
    ZanDisplay* addCameraRow(const CameraUpdateFile& file);

    const ProgramFolder& programFolder() const { return m_programFolder; }
    /// The home folder in which the dialog keeps its preferences.
    const QString& home() const { return m_home; }
    QLabel* label(const char* name) const;
    QProgressBar* bar() const;
    QTableWidget* table() const;
    QPushButton* updateButton() const;
    QPushButton* exitButton() const;

private:
    ProgramFolder m_programFolder;
    FixtureFolder m_files;
    QString m_home;
    int m_fileCount = 0;

public:
    ScriptedChannel channel;
    BackendVersions backend;
    NewFeatureDialog viewer;
    ZanUpdateModule2GSettingsdlg dialog;
};

/// Files that this process holds open.
int openFileCount();

/// Whether this process holds the file at @p path open.
bool isFileOpen(const QString& path);

/// Runs @p act in the application's event loop. @return whether that made the application quit
bool makesApplicationQuit(const std::function<void()>& act);
