#include "globaldefines.h"

#include "comparing.h"
#include "testmain.h"

#include <BackendVersions>

class TestGlobalDefines : public QObject
{
    Q_OBJECT

private slots:
    void numbersTheKindsOfUpdate();
    void guardsCommandsByProtocol_data();
    void guardsCommandsByProtocol();
    void recognisesTheBriarscopeFamily_data();
    void recognisesTheBriarscopeFamily();
};

void TestGlobalDefines::numbersTheKindsOfUpdate()
{
    QCOMPARE(int(ZAN_UPDATE_NOTDEFINED), 0);
    QCOMPARE(int(ZAN_FIRMWARE_UPDATE), 1);
    QCOMPARE(int(ZAN_SYSTEM_UPDATE), 2);
    QCOMPARE(int(ZAN_UPDATE_NOT_AVAILABLE), 3);
    QCOMPARE(int(CAMERA_UPDATE), 4);
}

void TestGlobalDefines::guardsCommandsByProtocol_data()
{
    QTest::addColumn<VersionInfo>("protocol");
    QTest::addColumn<VersionInfo>("guard");
    QTest::addColumn<bool>("isKnown");

    const auto row = [](const char* name, const VersionInfo& protocol, const VersionInfo& guard,
                        bool isKnown) {
        QTest::newRow(name) << protocol << guard << isKnown;
    };
    row("0.14 knows no board", {0, 14}, PROTOCOL_MAINBOARD, false);
    row("0.15 knows the board", {0, 15}, PROTOCOL_MAINBOARD, true);
    row("0.16 knows no hardware list", {0, 16}, PROTOCOL_HARDWARE_LIST, false);
    row("0.17 knows the hardware list", {0, 17}, PROTOCOL_HARDWARE_LIST, true);
    row("1.6 knows no cascade", {1, 6}, PROTOCOL_CASCADE, false);
    row("1.6.9 knows no cascade", {1, 6, 9}, PROTOCOL_CASCADE, false);
    row("1.7 knows the cascade", {1, 7}, PROTOCOL_CASCADE, true);
    row("1.7.0 knows the cascade", {1, 7, 0}, PROTOCOL_CASCADE, true);
    row("1.22 knows no model of a slave", {1, 22}, PROTOCOL_SLAVE_MODEL, false);
    row("1.23 knows a slave's model", {1, 23}, PROTOCOL_SLAVE_MODEL, true);
    row("2 knows everything", {2}, PROTOCOL_SLAVE_MODEL, true);
}

void TestGlobalDefines::guardsCommandsByProtocol()
{
    QFETCH(VersionInfo, protocol);
    QFETCH(VersionInfo, guard);
    const BackendVersions backend(VersionInfo(), protocol, VersionInfo(), QString());
    QTEST(protocolAtLeast(&backend, guard), "isKnown");
}

void TestGlobalDefines::recognisesTheBriarscopeFamily_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<bool>("isMember");

    QTest::newRow("its bare name") << QStringLiteral("BRIARSCOPE") << true;
    QTest::newRow("a later model") << QStringLiteral("BRIARSCOPE3 XL") << true;
    QTest::newRow("another case") << QStringLiteral("Briarscope3") << false;
    QTest::newRow("its name further on") << QStringLiteral("a BRIARSCOPE") << false;
    QTest::newRow("another model") << QStringLiteral("ZAN") << false;
    QTest::newRow("no model") << QString() << false;
}

void TestGlobalDefines::recognisesTheBriarscopeFamily()
{
    QFETCH(QString, model);
    const BackendVersions backend(VersionInfo(), VersionInfo(), VersionInfo(), model);
    QTEST(isBriarscopeFamily(&backend), "isMember");
}

ZAN_TEST_MAIN(TestGlobalDefines)

#include "tst_globaldefines.moc"
