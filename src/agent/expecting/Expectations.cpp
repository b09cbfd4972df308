#include "agent/expecting/Expectations.h"

#include <algorithm>
#include <iostream>
#include <system_error>

#include "agent/expecting/Shortfalls.h"
#include "agent/output/FileReplacement.h"

namespace Agent {

namespace {

/// Between two looks at what may take its time.
constexpr Kiv::Seconds pause = 0.1;
/// After everything that happens at the time of a look.
constexpr Kiv::Seconds after = 2 * Kiv::ActivitySm::tick;

} // namespace

Expectations::Expectations( RunContext const& context )
    : context_( context ),
      outcomes_( context.scenario.expectations.size() ),
      timer_( new Lab::Timer( context.wheel, [this] { handleTimer(); } ) ) {
    if ( context.options.junitFile ) {
        checkReplaceable( *context.options.junitFile );
    }
    for ( std::size_t i = 0; i < outcomes_.size(); ++i ) {
        if ( auto const time = context.scenario.expectations[i].time ) {
            looks_.push( { *time, i } );
        }
    }
}

bool
Expectations::decideTheEnd( Scenario const& scenario ) {
    auto const& all = scenario.expectations;
    return !scenario.duration && !all.empty() &&
           std::all_of( all.begin(), all.end(), []( Expectation const& expectation ) {
               return expectation.time.has_value();
           } );
}

Kiv::Seconds
Expectations::elapsed() const {
    return Kiv::now() - context_.started;
}

void
Expectations::handleTimer() {
    Kiv::Seconds const now = elapsed();
    while ( !looks_.empty() && looks_.top().time + after / 2 <= now && !isBehind( looks_.top().time ) ) {
        Look const next = looks_.top();
        looks_.pop();
        look( next.expectation, next.time, false );
    }
    arm();
    endIfDecided();
}

/// Whether something that was to happen by then has not happened yet: there may be more of it than a turn can
/// do.
bool
Expectations::isBehind( Kiv::Seconds time ) const {
    std::optional<NextEvent> const next = context_.nextEvent ? context_.nextEvent() : std::nullopt;
    return next && next->time <= context_.started + time + after / 2;
}

void
Expectations::arm() {
    if ( !looks_.empty() ) {
        timer_->timeMinIs( context_.started + looks_.top().time + after );
    }
}

void
Expectations::look( std::size_t index, Kiv::Seconds time, bool isLast ) {
    Expectation const& expectation = context_.scenario.expectations[index];
    std::vector<std::string> found = shortfalls( expectation, context_ );
    Kiv::Seconds const deadline = expectation.time.value_or( 0.0 ) + expectation.within;
    if ( !found.empty() && !isLast && time < deadline ) {
        looks_.push( { std::min( std::max( time, elapsed() ) + pause, deadline ), index } );
    } else {
        decide( index, std::move( found ) );
    }
}

/// An expectation whose time has not come was not met.
void
Expectations::handleTimeOver() {
    timer_->stop();
    for ( std::size_t i = 0; i < outcomes_.size(); ++i ) {
        Kiv::Seconds const time = context_.scenario.expectations[i].time.value_or( 0.0 );
        if ( outcomes_[i] ) {
            continue;
        }
        if ( time <= elapsed() + after ) {
            look( i, time, true );
        } else {
            decide(
                i, { "expected to be looked at " + Kiv::ValueTraits<double>::format( time ) +
                     " s after the start, found the end before" }
            );
        }
    }
}

void
Expectations::decide( std::size_t index, std::vector<std::string> shortfalls ) {
    Expectation const& expectation = context_.scenario.expectations[index];
    std::string const& file = context_.scenario.files.at( expectation.at.file );
    std::string const place = file + ":" + std::to_string( expectation.at.line );
    for ( std::string const& text : shortfalls ) {
        std::cerr << "igmphost: error: " << place << ": not met: " << text << std::endl;
    }
    std::string const line = "line " + std::to_string( expectation.at.line );
    outcomes_[index] = ExpectationOutcome{ expectation.name.empty() ? line : expectation.name, file,
                                           elapsed(), std::move( shortfalls ) };
}

void
Expectations::endIfDecided() const {
    bool const allDecided = std::all_of( outcomes_.begin(), outcomes_.end(), []( auto const& outcome ) {
        return outcome.has_value();
    } );
    if ( allDecided && decideTheEnd( context_.scenario ) ) {
        Kiv::defaultActivity()->activitySm().stop();
    }
}

ExitStatus
Expectations::handleEnded() {
    auto const met = std::count_if( outcomes_.begin(), outcomes_.end(), []( auto const& outcome ) {
        return outcome && outcome->shortfalls.empty();
    } );
    bool const allMet = static_cast<std::size_t>( met ) == outcomes_.size();
    std::cerr << "igmphost: " << met << " of " << outcomes_.size() << " expectations met" << std::endl;
    bool const written = !context_.options.junitFile || write();
    return !allMet ? exitNotMet : written ? exitDone : exitFailed;
}

bool
Expectations::write() const {
    std::vector<ExpectationOutcome> outcomes;
    for ( auto const& outcome : outcomes_ ) {
        outcomes.push_back( outcome.value_or( ExpectationOutcome() ) );
    }
    try {
        replaceFile( *context_.options.junitFile, [&]( std::ostream& out ) {
            writeJUnit( out, outcomes, elapsed() );
        } );
        return true;
    } catch ( std::system_error const& fault ) {
        std::cerr << "igmphost: error: the outcome is not written: " << fault.what() << std::endl;
        return false;
    }
}

} // namespace Agent
