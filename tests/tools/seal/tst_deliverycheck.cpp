#include "sealfixtures.h"

#include <checksumlist.h>
#include <deliverycheck.h>
#include <deliverysealing.h>

#include <reasons.h>
#include <testmain.h>

#include <QCryptographicHash>
#include <QDir>

#include <sys/stat.h>
#include <unistd.h>

namespace {

using Change = void (*)(const FixtureFolder&);
using Verdict = DeliveryReport::Verdict;
using State = CheckedFile::State;

const MinisignSecretKey& secretKey()
{
    static const MinisignSecretKey key = [] {
        QString error;
        return MinisignSecretKey::parse(sample::secretKeyFile, nullptr, &error).value();
    }();
    return key;
}

void seal(const FixtureFolder& folder, bool isSigned)
{
    const DeliverySealing sealing(isSigned ? std::make_optional(secretKey()) : std::nullopt,
                                  "release 3.3.0");
    int files = 0;
    QString error;
    if (sealing.seal(folder.path(), &files, &error) != DeliverySealing::Outcome::Done)
        qFatal("cannot seal the fixture: %s", qPrintable(error));
}

// What is sealed and then changed.
void deliver(const FixtureFolder& folder)
{
    folder.write("a.vx3img", "first image");
    folder.write("b.VX2znimg", "camera file");
    folder.write("read me", "");
}

QByteArray listOf(const FixtureFolder& folder)
{
    return contentOf(folder.path(checksumListName));
}

// Writes a list with a sound signature, as only the holder of the key could.
void writeSigned(const FixtureFolder& folder, const QByteArray& list)
{
    folder.write(checksumListName, list);
    folder.write(signatureName, secretKey().sign(list, "release 3.3.0"));
}

QString digestOf(const QByteArray& bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex();
}

DeliveryCheck checkWith(const char* publicKey)
{
    DeliveryCheck check;
    QString error;
    if (publicKey && !check.setPublicKey(publicKey, &error))
        qFatal("%s", qPrintable(error));
    return check;
}

} // namespace

Q_DECLARE_METATYPE(Change)
Q_DECLARE_METATYPE(Verdict)

class TestDeliveryCheck : public QObject
{
    Q_OBJECT

private slots:
    void findsADeliveryAsSealed();
    void findsEachAlteration_data();
    void findsEachAlteration();
    void findsEachForgery_data();
    void findsEachForgery();
    void refusesHostileLists_data();
    void refusesHostileLists();
    void tellsOfEachFileWhatItIs();
    void takesOrdinaryNamesOfAllKinds();
    void readsWhatThePlugInReads();
    void saysWhatIsNotSealed();
    void saysWhatCannotBeRead();
    void keepsAKeyThatWasSet();
    void tellsHowFarItIs();
};

void TestDeliveryCheck::findsADeliveryAsSealed()
{
    const FixtureFolder folder;
    deliver(folder);
    seal(folder, true);

    const DeliveryReport proven = checkWith(sample::publicKey).check(folder.path());
    QCOMPARE(proven.problems(), QStringList());
    QCOMPARE(proven.verdict, Verdict::Proven);
    QCOMPARE(proven.comment.value_or("none"), QString("release 3.3.0"));
    QCOMPARE(proven.summary(), QString("The update files in %1 are as they were sealed and signed "
                                       "(3 in all).")
                                   .arg(folder.path()));
    QVERIFY(checkWith(sample::publicKey).allowsLoading(proven));

    const DeliveryReport complete = checkWith(nullptr).check(folder.path());
    QCOMPARE(complete.problems(), QStringList());
    QCOMPARE(complete.verdict, Verdict::Complete);
    QVERIFY(!complete.comment);
    QCOMPARE(complete.summary(),
             QString("The update files in %1 are as they were sealed (3 in all); there was no "
                     "public key to tell by whom.")
                 .arg(folder.path()));
    QVERIFY(checkWith(nullptr).allowsLoading(complete));
    // Who has a key is not content with less.
    QVERIFY(!checkWith(sample::publicKey).allowsLoading(complete));
}

void TestDeliveryCheck::findsEachAlteration_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<QStringList>("problems");
    const auto row = [](const char* name, Change change, const QStringList& problems) {
        QTest::newRow(name) << change << problems;
    };

    row("a byte is another one",
        [](const FixtureFolder& folder) { folder.write("a.vx3img", "first imagE"); },
        {"a.vx3img: is not what was sealed"});
    row("a byte is missing",
        [](const FixtureFolder& folder) { folder.write("a.vx3img", "first imag"); },
        {"a.vx3img: is not what was sealed"});
    row("there is a byte more",
        [](const FixtureFolder& folder) { folder.write("a.vx3img", "first image\n"); },
        {"a.vx3img: is not what was sealed"});
    row("an empty file is no longer empty",
        [](const FixtureFolder& folder) { folder.write("read me", " "); },
        {"read me: is not what was sealed"});
    row("a file is empty", [](const FixtureFolder& folder) { folder.write("b.VX2znimg", ""); },
        {"b.VX2znimg: is not what was sealed"});
    row("a file is gone",
        [](const FixtureFolder& folder) { QFile::remove(folder.path("a.vx3img")); },
        {"a.vx3img: is missing"});
    row("a file is renamed",
        [](const FixtureFolder& folder) {
            QFile::rename(folder.path("a.vx3img"), folder.path("A.vx3img"));
        },
        {"A.vx3img: is not listed in SHA256SUMS", "a.vx3img: is missing"});
    row("two files have changed places",
        [](const FixtureFolder& folder) {
            folder.write("a.vx3img", "camera file");
            folder.write("b.VX2znimg", "first image");
        },
        {"a.vx3img: is not what was sealed", "b.VX2znimg: is not what was sealed"});
    row("a file came in", [](const FixtureFolder& folder) { folder.write("c.vx3img", "new"); },
        {"c.vx3img: is not listed in SHA256SUMS"});
    row("a hidden file came in", [](const FixtureFolder& folder) { folder.write(".c", "new"); },
        {".c: is not listed in SHA256SUMS"});
    row("a copy came in",
        [](const FixtureFolder& folder) { folder.write("a copy.vx3img", "first image"); },
        {"a copy.vx3img: is not listed in SHA256SUMS"});
    row("a file is a link to one of the same content",
        [](const FixtureFolder& folder) {
            QFile::remove(folder.path("a.vx3img"));
            folder.link("a.vx3img", "b.VX2znimg");
            folder.write("b.VX2znimg", "first image");
        },
        {"a.vx3img: is a symbolic link", "b.VX2znimg: is not what was sealed"});
    row("a link came in", [](const FixtureFolder& folder) { folder.link("c.vx3img", "a.vx3img"); },
        {"c.vx3img: is a symbolic link"});
    row("a link to nowhere came in",
        [](const FixtureFolder& folder) { folder.link("c.vx3img", "nowhere"); },
        {"c.vx3img: is a symbolic link"});
    row("a folder came in", [](const FixtureFolder& folder) { folder.write("more/c", "new"); },
        {"more: is a folder"});
    row("a file is a folder",
        [](const FixtureFolder& folder) {
            QFile::remove(folder.path("a.vx3img"));
            folder.makeFolder("a.vx3img");
        },
        {"a.vx3img: is a folder"});
    row("a file is a pipe that nobody writes to",
        [](const FixtureFolder& folder) {
            QFile::remove(folder.path("a.vx3img"));
            ::mkfifo(QFile::encodeName(folder.path("a.vx3img")).constData(), 0600);
        },
        {"a.vx3img: is no regular file"});
    row("an image stands in the place of the signature",
        [](const FixtureFolder& folder) { folder.write(signatureName, "first image"); },
        {"SHA256SUMS.minisig: is no minisign signature"});
    row("the list is cut in a name",
        [](const FixtureFolder& folder) {
            folder.write(checksumListName, listOf(folder).chopped(3));
        },
        {"read me: is not listed in SHA256SUMS", "read : is missing"});
    row("the list is cut in a checksum",
        [](const FixtureFolder& folder) {
            folder.write(checksumListName, listOf(folder).left(30));
        },
        {"SHA256SUMS: line 1: is not a checksum and a name as sha256sum writes them",
         "a.vx3img: is not listed in SHA256SUMS", "b.VX2znimg: is not listed in SHA256SUMS",
         "read me: is not listed in SHA256SUMS"});
    row("the list is empty",
        [](const FixtureFolder& folder) { folder.write(checksumListName, ""); },
        {"SHA256SUMS: lists no file", "a.vx3img: is not listed in SHA256SUMS",
         "b.VX2znimg: is not listed in SHA256SUMS", "read me: is not listed in SHA256SUMS"});
    row("the list leaves a file out",
        [](const FixtureFolder& folder) {
            const QByteArray list = listOf(folder);
            folder.write(checksumListName, list.mid(list.indexOf('\n') + 1));
        },
        {"a.vx3img: is not listed in SHA256SUMS"});
    row("the list is a link",
        [](const FixtureFolder& folder) {
            QFile::rename(folder.path(checksumListName), folder.path("list"));
            folder.link(checksumListName, "list");
        },
        {"SHA256SUMS: is a symbolic link"});
    row("the list is endless",
        [](const FixtureFolder& folder) {
            QFile::resize(folder.path(checksumListName), (1 << 20) + 1);
        },
        {"SHA256SUMS: is longer than 1048576 bytes"});
}

void TestDeliveryCheck::findsEachAlteration()
{
    QFETCH(const Change, change);
    QFETCH(const QStringList, problems);
    for (const char* key : {static_cast<const char*>(nullptr), sample::publicKey}) {
        const FixtureFolder folder;
        deliver(folder);
        seal(folder, key);
        change(folder);
        const DeliveryCheck check = checkWith(key);
        const DeliveryReport report = check.check(folder.path());
        QStringList found = report.problems();
        // A signed list that was altered is told as well.
        if (key && listOf(folder) != contentOf("none"))
            found.removeAll("SHA256SUMS.minisig: does not fit what is signed");
        std::sort(found.begin(), found.end());
        QStringList expected = problems;
        std::sort(expected.begin(), expected.end());
        QCOMPARE(found, expected);
        QCOMPARE(report.verdict, Verdict::Departs);
        QCOMPARE(report.summary(),
                 QString("The update files in %1 are not as they were sealed.").arg(folder.path()));
        QCOMPARE(check.allowsLoading(report), !key);
    }
}

void TestDeliveryCheck::findsEachForgery_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<QString>("problem");
    const auto row = [](const char* name, Change change, const QString& problem) {
        QTest::newRow(name) << change << problem;
    };

    row(
        "there is no signature",
        [](const FixtureFolder& folder) { QFile::remove(folder.path(signatureName)); },
        "SHA256SUMS.minisig: is missing");
    row(
        "a file is altered and listed anew",
        [](const FixtureFolder& folder) {
            QByteArray list = listOf(folder);
            folder.write("a.vx3img", "forged");
            const QString digest = digestOf("forged");
            folder.write(checksumListName, list.replace(0, 64, digest.toLatin1()));
        },
        "SHA256SUMS.minisig: does not fit what is signed");
    row(
        "the list is in another order",
        [](const FixtureFolder& folder) {
            QList<QByteArray> lines = listOf(folder).split('\n');
            lines.swapItemsAt(0, 1);
            folder.write(checksumListName, lines.join('\n'));
        },
        "SHA256SUMS.minisig: does not fit what is signed");
    row(
        "the signature is cut",
        [](const FixtureFolder& folder) {
            folder.write(signatureName, contentOf(folder.path(signatureName)).chopped(5));
        },
        "SHA256SUMS.minisig: is no minisign signature");
    row(
        "the signature is that of something else",
        [](const FixtureFolder& folder) { folder.write(signatureName, sample::signatureOfHash); },
        "SHA256SUMS.minisig: does not fit what is signed");
    row(
        "the trusted comment is another one",
        [](const FixtureFolder& folder) {
            QByteArray signature = contentOf(folder.path(signatureName));
            folder.write(signatureName, signature.replace("3.3.0", "9.9.9"));
        },
        "SHA256SUMS.minisig: does not fit its trusted comment");
    row(
        "the signature is a link",
        [](const FixtureFolder& folder) {
            QFile::rename(folder.path(signatureName), folder.path("../kept.minisig"));
            folder.link(signatureName, "../kept.minisig");
        },
        "SHA256SUMS.minisig: is a symbolic link");
    row(
        "the signature is endless",
        [](const FixtureFolder& folder) { QFile::resize(folder.path(signatureName), 1LL << 40); },
        "SHA256SUMS.minisig: is longer than 65536 bytes");
}

void TestDeliveryCheck::findsEachForgery()
{
    QFETCH(const Change, change);
    QFETCH(const QString, problem);
    const FixtureFolder folder;
    deliver(folder);
    seal(folder, true);
    change(folder);
    const DeliveryCheck check = checkWith(sample::publicKey);
    const DeliveryReport report = check.check(folder.path());
    QFile::remove(folder.path("../kept.minisig"));
    QCOMPARE(report.problems(), QStringList{problem});
    QCOMPARE(report.verdict, Verdict::Departs);
    QVERIFY(!report.comment);
    QVERIFY(!check.allowsLoading(report));

    // A key that made nothing of it takes nothing, whatever else is sound.
    const FixtureFolder sound;
    deliver(sound);
    seal(sound, true);
    const DeliveryReport strange = checkWith(sample::otherPublicKey).check(sound.path());
    QCOMPARE(strange.problems(),
             QStringList{"SHA256SUMS.minisig: is made with the key 6A205BC171434DB7, not "
                         "3F29476C14683F82"});
    QVERIFY(!checkWith(sample::otherPublicKey).allowsLoading(strange));
}

void TestDeliveryCheck::refusesHostileLists_data()
{
    QTest::addColumn<QByteArray>("more");
    QTest::addColumn<QString>("problem");
    const QByteArray outside = digestOf("outside").toLatin1();
    const QByteArray first = digestOf("first image").toLatin1();

    QTest::newRow("a way out of the folder")
        << outside + "  ../outside\n"
        << "SHA256SUMS: line 4: ../outside is no name of a file in this folder";
    QTest::newRow("another way to a file")
        << first + "  ./a.vx3img\n"
        << "SHA256SUMS: line 4: ./a.vx3img is no name of a file in this folder";
    QTest::newRow("a file twice") << first + "  a.vx3img\n"
                                  << "SHA256SUMS: line 4: a.vx3img is listed twice";
    QTest::newRow("a file twice, with two contents")
        << outside + "  a.vx3img\n"
        << "SHA256SUMS: line 4: a.vx3img is listed twice";
    QTest::newRow("itself")
        << first + "  SHA256SUMS\n"
        << "SHA256SUMS: line 4: SHA256SUMS cannot be listed, as it is part of the seal";
    QTest::newRow("a name with its end inside")
        << first + "  a.vx3img" + QByteArray(1, '\0') + "x\n"
        << "SHA256SUMS: line 4: a.vx3img\\x00x is no name of a file in this folder";
    QTest::newRow("a name longer than any") << first + "  " + QByteArray(5000, 'n') + '\n'
                                            << QString(5000, 'n') + ": is missing";
}

// With a sound signature: who signs such a list errs.
void TestDeliveryCheck::refusesHostileLists()
{
    QFETCH(const QByteArray, more);
    QFETCH(const QString, problem);
    const FixtureFolder outer;
    outer.write("outside", "outside");
    const FixtureFolder folder;
    deliver(folder);
    seal(folder, false);
    writeSigned(folder, listOf(folder) + more);
    const DeliveryReport report = checkWith(sample::publicKey).check(folder.path());
    QCOMPARE(report.problems(), QStringList{problem});
    QCOMPARE(report.verdict, Verdict::Departs);
}

void TestDeliveryCheck::tellsOfEachFileWhatItIs()
{
    const FixtureFolder folder;
    for (const char* name : {"altered", "missing", "sealed"})
        folder.write(name, name);
    seal(folder, false);
    folder.write("altered", "!");
    QFile::remove(folder.path("missing"));
    folder.write(QString::fromUtf8("neu\x1b.img"), "!");
    folder.makeFolder("folder");

    QStringList told;
    const DeliveryReport report = checkWith(nullptr).check(folder.path());
    for (const CheckedFile& file : report.files)
        told += QString("%1 %2 %3").arg(file.name).arg(int(file.state)).arg(file.reason);
    QCOMPARE(told,
             (QStringList{
                 QString("altered %1 is not what was sealed").arg(int(State::Altered)),
                 QString("folder %1 is a folder").arg(int(State::NotAFile)),
                 QString("missing %1 is missing").arg(int(State::Missing)),
                 QString("neu\\x1b.img %1 is not listed in SHA256SUMS").arg(int(State::NotListed)),
                 QString("sealed %1 ").arg(int(State::AsSealed))}));
}

void TestDeliveryCheck::takesOrdinaryNamesOfAllKinds()
{
    const FixtureFolder folder;
    const QStringList names = {" blank", "back\\slash",          "line\nend",      "*star",
                               "-dash",  QString::fromUtf8("Ä"), QString(255, 'x')};
    for (const QString& name : names)
        folder.write(name, name.toUtf8());
    seal(folder, true);
    const DeliveryReport report = checkWith(sample::publicKey).check(folder.path());
    QCOMPARE(report.problems(), QStringList());
    QCOMPARE(report.files.size(), names.size());
}

void TestDeliveryCheck::readsWhatThePlugInReads()
{
    const FixtureFolder folder;
    const DeliveryCheck check = checkWith(sample::publicKey);
    const DeliveryReport nothing = check.checkBeside(folder.path());
    QCOMPARE(nothing.verdict, Verdict::NothingDelivered);
    QCOMPARE(nothing.summary(), QString("No update files are delivered."));
    QVERIFY(check.allowsLoading(nothing));

    folder.write("parts/controller_update/a.vx3img", "first image");
    const DeliveryReport below = check.checkBeside(folder.path());
    QCOMPARE(below.verdict, Verdict::NotSealed);
    QCOMPARE(below.folder, folder.path("parts/controller_update"));

    folder.write("controller_update", "a file and no folder");
    const DeliveryReport file = check.checkBeside(folder.path());
    QCOMPARE(file.verdict, Verdict::CannotRead);
    QCOMPARE(file.folder, folder.path("controller_update"));
    QVERIFY(!check.allowsLoading(file));
}

void TestDeliveryCheck::saysWhatIsNotSealed()
{
    const FixtureFolder folder;
    deliver(folder);
    for (const char* key : {static_cast<const char*>(nullptr), sample::publicKey}) {
        const DeliveryReport report = checkWith(key).check(folder.path());
        QCOMPARE(report.verdict, Verdict::NotSealed);
        QCOMPARE(report.problems(), QStringList{"SHA256SUMS: is missing"});
        QCOMPARE(report.summary(),
                 QString("The update files in %1 are not sealed.").arg(folder.path()));
        QCOMPARE(checkWith(key).allowsLoading(report), !key);
    }
}

void TestDeliveryCheck::saysWhatCannotBeRead()
{
    const FixtureFolder folder;
    const QString path = folder.path("none");
    const DeliveryReport report = checkWith(sample::publicKey).check(path);
    QCOMPARE(report.verdict, Verdict::CannotRead);
    QCOMPARE(report.problems(), QStringList{path + ": " + systemReason(ENOENT)});
    QCOMPARE(report.summary(), QString("The update files in %1 cannot be read.").arg(path));
    QVERIFY(!checkWith(sample::publicKey).allowsLoading(report));
    QVERIFY(checkWith(nullptr).allowsLoading(report));
}

void TestDeliveryCheck::keepsAKeyThatWasSet()
{
    DeliveryCheck check;
    QString error;
    QVERIFY(!check.hasPublicKey());
    QVERIFY(check.setPublicKey(sample::publicKey, &error));
    QVERIFY(!check.setPublicKey("no key", &error));
    QCOMPARE(error, "no key: " + systemReason(ENOENT));
    QVERIFY(check.hasPublicKey());
}

void TestDeliveryCheck::tellsHowFarItIs()
{
    const FixtureFolder folder;
    folder.write("a", QByteArray(100000, 'a'));
    folder.write("b", QByteArray(5, 'b'));
    seal(folder, false);
    QStringList names;
    QVector<qint64> bytes;
    DeliveryCheck check;
    check.setProgress([&](const QString& name, qint64 doneBytes, qint64 allBytes) {
        QCOMPARE(allBytes, 100005);
        names += name;
        bytes += doneBytes;
    });
    check.check(folder.path());
    QVERIFY(std::is_sorted(bytes.begin(), bytes.end()));
    QCOMPARE(bytes.last(), 100005);
    names.removeDuplicates();
    QCOMPARE(names, (QStringList{"a", "b"}));
}

ZAN_TEST_MAIN(TestDeliveryCheck)
#include "tst_deliverycheck.moc"
