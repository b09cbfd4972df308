#include "platform/zornet/device/PortList.h"

#include <algorithm>

#include "platform/zornet/EthDevPam.h"

namespace Zornet {

void
PortList::insert( EthDevPam& port, U64 number ) {
    slots_.push_back( { number, &port } );
    ++ports_;
}

void
PortList::remove( U64 number ) {
    auto const slot = at( number );
    if ( slot == slots_.end() || !slot->port ) {
        return;
    }
    slots_[static_cast<std::size_t>( slot - slots_.begin() )].port = nullptr;
    --ports_;
    closeUp();
}

EthDevPam*
PortList::find( U64 number ) const {
    auto const slot = at( number );
    return slot == slots_.end() ? nullptr : slot->port;
}

std::vector<PortList::Slot>::const_iterator
PortList::at( U64 number ) const {
    auto const slot = std::ranges::lower_bound( slots_, number, {}, &Slot::number );
    return slot != slots_.end() && slot->number == number ? slot : slots_.end();
}

void
PortList::closeUp() {
    if ( walks_ == 0 && slots_.size() > 2 * ports_ ) {
        std::erase_if( slots_, []( Slot const& slot ) { return slot.port == nullptr; } );
    }
}

PortList::Walk::~Walk() {
    --list_.walks_;
    list_.closeUp();
}

Kiv::Ptr<EthDevPam>
PortList::Walk::next() {
    while ( at_ != end_ ) {
        if ( EthDevPam* const port = list_.slots_[at_++].port ) {
            return port;
        }
    }
    return nullptr;
}

} // namespace Zornet
