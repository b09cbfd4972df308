#pragma once

#include <span>

#include "platform/zornet/Types.h"

namespace Zornet {

class Device;

/// Looks at the frames of every device of this process, as they are on the wire and with their tags. It only
/// looks: it must not send, open or close.
class FrameTap {
  public:
    virtual ~FrameTap() = default;
    /// A frame has been received and is about to be handed to whoever has the device open.
    virtual void handleReceived( Device const& device, std::span<U8 const> frame ) = 0;
    /// A frame has been handed to the network.
    virtual void handleSent( Device const& device, std::span<U8 const> frame ) = 0;
    /// Frames were lost on the way in, or given to send and lost.
    virtual void handleReceiveLosses( Device const& device, U64 frames ) = 0;
    virtual void handleSendLosses( Device const& device, U64 frames ) = 0;
};

/// The tap in force; null, the default, for none. The caller keeps it alive.
FrameTap* frameTap();
void frameTapIs( FrameTap* tap );

} // namespace Zornet
