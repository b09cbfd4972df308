#include "platform/kiv/nboattrlog/FlowOut.h"

#include <algorithm>

namespace Kiv::NboAttrLog {

void
WaitingList::append( FlowOut& flow ) {
    flow.previous_ = tail_;
    flow.next_ = nullptr;
    ( tail_ ? tail_->next_ : head_ ) = &flow;
    tail_ = &flow;
}

void
WaitingList::remove( FlowOut& flow ) {
    ( flow.previous_ ? flow.previous_->next_ : head_ ) = flow.next_;
    ( flow.next_ ? flow.next_->previous_ : tail_ ) = flow.previous_;
}

void
FlowOut::listIs( WaitingList* list ) {
    if ( list_ ) {
        list_->remove( *this );
    }
    list_ = list;
    if ( list_ ) {
        list_->append( *this );
    }
}

void
FlowOut::kivIsDirtyDel( unsigned row, std::string const& key ) {
    if ( auto const at = collections_.find( row ); at != collections_.end() ) {
        at->second.dirtyKeys.erase( key );
    }
}

bool
FlowOut::hasDirtyKeys( unsigned row ) const {
    auto const at = collections_.find( row );
    return at != collections_.end() && !at->second.dirtyKeys.empty();
}

bool
FlowOut::hasBookmark( unsigned row ) const {
    auto const at = collections_.find( row );
    return at != collections_.end() && at->second.bookmark;
}

void
FlowOut::bookmarkDel( unsigned row ) {
    if ( auto const at = collections_.find( row ); at != collections_.end() ) {
        at->second.bookmark.reset();
    }
}

bool
FlowOut::kivIsDirty( unsigned row, std::string const& key ) const {
    auto const at = collections_.find( row );
    return at != collections_.end() && at->second.dirtyKeys.count( key ) != 0;
}

bool
FlowOut::hasDirtyAttributes() const {
    return kivDirtyBitSet0_ != 0 || unsynced_ != 0 || !waiting.isEmpty() || !announcing.isEmpty() ||
           std::any_of( collections_.begin(), collections_.end(), []( auto const& one ) {
               return !one.second.dirtyKeys.empty();
           } );
}

} // namespace Kiv::NboAttrLog
