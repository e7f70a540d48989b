#include "proof.h"

#include "circumstances.h"
#include "familyprover.h"

#include <algorithm>

namespace {

QString limitsText(const QString& component, const StartRange& range)
{
    QStringList limits;
    if (range.from)
        limits += QStringLiteral("from ") + range.from->toString();
    if (range.to)
        limits += QStringLiteral("to ") + range.to->toString();
    return limits.isEmpty() ? QString()
                            : component + QLatin1Char(' ') + limits.join(QLatin1Char(' '));
}

QString scopeText(const ProofOptions& options)
{
    QStringList limits{limitsText(QStringLiteral("Pt"), options.pt),
                       limitsText(QStringLiteral("Ct"), options.ct)};
    limits.removeAll(QString());
    const QString who = options.family.isEmpty()
                            ? QStringLiteral("every controller")
                            : QStringLiteral("every %1 controller").arg(options.family);
    return limits.isEmpty()
               ? who
               : QStringLiteral("%1 with %2").arg(who, limits.join(QStringLiteral(" and ")));
}

} // namespace

bool operator==(const Journey& left, const Journey& right)
{
    return left.ending == right.ending && left.isOrderly == right.isOrderly &&
           left.hops == right.hops;
}

bool isDeadEnd(Ending ending)
{
    return ending != Ending::Newest && ending != Ending::NotServed;
}

bool Proof::holds() const
{
    return std::none_of(findings.begin(), findings.end(),
                        [](const Finding& finding) { return finding.weight == Weight::Error; });
}

const Finding* Proof::counterexample(std::optional<ProofRule> rule) const
{
    for (const Finding& finding : findings) {
        if (finding.example && finding.rule == rule.value_or(finding.rule))
            return &finding;
    }
    return nullptr;
}

std::optional<Proof> proveDelivery(const DeliveredFiles& delivery, const ProofOptions& options,
                                   QString* error)
{
    Proof proof;
    proof.scope = scopeText(options);
    for (const DeliveredImage& image : delivery.images())
        proof.files += image.name;
    for (const ModelFamily& family : modelFamilies()) {
        if (!options.family.isEmpty() && options.family != family.name)
            continue;
        FamilyProver prover(delivery, family, options);
        std::optional<FamilyProof> familyProof = prover.prove(error);
        if (!familyProof)
            return std::nullopt;
        proof.families += *familyProof;
        proof.findings += prover.findings();
    }
    proof.findings += circumstances(delivery, options);
    std::stable_sort(
        proof.findings.begin(), proof.findings.end(),
        [](const Finding& left, const Finding& right) { return left.weight < right.weight; });
    return proof;
}
