#pragma once

#include <QList>
#include <QString>
#include <QVariant>
#include <QtPlugin>

#include <type_traits>

class QAction;
class QWidget;

/// The reverse-domain prefix of all interface and plug-in ids of this project.
#define VORNIX_ID_PREFIX "org.orv"
/// Id under which ModuleInterface is declared to Qt.
#define ModuleInterface_iid VORNIX_ID_PREFIX ".vornix2.gui.Module/0.2.0"
/// Id ("IID" of the metadata) of the controller and camera update plug-in.
#define ZanUpdateModule_iid VORNIX_ID_PREFIX ".Vornix2.ZanUpdateModule"

/// One menu entry of a module with the widget behind it.
///
/// The module owns the record, the action and the widget; they live until its exit_module().
struct _GuiElement // NOLINT(bugprone-reserved-identifier): the name is part of the contract
{
    QAction* menu_entry;                  ///< the action to place in the menu
    int menu_entry_order_number;          ///< position of the action inside its menu, ascending
    QString menu_name;                    ///< translated title of that menu, with its mnemonic
    int menu_order_number;                ///< position of that menu in the menu bar, ascending
    QWidget* content;                     ///< the widget that the entry opens
    int action_active_during_measurement; ///< 1: stays enabled while a measurement runs; 0: does
                                          ///< not
};
/// The name by which hosts and modules call it.
using GuiElement = _GuiElement;

static_assert(std::is_standard_layout_v<GuiElement>,
              "host and plug-in share the layout of GuiElement");

/// What a plug-in module offers to the frontend. All calls come on the user interface thread.
///
/// The host's order: set_param() for every parameter, get_gui_elements(), then
/// about_to_exit_module() when the application begins to shut down, and exit_module() at last.
class ModuleInterface
{
public:
    virtual ~ModuleInterface() {} // NOLINT(modernize-use-equals-default): its body is empty

    /// The host will leave soon: releases what must be gone before the application's objects are.
    /// In the middle of a call of the module, at its end.
    virtual void about_to_exit_module() = 0;
    /// Frees the module's dialogs; every list that get_gui_elements() returned is void afterwards.
    /// In the middle of a call of the module its windows close, a run goes to its end, and the
    /// dialogs are freed when the call returns: they emit destroyed(), and what the host owns has
    /// to live until then.
    virtual void exit_module() = 0;
    /// Name of the module, translated.
    virtual QString get_module_name() const = 0;
    /// Version of the module in the form v1.2.3.
    virtual QString get_module_version() const = 0;
    /// The module's menu entries. The first call builds the dialogs; the records stay the module's.
    /// Empty as long as a parameter that the module needs is missing.
    virtual QList<_GuiElement*> get_gui_elements() = 0;
    /// Takes one named parameter; unknown keys are ignored. docs/host-integration.md lists them.
    virtual void set_param(QString key, QVariant value) = 0;
};

static_assert(sizeof(ModuleInterface) == sizeof(void*),
              "ModuleInterface is virtual operations and no data");

Q_DECLARE_INTERFACE(ModuleInterface, ModuleInterface_iid)
