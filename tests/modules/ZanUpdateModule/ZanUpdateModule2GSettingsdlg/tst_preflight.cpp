#include "dialogfixture.h"
#include "expectedboxes.h"
#include "exposeddialog.h"
#include "fixtureimages.h"
#include "runlog.h"

#include <ZanController.h>
#include <ZanDisplay.h>
#include <comparing.h>
#include <markingtranslator.h>
#include <widgettestmain.h>

#include <QGridLayout>

class PreFlight : public QObject
{
    Q_OBJECT

private slots:
    void knowsSupportedControllers_data();
    void knowsSupportedControllers();
    void looksAtSelectedControllerRowsOnly();
    void forgetsWhatItFoundBefore();
    void refusesDiscontinuedControllers_data();
    void refusesDiscontinuedControllers();

    void asksForTheHardware_data();
    void asksForTheHardware();
    void asksForNoHardwareThatNobodyCounted();
    void doesNotAskForeverForTheHardware();

    void warnsOfTheStepAcrossVersion3_data();
    void warnsOfTheStepAcrossVersion3();
    void asksForCamerasAlone_data();
    void asksForCamerasAlone();
    void bulletsOfTheStepAcrossVersion3();
    void noBulletsForTheStepAcrossVersion4();
    void confirmationIsWide_data();
    void confirmationIsWide();
    void cameraConfirmationIsPlain();
    void escapeMeansNo_data();
    void escapeMeansNo();

    void goesThroughItsStepsInOrder();
    void stopsWithTheAnswerNo();
    void stopsAMeasurement_data();
    void stopsAMeasurement();
    void looksAtRepliesAlone();
    void givesUpIfTheMeasurementGoesOn_data();
    void givesUpIfTheMeasurementGoesOn();
    void asksBackendsOfAnyProtocol();
    void asksWhetherSlavesAreWoken_data();
    void asksWhetherSlavesAreWoken();

    void buttonsAreOffDuringTheRunOnly();
    void cancelEndsItBeforeTheRun_data();
    void cancelEndsItBeforeTheRun();
    void runsTheRowsThatAreSelectedAndPossible();
    void namesWhatRuns_data();
    void namesWhatRuns();
    void namesACameraThatIsNotSelected();
    void countsACameraThatIsNotSelectedAsDone();
    void saysSoIfNothingRan();

    void translatesTheStartNoticeAlone_data();
    void translatesTheStartNoticeAlone();
    void doesNotTranslateTheRefusal();
};

static ControllerImage imageTo(const VersionInfo& pt)
{
    return releaseImage(pt, VersionInfo(1, 0), {blockOf(FirmwareBlock, {shortRecord(1)})});
}

static ScriptedController supportedMaster()
{
    ScriptedController master;
    master.board = "\"Fujitsu D3231\"";
    return master;
}

static ScriptedSlave slaveWith(int serial)
{
    ScriptedSlave slave;
    slave.address = "10.0.0.2";
    slave.controller.hostname = "beta";
    slave.controller.serial = serial;
    return slave;
}

static CameraUpdateFile anyCameraFile()
{
    return cameraFile({0x0a01}, VersionInfo(1, 1, 0));
}

// ---- Discontinued controllers

void PreFlight::knowsSupportedControllers_data()
{
    QTest::addColumn<bool>("isSlave");
    QTest::addColumn<int>("model");
    QTest::addColumn<QByteArray>("board");
    QTest::addColumn<int>("serial");
    QTest::addColumn<bool>("isSupported");

    for (const char* word : {"SB330", "SB331", "SB332", "SB333", "D3231", "FUJITSU", "CINCOZE"}) {
        QTest::addRow("a master with a board %s", word)
            << false << 0 << QByteArray(word) << 0 << true;
    }
    const auto master = [](const char* name, int model, const char* board, bool isSupported) {
        QTest::newRow(name) << false << model << QByteArray(board) << 4711 << isSupported;
    };
    master("a master with a board in lower case", 0, "fujitsu", true);
    master("a master with a board in mixed case inside a longer text", 0, "\"Board Cincoze P1\"",
           true);
    master("a master with another board", 0, "SB334", false);
    master("a master with a board that is cut", 0, "FUJITS", false);
    master("a master with no board text", 0, "", false);
    master("a master whose board is unknown", 0, "none", false);
    master("a master of model 2 with a supported board", 2, "SB330", true);
    master("a master of model 2 with another board", 2, "SB334", false);
    master("a master of model 1 with another board is not examined", 1, "SB334", true);
    master("a master of model 20 with another board is not examined", 20, "SB334", true);
    master("a master of model 21 with another board is not examined", 21, "SB334", true);
    master("a master of an unknown model is not examined", -1, "SB334", true);

    const QVector<int> supported{124, 258, 350, 457, 518, 519, 520, 523, 532, 534, 100000};
    for (const int serial : supported)
        QTest::addRow("a slave with serial %d", serial)
            << true << 0 << QByteArray() << serial << true;
    const QVector<int> discontinued{-1,  0,   1,   123, 125, 257, 259, 349,
                                    351, 456, 458, 516, 517, 521, 522, 533};
    for (const int serial : discontinued)
        QTest::addRow("a slave with serial %d", serial)
            << true << 0 << QByteArray() << serial << false;
    QTest::newRow("a slave of model 2 is examined") << true << 2 << QByteArray() << 517 << false;
    QTest::newRow("a slave of model 1 is not examined") << true << 1 << QByteArray() << 517 << true;
}

void PreFlight::knowsSupportedControllers()
{
    QFETCH(const bool, isSlave);
    QFETCH(const int, model);
    QFETCH(const QByteArray, board);
    QFETCH(const int, serial);
    QFETCH(const bool, isSupported);
    DialogFixture fixture;
    ScriptedController master;
    master.model = model;
    master.board = board;
    ScriptedSlave slave = slaveWith(serial);
    slave.controller.model = model;
    ZanController* controller = isSlave ? fixture.addSlave(slave) : fixture.addMaster(master);
    fixture.addRow(controller, imageTo(VersionInfo(3, 1, 0)));

    QList<ZanController*> discontinued;
    QCOMPARE(zan_is_supported(fixture.dialog, &discontinued), isSupported);
    QCOMPARE(discontinued,
             isSupported ? QList<ZanController*>() : QList<ZanController*>{controller});
}

void PreFlight::looksAtSelectedControllerRowsOnly()
{
    DialogFixture fixture;
    fixture.addRow(fixture.addMaster({}), imageTo(VersionInfo(3, 1, 0)))
        ->setToBeUpdated(Qt::Unchecked);
    fixture.addCameraRow(anyCameraFile());
    auto* placeholder = new ZanDisplay(nullptr, nullptr);
    placeholder->setToBeUpdated(Qt::Checked);
    fixture.inventory()->listZanDisplay.append(placeholder);
    QList<ZanController*> discontinued;
    QVERIFY(zan_is_supported(fixture.dialog, &discontinued));
}

void PreFlight::forgetsWhatItFoundBefore()
{
    DialogFixture fixture;
    QList<ZanController*> discontinued{fixture.addMaster({})};
    QVERIFY(zan_is_supported(fixture.dialog, &discontinued));
    QVERIFY(discontinued.isEmpty());
}

static ExpectedBox refusalOf(const QString& names)
{
    return notice(QMessageBox::Warning,
                  QStringLiteral("An update to the selected version is not possible due to "
                                 "discontinued support for your controller.\n\nPlease contact "
                                 "O.R.V. for support.\n\nDiscontinued controllers: ") +
                      names);
}

void PreFlight::refusesDiscontinuedControllers_data()
{
    QTest::addColumn<QByteArray>("hostname");
    QTest::addColumn<int>("masterRows");
    QTest::addColumn<int>("slaveRows");
    QTest::addColumn<QString>("names");
    const QByteArray alpha("alpha");
    QTest::newRow("a master") << alpha << 1 << 0 << "alpha (SN 4711)";
    QTest::newRow("a slave") << alpha << 0 << 1 << "beta (SN 517)";
    QTest::newRow("a master and a slave") << alpha << 1 << 1 << "alpha (SN 4711), beta (SN 517)";
    QTest::newRow("a master with two rows stands there for each")
        << alpha << 2 << 0 << "alpha (SN 4711), alpha (SN 4711)";
    QTest::newRow("a name that looks like placeholders")
        << QByteArray("%1%2") << 1 << 0 << "%1%2 (SN 4711)";
}

void PreFlight::refusesDiscontinuedControllers()
{
    QFETCH(const QByteArray, hostname);
    QFETCH(const int, masterRows);
    QFETCH(const int, slaveRows);
    QFETCH(const QString, names);
    DialogFixture fixture;
    ScriptedController boardless;
    boardless.hostname = hostname;
    boardless.board = "";
    ZanController* master = fixture.addMaster(boardless);
    ZanController* slave = fixture.addSlave(slaveWith(517));
    for (int i = 0; i < masterRows; ++i)
        fixture.addRow(master, imageTo(VersionInfo(3, 1, 0)));
    for (int i = 0; i < slaveRows; ++i)
        fixture.addRow(slave, imageTo(VersionInfo(3, 1, 0)));

    RunLog log(&fixture);
    log.expect(refusalOf(names));
    clickUpdate(fixture.dialog);
    QVERIFY2(log.isDone(), qPrintable(log.missing()));
    // Nothing has been sent, and what was selected is still selected.
    QCOMPARE(log.lines().size(), 1);
    for (const ZanDisplay* row : qAsConst(fixture.inventory()->listZanDisplay))
        QVERIFY(row->toBeUpdated());
}

// ---- Hardware

static const char* const HARDWARE_LINE = R"(get_int "system extra number_of_hardware")";

void PreFlight::asksForTheHardware_data()
{
    QTest::addColumn<VersionInfo>("protocol");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("answers");
    QTest::addColumn<int>("queries");

    QTest::newRow("two entries") << VersionInfo(1, 23) << 2 << 2 << 2;
    QTest::newRow("none") << VersionInfo(1, 23) << 0 << 0 << 0;
    QTest::newRow("a negative number of entries") << VersionInfo(1, 23) << -3 << 9 << 0;
    QTest::newRow("an entry that fails is the last one asked for")
        << VersionInfo(1, 23) << 4 << 1 << 2;
    QTest::newRow("from protocol 0.17 on") << VersionInfo(0, 17) << 1 << 1 << 1;
    QTest::newRow("not below protocol 0.17") << VersionInfo(0, 16, 9) << 2 << 2 << -1;
}

void PreFlight::asksForTheHardware()
{
    QFETCH(const VersionInfo, protocol);
    QFETCH(const int, count);
    QFETCH(const int, answers);
    QFETCH(const int, queries);
    DialogFixture fixture({protocol});
    fixture.channel.on("system extra number_of_hardware").reply(count);
    for (int i = 1; i <= answers; ++i) {
        fixture.channel.on("system extra hardware h" + QByteArray::number(i))
            .replyUnterminated(QByteArray(200, '"'));
    }
    fixture.channel.takeLog();

    QVERIFY(is_update_possible(fixture.dialog));
    QStringList log;
    if (queries >= 0)
        log += HARDWARE_LINE;
    for (int i = 1; i <= queries; ++i)
        log += QStringLiteral("get_string \"system extra hardware h%1\"").arg(i);
    QCOMPARE(fixture.channel.log(), log);
}

void PreFlight::asksForNoHardwareThatNobodyCounted()
{
    DialogFixture fixture;
    fixture.channel.on("system extra number_of_hardware").fail();
    fixture.channel.onPrefix("system extra hardware ").reply("board");
    fixture.channel.takeLog();
    QVERIFY(is_update_possible(fixture.dialog));
    QCOMPARE(fixture.channel.log(), QStringList{HARDWARE_LINE});
}

void PreFlight::doesNotAskForeverForTheHardware()
{
    DialogFixture fixture;
    fixture.channel.on("system extra number_of_hardware").reply(0x7FFFFFFF);
    fixture.channel.onPrefix("system extra hardware ").reply("board");
    QVERIFY(is_update_possible(fixture.dialog));
    QCOMPARE(fixture.channel.logOf("get_string").size(), 10000);
}

// ---- Confirmation

static const char* const BULLETS =
    "<b><font color=#d42020>Please be aware that...</font></b><ul>"
    "<li>support expires for peripherals: <i>Airwand1</i>, <i>Radio Bridge RB1</i> and "
    "<i>Gripsense Haptic Sample</i></li>"
    "<li>support expires for Controller hardware: <i>Micro-Star MS-x</i>, <i>Gigabyte "
    "G31/G41x</i>, <i>Asus P5G41</i> and <i>DFI/ACP EL331</i></li>"
    "<li>in cascaded systems all Controllers will have to be updated to VORNIX3</li>"
    "</ul>A downgrade to Vornix2 is only possible by sending the Controller to O.R.V.<p>If you are "
    "unsure, please contact O.R.V. for support.<p><b>Do you really want to update?</b>";

/// Adds a row for each "INSTALLED>OFFERED"; in brackets it is not selected.
static void addRows(DialogFixture* fixture, const QStringList& rows)
{
    for (QString text : rows) {
        const bool isSelected = !text.startsWith(QLatin1Char('('));
        text.remove(QLatin1Char('(')).remove(QLatin1Char(')'));
        ScriptedController master = supportedMaster();
        master.pt = 'v' + text.section(QLatin1Char('>'), 0, 0).toLatin1();
        const VersionInfo offered = VersionInfo::fromString(text.section(QLatin1Char('>'), 1, 1));
        fixture->addRow(fixture->addMaster(master), imageTo(offered))
            ->setToBeUpdated(isSelected ? Qt::Checked : Qt::Unchecked);
    }
}

void PreFlight::warnsOfTheStepAcrossVersion3_data()
{
    QTest::addColumn<QStringList>("rows");
    QTest::addColumn<bool>("isWarned");

    QTest::newRow("from 2.9.0 to 3.1.0") << QStringList{"2.9.0>3.1.0"} << true;
    QTest::newRow("from just below 3.0.0 to exactly 3.0.0") << QStringList{"2.99.99>3.0.0"} << true;
    QTest::newRow("from an unknown version") << QStringList{"0.0.0>3.1.0"} << true;
    QTest::newRow("not from 3.0.0 to 3.1.0") << QStringList{"3.0.0>3.1.0"} << false;
    QTest::newRow("not from 2.5.0 to 2.9.0") << QStringList{"2.5.0>2.9.0"} << false;
    QTest::newRow("the lowest installed version counts, also if it comes last")
        << QStringList{"3.0.0>3.1.0", "2.5.0>3.1.0"} << true;
    QTest::newRow("the lowest installed version counts, also if it comes first")
        << QStringList{"2.5.0>3.1.0", "3.0.0>3.1.0"} << true;
    QTest::newRow("an image counts against the lowest version before it")
        << QStringList{"2.5.0>2.9.0", "3.0.0>3.5.0"} << true;
    QTest::newRow("an image does not count against a lower version behind it")
        << QStringList{"3.0.0>3.5.0", "2.5.0>2.9.0"} << false;
    QTest::newRow("the highest offer counts, also if it comes first")
        << QStringList{"2.5.0>3.1.0", "1.5.0>2.9.0"} << true;
    QTest::newRow("rows that are not selected do not count")
        << QStringList{"3.0.0>3.1.0", "(2.5.0>3.1.0)"} << false;
    QTest::newRow("not from 4.2.0 to 4.3.0") << QStringList{"4.2.0>4.3.0"} << false;
    QTest::newRow("not across version 4 alone") << QStringList{"3.5.0>4.0.0"} << false;
    QTest::newRow("across versions 3 and 4") << QStringList{"2.5.0>4.0.0"} << true;
}

void PreFlight::warnsOfTheStepAcrossVersion3()
{
    QFETCH(const QStringList, rows);
    QFETCH(const bool, isWarned);
    DialogFixture fixture;
    addRows(&fixture, rows);
    fixture.addCameraRow(anyCameraFile());
    m_bShowWarningv2xxv3xx(fixture.dialog) = !isWarned;

    ExpectedBox box = controllerConfirmation(QMessageBox::Yes);
    if (isWarned)
        box.informativeText = QString::fromLatin1(BULLETS);
    box.inspect = [](QMessageBox& shown) {
        QCOMPARE(shown.textFormat(), Qt::RichText);
    };
    RunLog log(&fixture);
    log.expect(box);
    QCOMPARE(warnInstallNewFirmware(fixture.dialog, fixture.inventory()), int(QMessageBox::Yes));
    QVERIFY2(log.isDone(), qPrintable(log.missing()));
    QCOMPARE(m_bShowWarningv2xxv3xx(fixture.dialog), isWarned);
}

void PreFlight::asksForCamerasAlone_data()
{
    QTest::addColumn<QStringList>("rows");
    QTest::newRow("there is no controller") << QStringList();
    QTest::newRow("the only controller is not selected") << QStringList{"(2.5.0>3.1.0)"};
}

void PreFlight::asksForCamerasAlone()
{
    QFETCH(const QStringList, rows);
    DialogFixture fixture;
    addRows(&fixture, rows);
    fixture.addCameraRow(anyCameraFile());
    for (const auto answer : {QMessageBox::No, QMessageBox::Yes}) {
        m_bShowWarningv2xxv3xx(fixture.dialog) = true;
        RunLog log(&fixture);
        log.expect(cameraConfirmation(answer));
        QCOMPARE(warnInstallNewFirmware(fixture.dialog, fixture.inventory()), int(answer));
        QVERIFY(!m_bShowWarningv2xxv3xx(fixture.dialog));
        QVERIFY2(log.isDone(), qPrintable(log.missing()));
    }
}

void PreFlight::bulletsOfTheStepAcrossVersion3()
{
    DialogFixture fixture;
    QStringList texts{"before"};
    QCOMPARE(warnInstallNewFirmware_2xx_3xx(fixture.dialog, &texts), 3);
    QCOMPARE(texts,
             (QStringList{"before",
                          "<li>support expires for peripherals: <i>Airwand1</i>, <i>Radio Bridge "
                          "RB1</i> and <i>Gripsense Haptic Sample</i></li>",
                          "<li>support expires for Controller hardware: <i>Micro-Star MS-x</i>, "
                          "<i>Gigabyte G31/G41x</i>, <i>Asus P5G41</i> and <i>DFI/ACP "
                          "EL331</i></li>",
                          "<li>in cascaded systems all Controllers will have to be updated to "
                          "VORNIX3</li>"}));
}

void PreFlight::noBulletsForTheStepAcrossVersion4()
{
    DialogFixture fixture;
    QStringList texts{"before"};
    QCOMPARE(warnInstallNewFirmware_3xx_4xx(fixture.dialog, &texts), 0);
    QCOMPARE(texts, QStringList{"before"});
}

/// The cell of the item that gives a box its width; nothing if there is none.
static QRect cellOfSpacer(const QMessageBox& box)
{
    const auto* grid = qobject_cast<QGridLayout*>(box.layout());
    for (int i = 0; i < grid->count(); ++i) {
        QSpacerItem* spacer = grid->itemAt(i)->spacerItem();
        if (!spacer || spacer->sizeHint() != QSize(500, 0))
            continue;
        if (spacer->sizePolicy().horizontalPolicy() != QSizePolicy::Minimum ||
            spacer->sizePolicy().verticalPolicy() != QSizePolicy::Expanding)
            continue;
        int row = 0;
        int column = 0;
        int rows = 0;
        int columns = 0;
        grid->getItemPosition(i, &row, &column, &rows, &columns);
        return QRect(column, row, columns, rows);
    }
    return QRect();
}

void PreFlight::confirmationIsWide_data()
{
    QTest::addColumn<QStringList>("rows");
    QTest::addColumn<QString>("informativeText");
    QTest::newRow("with the closing question alone")
        << QStringList{"3.0.0>3.1.0"} << "<p><b>Do you really want to update?</b>";
    QTest::newRow("with the bullets") << QStringList{"2.9.0>3.1.0"} << BULLETS;
}

// Looked at while it is on the screen: a message box lays itself out anew before.
void PreFlight::confirmationIsWide()
{
    QFETCH(const QStringList, rows);
    QFETCH(const QString, informativeText);
    DialogFixture fixture;
    addRows(&fixture, rows);
    ExpectedBox box = controllerConfirmation(QMessageBox::No);
    box.informativeText = informativeText;
    box.inspect = [](QMessageBox& shown) {
        QVERIFY(shown.isVisible());
        QVERIFY2(shown.width() >= 500, qPrintable(QString::number(shown.width())));
        const auto* grid = qobject_cast<QGridLayout*>(shown.layout());
        const QRect cell = cellOfSpacer(shown);
        QCOMPARE(cell, QRect(0, grid->rowCount() - 1, grid->columnCount(), 1));
    };
    RunLog log(&fixture);
    log.expect(box);
    QCOMPARE(warnInstallNewFirmware(fixture.dialog, fixture.inventory()), int(QMessageBox::No));
    QVERIFY2(log.isDone(), qPrintable(log.missing()));
}

void PreFlight::cameraConfirmationIsPlain()
{
    DialogFixture fixture;
    fixture.addCameraRow(anyCameraFile());
    ExpectedBox box = cameraConfirmation(QMessageBox::No);
    box.inspect = [&](QMessageBox& shown) {
        QCOMPARE(cellOfSpacer(shown), QRect());
        QVERIFY2(shown.width() < 500, qPrintable(QString::number(shown.width())));
        QCOMPARE(shown.parentWidget(), static_cast<QWidget*>(&fixture.dialog));
    };
    RunLog log(&fixture);
    log.expect(box);
    QCOMPARE(warnInstallNewFirmware(fixture.dialog, fixture.inventory()), int(QMessageBox::No));
    QVERIFY2(log.isDone(), qPrintable(log.missing()));
}

void PreFlight::escapeMeansNo_data()
{
    QTest::addColumn<bool>("isCamera");
    QTest::newRow("for controllers") << false;
    QTest::newRow("for cameras") << true;
}

void PreFlight::escapeMeansNo()
{
    QFETCH(const bool, isCamera);
    DialogFixture fixture;
    if (isCamera)
        fixture.addCameraRow(anyCameraFile());
    else
        addRows(&fixture, {"3.0.0>3.1.0"});
    RunLog log(&fixture);
    log.expect(isCamera ? cameraConfirmation(QMessageBox::NoButton)
                        : controllerConfirmation(QMessageBox::NoButton));
    QCOMPARE(warnInstallNewFirmware(fixture.dialog, fixture.inventory()), int(QMessageBox::No));
}

// ---- The chain behind the button

static const char* const CONFIRMATION_LINE =
    "box This action will install new firmware to your Controller.";
static const char* const START_LINE = "box Don't stop the update process until it is finished!";
static const char* const WOL_LINE = R"(get_string "cascade wol_slaves")";
static const char* const STATUS_LINE = R"(get_string "status active")";
static const char* const STOP_LINE = R"(send_command "vornix2 tracking stop")";

/// A supported master with one row that can be run.
static ZanDisplay* addGoodRow(DialogFixture* fixture)
{
    return fixture->addRow(fixture->addMaster(supportedMaster()), imageTo(VersionInfo(3, 1, 0)));
}

void PreFlight::goesThroughItsStepsInOrder()
{
    DialogFixture fixture;
    addGoodRow(&fixture);
    fixture.channel.on("system extra number_of_hardware").reply(1);
    fixture.channel.on("system extra hardware h1").reply("\"board  1\"");
    fixture.channel.on("status active").reply("mea");
    RunLog log(&fixture);
    log.expect(controllerConfirmation());
    log.expect(startNotice());
    log.expect(restartOffer());
    clickUpdate(fixture.dialog);
    QVERIFY2(log.isDone(), qPrintable(log.missing()));
    QCOMPARE(log.lines(),
             (QStringList{HARDWARE_LINE, R"(get_string "system extra hardware h1")",
                          CONFIRMATION_LINE, STATUS_LINE, STOP_LINE, WOL_LINE, START_LINE,
                          R"(set_value "system redirect_update none")", "prepare_reply 1 20000 1",
                          R"(set_value "system update 1 1 BA")", "poll_reply 3",
                          "box The Controller is updated successfully and must be restarted."}));
}

void PreFlight::stopsWithTheAnswerNo()
{
    DialogFixture fixture;
    const ZanDisplay* row = addGoodRow(&fixture);
    fixture.channel.on("status active").reply("mea");
    RunLog log(&fixture);
    log.expect(controllerConfirmation(QMessageBox::No));
    clickUpdate(fixture.dialog);
    QCOMPARE(log.lines(), (QStringList{HARDWARE_LINE, CONFIRMATION_LINE}));
    QVERIFY(row->toBeUpdated());
}

/// Clicks the button and leaves the run at its last box. @return what came behind the confirmation
static QStringList linesOfChain(DialogFixture* fixture, bool isRunReached)
{
    RunLog log(fixture);
    log.expect(controllerConfirmation());
    if (isRunReached)
        log.expect(startNotice(QMessageBox::Cancel));
    clickUpdate(fixture->dialog);
    return log.lines().mid(log.lines().indexOf(QLatin1String(CONFIRMATION_LINE)) + 1);
}

void PreFlight::stopsAMeasurement_data()
{
    QTest::addColumn<QByteArray>("status");
    QTest::addColumn<bool>("isStopped");
    QTest::newRow("that runs") << QByteArray("mea") << true;
    QTest::newRow("not if none runs") << QByteArray("off") << false;
    QTest::newRow("not for a status in capital letters") << QByteArray("MEA") << false;
    QTest::newRow("not for a longer status") << QByteArray("meas") << false;
    QTest::newRow("not for a status with a blank") << QByteArray("mea ") << false;
    QTest::newRow("not for an empty status") << QByteArray("") << false;
    QTest::newRow("not for a status without an end") << QByteArray(200, 'm') << false;
    QTest::newRow("not for a status beyond ASCII") << QByteArray("me\xC3\xA4") << false;
    QTest::newRow("not if nobody answers") << QByteArray() << false;
}

void PreFlight::stopsAMeasurement()
{
    QFETCH(const QByteArray, status);
    QFETCH(const bool, isStopped);
    DialogFixture fixture;
    addGoodRow(&fixture);
    if (status.isNull())
        fixture.channel.on("status active").succeed();
    else if (status.size() == 200)
        fixture.channel.on("status active").replyUnterminated(status);
    else
        fixture.channel.on("status active").reply(status);
    QStringList lines{STATUS_LINE, WOL_LINE, START_LINE};
    if (isStopped)
        lines.insert(1, STOP_LINE);
    QCOMPARE(linesOfChain(&fixture, true), lines);
}

// What the two calls return does not count.
void PreFlight::looksAtRepliesAlone()
{
    DialogFixture fixture;
    addGoodRow(&fixture);
    fixture.channel.on("status active").fail("mea");
    fixture.channel.on("vornix2 tracking stop").fail("vornix2 ok");
    QCOMPARE(linesOfChain(&fixture, true),
             (QStringList{STATUS_LINE, STOP_LINE, WOL_LINE, START_LINE}));
}

void PreFlight::givesUpIfTheMeasurementGoesOn_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::newRow("an error") << QByteArray("vornix2 err -3");
    QTest::newRow("a reply that goes on") << QByteArray("vornix2 ok 1");
    QTest::newRow("a reply that is cut") << QByteArray("vornix2 o");
    QTest::newRow("a reply in capital letters") << QByteArray("VORNIX2 OK");
    QTest::newRow("an empty reply") << QByteArray("");
    QTest::newRow("a reply without an end") << QByteArray(200, 'x');
    QTest::newRow("no reply") << QByteArray();
}

void PreFlight::givesUpIfTheMeasurementGoesOn()
{
    QFETCH(const QByteArray, reply);
    DialogFixture fixture;
    const ZanDisplay* row = addGoodRow(&fixture);
    fixture.channel.on("status active").reply("mea");
    if (reply.isNull())
        fixture.channel.on("vornix2 tracking stop").succeed();
    else if (reply.size() == 200)
        fixture.channel.on("vornix2 tracking stop").replyUnterminated(reply);
    else
        fixture.channel.on("vornix2 tracking stop").reply(reply);
    QCOMPARE(linesOfChain(&fixture, false),
             (QStringList{STATUS_LINE, STOP_LINE,
                          R"(post_message standard VORNIX3 1 "measurement stop unsuccessful")"}));
    QVERIFY(row->toBeUpdated());
    QVERIFY(fixture.updateButton()->isEnabled());
    QVERIFY(fixture.exitButton()->isEnabled());
}

// Only the questions for the hardware are new; all others, and the command, are as old as can be.
void PreFlight::asksBackendsOfAnyProtocol()
{
    DialogFixture fixture({VersionInfo()});
    ScriptedController master;
    master.model = 1; // of a supported model, as such a backend does not tell the board
    fixture.addRow(fixture.addMaster(master), imageTo(VersionInfo(3, 1, 0)));
    fixture.channel.on("status active").reply("mea");
    RunLog log(&fixture);
    log.expect(controllerConfirmation());
    log.expect(startNotice(QMessageBox::Cancel));
    clickUpdate(fixture.dialog);
    QVERIFY2(log.isDone(), qPrintable(log.missing()));
    QCOMPARE(log.lines(),
             (QStringList{CONFIRMATION_LINE, STATUS_LINE, STOP_LINE, WOL_LINE, START_LINE}));
}

void PreFlight::asksWhetherSlavesAreWoken_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<bool>("isSuccess");
    QTest::addColumn<bool>("isActive");
    QTest::newRow("yes") << QByteArray("yes") << true << true;
    QTest::newRow("no") << QByteArray("no") << true << false;
    QTest::newRow("yes with something behind it") << QByteArray("yes ") << true << false;
    QTest::newRow("an empty reply") << QByteArray("") << true << false;
    QTest::newRow("a yes left behind by a failure") << QByteArray("yes") << false << false;
}

void PreFlight::asksWhetherSlavesAreWoken()
{
    QFETCH(const QByteArray, reply);
    QFETCH(const bool, isSuccess);
    DialogFixture fixture;
    addGoodRow(&fixture);
    if (isSuccess)
        fixture.channel.on("cascade wol_slaves").reply(reply);
    else
        fixture.channel.on("cascade wol_slaves").fail(reply);
    m_bIsWolSlavesActive(fixture.dialog) = true;
    linesOfChain(&fixture, true);
    QTEST(m_bIsWolSlavesActive(fixture.dialog), "isActive");
}

// ---- The run

void PreFlight::buttonsAreOffDuringTheRunOnly()
{
    DialogFixture fixture;
    addGoodRow(&fixture);
    // As F3 finds it.
    fixture.updateButton()->setEnabled(false);
    QStringList states;
    const auto note = [&](const char* moment) {
        states += QStringLiteral("%1: %2 %3")
                      .arg(QLatin1String(moment))
                      .arg(fixture.updateButton()->isEnabled())
                      .arg(fixture.exitButton()->isEnabled());
    };
    const auto noting = [&](ExpectedBox box, const char* moment) {
        box.inspect = [=](QMessageBox&) {
            note(moment);
        };
        return box;
    };
    RunLog log(&fixture);
    log.expect(noting(controllerConfirmation(), "confirmation"));
    log.expect(noting(startNotice(), "start"));
    log.expect(noting(restartOffer(), "end"));
    log.setHook([&](const QString& call) {
        if (call == QLatin1String("poll_reply 3"))
            note("run");
    });
    clickUpdate(fixture.dialog);
    note("afterwards");
    QCOMPARE(states, (QStringList{"confirmation: 0 1", "start: 0 0", "run: 0 0", "end: 0 0",
                                  "afterwards: 1 1"}));
}

void PreFlight::cancelEndsItBeforeTheRun_data()
{
    QTest::addColumn<int>("button");
    QTest::newRow("the button") << int(QMessageBox::Cancel);
    QTest::newRow("Escape") << int(QMessageBox::NoButton);
}

void PreFlight::cancelEndsItBeforeTheRun()
{
    QFETCH(const int, button);
    DialogFixture fixture;
    addGoodRow(&fixture);
    fixture.channel.on("status active").reply("mea");
    showMessageInDialog(fixture.dialog, QStringLiteral("before"), 42);
    nBlocksMustUpdate(fixture.dialog) = 42;
    RunLog log(&fixture);
    log.expect(controllerConfirmation());
    ExpectedBox start = startNotice(static_cast<QMessageBox::StandardButton>(button));
    start.inspect = [&](QMessageBox& shown) {
        QCOMPARE(shown.parentWidget(), static_cast<QWidget*>(&fixture.dialog));
        QCOMPARE(fixture.label("label_msg")->text(), QString());
        QCOMPARE(fixture.bar()->value(), 0);
    };
    log.expect(start);
    clickUpdate(fixture.dialog);
    QVERIFY2(log.isDone(), qPrintable(log.missing()));
    // The measurement that was stopped stays stopped.
    QCOMPARE(log.lines(), (QStringList{HARDWARE_LINE, CONFIRMATION_LINE, STATUS_LINE, STOP_LINE,
                                       WOL_LINE, START_LINE}));
    QCOMPARE(fixture.label("label_updates")->text(), QStringLiteral("Updates are necessary"));
    QCOMPARE(nBlocksMustUpdate(fixture.dialog), 42);
    QVERIFY(fixture.updateButton()->isEnabled());
    QVERIFY(fixture.exitButton()->isEnabled());
}

/// Goes through a whole run that begins behind the confirmation @p first and ends with @p last.
static QStringList runThrough(DialogFixture* fixture, const ExpectedBox& first,
                              const ExpectedBox& last, const ScriptedChannel::Hook& hook = {})
{
    RunLog log(fixture);
    log.expect(first);
    log.expect(startNotice());
    log.expect(last);
    log.setHook(hook);
    clickUpdate(fixture->dialog);
    if (!log.isDone())
        QTest::qFail(qPrintable(log.missing()), __FILE__, __LINE__);
    return log.lines().filter(QStringLiteral("system update "));
}

void PreFlight::runsTheRowsThatAreSelectedAndPossible()
{
    DialogFixture fixture;
    ZanController* master = fixture.addMaster(supportedMaster());
    const auto addRow = [&](int record, const VersionInfo& minPt) {
        ControllerImage image = releaseImage(VersionInfo(3, 1, 0), VersionInfo(1, 0),
                                             {blockOf(FirmwareBlock, {shortRecord(record)})});
        image.minPt = minPt;
        return fixture.addRow(master, image);
    };
    addRow(1, VersionInfo(0, 0, 0));
    addRow(2, VersionInfo(0, 0, 0))->setToBeUpdated(Qt::Unchecked);
    addRow(3, VersionInfo(9, 0, 0));
    addRow(4, VersionInfo(0, 0, 0));
    nUpdateRemainingSeconds(fixture.dialog) = 99;
    indexBlocksMustUpdate(fixture.dialog) = 99;
    QVector<int> remaining;
    const QStringList commands =
        runThrough(&fixture, controllerConfirmation(), restartOffer(), [&](const QString& call) {
            if (call.contains(QLatin1String("redirect_update")))
                remaining += nUpdateRemainingSeconds(fixture.dialog);
        });
    QCOMPARE(commands, (QStringList{R"(set_value "system update 1 1 BA")",
                                    R"(set_value "system update 1 1 EA")"}));
    QCOMPARE(nBlocksMustUpdate(fixture.dialog), 2);
    QCOMPARE(indexBlocksMustUpdate(fixture.dialog), 2);
    QCOMPARE(remaining, (QVector<int>{0, 53}));
}

void PreFlight::namesWhatRuns_data()
{
    QTest::addColumn<bool>("isCamera");
    QTest::addColumn<QString>("text");
    QTest::newRow("a controller") << false << "Updating Controller..";
    QTest::newRow("a camera") << true << "Updating camera(s)..";
}

void PreFlight::namesWhatRuns()
{
    QFETCH(const bool, isCamera);
    DialogFixture fixture;
    if (isCamera)
        fixture.addCameraRow(anyCameraFile());
    else
        addGoodRow(&fixture);
    QString during;
    ExpectedBox last = isCamera ? camerasDone() : restartOffer();
    last.inspect = [&](QMessageBox&) {
        // Operators know this text; it is the same after a run of cameras.
        QCOMPARE(fixture.label("label_updates")->text(),
                 QStringLiteral("Updating Controller..finished"));
    };
    runThrough(&fixture, isCamera ? cameraConfirmation() : controllerConfirmation(), last,
               [&](const QString& call) {
                   if (call == QLatin1String("poll_reply 3"))
                       during = fixture.label("label_updates")->text();
               });
    QTEST(during, "text");
}

// Seen in front of a controller, whose row leaves the text alone.
void PreFlight::namesACameraThatIsNotSelected()
{
    DialogFixture fixture;
    fixture.addCameraRow(anyCameraFile())->setToBeUpdated(Qt::Unchecked);
    addGoodRow(&fixture);
    fixture.channel.onPoll().fail();
    QString during;
    runThrough(&fixture, controllerConfirmation(), updateFailed(), [&](const QString& call) {
        if (call == QLatin1String("poll_reply 3"))
            during = fixture.label("label_updates")->text();
    });
    QCOMPARE(during, QStringLiteral("Updating camera(s).."));
}

void PreFlight::countsACameraThatIsNotSelectedAsDone()
{
    DialogFixture fixture;
    fixture.addCameraRow(anyCameraFile())->setToBeUpdated(Qt::Unchecked);
    runThrough(&fixture, cameraConfirmation(), camerasDone());
    QCOMPARE(fixture.channel.logOf("send_command"), QStringList());
}

void PreFlight::saysSoIfNothingRan()
{
    DialogFixture fixture;
    ControllerImage notYet = imageTo(VersionInfo(3, 1, 0));
    notYet.minPt = VersionInfo(9, 0, 0);
    fixture.addRow(fixture.addMaster(supportedMaster()), notYet);
    fixture.dialog.show();
    const ExpectedBox nothing =
        notice(QMessageBox::Information,
               QStringLiteral("Nothing was updated, because no update is selected."));
    QCOMPARE(runThrough(&fixture, controllerConfirmation(), nothing), QStringList());
    QVERIFY(fixture.dialog.isVisible());
    QCOMPARE(fixture.channel.messages().size(), 0);
}

// ---- Language

static const char* const TRANSLATED = "ZanUpdateModule2GSettingsdlg";

void PreFlight::translatesTheStartNoticeAlone_data()
{
    QTest::addColumn<bool>("isCamera");
    QTest::newRow("behind the confirmation for controllers") << false;
    QTest::newRow("behind the confirmation for cameras") << true;
}

void PreFlight::translatesTheStartNoticeAlone()
{
    QFETCH(const bool, isCamera);
    const MarkingTranslator translator(TRANSLATED);
    DialogFixture fixture;
    ExpectedBox confirmation = cameraConfirmation();
    if (isCamera) {
        fixture.addCameraRow(anyCameraFile());
    } else {
        addRows(&fixture, {"2.9.0>3.1.0"});
        confirmation = controllerConfirmation();
        confirmation.informativeText = QString::fromLatin1(BULLETS);
    }
    ExpectedBox start = startNotice(QMessageBox::Cancel);
    start.title = MarkingTranslator::marked(start.title);
    start.text = MarkingTranslator::marked(start.text);
    RunLog log(&fixture);
    log.expect(confirmation);
    log.expect(start);
    clickUpdate(fixture.dialog);
    QVERIFY2(log.isDone(), qPrintable(log.missing()));
}

void PreFlight::doesNotTranslateTheRefusal()
{
    const MarkingTranslator translator(TRANSLATED);
    DialogFixture fixture;
    fixture.addRow(fixture.addSlave(slaveWith(517)), imageTo(VersionInfo(3, 1, 0)));
    RunLog log(&fixture);
    log.expect(refusalOf(QStringLiteral("beta (SN 517)")));
    clickUpdate(fixture.dialog);
    QVERIFY2(log.isDone(), qPrintable(log.missing()));
}

ZAN_WIDGET_TEST_MAIN(PreFlight)

#include "tst_preflight.moc"
