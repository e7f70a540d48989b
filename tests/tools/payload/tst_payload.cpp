#include "crc32.h"
#include "payload.h"

#include <testmain.h>

#include <QtEndian>

Q_DECLARE_METATYPE(VersionInfo)

class TestPayload : public QObject
{
    Q_OBJECT

private slots:
    void writesEveryByteOfHeadAndChecksum();
    void bodyIsTheSameOnEveryMachine();
    void bodyDependsOnTheSeed();
    void readsWhatWasMade_data();
    void readsWhatWasMade();
    void appendixOfFullLengthSurvives();
    void longerAppendixIsCutOff();
    void damageIsFoundWhereverItIs();
    void refuses_data();
    void refuses();
    void errorTextIsOptionalAndForFailures();
};

namespace {

// The checksum is made to fit, so that the field before it is what gets refused.
QByteArray withChecksum(QByteArray bytes)
{
    char field[4];
    qToLittleEndian(crc32(bytes), field);
    return bytes + QByteArray(field, sizeof field);
}

const PayloadHead betaHead{PayloadComponent::TrackingSoftware, VersionInfo(3, 2, 0),
                           QStringLiteral("-beta.2")};

} // namespace

void TestPayload::writesEveryByteOfHeadAndChecksum()
{
    const QByteArray expected = QByteArray::fromHex("5658504c"       // magic VXPL
                                                    "0100"           // Pt
                                                    "0300 0200 0000" // 3.2.0
                                                    "2d626574612e32 000000000000000000" // -beta.2
                                                    "00000000");                        // no body
    QCOMPARE(makePayload(betaHead, 0, 1).toHex(), withChecksum(expected).toHex());

    const PayloadHead ctHead{PayloadComponent::ControllerFirmware, VersionInfo(1, 3), QString()};
    QCOMPARE(makePayload(ctHead, 0, 1).left(12).toHex(), QByteArray("5658504c"
                                                                    "0200"
                                                                    "01000300ffff"));
}

void TestPayload::bodyIsTheSameOnEveryMachine()
{
    const QByteArray body = makePayload(betaHead, 8, 1).mid(32, 8);
    // The high bytes of the first numbers of a xorshift generator that starts at 1.
    QCOMPARE(body.toHex(), QByteArray("00049d128e2c2519"));
}

void TestPayload::bodyDependsOnTheSeed()
{
    QCOMPARE(makePayload(betaHead, 1000, 7), makePayload(betaHead, 1000, 7));
    QVERIFY(makePayload(betaHead, 1000, 7) != makePayload(betaHead, 1000, 8));
    QVERIFY(makePayload(betaHead, 1000, 0).mid(32, 1000).count('\0') < 20);
}

void TestPayload::readsWhatWasMade_data()
{
    QTest::addColumn<int>("component");
    QTest::addColumn<VersionInfo>("version");
    QTest::addColumn<QString>("appendix");
    QTest::addColumn<int>("bodySize");

    QTest::newRow("tracking software") << 1 << VersionInfo(3, 3, 0) << QString() << 0;
    QTest::newRow("a pre-release") << 1 << VersionInfo(3, 2, 0) << QStringLiteral("-rc.1") << 1;
    QTest::newRow("controller firmware") << 2 << VersionInfo(1, 4) << QString() << 83;
    QTest::newRow("camera firmware") << 3 << VersionInfo(1, 0, 65534) << QString() << 5000;
    QTest::newRow("a version of one part") << 2 << VersionInfo(7) << QString() << 10;
    QTest::newRow("an appendix beyond ASCII")
        << 1 << VersionInfo(1, 2, 3) << QStringLiteral("-\u00fc") << 10;
}

void TestPayload::readsWhatWasMade()
{
    QFETCH(const int, component);
    QFETCH(const VersionInfo, version);
    QFETCH(const QString, appendix);
    QFETCH(const int, bodySize);

    const PayloadHead head{static_cast<PayloadComponent>(component), version, appendix};
    const QByteArray payload = makePayload(head, bodySize, 5);
    QCOMPARE(payload.size(), payloadOverhead + bodySize);
    QVERIFY(isPayload(payload));

    QString error;
    const auto found = readPayload(payload, &error);
    QCOMPARE(error, QString());
    QVERIFY(found.has_value());
    QCOMPARE(static_cast<int>(found->component), component);
    QVERIFY(found->version == version);
    QCOMPARE(found->appendix, appendix);
}

void TestPayload::appendixOfFullLengthSurvives()
{
    const QString appendix = QStringLiteral("-beta.1234567890");
    QCOMPARE(appendix.size(), payloadAppendixLength);
    const PayloadHead head{PayloadComponent::TrackingSoftware, VersionInfo(1, 2, 3), appendix};
    QCOMPARE(readPayload(makePayload(head, 4, 1), nullptr)->appendix, appendix);
}

void TestPayload::longerAppendixIsCutOff()
{
    const PayloadHead head{PayloadComponent::TrackingSoftware, VersionInfo(1, 2, 3),
                           QStringLiteral("-beta.12345678901")};
    const auto found = readPayload(makePayload(head, 4, 1), nullptr);
    QVERIFY(found.has_value());
    QCOMPARE(found->appendix, QStringLiteral("-beta.1234567890"));
}

void TestPayload::damageIsFoundWhereverItIs()
{
    const QByteArray payload = makePayload(betaHead, 20, 1);
    for (int offset = 0; offset < payload.size(); ++offset) {
        for (int bit = 0; bit < 8; ++bit) {
            QByteArray damaged = payload;
            damaged[offset] = static_cast<char>(damaged[offset] ^ (1 << bit));
            QVERIFY2(!readPayload(damaged, nullptr), qPrintable(QString::number(offset)));
        }
    }
}

void TestPayload::refuses_data()
{
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<QString>("error");

    const QByteArray payload = makePayload(betaHead, 8, 1);
    const QByteArray head = payload.left(32);
    QTest::newRow("no bytes") << QByteArray()
                              << "payload has 0 bytes, fewer than its head and checksum (36)";
    QTest::newRow("one byte less than a head")
        << payload.left(35) << "payload has 35 bytes, fewer than its head and checksum (36)";
    QTest::newRow("another magic")
        << QByteArray(payload).replace(0, 4, "VXPM") << "payload does not begin with VXPL";
    QTest::newRow("one byte lost")
        << payload.left(43) << "payload announces 8 bytes of body and has 7";
    QTest::newRow("one byte too many")
        << payload + 'x' << "payload announces 8 bytes of body and has 9";
    QTest::newRow("a body size beyond all files")
        << withChecksum(QByteArray(head).replace(28, 4, QByteArray(4, '\xFF')))
        << "payload announces 4294967295 bytes of body and has 0";
    QTest::newRow("a changed byte of the body")
        << QByteArray(payload).replace(34, 1, "?") << "payload checksum is wrong";
    QTest::newRow("a changed checksum")
        << QByteArray(payload).replace(40, 1, "?") << "payload checksum is wrong";

    const QByteArray empty = makePayload(betaHead, 0, 1).left(32);
    QTest::newRow("component 0") << withChecksum(QByteArray(empty).replace(4, 1, QByteArray(1, 0)))
                                 << "payload is for an unknown component (0)";
    QTest::newRow("component 4") << withChecksum(QByteArray(empty).replace(4, 1, "\x04"))
                                 << "payload is for an unknown component (4)";
}

void TestPayload::refuses()
{
    QFETCH(const QByteArray, payload);
    QString error;
    QVERIFY(!readPayload(payload, &error));
    QTEST(error, "error");
}

void TestPayload::errorTextIsOptionalAndForFailures()
{
    QVERIFY(!readPayload("nonsense", nullptr));
    QString error = QStringLiteral("left over");
    QVERIFY(readPayload(makePayload(betaHead, 3, 1), &error));
    QCOMPARE(error, QString("left over"));
}

ZAN_TEST_MAIN(TestPayload)
#include "tst_payload.moc"
