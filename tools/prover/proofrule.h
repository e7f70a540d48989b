#pragma once

#include <enumtexts.h>

/// What a proof can find; docs/proving-deliveries.md says more of each.
enum class ProofRule
{
    NothingToTick,
    OfferedForEver,
    LeftBehind,
    OutsideRange,
    EqualReleases,
    RunFails,
    SlaveDiffers,
    FamilyNotServed,
    MarkNeverEqual,
    ModelUnknown,
    ModelUnknownOnOldProtocol,
    SlaveModelUnknown,
    AssumedContent,
};

/// The names of the rules, which never change, in the order of the document. Safe to call from any
/// thread.
const EnumTexts<ProofRule>& proofRules();
