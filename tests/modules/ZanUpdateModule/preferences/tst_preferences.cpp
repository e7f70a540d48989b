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
#include <QFileInfo>
#include <QTextCodec>

#include <memory>

#include <sys/resource.h>
#include <sys/stat.h>

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
    void doesNotWaitForAPipeInPlaceOfTheFile();
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

// With the mark of the encoding, where it has one.
static QByteArray inEncoding(const char* name, const QByteArray& text)
{
    return QTextCodec::codecForName(name)->fromUnicode(QString::fromUtf8(text));
}

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
    QTest::newRow("another declared encoding")
        << "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><VORNIX>" + shown + "</VORNIX>" << true;
    QTest::newRow("a document type without entities")
        << "<!DOCTYPE VORNIX><VORNIX>" + shown + "</VORNIX>" << true;
    QTest::newRow("a declaration of an entity inside of a comment")
        << "<!-- <!ENTITY e \"x\"> --><VORNIX>" + shown + "</VORNIX>" << true;
    QTest::newRow("an entity for the value")
        << QByteArray("<!DOCTYPE VORNIX [<!ENTITY t \"true\">]><VORNIX><WHATISNEW "
                      "SHOW_AT_START=\"&t;\"/></VORNIX>")
        << true;
    QTest::newRow("an entity for the element")
        << "<!DOCTYPE VORNIX [<!ENTITY e '" + shown + "'>]><VORNIX>&e;</VORNIX>" << true;
    QTest::newRow("entities of entities for the value")
        << QByteArray("<!DOCTYPE VORNIX [<!ENTITY v \"&t;&r;\"><!ENTITY t \"t\"><!ENTITY r "
                      "\"&u;e\"><!ENTITY u \"ru\">]><VORNIX><WHATISNEW "
                      "SHOW_AT_START=\"&v;\"/></VORNIX>")
        << true;
    QByteArray chain = "<!ENTITY e0 \"true\">";
    for (int i = 1; i < 100; ++i)
        chain +=
            "<!ENTITY e" + QByteArray::number(i) + " \"&e" + QByteArray::number(i - 1) + ";\">";
    QTest::newRow("a hundred entities, each for the one before it, for the value")
        << "<!DOCTYPE VORNIX [" + chain + "]><VORNIX><WHATISNEW SHOW_AT_START=\"&e99;\"/></VORNIX>"
        << true;
    QTest::newRow("entities of XML itself, and percent signs, in any number")
        << "<VORNIX>" + QByteArray("&lt;&amp;&#65;%").repeated(20000) + shown + "</VORNIX>" << true;
    QTest::newRow("declared elements in parentheses")
        << "<!DOCTYPE VORNIX [" + QByteArray("<!ELEMENT a ((b|c),(d,(e)?)*)>").repeated(2000) +
               "]><VORNIX>" + shown + QByteArray(2000, '(') + "</VORNIX>"
        << true;
    for (const char* encoding : {"UTF-16LE", "UTF-16BE"}) {
        QTest::addRow("%s with its mark", encoding)
            << inEncoding(encoding, "<VORNIX>" + shown + "</VORNIX>") << true;
        QTest::addRow("%s with its mark and name", encoding)
            << inEncoding(encoding, "<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n<VORNIX>" +
                                        shown + "</VORNIX>")
            << true;
        QTest::addRow("%s with its mark, not set", encoding)
            << inEncoding(encoding, "<VORNIX><WHATISNEW/></VORNIX>") << false;
    }
    for (const int bytes : {16384, 20000, 8000000}) {
        QTest::addRow("the setting behind %d bytes of other elements", bytes)
            << "<VORNIX>" + QByteArray("<OTHER/>").repeated(bytes / 8) + shown + "</VORNIX>"
            << true;
        QTest::addRow("the setting behind a comment of %d bytes", bytes)
            << "<VORNIX><!--" + QByteArray(bytes, 'x') + "-->" + shown + "</VORNIX>" << true;
    }
    QTest::newRow("the setting behind deep elements")
        << "<VORNIX>" + QByteArray("<a>").repeated(9000) + QByteArray("</a>").repeated(9000) +
               shown + "</VORNIX>"
        << true;
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

    broken("two bytes for each character in a file that says it is UTF-8",
           inEncoding("UTF-16LE", SHOWN_AT_START), 1, 1, "error occurred while parsing element");

    const QString foreign =
        QStringLiteral(" : The file doesn't look like a valid preferences file");
    const QByteArray shown = "<WHATISNEW SHOW_AT_START=\"true\"/>";
    QTest::newRow("a foreign root") << "<html>" + shown + "</html>" << foreign;
    QTest::newRow("a root in lower case") << "<vornix>" + shown + "</vornix>" << foreign;
    QTest::newRow("a root that begins likewise") << "<VORNIX3>" + shown + "</VORNIX3>" << foreign;
    QTest::newRow("a root with a prefix")
        << "<x:VORNIX xmlns:x=\"urn:x\">" + shown + "</x:VORNIX>" << foreign;
    QTest::newRow("the element as root") << shown << foreign;
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

static const QByteArray SHOWN = "<WHATISNEW SHOW_AT_START=\"true\"/>";

static QByteArray withEntities(const QByteArray& entities, const QByteArray& content)
{
    return "<!DOCTYPE VORNIX [\n" + entities + "]>\n<VORNIX>" + content + "</VORNIX>\n";
}

static QByteArray emptyEntities(int count)
{
    QByteArray entities;
    for (int i = 0; i < count; ++i)
        entities += "<!ENTITY e" + QByteArray::number(i) + " \"\">\n";
    return entities;
}

// Each entity is ten times the one before it: 10^count times the first.
static QByteArray nestedEntities(int count, const QByteArray& first = "0123456789")
{
    QByteArray entities = "<!ENTITY e0 \"" + first + "\">\n";
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

void TestPreferences::survivesHostileFiles_data()
{
    QTest::addColumn<QByteArray>("bytes");

    QTest::newRow("entities that grow tenfold each, in a text")
        << withEntities(nestedEntities(12), "&e12;");
    QTest::newRow("entities that grow tenfold each, in an attribute")
        << withEntities(nestedEntities(12), "<WHATISNEW SHOW_AT_START=\"&e12;\"/>");
    QTest::newRow("entities that come to nothing, but more often each, in a text")
        << withEntities(nestedEntities(12, ""), SHOWN + "&e12;");
    QTest::newRow("entities that come to nothing, in an attribute")
        << withEntities(nestedEntities(12, ""), "<WHATISNEW SHOW_AT_START=\"true&e12;\"/>");
    QTest::newRow("entities that come to nothing, in a default of the document type")
        << withEntities(nestedEntities(12, "") + "<!ATTLIST a b CDATA \"&e12;\">\n", SHOWN);
    QTest::newRow("entities that come to nothing, the first one declared last") << withEntities(
        "<!ENTITY f \"" + QByteArray("&e11;").repeated(10) + "\">\n" + nestedEntities(11, ""),
        SHOWN + "&f;");
    QTest::newRow("entities that come to nothing, behind numbers of characters") << withEntities(
        nestedEntities(11, "") + "<!ENTITY f \"" + QByteArray("&#38;e11;").repeated(10) + "\">\n",
        SHOWN + "&f;");
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
        << inEncoding("UTF-16LE", withEntities(nestedParameterEntities(1, 500) + "<!ENTITY e \"" +
                                                   QByteArray("%e1;").repeated(300) + "\">\n",
                                               QByteArray("&e;").repeated(300)));
    QTest::newRow("an entity outside the file that never ends")
        << withEntities("<!ENTITY e SYSTEM \"file:///dev/zero\">\n", "&e;");
    QTest::newRow("a thousand entities") << withEntities(emptyEntities(1000), SHOWN);
    QTest::newRow("an entity that is used ten thousand times")
        << withEntities("<!ENTITY e \"x\">\n", SHOWN + QByteArray("&e;").repeated(10000));
    QTest::newRow("an entity that opens elements wherever it is used")
        << withEntities("<!ENTITY e \"" + QByteArray("<a>").repeated(1000) + "\">\n",
                        SHOWN + QByteArray("&e;").repeated(900));
    QTest::newRow("elements nested deeper than they may be, and closed")
        << "<VORNIX>" + SHOWN + QByteArray("<a>").repeated(10001) +
               QByteArray("</a>").repeated(10001) + "</VORNIX>";
    QTest::newRow("elements nested a million deep")
        << "<VORNIX>" + SHOWN + QByteArray("<a>").repeated(1000000) +
               QByteArray("</a>").repeated(1000000) + "</VORNIX>";
    QTest::newRow("parentheses nested a million deep") << withEntities(
        "<!ELEMENT a " + QByteArray(1000000, '(') + "b" + QByteArray(1000000, ')') + ">\n", SHOWN);
    QTest::newRow("parentheses that an entity brings, nested a million deep")
        << withEntities("<!ENTITY % p \"" + QByteArray(990, '(') + "\">\n<!ELEMENT a " +
                            QByteArray("%p;").repeated(900) + "b>\n",
                        SHOWN);
    QTest::newRow("a file longer than any may be")
        << "<VORNIX>" + SHOWN + QByteArray(16 << 20, ' ') + "</VORNIX>";
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
    home.start();
    QVERIFY(!bShowNewFeatures(*home.dialog));
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

void TestPreferences::doesNotWaitForAPipeInPlaceOfTheFile()
{
    Home home;
    QVERIFY(QDir().mkpath(home.directory()));
    QCOMPARE(::mkfifo(QFile::encodeName(home.file()).constData(), 0600), 0);
    home.start();
    QVERIFY(!bShowNewFeatures(*home.dialog));
    home.stop();
    QCOMPARE(home.channel.log(),
             (QStringList{cannotRead(home.file()), REGISTRATION, cannotWrite(home.file())}));
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
