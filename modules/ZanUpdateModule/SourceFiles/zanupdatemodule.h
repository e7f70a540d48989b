#pragma once

#include <BackendVersions>
#include <IOManager>
#include <ModuleInterface>

#include <QObject>
#include <QStringList>

class NewFeatureDialog;
class ZanUpdateModule2GSettingsdlg;

/// The object that Qt's plug-in loader creates and the host talks to.
///
/// Takes the host's parameters, builds the two dialogs with their menu entries on the first
/// request, and decides, once, what the user is confronted with at start. User interface thread
/// only.
class ZanUpdateModule : public QObject, public ModuleInterface
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID ZanUpdateModule_iid)
    Q_INTERFACES(ModuleInterface)

public:
    ZanUpdateModule();

    QString get_module_name() const override;
    QString get_module_version() const override;
    /// The menu entries. The first call builds the dialogs and arms the timers of the start; after
    /// exit_module() the next call does so anew. Without what it needs there are none, and a
    /// warning names the parameters; a call after they were set is the first one then.
    QList<_GuiElement*> get_gui_elements() override;
    /// Takes "CommandManager", "ModuleParent", "BackendVersions" or "ObserverMode"; ignores other
    /// keys. A value of another type counts as null or false.
    void set_param(QString key, QVariant value) override;
    /// Releases the inventory; as long as a window of the plug-in is open or a run is under way,
    /// at its end.
    void about_to_exit_module() override;
    /// Deletes the viewer, then the update dialog, which writes the preferences. What is open
    /// closes before, and a run goes to its end: they are deleted when it has returned, and until
    /// then there are no menu entries.
    void exit_module() override;
    ~ZanUpdateModule() override;

private:
    bool controllerIsUpToDate();
    bool camerasUpToDate();
    bool hasZanValidIP();
    void setModuleParent(QWidget* parent);
    void setObserverMode(const QVariant& value);
    QStringList missingParameters() const;
    bool canBuild() const;
    void build();
    void addWhatIsNewEntry();
    void addUpdateEntry();
    void decideStart();
    void exitBehindParent(QObject* parent);
    void deleteDialogs();

    QWidget* mod_parent = nullptr;
    QList<_GuiElement*> gui_elements;
    GuiElement gui_zanUpdateModule{}; // a spare record, never used
    GuiElement gui_zanUpdateDlg{};
    GuiElement gui_whatisnew{};
    IOManager* iom = nullptr;
    BackendVersions* beVers = nullptr;
    bool bObserverMode = false;
    ZanUpdateModule2GSettingsdlg* zanUpdateDlg = nullptr;
    NewFeatureDialog* m_new_feature_dialog = nullptr;
    bool m_isObserverModeClear = true; ///< false: given as something else than true or false
    bool m_isLeaving = false;          ///< exit_module() waits for its turn
};
