#include "sealfixtures.h"

#include <openfolder.h>

#include <reasons.h>
#include <testmain.h>

#include <sys/stat.h>
#include <unistd.h>

namespace {

using Kind = OpenFolder::Entry::Kind;

OpenFolder opened(const FixtureFolder& folder)
{
    QString error;
    std::optional<OpenFolder> open = OpenFolder::open(folder.path(), &error);
    if (!open)
        qFatal("%s", qPrintable(error));
    return std::move(*open);
}

// The most memory that the process ever had, in KiB.
int peakMemory()
{
    const QByteArray status = contentOf("/proc/self/status");
    const int line = status.indexOf("VmHWM:");
    return status.mid(line + 6, status.indexOf("kB", line) - line - 6).trimmed().toInt();
}

constexpr char digestOfNothing[] =
    "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";

} // namespace

class TestOpenFolder : public QObject
{
    Q_OBJECT

private slots:
    void listsWhatStandsInIt();
    void sumsAFile_data();
    void sumsAFile();
    void readsAHugeFileInLittleMemory();
    void readsUpToALimit();
    void refusesWhatIsNoRegularFile_data();
    void refusesWhatIsNoRegularFile();
    void noticesAFileThatChangesWhileItIsRead_data();
    void noticesAFileThatChangesWhileItIsRead();
    void staysTheSameFolder();
    void saysWhyThereIsNoFolder();
};

void TestOpenFolder::listsWhatStandsInIt()
{
    const FixtureFolder folder;
    folder.write("b", "12345");
    folder.write(".a", "");
    folder.makeFolder("c");
    folder.link("d", "b");
    folder.link("e", "nowhere");
    ::mkfifo(QFile::encodeName(folder.path("f")).constData(), 0600);
    QString error;
    QStringList listed;
    const auto entries = opened(folder).entries(&error);
    QVERIFY2(entries, qPrintable(error));
    for (const OpenFolder::Entry& entry : *entries) {
        listed += QString("%1 %2").arg(QString::fromUtf8(entry.name), entry.kindText());
        if (entry.kind == Kind::File)
            listed.last() += QString(" of %1 bytes").arg(entry.size);
    }
    QCOMPARE(listed,
             (QStringList{".a is a file of 0 bytes", "b is a file of 5 bytes", "c is a folder",
                          "d is a symbolic link", "e is a symbolic link", "f is no regular file"}));
}

void TestOpenFolder::sumsAFile_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("digest");
    QTest::newRow("nothing") << QByteArray() << digestOfNothing;
    QTest::newRow("three bytes")
        << QByteArray("abc") << "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
    QTest::newRow("a million bytes")
        << QByteArray(1000000, 'a')
        << "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0";
}

void TestOpenFolder::sumsAFile()
{
    QFETCH(const QByteArray, content);
    const FixtureFolder folder;
    folder.write("a", content);
    qint64 bytes = 0;
    QString error;
    const auto digest = opened(folder).sha256(
        "a", [&](qint64 count) { bytes += count; }, &error);
    QVERIFY2(digest, qPrintable(error));
    QTEST(QString(digest->toHex()), "digest");
    QCOMPARE(bytes, qint64(content.size()));
}

void TestOpenFolder::readsAHugeFileInLittleMemory()
{
    const FixtureFolder folder;
    const QString file = folder.write("huge", "");
    // A file with a hole takes no room.
    QVERIFY(QFile::resize(file, 200LL << 20));
    const int before = peakMemory();
    QString error;
    const auto digest = opened(folder).sha256("huge", nullptr, &error);
    QCOMPARE(QString(digest->toHex()),
             QString("72abf2ca8f36943ebe2e49ca3a51d409ca5f0bfcffab6c9d25643c17c32889da"));
    QVERIFY2(peakMemory() - before < 4096, qPrintable(QString::number(peakMemory() - before)));
}

void TestOpenFolder::readsUpToALimit()
{
    const FixtureFolder folder;
    folder.write("a", "12345");
    QString error;
    QCOMPARE(*opened(folder).read("a", 5, &error), QByteArray("12345"));
    QVERIFY(!opened(folder).read("a", 4, &error));
    QCOMPARE(error, QString("is longer than 4 bytes"));
    QVERIFY(!opened(folder).read("b", 5, &error));
    QCOMPARE(error, systemReason(ENOENT));
}

void TestOpenFolder::refusesWhatIsNoRegularFile_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("reason");
    QTest::newRow("a link") << QByteArray("link") << "is a symbolic link";
    QTest::newRow("a folder") << QByteArray("folder") << "is no regular file";
    QTest::newRow("a pipe that nobody writes to") << QByteArray("pipe") << "is no regular file";
    QTest::newRow("nothing") << QByteArray("none") << systemReason(ENOENT);
}

void TestOpenFolder::refusesWhatIsNoRegularFile()
{
    QFETCH(const QByteArray, name);
    const FixtureFolder folder;
    folder.write("file", "content");
    folder.link("link", "file");
    folder.makeFolder("folder");
    ::mkfifo(QFile::encodeName(folder.path("pipe")).constData(), 0600);
    QString error;
    QVERIFY(!opened(folder).sha256(name, nullptr, &error));
    QTEST(error, "reason");
    error.clear();
    QVERIFY(!opened(folder).read(name.constData(), 100, &error));
    QTEST(error, "reason");
}

void TestOpenFolder::noticesAFileThatChangesWhileItIsRead_data()
{
    QTest::addColumn<qint64>("size");
    QTest::newRow("it grows") << qint64(400000);
    QTest::newRow("it shrinks") << qint64(70000);
}

void TestOpenFolder::noticesAFileThatChangesWhileItIsRead()
{
    QFETCH(const qint64, size);
    const FixtureFolder folder;
    const QString file = folder.write("a", QByteArray(200000, 'a'));
    QString error;
    const auto change = [&](qint64) {
        QFile::resize(file, size);
    };
    QVERIFY(!opened(folder).sha256("a", change, &error));
    QCOMPARE(error, QString("was changed while it was read"));
}

void TestOpenFolder::staysTheSameFolder()
{
    const FixtureFolder outer;
    outer.write("folder/a", "");
    QString error;
    const std::optional<OpenFolder> open = OpenFolder::open(outer.path("folder"), &error);
    QVERIFY(QFile::rename(outer.path("folder"), outer.path("elsewhere")));
    outer.write("folder/a", "another one");
    QCOMPARE(QString(open->sha256("a", nullptr, &error)->toHex()), QString(digestOfNothing));
}

void TestOpenFolder::saysWhyThereIsNoFolder()
{
    const FixtureFolder folder;
    QString error;
    QVERIFY(!OpenFolder::open(folder.path("none"), &error));
    QCOMPARE(error, systemReason(ENOENT));
    QVERIFY(!OpenFolder::open(folder.write("file", ""), &error));
    QCOMPARE(error, systemReason(ENOTDIR));
}

ZAN_TEST_MAIN(TestOpenFolder)
#include "tst_openfolder.moc"
