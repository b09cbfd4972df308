#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "agent/scenario/Diagnostics.h"
#include "platform/zornet/IpAddr.h"

namespace Agent {

using Kiv::U16;
using Kiv::U32;
using Kiv::U64;

/// `count` addresses, `step` apart; none is above 255.255.255.255.
struct AddressBlock {
    Zornet::IpAddr first;
    U32 count = 1;
    U32 step = 1;
    Position at;

    /// That index must be below `count`.
    Zornet::IpAddr addr( U32 index ) const {
        return Zornet::IpAddr::fromHost( first.hostOrder() + index * step );
    }
    Zornet::IpAddr last() const { return addr( count - 1 ); }
};

/// The block that a text describes: "239.1.1.1", "239.1.0.0/24" or "239.1.1.1-239.1.1.50". Raises
/// RangeException that says what was expected and found.
AddressBlock addressBlock( std::string_view text );

/// Addresses in an order, kept as blocks: a million consecutive ones cost no more than one. Copies share the
/// blocks.
class AddressList {
  public:
    AddressList() : AddressList( std::vector<AddressBlock>() ) {}
    explicit AddressList( std::vector<AddressBlock> blocks );

    U64 count() const { return count_; }
    bool empty() const { return count_ == 0; }
    std::span<AddressBlock const> blocks() const { return *blocks_; }
    // The list must not be empty.
    Zornet::IpAddr first() const { return blocks_->front().first; }
    Zornet::IpAddr lowest() const { return lowest_; }
    Zornet::IpAddr highest() const { return highest_; }

    /// Calls `f` with each address in order.
    template <class F>
    void forEach( F f ) const {
        for ( AddressBlock const& block : *blocks_ ) {
            for ( U32 i = 0; i < block.count; ++i ) {
                f( block.addr( i ) );
            }
        }
    }
    /// The address of that index, which must be below count(). Takes logarithmic time in the blocks.
    Zornet::IpAddr addr( U64 index ) const;

  private:
    std::shared_ptr<std::vector<AddressBlock> const> blocks_;
    std::shared_ptr<std::vector<U64> const> ends_; ///< how many addresses there are up to the end of a block
    U64 count_ = 0;
    Zornet::IpAddr lowest_ = Zornet::IpAddr::fromHost( 0xffffffff );
    Zornet::IpAddr highest_;
};

/// An address that two blocks have.
struct AddressRepetition {
    Zornet::IpAddr addr;
    Position first;  ///< where the earlier block stands
    Position second; ///< where the later one does
};

/// The lowest address for each block that has one in common with an earlier block. Takes time in proportion
/// to the blocks, and to the addresses of those that overlap with a step above 1.
std::vector<AddressRepetition> repetitions( std::span<AddressBlock const> blocks );
/// Tells them as errors. `noun` is a word for one address.
void tellRepetitions(
    std::span<AddressBlock const> blocks, std::string const& noun, std::vector<std::string> const& files,
    Diagnostics& errors
);

} // namespace Agent
