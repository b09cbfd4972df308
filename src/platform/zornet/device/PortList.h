#pragma once

#include <vector>

#include "platform/kiv/Ptr.h"
#include "platform/zornet/Types.h"

namespace Zornet {

class EthDevPam;

/// Open ports of a device, in the order of their opening. Each has a number, the numbers ascend along the
/// list, and a number is never used twice, so it may outlive its port. Adding costs O(1), removing and
/// finding O(log n). A removed port leaves a hole, which is closed up once holes prevail and nobody walks.
/// The list holds no references.
class PortList {
  public:
    class Walk;

    bool empty() const { return ports_ == 0; }
    std::size_t size() const { return ports_; }
    /// Takes in a port whose number is above all earlier ones.
    void insert( EthDevPam& port, U64 number );
    void remove( U64 number );
    /// The port of that number, or null.
    EthDevPam* find( U64 number ) const;

  private:
    struct Slot {
        U64 number;
        EthDevPam* port; ///< null for a hole
    };

    std::vector<Slot>::const_iterator at( U64 number ) const;
    void closeUp();

    std::vector<Slot> slots_;
    std::size_t ports_ = 0;
    unsigned walks_ = 0;
};

/// A pass over the ports that were open when it was made. It meets each of those that is still open when its
/// turn comes, and none that was opened since.
class PortList::Walk {
  public:
    explicit Walk( PortList& list ) : list_( list ), end_( list.slots_.size() ) { ++list_.walks_; }
    ~Walk();
    Walk( Walk const& ) = delete;
    Walk& operator=( Walk const& ) = delete;

    /// The next port, held so that it survives what it is told; null at the end.
    Kiv::Ptr<EthDevPam> next();

  private:
    PortList& list_;
    std::size_t at_ = 0;
    std::size_t const end_;
};

} // namespace Zornet
