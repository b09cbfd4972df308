/// Entities and their factories, reactors, values and text forms, the generic interface.

#include "Check.h"
#include "model/IgmpHostDir.h"
#include "model/IgmpHostIntfConfig.h"
#include "model/IgmpHostStatusDir.h"
#include "platform/kiv/GenericIf.h"

namespace Consumer {

using namespace Igmp;

namespace {

/// A reactor outside the library, called by the library.
class Watcher : public IgmpHost::Notifiee {
  public:
    explicit Watcher( Kiv::Ptr<IgmpHost> const& host ) : Notifiee( host ) { isRegisteredNotifieeIs( true ); }
    void onMtu() override { mtu = notifier()->mtu(); }

    Kiv::U32 mtu = 0;
};

template <class E, class Action>
bool
raises( Action action ) {
    try {
        action();
    } catch ( E const& ) {
        return true;
    }
    return false;
}

void
useEntities() {
    auto const dir = igmpHostDirFactory( "hosts" );
    auto const host = dir->igmpHostIs( "host" );
    Kiv::Ptr<Watcher> const watcher( new Watcher( host ) );
    host->mtuIs( 900 );
    check( watcher->mtu == 900 );
    checkText( igmpHostStatusFactory( "host" )->name().view(), "host" );
    check( igmpHostStatusDirFactory( "status" )->igmpHostStatuss() == 0 );
    check( igmpHostFactory( "alone" )->v3groups() == 0 );
}

void
useRecords() {
    Zornet::IpAddr const group( "239.1.1.1" );
    auto const record = igmpV3GroupRecordFactory( "record", group );
    check( !groupIsJoined( record ) );
    record->sourceIs()->sourceIpIs( Zornet::IpAddr( "10.0.0.1" ), 1 );
    check( groupIsJoined( record ) );
    check( igmpV3HostGroupSourceListFactory()->sourceIps() == 0 );
}

void
useTexts() {
    checkText( stringValue( igmpVersion3 ).view(), "igmpVersion3" );
    checkText( valueToStrep( timerRunning ).view(), "'timerRunning'" );
    check( IgmpVersionInstance( 2 ) == igmpVersion2 );
    check( raises<Kiv::RangeException>( [] { TimerStateInstance( "no such state" ); } ) );
    IgmpHostIntfConfig const config( Zornet::IntfId( "trunk" ), "et1", 100, true );
    Kiv::String8 const text = valueToStrep( config );
    auto at = text.begin();
    check( IgmpHostIntfConfig( at, text.end() ) == config );
}

/// By names alone: types of values are compared across the border of the library.
void
useGenericInterface() {
    auto const host = igmpHostFactory( "host" );
    IgmpHost::GenericIf_ view( host );
    view.attributeOp(
        { view.attributeId( "mtu" ), Kiv::GenericIf::opSet }, {}, Kiv::GenericValue::of( Kiv::U32{ 800 } )
    );
    check( host->mtu() == 800 );
    check( raises<Kiv::UnknownAttrException>( [&view] { view.attributeId( "no such attribute" ); } ) );
}

} // namespace

void
useModel() {
    useEntities();
    useRecords();
    useTexts();
    useGenericInterface();
}

} // namespace Consumer
