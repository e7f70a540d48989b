#include <ModuleInterface>

#include "testmain.h"
#include "vtableindex.h"

#include <cstddef>
#include <type_traits>

class TestModuleInterface : public QObject
{
    Q_OBJECT

private slots:
    void keepsTheOrderOfItsOperations();
    void hasOnlyADestructorOfItsOwn();
    void keepsTheOrderOfAMenuEntry();
    void hasOneIdForHostAndPlugin();
    void isFoundByCastingAQtObject();
};

void TestModuleInterface::keepsTheOrderOfItsOperations()
{
    // The virtual destructor takes the first two places.
    QCOMPARE(vtableIndex(&ModuleInterface::about_to_exit_module), 2);
    QCOMPARE(vtableIndex(&ModuleInterface::exit_module), 3);
    QCOMPARE(vtableIndex(&ModuleInterface::get_module_name), 4);
    QCOMPARE(vtableIndex(&ModuleInterface::get_module_version), 5);
    QCOMPARE(vtableIndex(&ModuleInterface::get_gui_elements), 6);
    QCOMPARE(vtableIndex(&ModuleInterface::set_param), 7);
}

void TestModuleInterface::hasOnlyADestructorOfItsOwn()
{
    QVERIFY(std::has_virtual_destructor_v<ModuleInterface>);
    QVERIFY(std::is_abstract_v<ModuleInterface>);
    QCOMPARE(sizeof(ModuleInterface), sizeof(void*));
}

void TestModuleInterface::keepsTheOrderOfAMenuEntry()
{
    // Only their addresses are looked at.
    quintptr places[2] = {};
    auto* action = reinterpret_cast<QAction*>(&places[0]);
    auto* widget = reinterpret_cast<QWidget*>(&places[1]);
    const GuiElement element{action, 1, QStringLiteral("&Help"), 2, widget, 3};
    QCOMPARE(element.menu_entry, action);
    QCOMPARE(element.menu_entry_order_number, 1);
    QCOMPARE(element.menu_name, QStringLiteral("&Help"));
    QCOMPARE(element.menu_order_number, 2);
    QCOMPARE(element.content, widget);
    QCOMPARE(element.action_active_during_measurement, 3);

    QVERIFY((std::is_same_v<GuiElement, _GuiElement>));
    QVERIFY(std::is_standard_layout_v<GuiElement>);
    QCOMPARE(int(offsetof(GuiElement, menu_entry)), 0);
    QVERIFY(offsetof(GuiElement, menu_name) > offsetof(GuiElement, menu_entry_order_number));
    QVERIFY(offsetof(GuiElement, content) > offsetof(GuiElement, menu_order_number));
    QVERIFY(offsetof(GuiElement, action_active_during_measurement) > offsetof(GuiElement, content));
}

void TestModuleInterface::hasOneIdForHostAndPlugin()
{
    QCOMPARE(QByteArray(qobject_interface_iid<ModuleInterface*>()),
             QByteArray(VORNIX_ID_PREFIX ".vornix2.gui.Module/0.2.0"));
    QCOMPARE(QByteArray(ZanUpdateModule_iid),
             QByteArray(VORNIX_ID_PREFIX ".Vornix2.ZanUpdateModule"));
}

class SampleModule final : public QObject, public ModuleInterface
{
    Q_OBJECT
    Q_INTERFACES(ModuleInterface)

public:
    void about_to_exit_module() override {}
    void exit_module() override {}
    QString get_module_name() const override { return QStringLiteral("sample"); }
    QString get_module_version() const override { return QStringLiteral("v1.0.0"); }
    QList<_GuiElement*> get_gui_elements() override { return {}; }
    void set_param(QString key, QVariant value) override { params += key + value.toString(); }

    QStringList params;
};

void TestModuleInterface::isFoundByCastingAQtObject()
{
    SampleModule module;
    QObject* object = &module;
    auto* contract = qobject_cast<ModuleInterface*>(object);
    QCOMPARE(contract, static_cast<ModuleInterface*>(&module));
    QCOMPARE(contract->get_module_name(), QStringLiteral("sample"));
    contract->set_param(QStringLiteral("ObserverMode"), true);
    QCOMPARE(module.params, QStringList("ObserverModetrue"));
    QObject other;
    QCOMPARE(qobject_cast<ModuleInterface*>(&other), nullptr);
}

ZAN_TEST_MAIN(TestModuleInterface)

#include "tst_moduleinterface.moc"
