#include "exposedviewer.h"

#include <markingtranslator.h>
#include <programfolder.h>
#include <widgettestmain.h>

#include <BackendVersions>

#include <QTextCodec>
#include <QTextEdit>

/// The page that the viewer makes of the notes.
class TestNotesPage : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void saysThatThereIsNothing_data();
    void saysThatThereIsNothing();
    void showsOneNote();
    void showsManyNotes();
    void passesOverUnreadableNotes_data();
    void passesOverUnreadableNotes();
    void marksWhatTheBackendIsTooOldFor();
    void takesTheInsideOfTheBody_data();
    void takesTheInsideOfTheBody();
    void namesTheVersion_data();
    void namesTheVersion();
    void readsWithTheCodecOfTheLocale_data();
    void readsWithTheCodecOfTheLocale();
    void showsHundredsOfNotes();
    void translatesItsFrameAndItsRedTexts_data();
    void translatesItsFrameAndItsRedTexts();
};

namespace {

/// The viewer of a frontend of version 3.1.0 on a backend of version 3.0.0.
class Viewer
{
public:
    Viewer() : m_dialog(nullptr, &m_backend) { vornix2(m_dialog) = VersionInfo(3, 1, 0); }

    /// What the view holds after the page has been made.
    QString page(const QStringList& files, bool showsAll)
    {
        // Its result is always false.
        if (load_html(m_dialog, files, showsAll))
            return QStringLiteral("true");
        return m_dialog.findChild<QTextEdit*>(QStringLiteral("textEdit"))->toHtml();
    }

private:
    BackendVersions m_backend{VersionInfo(3, 0, 0), VersionInfo(1, 23), VersionInfo(1, 0),
                              QStringLiteral("ZAN")};
    NewFeatureDialog m_dialog;
};

const QString NOTHING = QStringLiteral("<html><body><br><h4><font color=\"red\">No new feature "
                                       "available!</font></h4></body></html>");
const QString NOT_AVAILABLE =
    QStringLiteral("<h4><font color=\"red\">The features are only available when the Controller is "
                   "up-to-date.</font></h4>");

} // namespace

/// What a view of its own holds after it was given this page.
static QString shown(const QString& content)
{
    QTextEdit view;
    view.setHtml(content);
    return view.toHtml();
}

static QString page(const QString& body)
{
    return shown(QStringLiteral("<html><body>") + body + QStringLiteral("</body></html>"));
}

static void deliver(const ProgramFolder& folder, const char* name, const QByteArray& body)
{
    folder.deliverNote(QString::fromLatin1(name),
                       "<html><head><title>not shown</title></head>\n<body>" + body +
                           "</body>\n</html>\n");
}

static QStringList files(std::initializer_list<const char*> names)
{
    QStringList list;
    for (const char* name : names)
        list += QString::fromLatin1(name);
    return list;
}

// The same on every machine.
void TestNotesPage::init()
{
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
}

void TestNotesPage::cleanup()
{
    QTextCodec::setCodecForLocale(nullptr);
}

void TestNotesPage::saysThatThereIsNothing_data()
{
    QTest::addColumn<bool>("showsAll");
    QTest::newRow("on the short page") << false;
    QTest::newRow("on the long page") << true;
}

void TestNotesPage::saysThatThereIsNothing()
{
    QFETCH(bool, showsAll);

    Viewer viewer;
    QCOMPARE(viewer.page({}, showsAll), shown(NOTHING));
}

void TestNotesPage::showsOneNote()
{
    const ProgramFolder folder;
    deliver(folder, "v2_9_0.html", "<p>text</p>");
    Viewer viewer;
    const QString note = QStringLiteral("<h2>VORNIX3 v2.9.0</h2><p>text</p>");
    QCOMPARE(viewer.page(files({"v2_9_0.html"}), false), page(note));
    QCOMPARE(viewer.page(files({"v2_9_0.html"}), true), page(note + QStringLiteral("<hr>")));
    QVERIFY(page(note) != page(note + QStringLiteral("<hr>")));
}

void TestNotesPage::showsManyNotes()
{
    const ProgramFolder folder;
    deliver(folder, "v3_0_0.html", "<p>three</p>");
    deliver(folder, "v2_9_0.html", "<ul><li>two</li></ul>");
    deliver(folder, "v1_0_0.html", "<p><a href=\"http://localhost/\">one</a></p>");
    const QStringList list = files({"v3_0_0.html", "v2_9_0.html", "v1_0_0.html"});

    Viewer viewer;
    const QString newest = QStringLiteral("<h2>VORNIX3 v3.0.0</h2><p>three</p>");
    QCOMPARE(viewer.page(list, false), page(newest));
    QCOMPARE(viewer.page(list, true),
             page(newest + QStringLiteral("<hr><h2>VORNIX3 v2.9.0</h2><ul><li>two</li></ul><hr>"
                                          "<h2>VORNIX3 v1.0.0</h2><p>"
                                          "<a href=\"http://localhost/\">one</a></p><hr>")));
    // Each page replaces the one before it.
    QCOMPARE(viewer.page(list, false), page(newest));
}

void TestNotesPage::passesOverUnreadableNotes_data()
{
    QTest::addColumn<QStringList>("list");
    QTest::addColumn<QString>("shortBody");
    QTest::addColumn<QString>("longBody");

    const QString two = QStringLiteral("<h2>VORNIX3 v2.0.0</h2><p>two</p>");
    const QString one = QStringLiteral("<h2>VORNIX3 v1.0.0</h2><p>one</p>");
    const QString rule = QStringLiteral("<hr>");
    QTest::newRow("the newest cannot be read, so the next is shown")
        << files({"v2_9_0.html", "v2_0_0.html", "v1_0_0.html"}) << two << two + rule + one + rule;
    QTest::newRow("the two newest cannot be read")
        << files({"v2_9_0.html", "v2_8_0.html", "v1_0_0.html"}) << one << one + rule;
    QTest::newRow("one in the middle cannot be read")
        << files({"v2_0_0.html", "v1_9_0.html", "v1_0_0.html"}) << two << two + rule + one + rule;
    QTest::newRow("none can be read")
        << files({"v2_9_0.html", "v2_8_0.html"}) << QString() << QString();
    QTest::newRow("a folder is no note")
        << files({"v2_5_0.html", "v1_0_0.html"}) << one << one + rule;
    QTest::newRow("an ending in upper case is passed over")
        << files({"v2_6_0.HTML", "v1_0_0.html"}) << one << one + rule;
    QTest::newRow("an ending that is partly in upper case is passed over")
        << files({"v2_7_0.Html"}) << QString() << QString();
}

void TestNotesPage::passesOverUnreadableNotes()
{
    QFETCH(QStringList, list);
    QFETCH(QString, shortBody);
    QFETCH(QString, longBody);

    const ProgramFolder folder;
    deliver(folder, "v1_0_0.html", "<p>one</p>");
    deliver(folder, "v2_0_0.html", "<p>two</p>");
    deliver(folder, "v2_5_0.html/inside.html", "<p>folder</p>");
    deliver(folder, "v2_6_0.HTML", "<p>upper case</p>");
    deliver(folder, "v2_7_0.Html", "<p>mixed case</p>");
    Viewer viewer;
    QCOMPARE(viewer.page(list, false), page(shortBody));
    QCOMPARE(viewer.page(list, true), page(longBody));
}

void TestNotesPage::marksWhatTheBackendIsTooOldFor()
{
    const ProgramFolder folder;
    deliver(folder, "v3_0_1.html", "<p>new</p>");
    deliver(folder, "v3_0_0.html", "<p>old</p>");
    const QStringList list = files({"v3_0_1.html", "v3_0_0.html"});

    Viewer viewer;
    const QString newer = QStringLiteral("<h2>VORNIX3 v3.0.1</h2><p>new</p>") + NOT_AVAILABLE;
    const QString older = QStringLiteral("<h2>VORNIX3 v3.0.0</h2><p>old</p>");
    const QString rule = QStringLiteral("<hr>");
    QCOMPARE(viewer.page(list, false), page(newer));
    QCOMPARE(viewer.page(list, true), page(newer + rule + older + rule));
}

void TestNotesPage::takesTheInsideOfTheBody_data()
{
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<QString>("part");

    const auto row = [](const char* title, const char* document, const char* part) {
        QTest::newRow(title) << QByteArray(document) << QString::fromLatin1(part);
    };
    row("the head is left out",
        "<html><head><title>T</title><style>p { color: blue; }</style></head><body><p>text</p>"
        "</body></html>",
        "<p>text</p>");
    row("what follows the body is left out", "<body>text</body>more", "text");
    row("without a beginning the text starts at its sixth character", "12345<p>text</p></body>more",
        "<p>text</p>");
    row("without an end the rest is taken", "<head></head><body><p>text</p></html>",
        "<p>text</p></html>");
    row("without both the rest from the sixth character is taken", "12345text", "text");
    row("a body with attributes is no beginning", "12345<body class=\"x\">text</body>",
        "<body class=\"x\">text");
    row("a body in upper case is no beginning", "12345<BODY>text</body>", "<BODY>text");
    row("an end in upper case is no end", "<body>text</BODY></html>", "text</BODY></html>");
    row("the first beginning counts", "<body>one<body>two</body>", "one<body>two");
    row("the first end counts", "<body>one</body>two</body>", "one");
    row("an end before the beginning is none", "</body><body>text", "text");
    row("an empty body", "<html><body></body></html>", "");
    row("an empty file", "", "");
    row("a file that is shorter than the cut", "1234", "");
    row("a beginning alone", "<body>", "");
    row("percent signs stay", "<body>100 %1 %2 %%1</body>", "100 %1 %2 %%1");
}

void TestNotesPage::takesTheInsideOfTheBody()
{
    QFETCH(QByteArray, document);
    QFETCH(QString, part);

    const ProgramFolder folder;
    folder.deliverNote(QStringLiteral("v1_0_0.html"), document);
    Viewer viewer;
    QCOMPARE(viewer.page(files({"v1_0_0.html"}), true),
             page(QStringLiteral("<h2>VORNIX3 v1.0.0</h2>") + part + QStringLiteral("<hr>")));
}

void TestNotesPage::namesTheVersion_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("heading");

    const auto row = [](const char* title, const char* name, const char* heading) {
        QTest::newRow(title) << QString::fromLatin1(name) << QString::fromLatin1(heading);
    };
    row("three numbers", "v2_9_0.html", "VORNIX3 v2.9.0");
    row("numbers as they are spelled", "v02_009_00.html", "VORNIX3 v02.009.00");
    row("a fourth part is shown too", "v2_9_0_draft.html", "VORNIX3 v2.9.0.draft");
    row("a part that is no number is shown too", "v2_x_0.html", "VORNIX3 v2.x.0");
    row("a capital V is replaced", "V2_9_0.html", "VORNIX3 v2.9.0");
    row("the name ends at its first dot", "v2_9_0.draft.html", "VORNIX3 v2.9.0");
}

void TestNotesPage::namesTheVersion()
{
    QFETCH(QString, name);
    QFETCH(QString, heading);

    const ProgramFolder folder;
    folder.deliverNote(name, "<body>text</body>");
    Viewer viewer;
    QCOMPARE(viewer.page({name}, false), page(QStringLiteral("<h2>%1</h2>text").arg(heading)));
}

void TestNotesPage::readsWithTheCodecOfTheLocale_data()
{
    QTest::addColumn<QByteArray>("codec");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("umlauts in UTF-8") << QByteArray("UTF-8") << QByteArray("f\xC3\xBCr");
    QTest::newRow("umlauts in Latin-1") << QByteArray("ISO-8859-1") << QByteArray("f\xFCr");
}

void TestNotesPage::readsWithTheCodecOfTheLocale()
{
    QFETCH(QByteArray, codec);
    QFETCH(QByteArray, text);

    QTextCodec::setCodecForLocale(QTextCodec::codecForName(codec));
    const ProgramFolder folder;
    deliver(folder, "v1_0_0.html", text);
    Viewer viewer;
    QCOMPARE(viewer.page(files({"v1_0_0.html"}), false),
             page(QString::fromUtf8("<h2>VORNIX3 v1.0.0</h2>f\xC3\xBCr")));
}

void TestNotesPage::showsHundredsOfNotes()
{
    const ProgramFolder folder;
    QStringList list;
    QString body;
    for (int patch = 300; patch > 0; --patch) {
        list += QStringLiteral("v1_0_%1.html").arg(patch);
        deliver(folder, list.last().toLatin1().constData(), "<p>text</p>");
        body += QStringLiteral("<h2>VORNIX3 v1.0.%1</h2><p>text</p><hr>").arg(patch);
    }
    Viewer viewer;
    QCOMPARE(viewer.page(list, true), page(body));
}

void TestNotesPage::translatesItsFrameAndItsRedTexts_data()
{
    QTest::addColumn<QStringList>("list");
    QTest::addColumn<QString>("body");

    // The frame of a red text is asked for as well as the text in it.
    QTest::newRow("where there is nothing to show")
        << QStringList() << "<br>* <h4><font color=\"red\">* No new feature available!</font></h4>";
    QTest::newRow("where the backend is too old for a note")
        << files({"v3_0_1.html"})
        << "<h2>VORNIX3 v3.0.1</h2><p>note</p>* <h4><font color=\"red\">* The features are only "
           "available when the Controller is up-to-date.</font></h4>";
    QTest::newRow("but neither the heading nor the text of a note")
        << files({"v3_0_0.html"}) << "<h2>VORNIX3 v3.0.0</h2><p>note</p>";
}

void TestNotesPage::translatesItsFrameAndItsRedTexts()
{
    QFETCH(QStringList, list);
    QFETCH(QString, body);

    const ProgramFolder folder;
    for (const QString& name : qAsConst(list))
        deliver(folder, name.toLatin1().constData(), "<p>note</p>");
    const MarkingTranslator translator("NewFeatureDialog");
    Viewer viewer;
    const QString begin = QStringLiteral("<html><body>");
    const QString end = QStringLiteral("</body></html>");
    const QString content = viewer.page(list, false);
    QCOMPARE(content,
             shown(MarkingTranslator::marked(begin) + body + MarkingTranslator::marked(end)));
    // Each mark shows in the page.
    QCOMPARE(content.count(QLatin1Char('*')), body.count(QLatin1Char('*')) + 2);
}

ZAN_WIDGET_TEST_MAIN(TestNotesPage)

#include "tst_notespage.moc"
