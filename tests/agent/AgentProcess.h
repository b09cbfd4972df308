#pragma once

#include <sys/types.h>

#include <array>
#include <set>
#include <string>
#include <vector>

namespace Agent {

/// The real command, in a process of its own. What it writes is collected; nothing waits for time, only for
/// output and for the end.
class AgentProcess {
  public:
    enum Stream { output, errors };

    /// Starts the command with those arguments, behind a prefix such as { "setpriv", … }.
    explicit AgentProcess( std::vector<std::string> arguments, std::vector<std::string> const& prefix = {} );
    ~AgentProcess();
    AgentProcess( AgentProcess const& ) = delete;
    AgentProcess& operator=( AgentProcess const& ) = delete;

    /// Waits until `text` has been written. False where the process ends without it.
    bool waitFor( Stream stream, std::string const& text );
    /// All that has been written so far.
    std::string const& written( Stream stream ) const { return written_.at( stream ); }
    /// Waits until the process waits for room in that file, at most for so long that it never will.
    bool waitUntilItWaitsToWrite( int descriptor ) const;
    void signal( int number ) const;
    pid_t id() const { return process_; }
    /// The capabilities that every thread of it may use, in hexadecimal, and 1 where it may gain none, by
    /// what the system says; once each.
    std::set<std::string> rights() const;
    /// Memory that it has at present.
    std::size_t residentBytes() const;
    /// Waits for the end and returns the exit status; minus the signal where one killed it.
    int exitStatus();

  private:
    bool readSome();

    pid_t process_;
    std::array<int, 2> pipes_{};
    std::array<std::string, 2> written_;
    bool ended_ = false;
    int status_ = 0;
};

} // namespace Agent
