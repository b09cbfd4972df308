#include "agent/querying/DeviceQuerier.h"

namespace Agent {

DeviceQuerier::DeviceQuerier(
    Kiv::String8 const& device, Zornet::NamespaceName const& ns, Lab::QuerierConfig const& config,
    Kiv::Ptr<Lumo::TimerWheel const> const& wheel
)
    : pam_( Zornet::EthDevPamIs( device ) ), querier_( config, pam_, wheel ) {
    pam_->nsIs( ns );
    pam_->deviceOpenIs( true );
    querier_.enabledIs( true );
}

DeviceQuerier::~DeviceQuerier() {
    querier_.enabledIs( false );
    pam_->deviceOpenIs( false );
}

} // namespace Agent
