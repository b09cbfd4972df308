#include "platform/kiv/nboattrlog/SlotTable.h"

#include "platform/kiv/nboattrlog/Exceptions.h"
#include "platform/kiv/nboattrlog/MsgHeader.h"

namespace Kiv::NboAttrLog {

EntityId
SlotTable::give( Adapter& adapter ) {
    if ( free_.empty() ) {
        if ( slots_.size() == maxSlots ) {
            throwAttrLogRecordException( "too many entities for one stream" );
        }
        free_.push_back( static_cast<U32>( slots_.size() ) );
        slots_.emplace_back();
    }
    U32 const slot = free_.back();
    free_.pop_back();
    slots_[slot].adapter = &adapter;
    return { slot | sideBit_, ++slots_[slot].generation };
}

void
SlotTable::checkFresh( EntityId const& id ) const {
    U32 const slot = id.slot & ~EntityId::clientBit;
    bool const isNext = slot == slots_.size() && slot < maxSlots;
    bool const isFree =
        slot < slots_.size() && !slots_[slot].adapter && id.generation > slots_[slot].generation;
    if ( ( id.slot & EntityId::clientBit ) != sideBit_ || id.isNull() || ( !isNext && !isFree ) ) {
        throwAttrLogRecordException( "entity is announced under a name in use" );
    }
}

void
SlotTable::arrive( EntityId const& id, Adapter* adapter ) {
    checkFresh( id );
    if ( ( id.slot & ~EntityId::clientBit ) == slots_.size() ) {
        slots_.emplace_back();
    }
    at( id ) = { adapter, id.generation };
}

SlotTable::Adapter*
SlotTable::find( EntityId const& id ) const {
    U32 const slot = id.slot & ~EntityId::clientBit;
    if ( slot >= slots_.size() || id.generation > slots_[slot].generation || id.isNull() ) {
        throwEntityIdUnavailableException( "entity was never announced" );
    }
    return id.generation == slots_[slot].generation ? slots_[slot].adapter : nullptr;
}

void
SlotTable::release( EntityId const& id ) {
    at( id ).adapter = nullptr;
    if ( isOwn_ ) {
        free_.push_back( id.slot & ~EntityId::clientBit );
    }
}

} // namespace Kiv::NboAttrLog
