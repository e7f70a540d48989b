#pragma once

#include <reply.h>

#include <optional>

/// Sees what goes over a command channel, and changes nothing of it. HostChannel calls it; a host
/// with a channel of its own does the same for what is built on it, such as RunMonitor.
///
/// To be used from the user interface thread.
class ChannelWatcher
{
public:
    virtual ~ChannelWatcher() = default;
    /// A text was sent to the controllers. One that is asked again comes again.
    virtual void sent(Operation operation, const QByteArray& text) = 0;
    /// The exchange of a text is over; for a prepared one that is when its reply was waited for.
    /// @param reply nullopt: none came. A text that was not even sent, as the connection is lost,
    ///        ends like this, too
    virtual void answered(Operation operation, const QByteArray& text,
                          const std::optional<Reply>& reply) = 0;
};
