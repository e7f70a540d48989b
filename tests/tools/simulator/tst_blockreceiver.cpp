#include "blockreceiver.h"
#include "simulatorfixtures.h"

#include <testmain.h>

using State = BlockReceiver::State;

namespace {

const PayloadComponent pt = PayloadComponent::TrackingSoftware;

} // namespace

class TestBlockReceiver : public QObject
{
    Q_OBJECT

private slots:
    void reassemblesRecordsOfAnySize_data();
    void reassemblesRecordsOfAnySize();
    void refusesARecord_data();
    void refusesARecord();
    void refusesEverythingAfterARefusal();
    void startsAnewWithRecordOne();
    void findsDamage_data();
    void findsDamage();
    void dropForgetsTheBlock();
    void refusesABlockBeyondTheLimit();
};

namespace {

State takeAll(BlockReceiver* receiver, const QList<QByteArray>& texts)
{
    State state = State::Idle;
    for (int index = 0; index < texts.size(); ++index)
        state = receiver->take(pt, texts.size(), index + 1, texts.at(index));
    return state;
}

// A receiver that has taken records 1 and 2 of 5.
BlockReceiver receiverAfterTwo()
{
    BlockReceiver receiver;
    receiver.take(pt, 5, 1, "AAAA");
    receiver.take(pt, 5, 2, "AAAA");
    return receiver;
}

} // namespace

void TestBlockReceiver::reassemblesRecordsOfAnySize_data()
{
    QTest::addColumn<int>("recordSize");
    for (const int size : {1, 2, 3, 7, 119, 120})
        QTest::addRow("%d bytes", size) << size;
}

void TestBlockReceiver::reassemblesRecordsOfAnySize()
{
    QFETCH(int, recordSize);
    BlockReceiver receiver;
    const QList<QByteArray> texts =
        recordTexts(trackingSoftware({3, 2, 0}, QStringLiteral("-beta.2")), recordSize);
    QCOMPARE(takeAll(&receiver, texts), State::Complete);
    QCOMPARE(receiver.head().version.toString(), QStringLiteral("v3.2.0"));
    QCOMPARE(receiver.head().appendix, QStringLiteral("-beta.2"));
    QCOMPARE(receiver.received(), texts.size());
    QCOMPARE(receiver.expected(), texts.size());
}

void TestBlockReceiver::refusesARecord_data()
{
    QTest::addColumn<PayloadComponent>("component");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("number");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("reason");

    const QString impossible = QStringLiteral("no such record in a block");
    const QString notText = QStringLiteral("record is not 6-bit text");
    const QByteArray good("AAAA");
    QTest::newRow("one left out") << pt << 5 << 4 << good
                                  << QStringLiteral("record 3 expected, 4 received");
    QTest::newRow("the one before again")
        << pt << 5 << 2 << good << QStringLiteral("record 3 expected, 2 received");
    QTest::newRow("another count")
        << pt << 6 << 3 << good << QStringLiteral("record count changed from 5 to 6");
    QTest::newRow("of another kind")
        << PayloadComponent::ControllerFirmware << 5 << 3 << good
        << QStringLiteral("record 3 is of another kind than its block");
    QTest::newRow("number 0") << pt << 5 << 0 << good << impossible;
    QTest::newRow("number above the count") << pt << 5 << 6 << good << impossible;
    QTest::newRow("count 0") << pt << 0 << 0 << good << impossible;
    QTest::newRow("negative numbers") << pt << -5 << -3 << good << impossible;
    QTest::newRow("count beyond the limit") << pt << maxRecords + 1 << 1 << good << impossible;
    QTest::newRow("a foreign character") << pt << 5 << 3 << QByteArray("AA-A") << notText;
    QTest::newRow("a length that no record has") << pt << 5 << 3 << QByteArray("A") << notText;
    QTest::newRow("121 bytes") << pt << 5 << 3 << sixBitText(QByteArray(121, 'x'))
                               << QStringLiteral("record exceeds 120 bytes");
}

void TestBlockReceiver::refusesARecord()
{
    QFETCH(PayloadComponent, component);
    QFETCH(int, count);
    QFETCH(int, number);
    QFETCH(QByteArray, text);
    BlockReceiver receiver = receiverAfterTwo();
    QCOMPARE(receiver.take(component, count, number, text), State::Refused);
    QTEST(receiver.reason(), "reason");
    QVERIFY(receiver.refused());
}

void TestBlockReceiver::refusesEverythingAfterARefusal()
{
    BlockReceiver receiver = receiverAfterTwo();
    receiver.take(pt, 5, 4, "AAAA");
    QCOMPARE(receiver.take(pt, 5, 3, "AAAA"), State::Refused);
    QCOMPARE(receiver.reason(), QStringLiteral("record 3 without a record 1 before it"));
}

void TestBlockReceiver::startsAnewWithRecordOne()
{
    const QList<QByteArray> texts = recordTexts(trackingSoftware({3, 3, 0}));
    BlockReceiver unfinished = receiverAfterTwo();
    QCOMPARE(takeAll(&unfinished, texts), State::Complete);

    BlockReceiver refused = receiverAfterTwo();
    refused.take(pt, 5, 5, "AAAA");
    QCOMPARE(takeAll(&refused, texts), State::Complete);
    QCOMPARE(takeAll(&refused, texts), State::Complete);
}

void TestBlockReceiver::findsDamage_data()
{
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<QString>("reason");

    QByteArray flipped = trackingSoftware({3, 3, 0});
    flipped[1000] = static_cast<char>(flipped[1000] ^ 0x10);
    QTest::newRow("one bit is flipped") << flipped << QStringLiteral("payload checksum is wrong");
    QTest::newRow("it is empty")
        << QByteArray("x")
        << QStringLiteral("payload has 1 bytes, fewer than its head and checksum (36)");
    QTest::newRow("it is for another component")
        << controllerFirmware({1, 4}) << QStringLiteral("payload is for another component");
}

void TestBlockReceiver::findsDamage()
{
    QFETCH(QByteArray, payload);
    BlockReceiver receiver;
    QCOMPARE(takeAll(&receiver, recordTexts(payload)), State::Damaged);
    QTEST(receiver.reason(), "reason");
    QVERIFY(receiver.refused());
}

void TestBlockReceiver::dropForgetsTheBlock()
{
    BlockReceiver receiver = receiverAfterTwo();
    receiver.drop();
    QCOMPARE(receiver.state(), State::Idle);
    QCOMPARE(receiver.received(), 0);
    QCOMPARE(receiver.expected(), 0);
    QCOMPARE(receiver.take(pt, 5, 3, "AAAA"), State::Refused);
}

void TestBlockReceiver::refusesABlockBeyondTheLimit()
{
    const QByteArray text = sixBitText(QByteArray(maxRecordBytes, 'x'));
    const int fitting = maxBlockBytes / maxRecordBytes;
    BlockReceiver receiver;
    for (int number = 1; number <= fitting; ++number)
        receiver.take(pt, maxRecords, number, text);
    QCOMPARE(receiver.received(), fitting);
    QCOMPARE(receiver.take(pt, maxRecords, fitting + 1, text), State::Refused);
    QCOMPARE(receiver.reason(), QStringLiteral("block exceeds 67108864 bytes"));
}

ZAN_TEST_MAIN(TestBlockReceiver)
#include "tst_blockreceiver.moc"
