#include "exposedviewer.h"

#include <comparing.h>
#include <modaldriver.h>
#include <programfolder.h>
#include <widgettestmain.h>

#include <BackendVersions>

#include <QBitmap>
#include <QHBoxLayout>
#include <QLabel>
#include <QMetaMethod>
#include <QPushButton>
#include <QScopeGuard>
#include <QSizeGrip>
#include <QTextEdit>
#include <QVBoxLayout>

/// The window "New Features": its form, its logo, the frontend's version, and how it is used.
class TestNewFeatureDialog : public QObject
{
    Q_OBJECT

private slots:
    void hasTheFormsDialog();
    void hasTheFormsHead();
    void hasTheFormsView();
    void hasTheFormsFoot();
    void keepsAnObjectNameThatItHas();
    void declaresItsSlotsInOrder();
    void shipsFourLogos_data();
    void shipsFourLogos();
    void choosesTheLogoByThePalette_data();
    void choosesTheLogoByThePalette();
    void takesTheHostsWordOnTheTheme();
    void changesTheLogoWhileItIsOpen();
    void takesTheFrontendsVersion_data();
    void takesTheFrontendsVersion();
    void opensOrStaysAway_data();
    void opensOrStaysAway();
    void showsMoreOnRequest();
    void findsNotesThatComeAndGo();
    void endsWithItsResult_data();
    void endsWithItsResult();
};

namespace {

const VersionInfo EARLIER(7, 7, 7);

/// The viewer of a frontend of version 3.1.0 on a backend of the same version.
struct Viewer
{
    Viewer() : dialog(nullptr, &backend) { vornix2(dialog) = VersionInfo(3, 1, 0); }

    template <typename Widget>
    Widget* child(const char* name) const
    {
        return dialog.findChild<Widget*>(QLatin1String(name));
    }
    QString text() const { return child<QTextEdit>("textEdit")->toPlainText().simplified(); }
    QImage logo() const { return child<QLabel>("label_logo")->pixmap(Qt::ReturnByValue).toImage(); }

    BackendVersions backend{VersionInfo(3, 1, 0), VersionInfo(1, 23), VersionInfo(1, 0),
                            QStringLiteral("ZAN")};
    NewFeatureDialog dialog;
};

const QString NAME = QStringLiteral("NewFeatureDialog");

} // namespace

static QImage logo(bool isDarkTheme)
{
    return QPixmap(isDarkTheme ? QStringLiteral(":/orv_transparent02.png")
                               : QStringLiteral(":/orv_transparent02-brightmode.png"))
        .toImage();
}

static void deliver(const ProgramFolder& folder, const char* name, const QByteArray& text)
{
    folder.deliverNote(QString::fromLatin1(name), "<body><p>" + text + "</p></body>");
}

// ---- The form

void TestNewFeatureDialog::hasTheFormsDialog()
{
    const Viewer viewer;
    const NewFeatureDialog& dialog = viewer.dialog;
    QCOMPARE(dialog.objectName(), NAME);
    QCOMPARE(dialog.size(), QSize(570, 498));
    QCOMPARE(dialog.minimumSize(), QSize(470, 370));
    QCOMPARE(dialog.maximumSize(), QSize(10000, 10000));
    QCOMPARE(dialog.sizePolicy(), QSizePolicy(QSizePolicy::Minimum, QSizePolicy::Minimum));
    QVERIFY(dialog.isSizeGripEnabled());
    QVERIFY(dialog.isModal());
    QCOMPARE(dialog.windowTitle(), QStringLiteral("New Features"));
    QCOMPARE(dialog.whatsThis(), QStringLiteral("New features of VORNIX3"));

    const auto* layout = qobject_cast<QVBoxLayout*>(dialog.layout());
    QVERIFY(layout);
    QCOMPARE(layout->objectName(), QStringLiteral("verticalLayout"));
    QCOMPARE(layout->count(), 5);
    QCOMPARE(layout->itemAt(0)->layout()->objectName(), QStringLiteral("horizontalLayout"));
    QCOMPARE(layout->itemAt(1)->widget()->objectName(), QStringLiteral("textEdit"));
    QCOMPARE(layout->itemAt(2)->widget()->objectName(), QStringLiteral("label"));
    QCOMPARE(layout->itemAt(3)->widget()->objectName(), QStringLiteral("line"));
    QCOMPARE(layout->itemAt(4)->layout()->objectName(), QStringLiteral("horizontalLayout_2"));
}

void TestNewFeatureDialog::hasTheFormsHead()
{
    const Viewer viewer;
    const auto* head = viewer.child<QHBoxLayout>("horizontalLayout");
    QVERIFY(head);
    QCOMPARE(head->count(), 3);
    QCOMPARE(head->itemAt(0)->widget(), viewer.child<QWidget>("label_3"));
    QCOMPARE(head->itemAt(1)->widget(), viewer.child<QWidget>("label_logo"));
    QCOMPARE(head->itemAt(2)->widget(), viewer.child<QWidget>("label_2"));
    for (const char* name : {"label_3", "label_2", "label"})
        QCOMPARE(viewer.child<QLabel>(name)->text(), QString());

    const auto* logo = viewer.child<QLabel>("label_logo");
    QCOMPARE(logo->minimumSize(), QSize(182, 68));
    QCOMPARE(logo->maximumSize(), QSize(182, 68));
    QVERIFY(logo->hasScaledContents());
    QCOMPARE(logo->alignment(), Qt::AlignCenter);
}

void TestNewFeatureDialog::hasTheFormsView()
{
    const Viewer viewer;
    const auto* view = viewer.child<QTextEdit>("textEdit");
    QVERIFY(view);
    QVERIFY(view->isReadOnly());
    QVERIFY(!view->overwriteMode());
    QVERIFY(view->hasMouseTracking());
    QVERIFY(view->autoFillBackground());
    QCOMPARE(view->frameShape(), QFrame::StyledPanel);
    QCOMPARE(view->frameShadow(), QFrame::Raised);
    QCOMPARE(view->lineWidth(), 1);
    QCOMPARE(view->horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    QCOMPARE(view->textInteractionFlags(), Qt::TextSelectableByMouse | Qt::LinksAccessibleByMouse |
                                               Qt::LinksAccessibleByKeyboard);
    QCOMPARE(view->whatsThis(),
             QStringLiteral("The new features of the current version and previous versions."));
    QCOMPARE(view->documentTitle(), QStringLiteral("What's new?"));
}

void TestNewFeatureDialog::hasTheFormsFoot()
{
    const Viewer viewer;
    const auto* line = viewer.child<QFrame>("line");
    QVERIFY(line);
    QCOMPARE(line->frameShape(), QFrame::HLine);
    QCOMPARE(line->frameShadow(), QFrame::Sunken);

    const auto* foot = viewer.child<QHBoxLayout>("horizontalLayout_2");
    QVERIFY(foot);
    QCOMPARE(foot->count(), 3);
    const auto* more = viewer.child<QPushButton>("pushButton_show_more");
    const auto* exit = viewer.child<QPushButton>("pushButton_exit");
    QCOMPARE(foot->itemAt(0)->widget(), more);
    QCOMPARE(foot->itemAt(2)->widget(), exit);
    QSpacerItem* spacer = foot->itemAt(1)->spacerItem();
    QVERIFY(spacer);
    QCOMPARE(spacer->sizeHint(), QSize(40, 20));
    QCOMPARE(spacer->sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
    QCOMPARE(more->text(), QStringLiteral("&Show more"));
    QCOMPARE(exit->text(), QStringLiteral("E&xit"));
    QCOMPARE(exit->whatsThis(), QStringLiteral("Close dialog."));
}

void TestNewFeatureDialog::keepsAnObjectNameThatItHas()
{
    QDialog dialog;
    dialog.setObjectName(QStringLiteral("named"));
    Ui::NewFeatureDialog form;
    form.setupUi(&dialog);
    QCOMPARE(dialog.objectName(), QStringLiteral("named"));
}

void TestNewFeatureDialog::declaresItsSlotsInOrder()
{
    const QMetaObject& meta = NewFeatureDialog::staticMetaObject;
    QStringList methods;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        QCOMPARE(method.methodType(), QMetaMethod::Slot);
        const bool isPublic = method.access() == QMetaMethod::Public;
        methods +=
            QStringLiteral("%1 %2 %3")
                .arg(isPublic ? QStringLiteral("public") : QStringLiteral("private"),
                     QLatin1String(method.typeName()), QLatin1String(method.methodSignature()));
    }
    QCOMPARE(methods,
             (QStringList{QStringLiteral("public int update_and_exec()"),
                          QStringLiteral("public void onSendFEVersion(QString)"),
                          QStringLiteral("public void onDarkThemeEnabled(bool)"),
                          QStringLiteral("private void on_pushButton_exit_clicked()"),
                          QStringLiteral("private void on_pushButton_show_more_clicked()")}));
}

// ---- The logo

void TestNewFeatureDialog::shipsFourLogos_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QSize>("size");
    QTest::newRow("large, for dark themes")
        << QStringLiteral(":/orv_transparent.png") << QSize(640, 241);
    QTest::newRow("large, for bright themes")
        << QStringLiteral(":/orv_transparent-brightmode.png") << QSize(640, 241);
    QTest::newRow("small, for dark themes")
        << QStringLiteral(":/orv_transparent02.png") << QSize(274, 105);
    QTest::newRow("small, for bright themes")
        << QStringLiteral(":/orv_transparent02-brightmode.png") << QSize(274, 105);
}

// The share of the picture that is drawn on, and the mean lightness of that share.
static QPair<double, double> inkOf(const QImage& image)
{
    double ink = 0;
    double lightness = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor color = image.pixelColor(x, y);
            ink += color.alphaF();
            lightness += color.alphaF() * color.lightnessF();
        }
    }
    return {ink / (image.width() * image.height()), lightness / ink};
}

void TestNewFeatureDialog::shipsFourLogos()
{
    QFETCH(QString, name);
    QFETCH(QSize, size);

    const QImage image(name);
    QCOMPARE(image.size(), size);
    QVERIFY(image.hasAlphaChannel());
    const auto [share, lightness] = inkOf(image);
    QVERIFY2(share > 0.02 && share < 0.9, qPrintable(QString::number(share)));
    const bool isForBrightThemes = name.contains(QLatin1String("brightmode"));
    QVERIFY2(isForBrightThemes ? lightness < 0.5 : lightness > 0.5,
             qPrintable(QString::number(lightness)));
}

void TestNewFeatureDialog::choosesTheLogoByThePalette_data()
{
    QTest::addColumn<QColor>("window");
    QTest::addColumn<bool>("isDark");
    QTest::newRow("a black window is dark") << QColor(0, 0, 0) << true;
    QTest::newRow("a dark grey window is dark") << QColor(53, 53, 53) << true;
    QTest::newRow("a window just below the middle is dark") << QColor(127, 127, 127) << true;
    QTest::newRow("a window just above the middle is bright") << QColor(128, 128, 128) << false;
    QTest::newRow("a light grey window is bright") << QColor(239, 239, 239) << false;
    QTest::newRow("a white window is bright") << QColor(255, 255, 255) << false;
    QTest::newRow("lightness counts, not brightness") << QColor(254, 0, 0) << true;
}

void TestNewFeatureDialog::choosesTheLogoByThePalette()
{
    QFETCH(QColor, window);
    QFETCH(bool, isDark);

    const auto restore =
        qScopeGuard([before = QApplication::palette()] { QApplication::setPalette(before); });
    QPalette palette = QApplication::palette();
    palette.setColor(QPalette::Window, window);
    QApplication::setPalette(palette);
    const Viewer viewer;
    QCOMPARE(viewer.logo(), logo(isDark));

    // Only the construction looks at the palette.
    palette.setColor(QPalette::Window, isDark ? Qt::white : Qt::black);
    QApplication::setPalette(palette);
    QCOMPARE(viewer.logo(), logo(isDark));
}

void TestNewFeatureDialog::takesTheHostsWordOnTheTheme()
{
    Viewer viewer;
    for (const bool isDark : {true, false, false, true, true}) {
        viewer.dialog.onDarkThemeEnabled(isDark);
        QCOMPARE(viewer.logo(), logo(isDark));
    }
    QVERIFY(logo(true) != logo(false));
}

void TestNewFeatureDialog::changesTheLogoWhileItIsOpen()
{
    Viewer viewer;
    viewer.dialog.onDarkThemeEnabled(false);
    auto* label = viewer.child<QLabel>("label_logo");
    QImage bright;
    QImage dark;
    ModalDriver driver;
    driver.expectDialog(NAME, [&](QDialog& dialog) {
        bright = label->grab().toImage();
        viewer.dialog.onDarkThemeEnabled(true);
        dark = label->grab().toImage();
        QVERIFY(dialog.isVisible());
        dialog.reject();
    });
    viewer.dialog.update_and_exec();
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
    QCOMPARE(bright.size(), QSize(182, 68));
    QCOMPARE(dark.size(), QSize(182, 68));
    QVERIFY(bright != dark);
}

// ---- The frontend's version

void TestNewFeatureDialog::takesTheFrontendsVersion_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<VersionInfo>("version");

    const auto row = [](const char* title, const char* text, const VersionInfo& version) {
        QTest::newRow(title) << QString::fromLatin1(text) << version;
    };
    row("three numbers", "v3.1.0", VersionInfo(3, 1, 0));
    row("numbers of several digits", "v10.20.300", VersionInfo(10, 20, 300));
    row("any first character is removed", "x3.1.0", VersionInfo(3, 1, 0));
    row("a fourth number is ignored", "v3.1.2.9", VersionInfo(3, 1, 2));
    row("a pre-release behind a third dot is ignored", "v3.1.2.beta", VersionInfo(3, 1, 2));
    row("a pre-release in the third number makes it 0", "v3.1.2-beta.3", VersionInfo(3, 1, 0));
    row("a minor that is no number is 0", "v3.x.2", VersionInfo(3, 0, 2));
    row("empty numbers are 0", "v3..", VersionInfo(3, 0, 0));
    row("a major that only begins with a digit is no version", "v3x.1.2", VersionInfo());
    row("a major beyond an int is no version", "v99999999999.1.2", VersionInfo());
    row("two numbers change nothing", "v3.1", EARLIER);
    row("one number changes nothing", "v3", EARLIER);
    row("a second character that is no digit changes nothing", "va.1.2", EARLIER);
    row("a blank before the number changes nothing", "v 3.1.2", EARLIER);
    row("a sign before the number changes nothing", "v-3.1.2", EARLIER);
    row("a number without the letter changes nothing", "3.1.2", EARLIER);
    row("two letters change nothing", "vv3.1.2", EARLIER);
    row("the empty text changes nothing", "", EARLIER);
    row("the letter alone changes nothing", "v", EARLIER);
    row("another message changes nothing", "AppReadyToShutdown", EARLIER);
    row("a keyword in lower case changes nothing", "darkthemeenabled", EARLIER);
}

void TestNewFeatureDialog::takesTheFrontendsVersion()
{
    QFETCH(QString, text);
    QFETCH(VersionInfo, version);

    Viewer viewer;
    vornix2(viewer.dialog) = EARLIER;
    viewer.dialog.onSendFEVersion(text);
    QCOMPARE(vornix2(viewer.dialog), version);
}

// ---- Opening and showing more

void TestNewFeatureDialog::opensOrStaysAway_data()
{
    QTest::addColumn<bool>("isAtStart");
    QTest::addColumn<bool>("hasNotes");
    QTest::addColumn<bool>("opens");
    QTest::newRow("at start without notes it stays away") << true << false << false;
    QTest::newRow("at start with notes it opens") << true << true << true;
    QTest::newRow("by the menu without notes it opens") << false << false << true;
    QTest::newRow("by the menu with notes it opens") << false << true << true;
}

void TestNewFeatureDialog::opensOrStaysAway()
{
    QFETCH(bool, isAtStart);
    QFETCH(bool, hasNotes);
    QFETCH(bool, opens);

    const ProgramFolder folder;
    deliver(folder, "v9_0_0.html", "too new");
    if (hasNotes)
        deliver(folder, "v3_0_0.html", "text");
    Viewer viewer;
    viewer.dialog.set_trigger_at_start(isAtStart);
    ModalDriver driver;
    if (opens) {
        driver.expectDialog(NAME, [&](QDialog& dialog) {
            QCOMPARE(viewer.text(), hasNotes ? QStringLiteral("VORNIX3 v3.0.0 text")
                                             : QStringLiteral("No new feature available!"));
            dialog.reject();
        });
    }
    QCOMPARE(viewer.dialog.update_and_exec(), 0);
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
    QCOMPARE(viewer.child<QPushButton>("pushButton_show_more")->isEnabled(), hasNotes);
}

void TestNewFeatureDialog::showsMoreOnRequest()
{
    const ProgramFolder folder;
    deliver(folder, "v3_1_0.html", "new");
    deliver(folder, "v3_0_0.html", "old");
    const QString shortPage = QStringLiteral("VORNIX3 v3.1.0 new");
    const QString longPage = QStringLiteral("VORNIX3 v3.1.0 new VORNIX3 v3.0.0 old");
    Viewer viewer;
    auto* more = viewer.child<QPushButton>("pushButton_show_more");
    ModalDriver driver;
    // A second opening starts with the short page again.
    for (int openings = 0; openings < 2; ++openings) {
        driver.expectDialog(NAME, [&](QDialog& dialog) {
            QCOMPARE(viewer.text(), shortPage);
            more->click();
            QCOMPARE(viewer.text(), longPage);
            QVERIFY(dialog.isVisible());
            QVERIFY(more->isEnabled());
            more->click();
            QCOMPARE(viewer.text(), longPage);
            viewer.child<QPushButton>("pushButton_exit")->click();
        });
        QCOMPARE(viewer.dialog.update_and_exec(), 0);
    }
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
}

void TestNewFeatureDialog::findsNotesThatComeAndGo()
{
    const ProgramFolder folder;
    deliver(folder, "v3_0_0.html", "old");
    Viewer viewer;
    auto* more = viewer.child<QPushButton>("pushButton_show_more");
    ModalDriver driver;
    driver.expectDialog(NAME, [&](QDialog& dialog) {
        QCOMPARE(viewer.text(), QStringLiteral("VORNIX3 v3.0.0 old"));
        deliver(folder, "v3_1_0.html", "new");
        more->click();
        QCOMPARE(viewer.text(), QStringLiteral("VORNIX3 v3.1.0 new VORNIX3 v3.0.0 old"));
        for (const char* name : {"v3_1_0.html", "v3_0_0.html"})
            QFile::remove(QCoreApplication::applicationDirPath() + QLatin1String("/whats_new/") +
                          QLatin1String(name));
        more->click();
        QCOMPARE(viewer.text(), QStringLiteral("No new feature available!"));
        QVERIFY(more->isEnabled());
        dialog.reject();
    });
    viewer.dialog.update_and_exec();
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
}

void TestNewFeatureDialog::endsWithItsResult_data()
{
    QTest::addColumn<QByteArray>("way");
    QTest::addColumn<int>("result");
    QTest::newRow("its exit button rejects it") << QByteArray("exit") << int(QDialog::Rejected);
    QTest::newRow("Escape rejects it") << QByteArray("escape") << int(QDialog::Rejected);
    QTest::newRow("its window is closed") << QByteArray("close") << int(QDialog::Rejected);
    QTest::newRow("it is accepted from outside") << QByteArray("accept") << int(QDialog::Accepted);
}

void TestNewFeatureDialog::endsWithItsResult()
{
    QFETCH(QByteArray, way);
    QFETCH(int, result);

    Viewer viewer;
    ModalDriver driver;
    driver.expectDialog(NAME, [&](QDialog& dialog) {
        if (way == "exit")
            viewer.child<QPushButton>("pushButton_exit")->click();
        else if (way == "escape")
            QTest::keyClick(&dialog, Qt::Key_Escape);
        else if (way == "close")
            dialog.close();
        else
            dialog.accept();
    });
    QCOMPARE(viewer.dialog.update_and_exec(), result);
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
}

ZAN_WIDGET_TEST_MAIN(TestNewFeatureDialog)

#include "tst_newfeaturedialog.moc"
