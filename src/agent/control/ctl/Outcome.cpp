#include "agent/control/ctl/Outcome.h"

#include <iostream>

#include "agent/control/ctl/HostView.h"

namespace Agent {

void
print( Outcome const& outcome, CtlOptions const& options ) {
    if ( options.isJson ) {
        nlohmann::ordered_json const json = { { "done", outcome.verb },
                                              { "hosts", namesOf( outcome.hosts ) },
                                              { "objects", outcome.objects },
                                              { "raised", outcome.raised } };
        std::cout << textOf( json ) << '\n';
        return;
    }
    std::cout << told( outcome.hosts ) << ": " << outcome.verb;
    if ( !outcome.objects.empty() ) {
        std::cout << ' ' << joined( outcome.objects );
    }
    if ( !outcome.raised.empty() ) {
        std::cout << "; raised " << joined( outcome.raised );
    }
    std::cout << '\n';
}

} // namespace Agent
