#include "checksumlist.h"
#include "deliverycheck.h"
#include "sealverbs.h"

#include <QJsonArray>

namespace {

using Verdict = DeliveryReport::Verdict;

QString nameOf(CheckedFile::State state)
{
    switch (state) {
    case CheckedFile::State::AsSealed:
        return QStringLiteral("as-sealed");
    case CheckedFile::State::Altered:
        return QStringLiteral("altered");
    case CheckedFile::State::Missing:
        return QStringLiteral("missing");
    case CheckedFile::State::NotListed:
        return QStringLiteral("not-listed");
    case CheckedFile::State::NotAFile:
        return QStringLiteral("not-a-file");
    case CheckedFile::State::Unreadable:
        break;
    }
    return QStringLiteral("unreadable");
}

QString nameOf(Verdict verdict)
{
    switch (verdict) {
    case Verdict::Proven:
        return QStringLiteral("proven");
    case Verdict::Complete:
        return QStringLiteral("complete");
    case Verdict::NotSealed:
        return QStringLiteral("not-sealed");
    default:
        return QStringLiteral("departs");
    }
}

QJsonObject jsonOf(const DeliveryReport& report, VerbExit exit)
{
    QJsonArray files;
    for (const CheckedFile& file : report.files) {
        QJsonObject object{{"name", file.name}, {"state", nameOf(file.state)}};
        if (!file.reason.isEmpty())
            object.insert("reason", file.reason);
        files += object;
    }
    QJsonObject object{{"folder", report.folder},
                       {"verdict", nameOf(report.verdict)},
                       {"files", files},
                       {"problems", QJsonArray::fromStringList(report.problems())},
                       {"exitCode", exit}};
    if (report.comment)
        object.insert("trustedComment", *report.comment);
    return object;
}

QString textOf(const DeliveryReport& report)
{
    const QString separator =
        report.folder.endsWith(QLatin1Char('/')) ? QString() : QStringLiteral("/");
    QString text;
    const auto add = [&](const QString& line) {
        text += report.folder + separator + line + QLatin1Char('\n');
    };
    for (const QString& problem : report.sealProblems)
        add(problem);
    for (const CheckedFile& file : report.files) {
        add(QStringLiteral("%1: %2").arg(
            file.name, file.reason.isEmpty() ? QStringLiteral("as sealed") : file.reason));
    }
    return text;
}

// minisign itself puts tabs into its comments.
QString shown(QString comment)
{
    return shownName(comment.replace(QLatin1Char('\t'), QLatin1Char(' ')).toUtf8());
}

VerbExit verifyFolder(VerbRun& run, DeliveryCheck check, const QString& folder)
{
    check.setProgress([&](const QString&, qint64 doneBytes, qint64 allBytes) {
        run.showProgress(folder, doneBytes, allBytes);
    });
    const DeliveryReport report = check.check(folder);
    if (report.verdict == Verdict::CannotRead)
        return run.fail(VerbFailed, report.problems().join(QLatin1Char('\n')));
    const bool isSound = report.verdict == Verdict::Proven || report.verdict == Verdict::Complete;
    const VerbExit exit = isSound ? VerbDone : VerbRefused;
    if (run.json()) {
        run.printJson(jsonOf(report, exit));
        return exit;
    }
    run.print(textOf(report));
    if (report.comment)
        run.print(QStringLiteral("Trusted comment: %1\n").arg(shown(*report.comment)));
    if (isSound)
        run.print(report.summary() + QLatin1Char('\n'));
    else
        run.note(report.summary());
    return exit;
}

VerbExit verify(VerbRun& run)
{
    DeliveryCheck check;
    QString error;
    if (run.isSet("public-key") && !check.setPublicKey(run.value("public-key"), &error))
        return run.fail(VerbFailed, error);
    return run.forEachArgument(
        [&](const QString& folder) { return verifyFolder(run, check, folder); });
}

} // namespace

Verb verifyVerb()
{
    Verb verb;
    verb.name = QStringLiteral("verify");
    verb.arguments = QStringLiteral("DIR...");
    verb.summary = QStringLiteral("Checks folders of update files against their seals");
    verb.description = QStringLiteral(
        "Every file that SHA256SUMS lists must be there with the listed content, and "
        "no other\nmay be. With --public-key the list must be signed.");
    verb.options = {
        {"public-key",
         "The public key of minisign that the list must be signed with, or a file that holds it.",
         "FILE|KEY"},
    };
    verb.fewestArguments = 1;
    verb.mostArguments = -1;
    verb.run = verify;
    return verb;
}
