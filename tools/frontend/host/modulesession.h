#pragma once

#include <BackendVersions.h>
#include <IOManager.h>
#include <ModuleInterface.h>

#include <QString>

/// Loads a plug-in module of this program's contract. It stays loaded until the process ends.
///
/// @param error must not be null; on failure whyNotToCall(), or the file with the loader's own
///        words, or with what is wrong with the object that the plug-in holds
/// @return null on failure
ModuleInterface* loadModule(const QString& file, QString* error);

/// What a host hands to a module.
struct HostParameters
{
    IOManager* channel;        ///< not null
    QWidget* parent;           ///< of the module's windows; may be null
    BackendVersions* versions; ///< not null
    bool observer;             ///< whether the user may only look on
};

/// The time that a module takes part in the frontend, with the order of calls that it relies on.
class ModuleSession
{
public:
    /// Gives the parameters and has the module build its menu entries.
    /// @param module and what @p parameters point to must outlive the session
    ModuleSession(ModuleInterface& module, const HostParameters& parameters);
    /// Tells the module that the end comes, and then has it free its dialogs.
    ~ModuleSession();
    ModuleSession(const ModuleSession&) = delete;
    ModuleSession& operator=(const ModuleSession&) = delete;

    /// The module's menu entries, which stay the module's.
    const QList<GuiElement*>& elements() const { return m_elements; }

private:
    ModuleInterface& m_module;
    QList<GuiElement*> m_elements;
};
