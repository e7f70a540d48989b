// minimal-host PORT MODULE...: operates the simulated system at this port with these modules.
#include "tcpchannel.h"

#include <BackendVersions.h>
#include <ModuleInterface.h>

#include <QApplication>
#include <QFileInfo>
#include <QMainWindow>
#include <QMap>
#include <QMenuBar>
#include <QPluginLoader>

static VersionInfo askVersion(IOManager& channel, const char* key)
{
    char reply[200] = "";
    channel.get_string(reply, "%s", key);
    return VersionInfo::fromString(QString(reply).section(' ', 0, 0)); // without its date
}

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QTcpSocket socket;
    socket.connectToHost("127.0.0.1", QApplication::arguments().value(1).toUShort());
    if (!socket.waitForConnected())
        qFatal("%s", qPrintable(socket.errorString()));
    TcpChannel channel(socket);
    // Protocol and model are for the host to know.
    BackendVersions versions(askVersion(channel, "system version"), VersionInfo(1, 23),
                             askVersion(channel, "system controller_version"), "ZAN");
    QMainWindow window;
    QList<ModuleInterface*> modules;
    QMultiMap<QPair<int, int>, GuiElement*> entries; // in the order of the menus
    for (const QString& file : QApplication::arguments().mid(2)) {
        QPluginLoader loader(QFileInfo(file).absoluteFilePath());
        auto* module = qobject_cast<ModuleInterface*>(loader.instance());
        if (!module)
            qFatal("%s", qPrintable(loader.errorString()));
        modules += module;
        module->set_param("CommandManager", QVariant::fromValue<IOManager*>(&channel));
        module->set_param("ModuleParent", QVariant::fromValue<QWidget*>(&window));
        module->set_param("BackendVersions", QVariant::fromValue(&versions));
        module->set_param("ObserverMode", false);
        for (GuiElement* it : module->get_gui_elements())
            entries.insert({it->menu_order_number, it->menu_entry_order_number}, it);
    }
    QMap<QString, QMenu*> menus;
    for (const GuiElement* it : qAsConst(entries)) {
        QMenu*& menu = menus[it->menu_name];
        menu = menu ? menu : window.menuBar()->addMenu(it->menu_name);
        menu->addAction(it->menu_entry);
    }
    channel.post_message("UpdateModule", "Host", 1, "v3.3.0"); // its own version
    window.show();
    const int code = QApplication::exec();
    for (ModuleInterface* module : qAsConst(modules)) {
        module->about_to_exit_module();
        module->exit_module();
    }
    return code;
}
