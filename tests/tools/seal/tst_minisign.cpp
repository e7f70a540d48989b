#include "sealfixtures.h"

#include <minisign.h>

#include <reasons.h>
#include <testmain.h>

namespace {

const MinisignSecretKey::AskPassword nobodyAsks = [] {
    QTest::qFail("asks for a password", __FILE__, __LINE__);
    return QByteArray();
};

MinisignPublicKey sampleKey()
{
    return MinisignPublicKey::fromText(sample::publicKey).value();
}

MinisignSecretKey sampleSecretKey()
{
    QString error;
    return MinisignSecretKey::parse(sample::secretKeyFile, nobodyAsks, &error).value();
}

} // namespace

class TestMinisign : public QObject
{
    Q_OBJECT

private slots:
    void verifiesWhatMinisignSigned_data();
    void verifiesWhatMinisignSigned();
    void refusesASignature_data();
    void refusesASignature();
    void refusesEachShorterSignature();
    void refusesEachChangedCharacter();
    void readsAPublicKeyFromItsTextOrItsFile();
    void refusesAPublicKey_data();
    void refusesAPublicKey();
    void signsAsMinisignDoes();
    void readsAKeyWithItsPassword();
    void refusesASecretKey_data();
    void refusesASecretKey();
};

void TestMinisign::verifiesWhatMinisignSigned_data()
{
    QTest::addColumn<QByteArray>("signature");
    QTest::addColumn<QString>("comment");
    const QString comment = "timestamp:1795316785\tfile:f";

    QTest::newRow("of the bytes") << QByteArray(sample::signatureOfBytes) << comment;
    QTest::newRow("of their hash") << QByteArray(sample::signatureOfHash) << comment + "\thashed";
    QTest::newRow("with other line ends")
        << QByteArray(sample::signatureOfHash).replace("\n", "\r\n") << comment + "\thashed";
    QTest::newRow("with another untrusted comment")
        << QByteArray(sample::signatureOfBytes).replace("minisign secret key", "me") << comment;
}

void TestMinisign::verifiesWhatMinisignSigned()
{
    QFETCH(const QByteArray, signature);
    QFETCH(const QString, comment);
    QString error;
    QVERIFY(isMinisignSignature(signature));
    QCOMPARE(sampleKey().verify(sample::message, signature, &error).value_or(error), comment);
}

void TestMinisign::refusesASignature_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QByteArray>("signature");
    QTest::addColumn<QString>("reason");
    const QByteArray message(sample::message);
    const QByteArray key(sample::publicKey);
    const QByteArray hashed(sample::signatureOfHash);
    const QByteArray whole(sample::signatureOfBytes);
    const QByteArray sameIdOtherKey = [] {
        QByteArray bytes = QByteArray::fromBase64(sample::publicKey);
        const QByteArray other = QByteArray::fromBase64(sample::otherPublicKey);
        return (bytes.left(10) + other.mid(10)).toBase64();
    }();

    QTest::newRow("of another text")
        << QByteArray("y") << key << whole << "does not fit what is signed";
    QTest::newRow("of another text's hash")
        << QByteArray("y") << key << hashed << "does not fit what is signed";
    QTest::newRow("of another key")
        << message << QByteArray(sample::otherPublicKey) << hashed
        << "is made with the key 6A205BC171434DB7, not 3F29476C14683F82";
    QTest::newRow("of another key with the same id")
        << message << sameIdOtherKey << hashed << "does not fit what is signed";
    QTest::newRow("with an altered trusted comment")
        << message << key << QByteArray(hashed).replace("file:f", "file:g")
        << "does not fit its trusted comment";
    QTest::newRow("with the trusted comment of another signature")
        << message << key
        << hashed.left(hashed.indexOf("trusted comment: t")) +
               whole.mid(whole.indexOf("trusted comment: t"))
        << "does not fit its trusted comment";
    QTest::newRow("of the hash that says to be of the bytes")
        << message << key << QByteArray(hashed).replace("\nRUS", "\nRWS")
        << "does not fit what is signed";
    QTest::newRow("of an unknown kind")
        << message << key << QByteArray(hashed).replace("\nRUS", "\nRkS")
        << "is no minisign signature";
    QTest::newRow("without a trusted comment")
        << message << key << hashed.left(hashed.indexOf("trusted comment: t"))
        << "is no minisign signature";
    QTest::newRow("with something behind it") << message << key << hashed + "more\n"
                                              << "is no minisign signature";
    QTest::newRow("of no text at all")
        << message << key << QByteArray() << "is no minisign signature";
}

void TestMinisign::refusesASignature()
{
    QFETCH(const QByteArray, message);
    QFETCH(const QByteArray, key);
    QFETCH(const QByteArray, signature);
    QFETCH(const QString, reason);
    QString error;
    QVERIFY(!MinisignPublicKey::fromText(key)->verify(message, signature, &error));
    QCOMPARE(error, reason);
}

void TestMinisign::refusesEachShorterSignature()
{
    const QByteArray whole(sample::signatureOfHash);
    QString error;
    // Only the last line's end may be missing.
    QVERIFY(sampleKey().verify(sample::message, whole.left(whole.size() - 1), &error));
    for (int size = 0; size < whole.size() - 1; ++size) {
        if (sampleKey().verify(sample::message, whole.left(size), &error))
            QFAIL(qPrintable(QString("takes %1 characters for all").arg(size)));
    }
}

void TestMinisign::refusesEachChangedCharacter()
{
    const QByteArray whole(sample::signatureOfHash);
    const int untrusted = int(strlen("untrusted comment: "));
    for (int place = 0; place < whole.size() - 1; ++place) {
        QByteArray changed = whole;
        changed[place] = changed[place] == 'x' ? 'y' : 'x';
        QString error;
        const bool isTaken = sampleKey().verify(sample::message, changed, &error).has_value();
        const bool isUntrusted = place >= untrusted && place < whole.indexOf('\n');
        if (isTaken != isUntrusted)
            QFAIL(qPrintable(QString("the character %1 is %2")
                                 .arg(place)
                                 .arg(isTaken ? "not checked" : "checked: " + error)));
    }
}

void TestMinisign::readsAPublicKeyFromItsTextOrItsFile()
{
    const FixtureFolder folder;
    QString error;
    QCOMPARE(MinisignPublicKey::read(sample::publicKey, &error)->id(), "6A205BC171434DB7");
    const QString file = folder.write("a key.pub", sample::publicKeyFile);
    QCOMPARE(MinisignPublicKey::read(file, &error)->id(), "6A205BC171434DB7");
    QCOMPARE(error, QString());
}

void TestMinisign::refusesAPublicKey_data()
{
    QTest::addColumn<QByteArray>("content");
    const QByteArray file(sample::publicKeyFile);

    QTest::newRow("empty") << QByteArray();
    QTest::newRow("a secret one") << QByteArray(sample::secretKeyFile);
    QTest::newRow("cut") << file.left(file.size() - 3);
    QTest::newRow("without a comment") << QByteArray(sample::publicKey) + '\n';
    QTest::newRow("of another kind") << QByteArray(file).replace("\nRWS", "\nRUS");
    QTest::newRow("with something behind it") << file + "more\n";
}

void TestMinisign::refusesAPublicKey()
{
    QFETCH(const QByteArray, content);
    const FixtureFolder folder;
    const QString file = folder.write("key.pub", content);
    QString error;
    QVERIFY(!MinisignPublicKey::read(file, &error));
    QCOMPARE(error, file + ": is no minisign public key");
    QVERIFY(!MinisignPublicKey::read(folder.path("other.pub"), &error));
    QCOMPARE(error, folder.path("other.pub") + ": " + systemReason(ENOENT));
}

void TestMinisign::signsAsMinisignDoes()
{
    const MinisignSecretKey key = sampleSecretKey();
    QCOMPARE(key.publicKeyText(), QString(sample::publicKey));
    QByteArray expected(sample::signatureOfHash);
    expected.replace("signature from minisign secret key", "signature made by imagetool");
    // Ed25519 signatures of the same are the same.
    QCOMPARE(key.sign(sample::message, "timestamp:1795316785\tfile:f\thashed"), expected);
}

void TestMinisign::readsAKeyWithItsPassword()
{
    const QByteArray hidden = hiddenKey("open sesame");
    QString error;
    const auto key = MinisignSecretKey::parse(
        hidden, [] { return QByteArray("open sesame"); }, &error);
    QVERIFY2(key, qPrintable(error));
    QCOMPARE(key->publicKeyText(), QString(sample::publicKey));

    for (const QByteArray wrong : {"open sesam", "", "open sesame "}) {
        QVERIFY(!MinisignSecretKey::parse(
            hidden, [&] { return wrong; }, &error));
        QCOMPARE(error, QString("cannot be read with this password"));
    }
}

void TestMinisign::refusesASecretKey_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("reason");
    const QByteArray file(sample::secretKeyFile);
    const QString none = "is no minisign secret key";
    const auto replaced = [](int at, const QByteArray& by) {
        return changedSecretKey([&](QByteArray* bytes) { bytes->replace(at, by.size(), by); });
    };

    QTest::newRow("empty") << QByteArray() << none;
    QTest::newRow("a public one") << QByteArray(sample::publicKeyFile) << none;
    QTest::newRow("cut") << file.left(file.size() - 5) << none;
    QTest::newRow("a line too many") << file + "more\n" << none;
    QTest::newRow("of another kind") << replaced(0, "ED") << none;
    QTest::newRow("with another checksum") << replaced(4, "B3") << none;
    QTest::newRow("with another kind of password") << replaced(2, "Ar") << none;
    QTest::newRow("a wrong seed") << replaced(62, "?") << "is damaged";
    QTest::newRow("a wrong public half") << replaced(100, "?") << "is damaged";
    QTest::newRow("a wrong sum") << replaced(126, "?") << "is damaged";
    QTest::newRow("a password that costs years")
        << replaced(2, QByteArray("ScB2") + QByteArray(32, 's') + QByteArray(8, '\x7f'))
        << "is damaged";
    QTest::newRow("a password that costs all memory")
        << replaced(2, QByteArray("ScB2") + QByteArray(32, 's') + QByteArray(8, '\0') +
                           QByteArray(8, '\x7f'))
        << "is damaged";
}

void TestMinisign::refusesASecretKey()
{
    QFETCH(const QByteArray, content);
    QFETCH(const QString, reason);
    QString error;
    QVERIFY(!MinisignSecretKey::parse(
        content, [] { return QByteArray("x"); }, &error));
    QCOMPARE(error, reason);
}

ZAN_TEST_MAIN(TestMinisign)
#include "tst_minisign.moc"
