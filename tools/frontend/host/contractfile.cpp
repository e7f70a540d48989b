#include "contractfile.h"

#include <ContractVersion.h>

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

namespace {

constexpr int firstMajor = 1;

QString reasonWithoutVersion(const QString& file)
{
    return QStringLiteral("%1: tells no version of the contract between plug-in and frontend")
        .arg(file);
}

QString reasonOfAnother(const QString& library, const QString& version)
{
    return QStringLiteral(
               "%1: was built for version %2 of the contract between plug-in and "
               "frontend, and this frontend for %3.%4. Both have to come from deliveries "
               "that fit together.")
        .arg(library, version)
        .arg(ZAN_CONTRACT_MAJOR)
        .arg(ZAN_CONTRACT_MINOR);
}

} // namespace

QString contractFileOf(const QString& library)
{
    const QFileInfo file(library);
    return file.path() + QLatin1Char('/') + file.completeBaseName() +
           QLatin1String(".contract.json");
}

QString whyNotToCall(const QString& library)
{
    QString version = QStringLiteral("%1.0").arg(firstMajor);
    QFile file(contractFileOf(library));
    if (file.exists()) {
        if (!file.open(QIODevice::ReadOnly))
            return QStringLiteral("%1: %2").arg(file.fileName(), file.errorString());
        version = QJsonDocument::fromJson(file.readAll()).object().value("contract").toString();
    }
    const QRegularExpression form(QStringLiteral("\\A([0-9]+)\\.[0-9]+\\z"));
    const QRegularExpressionMatch match = form.match(version);
    bool isNumber = false;
    const int major = match.captured(1).toInt(&isNumber);
    if (!match.hasMatch() || !isNumber)
        return reasonWithoutVersion(file.fileName());
    return major == ZAN_CONTRACT_MAJOR ? QString() : reasonOfAnother(library, version);
}
