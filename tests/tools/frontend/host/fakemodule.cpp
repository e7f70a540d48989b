#include "fakemodule.h"

#include <BackendVersions.h>

#include <QCoreApplication>

namespace {

const char* const callsProperty = "callsOfTheFakeModule";
const char* const channelProperty = "channelOfTheFakeModule";

} // namespace

QStringList FakeModule::calls()
{
    return qApp->property(callsProperty).toStringList();
}

void FakeModule::forgetCalls()
{
    qApp->setProperty(callsProperty, QVariant());
}

IOManager* FakeModule::channel()
{
    return qApp->property(channelProperty).value<IOManager*>();
}

void FakeModule::note(const QString& call)
{
    qApp->setProperty(callsProperty, calls() << call);
}

void FakeModule::about_to_exit_module()
{
    note(QStringLiteral("about_to_exit_module"));
}

void FakeModule::exit_module()
{
    note(m_parent ? QStringLiteral("exit_module, the window is there")
                  : QStringLiteral("exit_module, the window is gone"));
    // The channel is there, too: dialogs may use it for the last time.
    m_channel->post_message("standard", "Fake", 1, "leaving");
    m_anytime.reset();
    m_noMeasurement.reset();
    m_dialog.reset();
}

QList<GuiElement*> FakeModule::get_gui_elements()
{
    note(QStringLiteral("get_gui_elements"));
    m_channel->register_receiver("UpdateModule", this);
    m_anytime = std::make_unique<QAction>(QStringLiteral("Anytime"));
    m_noMeasurement = std::make_unique<QAction>(QStringLiteral("Not while measuring"));
    m_dialog = std::make_unique<QDialog>(m_parent);
    m_dialog->setObjectName(QStringLiteral("fakeDialog"));
    connect(m_anytime.get(), &QAction::triggered, m_dialog.get(), &QDialog::exec);
    connect(m_noMeasurement.get(), &QAction::triggered, this, [this] {
        m_channel->post_message("Main_Window", "Fake", 1, "AppReadyToShutdown");
        QCoreApplication::quit();
    });
    m_anytimeElement = {m_anytime.get(), 30, "&Help", 700, m_dialog.get(), 1};
    m_noMeasurementElement = {m_noMeasurement.get(), 10, "&Help", 700, m_dialog.get(), 0};
    return {&m_anytimeElement, &m_noMeasurementElement};
}

void FakeModule::set_param(QString key, QVariant value)
{
    if (key == QLatin1String("CommandManager")) {
        m_channel = value.value<IOManager*>();
        qApp->setProperty(channelProperty, value);
    } else if (key == QLatin1String("ModuleParent")) {
        m_parent = value.value<QWidget*>();
    }
    const auto* versions = value.value<BackendVersions*>();
    const QString text = versions ? versions->systemPt().toString() + ' ' +
                                        versions->systemCt().toString() + ' ' +
                                        versions->protocol().toString() + ' ' + versions->zanModel()
                                  : QString::fromLatin1(value.typeName());
    note(QStringLiteral("set_param %1: %2").arg(key, text));
    if (value.type() == QVariant::Bool)
        note(value.toBool() ? QStringLiteral("observer") : QStringLiteral("no observer"));
}

int FakeModule::transmit_message(int /*type*/, const char* src, const char* msg)
{
    note(QStringLiteral("message of %1: %2").arg(QLatin1String(src), QLatin1String(msg)));
    return 0;
}
