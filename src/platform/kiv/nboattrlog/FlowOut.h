#pragma once

#include <bit>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "platform/kiv/nboattrlog/Plan.h"

namespace Kiv::NboAttrLog {

class FlowOut;

/// Flows in the order in which they began to wait. It owns none.
class WaitingList {
  public:
    FlowOut* head() const { return head_; }
    bool isEmpty() const { return !head_; }
    void append( FlowOut& flow );
    void remove( FlowOut& flow );

  private:
    FlowOut* head_ = nullptr;
    FlowOut* tail_ = nullptr;
};

/// What waits to be sent of one entity, and of the children in it that wait. It exists while there is
/// something: an entity with nothing to send costs none. Only marks are kept, never values.
class FlowOut {
  public:
    /// The state of one collection: keys that changed, and how far its full send has come.
    struct Collection {
        std::set<std::string> dirtyKeys;
        std::unique_ptr<CollectionCursor> bookmark;
    };

    explicit FlowOut( Entity::KivNboAttrLogSa& adapter ) : adapter_( adapter ) {}
    FlowOut( FlowOut const& ) = delete;
    FlowOut& operator=( FlowOut const& ) = delete;
    ~FlowOut() { listIs( nullptr ); }

    Entity::KivNboAttrLogSa& adapter() const { return adapter_; }

    /// One bit a scalar, by its row.
    bool kivIsDirty( unsigned row ) const { return ( kivDirtyBitSet0_ & bit( row ) ) != 0; }
    void kivIsDirtyIs( unsigned row, bool dirty ) { set( kivDirtyBitSet0_, row, dirty ); }
    void isToldIs( unsigned row ) { set( untold_, row, false ); }
    void kivDirtyBitSet0Is( U64 bits ) { kivDirtyBitSet0_ = bits; }
    U64 kivDirtyBitSet0() const { return kivDirtyBitSet0_; }
    /// Scalars that the peer has in their default, for as long as nothing else is sent.
    bool isUntold( unsigned row ) const { return ( untold_ & bit( row ) ) != 0; }
    void untoldIs( U64 bits ) { untold_ = bits; }
    /// Keys of collections of values, in their form on the stream.
    bool hasDirtyKeys( unsigned row ) const;
    std::string firstDirtyKey( unsigned row ) { return *collections_[row].dirtyKeys.begin(); }
    void kivIsDirtyIs( unsigned row, std::string const& key ) { collections_[row].dirtyKeys.insert( key ); }
    void kivIsDirtyDel( unsigned row, std::string const& key );
    bool kivIsDirty( unsigned row, std::string const& key ) const;
    /// False while a first full send of the collection is to be made.
    bool kivHasSynced( unsigned row ) const { return ( unsynced_ & bit( row ) ) == 0; }
    void kivHasSyncedIs( unsigned row, bool synced ) { set( unsynced_, row, !synced ); }
    void unsyncedIs( U64 rows ) { unsynced_ = rows; }
    /// Where a full send goes on.
    std::unique_ptr<CollectionCursor>& bookmark( unsigned row ) { return collections_[row].bookmark; }
    bool hasBookmark( unsigned row ) const;
    void bookmarkDel( unsigned row );

    /// True if anything waits here; children count.
    bool hasDirtyAttributes() const;
    bool hasAnnouncements( Plan const& plan ) const {
        return ( kivDirtyBitSet0_ & plan.announcements() ) != 0 || !announcing.isEmpty();
    }
    /// Forgets how far full sends have come.
    void collectionsDel() { collections_.clear(); }

    /// The list that this one waits in, of its parent or of the stream; null for none.
    WaitingList* list() const { return list_; }
    void listIs( WaitingList* list );

    WaitingList waiting;    ///< children with anything to send
    WaitingList announcing; ///< children whose announcements come behind those of this entity

  private:
    friend class WaitingList;

    static U64 bit( unsigned row ) { return U64{ 1 } << row; }
    static void set( U64& bits, unsigned row, bool value ) {
        bits = value ? bits | bit( row ) : bits & ~bit( row );
    }

    Entity::KivNboAttrLogSa& adapter_;
    WaitingList* list_ = nullptr;
    FlowOut* next_ = nullptr;
    FlowOut* previous_ = nullptr;
    U64 kivDirtyBitSet0_ = 0;
    U64 untold_ = 0;
    U64 unsynced_ = 0;
    std::map<unsigned, Collection> collections_;
};

} // namespace Kiv::NboAttrLog
