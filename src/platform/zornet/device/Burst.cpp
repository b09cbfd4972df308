#include "platform/zornet/device/Burst.h"

#include <cerrno>

#include "platform/zornet/device/PacketSocket.h"

namespace Zornet {

Burst::Burst() {
    for ( std::size_t i = 0; i < capacity; ++i ) {
        messages_[i].msg_hdr.msg_iov = &parts_[i];
        messages_[i].msg_hdr.msg_iovlen = 1;
    }
}

void
Burst::send( PacketSocket& socket ) {
    while ( sent_ != size_ && refusal_ == 0 ) {
        std::size_t const taken = socket.send( std::span( messages_ ).subspan( sent_, size_ - sent_ ) );
        sent_ += taken;
        if ( taken == 0 && errno != EINTR ) {
            refusal_ = errno;
        }
    }
}

} // namespace Zornet
