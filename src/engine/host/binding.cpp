#include "engine/IgmpHostDirSm.h"
#include "engine/Trace.h"
#include "engine/host/Reactors.h"
#include "platform/zornet/EthHdr.h"
#include "vlan/VlanTaggingPam.h"

namespace Igmp {

namespace {

void
openDevice( Zornet::EthDevPam& device, U16 protocol, Zornet::NamespaceName const& ns ) {
    device.ethProtocolIs( protocol );
    device.captureModeIs( 1 );
    device.nsIs( ns );
    device.deviceOpenIs( true );
}

} // namespace

/// Gives the host its way to the wire, always from the ground up: nothing is compared with the binding
/// before.
void
IgmpHostSm::handleIntfConfig() {
    if ( !initialized_ ) {
        return;
    }
    if ( igmpHost()->externalPam() ) {
        bindExternalPam();
        return;
    }
    unbind();
    if ( igmpHost()->intfConfigVersion() == 0 || igmpHost()->deviceName().empty() || !enabled_ ) {
        return;
    }
    bool const shared = igmpHost()->tagged() && igmpHost()->useMux();
    if ( Ptr<Zornet::EthDevPam> const device = shared ? sharedDevice() : ownDevice() ) {
        txPamIs( device );
        bindReceiveSide( device );
    }
}

/// What was bound before is dropped by reference alone, and what is given is taken for a device without a
/// test.
void
IgmpHostSm::bindExternalPam() {
    Ptr<Zornet::Pam> const pam = igmpHost()->pam();
    if ( pam ) {
        KIV_TRACE( igmpHostTrace, 8 ) << " Setting pam to external parameter " << name_;
    } else {
        KIV_TRACE( igmpHostTrace, 8 ) << " External Pam is NULL " << name_;
    }
    cutTaggingPam();
    txPamIs( static_cast<Zornet::EthDevPam*>( pam.get() ) );
    rxPamIs( pam );
}

void
IgmpHostSm::unbind() {
    if ( !txPam_ ) {
        return;
    }
    if ( useMux_ ) {
        releaseSharedDevice();
    } else {
        txPam_->deviceOpenIs( false );
    }
    useMux_ = false;
    cutTaggingPam();
    rxPamIs( nullptr );
    txPamIs( nullptr );
}

Ptr<Zornet::EthDevPam>
IgmpHostSm::ownDevice() {
    Ptr<Zornet::EthDevPam> const device( new Zornet::EthDevPam( igmpHost()->deviceName() ) );
    U16 const protocol = igmpHost()->tagged() ? Zornet::EthDevPam::everyProtocol : Zornet::ethTypeIp;
    openDevice( *device, protocol, igmpHost()->ns() );
    return device;
}

/// The interface alone is the key of sharing: a later host rides on whatever device the first one opened.
Ptr<Zornet::EthDevPam>
IgmpHostSm::sharedDevice() {
    Zornet::IntfId const& intfId = igmpHost()->intfId();
    Ptr<Zornet::VlanPamMultiplexer> multiplexer = igmpHostDirSm_->multiplexerDir( intfId );
    bool const isFirst = !multiplexer;
    if ( isFirst ) {
        multiplexer = igmpHostDirSm_->multiplexerDirIs( nullptr, intfId );
        igmpHostDirSm_->multiplexerRefCountIs( intfId, 1 );
    } else {
        igmpHostDirSm_->multiplexerRefCountInc( intfId, 1 );
    }
    useMux_ = true;
    useMuxIntfId_ = intfId;
    if ( !isFirst ) {
        return multiplexer->innerEthDevPam();
    }
    Ptr<Zornet::EthDevPam> const device = Zornet::EthDevPamIs( igmpHost()->deviceName() );
    multiplexer->innerPamIs( device );
    multiplexer->innerEthDevPamIs( device );
    openDevice( *device, Zornet::EthDevPam::everyProtocol, igmpHost()->ns() );
    return device;
}

/// Other hosts may still sit on the device; the last one closes it. A host's channel stays in the
/// multiplexer.
void
IgmpHostSm::releaseSharedDevice() {
    if ( igmpHostDirSm_->multiplexerRefCountDec( useMuxIntfId_, 1 ) != 0 ) {
        return;
    }
    KIV_TRACE( igmpHostTrace, 7 ) << " host " << name_ << "multiplexer " << useMuxIntfId_ << " is 0.";
    igmpHostDirSm_->multiplexerDir( useMuxIntfId_ )->innerEthDevPam()->deviceOpenIs( false );
    igmpHostDirSm_->multiplexerDirDel( useMuxIntfId_ );
    igmpHostDirSm_->multiplexerRefCountDel( useMuxIntfId_ );
}

/// Frames reach the host untagged, so a tagged one reads through an access object that takes the tag off.
void
IgmpHostSm::bindReceiveSide( Ptr<Zornet::EthDevPam> const& device ) {
    if ( !igmpHost()->tagged() ) {
        rxPamIs( device );
        return;
    }
    U16 const vlanId = igmpHost()->vlanId();
    if ( !igmpHost()->useMux() ) {
        taggingPam_ = new Zornet::VlanTaggingPam( igmpHost()->deviceName(), vlanId, device );
        rxPamIs( taggingPam_ );
        return;
    }
    Ptr<Zornet::VlanPamMultiplexer> const mux = igmpHostDirSm_->multiplexerDir( igmpHost()->intfId() );
    Kiv::invariant( mux != nullptr, "mux" );
    Ptr<Zornet::VlanPam> const channel = Zornet::VlanPam::VlanPamIs( std::to_string( vlanId ), mux );
    mux->vlanPamIs( channel );
    rxPamIs( channel );
}

/// The tagging access object and its watcher hold each other; cut, they go with the binding.
void
IgmpHostSm::cutTaggingPam() {
    if ( taggingPam_ ) {
        taggingPam_->smDel();
        taggingPam_ = nullptr;
    }
}

} // namespace Igmp
