#include <wholefile.h>

#include <fixturefiles.h>
#include <fulldisk.h>
#include <reasons.h>
#include <testmain.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>

namespace {

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
}

QStringList entries(const FixtureFolder& folder)
{
    return QDir(folder.path())
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

QString makePipe(const FixtureFolder& folder)
{
    const QString path = folder.path("pipe");
    if (::mkfifo(QFile::encodeName(path).constData(), 0600) != 0)
        qFatal("cannot make a pipe");
    return path;
}

} // namespace

class TestWholeFile : public QObject
{
    Q_OBJECT

private slots:
    void earlierContentIsReplaced()
    {
        const FixtureFolder folder;
        QString error;
        QVERIFY(writeWholeFile(folder.path("log"), "one and more", &error));
        QVERIFY(writeWholeFile(folder.path("log"), "two", &error));
        QCOMPARE(contentOf(folder.path("log")), QByteArray("two"));
        QVERIFY(error.isEmpty());
    }

    void failureNamesTheFile()
    {
        const FixtureFolder folder;
        QString error;
        QVERIFY(!writeWholeFile(folder.path("missing/log"), "x", &error));
        QCOMPARE(error, folder.path("missing/log") + ": " + systemReason(ENOENT));
    }

    void earlierContentStaysOnAFullDisk_data()
    {
        QTest::addColumn<int>("bytes");
        QTest::newRow("few, which a buffer would have held until the end") << 100;
        QTest::newRow("many") << 100'000;
    }

    void earlierContentStaysOnAFullDisk()
    {
        QFETCH(const int, bytes);
        const FixtureFolder folder;
        const QString path = folder.write("log", "kept");
        QString error;
        bool isWritten = true;
        {
            const FullDisk disk(50);
            isWritten = writeWholeFile(path, QByteArray(bytes, 'x'), &error);
        }
        QVERIFY(!isWritten);
        QCOMPARE(error, path + ": " + systemReason(EFBIG));
        QCOMPARE(contentOf(path), QByteArray("kept"));
        QCOMPARE(entries(folder), QStringList("log"));
        QVERIFY(writeWholeFile(path, QByteArray(bytes, 'x'), &error));
        QCOMPARE(contentOf(path), QByteArray(bytes, 'x'));
    }

    void onlyRegularFilesAreReplaced_data()
    {
        QTest::addColumn<QString>("kind");
        for (const char* kind : {"folder", "pipe", "device", "link to a device"})
            QTest::newRow(kind) << kind;
    }

    void onlyRegularFilesAreReplaced()
    {
        QFETCH(const QString, kind);
        const FixtureFolder folder;
        QString path = "/dev/null";
        if (kind == "folder")
            path = folder.makeFolder("taken");
        else if (kind == "pipe")
            path = makePipe(folder);
        else if (kind == "link to a device" && QFile::link(path, folder.path("link")))
            path = folder.path("link");
        const auto permissions = QFileInfo(path).permissions();
        QString error;
        QVERIFY(!writeWholeFile(path, "x", &error));
        QCOMPARE(error, path + ": is no regular file, so it is left as it is");
        QVERIFY(QFileInfo::exists(path) && !QFileInfo(path).isFile());
        QCOMPARE(QFileInfo(path).permissions(), permissions);
    }

    void linkIsWrittenThrough()
    {
        const FixtureFolder folder;
        const QString target = folder.write("deeper/log", "old");
        const QString link = folder.link("link", "deeper/log");
        QString error;
        QVERIFY2(writeWholeFile(link, "new", &error), qPrintable(error));
        QCOMPARE(contentOf(target), QByteArray("new"));
        QVERIFY(QFileInfo(link).isSymLink());
    }

    void sameFileIsKnownByEveryName()
    {
        const FixtureFolder folder;
        const QString file = folder.write("a/file", "x");
        QVERIFY(isSameFile(file, folder.path("a/../a//file")));
        QVERIFY(isSameFile(file, folder.link("link", "a/file")));
        QVERIFY(!isSameFile(file, folder.write("other", "x")));
        QVERIFY(!isSameFile(folder.path("none"), folder.path("none")));
    }

    void nothingOlderIsOverwrittenByADamagedFile()
    {
        const FixtureFolder folder;
        folder.link("state.json.damaged-2", "nowhere");
        QStringList aside;
        QString error;
        for (const QByteArray text : {"first", "second", "third"}) {
            folder.write("state.json", text);
            aside += setDamagedFileAside(folder.path("state.json"), &error).value_or(QString());
        }
        QCOMPARE(error, QString());
        QVERIFY(!QFile::exists(folder.path("state.json")));
        QCOMPARE(aside, (QStringList{folder.path("state.json.damaged"),
                                     folder.path("state.json.damaged-3"),
                                     folder.path("state.json.damaged-4")}));
        QCOMPARE(contentOf(aside.at(0)), QByteArray("first"));
        QCOMPARE(contentOf(aside.at(1)), QByteArray("second"));
        QCOMPARE(contentOf(aside.at(2)), QByteArray("third"));
    }

    void onlyRegularFilesAreSetAside()
    {
        const FixtureFolder folder;
        folder.write("state.json/mine", "x");
        QString error;
        QVERIFY(!setDamagedFileAside(folder.path("state.json"), &error));
        QCOMPARE(error, folder.path("state.json") +
                            ": cannot be set aside: is no regular file, so it is left as it is");
        QCOMPARE(contentOf(folder.path("state.json/mine")), QByteArray("x"));
    }
};

ZAN_TEST_MAIN(TestWholeFile)
#include "tst_wholefile.moc"
