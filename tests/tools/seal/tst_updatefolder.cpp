#include <updatefolder.h>

#include <fixturefiles.h>
#include <privateaccess.h>
#include <scriptedchannel.h>
#include <testmain.h>
#include <zanmoduleserver.h>

#include <BackendVersions.h>

#include <QDir>
#include <QRandomGenerator>

ZAN_EXPOSE(searchDir, &ZanModuleServer::searchDir);

namespace {

// What the plug-in would read, without the separators that it puts at the end.
QString foundByThePlugIn(const QString& applicationDir)
{
    ScriptedChannel channel;
    BackendVersions versions(VersionInfo(3, 0, 0), VersionInfo(1, 6), VersionInfo(1, 0), "ZAN");
    const ZanModuleServer* server = ZanModuleServer::Exemplar(&channel, applicationDir, &versions);
    const QString found = searchDir(server, applicationDir, QStringLiteral("controller_update"));
    ZanModuleServer::ReleaseExemplar();
    return found.isEmpty() ? found : QDir::cleanPath(found);
}

// A few folders inside each other, with files and links among them.
void growTree(const FixtureFolder& root, QRandomGenerator* random)
{
    const QStringList names = {"a", "B", "c d", ".hidden", "controller_update"};
    QStringList folders = {""};
    for (int i = 0; i < 12; ++i) {
        const QString folder = folders[random->bounded(folders.size())];
        const QString path = folder + names[random->bounded(names.size() - (i < 8 ? 1 : 0))];
        if (QFileInfo::exists(root.path(path)) || QFileInfo(root.path(path)).isSymLink())
            continue;
        switch (random->bounded(6)) {
        case 0:
            root.write(path, "a file");
            break;
        case 1:
            root.link(path, folders[random->bounded(folders.size())] + '.');
            break;
        default:
            root.makeFolder(path);
            folders += path + '/';
        }
    }
}

} // namespace

class TestUpdateFolder : public QObject
{
    Q_OBJECT

private slots:
    void findsTheFolder_data();
    void findsTheFolder();
    void findsWhatThePlugInFindsInAnyTree();
};

void TestUpdateFolder::findsTheFolder_data()
{
    QTest::addColumn<QStringList>("folders");
    QTest::addColumn<QString>("found");
    QTest::newRow("none") << QStringList{"a", "b/c"} << "";
    QTest::newRow("beside the program, before all that are deeper")
        << QStringList{"a/controller_update", "controller_update"} << "controller_update";
    QTest::newRow("the first by name, whatever the case")
        << QStringList{"B/controller_update", "a/controller_update"} << "a/controller_update";
    QTest::newRow("deep in the first before not so deep in the second")
        << QStringList{"a/b/c/controller_update", "d/controller_update"}
        << "a/b/c/controller_update";
    QTest::newRow("not in another case") << QStringList{"Controller_Update"} << "";
}

void TestUpdateFolder::findsTheFolder()
{
    QFETCH(const QStringList, folders);
    QFETCH(const QString, found);
    const FixtureFolder root;
    for (const QString& folder : folders)
        root.makeFolder(folder);
    QCOMPARE(findUpdateFolder(root.path()), found.isEmpty() ? found : root.path(found));
    QCOMPARE(foundByThePlugIn(root.path()), findUpdateFolder(root.path()));
}

void TestUpdateFolder::findsWhatThePlugInFindsInAnyTree()
{
    QRandomGenerator random(20260301);
    int finds = 0;
    for (int i = 0; i < 100; ++i) {
        const FixtureFolder root;
        growTree(root, &random);
        const QString found = findUpdateFolder(root.path());
        QCOMPARE(found, foundByThePlugIn(root.path()));
        finds += found.isEmpty() ? 0 : 1;
    }
    // Enough of both kinds.
    QVERIFY2(finds > 15 && finds < 85, qPrintable(QString::number(finds)));
}

ZAN_TEST_MAIN(TestUpdateFolder)
#include "tst_updatefolder.moc"
