#include "agent/expecting/Shortfalls.h"

#include <sstream>
#include <stdexcept>

#include "agent/expecting/BridgeMembership.h"

namespace Agent {

namespace {

using Igmp::IgmpHostStatus;
using Igmp::IgmpV3GroupRecord;

constexpr std::size_t mostTold = 10;

class Check {
  public:
    Check( Expectation const& expectation, RunContext const& context )
        : expectation_( expectation ), context_( context ) {}

    std::vector<std::string> run();

  private:
    template <class F>
    void forEachOwnHost( F f );
    void checkHost( std::string const& name );
    void checkTotals();
    void checkMembership( MembershipCondition const& condition );
    void checkJoined( GroupSpec const& spec, Membership const& known, std::string const& side );
    void checkNotJoined( GroupSpec const& spec, Membership const& known, std::string const& side );
    Membership knownTo( MembershipCondition const& condition ) const;
    void add( std::string const& text );

    Expectation const& expectation_;
    RunContext const& context_;
    std::vector<std::string> texts_;
    U64 untold_ = 0;
};

/// What the entry says of sources is compared only where it says anything.
std::optional<Want>
wantOf( GroupSpec const& spec ) {
    auto const mode = spec.settings.value<IgmpV3GroupRecord::FilterMode>( IgmpV3GroupRecord::attrFilterMode );
    if ( mode == IgmpV3GroupRecord::exclude && spec.sources.empty() ) {
        return {};
    }
    std::vector<Zornet::IpAddr> sources;
    spec.sources.forEach( [&]( Zornet::IpAddr const& source ) { sources.push_back( source ); } );
    bool const includes = mode == IgmpV3GroupRecord::include;
    return Want{ includes ? Lab::FilterMode::include : Lab::FilterMode::exclude, Lab::SourceSet( sources ) };
}

std::string
textOf( Want const& want ) {
    std::ostringstream text;
    text << want;
    return text.str();
}

std::string
textOf( Zornet::IpAddr const& addr ) {
    return Kiv::ValueTraits<Zornet::IpAddr>::format( addr );
}

std::vector<std::string>
Check::run() {
    if ( expectation_.total ) {
        checkTotals();
    } else if ( !expectation_.status.empty() ) {
        forEachOwnHost( [this]( std::string const& name ) { checkHost( name ); } );
    }
    for ( MembershipCondition const& condition : expectation_.memberships ) {
        try {
            checkMembership( condition );
        } catch ( std::runtime_error const& fault ) {
            add( fault.what() );
        }
    }
    if ( untold_ != 0 ) {
        texts_.push_back( "and " + std::to_string( untold_ ) + " more" );
    }
    return std::move( texts_ );
}

template <class F>
void
Check::forEachOwnHost( F f ) {
    for ( HostRange const& range : expectation_.selection.ranges() ) {
        for ( U32 i = 0; i < range.count; ++i ) {
            if ( context_.scenario.shard.has( range.number + i ) ) {
                f( context_.scenario.hosts[range.entry].hostName( range.first + i ) );
            }
        }
    }
}

void
Check::checkHost( std::string const& name ) {
    Kiv::Ptr<IgmpHostStatus> const status = context_.emulation.statusDir().igmpHostStatus( name );
    if ( !status ) {
        add( name + ": expected a host that is enabled, found none" );
        return;
    }
    for ( StatusCondition const& condition : expectation_.status ) {
        Kiv::Attribute const& row = *condition.attribute;
        if ( !condition.comparison.holds( row.read( *status ) ) ) {
            add( name + ": " + row.name + ": expected " + condition.comparison.text() + ", found " +
                 Kiv::attributeText( row, *status ) );
        }
    }
}

/// A host without a status counts nothing.
void
Check::checkTotals() {
    for ( StatusCondition const& condition : expectation_.status ) {
        Kiv::Attribute const& row = *condition.attribute;
        U64 sum = 0;
        forEachOwnHost( [&]( std::string const& name ) {
            if ( auto const status = context_.emulation.statusDir().igmpHostStatus( name ) ) {
                sum += std::any_cast<U32>( row.read( *status ) );
            }
        } );
        if ( !condition.comparison.holdsFor( static_cast<double>( sum ) ) ) {
            add( std::string( row.name ) + " in all: expected " + condition.comparison.text() + ", found " +
                 std::to_string( sum ) );
        }
    }
}

Membership
Check::knownTo( MembershipCondition const& condition ) const {
    if ( condition.bridge ) {
        return bridgeMembership( *condition.bridge );
    }
    Membership known;
    for ( Lab::Querier const* const querier : context_.queriers ) {
        for ( auto const& [group, want] : learnedMembership( *querier ) ) {
            auto const [at, isNew] = known.emplace( group, want );
            at->second = isNew ? want : at->second + want;
        }
    }
    return known;
}

void
Check::checkMembership( MembershipCondition const& condition ) {
    Membership const known = knownTo( condition );
    std::string const side = condition.bridge ? "bridge " + condition.bridge->device : "querier";
    for ( GroupSpec const& spec : condition.joined ) {
        checkJoined( spec, known, side );
    }
    for ( GroupSpec const& spec : condition.notJoined ) {
        checkNotJoined( spec, known, side );
    }
    std::optional<Comparison> const& count = condition.groupCount;
    if ( count && !count->holdsFor( static_cast<double>( known.size() ) ) ) {
        add( side + ": groupCount: expected " + count->text() + ", found " + std::to_string( known.size() ) );
    }
}

void
Check::checkJoined( GroupSpec const& spec, Membership const& known, std::string const& side ) {
    std::optional<Want> const want = wantOf( spec );
    spec.groups.forEach( [&]( Zornet::IpAddr const& group ) {
        auto const at = known.find( group );
        bool const isMet = at != known.end() && ( !want || at->second == *want );
        if ( !isMet ) {
            add( side + ": " + textOf( group ) + ": expected " + ( want ? textOf( *want ) : "a member" ) +
                 ", found " + ( at == known.end() ? "none" : textOf( at->second ) ) );
        }
    } );
}

void
Check::checkNotJoined( GroupSpec const& spec, Membership const& known, std::string const& side ) {
    spec.groups.forEach( [&]( Zornet::IpAddr const& group ) {
        if ( auto const at = known.find( group ); at != known.end() ) {
            add( side + ": " + textOf( group ) + ": expected no member, found " + textOf( at->second ) );
        }
    } );
}

void
Check::add( std::string const& text ) {
    if ( texts_.size() < mostTold ) {
        texts_.push_back( text );
    } else {
        ++untold_;
    }
}

} // namespace

std::vector<std::string>
shortfalls( Expectation const& expectation, RunContext const& context ) {
    return Check( expectation, context ).run();
}

} // namespace Agent
