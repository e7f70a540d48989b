#pragma once

#include <IOManager.h>
#include <ModuleInterface.h>

#include <QAction>
#include <QListWidget>
#include <QPointer>
#include <QTimer>

class QAbstractButton;

/// A module that stands in for a user who agrees to everything: hosts are tested with it by night.
class UnattendedModule : public QObject, public ModuleInterface
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID VORNIX_ID_PREFIX ".example.UnattendedModule")
    Q_INTERFACES(ModuleInterface)

public:
    UnattendedModule();

    void about_to_exit_module() override { m_timer.stop(); }
    void exit_module() override;
    QString get_module_name() const override { return tr("Unattended"); }
    QString get_module_version() const override { return QStringLiteral("v1.0.0"); }
    QList<_GuiElement*> get_gui_elements() override;
    void set_param(QString key, QVariant value) override;

private:
    void look();
    bool press(QAbstractButton* button);

    IOManager* m_channel = nullptr;
    QWidget* m_parent = nullptr;
    QAction m_action;             // the module's, as the host shows it and does not own it
    QPointer<QListWidget> m_list; // what was pressed; goes with its parent if that goes first
    GuiElement m_element;
    QTimer m_timer;
    QPointer<QWidget> m_seen; // the window that was on top at the last look
    bool m_hasUpdated = false;
};
