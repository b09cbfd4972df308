#include "agent/traffic/CaptureFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iostream>
#include <stdexcept>

#include "agent/output/OutputFile.h"
#include "platform/kiv/Clock.h"
#include "platform/zornet/device/Device.h"

namespace Agent {

namespace {

constexpr int longestFrame = 65535;
constexpr U64 recordHeaderBytes = 16;

/// With nanoseconds, as the file's header says, in place of microseconds.
timeval
timestamp( Kiv::Seconds time ) {
    constexpr double nanosecondsPerSecond = 1e9;
    double const seconds = std::floor( time );
    return { static_cast<time_t>( seconds ),
             static_cast<suseconds_t>( ( time - seconds ) * nanosecondsPerSecond ) };
}

/// How much of the file can be read, where its end may be a part of a frame that did not fit. A frame begins
/// at `from`, and there are `size` bytes.
U64
wholeRecords( std::string const& file, U64 from, U64 size ) {
    std::ifstream in( file, std::ios::binary );
    while ( true ) {
        struct {
            bpf_u_int32 seconds, nanoseconds, bytes, bytesOnTheWire;
        } header{};
        in.seekg( static_cast<std::streamoff>( from ) );
        in.read( reinterpret_cast<char*>( &header ), sizeof header );
        U64 const next = from + recordHeaderBytes + header.bytes;
        if ( !in || next > size ) {
            return std::min( from, size );
        }
        from = next;
    }
}

pcap_dumper_t*
dumperTo( std::string const& path, pcap_t* capture ) {
    // The standard output stays open for others when the capture ends.
    Zornet::FileDescriptor file = path == "-"
                                      ? Zornet::FileDescriptor( fcntl( STDOUT_FILENO, F_DUPFD_CLOEXEC, 0 ) )
                                      : outputFile( path );
    std::FILE* const stream = file ? fdopen( file.get(), "wb" ) : nullptr;
    if ( !stream ) {
        throwCannotWrite( path, errno );
    }
    file.release();
    return pcap_dump_fopen( capture, stream ); // closes what it cannot write to
}

} // namespace

CaptureFile::CaptureFile( RunContext const& context )
    : context_( context ),
      handle_(
          pcap_open_dead_with_tstamp_precision( DLT_EN10MB, longestFrame, PCAP_TSTAMP_PRECISION_NANO ),
          &pcap_close
      ) {
    dumper_ = dumperTo( *context.options.captureFile, handle_.get() );
    if ( !dumper_ ) {
        throw std::runtime_error( std::string( "cannot write " ) + pcap_geterr( handle_.get() ) );
    }
    bytes_ = captureHeaderBytes;
    context_.traffic.listenerIs( this );
    flush();
}

CaptureFile::~CaptureFile() {
    close();
}

ExitStatus
CaptureFile::handleEnded() {
    flush();
    close();
    return failed_ ? exitFailed : exitDone;
}

void
CaptureFile::handleFrame( Zornet::Device const& device, std::span<Zornet::U8 const> frame ) {
    if ( !context_.farEnds.empty() &&
         context_.farEnds.contains( deviceLabel( device.ns(), device.name() ) ) ) {
        return; // the hosts' end of that cable shows the frame
    }
    U64 const bytes = recordHeaderBytes + frame.size();
    if ( context_.options.captureLimit && bytes_ + bytes > *context_.options.captureLimit ) {
        std::cerr << "igmphost: the capture ends: " << *context_.options.captureFile
                  << " is as long as it may be, with " << frames_ << " frames" << std::endl;
        flush();
        close();
        return;
    }
    auto const length = static_cast<bpf_u_int32>( frame.size() );
    pcap_pkthdr const header{ timestamp( Kiv::now() ), length, length };
    errno = 0;
    pcap_dump( reinterpret_cast<u_char*>( dumper_ ), &header, frame.data() );
    if ( ferror( pcap_dump_file( dumper_ ) ) != 0 ) {
        fail( errno );
        return;
    }
    ++frames_;
    bytes_ += bytes;
    if ( !flushAsked_ ) {
        flushAsked_ = true;
        Kiv::defaultActivity()->activitySm().turnEndIs( this );
    }
}

void
CaptureFile::handleTurnEnd() {
    flushAsked_ = false;
    flush();
}

void
CaptureFile::flush() {
    if ( !dumper_ ) {
        return;
    }
    errno = 0;
    if ( pcap_dump_flush( dumper_ ) == 0 ) {
        flushedBytes_ = bytes_;
    } else {
        fail( errno );
    }
}

void
CaptureFile::fail( int error ) {
    std::string const& file = *context_.options.captureFile;
    failed_ = true;
    std::cerr << "igmphost: error: the capture ends: cannot write " << file << ": " << std::strerror( error )
              << "; the hosts go on" << std::endl;
    Zornet::FileDescriptor const written( dup( fileno( pcap_dump_file( dumper_ ) ) ) );
    close();
    struct stat status {};
    // Where the standard output goes there may be more than the capture, and who opened it may go on there.
    if ( file != "-" && fstat( written.get(), &status ) == 0 && S_ISREG( status.st_mode ) ) {
        auto const size = static_cast<U64>( status.st_size );
        auto const whole = static_cast<off_t>( wholeRecords( file, flushedBytes_, size ) );
        [[maybe_unused]] int const cut = ftruncate( written.get(), whole );
    }
}

void
CaptureFile::close() {
    if ( !dumper_ ) {
        return;
    }
    context_.traffic.listenerIs( nullptr );
    if ( flushAsked_ ) {
        flushAsked_ = false;
        Kiv::defaultActivity()->activitySm().turnEndDel( this );
    }
    pcap_dump_close( dumper_ );
    dumper_ = nullptr;
}

} // namespace Agent
