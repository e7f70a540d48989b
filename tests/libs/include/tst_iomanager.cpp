#include <IOManager>

#include "scriptedchannel.h"
#include "testmain.h"
#include "vtableindex.h"

#include <QVariant>

class TestIOManager : public QObject
{
    Q_OBJECT

private slots:
    void keepsTheOrderOfItsOperations();
    void travelsInAVariantUnderItsPointerName();
};

void TestIOManager::keepsTheOrderOfItsOperations()
{
    QCOMPARE(vtableIndex(&IOManager::prepare_reply), 0);
    QCOMPARE(vtableIndex(&IOManager::send_command), 1);
    QCOMPARE(vtableIndex(&IOManager::poll_reply), 2);
    QCOMPARE(vtableIndex(&IOManager::get_string), 3);
    QCOMPARE(vtableIndex(&IOManager::get_int), 4);
    QCOMPARE(vtableIndex(&IOManager::set_value), 5);
    QCOMPARE(vtableIndex(&IOManager::post_message), 6);
    QCOMPARE(vtableIndex(&IOManager::register_receiver), 7);
    QCOMPARE(vtableIndex(&IOManager::get_address), 8);
}

void TestIOManager::travelsInAVariantUnderItsPointerName()
{
    ScriptedChannel channel;
    const QVariant variant = QVariant::fromValue<IOManager*>(&channel);
    QCOMPARE(variant.typeName(), "IOManager*");
    QCOMPARE(QMetaType::type("IOManager*"), qMetaTypeId<IOManager*>());
    QCOMPARE(variant.value<IOManager*>(), static_cast<IOManager*>(&channel));
}

ZAN_TEST_MAIN(TestIOManager)

#include "tst_iomanager.moc"
