#include "exposedviewer.h"

#include <comparing.h>
#include <fixturefiles.h>
#include <widgettestmain.h>

#include <BackendVersions>

#include <QRandomGenerator>

#include <algorithm>
#include <array>
#include <functional>
#include <set>

/// Which notes apply to the frontend's version, and in which order they are shown.
class TestNoteDiscovery : public QObject
{
    Q_OBJECT

private slots:
    void readsAVersionFromItsName_data();
    void readsAVersionFromItsName();
    void comparesVersions_data();
    void comparesVersions();
    void findsNotes_data();
    void findsNotes();
    void findsFilesOnly();
    void findsNothingWithoutAFolder_data();
    void findsNothingWithoutAFolder();
    void looksAnewEachTime();
    void sortsHundredsOfNotes_data();
    void sortsHundredsOfNotes();
    void findsHundredsOfNotes();
    void keepsNotesOfEqualVersions();
    void survivesADotInTheName();
    void tellsWhatIsAvailable_data();
    void tellsWhatIsAvailable();
};

static const QString FOLDER = QStringLiteral("whats_new");

namespace {

/// A viewer that knows the frontend's version.
struct Viewer
{
    explicit Viewer(const VersionInfo& frontend = VersionInfo(3, 1, 0),
                    const VersionInfo& systemPt = VersionInfo(9, 9, 9))
        : backend(systemPt, VersionInfo(1, 23), VersionInfo(1, 0), QStringLiteral("ZAN")),
          dialog(nullptr, &backend)
    {
        vornix2(dialog) = frontend;
    }

    BackendVersions backend;
    NewFeatureDialog dialog;
};

} // namespace

// ---- One version

static VersionInfo versionOf(Versions& versions)
{
    return VersionInfo(majorOf(versions), minorOf(versions), patchOf(versions));
}

void TestNoteDiscovery::readsAVersionFromItsName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<VersionInfo>("version");

    const auto row = [](const char* title, const char* name, const VersionInfo& version) {
        QTest::newRow(title) << QString::fromLatin1(name) << version;
    };
    row("three numbers", "v3_1_2.html", VersionInfo(3, 1, 2));
    row("numbers of several digits", "v10_20_300.html", VersionInfo(10, 20, 300));
    row("leading zeros do not count", "v03_001_0002.html", VersionInfo(3, 1, 2));
    row("a capital V does not parse", "V3_1_2.html", VersionInfo(0, 1, 2));
    row("every letter v is removed", "v3_v1_v2.html", VersionInfo(3, 1, 2));
    row("a minor that does not parse is 0", "v3_x_2.html", VersionInfo(3, 0, 2));
    row("a patch that does not parse is 0", "v3_1_x.html", VersionInfo(3, 1, 0));
    row("the ending stands in for a missing patch and is 0", "v3_1.html", VersionInfo(3, 1, 0));
    row("a lone number", "v3", VersionInfo(3, 0, 0));
    row("the empty name", "", VersionInfo(0, 0, 0));
    row("a number beyond an int is 0", "v3_99999999999_2.html", VersionInfo(3, 0, 2));
}

void TestNoteDiscovery::readsAVersionFromItsName()
{
    QFETCH(QString, name);
    QFETCH(VersionInfo, version);

    Versions constructed(name);
    QCOMPARE(versionOf(constructed), version);
    QCOMPARE(constructed.getVersionStr(), name);

    Versions set;
    set.setVersionString(QStringLiteral("v7_8_9.html"));
    set.setVersionString(name);
    QCOMPARE(versionOf(set), version);
    QCOMPARE(set.getVersionStr(), name);
}

void TestNoteDiscovery::comparesVersions_data()
{
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("second");
    QTest::addColumn<bool>("isLess");
    QTest::addColumn<bool>("isGreater");

    const auto less = [](const char* title, const char* first, const char* second) {
        QTest::newRow(title) << QString::fromLatin1(first) << QString::fromLatin1(second) << true
                             << false;
        QTest::addRow("%s, the other way round", title)
            << QString::fromLatin1(second) << QString::fromLatin1(first) << false << true;
    };
    less("the major decides", "v2_9_9.html", "v3_0_0.html");
    less("then the minor", "v3_1_9.html", "v3_2_0.html");
    less("then the patch", "v3_1_1.html", "v3_1_2.html");
    less("numbers decide, not text", "v9_0_0.html", "v10_0_0.html");
    less("numbers decide in the minor", "v3_9_0.html", "v3_10_0.html");
    less("numbers decide in the patch", "v3_0_9.html", "v3_0_10.html");
    QTest::newRow("equal versions are neither")
        << QStringLiteral("v3_1_0.html") << QStringLiteral("v03_01_00.html") << false << false;
}

void TestNoteDiscovery::comparesVersions()
{
    QFETCH(QString, first);
    QFETCH(QString, second);
    QFETCH(bool, isLess);
    QFETCH(bool, isGreater);

    Versions a(first);
    Versions b(second);
    QCOMPARE(a.isLess(&b), isLess);
    QCOMPARE(a.isGreater(&b), isGreater);
    QCOMPARE(versionIsLessThen(&a, &b), isLess);
}

// ---- The folder

void TestNoteDiscovery::findsNotes_data()
{
    QTest::addColumn<VersionInfo>("frontend");
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QStringList>("notes");

    const auto row = [](const char* title, const VersionInfo& frontend, const QString& files,
                        const QString& notes) {
        const auto list = [](const QString& names) {
            return names.split(QLatin1Char(' '), Qt::SkipEmptyParts);
        };
        QTest::newRow(title) << frontend << list(files) << list(notes);
    };
    const VersionInfo frontend(3, 1, 4);
    const auto one = [&](const char* title, const char* file, bool isListed) {
        const QString name = QString::fromLatin1(file);
        row(title, frontend, name, isListed ? name : QString());
    };
    one("a note of exactly the frontend's version is listed", "v3_1_4.html", true);
    one("a note one patch newer is not", "v3_1_5.html", false);
    one("a note one patch older is listed", "v3_1_3.html", true);
    one("a note one minor newer is not, whatever its patch", "v3_2_0.html", false);
    one("a note one minor older is listed, whatever its patch", "v3_0_99.html", true);
    one("a note one major newer is not, whatever its minor", "v4_0_0.html", false);
    one("a note one major older is listed, whatever its minor", "v2_99_99.html", true);
    one("the note of 0.0.0 is listed", "v0_0_0.html", true);
    one("a major that is no number is skipped", "vx_1_0.html", false);
    one("an empty major is skipped", "v_1_0.html", false);
    one("a major with more behind it is skipped", "v3a_1_0.html", false);
    one("a major beyond an int is skipped", "v99999999999_1_0.html", false);
    one("a minor that is no number counts as 0", "v3_x_9.html", true);
    one("an empty minor counts as 0", "v3__9.html", true);
    one("a patch that is no number counts as 0", "v3_1_x.html", true);
    one("a letter v inside a number is no part of it", "v3_v9_0.html", true);
    one("a fourth part does not count", "v3_1_4_9.html", true);
    one("a name without a patch is no note", "v3_1.html", false);
    one("a name without the letter is no note", "3_1_0.html", false);
    one("another ending is no note", "v3_1_0.htm", false);
    one("an ending with more behind it is no note", "v3_1_0.html.bak", false);
    one("the filter knows no case at the start", "V3_1_0.html", true);
    one("the filter knows no case at the end", "v3_1_0.HTML", true);

    row("newest first, whatever the order in the folder", frontend,
        QStringLiteral("v2_0_0.html v3_1_0.html v3_0_0.html"),
        QStringLiteral("v3_1_0.html v3_0_0.html v2_0_0.html"));
    row("major 10 comes before major 9", VersionInfo(11, 0, 0),
        QStringLiteral("v10_0_0.html v9_0_0.html v1_0_0.html"),
        QStringLiteral("v10_0_0.html v9_0_0.html v1_0_0.html"));
    row("minor 10 comes before minor 9", frontend,
        QStringLiteral("v2_10_0.html v2_9_0.html v2_1_0.html"),
        QStringLiteral("v2_10_0.html v2_9_0.html v2_1_0.html"));
    row("patch 10 comes before patch 9", frontend,
        QStringLiteral("v2_0_10.html v2_0_9.html v2_0_1.html"),
        QStringLiteral("v2_0_10.html v2_0_9.html v2_0_1.html"));
    row("a capital V sorts as major 0, to the end", frontend,
        QStringLiteral("V3_1_0.html v1_0_0.html v0_2_0.html"),
        QStringLiteral("v1_0_0.html v0_2_0.html V3_1_0.html"));
    row("only what applies is listed", frontend,
        QStringLiteral("v3_1_4.html v3_1_5.html v3_0_0.html v4_0_0.html index.html readme.txt"),
        QStringLiteral("v3_1_4.html v3_0_0.html"));
    row("an empty folder has no notes", frontend, QString(), QString());
    row("no ordinary note passes before the frontend's version has arrived", VersionInfo(),
        QStringLiteral("v0_0_0.html v0_0_1.html v3_1_0.html"), QString());
}

void TestNoteDiscovery::findsNotes()
{
    QFETCH(VersionInfo, frontend);
    QFETCH(QStringList, files);
    QFETCH(QStringList, notes);

    const FixtureFolder folder;
    folder.makeFolder(FOLDER);
    for (const QString& file : files)
        folder.write(FOLDER + QLatin1Char('/') + file, QByteArray());
    Viewer viewer(frontend);
    QCOMPARE(search_dir(viewer.dialog, folder.path(), FOLDER), notes);
}

void TestNoteDiscovery::findsFilesOnly()
{
    const FixtureFolder folder;
    folder.write(QStringLiteral("whats_new/v1_0_0.html"), QByteArray());
    folder.makeFolder(QStringLiteral("whats_new/v2_0_0.html"));
    folder.write(QStringLiteral("whats_new/more/v2_1_0.html"), QByteArray());
    folder.write(QStringLiteral("v2_2_0.html"), QByteArray());
    folder.link(QStringLiteral("whats_new/v2_3_0.html"), QStringLiteral("v2_2_0.html"));
    folder.link(QStringLiteral("whats_new/v2_4_0.html"), QStringLiteral("missing.html"));
    Viewer viewer;
    QCOMPARE(search_dir(viewer.dialog, folder.path(), FOLDER),
             (QStringList{QStringLiteral("v2_3_0.html"), QStringLiteral("v1_0_0.html")}));
}

void TestNoteDiscovery::findsNothingWithoutAFolder_data()
{
    QTest::addColumn<QString>("inItsPlace"); // a file
    QTest::newRow("the folder is missing") << QStringLiteral("v1_0_0.html");
    QTest::newRow("a file stands in its place") << FOLDER;
    QTest::newRow("the folder has another name") << QStringLiteral("Whats_New/v1_0_0.html");
}

void TestNoteDiscovery::findsNothingWithoutAFolder()
{
    QFETCH(QString, inItsPlace);

    const FixtureFolder folder;
    folder.write(inItsPlace, QByteArray());
    Viewer viewer;
    QCOMPARE(search_dir(viewer.dialog, folder.path(), FOLDER), QStringList());
}

void TestNoteDiscovery::looksAnewEachTime()
{
    const FixtureFolder folder;
    Viewer viewer;
    QCOMPARE(search_dir(viewer.dialog, folder.path(), FOLDER), QStringList());
    folder.write(QStringLiteral("whats_new/v1_0_0.html"), QByteArray());
    QCOMPARE(search_dir(viewer.dialog, folder.path(), FOLDER),
             QStringList{QStringLiteral("v1_0_0.html")});
    const QString newer = folder.write(QStringLiteral("whats_new/v2_0_0.html"), QByteArray());
    QCOMPARE(search_dir(viewer.dialog, folder.path(), FOLDER).size(), 2);
    QVERIFY(QFile::remove(newer));
    QCOMPARE(search_dir(viewer.dialog, folder.path(), FOLDER).size(), 1);
}

// ---- Many notes

using Numbers = std::array<int, 3>;

static QString nameOf(const Numbers& numbers)
{
    return QStringLiteral("v%1_%2_%3.html")
        .arg(QString::number(numbers[0]), QString::number(numbers[1]), QString::number(numbers[2]));
}

// The same for every run; in no order, and all different.
static QVector<Numbers> randomVersions(int count, quint32 seed)
{
    QRandomGenerator random(seed);
    std::set<Numbers> taken;
    QVector<Numbers> versions;
    while (versions.size() < count) {
        const Numbers numbers{random.bounded(12), random.bounded(12), random.bounded(120)};
        if (taken.insert(numbers).second)
            versions += numbers;
    }
    return versions;
}

static QStringList namesOf(const QVector<Numbers>& versions)
{
    QStringList names;
    for (const Numbers& numbers : versions)
        names += nameOf(numbers);
    return names;
}

static QStringList newestFirst(QVector<Numbers> versions)
{
    std::sort(versions.begin(), versions.end(), std::greater<>());
    return namesOf(versions);
}

void TestNoteDiscovery::sortsHundredsOfNotes_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<quint32>("seed");
    QTest::newRow("no note") << 0 << 1U;
    QTest::newRow("one note") << 1 << 2U;
    QTest::newRow("two notes") << 2 << 3U;
    for (const quint32 seed : {11U, 12U, 13U, 14U, 15U})
        QTest::addRow("700 notes in the order of seed %u", seed) << 700 << seed;
}

void TestNoteDiscovery::sortsHundredsOfNotes()
{
    QFETCH(int, count);
    QFETCH(quint32, seed);

    const QVector<Numbers> versions = randomVersions(count, seed);
    const QStringList expected = newestFirst(versions);
    QStringList names = namesOf(versions);
    Viewer viewer;
    sortAccordingVersions(viewer.dialog, &names);
    QCOMPARE(names, expected);

    QList<Versions*> ascending;
    for (const Numbers& numbers : versions)
        ascending += new Versions(nameOf(numbers));
    qtSort(viewer.dialog, &ascending);
    for (int i = 0; i < count; ++i)
        QCOMPARE(ascending.at(i)->getVersionStr(), expected.at(count - 1 - i));
    qDeleteAll(ascending);
}

void TestNoteDiscovery::findsHundredsOfNotes()
{
    const QVector<Numbers> versions = randomVersions(600, 21);
    const FixtureFolder folder;
    for (const Numbers& numbers : versions)
        folder.write(FOLDER + QLatin1Char('/') + nameOf(numbers), QByteArray());

    const Numbers frontend{6, 5, 60};
    QVector<Numbers> applicable;
    std::copy_if(versions.begin(), versions.end(), std::back_inserter(applicable),
                 [&](const Numbers& numbers) { return numbers <= frontend; });
    QVERIFY(applicable.size() > 200 && applicable.size() < 400);

    Viewer viewer(VersionInfo(frontend[0], frontend[1], frontend[2]));
    QCOMPARE(search_dir(viewer.dialog, folder.path(), FOLDER), newestFirst(applicable));
}

// Leading zeros make two names of one version possible; their order is open.
void TestNoteDiscovery::keepsNotesOfEqualVersions()
{
    QStringList names{QStringLiteral("v1_0_0.html"), QStringLiteral("v2_0_0.html"),
                      QStringLiteral("v02_00_00.html"), QStringLiteral("v3_0_0.html")};
    Viewer viewer;
    sortAccordingVersions(viewer.dialog, &names);
    QCOMPARE(names.first(), QStringLiteral("v3_0_0.html"));
    QCOMPARE(names.last(), QStringLiteral("v1_0_0.html"));
    QStringList between = names.mid(1, 2);
    between.sort();
    QCOMPARE(between,
             (QStringList{QStringLiteral("v02_00_00.html"), QStringLiteral("v2_0_0.html")}));
}

// Such files are not delivered; all that counts is that the others stay.
void TestNoteDiscovery::survivesADotInTheName()
{
    const FixtureFolder folder;
    for (const char* name : {"v3.0_1_0.html", "v.1_2_3.html", "v1_2.3_4.html", "v._._.html"})
        folder.write(FOLDER + QLatin1Char('/') + QLatin1String(name), QByteArray());
    folder.write(QStringLiteral("whats_new/v2_0_0.html"), QByteArray());
    Viewer viewer;
    QVERIFY(
        search_dir(viewer.dialog, folder.path(), FOLDER).contains(QStringLiteral("v2_0_0.html")));
}

// ---- Availability

void TestNoteDiscovery::tellsWhatIsAvailable_data()
{
    QTest::addColumn<VersionInfo>("systemPt");
    QTest::addColumn<VersionInfo>("frontend");
    QTest::addColumn<bool>("isAvailable"); // of 3.1.4

    const VersionInfo newer(9, 9, 9);
    const VersionInfo same(3, 1, 4);
    const auto row = [](const char* title, const VersionInfo& systemPt, const VersionInfo& frontend,
                        bool isAvailable) {
        QTest::newRow(title) << systemPt << frontend << isAvailable;
    };
    row("both are newer", newer, newer, true);
    row("both are the same", same, same, true);
    row("the backend is a patch behind", VersionInfo(3, 1, 3), newer, false);
    row("the backend is a minor behind", VersionInfo(3, 0, 9), newer, false);
    row("the backend is a major behind", VersionInfo(2, 9, 9), newer, false);
    row("the backend is a minor ahead with a smaller patch", VersionInfo(3, 2, 0), newer, true);
    row("the backend is a major ahead with a smaller minor", VersionInfo(4, 0, 0), newer, true);
    row("the frontend is a patch behind", newer, VersionInfo(3, 1, 3), false);
    row("the frontend is a minor behind", newer, VersionInfo(3, 0, 9), false);
    row("the frontend is a major behind", newer, VersionInfo(2, 9, 9), false);
    row("the backend's version is unknown", VersionInfo(), newer, false);
    row("the frontend's version is unknown", newer, VersionInfo(), false);
    row("the backend names no patch", VersionInfo(3, 1), newer, false);
}

void TestNoteDiscovery::tellsWhatIsAvailable()
{
    QFETCH(VersionInfo, systemPt);
    QFETCH(VersionInfo, frontend);
    QFETCH(bool, isAvailable);

    Viewer viewer(frontend, systemPt);
    QCOMPARE(is_version_available(viewer.dialog, 3, 1, 4), isAvailable);
}

ZAN_WIDGET_TEST_MAIN(TestNoteDiscovery)

#include "tst_notediscovery.moc"
