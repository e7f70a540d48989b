#include "dialogfixture.h"
#include "expectedboxes.h"
#include "exposeddialog.h"
#include "fixtureimages.h"
#include "runlog.h"

#include <ZanDisplay.h>
#include <comparing.h>
#include <markingtranslator.h>
#include <widgettestmain.h>

#include <utility>

class Completion : public QObject
{
    Q_OBJECT

private slots:
    void reportsAFailure_data();
    void reportsAFailure();
    void translatesAFailurePartByPart_data();
    void translatesAFailurePartByPart();

    void oldBackendOffersNoRestart_data();
    void oldBackendOffersNoRestart();
    void translatesTheEndOnAnOldBackendPartByPart_data();
    void translatesTheEndOnAnOldBackendPartByPart();
    void restartIsOfferedFromProtocol017On_data();
    void restartIsOfferedFromProtocol017On();

    void reportsASuccess_data();
    void reportsASuccess();
    void translatesASuccessButNotItsTitle_data();
    void translatesASuccessButNotItsTitle();
    void restartsInAFixedOrder();
    void restartsWhateverTheReply_data();
    void restartsWhateverTheReply();
    void closesWithoutRestart_data();
    void closesWithoutRestart();

    void searchesForCameras_data();
    void searchesForCameras();
    void doesNotSearch_data();
    void doesNotSearch();
};

static const VersionInfo CURRENT_PROTOCOL(1, 23);
static constexpr int CAMERA = 0x0a01;
/// A model that has to be searched for after its update.
static constexpr int SEARCHED_CAMERA = 0x0c01;

/// The end of a run, with nothing before it.
class Ending : public DialogFixture
{
public:
    /// @param cameraModel of the camera that was updated; 0 if it was a controller
    explicit Ending(const QString& model = QStringLiteral("ZAN"), int cameraModel = 0,
                    const VersionInfo& protocol = CURRENT_PROTOCOL)
        : DialogFixture({protocol, model})
    {
        if (cameraModel != 0)
            addCameraRow(cameraFile({static_cast<quint16>(cameraModel)}, VersionInfo(1, 1, 0)));
        else
            addRow(addMaster({}),
                   releaseImage(VersionInfo(3, 1, 0), VersionInfo(1, 0), {blockOf(FirmwareBlock)}));
        bShowNewFeatures(dialog) = false;
        dialog.show();
    }

    /// Reports @p err behind the expected @p box. @return whether the application quits
    bool end(const ExpectedBox& box, int err = 0, bool bCascade = false)
    {
        RunLog log(this);
        log.expect(box);
        const bool hasQuit = makesApplicationQuit(
            [&] { showMessageUpdateSuccessful(dialog, err, bCascade, inventory()); });
        if (!log.isDone())
            QTest::qFail(qPrintable(log.missing()), __FILE__, __LINE__);
        lines = log.lines();
        if (!lines.value(0).startsWith(QLatin1String("box ")))
            QTest::qFail("something happened before the box", __FILE__, __LINE__);
        lines = lines.mid(1);
        return hasQuit;
    }

    QStringList lines; ///< what came behind the box
};

static const char* const READY_LINE =
    R"(post_message Main_Window ZanUpateModule 1 "AppReadyToShutdown")";
static const char* const REBOOT_LINE = R"(send_command "vornix2 system reboot")";

static const char* const TRANSLATED = "ZanUpdateModule2GSettingsdlg";

/// A box with its title marked, and its text with every line as a part of its own.
static ExpectedBox markedNotice(QMessageBox::Icon icon, QString text)
{
    const QString lineEnd(QLatin1Char('\n'));
    text.replace(lineEnd, lineEnd + MarkingTranslator::marked(QString()));
    ExpectedBox box = notice(icon, MarkingTranslator::marked(text));
    box.title = MarkingTranslator::marked(box.title);
    return box;
}

// ---- Failure

void Completion::reportsAFailure_data()
{
    QTest::addColumn<int>("err");
    QTest::addColumn<bool>("bCascade");
    QTest::addColumn<VersionInfo>("protocol");
    QTest::addColumn<QString>("text");

    const QString update = "Update failed!\nPlease restart the Controller and try again.";
    const QString camera = "Camera update failed!\nPlease restart the Controller and try again.";
    const auto row = [&](const char* name, int err, const QString& text) {
        QTest::newRow(name) << err << false << CURRENT_PROTOCOL << text;
    };
    row("of one controller row", -33, update);
    row("of a redirection", -44, update);
    row("of two controller rows", -66, update);
    row("of one camera", -300, update);
    row("of one camera and one controller row", -333, update);
    row("above 0", 1, update);
    row("of exactly 300", 300, camera);
    row("of 299", 299, update);
    row("of 301", 301, update);
    QTest::newRow("in a cascade") << -33 << true << CURRENT_PROTOCOL << update;
    QTest::newRow("on an old backend") << -33 << false << VersionInfo(0, 16, 9) << update;
}

void Completion::reportsAFailure()
{
    QFETCH(const int, err);
    QFETCH(const bool, bCascade);
    QFETCH(const VersionInfo, protocol);
    QFETCH(const QString, text);
    Ending ending(QStringLiteral("ZAN"), 0, protocol);
    showMessageInDialog(ending.dialog, QStringLiteral("Update not successful"), 42);
    QVERIFY(!ending.end(notice(QMessageBox::Critical, text), err, bCascade));
    QCOMPARE(ending.lines, QStringList());
    // The window stays as the failed row left it.
    QVERIFY(ending.dialog.isVisible());
    QCOMPARE(ending.label("label_msg")->text(), QStringLiteral("Update not successful"));
    QCOMPARE(ending.bar()->value(), 42);
    QVERIFY(!bShowNewFeatures(ending.dialog));
}

void Completion::translatesAFailurePartByPart_data()
{
    reportsAFailure_data();
}

void Completion::translatesAFailurePartByPart()
{
    QFETCH(const int, err);
    QFETCH(const bool, bCascade);
    QFETCH(const VersionInfo, protocol);
    QFETCH(const QString, text);
    const MarkingTranslator translator(TRANSLATED);
    Ending ending(QStringLiteral("ZAN"), 0, protocol);
    QVERIFY(!ending.end(markedNotice(QMessageBox::Critical, text), err, bCascade));
}

// ---- Old backend

void Completion::oldBackendOffersNoRestart_data()
{
    QTest::addColumn<bool>("bCascade");
    QTest::addColumn<QString>("model");
    QTest::addColumn<int>("cameraModel");
    QTest::addColumn<QString>("text");

    const QString controller = "The Controller is updated successfully.\nPlease restart the "
                               "Controller.\nVORNIX3 will be closed now.";
    const QString cascade = "The Cascaded System is updated successfully.\nPlease restart the "
                            "Controller.\nVORNIX3 will be closed now.";
    QTest::newRow("of a controller") << false << "ZAN" << 0 << controller;
    QTest::newRow("of a cascade") << true << "ZAN" << 0 << cascade;
    QTest::newRow("of a BRIARSCOPE") << false << "BRIARSCOPE" << 0 << controller;
    QTest::newRow("of cameras") << false << "ZAN" << SEARCHED_CAMERA << controller;
}

void Completion::oldBackendOffersNoRestart()
{
    QFETCH(const bool, bCascade);
    QFETCH(const QString, model);
    QFETCH(const int, cameraModel);
    QFETCH(const QString, text);
    Ending ending(model, cameraModel, VersionInfo(0, 16, 9));
    QVERIFY(ending.end(notice(QMessageBox::Information, text), 0, bCascade));
    QCOMPARE(ending.lines, QStringList{READY_LINE});
    QVERIFY(!bShowNewFeatures(ending.dialog));
}

void Completion::translatesTheEndOnAnOldBackendPartByPart_data()
{
    oldBackendOffersNoRestart_data();
}

void Completion::translatesTheEndOnAnOldBackendPartByPart()
{
    QFETCH(const bool, bCascade);
    QFETCH(const QString, model);
    QFETCH(const int, cameraModel);
    QFETCH(const QString, text);
    const MarkingTranslator translator(TRANSLATED);
    Ending ending(model, cameraModel, VersionInfo(0, 16, 9));
    QVERIFY(ending.end(markedNotice(QMessageBox::Information, text), 0, bCascade));
    // What the frontend is told is no text for the user.
    QCOMPARE(ending.lines, QStringList{READY_LINE});
}

void Completion::restartIsOfferedFromProtocol017On_data()
{
    QTest::addColumn<VersionInfo>("protocol");
    QTest::newRow("0.17") << VersionInfo(0, 17);
    QTest::newRow("0.17.0") << VersionInfo(0, 17, 0);
    QTest::newRow("1.0") << VersionInfo(1, 0);
}

void Completion::restartIsOfferedFromProtocol017On()
{
    QFETCH(const VersionInfo, protocol);
    Ending ending(QStringLiteral("ZAN"), 0, protocol);
    QVERIFY(!ending.end(restartOffer(QMessageBox::No)));
}

// ---- Success

static const QString CLOSING_REMARK = QStringLiteral("If yes VORNIX3 will be closed");

void Completion::reportsASuccess_data()
{
    QTest::addColumn<bool>("bCascade");
    QTest::addColumn<QString>("model");
    QTest::addColumn<int>("cameraModel");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("informativeText");
    QTest::addColumn<QString>("command");

    const QString controller = "The Controller is updated successfully and must be restarted.";
    const QString restartController =
        "Do you want to restart the Controller now?\n(This restart may take a few minutes. Do not "
        "switch off the Controller during restart.)\n\n";
    const QString cascade = "The Cascaded system is updated successfully and must be restarted.";
    const QString restartCascade =
        "Do you want to restart the Cascaded System now?\n(This restart may take a few minutes. Do "
        "not switch off the Cascaded System during restart.)\n\n";
    const QString briarscope = "The BRIARSCOPE is updated successfully and must be restarted.";
    const QString shutDown =
        "Do you want to shut down the BRIARSCOPE now?\n\nAfter pressing yes, please wait until the "
        "BRIARSCOPE power LED turns off,\nthen manually power cycle the BRIARSCOPE.";
    const QString cameras = "The cameras are updated successfully and must be restarted manually!";
    const QString powerOff = "Please power off all updated cameras by disconnecting or turn off "
                             "any connected PoE+ switches.";
    const QString reboot = "vornix2 system reboot";
    const QString shutdown = "vornix2 system shutdown";
    const QString none;

    QTest::newRow("of a BRIARSCOPE")
        << false << "BRIARSCOPE" << 0 << briarscope << shutDown << shutdown;
    QTest::newRow("of the cameras of a BRIARSCOPE")
        << false << "BRIARSCOPE" << SEARCHED_CAMERA << briarscope << shutDown << none;
    QTest::newRow("of a controller")
        << false << "ZAN" << 0 << controller << restartController + CLOSING_REMARK << reboot;
    QTest::newRow("of cameras") << false << "ZAN" << CAMERA << cameras << powerOff << none;
    QTest::newRow("of a cascade of BRIARSCOPEs")
        << true << "BRIARSCOPE" << 0 << cascade << restartCascade << shutdown;
    QTest::newRow("of a cascade") << true << "ZAN" << 0 << cascade
                                  << restartCascade + CLOSING_REMARK << reboot;
    QTest::newRow("of the cameras of a cascade")
        << true << "ZAN" << SEARCHED_CAMERA << cascade << restartCascade << none;
    QTest::newRow("of the cameras of a cascade of BRIARSCOPEs")
        << true << "BRIARSCOPE" << SEARCHED_CAMERA << cascade << restartCascade << none;
    QTest::newRow("of a model whose name only begins with BRIARSCOPE")
        << false << "BRIARSCOPE3" << 0 << controller << restartController + CLOSING_REMARK
        << reboot;
    QTest::newRow("of a model whose name is spelled otherwise")
        << false << "Briarscope" << 0 << controller << restartController + CLOSING_REMARK << reboot;
}

/// @param press of the two buttons of a box that offers a restart
static ExpectedBox successBox(const QString& text, const QString& informativeText,
                              bool offersRestart, QMessageBox::StandardButton press)
{
    ExpectedBox box = notice(QMessageBox::Information, text);
    box.informativeText = informativeText;
    box.defaultButton = QMessageBox::NoButton;
    if (offersRestart) {
        box.buttons = QMessageBox::Yes | QMessageBox::No;
        box.defaultButton = QMessageBox::Yes;
        box.press = press;
    }
    return box;
}

void Completion::reportsASuccess()
{
    QFETCH(const bool, bCascade);
    QFETCH(const QString, model);
    QFETCH(const int, cameraModel);
    QFETCH(const QString, text);
    QFETCH(const QString, informativeText);
    QFETCH(const QString, command);
    Ending ending(model, cameraModel);
    ExpectedBox box = successBox(text, informativeText, !command.isEmpty(), QMessageBox::Yes);
    box.inspect = [&](QMessageBox& shown) {
        QCOMPARE(shown.parentWidget(), static_cast<QWidget*>(&ending.dialog));
    };
    const bool isRestarted = ending.end(box, 0, bCascade);
    QCOMPARE(isRestarted, !command.isEmpty());
    QCOMPARE(bShowNewFeatures(ending.dialog), isRestarted);
    QStringList lines;
    if (isRestarted)
        lines << READY_LINE << QStringLiteral("send_command \"%1\"").arg(command);
    QCOMPARE(ending.lines, lines);
}

void Completion::translatesASuccessButNotItsTitle_data()
{
    reportsASuccess_data();
}

void Completion::translatesASuccessButNotItsTitle()
{
    QFETCH(const bool, bCascade);
    QFETCH(const QString, model);
    QFETCH(const int, cameraModel);
    QFETCH(const QString, text);
    QFETCH(const QString, informativeText);
    QFETCH(const QString, command);
    const MarkingTranslator translator(TRANSLATED);
    Ending ending(model, cameraModel);
    QString informativeParts = MarkingTranslator::marked(informativeText);
    informativeParts.replace(CLOSING_REMARK, MarkingTranslator::marked(CLOSING_REMARK));
    QVERIFY(!ending.end(successBox(MarkingTranslator::marked(text), informativeParts,
                                   !command.isEmpty(), QMessageBox::No),
                        0, bCascade));
}

void Completion::restartsInAFixedOrder()
{
    Ending ending;
    QStringList states;
    RunLog log(&ending);
    log.expect(restartOffer(QMessageBox::Yes));
    log.setHook([&](const QString& call) {
        states += call + (bShowNewFeatures(ending.dialog) ? QStringLiteral(" late") : QString());
    });
    QVERIFY(makesApplicationQuit(
        [&] { showMessageUpdateSuccessful(ending.dialog, 0, false, ending.inventory()); }));
    QCOMPARE(states, (QStringList{READY_LINE, REBOOT_LINE}));
    QVERIFY(bShowNewFeatures(ending.dialog));
    QCOMPARE(ending.channel.messagesTo("Main_Window"), QStringList{"AppReadyToShutdown"});
}

void Completion::restartsWhateverTheReply_data()
{
    QTest::addColumn<bool>("isSuccess");
    QTest::addColumn<QByteArray>("reply");
    QTest::newRow("an error") << true << QByteArray("vornix2 err -1");
    QTest::newRow("an empty reply") << true << QByteArray("");
    QTest::newRow("a reply without an end") << true << QByteArray(200, 'x');
    QTest::newRow("a command that fails") << false << QByteArray("x");
}

void Completion::restartsWhateverTheReply()
{
    QFETCH(const bool, isSuccess);
    QFETCH(const QByteArray, reply);
    Ending ending;
    auto& answers = ending.channel.on("vornix2 system reboot");
    if (!isSuccess)
        answers.fail(reply);
    else if (reply.size() == 200)
        answers.replyUnterminated(reply);
    else
        answers.reply(reply);
    QVERIFY(ending.end(restartOffer(QMessageBox::Yes)));
    QCOMPARE(ending.lines, (QStringList{READY_LINE, REBOOT_LINE}));
}

void Completion::closesWithoutRestart_data()
{
    QTest::addColumn<bool>("isCamera");
    QTest::addColumn<int>("button");
    QTest::newRow("the answer No") << false << int(QMessageBox::No);
    QTest::newRow("Escape instead of an answer") << false << int(QMessageBox::NoButton);
    QTest::newRow("Ok to the cameras") << true << int(QMessageBox::Ok);
    QTest::newRow("Escape instead of Ok to the cameras") << true << int(QMessageBox::NoButton);
}

void Completion::closesWithoutRestart()
{
    QFETCH(const bool, isCamera);
    QFETCH(const int, button);
    for (const bool wereNotesDue : {false, true}) {
        Ending ending(QStringLiteral("ZAN"), isCamera ? CAMERA : 0);
        bShowNewFeatures(ending.dialog) = wereNotesDue;
        ExpectedBox box = isCamera ? camerasDone() : restartOffer();
        box.press = static_cast<QMessageBox::StandardButton>(button);
        QVERIFY(!ending.end(box));
        QCOMPARE(ending.lines, QStringList());
        QVERIFY(!ending.dialog.isVisible());
        QCOMPARE(ending.dialog.result(), int(QDialog::Accepted));
        QCOMPARE(bShowNewFeatures(ending.dialog), wereNotesDue);
    }
}

// ---- Search for cameras

static const char* const SEARCH_DIALOG = "SearchHardwareDlgClass";

void Completion::searchesForCameras_data()
{
    QTest::addColumn<int>("result");
    QTest::addColumn<bool>("isPosted");
    QTest::newRow("and finds them") << 1 << true;
    QTest::newRow("and is cancelled") << 0 << false;
    QTest::newRow("and ends otherwise") << 2 << false;
}

void Completion::searchesForCameras()
{
    QFETCH(const int, result);
    QFETCH(const bool, isPosted);
    Ending ending(QStringLiteral("ZAN"), SEARCHED_CAMERA);
    QStringList lines{"sleep 12000",
                      R"(get_int "cascade number_of_connected_slaves")",
                      R"(get_string "cascade wol_slaves")",
                      QStringLiteral("dialog ") + SEARCH_DIALOG,
                      "prepare_reply 1 15000 0",
                      R"(send_command "vornix2 reinit")",
                      "poll_reply 3",
                      R"(post_message standard VORNIX3 1 "Search for new hardware...done")",
                      "box The cameras are updated successfully and must be restarted manually!"};
    if (isPosted)
        lines.insert(8, R"(post_message standard VORNIX3 1 "search for new hardware done")");
    RunLog log(&ending);
    QDialog* search = nullptr;
    log.expectDialog(QString::fromLatin1(SEARCH_DIALOG), [&](QDialog& dialog) {
        QVERIFY(!dialog.parentWidget());
        // The mode in which nobody has to press a button.
        QVERIFY(dialog.findChild<QPushButton*>(QStringLiteral("pushButton_ok"))->isHidden());
        search = &dialog;
    });
    log.setHook([&](const QString& call) {
        if (search && call.startsWith(QLatin1String("send_command")))
            std::exchange(search, nullptr)->done(result);
    });
    log.expect(camerasDone());
    showMessageUpdateSuccessful(ending.dialog, 0, false, ending.inventory());
    QVERIFY2(log.isDone(), qPrintable(log.missing()));
    QCOMPARE(log.lines(), lines);
    QVERIFY(!ending.dialog.isVisible());
}

void Completion::doesNotSearch_data()
{
    QTest::addColumn<int>("cameraModel");
    QTest::addColumn<bool>("isSelected");
    QTest::newRow("for cameras that need no search") << 0x0901 << true;
    QTest::newRow("for cameras that are not selected") << SEARCHED_CAMERA << false;
}

void Completion::doesNotSearch()
{
    QFETCH(const int, cameraModel);
    QFETCH(const bool, isSelected);
    Ending ending(QStringLiteral("ZAN"), cameraModel);
    ending.inventory()->listZanDisplay.first()->setToBeUpdated(isSelected ? Qt::Checked
                                                                          : Qt::Unchecked);
    QVERIFY(!ending.end(camerasDone()));
    QCOMPARE(ending.lines, QStringList());
}

ZAN_WIDGET_TEST_MAIN(Completion)

#include "tst_completion.moc"
