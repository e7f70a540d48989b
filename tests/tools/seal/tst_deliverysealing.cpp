#include "sealfixtures.h"

#include <checksumlist.h>
#include <deliverysealing.h>

#include <fulldisk.h>
#include <reasons.h>
#include <testmain.h>

#include <QDir>

namespace {

using Outcome = DeliverySealing::Outcome;

constexpr char digestOfA[] = "ca978112ca1bbdcafac231b39a23dc4da786eff8147c4e72b9807785afee48bb";

MinisignSecretKey secretKey()
{
    QString error;
    return MinisignSecretKey::parse(sample::secretKeyFile, nullptr, &error).value();
}

/// How one sealing ended.
struct Sealed
{
    Outcome outcome;
    int files = -1;
    QString error;
};

Sealed seal(const FixtureFolder& folder, const DeliverySealing& sealing = DeliverySealing())
{
    Sealed sealed;
    sealed.outcome = sealing.seal(folder.path(), &sealed.files, &sealed.error);
    return sealed;
}

QStringList filesIn(const FixtureFolder& folder)
{
    return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden);
}

} // namespace

class TestDeliverySealing : public QObject
{
    Q_OBJECT

private slots:
    void listsEveryFile();
    void signsTheList();
    void sealsAnew();
    void keepsASignatureThatFits();
    void refusesWhatIsNoFile_data();
    void refusesWhatIsNoFile();
    void saysWhatCannotBeRead();
    void saysWhatCannotBeWritten();
    void tellsHowFarItIs();
};

void TestDeliverySealing::listsEveryFile()
{
    const FixtureFolder folder;
    for (const char* name : {"b", "a", ".hidden", "a b"})
        folder.write(name, "a");
    const Sealed sealed = seal(folder);
    QCOMPARE(sealed.error, QString());
    QCOMPARE(sealed.outcome, Outcome::Done);
    QCOMPARE(sealed.files, 4);
    QByteArray expected;
    for (const QByteArray name : {".hidden", "a", "a b", "b"})
        expected += digestOfA + ("  " + name) + '\n';
    QCOMPARE(contentOf(folder.path("SHA256SUMS")), expected);
    QVERIFY(!filesIn(folder).contains("SHA256SUMS.minisig"));
}

void TestDeliverySealing::signsTheList()
{
    const FixtureFolder folder;
    folder.write("a", "a");
    QCOMPARE(seal(folder, DeliverySealing(secretKey(), "3.3.0")).outcome, Outcome::Done);
    QString error;
    const auto key = MinisignPublicKey::fromText(sample::publicKey);
    QCOMPARE(key->verify(contentOf(folder.path("SHA256SUMS")),
                         contentOf(folder.path("SHA256SUMS.minisig")), &error)
                 .value_or(error),
             QString("3.3.0"));
}

void TestDeliverySealing::sealsAnew()
{
    const FixtureFolder folder;
    folder.write("a", "a");
    QCOMPARE(seal(folder, DeliverySealing(secretKey())).outcome, Outcome::Done);
    folder.write("b", "a");
    const Sealed sealed = seal(folder, DeliverySealing(secretKey()));
    QCOMPARE(sealed.outcome, Outcome::Done);
    QCOMPARE(sealed.files, 2);
    QCOMPARE(filesIn(folder), (QStringList{"a", "b", "SHA256SUMS", "SHA256SUMS.minisig"}));
}

void TestDeliverySealing::keepsASignatureThatFits()
{
    const FixtureFolder folder;
    folder.write("a", "a");
    QCOMPARE(seal(folder, DeliverySealing(secretKey())).outcome, Outcome::Done);
    const QByteArray signature = contentOf(folder.path("SHA256SUMS.minisig"));
    QCOMPARE(seal(folder).outcome, Outcome::Done);
    QCOMPARE(contentOf(folder.path("SHA256SUMS.minisig")), signature);

    const QByteArray list = contentOf(folder.path("SHA256SUMS"));
    folder.write("b", "a");
    const Sealed sealed = seal(folder);
    QCOMPARE(sealed.outcome, Outcome::CannotSeal);
    QCOMPARE(sealed.error, folder.path("SHA256SUMS.minisig") +
                               ": signs an earlier SHA256SUMS; seal with a key, or remove it");
    QCOMPARE(contentOf(folder.path("SHA256SUMS")), list);
}

void TestDeliverySealing::refusesWhatIsNoFile_data()
{
    QTest::addColumn<QString>("link");
    QTest::addColumn<QString>("folderName");
    QTest::addColumn<QStringList>("obstacles");

    QTest::newRow("an empty folder") << ""
                                     << "" << QStringList{": holds no file to be sealed"};
    QTest::newRow("a link and a folder")
        << "link"
        << "more"
        << QStringList{"/link: is a symbolic link; only files can be sealed",
                       "/more: is a folder; only files can be sealed"};
    QTest::newRow("a link in the place of the list")
        << "SHA256SUMS"
        << ""
        << QStringList{"/SHA256SUMS: is a symbolic link; only files can be sealed",
                       ": holds no file to be sealed"};
}

void TestDeliverySealing::refusesWhatIsNoFile()
{
    QFETCH(const QString, link);
    QFETCH(const QString, folderName);
    QFETCH(QStringList, obstacles);
    const FixtureFolder outside;
    const FixtureFolder folder;
    if (!link.isEmpty())
        QVERIFY(QFile::link(outside.write("outside", "kept"), folder.path(link)));
    if (!folderName.isEmpty())
        folder.makeFolder(folderName);
    const QStringList before = QDir(folder.path()).entryList();
    const Sealed sealed = seal(folder);
    for (QString& obstacle : obstacles)
        obstacle.prepend(folder.path());
    QCOMPARE(sealed.outcome, Outcome::CannotSeal);
    QCOMPARE(sealed.error.split('\n'), obstacles);
    QCOMPARE(contentOf(outside.path("outside")),
             link.isEmpty() ? QByteArray("cannot be read") : QByteArray("kept"));
    QCOMPARE(QDir(folder.path()).entryList(), before);
}

void TestDeliverySealing::saysWhatCannotBeRead()
{
    const FixtureFolder folder;
    int files = 0;
    QString error;
    QCOMPARE(DeliverySealing().seal(folder.path("none"), &files, &error), Outcome::CannotRead);
    QCOMPARE(error, folder.path("none") + ": " + systemReason(ENOENT));
}

void TestDeliverySealing::saysWhatCannotBeWritten()
{
    const FixtureFolder folder;
    folder.write("a", "a");
    folder.write("SHA256SUMS", "earlier");
    Sealed sealed;
    {
        const FullDisk full(0);
        sealed = seal(folder);
    }
    QCOMPARE(sealed.outcome, Outcome::CannotWrite);
    QCOMPARE(sealed.error, folder.path("SHA256SUMS") + ": " + systemReason(EFBIG));
    QCOMPARE(contentOf(folder.path("SHA256SUMS")), QByteArray("earlier"));
    QCOMPARE(filesIn(folder), (QStringList{"a", "SHA256SUMS"}));
}

void TestDeliverySealing::tellsHowFarItIs()
{
    const FixtureFolder folder;
    folder.write("a", QByteArray(100000, 'a'));
    folder.write("b", "b");
    folder.write("SHA256SUMS", "old");
    qint64 last = 0;
    DeliverySealing sealing;
    sealing.setProgress([&](const QString& /*name*/, qint64 doneBytes, qint64 allBytes) {
        QVERIFY(doneBytes > last);
        QCOMPARE(allBytes, 100001);
        last = doneBytes;
    });
    QCOMPARE(seal(folder, sealing).outcome, Outcome::Done);
    QCOMPARE(last, 100001);
}

ZAN_TEST_MAIN(TestDeliverySealing)
#include "tst_deliverysealing.moc"
