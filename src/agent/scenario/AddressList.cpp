#include "agent/scenario/AddressList.h"

#include <algorithm>
#include <string>
#include <unordered_set>

namespace Agent {

using Zornet::IpAddr;

namespace {

constexpr char expectation[] =
    "an IPv4 address such as 239.1.1.1, or a range such as 239.1.1.0/24 or 239.1.1.1-239.1.1.50";
constexpr U64 widestBlock = 0xffffffff;

/// The address at one end of a range. Raises RangeException that tells of the whole text.
IpAddr
endAddr( std::string_view end, std::string_view text ) {
    try {
        return IpAddr( end );
    } catch ( Kiv::RangeException const& ) {
        Kiv::throwExpected( expectation, text );
    }
}

AddressBlock
blockOf( U32 first, U64 count, std::string_view text ) {
    if ( count > widestBlock ) {
        Kiv::throwExpected( "a range of at most 4294967295 addresses", text );
    }
    return { IpAddr::fromHost( first ), static_cast<U32>( count ), 1, {} };
}

AddressBlock
fromPrefix( std::string_view addr, std::string_view length, std::string_view text ) {
    U32 const first = endAddr( addr, text ).hostOrder();
    U64 bits = 0;
    try {
        bits = Kiv::parseUnsigned( length, 32, "prefix length" );
    } catch ( Kiv::RangeException const& ) {
        Kiv::throwExpected( "a prefix length from 0 to 32 behind '/'", text );
    }
    U64 const count = U64{ 1 } << ( 32 - bits );
    if ( first % count != 0 ) {
        std::string const begin =
            Kiv::ValueTraits<IpAddr>::format( IpAddr::fromHost( static_cast<U32>( first - first % count ) ) );
        Kiv::throwExpected( "the first address of a block, " + begin + "/" + std::to_string( bits ), text );
    }
    return blockOf( first, count, text );
}

AddressBlock
fromEnds( std::string_view begin, std::string_view end, std::string_view text ) {
    U32 const first = endAddr( begin, text ).hostOrder();
    U32 const last = endAddr( end, text ).hostOrder();
    if ( last < first ) {
        Kiv::throwExpected( "a range whose last address is not below its first", text );
    }
    return blockOf( first, U64{ last } - first + 1, text );
}

using Blocks = std::vector<AddressBlock const*>;

/// Blocks that follow each other without a step: their ends alone tell what they have in common.
void
compareEnds( std::span<AddressBlock const* const> blocks, std::vector<AddressRepetition>& found ) {
    AddressBlock const* farthest = nullptr;
    for ( AddressBlock const* const block : blocks ) {
        if ( farthest && block->first <= farthest->last() ) {
            found.push_back( { block->first, farthest->at, block->at } );
        }
        if ( !farthest || block->last() > farthest->last() ) {
            farthest = block;
        }
    }
}

struct Claim {
    U32 addr;
    AddressBlock const* block;
};

/// Blocks with steps, which may lie within each other and have nothing in common.
void
compareEach( std::span<AddressBlock const* const> blocks, std::vector<AddressRepetition>& found ) {
    std::vector<Claim> claims;
    for ( AddressBlock const* const block : blocks ) {
        for ( U32 i = 0; i < block->count; ++i ) {
            claims.push_back( { block->addr( i ).hostOrder(), block } );
        }
    }
    std::stable_sort( claims.begin(), claims.end(), []( Claim const& a, Claim const& b ) {
        return a.addr < b.addr;
    } );
    std::unordered_set<AddressBlock const*> told;
    for ( std::size_t i = 1; i < claims.size(); ++i ) {
        if ( claims[i].addr == claims[i - 1].addr && told.insert( claims[i].block ).second ) {
            found.push_back( { IpAddr::fromHost( claims[i].addr ), claims[i - 1].block->at,
                               claims[i].block->at } );
        }
    }
}

void
compareCluster( std::span<AddressBlock const* const> blocks, std::vector<AddressRepetition>& found ) {
    bool const stepped = std::any_of( blocks.begin(), blocks.end(), []( AddressBlock const* block ) {
        return block->step != 1 && block->count != 1;
    } );
    if ( blocks.size() > 1 ) {
        ( stepped ? compareEach : compareEnds )( blocks, found );
    }
}

Blocks
inOrderOfAddress( std::span<AddressBlock const> blocks ) {
    Blocks ordered;
    ordered.reserve( blocks.size() );
    for ( AddressBlock const& block : blocks ) {
        ordered.push_back( &block );
    }
    std::stable_sort( ordered.begin(), ordered.end(), []( AddressBlock const* a, AddressBlock const* b ) {
        return a->first < b->first;
    } );
    return ordered;
}

} // namespace

AddressBlock
addressBlock( std::string_view text ) {
    if ( std::size_t const slash = text.find( '/' ); slash != std::string_view::npos ) {
        return fromPrefix( text.substr( 0, slash ), text.substr( slash + 1 ), text );
    }
    if ( std::size_t const dash = text.find( '-' ); dash != std::string_view::npos ) {
        return fromEnds( text.substr( 0, dash ), text.substr( dash + 1 ), text );
    }
    return { endAddr( text, text ), 1, 1, {} };
}

AddressList::AddressList( std::vector<AddressBlock> blocks ) {
    std::vector<U64> ends;
    ends.reserve( blocks.size() );
    for ( AddressBlock const& block : blocks ) {
        ends.push_back( count_ += block.count );
        lowest_ = std::min( lowest_, block.first );
        highest_ = std::max( highest_, block.last() );
    }
    blocks_ = std::make_shared<std::vector<AddressBlock> const>( std::move( blocks ) );
    ends_ = std::make_shared<std::vector<U64> const>( std::move( ends ) );
}

IpAddr
AddressList::addr( U64 index ) const {
    auto const end = std::upper_bound( ends_->begin(), ends_->end(), index );
    AddressBlock const& block = blocks_->at( static_cast<std::size_t>( end - ends_->begin() ) );
    return block.addr( static_cast<U32>( index + block.count - *end ) );
}

std::vector<AddressRepetition>
repetitions( std::span<AddressBlock const> blocks ) {
    std::vector<AddressRepetition> found;
    Blocks const ordered = inOrderOfAddress( blocks );
    std::size_t begin = 0;
    IpAddr last;
    for ( std::size_t i = 0; i < ordered.size(); ++i ) {
        if ( i != begin && ordered[i]->first > last ) {
            compareCluster( std::span( ordered ).subspan( begin, i - begin ), found );
            begin = i;
        }
        last = i == begin ? ordered[i]->last() : std::max( last, ordered[i]->last() );
    }
    compareCluster( std::span( ordered ).subspan( begin ), found );
    return found;
}

void
tellRepetitions(
    std::span<AddressBlock const> blocks, std::string const& noun, std::vector<std::string> const& files,
    Diagnostics& errors
) {
    for ( auto const& [addr, first, second] : repetitions( blocks ) ) {
        errors.addRepetition( second, noun + " " + Kiv::ValueTraits<IpAddr>::format( addr ), first, files );
    }
}

} // namespace Agent
