#include "agent/run/OutputPlaces.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <filesystem>
#include <map>

namespace Agent {

namespace {

/// What takes in whatever comes can take two outputs.
bool
takesAnything( struct stat const& status ) {
    return S_ISCHR( status.st_mode ) && status.st_rdev == makedev( 1, 3 ); // /dev/null
}

/// The same for every way to name one place; empty for one that outputs may share.
std::string
placeOf( std::string const& path ) {
    struct stat status {};
    bool const exists =
        ( path == "-" ? fstat( STDOUT_FILENO, &status ) : stat( path.c_str(), &status ) ) == 0;
    if ( exists ) {
        return takesAnything( status ) ? ""
                                       : "device " + std::to_string( status.st_dev ) + " inode " +
                                             std::to_string( status.st_ino );
    }
    std::error_code ignored;
    return std::filesystem::weakly_canonical( std::filesystem::absolute( path, ignored ), ignored ).string();
}

/// The files of the scenario by their places. What is no regular file, such as a terminal, is not replaced.
std::map<std::string, std::string>
scenarioPlaces( RunOptions const& options ) {
    std::map<std::string, std::string> fileAt;
    for ( std::string const& file : options.scenarioFiles ) {
        std::error_code ignored;
        if ( std::filesystem::is_regular_file( file, ignored ) ) {
            fileAt.emplace( placeOf( file ), file );
        }
    }
    return fileAt;
}

} // namespace

std::string
outputClash( RunOptions const& options ) {
    std::optional<std::string> const lines = options.statusInterval ? std::optional( "-" ) : std::nullopt;
    std::map<std::string, std::string> const scenarioAt = scenarioPlaces( options );
    std::map<std::string, std::string> optionAt; // by place
    for ( auto const& [option, path] :
          { std::pair( "--pcap", options.captureFile ), std::pair( "--status", options.statusFile ),
            std::pair( "--status-interval", lines ), std::pair( "--junit", options.junitFile ),
            std::pair( "--control", options.controlPath ) } ) {
        std::string const place = path ? placeOf( *path ) : "";
        if ( place.empty() ) {
            continue;
        }
        if ( auto const scenario = scenarioAt.find( place ); scenario != scenarioAt.end() ) {
            return option + std::string( " cannot go to the scenario itself, " ) + scenario->second;
        }
        if ( auto const [other, isNew] = optionAt.try_emplace( place, option ); !isNew ) {
            return other->second + " and " + option + " cannot both go to " +
                   ( *path == "-" ? "the standard output" : *path );
        }
    }
    return "";
}

bool
takesStandardOutput( RunOptions const& options ) {
    std::string const place = placeOf( "-" );
    auto const isThere = [&place]( std::optional<std::string> const& path ) {
        return path && !place.empty() && placeOf( *path ) == place;
    };
    return isThere( options.statusFile ) || isThere( options.captureFile ) || isThere( options.junitFile );
}

} // namespace Agent
