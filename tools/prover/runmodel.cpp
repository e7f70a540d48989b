#include "runmodel.h"

#include "inventory.h"
#include "plan.h"
#include "querychannel.h"

#include <BackendVersions.h>
#include <ZanController.h>
#include <ZanDisplay.h>
#include <protocolversions.h>
#include <reportedversion.h>

#include <QFileInfo>

#include <tuple>

namespace {

const QLatin1String replyDate(" 2025-01-01");

bool isWithin(const VersionInfo& version, const ZanUpdateBlock& block)
{
    return version >= block.minVer && version <= block.maxVer;
}

/// A controller that takes the blocks of a run, as the simulated ones do.
class Receiver
{
public:
    Receiver(const DeliveredFiles& delivery, RunStep* step)
        : m_delivery(delivery), m_step(*step), m_pt(step->pt), m_ct(step->ct)
    {
    }

    void run(const ReportedVersions& versions);

private:
    void take(const OfferedRow& row);
    bool takeBlock(const OfferedRow& row, int block, const VersionInfo& ctBefore);
    void refuse(const OfferedRow& row, int block);

    const DeliveredFiles& m_delivery;
    RunStep& m_step;
    ControllerState m_controller;
    VersionInfo m_pt; // what it has taken so far; it runs from the restart on
    VersionInfo m_ct;
};

void Receiver::run(const ReportedVersions& versions)
{
    m_controller.pt = versions.pt;
    m_controller.ct = versions.ct;
    for (const OfferedRow& row : qAsConst(m_step.rows)) {
        if (row.isPossible)
            take(row);
    }
    startStaged(&m_controller);
    m_step.after = {m_controller.pt.section(QLatin1Char(' '), 0, 0), m_controller.ct};
}

// A block that is not taken ends its row, and the run goes on with the next one.
void Receiver::take(const OfferedRow& row)
{
    m_step.runs = true;
    const VersionInfo ctBefore = m_ct;
    for (const int block : row.blocks) {
        if (!takeBlock(row, block, ctBefore))
            return;
    }
}

bool Receiver::takeBlock(const OfferedRow& row, int block, const VersionInfo& ctBefore)
{
    const DeliveredImage& image = m_delivery.images().at(static_cast<std::size_t>(row.image));
    const ZanUpdateBlock& entry = *image.data->getUpdateBlock(block);
    const bool movesPt = entry.type == ZAN_FIRMWARE_UPDATE;
    // All system blocks of an image start from the same Ct.
    const VersionInfo& at = movesPt ? m_pt : ctBefore;
    if (!isWithin(at, entry))
        m_step.strays += {row.image, block, at};
    const BlockContent& content = image.blocks.at(block);
    if (!content.isTaken()) {
        refuse(row, block);
        return false;
    }
    if (content.kind != BlockContent::Empty) {
        stage(&m_controller, content.head, QDate(2025, 1, 1));
        (movesPt ? m_pt : m_ct) = content.head.version;
    }
    return true;
}

void Receiver::refuse(const OfferedRow& row, int block)
{
    const DeliveredImage& image = m_delivery.images().at(static_cast<std::size_t>(row.image));
    if (m_step.failure.isEmpty())
        m_step.failure = QStringLiteral("block %1 of %2 is not taken: %3")
                             .arg(block)
                             .arg(image.name, image.blocks.at(block).reason);
}

} // namespace

bool operator==(const ReportedVersions& left, const ReportedVersions& right)
{
    return left.pt == right.pt && left.ct == right.ct;
}

bool operator==(const OfferedRow& left, const OfferedRow& right)
{
    const auto members = [](const OfferedRow& row) {
        return std::tie(row.image, row.blocks, row.from, row.to, row.isFirmware, row.isPossible);
    };
    return members(left) == members(right);
}

const QVector<ModelFamily>& modelFamilies()
{
    static const QVector<ModelFamily> families = {
        {QStringLiteral("ZAN"), 2, QStringLiteral("ZAN")},
        {QStringLiteral("BRIARSCOPE3"), briarscopeModel, QStringLiteral("BRIARSCOPE3")}};
    return families;
}

Scenario playedSystem(const ModelFamily& family, const ReportedVersions& versions)
{
    Scenario scenario = singleController(versions.pt + replyDate, versions.ct, family.model);
    scenario.backendModel = family.backendModel;
    ScenarioController slave = scenario.controllers.constFirst();
    slave.hostName = QStringLiteral("zan-left");
    slave.address = QStringLiteral("192.168.7.21");
    slave.serial = 732;
    scenario.controllers += slave;
    return scenario;
}

struct RunModel::Parts
{
    Parts(const DeliveredFiles& files, const ModelFamily& ofFamily, const QVector<int>& inOrder,
          QString* error)
        : delivery(files), family(ofFamily), order(inOrder), folder(files.layOut(inOrder, error)),
          served(firstServedBriarscope, currentProtocol, VersionInfo(1, 0), ofFamily.backendModel),
          unserved(lastUnservedBriarscope, currentProtocol, VersionInfo(1, 0),
                   ofFamily.backendModel)
    {
    }

    const DeliveredFiles& delivery;
    ModelFamily family;
    QVector<int> order;
    std::unique_ptr<QTemporaryDir> folder;
    QueryChannel channel;
    BackendVersions served;
    BackendVersions unserved;
    std::unique_ptr<Inventory> inventory;
    std::unique_ptr<Inventory> inventoryOfUnserved;

    Inventory& inventoryFor(const ReportedVersions& versions) const;
    OfferedRow rowOf(const Inventory& from, const ZanDisplay& display) const;
    bool isInOrder() const;
};

Inventory& RunModel::Parts::inventoryFor(const ReportedVersions& versions) const
{
    return reportedVersion(versions.pt) > lastUnservedBriarscope ? *inventory
                                                                 : *inventoryOfUnserved;
}

bool RunModel::Parts::isInOrder() const
{
    const QList<ZanData*>& images = inventory->listUpdates;
    for (int position = 0; position < images.size(); ++position) {
        const QString name = QFileInfo(images.at(position)->fileName()).fileName();
        if (position >= order.size() || name != delivery.nameAt(position, order.at(position)))
            return false;
    }
    return images.size() == order.size();
}

OfferedRow RunModel::Parts::rowOf(const Inventory& from, const ZanDisplay& display) const
{
    OfferedRow row;
    row.image = order.at(from.listUpdates.indexOf(display.update()));
    row.blocks = display.updateIndexes();
    row.from = display.versionFrom();
    row.to = display.versionTo();
    row.isFirmware = display.type() == ZAN_FIRMWARE_UPDATE;
    row.isPossible = display.updatePossible();
    return row;
}

std::unique_ptr<RunModel> RunModel::make(const DeliveredFiles& delivery, const ModelFamily& family,
                                         const QVector<int>& order, QString* error)
{
    auto parts = std::make_unique<Parts>(delivery, family, order, error);
    if (!parts->folder)
        return nullptr;
    const QString folder = parts->folder->path();
    SimulatedSystem system(
        playedSystem(family, {QStringLiteral("v0.0.0"), QStringLiteral("v0.0")}));
    parts->channel.connectTo(system);
    parts->inventory = std::make_unique<Inventory>(&parts->channel, folder, &parts->served);
    parts->inventoryOfUnserved =
        std::make_unique<Inventory>(&parts->channel, folder, &parts->unserved);
    if (!parts->isInOrder()) {
        *error = QStringLiteral("the plug-in does not take the images in the order of their names");
        return nullptr;
    }
    return std::unique_ptr<RunModel>(new RunModel(std::move(parts)));
}

RunModel::RunModel(std::unique_ptr<Parts> parts) : m_parts(std::move(parts)) {}

RunModel::~RunModel() = default;

RunStep RunModel::step(const ReportedVersions& versions)
{
    SimulatedSystem system(playedSystem(m_parts->family, versions), [] { return qint64(0); });
    m_parts->channel.connectTo(system);
    Inventory& inventory = m_parts->inventoryFor(versions);
    inventory.refresh();

    RunStep step;
    step.readsImages = !inventory.listUpdates.isEmpty();
    step.asks =
        inventory.asksForUpdate({reportedVersion(versions.pt), system.scenario().protocol,
                                 reportedVersion(versions.ct), m_parts->family.backendModel});
    const ZanController& master = *inventory.listZanController.constFirst();
    step.pt = master.getVersionLumasolver();
    step.ct = master.getVersionController();
    step.mark = master.getPreReleaseAppendix();
    QVector<OfferedRow> ofSlave;
    for (const ZanDisplay* display : qAsConst(inventory.listZanDisplay)) {
        if (display->controller())
            (display->controller()->isSlave() ? ofSlave : step.rows) +=
                m_parts->rowOf(inventory, *display);
    }
    step.isSameForSlave = ofSlave == step.rows;
    Receiver(m_parts->delivery, &step).run(versions);
    return step;
}

const RunStep& RunModel::keptStep(const ReportedVersions& versions)
{
    const QString key = versions.pt + QLatin1Char(' ') + versions.ct;
    auto kept = m_kept.find(key);
    if (kept == m_kept.end())
        kept = m_kept.insert(key, step(versions));
    return *kept;
}

VersionInfo RunModel::highestPt() const
{
    return m_parts->inventory->getHighestPtVersionFromUpdateFiles();
}

VersionInfo RunModel::highestCt() const
{
    return m_parts->inventory->getHighestCtVersionFromUpdateFiles();
}

QString RunModel::highestMark() const
{
    return m_parts->inventory->getHighestPtVersionAppendix();
}
