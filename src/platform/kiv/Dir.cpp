#include "platform/kiv/Dir.h"

namespace Kiv {

Dir::~Dir() {
    for ( Entry const& entry : entries_ ) {
        orphan( *entry.child );
    }
}

Ptr<Entity>
Dir::entry( Name const& name ) const {
    Entry const* const found = entries_.find( name );
    return found ? found->child : nullptr;
}

void
Dir::entryIs( Ptr<Entity> const& child ) {
    Ptr<Entity> const present = entry( validPtr( child )->name() );
    if ( present == child ) {
        return;
    }
    if ( present ) {
        throwNameInUseException( child->name().string() );
    }
    adopt( 0, *child );
    entries_.insert( new Entry( child ) );
    modificationCountInc();
}

void
Dir::entryDel( Name const& name ) {
    if ( Ptr<Entry> const removed = entries_.remove( name ) ) {
        orphan( *removed->child );
        modificationCountInc();
    }
}

} // namespace Kiv
