#include "familyprover.h"

#include "journeytable.h"
#include "releaseorders.h"

#include <algorithm>

namespace {

bool isBlockOf(const ZanUpdateBlock& block, VersionParts parts)
{
    return block.type == (parts == PtParts ? ZAN_FIRMWARE_UPDATE : ZAN_SYSTEM_UPDATE);
}

void addBlockLimits(const ZanData& image, VersionParts parts, QVector<VersionInfo>* limits)
{
    for (int index = 0; index < image.getNumberOfUpdateBlocks(); ++index) {
        const ZanUpdateBlock& block = *image.getUpdateBlock(index);
        if (isBlockOf(block, parts))
            *limits << block.minVer << block.maxVer;
    }
}

void addEnds(const StartRange& range, QVector<VersionInfo>* limits)
{
    if (range.from)
        *limits += *range.from;
    if (range.to)
        *limits += *range.to;
}

QString releaseText(const ZanData& image)
{
    return QStringLiteral("%1%2, Ct %3")
        .arg(image.newPtVersion().toString(), image.getPreReleaseAppendix(),
             image.newCtVersion().toString());
}

bool isEarlierRelease(const ZanData& image, const ZanData& than)
{
    if (image.newVornix2Version() != than.newVornix2Version())
        return image.newVornix2Version() < than.newVornix2Version();
    return isEarlierMark(image.getPreReleaseAppendix(), than.getPreReleaseAppendix());
}

/// What a run has changed; what it has not is left empty, so that classes can be joined.
ReportedVersions changesOf(const ReportedVersions& start, const ReportedVersions& after)
{
    return {after.pt == start.pt ? QString() : after.pt,
            after.ct == start.ct ? QString() : after.ct};
}

} // namespace

FamilyProver::FamilyProver(const DeliveredFiles& delivery, const ModelFamily& family,
                           const ProofOptions& options)
    : m_delivery(delivery), m_family(family), m_options(options)
{
    m_proof.family = family;
}

std::optional<FamilyProof> FamilyProver::prove(QString* error)
{
    setGoal();
    cutClasses();
    const QVector<QVector<int>> orders = releaseOrders(m_delivery, m_family);
    m_proof.orders = orders.size();
    if (orders.isEmpty()) {
        Finding finding;
        finding.rule = ProofRule::EqualReleases;
        finding.family = m_family.name;
        finding.text = QStringLiteral("more images of one release than can be looked at: they have "
                                      "more than %1 orders")
                           .arg(maxOrders);
        m_findings += finding;
        return m_proof;
    }
    for (const QVector<int>& order : orders) {
        m_isFirstOrder = &order == &orders.constFirst();
        if (!examine(order, m_isFirstOrder, error))
            return std::nullopt;
    }
    m_proof.table = joinJourneys(m_journeys, m_proof.ct.size());
    reportFaults();
    return m_proof;
}

void FamilyProver::setGoal()
{
    for (int index = 0; index < static_cast<int>(m_delivery.images().size()); ++index) {
        if (!m_family.fits(image(index)))
            continue;
        const ZanData& candidate = *image(index).data;
        m_proof.releases +=
            {candidate.newPtVersion().toString() + candidate.getPreReleaseAppendix(),
             candidate.newCtVersion().toString(), image(index).name};
        if (m_goal < 0 || isEarlierRelease(*image(m_goal).data, candidate))
            m_goal = index;
    }
    m_proof.isServed = m_goal >= 0;
    if (m_proof.isServed) {
        m_proof.goal = releaseText(*image(m_goal).data);
        m_proof.goalFile = image(m_goal).name;
    }
}

QVector<VersionInfo> FamilyProver::ptLimits() const
{
    QVector<VersionInfo> limits;
    VersionInfo highest;
    for (const DeliveredImage& it : m_delivery.images()) {
        const ZanData& data = *it.data;
        highest = std::max(highest, data.newPtVersion());
        if (!m_family.fits(it))
            continue;
        limits << data.newPtVersion() << data.newVornix2Version() << data.minPtVersion();
        addBlockLimits(data, PtParts, &limits);
    }
    limits << highest;
    if (m_family.backendModel.startsWith(QLatin1String("BRIARSCOPE")))
        limits << lastUnservedBriarscope << firstAskedBriarscope;
    addEnds(m_options.pt, &limits);
    return limits;
}

QVector<VersionInfo> FamilyProver::ctLimits() const
{
    QVector<VersionInfo> limits;
    VersionInfo highest;
    for (const DeliveredImage& it : m_delivery.images()) {
        const ZanData& data = *it.data;
        highest = std::max(highest, data.newCtVersion());
        if (!m_family.fits(it))
            continue;
        limits << data.newCtVersion() << data.minCtVersion();
        addBlockLimits(data, CtParts, &limits);
    }
    limits << highest;
    addEnds(m_options.ct, &limits);
    return limits;
}

void FamilyProver::cutClasses()
{
    QVector<MarkedVersion> marked;
    for (const DeliveredImage& it : m_delivery.images()) {
        marked += {it.data->newPtVersion(), it.data->getPreReleaseAppendix()};
        if (m_family.fits(it))
            marked += {it.data->newVornix2Version(), it.data->getPreReleaseAppendix()};
    }
    m_proof.pt = ptClasses(ptLimits(), marked);
    m_proof.ct = versionCells(ctLimits(), CtParts);
    m_journeys.resize(m_proof.pt.size() * m_proof.ct.size());
}

bool FamilyProver::isAsked(int pt, int ct) const
{
    return m_options.pt.contains(m_proof.pt.at(pt).cell.example) &&
           m_options.ct.contains(m_proof.ct.at(ct).example);
}

bool FamilyProver::examine(const QVector<int>& order, bool isFirst, QString* error)
{
    m_order = isFirst ? QVector<int>() : order;
    const std::unique_ptr<RunModel> model = RunModel::make(m_delivery, m_family, order, error);
    if (!model)
        return false;
    for (int pt = 0; pt < m_proof.pt.size(); ++pt) {
        for (int ct = 0; ct < m_proof.ct.size(); ++ct) {
            if (isAsked(pt, ct))
                examineClass(model.get(), pt * m_proof.ct.size() + ct);
        }
        if (m_options.progress)
            m_options.progress(pt + 1, m_proof.pt.size());
    }
    return true;
}

void FamilyProver::examineClass(RunModel* model, int pair)
{
    const Journey journey = travel(model, startOf(pair), pair);
    if (m_isFirstOrder)
        m_journeys[pair] = journey;
    else
        compareWithFirst(pair, journey);
}

void FamilyProver::compareWithFirst(int pair, const Journey& journey)
{
    Journey& first = *m_journeys[pair];
    const bool endsAlike =
        first.ending == journey.ending && (first.runs() == 0) == (journey.runs() == 0) &&
        (first.runs() == 0 || first.hops.constLast() == journey.hops.constLast());
    if (endsAlike)
        return;
    first.isOrderly = false;
    QStringList names;
    for (const int index : qAsConst(m_order)) {
        if (image(index).data->newVornix2Version() ==
            image(m_goal < 0 ? index : m_goal).data->newVornix2Version())
            names += image(index).name;
    }
    note(ProofRule::EqualReleases,
         QStringLiteral("the order of images of one release decides where it ends; with %1 it is "
                        "another end than in the order of the names")
             .arg(names.join(QStringLiteral(" before "))),
         pair);
}

Journey FamilyProver::travel(RunModel* model, const ReportedVersions& start, int pair)
{
    Journey journey;
    QVector<ReportedVersions> visited{start};
    RunStep step = model->step(start);
    lookAt(step, pair);
    while (step.runs) {
        if (!step.failure.isEmpty()) {
            journey.ending = Ending::RunFails;
            note(ProofRule::RunFails, step.failure, pair);
            return journey;
        }
        journey.hops += changesOf(start, step.after);
        if (visited.contains(step.after)) {
            journey.ending = Ending::OfferedForEver;
            noteEnding(model, step, journey.ending, pair);
            return journey;
        }
        visited += step.after;
        step = model->keptStep(step.after);
        lookAt(step, pair);
    }
    journey.ending = endingOf(step);
    noteEnding(model, step, journey.ending, pair);
    return journey;
}

Ending FamilyProver::endingOf(const RunStep& step) const
{
    if (!step.readsImages && !m_delivery.images().empty())
        return Ending::NotServed;
    if (step.asks)
        return Ending::NothingToTick;
    return !m_proof.isServed || hasArrived(step) ? Ending::Newest : Ending::LeftBehind;
}

bool FamilyProver::hasArrived(const RunStep& step) const
{
    const ZanData& goal = *image(m_goal).data;
    if (step.ct < goal.newCtVersion() || step.pt < goal.newPtVersion())
        return false;
    return step.pt > goal.newPtVersion() || !isEarlierMark(step.mark, goal.getPreReleaseAppendix());
}

void FamilyProver::lookAt(const RunStep& step, int pair)
{
    for (const StrayBlock& stray : step.strays) {
        const ZanUpdateBlock& block = *image(stray.image).data->getUpdateBlock(stray.block);
        note(ProofRule::OutsideRange,
             QStringLiteral("block %1 of %2 is for %3 to %4 and goes to a controller outside of "
                            "that: a row before it moved the position without being possible, or "
                            "brought another version than its image says")
                 .arg(stray.block)
                 .arg(image(stray.image).name, block.minVer.toString(), block.maxVer.toString()),
             pair);
    }
    if (!step.isSameForSlave)
        note(ProofRule::SlaveDiffers,
             QStringLiteral("a slave gets other rows than a master with the same versions"), pair);
}

void FamilyProver::noteEnding(RunModel* model, const RunStep& last, Ending ending, int pair)
{
    switch (ending) {
    case Ending::NothingToTick:
        note(m_proof.isServed ? ProofRule::NothingToTick : ProofRule::FamilyNotServed,
             whyAsked(*model, last), pair);
        break;
    case Ending::OfferedForEver: {
        QStringList names;
        for (const OfferedRow& row : last.rows) {
            if (row.isPossible)
                names += image(row.image).name;
        }
        names.removeDuplicates();
        note(ProofRule::OfferedForEver,
             QStringLiteral("%1 is sent again and again, and what the controllers report after it "
                            "never ends that: %2")
                 .arg(names.join(QStringLiteral(", ")), whyAsked(*model, last)),
             pair);
        break;
    }
    case Ending::LeftBehind:
        note(ProofRule::LeftBehind,
             QStringLiteral("the plug-in counts the controller as up to date, and the newest "
                            "release is %1")
                 .arg(m_proof.goal),
             pair);
        break;
    case Ending::Newest:
    case Ending::RunFails:
    case Ending::NotServed:
        break;
    }
}

QString FamilyProver::whyAsked(const RunModel& model, const RunStep& last) const
{
    QStringList from;
    const bool isPtBehind = model.highestPt() > last.pt;
    const bool isCtBehind = model.highestCt() > last.ct;
    for (const DeliveredImage& it : m_delivery.images()) {
        const bool brings = isPtBehind   ? it.data->newPtVersion() == model.highestPt()
                            : isCtBehind ? it.data->newCtVersion() == model.highestCt()
                                         : it.data->newPtVersion() == model.highestPt();
        if (brings)
            from += m_family.fits(it)
                        ? it.name
                        : QStringLiteral("%1 for %2").arg(it.name, it.data->getSystemModelDesc());
    }
    const QString files = from.join(QStringLiteral(", "));
    const QString rows = last.rows.isEmpty() ? QStringLiteral("and no image gives a row")
                         : last.runs         ? QStringLiteral("and it does not come")
                                             : QStringLiteral("and no row is possible");
    if (isPtBehind)
        return QStringLiteral("the plug-in asks for Pt %1 (%2) %3")
            .arg(model.highestPt().toString(), files, rows);
    if (isCtBehind)
        return QStringLiteral("the plug-in asks for Ct %1 (%2) %3")
            .arg(model.highestCt().toString(), files, rows);
    const QString mark = model.highestMark();
    return QStringLiteral("the plug-in asks for %1%2 (%3) %4")
        .arg(model.highestPt().toString(),
             mark.isEmpty() ? QStringLiteral(" without a pre-release text")
                            : QStringLiteral(" with the pre-release text \"%1\"").arg(mark),
             files, rows);
}

FamilyProver::Fault& FamilyProver::fault(ProofRule rule, const QString& text)
{
    for (Fault& known : m_faults) {
        if (known.rule == rule && known.text == text)
            return known;
    }
    m_faults += {rule, text, QVector<bool>(m_journeys.size()), -1, m_order};
    return m_faults.last();
}

void FamilyProver::note(ProofRule rule, const QString& text, int pair)
{
    Fault& it = fault(rule, text);
    it.concerned[pair] = true;
    // Found in another order than the first example: that one shows it as well.
    if (it.order == m_order && (it.example < 0 || (isUsual(pair) && !isUsual(it.example))))
        it.example = pair;
}

ReportedVersions FamilyProver::startOf(int pair) const
{
    return {m_proof.pt.at(pair / m_proof.ct.size()).reported(),
            m_proof.ct.at(pair % m_proof.ct.size()).example.toString()};
}

bool FamilyProver::isUsual(int pair) const
{
    return m_proof.pt.at(pair / m_proof.ct.size()).cell.hasUsual &&
           m_proof.ct.at(pair % m_proof.ct.size()).hasUsual;
}

void FamilyProver::reportFaults()
{
    for (const Fault& it : qAsConst(m_faults))
        m_findings += findingOf(it);
}

// Of unusual versions is spoken only where there are no others: they take over what is told of the
// usual ones beside them, so that ranges are not cut at versions that hardly anybody has.
QVector<bool> FamilyProver::concernedUsual(const Fault& fault) const
{
    const int cts = m_proof.ct.size();
    QVector<bool> concerned = fault.concerned;
    for (int pair = concerned.size() - 1; pair >= 0; --pair) {
        const bool isLast = pair % cts == cts - 1;
        if (!m_proof.ct.at(pair % cts).hasUsual && !isLast)
            concerned[pair] = concerned.at(pair + 1);
    }
    for (int pair = concerned.size() - 1; pair >= 0; --pair) {
        const bool isInLastRow = pair + cts >= concerned.size();
        if (!m_proof.pt.at(pair / cts).cell.hasUsual && !isInLastRow)
            concerned[pair] = concerned.at(pair + cts);
    }
    return concerned;
}

QString FamilyProver::rangesText(const QVector<bool>& concerned) const
{
    constexpr int maxRanges = 4;
    QVector<std::optional<Journey>> marked(concerned.size());
    for (int pair = 0; pair < concerned.size(); ++pair) {
        if (concerned.at(pair))
            marked[pair] = Journey();
    }
    const QVector<JourneyRange> table = joinJourneys(marked, m_proof.ct.size());
    QStringList ranges;
    for (const JourneyRange& range : table.mid(0, maxRanges))
        ranges +=
            QStringLiteral("Pt %1 with Ct %2").arg(ptText(m_proof, range), ctText(m_proof, range));
    if (table.size() > maxRanges)
        ranges += QStringLiteral("and %1 more").arg(table.size() - maxRanges);
    return ranges.join(QStringLiteral("; "));
}

Finding FamilyProver::findingOf(const Fault& fault) const
{
    Finding finding;
    finding.rule = fault.rule;
    finding.family = m_family.name;
    finding.text = fault.text;
    finding.order = fault.order;
    finding.classes = fault.concerned.count(true);
    finding.example = playedSystem(m_family, startOf(fault.example));
    const bool hasUsual = isUsual(fault.example);
    finding.weight = hasUsual && m_proof.isServed ? Weight::Error : Weight::Warning;
    if (!hasUsual)
        finding.text += QStringLiteral(" (only where versions have a form that no image brings)");
    finding.concerned = rangesText(hasUsual ? concernedUsual(fault) : fault.concerned);
    return finding;
}
