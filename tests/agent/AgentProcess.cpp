#include "tests/agent/AgentProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>
#include <thread>
#include <utility>

#include "tests/support/Paths.h"

namespace Agent {

namespace {

std::array<int, 2>
newPipe() {
    std::array<int, 2> ends{};
    if ( pipe2( ends.data(), O_CLOEXEC ) != 0 ) {
        throw std::system_error( errno, std::generic_category(), "pipe2" );
    }
    return ends;
}

} // namespace

AgentProcess::AgentProcess( std::vector<std::string> arguments, std::vector<std::string> const& prefix ) {
    arguments.insert( arguments.begin(), Support::agentBinary() );
    arguments.insert( arguments.begin(), prefix.begin(), prefix.end() );
    std::vector<char*> words;
    for ( std::string& argument : arguments ) {
        words.push_back( argument.data() );
    }
    words.push_back( nullptr );
    std::array<int, 2> const out = newPipe();
    std::array<int, 2> const err = newPipe();
    process_ = fork();
    if ( process_ == 0 ) {
        dup2( out[1], STDOUT_FILENO );
        dup2( err[1], STDERR_FILENO );
        execvp( words[0], words.data() );
        _exit( 127 );
    }
    close( out[1] );
    close( err[1] );
    pipes_ = { out[0], err[0] };
}

AgentProcess::~AgentProcess() {
    if ( !ended_ ) {
        kill( process_, SIGKILL );
        waitpid( process_, nullptr, 0 );
    }
    for ( int const pipe : pipes_ ) {
        close( pipe );
    }
}

/// False once both streams have ended.
bool
AgentProcess::readSome() {
    std::array<pollfd, 2> waits{ pollfd{ pipes_[0], POLLIN, 0 }, pollfd{ pipes_[1], POLLIN, 0 } };
    if ( pipes_[0] < 0 && pipes_[1] < 0 ) {
        return false;
    }
    poll( waits.data(), waits.size(), -1 );
    for ( std::size_t i = 0; i < waits.size(); ++i ) {
        if ( waits[i].revents == 0 ) {
            continue;
        }
        std::array<char, 65536> part;
        ssize_t const bytes = read( pipes_[i], part.data(), part.size() );
        if ( bytes > 0 ) {
            written_[i].append( part.data(), static_cast<std::size_t>( bytes ) );
        } else {
            close( std::exchange( pipes_[i], -1 ) );
        }
    }
    return true;
}

bool
AgentProcess::waitFor( Stream stream, std::string const& text ) {
    while ( written( stream ).find( text ) == std::string::npos ) {
        if ( !readSome() ) {
            return false;
        }
    }
    return true;
}

bool
AgentProcess::waitUntilItWaitsToWrite( int descriptor ) const {
    using namespace std::chrono_literals;
    auto const end = std::chrono::steady_clock::now() + 30s;
    std::string const wanted =
        ( std::ostringstream() << SYS_write << " 0x" << std::hex << descriptor << ' ' ).str();
    while ( std::chrono::steady_clock::now() < end ) {
        std::ifstream call( "/proc/" + std::to_string( process_ ) + "/syscall" );
        std::string line;
        if ( std::getline( call, line ) && line.starts_with( wanted ) ) {
            return true;
        }
        std::this_thread::yield();
    }
    return false;
}

void
AgentProcess::signal( int number ) const {
    kill( process_, number );
}

std::set<std::string>
AgentProcess::rights() const {
    std::set<std::string> rights;
    std::string const tasks = "/proc/" + std::to_string( process_ ) + "/task";
    for ( auto const& task : std::filesystem::directory_iterator( tasks ) ) {
        std::ifstream in( task.path() / "status" );
        std::string all;
        for ( std::string line; std::getline( in, line ); ) {
            if ( line.starts_with( "CapPrm:" ) || line.starts_with( "NoNewPrivs:" ) ) {
                all += line.substr( line.find( '\t' ) + 1 ) + " ";
            }
        }
        rights.insert( all );
    }
    return rights;
}

std::size_t
AgentProcess::residentBytes() const {
    std::ifstream statm( "/proc/" + std::to_string( process_ ) + "/statm" );
    std::size_t all = 0;
    std::size_t resident = 0;
    statm >> all >> resident;
    return resident * static_cast<std::size_t>( sysconf( _SC_PAGESIZE ) );
}

int
AgentProcess::exitStatus() {
    while ( readSome() ) {
    }
    if ( !ended_ ) {
        waitpid( process_, &status_, 0 );
        ended_ = true;
    }
    return WIFSIGNALED( status_ ) ? -WTERMSIG( status_ ) : WEXITSTATUS( status_ );
}

} // namespace Agent
