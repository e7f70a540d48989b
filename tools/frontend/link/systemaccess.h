#pragma once

#include <commandlink.h>
#include <equipment.h>

#include <QString>

#include <optional>

struct Transcript;

/// The system that the frontend operates: the line to its controllers, and the equipment as it can
/// be watched and touched. To be used from the user interface thread.
class SystemAccess
{
public:
    virtual ~SystemAccess() = default;

    /// The line to the controllers; lives as long as the access.
    virtual CommandLink& link() = 0;
    /// The equipment beside it; lives as long as the access.
    virtual Equipment& equipment() = 0;

    /// What tells this system from others, also from one start to the next; empty if nothing does.
    virtual QByteArray identity() const { return QByteArray(); }

    /// What answers the module in the place of the controllers; null if they do.
    virtual const Transcript* transcript() const { return nullptr; }

    /// Whether another system stands in the place of this one, so that a new access is needed.
    virtual bool isExchanged() const { return false; }

    /// Begins to keep what has to outlive the frontend in the folder @p stateDir, which exists.
    ///
    /// @param fresh whether to forget what an earlier start left there
    /// @param error must not be null; on failure one line
    /// @return why what an earlier start left was set aside; empty if it was not; nullopt if
    /// nothing
    ///         is kept
    virtual std::optional<QString> keepState(const QString& stateDir, bool fresh,
                                             QString* error) = 0;
};
