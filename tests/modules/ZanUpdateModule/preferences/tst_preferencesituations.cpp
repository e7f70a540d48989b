#include "otheruser.h"
#include "writtenpreferences.h"

#include <ZanUpdateModule2GSettingsdlg.h>
#include <modaldriver.h>
#include <modulefixture.h>
#include <newfeaturedialog.h>
#include <privateaccess.h>
#include <widgettestmain.h>

ZAN_EXPOSE(bShowNewFeatures, &ZanUpdateModule2GSettingsdlg::bShowNewFeatures);

/// What becomes of the preferences from the start of the program to its exit.
class TestPreferenceSituations : public QObject
{
    Q_OBJECT

private slots:
    void lastsFromStartToExit_data();
    void lastsFromStartToExit();
    void waitsForASystemThatIsUpToDate();
    void showsTheNotesOnce();
};

namespace {

const QString VIEWER = QStringLiteral("NewFeatureDialog");
const QString UPDATE_DIALOG = QStringLiteral("ZanUpdateModule2GSettingsdlgClass");

/// One start of the program with its exit.
struct Course
{
    bool isUpdateDue = false;
    bool hasNotes = true;
    bool isFileReadable = true;

    bool flagAfterLoading = false;
    QStringList windows;
    int messages = 0; ///< to the host's log
    QByteArray written = NOT_SHOWN_AT_START;
};

} // namespace

Q_DECLARE_METATYPE(Course)

static Course upToDate(bool flag)
{
    Course course;
    course.flagAfterLoading = flag;
    if (flag)
        course.windows = QStringList{VIEWER};
    return course;
}

static Course updateDue(bool flag)
{
    Course course;
    course.isUpdateDue = true;
    course.flagAfterLoading = flag;
    course.windows = QStringList{UPDATE_DIALOG};
    course.written = flag ? SHOWN_AT_START : NOT_SHOWN_AT_START;
    return course;
}

static Course withMessage(Course course)
{
    course.messages = 1;
    return course;
}

void TestPreferenceSituations::lastsFromStartToExit_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<Course>("course");

    const QByteArray none;
    const QByteArray broken = "<VORNIX><WHATISNEW SHOW_AT_START=\"true\"/>";
    const QByteArray foreign = "<html><WHATISNEW SHOW_AT_START=\"true\"/></html>";
    QTest::newRow("no file, up to date: shown and cleared") << none << upToDate(true);
    QTest::newRow("no file, update due: kept") << none << updateDue(true);
    QTest::newRow("the flag, up to date: shown and cleared") << SHOWN_AT_START << upToDate(true);
    QTest::newRow("the flag, update due: kept") << SHOWN_AT_START << updateDue(true);
    QTest::newRow("no flag, up to date: nothing") << NOT_SHOWN_AT_START << upToDate(false);
    QTest::newRow("no flag, update due: nothing") << NOT_SHOWN_AT_START << updateDue(false);
    QTest::newRow("a broken file, up to date: a message") << broken << withMessage(upToDate(false));
    QTest::newRow("a broken file, update due: a message")
        << broken << withMessage(updateDue(false));
    QTest::newRow("a foreign file, up to date: a message")
        << foreign << withMessage(upToDate(false));
    QTest::newRow("a foreign file, update due: a message")
        << foreign << withMessage(updateDue(false));

    Course course = withMessage(upToDate(false));
    course.isFileReadable = false;
    QTest::newRow("an unreadable file: a message") << SHOWN_AT_START << course;
    course = upToDate(true);
    course.hasNotes = false;
    course.windows.clear();
    QTest::newRow("no file and no notes: cleared without being shown") << none << course;
}

// Runs the plug-in through its start; the windows that open are closed at once.
static void start(ModuleFixture* fixture, const Course& course)
{
    fixture->giveParameters();
    ModalDriver driver;
    for (const QString& window : course.windows)
        driver.expectDialog(window, [](QDialog& dialog) { dialog.reject(); });
    fixture->module->get_gui_elements();
    QCOMPARE(bShowNewFeatures(fixture->dialog()), course.flagAfterLoading);
    fixture->channel.post_message("UpdateModule", "Main_Window", 1, "v3.1.0");
    QVERIFY(waitForSingleShots());
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
    QCOMPARE(fixture->channel.messagesTo(QStringLiteral("standard")).size(), course.messages);
}

static void restart(ModuleFixture* fixture)
{
    fixture->module->about_to_exit_module();
    fixture->module->exit_module();
}

static constexpr QFile::Permissions OWNER_ONLY = QFile::ReadOwner | QFile::WriteOwner;

void TestPreferenceSituations::lastsFromStartToExit()
{
    QFETCH(QByteArray, file);
    QFETCH(Course, course);

    ModuleFixture fixture;
    fixture.deliverControllerImage(course.isUpdateDue);
    if (course.hasNotes)
        fixture.deliverNotes();
    if (!file.isNull())
        writeFixture(fixture.preferencesFile(), file);
    if (course.isFileReadable) {
        start(&fixture, course);
    } else {
        QFile::setPermissions(fixture.preferencesFile(), {});
        {
            const OtherUser user;
            start(&fixture, course);
        }
        QFile::setPermissions(fixture.preferencesFile(), OWNER_ONLY);
    }
    if (QTest::currentTestFailed())
        return;

    QCOMPARE(fixture.preferences(), file);
    fixture.module->exit_module();
    QCOMPARE(fixture.preferences(), course.written);
}

void TestPreferenceSituations::waitsForASystemThatIsUpToDate()
{
    ModuleFixture fixture;
    fixture.deliverNotes();
    fixture.deliverControllerImage(true);
    for (int starts = 0; starts < 2; ++starts) {
        start(&fixture, updateDue(true));
        restart(&fixture);
        QCOMPARE(fixture.preferences(), SHOWN_AT_START);
    }
    fixture.deliverControllerImage(false);
    start(&fixture, upToDate(true));
    restart(&fixture);
    QCOMPARE(fixture.preferences(), NOT_SHOWN_AT_START);
}

void TestPreferenceSituations::showsTheNotesOnce()
{
    ModuleFixture fixture;
    fixture.deliverNotes();
    start(&fixture, upToDate(true));
    restart(&fixture);
    for (int starts = 0; starts < 2; ++starts) {
        start(&fixture, upToDate(false));
        restart(&fixture);
        QCOMPARE(fixture.preferences(), NOT_SHOWN_AT_START);
    }
}

ZAN_WIDGET_TEST_MAIN(TestPreferenceSituations)

#include "tst_preferencesituations.moc"
