#pragma once

#include "commandlink.h"

#include <testbench.h>

struct Transcript;

/// The system that the frontend operates: the line to its controllers, and the test bench on which
/// it can be watched. To be used from the user interface thread.
class SystemAccess
{
public:
    virtual ~SystemAccess() = default;

    virtual CommandLink& link() = 0;
    virtual TestBench& bench() = 0;

    /// What answers the module in the place of the controllers; null if they do.
    virtual const Transcript* transcript() const { return nullptr; }

    /// Begins to keep what has to outlive the frontend in the folder @p stateDir, which exists.
    ///
    /// @param fresh whether to forget what an earlier start left there
    /// @return what was wrong with that and was set aside; empty if all is well
    virtual QString keepState(const QString& stateDir, bool fresh) = 0;
};
