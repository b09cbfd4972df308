#include "agent/output/OutputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace Agent {

namespace {

constexpr mode_t readableForAll = 0666; // less what the umask takes away

Zornet::FileDescriptor
openToWrite( std::string const& path, int more ) {
    return Zornet::FileDescriptor( open( path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | more, readableForAll )
    );
}

bool
isLink( std::string const& path ) {
    struct stat status {};
    return lstat( path.c_str(), &status ) == 0 && S_ISLNK( status.st_mode );
}

} // namespace

bool
followsLinks() {
    return geteuid() != 0;
}

Zornet::FileDescriptor
outputFile( std::string const& path ) {
    return openToWrite( path, O_TRUNC | ( followsLinks() ? 0 : O_NOFOLLOW ) );
}

Zornet::FileDescriptor
newOutputFile( std::string const& path ) {
    return openToWrite( path, O_EXCL | O_NOFOLLOW );
}

void
throwCannotWrite( std::string const& path, int error ) {
    bool const isRefusedLink = error == ELOOP && !followsLinks() && isLink( path );
    throw std::system_error(
        error, std::generic_category(),
        "cannot write " + path + ( isRefusedLink ? ", a link, and as root none is followed" : "" )
    );
}

} // namespace Agent
