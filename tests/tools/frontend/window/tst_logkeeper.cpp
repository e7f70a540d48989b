#include <logkeeper.h>
#include <logview.h>

#include <elsewhere.h>
#include <fixturefiles.h>
#include <fulldisk.h>
#include <reasons.h>
#include <widgettestmain.h>

#include <QFile>
#include <QSignalSpy>

namespace {

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// A log that is kept, as one start of a program has it.
struct Start
{
    explicit Start(const QString& file) : keeper(view), failures(&keeper, &LogKeeper::failed)
    {
        isKept = keeper.keepIn(file, &error);
    }

    /// Sender and text, without the time; a further line of a text stands alone.
    QStringList lines() const
    {
        QStringList lines = view.wholeText().split('\n', Qt::SkipEmptyParts);
        for (QString& line : lines)
            line = line.mid(line.indexOf("  ")).simplified();
        return lines;
    }

    LogView view;
    LogKeeper keeper;
    QSignalSpy failures;
    QString error;
    bool isKept = false;
};

const QByteArray oldLine =
    R"({"sender":"Frontend","text":"long ago","time":"2026-03-01T11:00:05.017Z"})";

} // namespace

class TestLogKeeper : public QObject
{
    Q_OBJECT

private slots:
    void nextStartGoesOnWithTheLog()
    {
        const FixtureFolder folder;
        const QString file = folder.path("log.jsonl");
        {
            Start first(file);
            QVERIFY2(first.isKept, qPrintable(first.error));
            first.view.add("Frontend", "connected to \"Köln\"");
            first.view.add("Module", "two\nlines");
        }
        {
            // Nothing but what is in the file by now outlives a process that is killed.
            Start second(file);
            QCOMPARE(second.lines(),
                     (QStringList{"Frontend connected to \"Köln\"", "Module two", "lines"}));
            second.view.add("Frontend", "again");
        }
        const Start third(file);
        QCOMPARE(third.view.messageCount(), 3);
        QCOMPARE(third.lines().constLast(), QString("Frontend again"));
        QCOMPARE(third.failures.count(), 0);
    }

    void timesAreThoseOfTheMessages()
    {
        const Elsewhere elsewhere("ar_EG", "XXX-5:45");
        const FixtureFolder folder;
        const Start start(folder.write("log.jsonl", oldLine + '\n'));
        QCOMPARE(start.view.wholeText(),
                 QString("2026-03-01 16:45:05.017+05:45  Frontend    long ago\n"));
        QCOMPARE(contentOf(folder.path("log.jsonl")), oldLine + '\n');
    }

    void damagedLinesAreLeftOut_data()
    {
        QTest::addColumn<QByteArray>("damaged");
        QTest::newRow("one that was cut off") << oldLine.left(30);
        QTest::newRow("no JSON") << QByteArray("hello\n");
        QTest::newRow("JSON of another kind") << QByteArray("[1, 2]\n");
        QTest::newRow("without a text")
            << QByteArray(R"({"sender":"A","time":"2026-03-01T11:00:05.017Z"})") + '\n';
        QTest::newRow("with a time that is none")
            << QByteArray(R"({"sender":"A","text":"x","time":"yesterday"})") + '\n';
        QTest::newRow("zero bytes") << QByteArray(1000, '\0');
    }

    void damagedLinesAreLeftOut()
    {
        QFETCH(const QByteArray, damaged);
        const FixtureFolder folder;
        const QString file = folder.write("log.jsonl", oldLine + '\n' + damaged);
        {
            Start start(file);
            QVERIFY2(start.isKept, qPrintable(start.error));
            QCOMPARE(start.lines(), QStringList{"Frontend long ago"});
            start.view.add("Frontend", "goes on");
        }
        QCOMPARE(contentOf(file).count('\n'), 2);
        QCOMPARE(Start(file).view.messageCount(), 2);
    }

    void oldMessagesGo()
    {
        const FixtureFolder folder;
        const QString file =
            folder.write("log.jsonl", (oldLine + '\n').repeated(LogKeeper::maxEarlier) +
                                          QByteArray(oldLine).replace("long ago", "last") + '\n');
        const Start start(file);
        QCOMPARE(start.view.messageCount(), LogKeeper::maxEarlier);
        QCOMPARE(start.lines().constLast(), QString("Frontend last"));
        QCOMPARE(contentOf(file).count('\n'), LogKeeper::maxEarlier);
    }

    void fullDiskIsToldOnceAndLeavesWholeLines()
    {
        const FixtureFolder folder;
        const QString file = folder.path("log.jsonl");
        Start start(file);
        start.view.add("Frontend", "fits");
        const QByteArray before = contentOf(file);
        {
            const FullDisk disk(static_cast<rlim_t>(before.size() + 10));
            start.view.add("Frontend", "does not fit");
            start.view.add("Frontend", "nor does this");
        }
        start.view.add("Frontend", "too late");
        QCOMPARE(contentOf(file), before);
        QCOMPARE(start.failures.count(), 1);
        QCOMPARE(start.failures.constFirst().constFirst().toString(),
                 file + ": " + systemReason(EFBIG));
        QCOMPARE(start.view.messageCount(), 4);
    }

    void fileThatCannotBeWrittenIsTold()
    {
        const FixtureFolder folder;
        const Start nowhere(folder.path("no folder/log.jsonl"));
        QVERIFY(!nowhere.isKept);
        QCOMPARE(nowhere.error, folder.path("no folder/log.jsonl") + ": " + systemReason(ENOENT));

        const QString file = folder.write("log.jsonl", oldLine + '\n' + oldLine + '\n');
        {
            const FullDisk disk(10);
            const Start full(file);
            QVERIFY(!full.isKept);
            QCOMPARE(full.error, file + ": " + systemReason(EFBIG));
            QCOMPARE(full.view.messageCount(), 2);
        }
        QCOMPARE(contentOf(file), oldLine + '\n' + oldLine + '\n');
    }
};

ZAN_WIDGET_TEST_MAIN(TestLogKeeper)
#include "tst_logkeeper.moc"
