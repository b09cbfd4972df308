#include "agent/control/ctl/ChangeReport.h"

#include <iostream>

#include "agent/control/ctl/HostView.h"

namespace Agent {

void
print( ChangeReport const& report, CtlOptions const& options ) {
    if ( options.isJson ) {
        nlohmann::ordered_json const json = { { "done", report.verb },
                                              { "hosts", namesOf( report.hosts ) },
                                              { "objects", report.objects },
                                              { "raised", report.raised } };
        std::cout << textOf( json ) << '\n';
        return;
    }
    std::cout << told( report.hosts ) << ": " << report.verb;
    if ( !report.objects.empty() ) {
        std::cout << ' ' << joined( report.objects );
    }
    if ( !report.raised.empty() ) {
        std::cout << "; raised " << joined( report.raised );
    }
    std::cout << '\n';
}

} // namespace Agent
