#include "counterexample.h"

#include "standin.h"

#include <faultjson.h>
#include <imagewriter.h>
#include <wholefile.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

#include <numeric>

namespace {

const QLatin1String folderKey("updateFolder");

QString folderName(const QString& path)
{
    return QFileInfo(path).completeBaseName() + QLatin1String("-files");
}

QJsonObject controllerJson(const ScenarioController& controller)
{
    return {{"hostName", controller.hostName},
            {"address", controller.address},
            {"model", controller.model},
            {"modelDescription", controller.modelDescription},
            {"board", controller.board},
            {"serial", controller.serial},
            {"pt", controller.pt},
            {"ct", controller.ct}};
}

QByteArray scenarioJson(const Finding& finding, const QString& path)
{
    const Scenario& system = *finding.example;
    const ScenarioController& master = system.controllers.constFirst();
    QJsonArray controllers;
    for (const ScenarioController& controller : system.controllers)
        controllers += controllerJson(controller);
    QJsonArray faults;
    for (const Fault& fault : system.faults)
        faults += faultToJson(fault);
    QJsonObject object{{"title", QStringLiteral("%1: Pt %2, Ct %3")
                                     .arg(finding.ruleName(),
                                          master.pt.section(QLatin1Char(' '), 0, 0), master.ct)},
                       {"protocol", system.protocol.toString().mid(1)},
                       {"backendModel", system.backendModel},
                       {folderKey, folderName(path)},
                       {"controllers", controllers}};
    if (!faults.isEmpty())
        object.insert("faults", faults);
    return QJsonDocument(object).toJson();
}

// Nothing is lost that was not written here.
bool isOfEarlierScenario(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QJsonObject object = QJsonDocument::fromJson(file.readAll()).object();
    return object.value(folderKey).toString() == folderName(path);
}

bool renewFolder(const QString& path, QString* error)
{
    const QString folder = counterexampleFolder(path);
    if (QFileInfo::exists(folder) && !isOfEarlierScenario(path)) {
        *error = QStringLiteral("%1: is there already, and is not of an earlier %2; remove it, or "
                                "name another file")
                     .arg(folder, QFileInfo(path).fileName());
        return false;
    }
    if (QDir(folder).removeRecursively() && QDir().mkpath(folder))
        return true;
    *error = QStringLiteral("%1: cannot be written").arg(folder);
    return false;
}

QVector<int> orderOf(const Finding& finding, const DeliveredFiles& delivery)
{
    if (!finding.order.isEmpty())
        return finding.order;
    QVector<int> order(static_cast<int>(delivery.images().size()));
    std::iota(order.begin(), order.end(), 0);
    return order;
}

bool writeStandIns(const Finding& finding, const DeliveredFiles& delivery, const QString& folder,
                   QString* error)
{
    const QVector<int> order = orderOf(finding, delivery);
    for (int position = 0; position < order.size(); ++position) {
        const DeliveredImage& image =
            delivery.images().at(static_cast<std::size_t>(order.at(position)));
        const QString name =
            finding.order.isEmpty() ? image.name : delivery.nameAt(position, order.at(position));
        if (!writeWholeFile(folder + QLatin1Char('/') + name,
                            controllerImageBytes(standInFor(image)), error))
            return false;
    }
    return true;
}

} // namespace

QString counterexampleFolder(const QString& path)
{
    return QFileInfo(path).absoluteDir().filePath(folderName(path));
}

bool writeCounterexample(const Finding& finding, const DeliveredFiles& delivery,
                         const QString& path, QString* error)
{
    return renewFolder(path, error) &&
           writeStandIns(finding, delivery, counterexampleFolder(path), error) &&
           writeWholeFile(path, scenarioJson(finding, path), error);
}
