#pragma once

#include <functional>

/// A call of the plug-in that serves events, or has the channel of the host do so, for as long as
/// the object lives: nothing of the plug-in may be deleted meanwhile, as the call goes on with it.
///
/// Stands at the beginning of each such function, so that what a host asks for in the middle of one
/// waits for the end of the outermost one. User interface thread only.
class OpenCall
{
public:
    /// From where the host comes to the call.
    enum Origin
    {
        Host,   ///< the call itself, or a timer or menu entry, which may lose what they called
        Widget, ///< a widget that goes on with itself behind the call
    };

    /// Opens the call.
    explicit OpenCall(Origin origin = Host);
    /// The outermost one does what waits, behind a widget as soon as that has returned.
    ~OpenCall();
    OpenCall(const OpenCall&) = delete;
    OpenCall& operator=(const OpenCall&) = delete;

    /// Whether there is one.
    static bool isAny();
    /// Has @p act done when there is none: now, or at the end of the outermost one, in the order in
    /// which this was called.
    static void whenNone(const std::function<void()>& act);

private:
    Origin m_origin;
};
