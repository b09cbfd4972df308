#include "agent/screen/Screen.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <iostream>

#include "agent/output/StatusLines.h"
#include "agent/run/PromptEnd.h"
#include "agent/screen/ScreenPage.h"

// Last, and without its macros: they bear the names of common functions.
#define NCURSES_NOMACROS
#include <ncurses.h>
#include <term.h>

namespace Agent {

namespace {

constexpr Kiv::Seconds refreshInterval = 1.0;
constexpr std::size_t mostMessages = 1000;

/// Keeps what is written to the standard error behind the back of std::cerr, such as the text of a broken
/// invariant, while a screen stands on the terminal, and tells it afterwards.
class ErrorsApart {
  public:
    void begin() {
        file_ = memfd_create( "errors", MFD_CLOEXEC );
        outer_ = fcntl( STDERR_FILENO, F_DUPFD_CLOEXEC, 0 );
        dup2( file_, STDERR_FILENO );
    }
    void end() {
        if ( outer_ < 0 ) {
            return;
        }
        dup2( outer_, STDERR_FILENO );
        char part[4096];
        lseek( file_, 0, SEEK_SET );
        for ( ssize_t bytes = 0; ( bytes = read( file_, part, sizeof part ) ) > 0; ) {
            [[maybe_unused]] ssize_t const told =
                write( STDERR_FILENO, part, static_cast<std::size_t>( bytes ) );
        }
        close( file_ );
        close( outer_ );
        outer_ = -1;
    }

  private:
    int file_ = -1;
    int outer_ = -1;
};

ErrorsApart errorsApart;

// What leaveAtOnce() knows.
std::string farewell;
std::optional<termios> outerModes;

void
farewellAdd( char const* text ) {
    tputs( text, 1, []( int character ) {
        farewell += static_cast<char>( character );
        return character;
    } );
}

/// Of the terminal that has just been opened.
void
prepareFarewell() {
    farewell.clear();
    auto const isText = []( char const* text ) { return text && text != reinterpret_cast<char*>( -1 ); };
    if ( char const* const at = tigetstr( "cup" ); isText( at ) ) {
        farewellAdd( tiparm( at, LINES - 1, 0 ) );
    }
    for ( char const* const capability : { "cnorm", "rmcup" } ) {
        if ( char const* const text = tigetstr( capability ); isText( text ) ) {
            farewellAdd( text );
        }
    }
}

/// Leaves the terminal in the midst of anything, even of drawing, where endwin() might wait for ever.
void
leaveAtOnce() {
    [[maybe_unused]] ssize_t const told = write( STDOUT_FILENO, farewell.data(), farewell.size() );
    if ( outerModes ) {
        tcsetattr( STDOUT_FILENO, TCSANOW, &*outerModes );
    }
    errorsApart.end();
}

void
handleAbort( int signal ) {
    leaveAtOnce();
    std::signal( signal, SIG_DFL );
    std::raise( signal );
}

std::string
titleOf( Scenario const& scenario ) {
    std::string const more =
        scenario.files.size() > 1 ? " and " + std::to_string( scenario.files.size() - 1 ) + " more" : "";
    return scenario.files.empty() ? "" : scenario.files.front() + more;
}

} // namespace

bool
Screen::isPossible() {
    char const* const terminal = std::getenv( "TERM" );
    return isatty( STDOUT_FILENO ) == 1 && isatty( STDIN_FILENO ) == 1 && terminal &&
           std::string_view( terminal ) != "dumb";
}

Screen::Screen( RunContext const& context )
    : context_( context ),
      monitor_( context ),
      timer_( new Lab::Timer( context.wheel, [this] { tick(); } ) ),
      signals_( { SIGWINCH }, [this]( int ) { resize(); } ) {}

Screen::~Screen() {
    close();
}

void
Screen::handleProgress( StartUpProgress const& progress ) {
    progress_ = progress;
    open();
    if ( open_ ) {
        draw();
    }
}

void
Screen::handleStarted() {
    progress_.reset();
    open();
    tick();
}

ExitStatus
Screen::handleEnded() {
    close();
    printSummary( std::cerr, monitor_.look() );
    return exitDone;
}

void
Screen::open() {
    if ( open_ ) {
        return;
    }
    termios modes{};
    outerModes = tcgetattr( STDOUT_FILENO, &modes ) == 0 ? std::optional( modes ) : std::nullopt;
    if ( !newterm( nullptr, stdout, stdin ) ) {
        return;
    }
    open_ = true;
    prepareFarewell();
    cbreak();
    noecho();
    curs_set( 0 );
    std::signal( SIGABRT, handleAbort );
    PromptEnd::lastActIs( leaveAtOnce );
    if ( isatty( STDERR_FILENO ) == 1 ) {
        context_.messages.displayIs( [this]( std::string const& line ) { messageIs( line ); } );
        errorsApart.begin();
    }
}

void
Screen::close() {
    timer_->stop();
    if ( !open_ ) {
        return;
    }
    open_ = false;
    std::signal( SIGABRT, SIG_DFL );
    PromptEnd::lastActIs( nullptr );
    flushinp();
    endwin();
    errorsApart.end();
    context_.messages.displayIs( nullptr );
    for ( std::string const& line : messages_ ) {
        std::cerr << line << '\n';
    }
    std::cerr << std::flush;
}

void
Screen::messageIs( std::string const& line ) {
    messages_.push_back( line );
    if ( messages_.size() > mostMessages ) {
        messages_.pop_front();
    }
    draw();
}

void
Screen::tick() {
    if ( !open_ ) {
        return;
    }
    if ( isDue() ) {
        view_ = monitor_.look();
        draw();
    }
    timer_->remainingIs( refreshInterval );
}

/// A simulated second takes next to no time, and a look takes one that grows with the hosts: there the
/// screen keeps to the time of who looks at it.
bool
Screen::isDue() {
    auto const now = std::chrono::steady_clock::now();
    if ( Kiv::clock().isSimulated() && now - looked_ < std::chrono::duration<double>( refreshInterval ) ) {
        return false;
    }
    looked_ = now;
    return true;
}

void
Screen::resize() {
    winsize size{};
    if ( open_ && ioctl( STDOUT_FILENO, TIOCGWINSZ, &size ) == 0 ) {
        resizeterm( size.ws_row, size.ws_col );
        draw();
    }
}

void
Screen::draw() {
    erase();
    int row = 0;
    ScreenSize const size{ static_cast<std::size_t>( LINES ), static_cast<std::size_t>( COLS ) };
    std::string const title = titleOf( context_.scenario );
    for ( std::string const& line : progress_ ? startUpPage( title, *progress_, messages_, size )
                                              : screenPage( title, view_, messages_, size ) ) {
        mvaddnstr( row++, 0, line.c_str(), COLS );
    }
    refresh();
}

} // namespace Agent
