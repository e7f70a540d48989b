#include <wholefile.h>

#include <fixturefiles.h>
#include <testmain.h>

#include <QFile>

namespace {

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
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
        folder.makeFolder("taken");
        QString error;
        QVERIFY(!writeWholeFile(folder.path("taken"), "x", &error));
        QVERIFY2(error.startsWith(folder.path("taken") + ": "), qPrintable(error));
        QVERIFY(!writeWholeFile(folder.path("missing/log"), "x", &error));
        QCOMPARE(error, folder.path("missing/log") + ": No such file or directory");
    }

    void damagedFileTakesThePlaceOfAnEarlierOne()
    {
        const FixtureFolder folder;
        QString error;
        for (const QByteArray text : {"first", "second"}) {
            QVERIFY(writeWholeFile(folder.path("state.json"), text, &error));
            setDamagedFileAside(folder.path("state.json"));
        }
        QVERIFY(!QFile::exists(folder.path("state.json")));
        QCOMPARE(contentOf(folder.path("state.json.damaged")), QByteArray("second"));
    }
};

ZAN_TEST_MAIN(TestWholeFile)
#include "tst_wholefile.moc"
