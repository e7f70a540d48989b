#include "otheruser.h"
#include "writtenpreferences.h"

#include <ZanUpdateModule2GSettingsdlg.h>
#include <fixturefiles.h>
#include <newfeaturedialog.h>
#include <privateaccess.h>
#include <scriptedchannel.h>
#include <widgettestmain.h>

#include <BackendVersions>

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>

#include <memory>

#include <sys/resource.h>

ZAN_EXPOSE(bShowNewFeatures, &ZanUpdateModule2GSettingsdlg::bShowNewFeatures);
ZAN_EXPOSE(sConfigDir, &ZanUpdateModule2GSettingsdlg::sConfigDir);

/// The preferences file, read as the update dialog comes and written as it goes.
class TestPreferences : public QObject
{
    Q_OBJECT

private slots:
    void liesBelowTheUsersHome();
    void reads_data();
    void reads();
    void reportsWhatItCannotRead_data();
    void reportsWhatItCannotRead();
    void reportsEveryTruncation();
    void reportsAFileWithoutPermission();
    void survivesHostileFiles_data();
    void survivesHostileFiles();
    void writes_data();
    void writes();
    void replacesAFile_data();
    void replacesAFile();
    void keepsTheFlagFromStartToStart();
    void makesTheDirectoryAtTheFirstExit();
    void keepsEachVersionsPreferences();
    void reportsADirectoryThatCannotBeMade_data();
    void reportsADirectoryThatCannotBeMade();
    void reportsAHomeWithoutPermission();
    void reportsADirectoryInPlaceOfTheFile();
    void keepsAFileThatItMayNotWrite();
};

namespace {

/// Of a folder, for everyone.
constexpr QFile::Permissions READ_ONLY = QFile::ReadOwner | QFile::ExeOwner | QFile::ReadGroup |
                                         QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther;

/// A home folder and the dialog that is started and stopped in it.
class Home
{
public:
    Home() : m_viewer(nullptr, &m_backend)
    {
        qputenv("HOME", QFile::encodeName(m_home.path()));
        // For OtherUser.
        QFile::setPermissions(m_home.path(), PERMISSIONS);
    }

    ~Home()
    {
        stop();
        QFile::setPermissions(m_home.path(), PERMISSIONS);
    }

    QString path() const { return m_home.path(); }
    QString directory() const
    {
        return m_home.path(QStringLiteral(".ORV/VORNIX3/modules/zanupdate/") + version +
                           QLatin1String("/config"));
    }
    QString file() const { return directory() + QLatin1String("/zanupdate-preferences.xml"); }

    void write(const QByteArray& bytes) const { writeFixture(file(), bytes); }
    QByteArray read() const
    {
        QFile preferences(file());
        return preferences.open(QIODevice::ReadOnly) ? preferences.readAll() : QByteArray();
    }

    void start()
    {
        dialog = std::make_unique<ZanUpdateModule2GSettingsdlg>(&channel, nullptr, &m_backend,
                                                                version, &m_viewer);
    }
    void stop() { dialog.reset(); }

private:
    static constexpr QFile::Permissions PERMISSIONS = READ_ONLY | QFile::WriteOwner;

    FixtureFolder m_home;
    BackendVersions m_backend{VersionInfo(3, 0, 0), VersionInfo(1, 23), VersionInfo(1, 0),
                              QStringLiteral("ZAN")};
    NewFeatureDialog m_viewer;

public:
    QString version = QStringLiteral("v2.0.0");
    ScriptedChannel channel;
    std::unique_ptr<ZanUpdateModule2GSettingsdlg> dialog;
};

} // namespace

// The call with which a line reaches the host's log.
static QString logged(const QString& text)
{
    return QStringLiteral("post_message standard VORNIX3 1 \"%1\"").arg(text);
}

static QString cannotRead(const QString& file)
{
    return logged(QStringLiteral("Error: Loading ZANupdate preferences. File %1 cannot be opened "
                                 "for reading. Using built-in values")
                      .arg(file));
}

static QString cannotWrite(const QString& file)
{
    return logged(QStringLiteral("Error: Writing ZANupdate preferences. File %1 cannot be opened "
                                 "for writing")
                      .arg(file));
}

static QString cannotMake(const QString& directory)
{
    return logged(QStringLiteral("Error: Writing ZANupdate preferences. Directory %1 doesn't exist "
                                 "and cannot be created")
                      .arg(directory));
}

static const QString REGISTRATION = QStringLiteral("register_receiver UpdateModule");

void TestPreferences::liesBelowTheUsersHome()
{
    Home home;
    home.version = QStringLiteral("v9.8.7");
    home.start();
    QCOMPARE(sConfigDir(*home.dialog),
             home.path() + QLatin1String("/.ORV/VORNIX3/modules/zanupdate/v9.8.7/config"));
    home.stop();
    QVERIFY(QFileInfo(home.path() + QLatin1String("/.ORV/VORNIX3/modules/zanupdate/v9.8.7/config/"
                                                  "zanupdate-preferences.xml"))
                .isFile());
}

// ---- Reading

void TestPreferences::reads_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("flag");

    QTest::newRow("no file is a first start") << QByteArray() << true;
    QTest::newRow("a written file with the flag") << SHOWN_AT_START << true;
    QTest::newRow("a written file without the flag") << NOT_SHOWN_AT_START << false;

    const auto attribute = [](const char* name, const QByteArray& attributes, bool flag) {
        QTest::newRow(name) << "<VORNIX><WHATISNEW " + attributes + "/></VORNIX>" << flag;
    };
    attribute("the value true", "SHOW_AT_START=\"true\"", true);
    attribute("the value true in single quotes", "SHOW_AT_START='true'", true);
    attribute("the value true between other attributes", "A=\"1\" SHOW_AT_START=\"true\" B=\"2\"",
              true);
    attribute("the value false", "SHOW_AT_START=\"false\"", false);
    attribute("no attribute", "", false);
    attribute("an empty value", "SHOW_AT_START=\"\"", false);
    attribute("true in another spelling", "SHOW_AT_START=\"True\"", false);
    attribute("true in upper case", "SHOW_AT_START=\"TRUE\"", false);
    attribute("true with a blank", "SHOW_AT_START=\" true\"", false);
    attribute("a number", "SHOW_AT_START=\"1\"", false);
    attribute("yes", "SHOW_AT_START=\"yes\"", false);
    attribute("an attribute in lower case", "show_at_start=\"true\"", false);

    const QByteArray shown = "<WHATISNEW SHOW_AT_START=\"true\"/>";
    const auto document = [](const char* name, const QByteArray& content, bool flag) {
        QTest::newRow(name) << "<VORNIX>" + content + "</VORNIX>" << flag;
    };
    document("a root without children", "", false);
    QTest::newRow("an empty root") << QByteArray("<VORNIX/>") << false;
    document("a comment alone", "<!-- " + shown + " -->", false);
    document("a comment between elements is ignored",
             "<OTHER/><!-- comment -->" + shown + "<!-- comment -->", true);
    document("text between elements is ignored", "text" + shown + "text", true);
    document("a processing instruction is ignored", "<?what now?>" + shown, true);
    document("other elements are ignored", "<OTHER SHOW_AT_START=\"true\"/>", false);
    document("an element in lower case is another one", "<whatisnew SHOW_AT_START=\"true\"/>",
             false);
    document("an element below another one is ignored", "<OTHER>" + shown + "</OTHER>", false);
    document("the last of two elements decides for true", "<WHATISNEW/>" + shown, true);
    document("the last of two elements decides for false", shown + "<WHATISNEW/>", false);
    document("children of the element do not count",
             "<WHATISNEW SHOW_AT_START=\"true\"><WHATISNEW/></WHATISNEW>", true);

    QTest::newRow("a root with attributes")
        << "<VORNIX VERSION=\"1\">" + shown + "</VORNIX>" << true;
    QTest::newRow("a file that begins with a byte order mark")
        << "\xEF\xBB\xBF" + SHOWN_AT_START << true;
    QTest::newRow("a file with the line ends of another system")
        << QByteArray(SHOWN_AT_START).replace("\n", "\r\n") << true;
    QTest::newRow("a declared encoding that is not looked at")
        << "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><VORNIX>" + shown + "</VORNIX>" << true;
    QTest::newRow("a document type without entities")
        << "<!DOCTYPE VORNIX><VORNIX>" + shown + "</VORNIX>" << true;
    QTest::newRow("a namespace that is not looked at")
        << "<VORNIX xmlns=\"urn:x\">" + shown + "</VORNIX>" << true;
}

void TestPreferences::reads()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, flag);

    Home home;
    if (!bytes.isNull())
        home.write(bytes);
    home.start();
    QCOMPARE(bShowNewFeatures(*home.dialog), flag);
    QCOMPARE(home.channel.log(), QStringList{REGISTRATION});
}

void TestPreferences::reportsWhatItCannotRead_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("problem"); // what stands behind the file's name

    const auto broken = [](const char* name, const QByteArray& bytes, int line, int column,
                           const char* reason) {
        QTest::newRow(name) << bytes
                            << QStringLiteral(" (Line %1, Column %2) :\n%3")
                                   .arg(line)
                                   .arg(column)
                                   .arg(QLatin1String(reason));
    };
    broken("an empty file", "", 1, 1, "unexpected end of file");
    broken("blanks only", " \n ", 2, 2, "unexpected end of file");
    broken("no XML at all", "SHOW_AT_START=true\n", 1, 1, "error occurred while parsing element");
    broken("a root that is not closed", "<VORNIX>\n    <WHATISNEW SHOW_AT_START=\"true\"/>\n", 3, 1,
           "unexpected end of file");
    broken("an end tag that does not match",
           "<VORNIX>\n    <WHATISNEW SHOW_AT_START=\"true\">\n</VORNIX>\n", 3, 9, "tag mismatch");
    broken("a value without quotes", "<VORNIX>\n    <WHATISNEW SHOW_AT_START=true/>\n</VORNIX>\n",
           2, 30, "unexpected character");
    broken("a second root", "<VORNIX/>\n<VORNIX/>\n", 2, 2, "unexpected character");
    broken("bytes of a picture", QByteArray("\x89PNG\r\n\x1A\n\0\0\0\rIHDR", 16), 1, 1,
           "error occurred while parsing element");

    const QString foreign =
        QStringLiteral(" : The file doesn't look like a valid preferences file");
    const QByteArray shown = "<WHATISNEW SHOW_AT_START=\"true\"/>";
    QTest::newRow("a foreign root") << "<html>" + shown + "</html>" << foreign;
    QTest::newRow("a root in lower case") << "<vornix>" + shown + "</vornix>" << foreign;
    QTest::newRow("a root that begins likewise") << "<VORNIX3>" + shown + "</VORNIX3>" << foreign;
    QTest::newRow("a root with a prefix")
        << "<x:VORNIX xmlns:x=\"urn:x\">" + shown + "</x:VORNIX>" << foreign;
    QTest::newRow("the element as root") << shown << foreign;
    QTest::newRow("a document type with an entity, however harmless")
        << QByteArray("<!DOCTYPE VORNIX [<!ENTITY t \"true\">]><VORNIX><WHATISNEW "
                      "SHOW_AT_START=\"&t;\"/></VORNIX>")
        << foreign;
}

void TestPreferences::reportsWhatItCannotRead()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, problem);

    Home home;
    home.write(bytes);
    home.start();
    QVERIFY(!bShowNewFeatures(*home.dialog));
    QCOMPARE(home.channel.log(),
             (QStringList{logged(QStringLiteral("Error: Loading ZANupdate preferences while "
                                                "parsing %1%2. Using built-in values")
                                     .arg(home.file(), problem)),
                          REGISTRATION}));
}

void TestPreferences::reportsEveryTruncation()
{
    const int lastRequired = SHOWN_AT_START.lastIndexOf('>');
    for (int size = 0; size <= lastRequired; ++size) {
        Home home;
        home.write(SHOWN_AT_START.left(size));
        home.start();
        QVERIFY2(!bShowNewFeatures(*home.dialog), qPrintable(QString::number(size)));
        QCOMPARE(home.channel.messages().size(), 1);
        const QString begin = QStringLiteral("Error: Loading ZANupdate preferences while parsing "
                                             "%1 (Line ")
                                  .arg(home.file());
        QVERIFY2(home.channel.messages().first().text.startsWith(begin),
                 qPrintable(QString::number(size)));
    }
}

void TestPreferences::reportsAFileWithoutPermission()
{
    Home home;
    home.write(SHOWN_AT_START);
    QFile::setPermissions(home.file(), {});
    {
        const OtherUser user;
        home.start();
    }
    QVERIFY(!bShowNewFeatures(*home.dialog));
    QCOMPARE(home.channel.log(), (QStringList{cannotRead(home.file()), REGISTRATION}));
}

static QByteArray withEntities(const QByteArray& entities, const QByteArray& content)
{
    return "<!DOCTYPE VORNIX [\n" + entities + "]>\n<VORNIX>" + content + "</VORNIX>\n";
}

// Each entity is ten times the one before it: 10^count times the first.
static QByteArray nestedEntities(int count)
{
    QByteArray entities = "<!ENTITY e0 \"0123456789\">\n";
    for (int i = 1; i <= count; ++i) {
        const QByteArray reference = "&e" + QByteArray::number(i - 1) + ";";
        entities += "<!ENTITY e" + QByteArray::number(i) + " \"" + reference.repeated(10) + "\">\n";
    }
    return entities;
}

// Likewise, with entities of the document type, which are replaced where they are declared.
static QByteArray nestedParameterEntities(int count, int factor)
{
    QByteArray entities = "<!ENTITY % e0 \"0123456789\">\n";
    for (int i = 1; i <= count; ++i) {
        const QByteArray reference = "%e" + QByteArray::number(i - 1) + ";";
        entities +=
            "<!ENTITY % e" + QByteArray::number(i) + " \"" + reference.repeated(factor) + "\">\n";
    }
    return entities;
}

static QByteArray inTwoBytes(const QByteArray& text)
{
    QByteArray bytes("\xFF\xFE");
    for (const char character : text)
        bytes += QByteArray(1, character) + '\0';
    return bytes;
}

void TestPreferences::survivesHostileFiles_data()
{
    QTest::addColumn<QByteArray>("bytes");

    QTest::newRow("entities that grow tenfold each, in a text")
        << withEntities(nestedEntities(12), "&e12;");
    QTest::newRow("entities that grow tenfold each, in an attribute")
        << withEntities(nestedEntities(12), "<WHATISNEW SHOW_AT_START=\"&e12;\"/>");
    QTest::newRow("a long entity that is used as often as a short file allows") << withEntities(
        "<!ENTITY e \"" + QByteArray(4000, 'x') + "\">\n", QByteArray("&e;").repeated(1300));
    QTest::newRow("a long entity that is used a thousand times") << withEntities(
        "<!ENTITY e \"" + QByteArray(100000, 'x') + "\">\n", QByteArray("&e;").repeated(1000));
    QTest::newRow("an entity that holds itself") << withEntities("<!ENTITY e \"&e;\">\n", "&e;");
    QTest::newRow("two entities that hold each other")
        << withEntities("<!ENTITY a \"&b;\">\n<!ENTITY b \"&a;\">\n", "&a;");
    QTest::newRow("entities of the document type that grow tenfold each")
        << withEntities(nestedParameterEntities(12, 10) + "<!ENTITY e \"%e12;\">\n", "&e;");
    QTest::newRow("an entity that the document type makes long and the text repeats")
        << withEntities(nestedParameterEntities(1, 1000) + "<!ENTITY e \"" +
                            QByteArray("%e1;").repeated(700) + "\">\n",
                        QByteArray("&e;").repeated(300));
    QTest::newRow("the same in an encoding of two bytes")
        << inTwoBytes(withEntities(nestedParameterEntities(1, 500) + "<!ENTITY e \"" +
                                       QByteArray("%e1;").repeated(300) + "\">\n",
                                   QByteArray("&e;").repeated(300)));
    QTest::newRow("an entity outside the file that never ends")
        << withEntities("<!ENTITY e SYSTEM \"file:///dev/zero\">\n", "&e;");
    QTest::newRow("elements nested as deep as a short file allows")
        << "<VORNIX>" + QByteArray("<a>").repeated(5400);
    QTest::newRow("elements nested a million deep")
        << "<VORNIX>" + QByteArray("<a>").repeated(1000000);
    QTest::newRow("a file far longer than any that is written")
        << "<VORNIX><WHATISNEW SHOW_AT_START=\"true\"/>" +
               QByteArray("<OTHER/>").repeated(1000000) + "</VORNIX>";
    QTest::newRow("a tag that never ends") << "<VORNIX " + QByteArray(1000000, 'x');
    QTest::newRow("zeros only") << QByteArray(1000000, '\0');
}

static long peakKilobytes()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

void TestPreferences::survivesHostileFiles()
{
    QFETCH(QByteArray, bytes);

    Home home;
    home.write(bytes);
    const long before = peakKilobytes();
    QElapsedTimer clock;
    clock.start();
    home.start();
    QVERIFY(!bShowNewFeatures(*home.dialog));
    QVERIFY2(clock.elapsed() < 5000, qPrintable(QString::number(clock.elapsed())));
    const long growth = peakKilobytes() - before;
    QVERIFY2(growth < 64 * 1024, qPrintable(QString::number(growth)));

    home.stop();
    QCOMPARE(home.read(), NOT_SHOWN_AT_START);
}

// ---- Writing

void TestPreferences::writes_data()
{
    QTest::addColumn<bool>("flag");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("the flag is an attribute") << true << SHOWN_AT_START;
    QTest::newRow("no flag is no attribute") << false << NOT_SHOWN_AT_START;
}

void TestPreferences::writes()
{
    QFETCH(bool, flag);
    QFETCH(QByteArray, bytes);

    Home home;
    home.start();
    bShowNewFeatures(*home.dialog) = flag;
    home.stop();
    QCOMPARE(home.read(), bytes);
    QCOMPARE(home.channel.log(), QStringList{REGISTRATION});
}

void TestPreferences::replacesAFile_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after");

    QTest::newRow("a file with the flag stays") << SHOWN_AT_START << SHOWN_AT_START;
    QTest::newRow("the value false loses its attribute")
        << QByteArray("<VORNIX><WHATISNEW SHOW_AT_START=\"false\"/></VORNIX>")
        << NOT_SHOWN_AT_START;
    QTest::newRow("other elements and comments vanish")
        << QByteArray("<VORNIX><OTHER/><!-- note --><WHATISNEW SHOW_AT_START=\"true\" "
                      "MORE=\"1\"/><OTHER/></VORNIX>")
        << SHOWN_AT_START;
    QTest::newRow("a longer file leaves nothing behind")
        << "<VORNIX>" + QByteArray("<OTHER/>").repeated(500) + "</VORNIX>" << NOT_SHOWN_AT_START;
    QTest::newRow("an empty file becomes a valid one") << QByteArray("") << NOT_SHOWN_AT_START;
    QTest::newRow("a broken file becomes a valid one")
        << QByteArray("<VORNIX><WHATISNEW SHOW_AT_START=\"true\"/>") << NOT_SHOWN_AT_START;
    QTest::newRow("a foreign file becomes a valid one")
        << QByteArray("<html/>") << NOT_SHOWN_AT_START;
}

void TestPreferences::replacesAFile()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);

    Home home;
    home.write(before);
    home.start();
    QCOMPARE(home.read(), before);
    home.stop();
    QCOMPARE(home.read(), after);
}

void TestPreferences::keepsTheFlagFromStartToStart()
{
    Home home;
    for (const bool flag : {true, false, true}) {
        home.start();
        bShowNewFeatures(*home.dialog) = flag;
        home.stop();
        home.start();
        QCOMPARE(bShowNewFeatures(*home.dialog), flag);
        home.stop();
    }
}

void TestPreferences::makesTheDirectoryAtTheFirstExit()
{
    Home home;
    home.start();
    QVERIFY(!QFileInfo::exists(home.path() + QLatin1String("/.ORV")));
    home.stop();
    QCOMPARE(
        QDir(home.directory()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
        QStringList{QStringLiteral("zanupdate-preferences.xml")});
}

void TestPreferences::keepsEachVersionsPreferences()
{
    Home home;
    home.write(NOT_SHOWN_AT_START);
    const QString oldFile = home.file();

    home.version = QStringLiteral("v2.0.1");
    home.start();
    QVERIFY(bShowNewFeatures(*home.dialog));
    QVERIFY(!QFileInfo::exists(home.directory()));
    home.stop();
    QCOMPARE(home.read(), SHOWN_AT_START);

    QFile file(oldFile);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), NOT_SHOWN_AT_START);
}

void TestPreferences::reportsADirectoryThatCannotBeMade_data()
{
    QTest::addColumn<QString>("plainFile"); // below the home
    QTest::newRow("a plain file stands where the directory should be")
        << QStringLiteral(".ORV/VORNIX3/modules/zanupdate/v2.0.0/config");
    QTest::newRow("a plain file stands above it")
        << QStringLiteral(".ORV/VORNIX3/modules/zanupdate/v2.0.0");
    QTest::newRow("a plain file stands where the first folder should be") << QStringLiteral(".ORV");
}

void TestPreferences::reportsADirectoryThatCannotBeMade()
{
    QFETCH(QString, plainFile);

    Home home;
    const QString path = writeFixture(home.path() + QLatin1Char('/') + plainFile, "as it was");
    home.start();
    QVERIFY(bShowNewFeatures(*home.dialog)); // no file: a first start
    home.stop();
    QCOMPARE(home.channel.log(), (QStringList{REGISTRATION, cannotMake(home.directory())}));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("as it was"));

    // So the next start is a first start as well.
    home.start();
    QVERIFY(bShowNewFeatures(*home.dialog));
}

void TestPreferences::reportsAHomeWithoutPermission()
{
    Home home;
    QFile::setPermissions(home.path(), READ_ONLY);
    {
        const OtherUser user;
        home.start();
        home.stop();
    }
    QCOMPARE(home.channel.log(), (QStringList{REGISTRATION, cannotMake(home.directory())}));
}

void TestPreferences::reportsADirectoryInPlaceOfTheFile()
{
    Home home;
    QVERIFY(QDir().mkpath(home.file()));
    home.start();
    QVERIFY(!bShowNewFeatures(*home.dialog));
    home.stop();
    QCOMPARE(home.channel.log(),
             (QStringList{cannotRead(home.file()), REGISTRATION, cannotWrite(home.file())}));
    QVERIFY(QFileInfo(home.file()).isDir());
}

void TestPreferences::keepsAFileThatItMayNotWrite()
{
    Home home;
    home.write(SHOWN_AT_START);
    QFile::setPermissions(home.file(), READ_ONLY);
    {
        const OtherUser user;
        home.start();
        bShowNewFeatures(*home.dialog) = false;
        home.stop();
    }
    QCOMPARE(home.channel.log(), (QStringList{REGISTRATION, cannotWrite(home.file())}));
    QCOMPARE(home.read(), SHOWN_AT_START);
}

ZAN_WIDGET_TEST_MAIN(TestPreferences)

#include "tst_preferences.moc"
