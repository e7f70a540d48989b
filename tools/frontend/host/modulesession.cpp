#include "modulesession.h"

#include "contractfile.h"

#include <QPluginLoader>
#include <QWidget>

ModuleInterface* loadModule(const QString& file, QString* error)
{
    *error = whyNotToCall(file);
    if (!error->isEmpty())
        return nullptr;
    QPluginLoader loader(file);
    QObject* instance = loader.instance();
    if (!instance) {
        *error = QStringLiteral("%1: %2").arg(file, loader.errorString());
        return nullptr;
    }
    auto* module = qobject_cast<ModuleInterface*>(instance);
    if (!module)
        *error = QStringLiteral("%1: the plug-in does not implement %2")
                     .arg(file, QLatin1String(ModuleInterface_iid));
    return module;
}

ModuleSession::ModuleSession(ModuleInterface& module, const HostParameters& parameters)
    : m_module(module)
{
    module.set_param(QStringLiteral("CommandManager"), QVariant::fromValue(parameters.channel));
    module.set_param(QStringLiteral("ModuleParent"), QVariant::fromValue(parameters.parent));
    module.set_param(QStringLiteral("BackendVersions"), QVariant::fromValue(parameters.versions));
    module.set_param(QStringLiteral("ObserverMode"), parameters.observer);
    m_elements = module.get_gui_elements();
}

ModuleSession::~ModuleSession()
{
    m_module.about_to_exit_module();
    m_module.exit_module();
}
