#include "platform/kiv/HashMap.h"

#include <bit>
#include <utility>

namespace Kiv {

U32
bitReverse( U32 value ) {
    value = ( ( value >> 1 ) & 0x55555555U ) | ( ( value & 0x55555555U ) << 1 );
    value = ( ( value >> 2 ) & 0x33333333U ) | ( ( value & 0x33333333U ) << 2 );
    value = ( ( value >> 4 ) & 0x0f0f0f0fU ) | ( ( value & 0x0f0f0f0fU ) << 4 );
    return __builtin_bswap32( value );
}

namespace {

/// How many buckets ahead of a walk its members are fetched.
constexpr std::size_t bucketsAhead = 8;

} // namespace

/// Members lie wherever they were allocated, and a walk that waits for the memory of one after the other
/// spends most of its time so. Fetched ahead, they come side by side. The link lies in the midst of what a
/// walk reads of a member.
void
HashMapGeneric::fetchAhead( std::size_t bucket ) const {
    if ( bucket < buckets() && buckets_[bucket] ) {
        constexpr std::ptrdiff_t around = 48;
        auto const* const link = reinterpret_cast<char const*>( buckets_[bucket] );
        __builtin_prefetch( link - around );
        __builtin_prefetch( link + around );
    }
}

HashMember*
HashMapGeneric::findFirst() const {
    for ( std::size_t bucket = 0; bucket < bucketsAhead; ++bucket ) {
        fetchAhead( bucket );
    }
    return findNextBucket( 0 );
}

HashMember*
HashMapGeneric::findNextBucket( std::size_t bucket ) const {
    for ( ; bucket < buckets(); ++bucket ) {
        fetchAhead( bucket + bucketsAhead );
        if ( buckets_[bucket] ) {
            return buckets_[bucket];
        }
    }
    return nullptr;
}

HashMember*
HashMapGeneric::findNextG( HashMember const* member ) const {
    if ( member->next_ ) {
        return member->next_;
    }
    HashMember** const bucket = bucketOf( member->order_ );
    return findNextBucket( static_cast<std::size_t>( bucket - buckets_.get() ) + 1 );
}

void
HashMapGeneric::grow() {
    std::size_t const oldCount = buckets();
    auto const old = std::move( buckets_ );
    bits_ = oldCount == 0 ? static_cast<unsigned int>( std::bit_width( initialBuckets_ ) - 1 ) : bits_ + 1;
    buckets_ = std::make_unique<HashMember*[]>( std::size_t{ 1 } << bits_ );
    HashMember** tail = nullptr;
    HashMember** tailOf = nullptr; // the bucket whose end `tail` is
    for ( std::size_t i = 0; i < oldCount; ++i ) {
        for ( HashMember* at = old[i]; at; ) {
            HashMember* const next = std::exchange( at->next_, nullptr );
            HashMember** const bucket = bucketOf( at->order_ );
            tail = bucket == tailOf ? tail : bucket;
            tailOf = bucket;
            *tail = at;
            tail = &at->next_;
            at = next;
        }
    }
}

} // namespace Kiv
