#include "lab/querier/KivRxPam.h"

namespace Lab {

namespace {

QuerierConfig const&
checked( QuerierConfig const& config ) {
    config.check();
    return config;
}

} // namespace

Querier::Querier(
    QuerierConfig const& config, Kiv::Ptr<Zornet::Pam> const& pam,
    Kiv::Ptr<Lumo::TimerWheel const> const& wheel
)
    : config_( checked( config ) ),
      configInForce_( config ),
      pam_( validPtr( pam ) ),
      wheel_( validPtr( wheel ) ),
      packets_( config ),
      generalQueryTimer_( new Timer( wheel, [this] { handleGeneralQueryTimer(); } ) ),
      otherQuerierTimer_( new Timer( wheel, [this] { handleOtherQuerierGone(); } ) ) {}

Querier::~Querier() {
    enabledIs( false );
}

void
Querier::enabledIs( bool enabled ) {
    if ( enabled == enabled_ ) {
        return;
    }
    enabled_ = enabled;
    if ( enabled ) {
        rxPam_ = new KivRxPam( pam_, *this );
        rxPam_->isRegisteredNotifieeIs( true );
        startupQueriesLeft_ = configInForce_.startupQueryCount();
        handleGeneralQueryTimer();
        handleReadable();
    } else {
        rxPam_->stop();
        rxPam_ = nullptr;
        generalQueryTimer_->stop();
        otherQuerierTimer_->stop();
        configInForce_ = config_;
        groups_.clear();
    }
}

std::vector<IpAddr>
Querier::groups() const {
    std::vector<IpAddr> addresses;
    addresses.reserve( groups_.size() );
    for ( auto const& [address, group] : groups_ ) {
        addresses.push_back( address );
    }
    return addresses;
}

QuerierGroup const*
Querier::group( IpAddr const& group ) const {
    auto const at = groups_.find( group );
    return at == groups_.end() ? nullptr : at->second.get();
}

bool
Querier::forwards( IpAddr const& group, IpAddr const& source ) const {
    QuerierGroup const* const state = this->group( group );
    return state && state->forwards( source );
}

} // namespace Lab
