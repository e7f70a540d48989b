#include "faults.h"

#include <algorithm>
#include <iterator>

namespace {

// Scatters a seed over all 32 bits, so that neighbouring seeds give unlike records.
quint32 scattered(quint32 seed)
{
    seed = (seed ^ (seed >> 16U)) * 0x7FEB352DU;
    seed = (seed ^ (seed >> 15U)) * 0x846CA68BU;
    return seed ^ (seed >> 16U);
}

int strikingRecord(const Fault& fault, int records)
{
    if (fault.record > 0)
        return fault.record;
    if (fault.seed)
        return 1 + static_cast<int>(scattered(*fault.seed) % static_cast<quint32>(records));
    const qint64 percent = faultModeInfo(fault.mode).defaultPercent;
    return qMax(1, static_cast<int>(records * percent / 100));
}

bool strikes(const Fault& fault, const ExchangeMoment& moment)
{
    if (faultModeInfo(fault.mode).moment != FaultMoment::Exchange)
        return false;
    if (!fault.request.isEmpty())
        return moment.text.startsWith(fault.request);
    return moment.record > 0 && fault.concerns(moment.device) &&
           moment.record == strikingRecord(fault, moment.records);
}

bool strikesRestartOf(const Fault& fault, const QStringList& devices)
{
    return faultModeInfo(fault.mode).moment == FaultMoment::Restart &&
           std::any_of(devices.begin(), devices.end(),
                       [&fault](const QString& device) { return fault.concerns(device); });
}

} // namespace

const QVector<FaultModeInfo>& faultModes()
{
    static const QVector<FaultModeInfo> modes = {
        {FaultMode::RefuseRecord, QStringLiteral("refuse-record"),
         QStringLiteral("Refuse a record"), FaultMoment::Exchange, 50},
        {FaultMode::RefuseWithCameraError, QStringLiteral("refuse-camera-error"),
         QStringLiteral("Refuse a record with the cameras' error -26"), FaultMoment::Exchange, 50},
        {FaultMode::RefuseWithQuotedCameraError, QStringLiteral("refuse-camera-error-quoted"),
         QStringLiteral("Refuse a record with the cameras' error in double quotes"),
         FaultMoment::Exchange, 50},
        {FaultMode::DropConnection, QStringLiteral("drop-connection"),
         QStringLiteral("Drop the connection at a record"), FaultMoment::Exchange, 50},
        {FaultMode::AnswerLate, QStringLiteral("answer-late"),
         QStringLiteral("Answer the last record late"), FaultMoment::Exchange, 100},
        {FaultMode::AnswerGarbage, QStringLiteral("answer-garbage"),
         QStringLiteral("Answer a record with garbage"), FaultMoment::Exchange, 50},
        {FaultMode::StaySilent, QStringLiteral("stay-silent"),
         QStringLiteral("Never answer the last record"), FaultMoment::Exchange, 100},
        {FaultMode::LosePower, QStringLiteral("lose-power"),
         QStringLiteral("Lose power in the middle of a block"), FaultMoment::Exchange, 50},
        {FaultMode::ComeBackOld, QStringLiteral("come-back-old"),
         QStringLiteral("Come back from the restart with the old versions"), FaultMoment::Restart,
         0},
        {FaultMode::NeverComeBack, QStringLiteral("never-come-back"),
         QStringLiteral("Never come back from the restart"), FaultMoment::Restart, 0},
    };
    return modes;
}

const FaultModeInfo& faultModeInfo(FaultMode mode)
{
    const QVector<FaultModeInfo>& modes = faultModes();
    return *std::find_if(modes.begin(), modes.end(),
                         [mode](const FaultModeInfo& info) { return info.mode == mode; });
}

bool Fault::concerns(const QString& deviceName) const
{
    return device.isEmpty() || device == deviceName;
}

QString Fault::text() const
{
    QStringList details = {device.isEmpty() ? QStringLiteral("any device") : device};
    if (!request.isEmpty())
        details += QStringLiteral("at \"%1\"").arg(QString::fromUtf8(request));
    else if (record > 0)
        details += QStringLiteral("record %1").arg(record);
    else if (seed)
        details += QStringLiteral("random record, seed %1").arg(*seed);
    if (mode == FaultMode::AnswerLate)
        details += QStringLiteral("%1 s late").arg(delayMs / 1000.0);
    if (times != 1)
        details +=
            times == 0 ? QStringLiteral("every time") : QStringLiteral("%1 times").arg(times);
    return QStringLiteral("%1: %2").arg(faultModeInfo(mode).title,
                                        details.join(QStringLiteral(", ")));
}

FaultPlan::FaultPlan(const QVector<Fault>& faults) : m_faults(faults) {}

void FaultPlan::add(const Fault& fault)
{
    m_faults.append(fault);
}

void FaultPlan::clear()
{
    m_faults.clear();
}

std::optional<Fault> FaultPlan::takeForExchange(const ExchangeMoment& moment)
{
    const auto* const found =
        std::find_if(m_faults.cbegin(), m_faults.cend(),
                     [&moment](const Fault& fault) { return strikes(fault, moment); });
    if (found == m_faults.cend())
        return std::nullopt;
    return takeAt(static_cast<int>(std::distance(m_faults.cbegin(), found)));
}

QVector<Fault> FaultPlan::takeForRestart(const QStringList& devices)
{
    QVector<Fault> taken;
    // From the end, as takeAt() may remove the entry.
    for (int index = m_faults.size() - 1; index >= 0; --index) {
        if (strikesRestartOf(m_faults.at(index), devices))
            taken.append(takeAt(index));
    }
    return taken;
}

Fault FaultPlan::takeAt(int index)
{
    Fault fault = m_faults.at(index);
    if (fault.times == 1)
        m_faults.removeAt(index);
    else if (fault.times > 1)
        --m_faults[index].times;
    return fault;
}
