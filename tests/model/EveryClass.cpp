#include "tests/model/EveryClass.h"

namespace Igmp {

EveryClass::EveryClass() {
    root_->igmpHostDirIs( igmpHostDirFactory( "hosts" ) );
    root_->igmpHostStatusDirIs( igmpHostStatusDirFactory( "status" ) );
    root_->igmpHostDirSmIs(
        igmpHostDirSmFactory( nullptr, root_->igmpHostDir(), root_->igmpHostStatusDir(), wheel() )
    );
    host_ = root_->igmpHostDir()->igmpHostIs( "host" );
    host_->igmpVersionIs( igmpVersion3 );
    host_->enabledIs( true );
    Ptr<IgmpV3GroupRecord> const record = host_->v3groupIs( group_ );
    record->sourceIs()->sourceIpIs( Zornet::IpAddr( "10.9.9.1" ), 1 );
    record->versionIs( 1 );
    sm_ = root_->igmpHostDirSm()->igmpHostSm( "host" );
    addEntities();
    addMachines();
    addVlanClasses();
}

EveryClass::~EveryClass() {
    taggingPam_->smDel();
    host_->enabledIs( false );
}

void
EveryClass::addEntities() {
    add( root_ );
    add( root_->igmpHostDir() );
    add( root_->igmpHostStatusDir() );
    add( host_ );
    add( root_->igmpHostStatusDir()->igmpHostStatus( "host" ) );
    add( host_->v3group( group_ ) );
    add( host_->v3group( group_ )->source() );
}

void
EveryClass::addMachines() {
    add( root_->igmpHostDirSm() );
    add( sm_ );
    add( sm_->groupTimerSm( group_ ) );
    add( sm_->aggregatedSenderSm() );
    add( sm_->aggregatedSenderSm()->v3GroupSm( group_ ) );
    add( sm_->igmpV3HostGeneralQueryTimerSm() );
    add( sm_->igmpV3HostGeneralQueryTimerSm()->queryReportInfo() );
    add( sm_->v3GroupCallbackSm( group_ ) );
    add( sm_->v3GroupQueryTimerSmIs(
        nullptr, wheel(), group_, host_, root_->igmpHostStatusDir()->igmpHostStatus( "host" )
    ) );
    add( igmpHostConfigHelperFactory( nullptr, "host", host_ ) );
}

void
EveryClass::addVlanClasses() {
    Ptr<Zornet::VlanPamMultiplexer> const multiplexer =
        Zornet::VlanPamMultiplexer::VlanPamMultiplexerIs( nullptr, Zornet::IntfId( "trunk" ) );
    add( multiplexer );
    add( Zornet::VlanPktMultiplexer::VlanPktMultiplexerIs( nullptr, Zornet::IntfId( "trunk" ) ) );
    add( Zornet::vlanPamFactory( "100", multiplexer ) );
    taggingPam_ = new Zornet::VlanTaggingPam( "tagging", 100, new Zornet::Pam( "inner" ) );
    add( taggingPam_ );
    add( taggingPam_->sm() );
}

} // namespace Igmp
