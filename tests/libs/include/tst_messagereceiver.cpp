#include <MessageReceiver>

#include "testmain.h"
#include "vtableindex.h"

#include <QStringList>

class TestMessageReceiver : public QObject
{
    Q_OBJECT

private slots:
    void hasOneOperation();
    void handsOnKindSenderAndText();
};

struct NotedMessages final : MessageReceiver
{
    int transmit_message(int type, const char* src, const char* msg) override
    {
        notes += QStringLiteral("%1|%2|%3").arg(type).arg(src, msg);
        return 0;
    }

    QStringList notes;
};

void TestMessageReceiver::hasOneOperation()
{
    QCOMPARE(vtableIndex(&MessageReceiver::transmit_message), 0);
}

void TestMessageReceiver::handsOnKindSenderAndText()
{
    NotedMessages receiver;
    MessageReceiver& contract = receiver;
    QCOMPARE(contract.transmit_message(1, "Main_Window", "v3.0.0"), 0);
    QCOMPARE(receiver.notes, QStringList("1|Main_Window|v3.0.0"));
}

ZAN_TEST_MAIN(TestMessageReceiver)

#include "tst_messagereceiver.moc"
