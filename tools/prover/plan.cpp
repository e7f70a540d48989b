#include "plan.h"

#include "inventory.h"
#include "querychannel.h"
#include "withoutrow.h"

#include <BackendVersions.h>
#include <ZanController.h>
#include <ZanDisplay.h>
#include <camfilereader.h>
#include <camupdatedata.h>
#include <littleendianreader.h>
#include <protocolversions.h>
#include <reportedversion.h>
#include <runestimate.h>

#include <QFileInfo>

#include <algorithm>

namespace {

constexpr double secondsPerCameraRecord = 0.00027;

/// The records of one image of a camera update file after the other.
QVector<int> cameraRecords(const CamUpdateData& data)
{
    QVector<int> counts;
    FILE* file = data.getCamModels().isEmpty()
                     ? nullptr
                     : std::fopen(data.getFilename().toLatin1().constData(), "rb");
    if (!file)
        return counts;
    {
        LittleEndianReader reader(file, LittleEndianReader::LargeChunk);
        CamFileHead head;
        int images = 0;
        bool isRead =
            readCamFileHead(reader, &head) == 0 && readCamImageTable(reader, &images) == 0;
        for (int image = 0; isRead && image < images; ++image) {
            quint32 records = 0;
            isRead = readCamImageHead(reader, &records) == 0;
            UpdateRecord record;
            quint32 done = 0;
            for (; isRead && done < records; ++done)
                isRead = readCamRecord(reader, &record) == 0;
            counts += static_cast<int>(done);
        }
    }
    std::fclose(file);
    return counts;
}

class Planner
{
public:
    Planner(const DeliveredFiles& delivery, const Scenario& scenario)
        : m_delivery(delivery), m_scenario(scenario), m_system(scenario),
          m_versions(reportedVersion(scenario.controllers.first().pt), scenario.protocol,
                     reportedVersion(scenario.controllers.first().ct), scenario.backendModel)
    {
        m_channel.connectTo(m_system);
    }

    UpdatePlan plan();

private:
    PlannedRow rowOf(const ZanDisplay& display) const;
    void addControllerPart(const ZanDisplay& display, PlannedRow* row) const;
    static void addCameraPart(const ZanDisplay& display, PlannedRow* row);
    QVector<int> recordsOf(const PlannedRow& row) const;
    void sumUp(UpdatePlan* plan) const;

    const DeliveredFiles& m_delivery;
    const Scenario& m_scenario;
    SimulatedSystem m_system;
    QueryChannel m_channel;
    BackendVersions m_versions;
};

UpdatePlan Planner::plan()
{
    Inventory inventory(&m_channel, m_delivery.programFolder(), &m_versions);
    inventory.refresh();
    UpdatePlan plan;
    plan.asksForUpdate = inventory.asksForUpdate(m_versions);
    for (const ZanDisplay* display : qAsConst(inventory.listZanDisplay))
        plan.rows += rowOf(*display);
    plan.withoutRow = filesWithoutRow(m_delivery, inventory, m_scenario);
    sumUp(&plan);
    return plan;
}

PlannedRow Planner::rowOf(const ZanDisplay& display) const
{
    PlannedRow row;
    row.type = display.typeString();
    row.from = display.versionFrom().toString();
    row.to = display.versionTo().toString();
    row.possible = display.updatePossibleString();
    row.reboot = display.rebootNecessaryString();
    row.isTicked = display.toBeUpdated();
    if (display.controller())
        addControllerPart(display, &row);
    else if (display.getCamUpdate())
        addCameraPart(display, &row);
    return row;
}

void Planner::addControllerPart(const ZanDisplay& display, PlannedRow* row) const
{
    const ZanController& controller = *display.controller();
    row->device = controller.hostname();
    row->file = QFileInfo(display.update()->fileName()).fileName();
    row->blocks = display.updateIndexes();
    const bool isRedirected = m_scenario.protocol >= PROTOCOL_CASCADE;
    for (const int records : recordsOf(*row)) {
        row->commands += records + (isRedirected ? 1 : 0);
        row->seconds += estimatedSeconds(records, 0);
    }
}

void Planner::addCameraPart(const ZanDisplay& display, PlannedRow* row)
{
    const CamUpdateData& file = *display.getCamUpdate();
    row->device = cameraName(display.indexCamForUpdate());
    row->file = QFileInfo(file.getFilename()).fileName();
    double seconds = 0;
    for (const int records : cameraRecords(file)) {
        row->commands += records;
        seconds += records * secondsPerCameraRecord + file.getDurationLastCmdSec();
    }
    row->seconds = static_cast<int>(seconds);
}

QVector<int> Planner::recordsOf(const PlannedRow& row) const
{
    const auto& images = m_delivery.images();
    const auto image = std::find_if(images.begin(), images.end(),
                                    [&](const DeliveredImage& it) { return it.name == row.file; });
    QVector<int> records;
    for (const int block : row.blocks)
        records += image->blocks.at(block).records;
    return records;
}

// What the dialog says first: the blocks of a run that have not begun count alike. A run of cameras
// tells the time of one image after the other.
void Planner::sumUp(UpdatePlan* plan) const
{
    QVector<int> records;
    for (const PlannedRow& row : qAsConst(plan->rows)) {
        if (!row.isTicked)
            continue;
        plan->commands += row.commands;
        if (row.blocks.isEmpty())
            plan->seconds += row.seconds;
        records += recordsOf(row);
    }
    if (!records.isEmpty())
        plan->seconds = estimatedSeconds(records.constFirst(), records.size() - 1);
}

} // namespace

UpdatePlan planUpdates(const DeliveredFiles& delivery, const Scenario& scenario)
{
    return Planner(delivery, scenario).plan();
}

Scenario singleController(const QString& pt, const QString& ct, int model)
{
    Scenario scenario;
    scenario.title = QStringLiteral("One controller");
    scenario.protocol = currentProtocol;
    const bool isBriarscope = model == briarscopeModel;
    scenario.backendModel = isBriarscope ? QStringLiteral("BRIARSCOPE3") : QStringLiteral("ZAN");
    ScenarioController controller;
    controller.hostName = QStringLiteral("zan-master");
    controller.address = QStringLiteral("192.168.7.20");
    controller.model = model;
    controller.modelDescription = scenario.backendModel;
    controller.board = QStringLiteral("FUJITSU D3231-S1");
    controller.serial = 731;
    controller.pt = pt;
    controller.ct = ct;
    scenario.controllers = {controller};
    return scenario;
}
