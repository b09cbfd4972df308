#include "agent/output/FileReplacement.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace Agent {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void
fail( std::string const& path, int error ) {
    throw std::system_error( error, std::generic_category(), "cannot write " + path );
}

bool
isWrittenAsItIs( std::string const& path ) {
    std::error_code ignored;
    fs::file_status const status = fs::status( path, ignored );
    return fs::exists( status ) && !fs::is_regular_file( status );
}

/// Beside the file itself, so that the one can take the place of the other. A link stays a link.
fs::path
realPath( std::string const& path ) {
    std::error_code ignored;
    fs::path const real = fs::canonical( path, ignored );
    return real.empty() ? fs::path( path ) : real;
}

fs::path
temporaryPath( fs::path const& real ) {
    return real.string() + ".new-" + std::to_string( getpid() );
}

void
writeTo( std::string const& path, std::function<void( std::ostream& )> const& write ) {
    errno = 0;
    std::ofstream out( path, std::ios::binary | std::ios::trunc );
    if ( out ) {
        write( out );
        out.close();
    }
    if ( !out ) {
        fail( path, errno != 0 ? errno : EIO );
    }
}

} // namespace

void
replaceFile( std::string const& path, std::function<void( std::ostream& )> const& write ) {
    if ( isWrittenAsItIs( path ) ) {
        writeTo( path, write );
        return;
    }
    fs::path const real = realPath( path );
    fs::path const temporary = temporaryPath( real );
    try {
        writeTo( temporary, write );
        fs::rename( temporary, real );
    } catch ( std::system_error const& fault ) {
        std::error_code ignored;
        fs::remove( temporary, ignored );
        fail( path, fault.code().value() );
    }
}

void
checkReplaceable( std::string const& path ) {
    if ( isWrittenAsItIs( path ) ) {
        if ( access( path.c_str(), W_OK ) != 0 ) {
            fail( path, errno );
        }
        if ( fs::is_directory( path ) ) {
            fail( path, EISDIR );
        }
        return;
    }
    fs::path const temporary = temporaryPath( realPath( path ) );
    try {
        writeTo( temporary, []( std::ostream& ) {} );
    } catch ( std::system_error const& fault ) {
        fail( path, fault.code().value() );
    }
    fs::remove( temporary );
}

} // namespace Agent
