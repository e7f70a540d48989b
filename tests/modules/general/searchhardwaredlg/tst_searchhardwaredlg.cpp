#include <searchhardwaredlg.h>

#include <cuttexts.h>
#include <modaldriver.h>
#include <privateaccess.h>
#include <scriptedchannel.h>
#include <widgettestmain.h>

#include <QLabel>
#include <QPalette>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <cstring>

ZAN_EXPOSE(pressOk, &SearchHardwareDlg::on_pushButton_ok_clicked);
ZAN_EXPOSE(lookForReply, &SearchHardwareDlg::onTimer);
ZAN_EXPOSE(m_res, &SearchHardwareDlg::m_res);

using Act = std::function<void(QDialog&)>;
Q_DECLARE_METATYPE(Act)
Q_DECLARE_METATYPE(ScriptedAnswers)

class TestSearchHardwareDlg : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void hasItsForm();
    void hasItsLayout();
    void hasItsLabelsAndBar();
    void hasItsLineAndButtons();
    void showsThePictureOfThePalette_data();
    void showsThePictureOfThePalette();
    void showsNoPictureThatTheHostDoesNotHave();
    void nothingIsCutOff_data() { LargerFont::addRows(); }
    void nothingIsCutOff();

    void allowsTimeByTheSystem_data();
    void allowsTimeByTheSystem();

    void waitsForTheUser_data();
    void waitsForTheUser();
    void canBeLeftBeforeTheSearch_data();
    void canBeLeftBeforeTheSearch();
    void searchesOnTheUsersWord_data();
    void searchesOnTheUsersWord();
    void searchesByItself();
    void canBeLeftBeforeItSearchesByItself();
    void cannotBeLeftDuringTheSearch();
    void startsAnewEachTime();

    void reportsTheReply_data();
    void reportsTheReply();
    void judgesTheTextAlone();
    void forgetsTheReplyOfAnEarlierSearch();
};

static const QString NAME = QStringLiteral("SearchHardwareDlgClass");
static const QString BY_ITSELF = QStringLiteral("cameraupdate");
static const QString BY_USER = QStringLiteral("user");
static const QString DONE = QStringLiteral("Search for new hardware...done");
static const QString FAILED = QStringLiteral("Error: Unable search for new hardware");

template <typename Widget>
static Widget* child(const QDialog& dialog, const char* name)
{
    auto* widget = dialog.findChild<Widget*>(QLatin1String(name));
    if (!widget)
        qFatal("no %s", name);
    return widget;
}

static QString text(const QDialog& dialog, const char* name)
{
    return child<QLabel>(dialog, name)->text();
}

static QPushButton* okButton(const QDialog& dialog)
{
    return child<QPushButton>(dialog, "pushButton_ok");
}

static QPushButton* cancelButton(const QDialog& dialog)
{
    return child<QPushButton>(dialog, "pushButton_cancel");
}

void TestSearchHardwareDlg::cleanup()
{
    QApplication::setPalette(QPalette());
}

// ---- The form

void TestSearchHardwareDlg::nothingIsCutOff()
{
    QFETCH(const double, factor);
    const LargerFont font(factor);
    ScriptedChannel channel;
    SearchHardwareDlg dialog(nullptr, &channel, BY_USER);
    ModalDriver driver;
    QStringList cut;
    driver.expectDialog(NAME, [&cut](QDialog& shown) {
        cut = cutTexts(shown);
        shown.reject();
    });
    dialog.update_and_exec();
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
    QCOMPARE(cut, QStringList());
    if (factor == 1)
        QCOMPARE(dialog.size(), QSize(400, 160));
}

void TestSearchHardwareDlg::hasItsForm()
{
    ScriptedChannel channel;
    const SearchHardwareDlg dialog(nullptr, &channel, BY_USER);
    QCOMPARE(dialog.objectName(), NAME);
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Search for new hardware"));
    QCOMPARE(dialog.size(), QSize(400, 160));
    QCOMPARE(dialog.minimumSize(), QSize(400, 160));
    QCOMPARE(dialog.maximumSize(), QSize(1000, 1000));
    QCOMPARE(dialog.windowFlags(),
             Qt::WindowFlags(Qt::Dialog | Qt::WindowTitleHint | Qt::WindowSystemMenuHint));
}

// Name of the widget, layout or spacer that stands at a place of a layout.
static QString nameAt(const QBoxLayout* layout, int index)
{
    QLayoutItem* item = layout->itemAt(index);
    if (item->spacerItem())
        return QStringLiteral("spacer");
    return item->widget() ? item->widget()->objectName() : item->layout()->objectName();
}

static QStringList names(const QBoxLayout* layout)
{
    QStringList list;
    for (int index = 0; index < layout->count(); ++index)
        list += nameAt(layout, index);
    return list;
}

static void verifyLayout(const QBoxLayout* layout, int spacing, const QStringList& expected)
{
    QCOMPARE(layout->spacing(), spacing);
    QCOMPARE(names(layout), expected);
}

void TestSearchHardwareDlg::hasItsLayout()
{
    ScriptedChannel channel;
    const SearchHardwareDlg dialog(nullptr, &channel, BY_USER);
    const auto* outer = child<QVBoxLayout>(dialog, "verticalLayout_2");
    const auto* upper = child<QHBoxLayout>(dialog, "horizontalLayout_2");
    const auto* inner = child<QVBoxLayout>(dialog, "verticalLayout");
    const auto* lower = child<QHBoxLayout>(dialog, "horizontalLayout");
    QCOMPARE(dialog.layout(), static_cast<const QLayout*>(outer));
    verifyLayout(outer, 6, {"horizontalLayout_2", "line", "horizontalLayout"});
    verifyLayout(upper, 6, {"label_2", "verticalLayout"});
    verifyLayout(inner, 11, {"label_4", "spacer", "label_searching", "progressBar"});
    verifyLayout(lower, 6, {"spacer", "pushButton_ok", "pushButton_cancel"});
    QCOMPARE(inner->itemAt(1)->expandingDirections(), Qt::Orientations(Qt::Vertical));
    QCOMPARE(lower->itemAt(0)->expandingDirections(), Qt::Orientations(Qt::Horizontal));
}

void TestSearchHardwareDlg::hasItsLabelsAndBar()
{
    ScriptedChannel channel;
    const SearchHardwareDlg dialog(nullptr, &channel, BY_USER);
    QCOMPARE(child<QLabel>(dialog, "label_2")->maximumSize(), QSize(60, 1000));
    QCOMPARE(child<QLabel>(dialog, "label_2")->alignment(), Qt::AlignCenter | Qt::AlignLeft);
    QCOMPARE(child<QLabel>(dialog, "label_4")->alignment(), Qt::AlignCenter | Qt::AlignLeft);
    QCOMPARE(text(dialog, "label_searching"), QString());
    const auto* bar = child<QProgressBar>(dialog, "progressBar");
    QCOMPARE(bar->maximum(), 0);
    QCOMPARE(bar->value(), 0);
    QVERIFY(!bar->isTextVisible());
}

void TestSearchHardwareDlg::hasItsLineAndButtons()
{
    ScriptedChannel channel;
    const SearchHardwareDlg dialog(nullptr, &channel, BY_USER);
    const auto* line = child<QFrame>(dialog, "line");
    QCOMPARE(line->frameShape(), QFrame::HLine);
    QCOMPARE(line->frameShadow(), QFrame::Sunken);
    QCOMPARE(okButton(dialog)->text(), QStringLiteral("OK"));
    QCOMPARE(cancelButton(dialog)->text(), QStringLiteral("Cancel"));
    QVERIFY(!cancelButton(dialog)->autoDefault());
    QCOMPARE(okButton(dialog)->nextInFocusChain(), static_cast<QWidget*>(cancelButton(dialog)));
}

void TestSearchHardwareDlg::showsThePictureOfThePalette_data()
{
    QTest::addColumn<QColor>("window");
    QTest::addColumn<QString>("picture");

    const QString dark = QStringLiteral(":/images/qmessagebox-info.png");
    const QString bright = QStringLiteral(":/images/qmessagebox-info-brightmode.png");
    QTest::newRow("a black window") << QColor(Qt::black) << dark;
    QTest::newRow("a white window") << QColor(Qt::white) << bright;
    QTest::newRow("the brightest dark grey") << QColor(127, 127, 127) << dark;
    QTest::newRow("the darkest bright grey") << QColor(128, 128, 128) << bright;
    QTest::newRow("a colour of half the lightness") << QColor(0, 0, 255) << bright;
    QTest::newRow("a colour just below half the lightness") << QColor(0, 0, 254) << dark;
}

void TestSearchHardwareDlg::showsThePictureOfThePalette()
{
    QFETCH(const QColor, window);
    QFETCH(const QString, picture);
    QPalette palette;
    palette.setColor(QPalette::Window, window);
    QApplication::setPalette(palette);
    ScriptedChannel channel;
    const SearchHardwareDlg dialog(nullptr, &channel, BY_USER);
    const QPixmap shown = child<QLabel>(dialog, "label_2")->pixmap(Qt::ReturnByValue);
    QVERIFY(!shown.isNull());
    QCOMPARE(shown.toImage(), QPixmap(picture).toImage());
}

void TestSearchHardwareDlg::showsNoPictureThatTheHostDoesNotHave()
{
    Q_CLEANUP_RESOURCE(hostpictures);
    ScriptedChannel channel;
    const SearchHardwareDlg dialog(nullptr, &channel, BY_USER);
    Q_INIT_RESOURCE(hostpictures);
    QVERIFY(child<QLabel>(dialog, "label_2")->pixmap(Qt::ReturnByValue).isNull());
    QCOMPARE(text(dialog, "label_2"), QString());
}

// ---- The time-out

void TestSearchHardwareDlg::allowsTimeByTheSystem_data()
{
    QTest::addColumn<ScriptedAnswers>("slaves");
    QTest::addColumn<ScriptedAnswers>("wolSlaves");
    QTest::addColumn<int>("seconds");

    const auto row = [](const char* name, const ScriptedAnswers& slaves,
                        const ScriptedAnswers& wolSlaves, int seconds) {
        QTest::newRow(name) << slaves << wolSlaves << seconds;
    };
    const auto reply = [](const auto& value) {
        return ScriptedAnswers().reply(value);
    };
    const auto fail = [](const QByteArray& leftBehind) {
        return ScriptedAnswers().fail(leftBehind);
    };
    row("no cascade, no wake-up", reply(0), reply("no"), 15);
    row("one slave", reply(1), reply("no"), 45);
    row("twenty slaves take no longer than one", reply(20), reply("no"), 45);
    row("a wake-up without slaves", reply(0), reply("yes"), 60);
    row("slaves that must be woken", reply(2), reply("yes"), 90);
    row("less than no slaves", reply(-1), reply("no"), 15);
    row("a failing count stops nothing", fail(""), reply("yes"), 60);
    row("a failing wake-up stops nothing", reply(2), fail(""), 45);
    row("what a failing wake-up leaves behind does not count", reply(0), fail("yes"), 15);
    row("a wake-up that nobody tells", reply(0), ScriptedAnswers().succeed(), 15);
    row("another case is no yes", reply(0), reply("Yes"), 15);
    row("more than a yes is no yes", reply(0), reply("yes "), 15);
    row("a long text without an end is no yes", reply(0),
        ScriptedAnswers().replyUnterminated(QByteArray("yes").leftJustified(200, 'x')), 15);
    row("a dead channel", fail(""), fail(""), 15);
}

void TestSearchHardwareDlg::allowsTimeByTheSystem()
{
    QFETCH(const ScriptedAnswers, slaves);
    QFETCH(const ScriptedAnswers, wolSlaves);
    QFETCH(const int, seconds);
    ScriptedChannel channel;
    channel.on("cascade number_of_connected_slaves") = slaves;
    channel.on("cascade wol_slaves") = wolSlaves;
    SearchHardwareDlg dialog(nullptr, &channel, BY_USER);
    QCOMPARE(channel.takeLog(), (QStringList{R"(get_int "cascade number_of_connected_slaves")",
                                             R"(get_string "cascade wol_slaves")"}));
    QCOMPARE(text(dialog, "label_4"),
             QStringLiteral("This may take up to %1 seconds!").arg(seconds));

    pressOk(dialog);
    QCOMPARE(channel.log(), (QStringList{QStringLiteral("prepare_reply 1 %1 0").arg(seconds * 1000),
                                         R"(send_command "vornix2 reinit")"}));
}

// ---- The two modes

/// Runs the dialog, in which @p act plays the user. @return the result
static int run(SearchHardwareDlg* dialog, const Act& act)
{
    ModalDriver driver;
    driver.expectDialog(NAME, act);
    const int result = dialog->update_and_exec();
    if (!driver.isDone())
        QTest::qFail(qPrintable(driver.missing()), __FILE__, __LINE__);
    return result;
}

static void verifyIdle(const QDialog& dialog)
{
    QCOMPARE(text(dialog, "label_searching"), QString());
    const auto* bar = child<QProgressBar>(dialog, "progressBar");
    QCOMPARE(bar->maximum(), 1);
    QVERIFY(!bar->isEnabled());
    QVERIFY(okButton(dialog)->isEnabled());
    QVERIFY(cancelButton(dialog)->isEnabled());
}

static void verifySearching(const QDialog& dialog)
{
    QCOMPARE(dialog.cursor().shape(), Qt::WaitCursor);
    QCOMPARE(text(dialog, "label_searching"), QStringLiteral("Searching..."));
    const auto* bar = child<QProgressBar>(dialog, "progressBar");
    QCOMPARE(bar->maximum(), 0);
    QVERIFY(bar->isEnabled());
    QVERIFY(!okButton(dialog)->isEnabled());
    QVERIFY(!cancelButton(dialog)->isEnabled());
}

void TestSearchHardwareDlg::waitsForTheUser_data()
{
    QTest::addColumn<QString>("type");
    QTest::newRow("any mode text") << BY_USER;
    QTest::newRow("no mode text") << QString();
    QTest::newRow("another case") << QStringLiteral("cameraUpdate");
    QTest::newRow("more than the mode text") << QStringLiteral("cameraupdate ");
}

void TestSearchHardwareDlg::waitsForTheUser()
{
    QFETCH(const QString, type);
    ScriptedChannel channel;
    SearchHardwareDlg dialog(nullptr, &channel, type);
    channel.takeLog();
    const int result = run(&dialog, [&](QDialog& shown) {
        verifyIdle(shown);
        QVERIFY(okButton(shown)->isVisible());
        QVERIFY(cancelButton(shown)->isVisible());
        // Longer than the dialog waits in its other mode.
        QTimer::singleShot(150, &shown, [&] { cancelButton(shown)->click(); });
    });
    QCOMPARE(result, int(QDialog::Rejected));
    QCOMPARE(channel.log(), QStringList());
}

struct WayOut
{
    const char* name;
    Act leave;
};

static QList<WayOut> waysOut()
{
    return {{"by Cancel",
             [](QDialog& dialog) {
                 cancelButton(dialog)->click();
             }},
            {"by Escape",
             [](QDialog& dialog) {
                 QTest::keyClick(&dialog, Qt::Key_Escape);
             }},
            {"by the window's close button",
             [](QDialog& dialog) {
                 dialog.close();
             }},
            {"by the dialog's own operation", [](QDialog& dialog) {
                 dialog.reject();
             }}};
}

void TestSearchHardwareDlg::canBeLeftBeforeTheSearch_data()
{
    QTest::addColumn<Act>("leave");
    for (const WayOut& way : waysOut())
        QTest::newRow(way.name) << way.leave;
}

void TestSearchHardwareDlg::canBeLeftBeforeTheSearch()
{
    QFETCH(const Act, leave);
    ScriptedChannel channel;
    SearchHardwareDlg dialog(nullptr, &channel, BY_USER);
    channel.takeLog();
    QCOMPARE(run(&dialog, leave), int(QDialog::Rejected));
    QCOMPARE(channel.log(), QStringList());
    QVERIFY(!dialog.isVisible());
}

/// Notes a moment among the calls of the channel. Timers that are armed one after the other fire by
/// their times however slow the machine is, so the order tells whether a call came before.
static void note(QStringList* order, const char* moment, int inMs, QObject* context)
{
    QTimer::singleShot(inMs, context, [=] { *order += QLatin1String(moment); });
}

static QStringList logOfSearch(const QString& report)
{
    return {QStringLiteral("prepare_reply 1 15000 0"),
            QStringLiteral(R"(send_command "vornix2 reinit")"), QStringLiteral("poll_reply 3"),
            QStringLiteral(R"(post_message standard VORNIX3 1 "%1")").arg(report)};
}

void TestSearchHardwareDlg::searchesOnTheUsersWord_data()
{
    QTest::addColumn<Act>("confirm");
    QTest::newRow("by OK") << Act([](QDialog& dialog) { okButton(dialog)->click(); });
    QTest::newRow("by Enter") << Act(
        [](QDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Return); });
}

void TestSearchHardwareDlg::searchesOnTheUsersWord()
{
    QFETCH(const Act, confirm);
    ScriptedChannel channel;
    SearchHardwareDlg dialog(nullptr, &channel, BY_USER);
    channel.takeLog();
    QStringList order;
    channel.setHook([&](const QString& call) {
        order += call;
        if (call.startsWith(QLatin1String("send_command")))
            note(&order, "950 ms later", 950, &dialog);
    });
    const int result = run(&dialog, [&](QDialog& shown) {
        confirm(shown);
        verifySearching(shown);
        QCOMPARE(channel.log(), logOfSearch(DONE).mid(0, 2));
    });
    QCOMPARE(result, int(QDialog::Accepted));
    // Nobody waits for the reply before the timer fires.
    QStringList expected = logOfSearch(DONE);
    expected.insert(2, QStringLiteral("950 ms later"));
    QCOMPARE(order, expected);
    QCOMPARE(dialog.cursor().shape(), Qt::ArrowCursor);
}

/// Has @p act done in the first moment of an event loop.
static void soon(QObject* context, const std::function<void()>& act)
{
    QMetaObject::invokeMethod(context, act, Qt::QueuedConnection);
}

void TestSearchHardwareDlg::searchesByItself()
{
    ScriptedChannel channel;
    SearchHardwareDlg dialog(nullptr, &channel, BY_ITSELF);
    channel.takeLog();
    QStringList order;
    channel.setHook([&](const QString& call) { order += call; });
    note(&order, "90 ms after the call", 90, &dialog);
    soon(&dialog, [&] {
        note(&order, "200 ms after the opening", 200, &dialog);
        verifyIdle(dialog);
        QVERIFY(dialog.isVisible());
        QVERIFY(!okButton(dialog)->isVisible());
        QVERIFY(!cancelButton(dialog)->isVisible());
        QTimer::singleShot(200, &dialog, [&] { verifySearching(dialog); });
    });
    QCOMPARE(run(&dialog, [](QDialog&) {}), int(QDialog::Accepted));
    QStringList expected = logOfSearch(DONE);
    expected.insert(2, QStringLiteral("200 ms after the opening"));
    expected.prepend(QStringLiteral("90 ms after the call"));
    QCOMPARE(order, expected);
}

void TestSearchHardwareDlg::canBeLeftBeforeItSearchesByItself()
{
    ScriptedChannel channel;
    {
        SearchHardwareDlg dialog(nullptr, &channel, BY_ITSELF);
        channel.takeLog();
        soon(&dialog, [&] { QTest::keyClick(&dialog, Qt::Key_Escape); });
        QCOMPARE(dialog.update_and_exec(), int(QDialog::Rejected));
    }
    QTest::qWait(150); // the search that was due goes with the dialog
    QCOMPARE(channel.log(), QStringList());
}

void TestSearchHardwareDlg::cannotBeLeftDuringTheSearch()
{
    ScriptedChannel channel;
    SearchHardwareDlg dialog(nullptr, &channel, BY_USER);
    channel.takeLog();
    const int result = run(&dialog, [&](QDialog& shown) {
        okButton(shown)->click();
        QStringList left;
        for (const WayOut& way : waysOut()) {
            way.leave(shown);
            if (!shown.isVisible())
                left += QString::fromLatin1(way.name);
        }
        QCOMPARE(left, QStringList());
        // Nor does another search begin.
        QTest::keyClick(&shown, Qt::Key_Return);
        okButton(shown)->click();
        verifySearching(shown);
    });
    QCOMPARE(result, int(QDialog::Accepted));
    QCOMPARE(channel.log(), logOfSearch(DONE));
}

void TestSearchHardwareDlg::startsAnewEachTime()
{
    ScriptedChannel channel;
    SearchHardwareDlg dialog(nullptr, &channel, BY_USER);
    pressOk(dialog);
    lookForReply(dialog);
    channel.takeLog();
    QCOMPARE(run(&dialog,
                 [](QDialog& shown) {
                     verifyIdle(shown);
                     cancelButton(shown)->click();
                 }),
             int(QDialog::Rejected));
    QCOMPARE(channel.log(), QStringList());
}

// ---- The reply

void TestSearchHardwareDlg::reportsTheReply_data()
{
    QTest::addColumn<ScriptedAnswers>("answer");
    QTest::addColumn<bool>("arrives");
    QTest::addColumn<QString>("report");

    const auto row = [](const char* name, const ScriptedAnswers& answer, bool arrives,
                        const QString& report) {
        QTest::newRow(name) << answer << arrives << report;
    };
    const auto reply = [](const QByteArray& value) {
        return ScriptedAnswers().reply(value);
    };
    row("a confirmation", reply("vornix2 ok"), true, DONE);
    row("a confirmation of a command that seemed to fail", ScriptedAnswers().fail("vornix2 ok"),
        true, DONE);
    row("a confirmation that comes too late", reply("vornix2 ok"), false, FAILED);
    row("an empty reply", reply(""), true, FAILED);
    row("a reply that is not delivered", ScriptedAnswers().succeed(), true, FAILED);
    row("an error", reply("vornix2 err"), true, FAILED);
    row("a blank behind the confirmation", reply("vornix2 ok "), true, FAILED);
    row("a line end behind the confirmation", reply("vornix2 ok\n"), true, FAILED);
    row("more behind the confirmation", reply("vornix2 okay"), true, FAILED);
    row("a part of the confirmation", reply("vornix2 o"), true, FAILED);
    row("another case", reply("Vornix2 ok"), true, FAILED);
    row("quotes", reply("\"vornix2 ok\""), true, FAILED);
    row("200 bytes without an end",
        ScriptedAnswers().replyUnterminated(QByteArray("vornix2 ok").leftJustified(200, '\xE4')),
        true, FAILED);
}

void TestSearchHardwareDlg::reportsTheReply()
{
    QFETCH(const ScriptedAnswers, answer);
    QFETCH(const bool, arrives);
    QFETCH(const QString, report);
    ScriptedChannel channel;
    channel.on("vornix2 reinit") = answer;
    if (!arrives)
        channel.onPoll().fail();
    SearchHardwareDlg dialog(nullptr, &channel, BY_USER);
    channel.takeLog();
    pressOk(dialog);
    lookForReply(dialog);
    QCOMPARE(channel.log(), logOfSearch(report));
    QCOMPARE(dialog.cursor().shape(), Qt::ArrowCursor);
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
}

// A host may have written the reply and still say that it did not arrive.
void TestSearchHardwareDlg::judgesTheTextAlone()
{
    ScriptedChannel channel;
    channel.onPoll().fail();
    SearchHardwareDlg dialog(nullptr, &channel, BY_USER);
    channel.takeLog();
    pressOk(dialog);
    std::strcpy(m_res(dialog), "vornix2 ok");
    lookForReply(dialog);
    QCOMPARE(channel.log(), logOfSearch(DONE));
}

void TestSearchHardwareDlg::forgetsTheReplyOfAnEarlierSearch()
{
    ScriptedChannel channel;
    channel.onPoll().succeed().fail();
    SearchHardwareDlg dialog(nullptr, &channel, BY_USER);
    pressOk(dialog);
    lookForReply(dialog);
    QCOMPARE(channel.messagesTo("standard"), QStringList{DONE});
    pressOk(dialog);
    lookForReply(dialog);
    QCOMPARE(channel.messagesTo("standard"), (QStringList{DONE, FAILED}));
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
}

ZAN_WIDGET_TEST_MAIN(TestSearchHardwareDlg)

#include "tst_searchhardwaredlg.moc"
