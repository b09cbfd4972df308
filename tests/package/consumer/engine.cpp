/// The state machines over a packet access object of the program's own, and the free functions of the send
/// path.

#include "Check.h"
#include "engine/IgmpHostConfigHelper.h"
#include "engine/IgmpHostTestAgentRoot.h"
#include "engine/IgmpV3HostGroupSm.h"
#include "engine/RandomDelay.h"
#include "engine/V3Report.h"
#include "platform/kiv/Activity.h"
#include "platform/kiv/GenericIf.h"

namespace Consumer {

using namespace Igmp;
using Kiv::Ptr;

namespace {

Zornet::IpAddr const group( "239.1.1.1" );

/// Counts what it is given to send.
class CountingPam : public Zornet::EthDevPam {
  public:
    CountingPam() : EthDevPam( "counting" ) {}
    void txPktIs( Ptr<Zornet::Pkt> const& ) override { ++sent; }

    int sent = 0;
};

struct Tree {
    Ptr<Lumo::TimerWheel> wheel{ new Lumo::TimerWheel };
    Ptr<IgmpHostTestAgentRoot> root = igmpHostTestAgentRootFactory( "root" );
    Ptr<CountingPam> pam{ new CountingPam };

    Tree() {
        root->igmpHostDirIs( igmpHostDirFactory( "hosts" ) );
        root->igmpHostStatusDirIs( igmpHostStatusDirFactory( "status" ) );
        root->igmpHostDirSmIs(
            igmpHostDirSmFactory( nullptr, root->igmpHostDir(), root->igmpHostStatusDir(), wheel )
        );
    }
    ~Tree() { root->igmpHostDir()->igmpHostDelAll(); }

    Ptr<IgmpHost> hostIs( IgmpVersion version ) const {
        auto const host = root->igmpHostDir()->igmpHostIs( "host" );
        host->igmpVersionIs( version );
        host->pamIs( pam );
        host->externalPamIs( true );
        host->configVersionIs( 1 );
        host->intfConfigVersionIs( 1 );
        host->enabledIs( true );
        return host;
    }
    Ptr<IgmpHostSm> sm() const { return root->igmpHostDirSm()->igmpHostSm( "host" ); }
    Ptr<IgmpHostStatus> status() const { return root->igmpHostStatusDir()->igmpHostStatus( "host" ); }
};

void
join( IgmpHost& host ) {
    auto const record = host.v3groupIs( group );
    record->filterModeIs( IgmpV3GroupRecord::exclude );
    record->versionIs( 1 );
}

void
useVersion2() {
    Tree const tree;
    join( *tree.hostIs( igmpVersion2 ) );
    auto const sm = tree.sm();
    check( tree.status()->v2ReportsSent() == 1 );
    sendV12Report( sm.get(), group );
    sendV2Leave( sm.get(), group );
    sendV12ReportLeaveCommon(
        sm.get(), sm->v2ReportPkt(), group, Zornet::IgmpMessageType::v2MembershipReport, group
    );
    check( tree.pam->sent == 4 && tree.status()->v2ReportsSent() == 2 && tree.status()->v2LeavesSent() == 1 );
    check( !v1QuerierSeenRecently( sm.get() ) );
    maybeStartGroupTimer( sm.get(), group, 100 );
    check( sm->groupTimerSm( group )->responseDelayTimerState() == timerRunning );
}

void
useVersion3() {
    Tree const tree;
    join( *tree.hostIs( igmpVersion3 ) );
    Kiv::defaultActivity()->activitySm().runFor( 3.0 );
    auto const sm = tree.sm();
    check( tree.pam->sent == 2 ); // the join and its repeat
    check( sm->aggregatedSenderSm()->v3GroupSm( group ) && sm->v3GroupCallbackSm( group ) );
    sm->igmpV3HostGeneralQueryTimerSm()->doSetTimer( 1.0 );
    Kiv::defaultActivity()->activitySm().runFor( 2.0 );
    check( tree.pam->sent == 3 && tree.status()->v3CurrentStateReportSent() >= 1 );
}

/// Spreads a group the way that a controller does, which knows no class.
void
useReplication() {
    auto const host = igmpHostFactory( "host" );
    auto const record = host->v3groupIs( group );
    record->replicateIs( true );
    record->replicateNumberIs( 3 );
    record->versionIs( 1 );
    IgmpHostConfigHelper::GenericIf_ view( igmpHostConfigHelperFactory( nullptr, "helper", host ) );
    view.attributeOp(
        { view.attributeId( "replicateGroup" ), Kiv::GenericIf::opSet }, {}, Kiv::GenericValue::of( group )
    );
    check( host->v3groups() == 3 );
}

void
useLooseMachines() {
    auto const host = igmpHostFactory( "host" );
    check( igmpV3GroupCallbackSmFactory( nullptr, group, host->v3groupIs( group ) )->mcastAddr() == group );
    check( igmpV3HostGroupSmFactory( nullptr, group, host )->group() == group );
    check( maxResponseTime( 100 ) == 10.0 );
    Kiv::Seconds const delay = randomDelay( 10.0 );
    check( delay >= 1.0 && delay < 10.0 );
}

} // namespace

void
useEngine() {
    useVersion2();
    useVersion3();
    useReplication();
    useLooseMachines();
}

} // namespace Consumer
