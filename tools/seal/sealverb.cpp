#include "checksumlist.h"
#include "deliverysealing.h"
#include "passwordprompt.h"
#include "sealverbs.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace {

constexpr qint64 longestKeyFile = 65536;
constexpr int longestComment = 1000; // minisign itself takes some more

// What minisign would write. The time can be told, so that a build can be repeated.
QString usualComment()
{
    bool isTold = false;
    const qint64 told = qEnvironmentVariable("SOURCE_DATE_EPOCH").toLongLong(&isTold);
    const qint64 now = QDateTime::currentSecsSinceEpoch();
    return QStringLiteral("timestamp:%1\tfile:%2\thashed")
        .arg(isTold ? told : now)
        .arg(QLatin1String(checksumListName));
}

bool isComment(const QString& text)
{
    return text.size() <= longestComment &&
           std::all_of(text.begin(), text.end(), [](QChar character) {
               return character.isPrint() || character.isSurrogate();
           });
}

std::optional<MinisignSecretKey> readKey(const VerbRun& run, const QString& fileName,
                                         QString* error)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("%1: %2").arg(fileName, file.errorString());
        return std::nullopt;
    }
    const auto ask = [&] {
        return readPassword(run.streams(), fileName);
    };
    QString reason;
    auto key = MinisignSecretKey::parse(file.read(longestKeyFile), ask, &reason);
    if (!key)
        *error = QStringLiteral("%1: %2").arg(fileName, reason);
    return key;
}

// Nobody means to deliver the key that seals the delivery.
bool standsIn(const QString& file, const QString& folder)
{
    return QFileInfo(QFileInfo(file).canonicalPath()) == QFileInfo(folder);
}

void tell(VerbRun& run, const QString& folder, int files, const QString& publicKey)
{
    if (run.json()) {
        QJsonObject object{{"folder", folder}, {"files", files}};
        if (!publicKey.isEmpty())
            object.insert("publicKey", publicKey);
        run.printJson(object);
        return;
    }
    const QString count =
        files == 1 ? QStringLiteral("1 file") : QStringLiteral("%1 files").arg(files);
    run.print(publicKey.isEmpty()
                  ? QStringLiteral("%1: %2 sealed\n").arg(folder, count)
                  : QStringLiteral("%1: %2 sealed, to be verified with the public key %3\n")
                        .arg(folder, count, publicKey));
}

VerbExit sealFolder(VerbRun& run, const std::optional<MinisignSecretKey>& key,
                    const QString& folder)
{
    if (key && standsIn(run.value("key"), folder)) {
        return run.fail(VerbRefused, QStringLiteral("%1: stands in the folder to be sealed, and "
                                                    "would be delivered")
                                         .arg(run.value("key")));
    }
    DeliverySealing sealing(key, run.isSet("comment") ? run.value("comment") : usualComment());
    sealing.setProgress([&](const QString&, qint64 doneBytes, qint64 allBytes) {
        run.showProgress(folder, doneBytes, allBytes);
    });
    int files = 0;
    QString error;
    const DeliverySealing::Outcome outcome = sealing.seal(folder, &files, &error);
    if (outcome == DeliverySealing::Outcome::CannotSeal)
        return run.fail(VerbRefused, error);
    if (outcome != DeliverySealing::Outcome::Done)
        return run.fail(VerbFailed, error);
    tell(run, folder, files, key ? key->publicKeyText() : QString());
    return VerbDone;
}

VerbExit seal(VerbRun& run)
{
    if (run.isSet("comment") && !run.isSet("key"))
        return run.fail(VerbWrongUsage, QStringLiteral("--comment needs --key"));
    if (!isComment(run.value("comment"))) {
        return run.fail(VerbWrongUsage,
                        QStringLiteral("--comment must be one line of up to %1 characters")
                            .arg(longestComment));
    }
    std::optional<MinisignSecretKey> key;
    if (run.isSet("key")) {
        QString error;
        key = readKey(run, run.value("key"), &error);
        if (!key)
            return run.fail(VerbFailed, error);
    }
    return run.forEachArgument([&](const QString& folder) { return sealFolder(run, key, folder); });
}

} // namespace

Verb sealVerb()
{
    Verb verb;
    verb.name = QStringLiteral("seal");
    verb.arguments = QStringLiteral("DIR...");
    verb.summary = QStringLiteral("Seals folders of update files against alterations");
    verb.description = QStringLiteral(
        "Writes SHA256SUMS into the folder, which 'sha256sum --check' reads as well, and with\n"
        "--key its signature SHA256SUMS.minisig, which 'minisign -V' verifies as well. The keys\n"
        "are made with 'minisign -G'. A key's password is asked for, or read from the standard\n"
        "input if that is no terminal.");
    verb.options = {
        {"key", "Signs the list with the secret key in FILE.", "FILE"},
        {"comment",
         "What minisign and hosts show of a sound signature; by default the time. "
         "SOURCE_DATE_EPOCH in the environment tells another time.",
         "TEXT"},
    };
    verb.fewestArguments = 1;
    verb.mostArguments = -1;
    verb.run = seal;
    return verb;
}
