#include "agent/output/StatusFile.h"

#include <iostream>
#include <system_error>

#include "agent/output/FileReplacement.h"
#include "agent/output/StatusWriter.h"

namespace Agent {

StatusFile::StatusFile( RunContext const& context ) : context_( context ) {
    checkReplaceable( *context.options.statusFile );
}

bool
StatusFile::write() const {
    try {
        replaceFile( *context_.options.statusFile, [this]( std::ostream& out ) {
            writeStatus( out, context_.scenario, context_.emulation.statusDir() );
        } );
        return true;
    } catch ( std::system_error const& fault ) {
        std::cerr << "igmphost: error: the status is not written: " << fault.what() << std::endl;
        return false;
    }
}

} // namespace Agent
