#include <childprocess.h>
#include <fixturefiles.h>
#include <testmain.h>

#include <QFile>

#include <sys/resource.h>

#if defined(__SANITIZE_ADDRESS__)
constexpr bool isMemorySanitized = true;
#else
constexpr bool isMemorySanitized = false;
#endif

/// Files of 200 MiB, which are not to be held in memory.
class TestLargeFiles : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void takeLittleMemory_data();
    void takeLittleMemory();

private:
    const FixtureFolder m_folder;
};

constexpr qint64 partBytes = 50 * 1024 * 1024;

void TestLargeFiles::initTestCase()
{
    QFile part(m_folder.path("part.bin"));
    QVERIFY(part.open(QIODevice::WriteOnly));
    QVERIFY(part.resize(partBytes));
    m_folder.write("description.json", R"({
        "kind": "controller", "layout": "dated", "release": "3.3.0",
        "releaseDate": "2025-09-02", "minorReleaseDate": "2025-09-30",
        "newPt": "3.3.0", "newCt": "1.4", "minPt": "2.0.0", "minCt": "1.4",
        "blocks": [
            {"type": "firmware", "minVersion": "2.0.0", "maxVersion": "2.0.65535",
             "file": "part.bin"},
            {"type": "firmware", "minVersion": "2.1.0", "maxVersion": "2.1.65535",
             "file": "part.bin"},
            {"type": "firmware", "minVersion": "2.2.0", "maxVersion": "2.65535.65535",
             "file": "part.bin"},
            {"type": "firmware", "minVersion": "3.0.0", "maxVersion": "3.3.0",
             "payload": {"records": 430000}}]})");
}

void TestLargeFiles::takeLittleMemory_data()
{
    QTest::addColumn<QStringList>("arguments");

    const QString image = m_folder.path("image.vx3img");
    QTest::newRow("build") << QStringList{"build", m_folder.path("description.json"), image};
    QTest::newRow("check") << QStringList{"check", "--strict", image};
    QTest::newRow("show") << QStringList{"show", image};
    QTest::newRow("extract") << QStringList{"extract", image, "--block",
                                            "1",       "-o",  m_folder.path("extracted.bin")};
}

void TestLargeFiles::takeLittleMemory()
{
    QFETCH(const QStringList, arguments);
    ChildProcess program;
    program.setStandardOutputFile(QProcess::nullDevice());
    program.start(QStringLiteral(IMAGETOOL), arguments);
    QVERIFY(program.waitForEnd());
    QCOMPARE(QString(program.readAllStandardError()), QString());
    QCOMPARE(program.exitCode(), 0);
    if (isMemorySanitized)
        QSKIP("a sanitizer takes memory of its own");
    rusage usage = {};
    QCOMPARE(getrusage(RUSAGE_CHILDREN, &usage), 0);
    QVERIFY2(usage.ru_maxrss < 32 * 1024, qPrintable(QString::number(usage.ru_maxrss) + " KiB"));
}

ZAN_TEST_MAIN(TestLargeFiles)
#include "tst_largefiles.moc"
