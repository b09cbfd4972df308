#pragma once

#include <vector>

#include "platform/kiv/Entity.h"
#include "platform/kiv/nboattrlog/EntityId.h"

namespace Kiv::NboAttrLog {

/// The entities that one side of a stream has announced, by slot. It owns none.
class SlotTable {
  public:
    using Adapter = Entity::KivNboAttrLogSa;

    SlotTable( bool isClients, bool isOwn )
        : sideBit_( isClients ? EntityId::clientBit : 0 ), isOwn_( isOwn ) {}

    /// Own side: a fresh name for an entity that is about to be announced.
    EntityId give( Adapter& adapter );
    /// Other side: takes in the name of an announced entity; null for one that is gone here already. Raises
    /// AttrLogRecordException for a name that cannot be a fresh one.
    void arrive( EntityId const& id, Adapter* adapter );
    /// Raises what arrive() would raise.
    void checkFresh( EntityId const& id ) const;
    /// Names the entity that stands for an id from now on.
    void adapterIs( EntityId const& id, Adapter* adapter ) { at( id ).adapter = adapter; }
    /// The entity, or null for one that is gone. Raises EntityIdUnavailableException for a name that was
    /// never given.
    Adapter* find( EntityId const& id ) const;
    /// The entity is gone; its slot may be given again.
    void release( EntityId const& id );

  private:
    struct Slot {
        Adapter* adapter = nullptr;
        U32 generation = 0;
    };
    Slot& at( EntityId const& id ) { return slots_[id.slot & ~EntityId::clientBit]; }

    U32 const sideBit_;
    bool const isOwn_;
    std::vector<Slot> slots_;
    std::vector<U32> free_;
};

} // namespace Kiv::NboAttrLog
