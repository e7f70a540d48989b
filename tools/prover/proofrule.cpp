#include "proofrule.h"

const EnumTexts<ProofRule>& proofRules()
{
    static const EnumTexts<ProofRule> rules = {
        {ProofRule::NothingToTick, "nothing-to-tick"},
        {ProofRule::OfferedForEver, "offered-for-ever"},
        {ProofRule::LeftBehind, "left-behind"},
        {ProofRule::OutsideRange, "outside-range"},
        {ProofRule::EqualReleases, "equal-releases"},
        {ProofRule::RunFails, "run-fails"},
        {ProofRule::SlaveDiffers, "slave-differs"},
        {ProofRule::FamilyNotServed, "family-not-served"},
        {ProofRule::MarkNeverEqual, "mark-never-equal"},
        {ProofRule::ModelUnknown, "model-unknown"},
        {ProofRule::ModelUnknownOnOldProtocol, "model-unknown-on-old-protocol"},
        {ProofRule::SlaveModelUnknown, "slave-model-unknown"},
        {ProofRule::AssumedContent, "assumed-content"},
    };
    return rules;
}
