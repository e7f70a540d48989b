#pragma once

#include <IOManager.h>
#include <MessageReceiver.h>
#include <ModuleInterface.h>

#include <QAction>
#include <QDialog>
#include <QPointer>
#include <QStringList>

#include <memory>

/// A module that does nothing but write down, in order, what the host does with it. The calls stand
/// in a property of the application, where the test finds them although it loads the module as a
/// plug-in.
class FakeModule : public QObject, public ModuleInterface, public MessageReceiver
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.orv.test.FakeModule")
    Q_INTERFACES(ModuleInterface)

public:
    FakeModule() = default;
    virtual ~FakeModule() = default;

    static QStringList calls();
    static void forgetCalls();
    /// The channel that the host gave last; null before.
    static IOManager* channel();

    void about_to_exit_module() override;
    void exit_module() override;
    QString get_module_name() const override { return QStringLiteral("Fake"); }
    QString get_module_version() const override { return QStringLiteral("v1.2.3"); }
    QList<GuiElement*> get_gui_elements() override;
    void set_param(QString key, QVariant value) override;

    int transmit_message(int type, const char* src, const char* msg) override;

private:
    static void note(const QString& call);

    IOManager* m_channel = nullptr;
    QPointer<QWidget> m_parent;
    std::unique_ptr<QAction> m_anytime;
    std::unique_ptr<QAction> m_noMeasurement;
    std::unique_ptr<QDialog> m_dialog;
    GuiElement m_anytimeElement{};
    GuiElement m_noMeasurementElement{};
};
