#include "circumstances.h"

#include "inventory.h"
#include "querychannel.h"

#include <BackendVersions.h>
#include <ZanController.h>
#include <ZanDisplay.h>
#include <protocolversions.h>
#include <reportedversion.h>

#include <algorithm>

namespace {

Finding findingOf(ProofRule rule, Weight weight, const QString& text)
{
    Finding finding;
    finding.rule = rule;
    finding.weight = weight;
    finding.text = text;
    return finding;
}

/// A system with a delivery beside its frontend, and its inventory.
class Visit
{
public:
    Visit(const DeliveredFiles& delivery, const Scenario& scenario)
        : m_system(scenario),
          m_versions(reportedVersion(scenario.controllers.first().pt), scenario.protocol,
                     reportedVersion(scenario.controllers.first().ct), scenario.backendModel)
    {
        m_channel.connectTo(m_system);
        m_inventory =
            std::make_unique<Inventory>(&m_channel, delivery.programFolder(), &m_versions);
        m_inventory->refresh();
    }

    /// How the plug-in reads the pre-release text of the master.
    QString mark() const
    {
        return m_inventory->listZanController.constFirst()->getPreReleaseAppendix();
    }
    bool asks() const { return m_inventory->asksForUpdate(m_versions); }
    bool hasRowFor(bool slave) const
    {
        const QList<ZanDisplay*>& rows = m_inventory->listZanDisplay;
        return std::any_of(rows.begin(), rows.end(), [&](const ZanDisplay* row) {
            return row->updatePossible() && row->controller() &&
                   row->controller()->isSlave() == slave;
        });
    }

private:
    SimulatedSystem m_system;
    QueryChannel m_channel;
    BackendVersions m_versions;
    std::unique_ptr<Inventory> m_inventory;
};

QVector<Finding> strangeMarks(const DeliveredFiles& delivery)
{
    QVector<Finding> findings;
    for (const DeliveredImage& image : delivery.images()) {
        const QString mark = image.data->getPreReleaseAppendix();
        const QString reported = image.data->newPtVersion().toString() + mark;
        if (mark.isEmpty())
            continue;
        const Visit visit(delivery, playedSystem(modelFamilies().first(), {reported, "v0.0"}));
        if (visit.mark() == mark)
            continue;
        findings += findingOf(
            ProofRule::MarkNeverEqual, Weight::Warning,
            QStringLiteral("%1 has the pre-release text \"%2\"; the plug-in reads it from a "
                           "controller as \"%3\", so the two are never equal")
                .arg(image.name, mark, visit.mark()));
    }
    return findings;
}

QVector<Finding> unknownContent(const DeliveredFiles& delivery)
{
    QVector<Finding> findings;
    for (const DeliveredImage& image : delivery.images()) {
        const auto isUnknown = [](const BlockContent& content) {
            return content.kind == BlockContent::Assumed;
        };
        if (std::any_of(image.blocks.begin(), image.blocks.end(), isUnknown))
            findings += findingOf(
                ProofRule::AssumedContent, Weight::Note,
                QStringLiteral("what the blocks of %1 bring cannot be looked into; it is taken to "
                               "be what the header says")
                    .arg(image.name));
    }
    return findings;
}

/// Systems on which a model cannot be asked.
class UnknownModels
{
public:
    UnknownModels(const DeliveredFiles& delivery, const ProofOptions& options)
        : m_delivery(delivery), m_options(options)
    {
    }

    QVector<Finding> findings() const;

private:
    using Change = std::function<void(Scenario*)>;
    /// The oldest system of @p family on which @p isBad, among those that images are made for.
    std::optional<Scenario> find(const ModelFamily& family, const Change& change,
                                 const std::function<bool(const Visit&)>& isBad) const;
    void add(QVector<Finding>* findings, const ModelFamily& family, ProofRule rule,
             const QString& text, const Change& change,
             const std::function<bool(const Visit&)>& isBad) const;

    const DeliveredFiles& m_delivery;
    const ProofOptions& m_options;
};

void refuseModelQuery(Scenario* scenario)
{
    Fault fault;
    fault.mode = FaultMode::RefuseRecord;
    fault.request = QByteArrayLiteral("system model");
    fault.times = 0;
    scenario->faults = {fault};
    scenario->controllers.removeLast();
}

QVector<Finding> UnknownModels::findings() const
{
    const ModelFamily& zan = modelFamilies().at(0);
    const ModelFamily& briarscope = modelFamilies().at(1);
    QVector<Finding> findings;
    add(&findings, briarscope, ProofRule::ModelUnknown,
        QStringLiteral("a BRIARSCOPE3 whose model cannot be asked counts as a ZAN, and is offered "
                       "images for ZAN"),
        refuseModelQuery, [](const Visit& visit) { return visit.hasRowFor(false); });
    add(
        &findings, zan, ProofRule::ModelUnknownOnOldProtocol,
        QStringLiteral("below protocol 1.23, no image fits a controller whose model cannot be "
                       "asked: the dialog asks for an update and has nothing to tick"),
        [](Scenario* scenario) {
            refuseModelQuery(scenario);
            scenario->protocol = protocolBeforeSlaveModels;
        },
        [](const Visit& visit) { return visit.asks() && !visit.hasRowFor(false); });
    for (const ModelFamily& family : modelFamilies()) {
        const ModelFamily& other = &family == &zan ? briarscope : zan;
        add(
            &findings, family, ProofRule::SlaveModelUnknown,
            QStringLiteral("below protocol 1.23, a slave counts as of the master's model: a %1 "
                           "below a %2 is offered images for %2")
                .arg(other.name, family.name),
            [&](Scenario* scenario) {
                scenario->protocol = protocolBeforeSlaveModels;
                scenario->controllers.last().model = other.model;
                scenario->controllers.last().modelDescription = other.backendModel;
            },
            [](const Visit& visit) { return visit.hasRowFor(true); });
    }
    return findings;
}

void UnknownModels::add(QVector<Finding>* findings, const ModelFamily& family, ProofRule rule,
                        const QString& text, const Change& change,
                        const std::function<bool(const Visit&)>& isBad) const
{
    if (!m_options.family.isEmpty() && m_options.family != family.name)
        return;
    std::optional<Scenario> example = find(family, change, isBad);
    if (!example)
        return;
    Finding finding = findingOf(rule, Weight::Warning, text);
    finding.family = family.name;
    finding.example = std::move(example);
    *findings += finding;
}

std::optional<Scenario> UnknownModels::find(const ModelFamily& family, const Change& change,
                                            const std::function<bool(const Visit&)>& isBad) const
{
    // A system is examined where one image's blocks begin: there is nowhere else to begin with.
    for (const DeliveredImage& image : m_delivery.images()) {
        VersionInfo pt = image.data->minPtVersion();
        VersionInfo ct = image.data->minCtVersion();
        for (int index = 0; index < image.data->getNumberOfUpdateBlocks(); ++index) {
            const ZanUpdateBlock& block = *image.data->getUpdateBlock(index);
            if (block.type == ZAN_FIRMWARE_UPDATE)
                pt = std::max(pt, block.minVer);
            else if (block.type == ZAN_SYSTEM_UPDATE)
                ct = std::max(ct, block.minVer);
        }
        // Below this the plug-in serves no BRIARSCOPE.
        if (family.backendModel.startsWith(QLatin1String("BRIARSCOPE")))
            pt = std::max(pt, firstServedBriarscope);
        Scenario scenario = playedSystem(family, {pt.toString(), ct.toString()});
        change(&scenario);
        if (isBad(Visit(m_delivery, scenario)))
            return scenario;
    }
    return std::nullopt;
}

} // namespace

QVector<Finding> circumstances(const DeliveredFiles& delivery, const ProofOptions& options)
{
    return strangeMarks(delivery) + UnknownModels(delivery, options).findings() +
           unknownContent(delivery);
}
