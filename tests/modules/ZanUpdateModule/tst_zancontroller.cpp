#include "ZanController.h"

#include "comparing.h"
#include "privateaccess.h"
#include "scriptedcascade.h"
#include "scriptedchannel.h"
#include "testmain.h"

#include <BackendVersions>

ZAN_EXPOSE(appendixMember, &ZanController::sPreReleaseAppendix);

class TestZanController : public QObject
{
    Q_OBJECT

private slots:
    void keepsTheAnswersOfAMaster();
    void keepsTheAnswersOfASlave();
    void sendsTheQueriesOfItsProtocol_data();
    void sendsTheQueriesOfItsProtocol();
    void fallsBackWhereAQueryFails_data();
    void fallsBackWhereAQueryFails();
    void looksVeryOldOnADeadChannel_data();
    void looksVeryOldOnADeadChannel();
    void carriesTheMastersModelOnOldProtocols_data();
    void carriesTheMastersModelOnOldProtocols();
    void readsTheFirmwareVersion_data();
    void readsTheFirmwareVersion();
    void splitsTheSoftwareVersion_data();
    void splitsTheSoftwareVersion();
    void leavesATextAloneWithoutAnAppendix();
    void readsTheSerialOfASlave_data();
    void readsTheSerialOfASlave();
    void readsFreeTexts_data();
    void readsFreeTexts();
    void survivesAnyReply_data();
    void survivesAnyReply();
    void repeatsItsQueriesOnDemand();
    void copiesEverythingButTheRunningPosition();
    void redirectsUpdates_data();
    void redirectsUpdates();
};

static const QString ADDRESS = QStringLiteral("10.0.0.7");

static BackendVersions backend(const VersionInfo& protocol = VersionInfo(1, 23))
{
    return BackendVersions(VersionInfo(3, 0, 0), protocol, VersionInfo(1, 0),
                           QStringLiteral("ZAN"));
}

static ScriptedController sampleMaster()
{
    ScriptedController master;
    master.hostname = "alpha";
    master.ct = "v1.2.3-rc.1 release";
    master.pt = "v2.7.7-beta.3-gabc 2024-05-06";
    master.model = 20;
    master.modelDescription = "\"ZAN \"rack\"\"";
    master.serial = 4711;
    master.board = "\"B1 \"rev 2\"\"";
    return master;
}

static ScriptedSlave sampleSlave()
{
    ScriptedSlave slave;
    slave.address = ADDRESS.toLatin1();
    slave.controller.hostname = "beta";
    slave.controller.ct = "v1.1";
    slave.controller.pt = "v2.6.0 2023-01-02";
    slave.controller.model = 2;
    slave.controller.modelDescription = "\"ZAN slave\"";
    slave.controller.serial = 4712;
    return slave;
}

static void scriptSample(ScriptedChannel* channel)
{
    scriptMaster(channel, sampleMaster());
    scriptSlaves(channel, {sampleSlave()});
}

void TestZanController::keepsTheAnswersOfAMaster()
{
    ScriptedChannel channel;
    scriptSample(&channel);
    BackendVersions versions = backend();
    const ZanController master(&channel, &versions, QString(), false);
    QCOMPARE(master.hostname(), QStringLiteral("alpha"));
    QCOMPARE(master.getVersionStringController(), QStringLiteral("v1.2.3-rc.1"));
    QCOMPARE(master.getVersionController(), VersionInfo(1, 2, 3));
    QCOMPARE(master.getVersionStringLumasolver(), QStringLiteral("v2.7.7"));
    QCOMPARE(master.getVersionLumasolver(), VersionInfo(2, 7, 7));
    QCOMPARE(master.getPreReleaseAppendix(), QStringLiteral("-beta.3"));
    QVERIFY(master.isPreRelease());
    QCOMPARE(master.getSystemModel(), 20);
    QCOMPARE(master.getSystemModelDesc(), QStringLiteral("ZAN rack"));
    QCOMPARE(master.getControllerSerial(), 4711);
    QCOMPARE(master.getMainboardDesc(), QStringLiteral("B1 rev 2"));
    QCOMPARE(master.ip(), QString());
    QVERIFY(!master.isSlave());
    QVERIFY(master.getNeedUpdate());
    QCOMPARE(master.currentCt, VersionInfo());
    QCOMPARE(master.currentPt, VersionInfo());
}

void TestZanController::keepsTheAnswersOfASlave()
{
    ScriptedChannel channel;
    scriptSample(&channel);
    BackendVersions versions = backend();
    const ZanController slave(&channel, &versions, ADDRESS, true);
    QCOMPARE(slave.hostname(), QStringLiteral("beta"));
    QCOMPARE(slave.getVersionStringController(), QStringLiteral("v1.1"));
    QCOMPARE(slave.getVersionController(), VersionInfo(1, 1));
    QCOMPARE(slave.getVersionLumasolver(), VersionInfo(2, 6, 0));
    QCOMPARE(slave.getPreReleaseAppendix(), QString());
    QVERIFY(!slave.isPreRelease());
    QCOMPARE(slave.getSystemModel(), 2);
    QCOMPARE(slave.getSystemModelDesc(), QStringLiteral("ZAN slave"));
    QCOMPARE(slave.getControllerSerial(), 4712);
    QCOMPARE(slave.getMainboardDesc(), QStringLiteral("none"));
    QCOMPARE(slave.ip(), ADDRESS);
    QVERIFY(slave.isSlave());
}

void TestZanController::sendsTheQueriesOfItsProtocol_data()
{
    QTest::addColumn<VersionInfo>("protocol");
    QTest::addColumn<bool>("isSlave");
    QTest::addColumn<QStringList>("calls");

    const QStringList head{R"(get_string "system hostname")",
                           R"(get_string "system controller_version")",
                           R"(get_string "system version")", R"(get_int "system model")",
                           R"(get_string "system model_description")"};
    const QStringList slaveHead{R"(get_string "system hostname_slave 10.0.0.7")",
                                R"(get_string "system controller_version_slave 10.0.0.7")",
                                R"(get_string "system version_slave 10.0.0.7")"};
    const QStringList slaveModel{R"(get_int "system model_slave 10.0.0.7")",
                                 R"(get_string "system model_description_slave 10.0.0.7")"};
    const QString serial = R"(get_int "system controller_serial")";
    const QString slaveSerial = R"(get_string "cascade connected_slave_controller 10.0.0.7")";
    const QString board = R"(get_string "system extra motherboard")";

    const auto row = [](const char* name, const VersionInfo& protocol, bool isSlave,
                        const QStringList& calls) {
        QTest::newRow(name) << protocol << isSlave << calls;
    };
    row("0.14: neither board nor serial", {0, 14}, false, head);
    row("0.15: the board", {0, 15}, false, head + QStringList{board});
    row("1.6: the board", {1, 6}, false, head + QStringList{board});
    row("1.7: serial and board", {1, 7}, false, head + QStringList{serial, board});
    row("1.22: serial and board", {1, 22}, false, head + QStringList{serial, board});
    row("1.23: the same from a master", {1, 23}, false, head + QStringList{serial, board});
    row("1.6: a slave without serial", {1, 6}, true, slaveHead + head.mid(3));
    row("1.7: a slave's serial, the master's model", {1, 7}, true,
        slaveHead + head.mid(3) + QStringList{slaveSerial});
    row("1.22: a slave's serial, the master's model", {1, 22}, true,
        slaveHead + head.mid(3) + QStringList{slaveSerial});
    row("1.23: a slave's own model", {1, 23}, true,
        slaveHead + slaveModel + QStringList{slaveSerial});
}

void TestZanController::sendsTheQueriesOfItsProtocol()
{
    QFETCH(VersionInfo, protocol);
    QFETCH(bool, isSlave);
    ScriptedChannel channel;
    scriptSample(&channel);
    BackendVersions versions = backend(protocol);
    const ZanController controller(&channel, &versions, isSlave ? ADDRESS : QString(), isSlave);
    QTEST(channel.log(), "calls");
}

// Everything that a record says of its controller, in one line.
static QString described(const ZanController& controller)
{
    return QStringLiteral("%1|%2|%3|%4|%5|%6|%7|%8|%9")
        .arg(controller.hostname(), controller.getVersionStringController(),
             controller.getVersionStringLumasolver(), controller.getPreReleaseAppendix())
        .arg(controller.getSystemModel())
        .arg(controller.getSystemModelDesc())
        .arg(controller.getControllerSerial())
        .arg(controller.getMainboardDesc())
        .arg(controller.getVersionController().toString() +
             controller.getVersionLumasolver().toString());
}

void TestZanController::fallsBackWhereAQueryFails_data()
{
    QTest::addColumn<VersionInfo>("protocol");
    QTest::addColumn<bool>("isSlave");
    QTest::addColumn<QByteArray>("failing");
    QTest::addColumn<QString>("description");

    const auto row = [](const char* name, const VersionInfo& protocol, bool isSlave,
                        const char* failing, const char* description) {
        QTest::newRow(name) << protocol << isSlave << QByteArray(failing) << QString(description);
    };
    row("no query", {1, 23}, false, "none",
        "alpha|v1.2.3-rc.1|v2.7.7|-beta.3|20|ZAN rack|4711|B1 rev 2|v1.2.3v2.7.7");
    row("host name", {1, 23}, false, "system hostname",
        "|v1.2.3-rc.1|v2.7.7|-beta.3|20|ZAN rack|4711|B1 rev 2|v1.2.3v2.7.7");
    row("firmware version", {1, 23}, false, "system controller_version",
        "alpha|v0.0.0|v2.7.7|-beta.3|20|ZAN rack|4711|B1 rev 2|v0.0.0v2.7.7");
    row("software version", {1, 23}, false, "system version",
        "alpha|v1.2.3-rc.1|v0.0.0||20|ZAN rack|4711|B1 rev 2|v1.2.3v0.0.0");
    row("model from 1.23 on", {1, 23}, false, "system model",
        "alpha|v1.2.3-rc.1|v2.7.7|-beta.3|0|ZAN rack|4711|B1 rev 2|v1.2.3v2.7.7");
    row("model below 1.23", {1, 22}, false, "system model",
        "alpha|v1.2.3-rc.1|v2.7.7|-beta.3|-1|ZAN rack|4711|B1 rev 2|v1.2.3v2.7.7");
    row("model text from 1.23 on", {1, 23}, false, "system model_description",
        "alpha|v1.2.3-rc.1|v2.7.7|-beta.3|20|ZAN|4711|B1 rev 2|v1.2.3v2.7.7");
    row("model text below 1.23", {1, 22}, false, "system model_description",
        "alpha|v1.2.3-rc.1|v2.7.7|-beta.3|20|UNKNOWN|4711|B1 rev 2|v1.2.3v2.7.7");
    row("serial", {1, 23}, false, "system controller_serial",
        "alpha|v1.2.3-rc.1|v2.7.7|-beta.3|20|ZAN rack|0|B1 rev 2|v1.2.3v2.7.7");
    row("board", {1, 23}, false, "system extra motherboard",
        "alpha|v1.2.3-rc.1|v2.7.7|-beta.3|20|ZAN rack|4711|none|v1.2.3v2.7.7");
    row("serial not known before 1.7", {1, 6}, false, "none",
        "alpha|v1.2.3-rc.1|v2.7.7|-beta.3|20|ZAN rack|0|B1 rev 2|v1.2.3v2.7.7");
    row("board not known before 0.15", {0, 14}, false, "none",
        "alpha|v1.2.3-rc.1|v2.7.7|-beta.3|20|ZAN rack|0|none|v1.2.3v2.7.7");
    row("a slave's model", {1, 23}, true, "system model_slave 10.0.0.7",
        "beta|v1.1|v2.6.0||0|ZAN slave|4712|none|v1.1v2.6.0");
    row("a slave's model text", {1, 23}, true, "system model_description_slave 10.0.0.7",
        "beta|v1.1|v2.6.0||2|ZAN|4712|none|v1.1v2.6.0");
    row("a slave's serial", {1, 23}, true, "cascade connected_slave_controller 10.0.0.7",
        "beta|v1.1|v2.6.0||2|ZAN slave|0|none|v1.1v2.6.0");
}

void TestZanController::fallsBackWhereAQueryFails()
{
    QFETCH(VersionInfo, protocol);
    QFETCH(bool, isSlave);
    QFETCH(QByteArray, failing);
    ScriptedChannel channel;
    scriptSample(&channel);
    channel.on(failing).fail();
    BackendVersions versions = backend(protocol);
    const ZanController controller(&channel, &versions, isSlave ? ADDRESS : QString(), isSlave);
    QTEST(described(controller), "description");
}

void TestZanController::looksVeryOldOnADeadChannel_data()
{
    QTest::addColumn<VersionInfo>("protocol");
    QTest::addColumn<QString>("description");

    QTest::newRow("from 1.23 on") << VersionInfo(1, 23)
                                  << QStringLiteral("|v0.0.0|v0.0.0||0|ZAN|0|none|v0.0.0v0.0.0");
    QTest::newRow("below 1.23") << VersionInfo(1, 22)
                                << QStringLiteral("|v0.0.0|v0.0.0||-1|UNKNOWN|0|none|v0.0.0v0.0.0");
    QTest::newRow("below 0.15") << VersionInfo()
                                << QStringLiteral("|v0.0.0|v0.0.0||-1|UNKNOWN|0|none|v0.0.0v0.0.0");
}

void TestZanController::looksVeryOldOnADeadChannel()
{
    QFETCH(VersionInfo, protocol);
    BackendVersions versions = backend(protocol);
    for (const bool isSlave : {false, true}) {
        for (const bool leavesTextBehind : {false, true}) {
            ScriptedChannel channel;
            if (!leavesTextBehind)
                channel.die();
            ZanController controller(&channel, &versions, isSlave ? ADDRESS : QString(), isSlave);
            QTEST(described(controller), "description");
            QVERIFY(controller.getNeedUpdate());
            QVERIFY(!controller.isPreRelease());
            if (!leavesTextBehind)
                QCOMPARE(controller.setupRedirection(), protocol < VersionInfo(1, 7));
        }
    }
}

void TestZanController::carriesTheMastersModelOnOldProtocols_data()
{
    QTest::addColumn<VersionInfo>("protocol");
    QTest::addColumn<int>("model");
    QTest::addColumn<QString>("description");

    QTest::newRow("1.22 gives the master's") << VersionInfo(1, 22) << 20 << "ZAN rack";
    QTest::newRow("1.23 gives the slave's own") << VersionInfo(1, 23) << 2 << "ZAN slave";
}

void TestZanController::carriesTheMastersModelOnOldProtocols()
{
    QFETCH(VersionInfo, protocol);
    ScriptedChannel channel;
    scriptSample(&channel);
    BackendVersions versions = backend(protocol);
    const ZanController slave(&channel, &versions, ADDRESS, true);
    QTEST(slave.getSystemModel(), "model");
    QTEST(slave.getSystemModelDesc(), "description");
}

void TestZanController::readsTheFirmwareVersion_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("text");
    QTest::addColumn<VersionInfo>("version");

    const auto row = [](const char* name, const char* reply, const char* text,
                        const VersionInfo& version) {
        QTest::newRow(name) << QByteArray(reply) << QString(text) << version;
    };
    row("a version", "v1.2", "v1.2", {1, 2});
    row("words behind it are cut off", "v1.2.3 2024-05-06 x", "v1.2.3", {1, 2, 3});
    row("an appendix stays in the text", "v1.2.3-rc.1", "v1.2.3-rc.1", {1, 2, 3});
    row("a version without v stays without", "1.2", "1.2", {1, 2});
    row("a leading blank leaves nothing", " v1.2", "", {0, -1, -1});
    row("an empty reply is a failed zero", "", "", {0, -1, -1});
    row("a text without sense is a failed zero", "unknown", "unknown", {0, -1, -1});
}

void TestZanController::readsTheFirmwareVersion()
{
    QFETCH(QByteArray, reply);
    ScriptedChannel channel;
    scriptSample(&channel);
    channel.on("system controller_version").reply(reply);
    BackendVersions versions = backend();
    const ZanController master(&channel, &versions, QString(), false);
    QTEST(master.getVersionStringController(), "text");
    QTEST(master.getVersionController(), "version");
}

void TestZanController::splitsTheSoftwareVersion_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("text");
    QTest::addColumn<VersionInfo>("version");
    QTest::addColumn<QString>("appendix");

    const auto row = [](const char* name, const char* reply, const char* text,
                        const VersionInfo& version, const char* appendix) {
        QTest::newRow(name) << QByteArray(reply) << QString(text) << version << QString(appendix);
    };
    const VersionInfo v277(2, 7, 7);
    row("a release with its date", "v2.7.7 2024-05-06", "v2.7.7", v277, "");
    row("a release without a date", "v2.7.7", "v2.7.7", v277, "");
    row("a release without patch", "v2.7 2024-05-06", "v2.7", {2, 7}, "");
    row("a beta with its build", "v2.7.7-beta.3-gabc 2024-05-06", "v2.7.7", v277, "-beta.3");
    row("a beta", "v2.7.7-beta.3", "v2.7.7", v277, "-beta.3");
    row("a release candidate of two digits", "v2.7.7-rc.12", "v2.7.7", v277, "-rc.12");
    row("an alpha without number", "v2.7.7-alpha", "v2.7.7", v277, "-alpha.99");
    row("a number without its dot", "v2.7.7-rc2", "v2.7.7", v277, "-rc.99");
    row("alpha is looked for first", "v2.7.7-rc.beta.alpha.4", "v2.7.7", v277, "-alpha.99");
    row("beta is looked for before rc", "v2.7.7-rcbeta.4", "v2.7.7", v277, "-beta.4");
    row("the kind is looked for in its case", "v2.7.7-BETA.4", "v2.7.7", v277, "-.4");
    row("an unknown kind is empty", "v2.7.7-nightly.5", "v2.7.7", v277, "-.5");
    row("only the number behind the first dot counts", "v2.7.7-beta.3.4", "v2.7.7", v277,
        "-beta.3");
    row("letters behind the digits do not count", "v2.7.7-beta.3x", "v2.7.7", v277, "-beta.3");
    row("a dot at the end has no number", "v2.7.7-beta.", "v2.7.7", v277, "-beta.99");
    row("a number beyond 32 bits is none", "v2.7.7-beta.99999999999", "v2.7.7", v277, "-beta.99");
    row("leading zeros do not count", "v2.7.7-beta.007", "v2.7.7", v277, "-beta.7");
    row("a fourth part is an appendix", "v2.7.7.1", "v2.7.7", v277, "-.1");
    row("a version without v is its own appendix", "2.7.7 2024-05-06", "v2.7.7", v277, "-.7");
    row("a version with capital V is its own appendix", "V2.7.7", "v2.7.7", v277, "-.7");
    row("a version with leading zeros is its own appendix", "v02.7.7", "v2.7.7", v277, "-.7");
    row("every occurrence of the version is taken away", "v2.7.7v2.7.7-rc.1", "v2.7.7", v277,
        "-rc.1");
    row("a text without sense counts as a pre-release of zero", "unknown", "v0", {0}, "-.99");
    row("an empty reply is zero", "", "v0", {0}, "");
    row("a leading blank leaves zero", " v2.7.7", "v0", {0}, "");
}

void TestZanController::splitsTheSoftwareVersion()
{
    QFETCH(QByteArray, reply);
    QFETCH(QString, appendix);
    ScriptedChannel channel;
    scriptSample(&channel);
    channel.on("system version").reply(reply);
    BackendVersions versions = backend();
    const ZanController master(&channel, &versions, QString(), false);
    QTEST(master.getVersionStringLumasolver(), "text");
    QTEST(master.getVersionLumasolver(), "version");
    QCOMPARE(master.getPreReleaseAppendix(), appendix);
    QCOMPARE(master.isPreRelease(), !appendix.isEmpty());
}

void TestZanController::leavesATextAloneWithoutAnAppendix()
{
    ScriptedChannel channel;
    scriptSample(&channel);
    BackendVersions versions = backend();
    ZanController controller(&channel, &versions, QString(), false);
    QString text = QStringLiteral("-rc.5-gabc");
    controller.simplyfyPreReleaseAppendix(text);
    QCOMPARE(text, QStringLiteral("-rc.5"));

    appendixMember(controller).clear();
    text = QStringLiteral("-rc.5-gabc");
    controller.simplyfyPreReleaseAppendix(text);
    QCOMPARE(text, QStringLiteral("-rc.5-gabc"));
}

void TestZanController::readsTheSerialOfASlave_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<int>("serial");

    QTest::newRow("host name and serial") << QByteArray("beta 4712") << 4712;
    QTest::newRow("a third word does not count") << QByteArray("beta 4712 x") << 4712;
    QTest::newRow("a single word") << QByteArray("beta") << 0;
    QTest::newRow("nothing") << QByteArray() << 0;
    QTest::newRow("two blanks leave the second word empty") << QByteArray("beta  4712") << 0;
    QTest::newRow("a word that is no number") << QByteArray("beta 47x") << 0;
    QTest::newRow("a hexadecimal number") << QByteArray("beta 0x12") << 0;
    QTest::newRow("a number beyond 32 bits") << QByteArray("beta 99999999999") << 0;
    QTest::newRow("a negative number") << QByteArray("beta -5") << -5;
}

void TestZanController::readsTheSerialOfASlave()
{
    QFETCH(QByteArray, reply);
    ScriptedChannel channel;
    scriptSample(&channel);
    channel.on("cascade connected_slave_controller 10.0.0.7").reply(reply);
    BackendVersions versions = backend();
    const ZanController slave(&channel, &versions, ADDRESS, true);
    QTEST(slave.getControllerSerial(), "serial");
}

void TestZanController::readsFreeTexts_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("hostname");
    QTest::addColumn<QString>("unquoted");

    const auto row = [](const char* name, const char* reply, const char* hostname,
                        const char* unquoted) {
        QTest::newRow(name) << QByteArray(reply) << QString::fromUtf8(hostname)
                            << QString::fromUtf8(unquoted);
    };
    row("words are kept whole", "alpha one ", "alpha one ", "alpha one ");
    row("UTF-8", "K\xC3\xB6ln \xE2\x82\xAC", "Köln €", "Köln €");
    row("every double quote is taken away", "\"a\"b\"", "\"a\"b\"", "ab");
    row("nothing but quotes", "\"\"", "\"\"", "");
    row("an empty text", "", "", "");
    row("Latin-1 is no UTF-8", "K\xF6ln", "K\uFFFDln", "K\uFFFDln");
    row("a per cent sign is no placeholder", "%1 %s", "%1 %s", "%1 %s");
}

void TestZanController::readsFreeTexts()
{
    QFETCH(QByteArray, reply);
    ScriptedChannel channel;
    scriptSample(&channel);
    for (const char* key :
         {"system hostname", "system model_description", "system extra motherboard"})
        channel.on(key).reply(reply);
    for (const VersionInfo& protocol : {VersionInfo(1, 22), VersionInfo(1, 23)}) {
        BackendVersions versions = backend(protocol);
        const ZanController master(&channel, &versions, QString(), false);
        QTEST(master.hostname(), "hostname");
        QTEST(master.getSystemModelDesc(), "unquoted");
        QTEST(master.getMainboardDesc(), "unquoted");
    }
}

void TestZanController::survivesAnyReply_data()
{
    QTest::addColumn<QByteArray>("reply");

    QTest::newRow("200 letters without terminator") << QByteArray(200, 'x');
    QTest::newRow("200 digits without terminator") << QByteArray(200, '7');
    QTest::newRow("200 bytes beyond ASCII without terminator") << QByteArray(200, '\xFF');
    QTest::newRow("200 blanks without terminator") << QByteArray(200, ' ');
    QTest::newRow("200 dots without terminator") << QByteArray(200, '.');
    QTest::newRow("a cut UTF-8 letter at the end") << QByteArray(199, 'x') + '\xC3';
}

void TestZanController::survivesAnyReply()
{
    QFETCH(QByteArray, reply);
    ScriptedChannel channel;
    channel.onPrefix("").replyUnterminated(reply);
    BackendVersions versions = backend();
    const ZanController master(&channel, &versions, QString(), false);
    QCOMPARE(master.hostname(), QString::fromUtf8(reply));
    QCOMPARE(master.getSystemModelDesc(), QString::fromUtf8(reply));
    QCOMPARE(master.getVersionStringController(),
             reply.startsWith(' ') ? QString() : QString::fromLatin1(reply));
    const ZanController slave(&channel, &versions, ADDRESS, true);
    QCOMPARE(slave.hostname(), QString::fromUtf8(reply));
    QCOMPARE(slave.getControllerSerial(), 0);
}

void TestZanController::repeatsItsQueriesOnDemand()
{
    ScriptedChannel channel;
    scriptSample(&channel);
    BackendVersions versions = backend();
    ZanController master(&channel, &versions, QString(), false);
    const QStringList queries = channel.takeLog();
    master.setNeedUpdate(false);
    master.currentCt = VersionInfo(5, 6);
    master.currentPt = VersionInfo(7, 8, 9);

    ScriptedController updated = sampleMaster();
    updated.pt = "v3.0.0 2024-09-09";
    updated.ct = "v1.4";
    scriptMaster(&channel, updated);
    master.updateVersions();
    QCOMPARE(channel.log(), queries);
    QCOMPARE(described(master), QStringLiteral("alpha|v1.4|v3.0.0||20|ZAN rack|4711|B1 rev 2|"
                                               "v1.4v3.0.0"));
    QVERIFY(!master.getNeedUpdate());
    QCOMPARE(master.currentCt, VersionInfo(5, 6));
    QCOMPARE(master.currentPt, VersionInfo(7, 8, 9));

    channel.die();
    master.updateVersions();
    QCOMPARE(described(master), QStringLiteral("|v0.0.0|v0.0.0||0|ZAN|0|none|v0.0.0v0.0.0"));
}

void TestZanController::copiesEverythingButTheRunningPosition()
{
    ScriptedChannel channel;
    scriptSample(&channel);
    BackendVersions versions = backend();
    ZanController slave(&channel, &versions, ADDRESS, true);
    slave.setNeedUpdate(false);
    slave.currentCt = VersionInfo(5, 6);
    slave.currentPt = VersionInfo(7, 8, 9);
    ZanController target(&channel, &versions, QString(), false);
    target.currentCt = VersionInfo(1, 1);
    target.currentPt = VersionInfo(2, 2, 2);
    channel.takeLog();

    const ZanController copy(slave);
    QCOMPARE(described(copy), described(slave));
    QVERIFY(copy.isSlave() && copy.ip() == ADDRESS && !copy.getNeedUpdate());
    QCOMPARE(copy.currentCt, VersionInfo());
    QCOMPARE(copy.currentPt, VersionInfo());

    target = slave;
    QCOMPARE(described(target), described(slave));
    QVERIFY(target.isSlave() && target.ip() == ADDRESS && !target.getNeedUpdate());
    QCOMPARE(target.currentCt, VersionInfo(1, 1));
    QCOMPARE(target.currentPt, VersionInfo(2, 2, 2));
    QVERIFY(channel.log().isEmpty());

    // The channel and the versions go along.
    QVERIFY(target.setupRedirection());
    QCOMPARE(channel.log(), QStringList(R"(set_value "system redirect_update 10.0.0.7")"));
}

void TestZanController::redirectsUpdates_data()
{
    QTest::addColumn<VersionInfo>("protocol");
    QTest::addColumn<bool>("isSlave");
    QTest::addColumn<bool>("agrees");
    QTest::addColumn<bool>("isRedirected");
    QTest::addColumn<QStringList>("calls");

    const QStringList toMaster(R"(set_value "system redirect_update none")");
    const QStringList toSlave(R"(set_value "system redirect_update 10.0.0.7")");
    const auto row = [](const char* name, const VersionInfo& protocol, bool isSlave, bool agrees,
                        bool isRedirected, const QStringList& calls) {
        QTest::newRow(name) << protocol << isSlave << agrees << isRedirected << calls;
    };
    row("to the master", {1, 7}, false, true, true, toMaster);
    row("to a slave", {1, 7}, true, true, true, toSlave);
    row("the master refuses", {1, 23}, false, false, false, toMaster);
    row("a slave is refused", {1, 23}, true, false, false, toSlave);
    row("nothing is sent before 1.7", {1, 6}, false, true, true, {});
    row("nothing is sent before 1.7, so nothing fails", {1, 6}, true, false, true, {});
}

void TestZanController::redirectsUpdates()
{
    QFETCH(VersionInfo, protocol);
    QFETCH(bool, isSlave);
    QFETCH(bool, agrees);
    ScriptedChannel channel;
    scriptSample(&channel);
    if (!agrees)
        channel.onPrefix("system redirect_update ").fail();
    BackendVersions versions = backend(protocol);
    ZanController controller(&channel, &versions, isSlave ? ADDRESS : QString(), isSlave);
    channel.takeLog();
    QTEST(controller.setupRedirection(), "isRedirected");
    QTEST(channel.log(), "calls");
}

ZAN_TEST_MAIN(TestZanController)

#include "tst_zancontroller.moc"
