#pragma once

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <sstream>
#include <string>

namespace Support {

/// A child process that does some work at the same time as the test, and whose output is read once it has
/// ended. It goes with its object, and with the test.
class Child {
  public:
    explicit Child( std::function<void( std::ostream& )> const& work ) {
        int ends[2];
        EXPECT_EQ( pipe( ends ), 0 );
        pid_ = fork();
        if ( pid_ == 0 ) {
            prctl( PR_SET_PDEATHSIG, SIGKILL );
            std::ostringstream out;
            work( out );
            std::string const text = out.str();
            bool const written =
                write( ends[1], text.data(), text.size() ) == static_cast<ssize_t>( text.size() );
            _exit( written ? 0 : 1 );
        }
        close( ends[1] );
        output_ = ends[0];
    }
    ~Child() {
        close( output_ );
        kill( pid_, SIGKILL );
        waitpid( pid_, nullptr, 0 );
    }
    Child( Child const& ) = delete;
    Child& operator=( Child const& ) = delete;

    pid_t pid() const { return pid_; }
    /// Waits for the end.
    std::string output() {
        std::string text;
        char part[4096];
        for ( ssize_t bytes; ( bytes = read( output_, part, sizeof part ) ) > 0; ) {
            text.append( part, static_cast<std::size_t>( bytes ) );
        }
        return text;
    }

  private:
    pid_t pid_ = -1;
    int output_ = -1;
};

} // namespace Support
