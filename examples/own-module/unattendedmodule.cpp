#include "unattendedmodule.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>

UnattendedModule::UnattendedModule() : m_action(tr("What was pressed..."))
{
    connect(&m_action, &QAction::triggered, this, [this] {
        if (m_list)
            m_list->show();
    });
    connect(&m_timer, &QTimer::timeout, this, &UnattendedModule::look);
}

// Every key that the host has, also those that are for other modules.
void UnattendedModule::set_param(QString key, QVariant value)
{
    if (key == QLatin1String("CommandManager"))
        m_channel = value.value<IOManager*>();
    else if (key == QLatin1String("ModuleParent"))
        m_parent = value.value<QWidget*>();
}

// The host may ask more than once; only the first call builds anything.
QList<_GuiElement*> UnattendedModule::get_gui_elements()
{
    if (!m_channel)
        return {};
    if (!m_list) {
        m_list = new QListWidget(m_parent);
        m_list->setWindowFlag(Qt::Window);
        m_element = {&m_action, 1, tr("&Unattended"), 90, m_list, 1};
        m_timer.start(250);
    }
    return {&m_element};
}

void UnattendedModule::exit_module()
{
    m_timer.stop();
    delete m_list;
}

// A window has to be on top twice, as another one may be about to cover it.
void UnattendedModule::look()
{
    QWidget* window = QApplication::activeModalWidget();
    if (window && window == m_seen) {
        if (const auto* box = qobject_cast<QMessageBox*>(window)) {
            QAbstractButton* yes = box->button(QMessageBox::Yes);
            press(yes ? yes : box->buttons().constFirst());
        } else if (m_hasUpdated || !press(window->findChild<QPushButton*>("pushButton_update"))) {
            press(window->findChild<QPushButton*>("pushButton_exit"));
        }
    }
    m_seen = window;
}

// From the event loop, as what begins then may take long, and has windows of its own.
bool UnattendedModule::press(QAbstractButton* button)
{
    if (!button || !button->isEnabled())
        return false;
    m_hasUpdated = m_hasUpdated || button->objectName() == QLatin1String("pushButton_update");
    const QString told = button->window()->windowTitle() + QLatin1String(": ") + button->text();
    if (m_list)
        m_list->addItem(told);
    m_channel->post_message("standard", "UNATTENDED", 1, told.toLatin1().constData());
    return QMetaObject::invokeMethod(button, "click", Qt::QueuedConnection);
}
