#pragma once

#include <compare>
#include <cstddef>
#include <iterator>
#include <memory>

#include "platform/kiv/Ptr.h"
#include "platform/kiv/Types.h"

namespace Kiv {

/// The bits of `value` in reverse order.
U32 bitReverse( U32 value );

/// Where a key stands in the walk of a hash map: of two keys, the one whose place is less is met first.
template <class Key>
struct WalkPlace {
    explicit WalkPlace( Key const& k ) : order( bitReverse( k.hash() ) ), key( k ) {}
    friend bool operator<( WalkPlace const& a, WalkPlace const& b ) {
        return a.order < b.order || ( a.order == b.order && a.key < b.key );
    }

    U32 order;
    Key key;
};

/// The link by which an object is a member of a hash map. An object is a member of one map at most.
class HashMember {
  public:
    HashMember() = default;
    HashMember( HashMember const& ) = delete;
    HashMember& operator=( HashMember const& ) = delete;

  private:
    friend class HashMapGeneric;
    template <class, class>
    friend class HashMap;

    HashMember* next_ = nullptr;
    U32 order_ = 0; ///< the bit-reversed hash of the key
};

/// The part of a hash map that does not know its member type: buckets, growth and the order of the walk. A
/// bucket is the top bits of the bit-reversed hash and a chain stands in that order too, so a walk meets
/// members by ascending reversed hash, whatever was inserted first and however large the table has grown.
class HashMapGeneric {
  public:
    /// Rises with every insertion and removal; iterators compare it.
    U32 generation() const { return generation_; }
    std::size_t size() const { return size_; }

  protected:
    explicit HashMapGeneric( unsigned int initialBuckets ) : initialBuckets_( initialBuckets ) {}

    std::size_t buckets() const { return buckets_ ? std::size_t{ 1 } << bits_ : 0; }
    HashMember* findFirst() const;
    HashMember* findNextG( HashMember const* member ) const;
    HashMember* findNextBucket( std::size_t bucket ) const;
    HashMember** bucketOf( U32 order ) const { return &buckets_[bits_ == 0 ? 0 : order >> ( 32 - bits_ )]; }
    void grow();

  private:
    void fetchAhead( std::size_t bucket ) const;

  protected:
    std::unique_ptr<HashMember*[]> buckets_; ///< none until the first insertion
    unsigned int initialBuckets_;
    unsigned int bits_ = 0;
    std::size_t size_ = 0;
    U32 generation_ = 0;
};

/// A hash map of reference-counted members that carry their own link (HashMember) and tell their key by
/// fwkKey(). Keys have hash(), == and <. The map holds one reference to each member. An iterator holds one
/// too, so it survives the removal of the member under it, and of any other: it then goes on at the next
/// place in the walk's order.
template <class Member, class Key>
class HashMap : public HashMapGeneric {
  public:
    class Iterator;

    HashMap() : HashMapGeneric( 4 ) {}
    ~HashMap() { clear(); }
    HashMap( HashMap const& ) = delete;
    HashMap& operator=( HashMap const& ) = delete;

    /// The member, or null.
    Member* find( Key const& key ) const {
        if ( !buckets_ ) {
            return nullptr;
        }
        U32 const order = bitReverse( key.hash() );
        Member* const at = firstInChain( *bucketOf( order ), order, key );
        return at && at->fwkKey() == key ? at : nullptr;
    }
    /// Takes a member in. Its key must be absent.
    void insert( Ptr<Member> const& member ) {
        if ( size_ >= buckets() ) {
            grow();
        }
        HashMember* const link = member.get();
        link->order_ = bitReverse( member->fwkKey().hash() );
        HashMember** at = bucketOf( link->order_ );
        while ( *at && isBefore( *at, link->order_, member->fwkKey() ) ) {
            at = &( *at )->next_;
        }
        link->next_ = *at;
        *at = link;
        member->referencesInc();
        ++size_;
        ++generation_;
    }
    /// Takes a member out and returns it; null where the key is absent.
    Ptr<Member> remove( Key const& key ) {
        Member* const member = find( key );
        if ( !member ) {
            return nullptr;
        }
        HashMember* const link = member;
        HashMember** at = bucketOf( link->order_ );
        while ( *at != link ) {
            at = &( *at )->next_;
        }
        *at = link->next_;
        link->next_ = nullptr;
        --size_;
        ++generation_;
        Ptr<Member> held( member );
        member->referencesDec();
        return held;
    }
    /// Removes every member, in the order of the walk, those included that are inserted meanwhile.
    void clear() {
        while ( size_ != 0 ) {
            for ( Iterator at = begin(); at; ++at ) {
                remove( at->fwkKey() );
            }
        }
    }

    Iterator begin() const { return Iterator( this, static_cast<Member*>( findFirst() ) ); }
    std::default_sentinel_t end() const { return std::default_sentinel; }
    /// At the member under `key`, or where it would stand: the next one in the order of the walk.
    Iterator startAtHash( Key const& key ) const {
        return Iterator( this, firstNotBefore( bitReverse( key.hash() ), key ) );
    }

  private:
    static bool isBefore( HashMember const* member, U32 order, Key const& key ) {
        return member->order_ < order ||
               ( member->order_ == order && static_cast<Member const*>( member )->fwkKey() < key );
    }
    Member* firstNotBefore( U32 order, Key const& key ) const {
        if ( !buckets_ ) {
            return nullptr;
        }
        HashMember** const bucket = bucketOf( order );
        if ( Member* const at = firstInChain( *bucket, order, key ) ) {
            return at;
        }
        return static_cast<Member*>( findNextBucket( static_cast<std::size_t>( bucket - buckets_.get() ) + 1 )
        );
    }
    static Member* firstInChain( HashMember* at, U32 order, Key const& key ) {
        while ( at && isBefore( at, order, key ) ) {
            at = at->next_;
        }
        return static_cast<Member*>( at );
    }
    Member* after( Member const* member, U32 seenGeneration ) const {
        HashMember const* const link = member;
        if ( seenGeneration == generation_ ) {
            return static_cast<Member*>( findNextG( link ) );
        }
        Member* const at = firstNotBefore( link->order_, member->fwkKey() );
        return at && at->fwkKey() == member->fwkKey() ? static_cast<Member*>( findNextG( at ) ) : at;
    }
};

template <class Member, class Key>
class HashMap<Member, Key>::Iterator {
  public:
    using value_type = Member;
    using difference_type = std::ptrdiff_t;

    Iterator() = default;
    Iterator( HashMap const* map, Member* at ) : map_( map ), at_( at ), generation_( map->generation() ) {}

    explicit operator bool() const { return static_cast<bool>( at_ ); }
    Member& operator*() const { return *at_; }
    Member* operator->() const { return at_.get(); }
    Ptr<Member> const& ptr() const { return at_; }
    Iterator& operator++() {
        at_ = map_->after( at_.get(), generation_ );
        generation_ = map_->generation();
        return *this;
    }
    friend bool operator==( Iterator const& at, std::default_sentinel_t ) { return !at; }

  private:
    HashMap const* map_ = nullptr;
    Ptr<Member> at_;
    U32 generation_ = 0;
};

} // namespace Kiv
