#include "agent/control/ctl/Consent.h"

#include <iostream>
#include <stdexcept>

namespace Agent {

void
Consent::add( std::string const& host, std::vector<Diagnostic> const& regrets ) {
    for ( Diagnostic const& regret : regrets ) {
        Regret& known = regrets_[regret.text];
        if ( known.hosts++ == 0 ) {
            known.firstHost = host;
            known.endsProcess = regret.endsProcess;
        }
    }
}

void
Consent::demand( bool isForced ) const {
    for ( auto const& [text, regret] : regrets_ ) {
        if ( regret.endsProcess && !isForced ) {
            throw std::invalid_argument(
                "refused: " + told( text, regret ) + "; --force does it all the same"
            );
        }
    }
    for ( auto const& [text, regret] : regrets_ ) {
        std::cerr << "igmphost: warning: " << told( text, regret ) << '\n';
    }
}

std::string
Consent::told( std::string const& text, Regret const& regret ) const {
    std::string const others =
        regret.hosts == 1 ? "" : " and " + std::to_string( regret.hosts - 1 ) + " more";
    return regret.firstHost + others + ": " + text;
}

} // namespace Agent
