/// Calls something of every family that the shared library exports, from load to teardown.

#include <cstdlib>
#include <iostream>

#include "Check.h"
#include "engine/Registration.h"
#include "model/Registration.h"
#include "platform/kiv/Clock.h"
#include "platform/kiv/IntrospectionReactor.h"
#include "vlan/Registration.h"

namespace Consumer {

namespace {

int failures = 0;

void
fail( std::source_location const& at ) {
    std::cerr << at.file_name() << ':' << at.line() << ": in " << at.function_name() << ": check failed\n";
    ++failures;
}

/// Loading made the types known; the registration functions declare them, once, to who wants to know.
void
useRegistration() {
    check( Kiv::Type::find( "Igmp::IgmpHost" ) && Kiv::Type::find( "Zornet::VlanTaggingPam" ) );
    auto const reactor = Kiv::IntrospectionReactor::global();
    check( reactor->types().empty() );
    reactor->hasActiveIntrospectionIs( true );
    Igmp::kivInitIgmpHost();
    Igmp::kivInitIgmpHostSm();
    Zornet::kivInitVlanTaggingPam();
    std::size_t const declared = reactor->types().size();
    check( declared == Kiv::Type::types().size() );
    Igmp::kivInitIgmpHost();
    check( reactor->types().size() == declared );
}

} // namespace

void
check( bool holds, std::source_location at ) {
    if ( !holds ) {
        fail( at );
    }
}

void
checkText( std::string_view found, std::string_view expected, std::source_location at ) {
    if ( found != expected ) {
        std::cerr << "found '" << found << "', expected '" << expected << "'\n";
        fail( at );
    }
}

} // namespace Consumer

int
main() {
    Kiv::SimulatedClock clock;
    Kiv::ClockScope const scope( clock );
    Consumer::useRegistration();
    Consumer::useModel();
    Consumer::useEngine();
    Consumer::useVlan();
    return Consumer::failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
