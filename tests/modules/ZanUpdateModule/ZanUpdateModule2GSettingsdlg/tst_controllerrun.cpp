#include "dialogfixture.h"
#include "exposeddialog.h"
#include "fixtureimages.h"
#include "shownprogress.h"

#include <ZanController.h>
#include <ZanData.h>
#include <ZanDisplay.h>
#include <comparing.h>
#include <markingtranslator.h>
#include <widgettestmain.h>

#include <QElapsedTimer>

ZAN_EXPOSE(blockIndexes, &ZanDisplay::m_update_index);

/// Makes a row of a run fail, through its file or the channel.
using Spoil = std::function<void(DialogFixture&, const ZanData&)>;
Q_DECLARE_METATYPE(Spoil)

class ControllerRun : public QObject
{
    Q_OBJECT

private slots:
    void countsBlocks_data();
    void countsBlocks();
    void countsNoCameras();
    void countsAnew();

    void runsAMaster();
    void runsASlave();
    void redirectsFromProtocol17On_data();
    void redirectsFromProtocol17On();
    void sleepsAfterASystemBlock();
    void namesWhatItUpdates_data();
    void namesWhatItUpdates();
    void succeedsWithoutBlocks();
    void doesNotTranslateWhatItShows();

    void failsWithoutRedirection_data();
    void failsWithoutRedirection();
    void failsWithABlock_data();
    void failsWithABlock();
    void endsWithTheFirstFailedBlock();

    void barGoesOnFromBlockToBlock();
    void barStaysBelowItsEndForARowThatDoesNotCount_data();
    void barStaysBelowItsEndForARowThatDoesNotCount();
};

static ControllerImage imageWith(const QVector<ControllerImageBlock>& blocks)
{
    return releaseImage(VersionInfo(3, 1, 0), VersionInfo(1, 1), blocks);
}

static ControllerImage imageWithTwoBlocks()
{
    return imageWith(
        {blockOf(FirmwareBlock, {shortRecord(1)}), blockOf(FirmwareBlock, {shortRecord(2)})});
}

static ScriptedSlave slaveAt(const QByteArray& address)
{
    ScriptedSlave slave;
    slave.address = address;
    slave.controller.hostname = "beta";
    return slave;
}

// ---- Counting

void ControllerRun::countsBlocks_data()
{
    QTest::addColumn<VersionInfo>("protocol");
    QTest::addColumn<bool>("isSlave");
    QTest::addColumn<QByteArray>("address");
    QTest::addColumn<bool>("isSelected");
    QTest::addColumn<VersionInfo>("minPt");
    QTest::addColumn<int>("count");

    const VersionInfo newProtocol(1, 23);
    const VersionInfo any(0, 0, 0);
    const VersionInfo tooHigh(3, 0, 1);
    QTest::newRow("a master's blocks count")
        << newProtocol << false << QByteArray() << true << any << 2;
    QTest::newRow("a row that is not selected counts nothing")
        << newProtocol << false << QByteArray() << false << any << 0;
    QTest::newRow("a row that is not possible counts nothing")
        << newProtocol << false << QByteArray() << true << tooHigh << 0;
    QTest::newRow("a slave's blocks count")
        << newProtocol << true << QByteArray("10.0.0.2") << true << any << 2;
    QTest::newRow("a slave without an address counts nothing")
        << newProtocol << true << QByteArray() << true << any << 0;
    QTest::newRow("a slave counts from protocol 1.7 on")
        << VersionInfo(1, 7) << true << QByteArray("10.0.0.2") << true << any << 2;
    QTest::newRow("a slave counts nothing below protocol 1.7")
        << VersionInfo(1, 6, 9) << true << QByteArray("10.0.0.2") << true << any << 0;
    QTest::newRow("a master counts on any protocol")
        << VersionInfo(0, 1) << false << QByteArray() << true << any << 2;
}

void ControllerRun::countsBlocks()
{
    QFETCH(const VersionInfo, protocol);
    QFETCH(const bool, isSlave);
    QFETCH(const QByteArray, address);
    QFETCH(const bool, isSelected);
    QFETCH(const VersionInfo, minPt);
    DialogFixture fixture({protocol});
    ControllerImage image = imageWithTwoBlocks();
    image.minPt = minPt;
    ZanDisplay* row =
        fixture.addRow(isSlave ? fixture.addSlave(slaveAt(address)) : fixture.addMaster({}), image);
    row->setToBeUpdated(isSelected ? Qt::Checked : Qt::Unchecked);

    calcBlocksToUpdate(fixture.dialog, fixture.inventory());
    QTEST(nBlocksMustUpdate(fixture.dialog), "count");
}

void ControllerRun::countsNoCameras()
{
    DialogFixture fixture;
    fixture.addRow(fixture.addMaster({}), imageWithTwoBlocks());
    fixture.addCameraRow(cameraFile({0x0a01}, VersionInfo(1, 1, 0)));
    fixture.addRow(fixture.addSlave(slaveAt("10.0.0.2")), imageWith({blockOf(FirmwareBlock)}));
    calcBlocksToUpdate(fixture.dialog, fixture.inventory());
    QCOMPARE(nBlocksMustUpdate(fixture.dialog), 3);
}

void ControllerRun::countsAnew()
{
    DialogFixture fixture;
    nBlocksMustUpdate(fixture.dialog) = 7;
    indexBlocksMustUpdate(fixture.dialog) = 5;
    calcBlocksToUpdate(fixture.dialog, fixture.inventory());
    QCOMPARE(nBlocksMustUpdate(fixture.dialog), 0);
    QCOMPARE(indexBlocksMustUpdate(fixture.dialog), 0);
}

// ---- A row that succeeds

/// Runs @p row as the start of a run does; the channel's log then holds its calls alone.
static int run(DialogFixture* fixture, ZanDisplay* row)
{
    calcBlocksToUpdate(fixture->dialog, fixture->inventory());
    fixture->channel.takeLog();
    return do_zan_update(fixture->dialog, row);
}

void ControllerRun::runsAMaster()
{
    DialogFixture fixture;
    ZanDisplay* row = fixture.addRow(fixture.addMaster({}), imageWithTwoBlocks());
    showWhatInDialog(fixture.dialog, QString());
    showMessageInDialog(fixture.dialog, QStringLiteral("before"), 0);
    ShownProgress shown(&fixture);
    QCOMPARE(run(&fixture, row), 0);

    const QStringList log{R"(set_value "system redirect_update none")", "prepare_reply 1 20000 1",
                          R"(set_value "system update 1 1 BA")",        "poll_reply 3",
                          R"(set_value "system redirect_update none")", "prepare_reply 1 20000 1",
                          R"(set_value "system update 1 1 CA")",        "poll_reply 3"};
    QCOMPARE(fixture.channel.log(), log);
    const QStringList states{" |  | 1", "Updating firmware (alpha) |  | 1",
                             "Updating firmware (alpha) | Estimated remaining time: 53 s | 50",
                             "Updating firmware (alpha) | Estimated remaining time: 53 s | 98",
                             "Updating firmware (alpha) | Update successful | 100"};
    QCOMPARE(shown.states(), states);
    QCOMPARE(indexBlocksMustUpdate(fixture.dialog), 2);
}

void ControllerRun::runsASlave()
{
    DialogFixture fixture;
    ZanDisplay* row = fixture.addRow(fixture.addSlave(slaveAt("10.0.0.2")), imageWithTwoBlocks());
    QCOMPARE(run(&fixture, row), 0);

    // The redirection stands before every block, and nobody takes it back.
    const QStringList log{R"(set_value "system redirect_update 10.0.0.2")",
                          "prepare_reply 1 20000 1",
                          R"(set_value "system update 1 1 BA")",
                          "poll_reply 3",
                          R"(set_value "system redirect_update 10.0.0.2")",
                          "prepare_reply 1 20000 1",
                          R"(set_value "system update 1 1 CA")",
                          "poll_reply 3"};
    QCOMPARE(fixture.channel.log(), log);
    QCOMPARE(fixture.label("label_what")->text(), QStringLiteral("Updating firmware (beta)"));
}

void ControllerRun::redirectsFromProtocol17On_data()
{
    QTest::addColumn<VersionInfo>("protocol");
    QTest::addColumn<bool>("isSlave");
    QTest::addColumn<QStringList>("redirections");

    QTest::newRow("a master on protocol 1.7")
        << VersionInfo(1, 7) << false << QStringList{R"(set_value "system redirect_update none")"};
    QTest::newRow("a slave on protocol 1.7")
        << VersionInfo(1, 7) << true
        << QStringList{R"(set_value "system redirect_update 10.0.0.2")"};
    QTest::newRow("a master on protocol 1.6") << VersionInfo(1, 6) << false << QStringList();
    QTest::newRow("a slave on protocol 1.6.9") << VersionInfo(1, 6, 9) << true << QStringList();
}

void ControllerRun::redirectsFromProtocol17On()
{
    QFETCH(const VersionInfo, protocol);
    QFETCH(const bool, isSlave);
    QFETCH(const QStringList, redirections);
    DialogFixture fixture({protocol});
    ZanController* controller =
        isSlave ? fixture.addSlave(slaveAt("10.0.0.2")) : fixture.addMaster({});
    ZanDisplay* row =
        fixture.addRow(controller, imageWith({blockOf(FirmwareBlock, {shortRecord(1)})}));
    QCOMPARE(run(&fixture, row), 0);
    const QStringList block{"prepare_reply 1 20000 1", R"(set_value "system update 1 1 BA")",
                            "poll_reply 3"};
    QCOMPARE(fixture.channel.log(), redirections + block);
}

// This test sleeps, since the program does.
void ControllerRun::sleepsAfterASystemBlock()
{
    DialogFixture fixture;
    ZanDisplay* row = fixture.addRow(
        fixture.addMaster({}),
        imageWith({blockOf(FirmwareBlock, {shortRecord(1)}), blockOf(SystemBlock, {shortRecord(2)}),
                   blockOf(FirmwareBlock, {shortRecord(3)})}));
    QElapsedTimer timer;
    QStringList slept;
    QString before;
    fixture.channel.setHook([&](const QString& call) {
        if (timer.isValid() && timer.elapsed() >= 2000)
            slept += before + QStringLiteral(" -> ") + call;
        before = call;
        timer.start();
    });
    QCOMPARE(run(&fixture, row), 0);

    const QStringList log = fixture.channel.log();
    QCOMPARE(log.size(), 12);
    QCOMPARE(log.mid(4, 5),
             (QStringList{R"(set_value "system redirect_update none")", "prepare_reply 1 120000 1",
                          R"(set_value "system ctupdt 1 1 CA")", "poll_reply 3",
                          R"(set_value "system redirect_update none")"}));
    QCOMPARE(slept, QStringList{R"(poll_reply 3 -> set_value "system redirect_update none")"});
}

void ControllerRun::namesWhatItUpdates_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QByteArray>("hostname");
    QTest::addColumn<QString>("text");

    QTest::newRow("a firmware block")
        << int(FirmwareBlock) << QByteArray("alpha") << "Updating firmware (alpha)";
    QTest::newRow("a system block")
        << int(SystemBlock) << QByteArray("alpha") << "Updating system (alpha)";
    QTest::newRow("a block of another type") << 7 << QByteArray("alpha") << "";
    QTest::newRow("a controller without a name")
        << int(FirmwareBlock) << QByteArray() << "Updating firmware ()";
    QTest::newRow("a name beyond ASCII") << int(FirmwareBlock) << QByteArray("caf\xC3\xA9")
                                         << QStringLiteral("Updating firmware (caf\u00E9)");
    QTest::newRow("a name that looks like a placeholder")
        << int(FirmwareBlock) << QByteArray("%1") << "Updating firmware (%1)";
}

// The controller refuses the redirection, so that nobody has to wait for a system block.
void ControllerRun::namesWhatItUpdates()
{
    QFETCH(const int, type);
    QFETCH(const QByteArray, hostname);
    DialogFixture fixture;
    ScriptedController master;
    master.hostname = hostname;
    ZanDisplay* row =
        fixture.addRow(fixture.addMaster(master), imageWith({blockOf(static_cast<quint16>(type))}));
    blockIndexes(*row) = {0};
    fixture.channel.on("system redirect_update none").fail();
    QCOMPARE(run(&fixture, row), -44);
    QTEST(fixture.label("label_what")->text(), "text");
}

void ControllerRun::succeedsWithoutBlocks()
{
    DialogFixture fixture;
    ZanDisplay* row = fixture.addRow(fixture.addMaster({}), imageWith({blockOf(7)}));
    QVERIFY(row->updateIndexes().isEmpty());
    QVERIFY(!row->updatePossible());
    showWhatInDialog(fixture.dialog, QStringLiteral("before"));
    ShownProgress shown(&fixture);
    QCOMPARE(run(&fixture, row), 0);
    QCOMPARE(fixture.channel.log(), QStringList());
    QCOMPARE(shown.states(), (QStringList{"before |  | 1", "before | Update successful | 100"}));
}

void ControllerRun::doesNotTranslateWhatItShows()
{
    const MarkingTranslator translator("ZanUpdateModule2GSettingsdlg");
    DialogFixture fixture;
    ZanDisplay* row = fixture.addRow(fixture.addMaster({}), imageWithTwoBlocks());
    showWhatInDialog(fixture.dialog, QString());
    ShownProgress shown(&fixture);
    fixture.channel.onPoll().succeed().fail();
    QCOMPARE(run(&fixture, row), -33);
    const QString what = "Updating firmware (alpha) | ";
    QCOMPARE(shown.states(),
             (QStringList{" |  | 1", what + " | 1", what + "Estimated remaining time: 53 s | 50",
                          what + "Estimated remaining time: 53 s | 98",
                          what + "Update not successful | 0"}));
}

// ---- A row that fails

void ControllerRun::failsWithoutRedirection_data()
{
    QTest::addColumn<bool>("isSlave");
    QTest::newRow("of a master") << false;
    QTest::newRow("of a slave") << true;
}

void ControllerRun::failsWithoutRedirection()
{
    QFETCH(const bool, isSlave);
    DialogFixture fixture;
    ZanController* controller =
        isSlave ? fixture.addSlave(slaveAt("10.0.0.2")) : fixture.addMaster({});
    ZanDisplay* row = fixture.addRow(controller, imageWithTwoBlocks());
    fixture.channel.onPrefix("system redirect_update ").fail();
    QCOMPARE(run(&fixture, row), -44);
    QCOMPARE(fixture.channel.log().size(), 1);
    QCOMPARE(fixture.label("label_msg")->text(), QString());
    QCOMPARE(fixture.bar()->value(), 1);
    QCOMPARE(indexBlocksMustUpdate(fixture.dialog), 0);
}

void ControllerRun::failsWithABlock_data()
{
    QTest::addColumn<Spoil>("spoil");

    const auto cutTo = [](int fromEnd) {
        return Spoil([=](DialogFixture&, const ZanData& image) {
            QFile file(image.fileName());
            QVERIFY(file.resize(file.size() - fromEnd));
        });
    };
    QTest::newRow("whose file has gone") << Spoil(
        [](DialogFixture&, const ZanData& image) { QVERIFY(QFile::remove(image.fileName())); });
    QTest::newRow("whose file ends in its last record") << cutTo(1);
    QTest::newRow("that has become something else")
        << Spoil([](DialogFixture&, const ZanData& image) {
               QFile file(image.fileName());
               QVERIFY(file.open(QIODevice::ReadWrite) &&
                       file.seek(image.getUpdateBlock(0)->offset) && file.write("xx") == 2);
           });
    QTest::newRow("whose first record the controller refuses")
        << Spoil([](DialogFixture& fixture, const ZanData&) {
               fixture.channel.on("system update 2 1 BIwA").fail();
           });
    QTest::newRow("that the controller finds wrong in the end")
        << Spoil([](DialogFixture& fixture, const ZanData&) { fixture.channel.onPoll().fail(); });
}

void ControllerRun::failsWithABlock()
{
    QFETCH(const Spoil, spoil);
    DialogFixture fixture;
    ZanDisplay* row = fixture.addRow(fixture.addMaster({}), imageWith({blockOf(FirmwareBlock)}));
    spoil(fixture, *row->update());
    QCOMPARE(run(&fixture, row), -33);
    QCOMPARE(fixture.label("label_what")->text(), QStringLiteral("Updating firmware (alpha)"));
    QCOMPARE(fixture.label("label_msg")->text(), QStringLiteral("Update not successful"));
    QCOMPARE(fixture.bar()->value(), 0);
}

void ControllerRun::endsWithTheFirstFailedBlock()
{
    DialogFixture fixture;
    ZanDisplay* row = fixture.addRow(fixture.addMaster({}),
                                     imageWith({blockOf(FirmwareBlock, {shortRecord(1)}),
                                                blockOf(FirmwareBlock, {shortRecord(2)}),
                                                blockOf(FirmwareBlock, {shortRecord(3)})}));
    fixture.channel.onPoll().succeed().fail();
    ShownProgress shown(&fixture);
    QCOMPARE(run(&fixture, row), -33);
    QCOMPARE(fixture.channel.logOf("set_value \"system update"),
             (QStringList{R"(set_value "system update 1 1 BA")",
                          R"(set_value "system update 1 1 CA")"}));
    // What has been sent stays sent.
    QCOMPARE(indexBlocksMustUpdate(fixture.dialog), 1);
    QCOMPARE(shown.values(), (QVector<int>{1, 33, 66, 0}));
}

// ---- The bar over a whole run

void ControllerRun::barGoesOnFromBlockToBlock()
{
    DialogFixture fixture;
    const ControllerImage image = imageWith(
        {blockOf(FirmwareBlock, shortRecords(4)), blockOf(FirmwareBlock, shortRecords(4))});
    ZanDisplay* first = fixture.addRow(fixture.addMaster({}), image);
    ZanDisplay* second = fixture.addRow(fixture.addSlave(slaveAt("10.0.0.2")), image);
    calcBlocksToUpdate(fixture.dialog, fixture.inventory());
    ShownProgress shown(&fixture);
    QCOMPARE(do_zan_update(fixture.dialog, first), 0);
    QCOMPARE(do_zan_update(fixture.dialog, second), 0);
    QCOMPARE(shown.values(), (QVector<int>{1, 6, 25, 31, 50, 100, 1, 56, 75, 81, 98, 100}));
}

void ControllerRun::barStaysBelowItsEndForARowThatDoesNotCount_data()
{
    QTest::addColumn<VersionInfo>("protocol");
    QTest::addColumn<QByteArray>("address");
    QTest::addColumn<bool>("isMasterToo");
    QTest::addColumn<QVector<int>>("values");

    const QVector<int> alone{1, 98, 100};
    const QVector<int> behindAMaster{1, 50, 98, 100, 1, 98, 100};
    const QByteArray address("10.0.0.2");
    QTest::newRow("a slave without an address")
        << VersionInfo(1, 23) << QByteArray() << false << alone;
    QTest::newRow("a slave without an address, behind a master that counts")
        << VersionInfo(1, 23) << QByteArray() << true << behindAMaster;
    QTest::newRow("a slave below protocol 1.7")
        << VersionInfo(1, 6, 9) << address << false << alone;
    QTest::newRow("a slave below protocol 1.7, behind a master that counts")
        << VersionInfo(1, 6, 9) << address << true << behindAMaster;
}

void ControllerRun::barStaysBelowItsEndForARowThatDoesNotCount()
{
    QFETCH(const VersionInfo, protocol);
    QFETCH(const QByteArray, address);
    QFETCH(const bool, isMasterToo);
    DialogFixture fixture({protocol});
    const ControllerImage image = imageWith({blockOf(FirmwareBlock)});
    if (isMasterToo)
        fixture.addRow(fixture.addMaster({}), image);
    fixture.addRow(fixture.addSlave(slaveAt(address)), image);
    calcBlocksToUpdate(fixture.dialog, fixture.inventory());
    QCOMPARE(nBlocksMustUpdate(fixture.dialog), isMasterToo ? 1 : 0);
    ShownProgress shown(&fixture);
    for (ZanDisplay* row : qAsConst(fixture.inventory()->listZanDisplay))
        QCOMPARE(do_zan_update(fixture.dialog, row), 0);
    QTEST(shown.values(), "values");
}

ZAN_WIDGET_TEST_MAIN(ControllerRun)

#include "tst_controllerrun.moc"
