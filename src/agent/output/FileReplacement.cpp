#include "agent/output/FileReplacement.h"

#include <ext/stdio_filebuf.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <iostream>
#include <system_error>

#include "agent/output/OutputFile.h"

namespace Agent {

namespace {

namespace fs = std::filesystem;

fs::file_status
statusOf( std::string const& path ) {
    std::error_code ignored;
    fs::file_status const status = fs::symlink_status( path, ignored );
    return fs::is_symlink( status ) && followsLinks() ? fs::status( path, ignored ) : status;
}

bool
isWrittenAsItIs( std::string const& path ) {
    fs::file_status const status = statusOf( path );
    return fs::exists( status ) && !fs::is_regular_file( status );
}

/// What is to be replaced: of a link that is followed, the file that it leads to, and the link stays one.
/// Where none is followed the path stands as it is, whatever it has become since somebody looked: a link in
/// that place is then replaced itself.
fs::path
realPath( std::string const& path ) {
    std::error_code ignored;
    fs::path const real = followsLinks() ? fs::canonical( path, ignored ) : fs::path();
    return real.empty() ? fs::path( path ) : real;
}

/// Beside the file itself, so that the one can take the place of the other.
fs::path
temporaryPath( fs::path const& real ) {
    return real.string() + ".new-" + std::to_string( getpid() );
}

void
writeTo(
    std::string const& path, Zornet::FileDescriptor file, std::function<void( std::ostream& )> const& write
) {
    if ( !file ) {
        throwCannotWrite( path, errno );
    }
    errno = 0;
    __gnu_cxx::stdio_filebuf<char> buffer( file.release(), std::ios::out | std::ios::binary );
    std::ostream out( &buffer );
    write( out );
    if ( !out.flush() || !buffer.close() ) {
        throwCannotWrite( path, errno != 0 ? errno : EIO );
    }
}

void
writeToStandardOutput( std::function<void( std::ostream& )> const& write ) {
    errno = 0;
    write( std::cout );
    if ( !std::cout.flush() ) {
        throwCannotWrite( "the standard output", errno != 0 ? errno : EIO );
    }
}

/// What an agent of the same number left there goes first.
void
writeNew( fs::path const& path, std::function<void( std::ostream& )> const& write ) {
    std::error_code ignored;
    fs::remove( path, ignored );
    writeTo( path, newOutputFile( path ), write );
}

} // namespace

void
replaceFile( std::string const& path, std::function<void( std::ostream& )> const& write ) {
    if ( path == "-" ) {
        writeToStandardOutput( write );
        return;
    }
    if ( isWrittenAsItIs( path ) ) {
        writeTo( path, outputFile( path ), write );
        return;
    }
    fs::path const real = realPath( path );
    fs::path const temporary = temporaryPath( real );
    try {
        writeNew( temporary, write );
        fs::rename( temporary, real );
    } catch ( std::system_error const& fault ) {
        std::error_code ignored;
        fs::remove( temporary, ignored );
        throwCannotWrite( path, fault.code().value() );
    }
}

void
checkReplaceable( std::string const& path ) {
    if ( path == "-" ) {
        return;
    }
    if ( fs::is_symlink( statusOf( path ) ) ) {
        throwCannotWrite( path, ELOOP );
    }
    if ( isWrittenAsItIs( path ) ) {
        if ( access( path.c_str(), W_OK ) != 0 ) {
            throwCannotWrite( path, errno );
        }
        if ( fs::is_directory( path ) ) {
            throwCannotWrite( path, EISDIR );
        }
        return;
    }
    fs::path const temporary = temporaryPath( realPath( path ) );
    try {
        writeNew( temporary, []( std::ostream& ) {} );
    } catch ( std::system_error const& fault ) {
        throwCannotWrite( path, fault.code().value() );
    }
    fs::remove( temporary );
}

} // namespace Agent
