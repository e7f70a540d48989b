#include "sealfixtures.h"

#include <deliverycheck.h>
#include <deliverysealing.h>

#include <testmain.h>

#include <QDir>

namespace {

// Names that sha256sum has to escape, and others that need care.
const QStringList& difficultNames()
{
    static const QStringList names = {
        "plain",     " blank ",  "a  b",  "*star",    "-dash",          "back\\slash",
        "line\nend", "return\r", "tab\t", "#comment", "SHA256SUMS.old", QString::fromUtf8("Ä€"),
        "\\lead",    "a\\nb"};
    return names;
}

void deliver(const FixtureFolder& folder)
{
    for (const QString& name : difficultNames())
        folder.write(name, "content of " + name.toUtf8());
}

ProgramRun sha256sum(const FixtureFolder& folder, const QStringList& arguments)
{
    return runIn(folder.path(), "sha256sum", arguments);
}

ProgramRun minisign(const FixtureFolder& folder, const QStringList& arguments,
                    const QByteArray& input = QByteArray())
{
    return runIn(folder.path(), "minisign", arguments, input);
}

/// Keys that minisign makes for one test.
struct Keys
{
    explicit Keys(const QByteArray& password = QByteArray())
    {
        QStringList arguments = {"-G", "-p", "public key", "-s", "secret key"};
        if (password.isEmpty())
            arguments += "-W";
        const ProgramRun run = minisign(folder, arguments, password + '\n' + password + '\n');
        if (run.exitCode != 0)
            qFatal("minisign makes no keys: %s", qPrintable(run.messages));
    }

    QString publicFile() const { return folder.path("public key"); }
    QString secretFile() const { return folder.path("secret key"); }
    MinisignSecretKey secret(const QByteArray& password = QByteArray()) const
    {
        QString error;
        const auto key = MinisignSecretKey::parse(
            contentOf(secretFile()), [&] { return password; }, &error);
        if (!key)
            qFatal("%s", qPrintable(error));
        return *key;
    }

    FixtureFolder folder;
};

void seal(const FixtureFolder& folder, const std::optional<MinisignSecretKey>& key = std::nullopt)
{
    int files = 0;
    QString error;
    if (DeliverySealing(key, "release 3.3.0").seal(folder.path(), &files, &error) !=
        DeliverySealing::Outcome::Done)
        qFatal("%s", qPrintable(error));
}

DeliveryReport checked(const FixtureFolder& folder, const QString& publicKey = QString())
{
    DeliveryCheck check;
    QString error;
    if (!publicKey.isEmpty() && !check.setPublicKey(publicKey, &error))
        qFatal("%s", qPrintable(error));
    return check.check(folder.path());
}

} // namespace

class TestSealInterop : public QObject
{
    Q_OBJECT

private slots:
    void sha256sumChecksWhatIsSealed();
    void sealsAsSha256sumWould();
    void takesWhatSha256sumWrote_data();
    void takesWhatSha256sumWrote();
    void minisignVerifiesWhatIsSealed();
    void takesWhatMinisignSigned_data();
    void takesWhatMinisignSigned();
    void readsAKeyUnderAPasswordOfMinisign();
};

void TestSealInterop::sha256sumChecksWhatIsSealed()
{
    const FixtureFolder folder;
    deliver(folder);
    seal(folder);
    const ProgramRun run = sha256sum(folder, {"--check", "--strict", "--quiet", "SHA256SUMS"});
    QCOMPARE(run.out + run.messages, QString());
    QCOMPARE(run.exitCode, 0);

    folder.write("line\nend", "other content");
    QCOMPARE(sha256sum(folder, {"--check", "--quiet", "SHA256SUMS"}).exitCode, 1);
}

void TestSealInterop::sealsAsSha256sumWould()
{
    const FixtureFolder folder;
    deliver(folder);
    QStringList names = QDir(folder.path()).entryList(QDir::Files);
    std::sort(names.begin(), names.end(),
              [](const QString& a, const QString& b) { return a.toUtf8() < b.toUtf8(); });
    const QString expected = sha256sum(folder, QStringList{"--"} + names).out;
    seal(folder);
    QCOMPARE(QString::fromUtf8(contentOf(folder.path("SHA256SUMS"))), expected);
}

void TestSealInterop::takesWhatSha256sumWrote_data()
{
    QTest::addColumn<QString>("option");
    QTest::newRow("text") << "--text";
    QTest::newRow("binary") << "--binary";
}

void TestSealInterop::takesWhatSha256sumWrote()
{
    QFETCH(const QString, option);
    const FixtureFolder folder;
    deliver(folder);
    const QString list = sha256sum(folder, QStringList{option, "--"} + difficultNames()).out;
    folder.write("SHA256SUMS", list.toUtf8());
    const DeliveryReport report = checked(folder);
    QCOMPARE(report.problems(), QStringList());
    QCOMPARE(report.verdict, DeliveryReport::Verdict::Complete);
    QCOMPARE(report.files.size(), difficultNames().size());
}

void TestSealInterop::minisignVerifiesWhatIsSealed()
{
    const Keys keys;
    const FixtureFolder folder;
    deliver(folder);
    seal(folder, keys.secret());
    const ProgramRun run = minisign(folder, {"-V", "-p", keys.publicFile(), "-m", "SHA256SUMS"});
    QCOMPARE(run.out, QString("Signature and comment signature verified\n"
                              "Trusted comment: release 3.3.0\n"));
    QCOMPARE(run.exitCode, 0);
    const QString key = keys.secret().publicKeyText();
    QCOMPARE(minisign(folder, {"-V", "-P", key, "-m", "SHA256SUMS"}).exitCode, 0);

    folder.write("SHA256SUMS", contentOf(folder.path("SHA256SUMS")) + "\n");
    QCOMPARE(minisign(folder, {"-V", "-P", key, "-m", "SHA256SUMS"}).exitCode, 1);
}

void TestSealInterop::takesWhatMinisignSigned_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::newRow("of the hash") << QStringList();
    QTest::newRow("of the bytes") << QStringList{"-l"};
    QTest::newRow("with comments of its own")
        << QStringList{"-c", "untrusted", "-t", "the trusted one"};
}

void TestSealInterop::takesWhatMinisignSigned()
{
    QFETCH(const QStringList, options);
    const Keys keys;
    const FixtureFolder folder;
    deliver(folder);
    seal(folder);
    const ProgramRun run =
        minisign(folder, QStringList{"-S", "-s", keys.secretFile(), "-m", "SHA256SUMS"} + options);
    QCOMPARE(run.exitCode, 0);
    const DeliveryReport report = checked(folder, keys.publicFile());
    QCOMPARE(report.problems(), QStringList());
    QCOMPARE(report.verdict, DeliveryReport::Verdict::Proven);
    if (options.contains("-t"))
        QCOMPARE(*report.comment, QString("the trusted one"));

    const Keys others;
    QCOMPARE(checked(folder, others.publicFile()).verdict, DeliveryReport::Verdict::Departs);
}

void TestSealInterop::readsAKeyUnderAPasswordOfMinisign()
{
    const Keys keys("open sesame");
    const FixtureFolder folder;
    deliver(folder);
    seal(folder, keys.secret("open sesame"));
    QCOMPARE(checked(folder, keys.publicFile()).verdict, DeliveryReport::Verdict::Proven);
}

ZAN_TEST_MAIN(TestSealInterop)
#include "tst_sealinterop.moc"
