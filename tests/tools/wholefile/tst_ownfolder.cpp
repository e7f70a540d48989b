#include <ownfolder.h>

#include <fixturefiles.h>
#include <fulldisk.h>
#include <reasons.h>
#include <testmain.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSysInfo>

namespace {

QStringList entries(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System |
                                  QDir::NoDotAndDotDot);
}

QString notOurs(const QString& folder)
{
    return folder + ": the folder holds what is not of this program, so nothing in it is touched; "
                    "name a new or an empty folder";
}

} // namespace

class TestOwnFolder : public QObject
{
    Q_OBJECT

private slots:
    void folderIsTaken_data();
    void folderIsTaken();
    void folderOfOthersIsLeftAlone_data();
    void folderOfOthersIsLeftAlone();
    void folderThatCannotBeMadeIsExplained();
    void fullDiskIsExplained();
    void lockNamesWhoHoldsIt();
    void lockOfADeadProcessDoesNotCount();
    void foreignLockStays();
    void lockOfAnotherMachineIsExplained();
    void lockThatCannotBeWrittenIsExplained();
    void linkGoesWithoutWhatItLeadsTo();
};

void TestOwnFolder::folderIsTaken_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("one that is not there yet") << "new/deeper";
    QTest::newRow("an empty one") << "empty";
    QTest::newRow("an empty one behind a link") << "link";
    QTest::newRow("with a slash at the end") << "empty/";
    QTest::newRow("with nothing in it but what is known, and a lock") << "known";
}

void TestOwnFolder::folderIsTaken()
{
    QFETCH(const QString, name);
    const FixtureFolder folder;
    folder.makeFolder("empty");
    folder.link("link", "empty");
    folder.write("known/system.json", "known to the caller");
    folder.write("known/lock", "of whomever");
    QString error;
    for (int i = 0; i < 2; ++i) {
        QVERIFY2(claimFolder(folder.path(name), {"system.json"}, &error), qPrintable(error));
        folder.write(name + "/more", "made by the program since");
    }
}

void TestOwnFolder::folderOfOthersIsLeftAlone_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("the root") << "/";
    QTest::newRow("the home, empty as it may be") << QDir::homePath();
    QTest::newRow("one with a file") << "/file";
    QTest::newRow("one with a hidden file") << "/hidden";
    QTest::newRow("one with a folder") << "/folder";
    QTest::newRow("one behind a link") << "/link";
    QTest::newRow("one with a dot in its path") << "/folder/../file";
    QTest::newRow("one in which somebody else has a folder of that name") << "/mark";
}

void TestOwnFolder::folderOfOthersIsLeftAlone()
{
    QFETCH(QString, path);
    const FixtureFolder folder;
    folder.write("file/thesis.txt", "x");
    folder.write("hidden/.profile", "x");
    folder.makeFolder("folder/runs");
    folder.link("link", "file");
    folder.makeFolder("mark/.vornix3-state");
    if (path != "/" && path != QDir::homePath())
        path.prepend(folder.path());
    const QStringList before = entries(path);
    QString error;
    QVERIFY(!claimFolder(path, {"system.json"}, &error));
    QCOMPARE(error, notOurs(path));
    QCOMPARE(entries(path), before);
}

void TestOwnFolder::folderThatCannotBeMadeIsExplained()
{
    const FixtureFolder folder;
    const QString inTheWay = folder.write("file", "x");
    QString error;
    QVERIFY(!claimFolder(inTheWay, {}, &error));
    QCOMPARE(error, inTheWay + ": the folder cannot be made: " + systemReason(ENOTDIR));
    QVERIFY(!claimFolder(inTheWay + "/deeper", {}, &error));
    QCOMPARE(error, inTheWay + "/deeper: the folder cannot be made: " + systemReason(ENOTDIR));
}

void TestOwnFolder::fullDiskIsExplained()
{
    const FixtureFolder folder;
    const QString path = folder.path("state");
    QString error;
    bool isClaimed = true;
    {
        const FullDisk disk(10);
        isClaimed = claimFolder(path, {}, &error);
    }
    QVERIFY(!isClaimed);
    QCOMPARE(error, path + ": " + systemReason(EFBIG));
    QCOMPARE(entries(path), QStringList());
    QVERIFY(claimFolder(path, {}, &error));
}

void TestOwnFolder::lockNamesWhoHoldsIt()
{
    const FixtureFolder folder;
    QString error;
    FolderLock first(folder.path("state"));
    QVERIFY2(first.take(0, &error), qPrintable(error));
    QVERIFY(!FolderLock(folder.path("state")).take(0, &error));
    QCOMPARE(error,
             QStringLiteral("%1: tst_ownfolder uses this folder, process %2; end it first, or name "
                            "another folder")
                 .arg(folder.path("state"))
                 .arg(QCoreApplication::applicationPid()));
}

void TestOwnFolder::lockOfADeadProcessDoesNotCount()
{
    const FixtureFolder folder;
    folder.write("lock", "999999999\nother\n" + QSysInfo::machineHostName().toLocal8Bit() + "\n");
    QString error;
    QVERIFY2(FolderLock(folder.path()).take(0, &error), qPrintable(error));
}

void TestOwnFolder::foreignLockStays()
{
    const FixtureFolder folder;
    const QString lock = folder.write("lock", "the key is under the mat");
    // Qt would take it for one that was left behind.
    QFile file(lock);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.setFileTime(QDateTime::currentDateTime().addDays(-1),
                             QFileDevice::FileModificationTime));
    QString error;
    QVERIFY(!FolderLock(folder.path()).take(0, &error));
    QCOMPARE(error, folder.path() + ": " + lock +
                        " is no lock of this program; remove it if no other program uses the "
                        "folder");
    QCOMPARE(file.readAll(), QByteArray("the key is under the mat"));
}

void TestOwnFolder::lockOfAnotherMachineIsExplained()
{
    const FixtureFolder folder;
    const QString lock = folder.write("lock", "17\ndemo-frontend\nanother.machine\n");
    QString error;
    QVERIFY(!FolderLock(folder.path()).take(0, &error));
    QCOMPARE(error, folder.path() +
                        ": demo-frontend uses this folder, process 17 on another.machine; end it "
                        "first, or remove " +
                        lock + " if it has ended");
}

void TestOwnFolder::lockThatCannotBeWrittenIsExplained()
{
    const FixtureFolder folder;
    const QString inTheWay = folder.write("file", "x");
    QString error;
    QVERIFY(!FolderLock(inTheWay).take(0, &error));
    QCOMPARE(error, inTheWay + ": the folder cannot be made: " + systemReason(ENOTDIR));

    bool isTaken = true;
    {
        const FullDisk disk(2);
        isTaken = FolderLock(folder.path("state")).take(0, &error);
    }
    QVERIFY(!isTaken);
    QCOMPARE(error,
             folder.path("state") + ": the folder cannot be written: " + systemReason(EFBIG));
}

void TestOwnFolder::linkGoesWithoutWhatItLeadsTo()
{
    const FixtureFolder folder;
    const QString mine = folder.write("mine/thesis.txt", "x");
    folder.link("state/runs", "mine");
    folder.write("state/home/deeper/file", "x");
    folder.link("state/home/link", "mine");
    QString error;
    for (const char* name : {"state/runs", "state/home", "state/none"})
        QVERIFY2(removeAll(folder.path(name), &error), qPrintable(error));
    QCOMPARE(entries(folder.path("state")), QStringList());
    QVERIFY(QFileInfo::exists(mine));
}

ZAN_TEST_MAIN(TestOwnFolder)
#include "tst_ownfolder.moc"
