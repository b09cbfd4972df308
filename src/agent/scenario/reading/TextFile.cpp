#include "agent/scenario/reading/TextFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "platform/zornet/device/FileDescriptor.h"

namespace Agent {

namespace {

constexpr std::size_t mostBytes = 512 << 20;

[[noreturn]] void
fail( int number ) {
    throw std::system_error( number, std::generic_category() );
}

} // namespace

std::string
textOfFile( std::string const& path ) {
    Zornet::FileDescriptor const file( open( path.c_str(), O_RDONLY | O_CLOEXEC ) );
    if ( !file ) {
        fail( errno );
    }
    std::string text;
    std::size_t filled = 0;
    while ( true ) {
        text.resize( std::max( filled * 2, std::size_t{ 1 } << 16 ) );
        ssize_t const bytes = read( file.get(), text.data() + filled, text.size() - filled );
        if ( bytes < 0 && errno != EINTR ) {
            fail( errno );
        }
        if ( bytes == 0 ) {
            text.resize( filled );
            return text;
        }
        filled += static_cast<std::size_t>( std::max<ssize_t>( bytes, 0 ) );
        if ( filled > mostBytes ) {
            fail( EFBIG );
        }
    }
}

} // namespace Agent
