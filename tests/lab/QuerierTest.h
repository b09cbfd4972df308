#pragma once

#include <gmock/gmock.h>

#include <memory>
#include <string>

#include "lab/Querier.h"
#include "tests/lab/ScriptedPam.h"
#include "tests/support/SimulatedTest.h"

namespace Lab {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A querier with the default variables (robustness 2, query interval 125, response interval 10, last member
/// interval 1) and what is needed to talk to it. The group is G, sources are numbers.
class QuerierTest : public Support::SimulatedTest {
  protected:
    inline static IpAddr const G{ "239.1.1.1" };
    inline static IpAddr const otherGroup{ "239.1.1.2" };
    inline static IpAddr const host{ "10.0.0.1" };
    inline static IpAddr const otherHost{ "10.0.0.2" };
    /// What the default variables make of it.
    static constexpr Seconds membershipInterval = 260.0;
    static constexpr Seconds lastMemberQueryTime = 2.0;

    /// Makes a querier of `config`, enables it and forgets its first query.
    void start( QuerierConfig const& config = {} );
    void startVersion( U8 version );

    static IpAddr source( int number ) {
        return IpAddr::fromHost( 0x0a010000U + static_cast<U32>( number ) );
    }
    static std::vector<IpAddr> sources( std::vector<int> const& numbers );
    void hear( Bytes const& frame ) { pam->arrive( frame ); }
    /// A version 3 report with one record for G.
    void hear( Record type, std::vector<int> const& numbers, IpAddr const& from = host );

    /// Time from here on is counted from now, and what was sent is forgotten.
    void mark();
    Seconds sinceMark() const { return Kiv::now() - mark_; }
    /// What was sent since the mark: "1.000 Q" for a general query, "1.000 Q(G)", "1.000 Q(G,1 2)", with " S"
    /// behind for the flag.
    std::vector<std::string> sent() const;
    /// The state of G: "none", "INCLUDE (1 2)" or "EXCLUDE (1 2, 3)".
    std::string state() const { return state( G ); }
    std::string state( IpAddr const& group ) const;
    QuerierGroup const& group() const { return *querier->group( G ); }
    Seconds sourceTimer( int number ) const { return group().sourceTimerRemaining( source( number ) ); }

    Kiv::Ptr<ScriptedPam> pam{ new ScriptedPam };
    std::unique_ptr<Querier> querier;

  private:
    Seconds mark_ = 0.0;
};

/// The time is right to the tick.
#define EXPECT_TIME( actual, expected ) EXPECT_NEAR( actual, expected, 1e-6 )

} // namespace Lab
