#include "bench/support/Figures.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <iostream>
#include <stdexcept>

namespace Bench {

std::string
Figures::Figure::verdict() const {
    if ( !wanted ) {
        return {};
    }
    char text[64];
    std::snprintf(
        text, sizeof text, "%s %g: %s", wanted->atLeast ? "at least" : "at most", wanted->bound,
        isMissed() ? "MISSED" : "met"
    );
    return text;
}

void
Figures::add(
    std::string const& name, std::string const& unit, std::vector<double> samples,
    std::optional<Wanted> wanted
) {
    std::sort( samples.begin(), samples.end() );
    figures_.push_back( { name, unit, std::move( samples ), wanted } );
}

void
Figures::print( std::string_view title ) const {
    std::cout << '\n' << title << '\n';
    std::printf( "  %-82s %10s %10s %10s  %-6s %s\n", "", "median", "least", "most", "unit", "wanted" );
    for ( Figure const& figure : figures_ ) {
        std::printf(
            "  %-82s %10.4g %10.4g %10.4g  %-6s %s\n", figure.name.c_str(), figure.median(),
            figure.samples.front(), figure.samples.back(), figure.unit.c_str(), figure.verdict().c_str()
        );
    }
    std::fflush( stdout );
}

bool
Figures::anyMissed() const {
    return std::any_of( figures_.begin(), figures_.end(), std::mem_fn( &Figure::isMissed ) );
}

void
Figures::writeJson( std::string const& path ) const {
    std::ofstream out( path );
    out << "{";
    char const* separator = "\n";
    for ( Figure const& figure : figures_ ) {
        out << separator << "  \"" << figure.name << "\": { \"median\": " << figure.median()
            << ", \"least\": " << figure.samples.front() << ", \"most\": " << figure.samples.back()
            << ", \"unit\": \"" << figure.unit << '"';
        if ( figure.wanted ) {
            out << ( figure.wanted->atLeast ? ", \"atLeast\": " : ", \"atMost\": " ) << figure.wanted->bound
                << ", \"met\": " << ( figure.isMissed() ? "false" : "true" );
        }
        out << " }";
        separator = ",\n";
    }
    out << "\n}\n";
    if ( !out ) {
        throw std::runtime_error( "cannot write " + path );
    }
}

double
secondsOf( std::function<void()> const& work ) {
    auto const start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>( std::chrono::steady_clock::now() - start ).count();
}

double
processorSecondsOf( std::function<void()> const& work ) {
    auto const now = [] {
        timespec time{};
        clock_gettime( CLOCK_PROCESS_CPUTIME_ID, &time );
        return static_cast<double>( time.tv_sec ) + static_cast<double>( time.tv_nsec ) * 1e-9;
    };
    double const start = now();
    work();
    return now() - start;
}

std::vector<double>
ratios( std::vector<double> const& a, std::vector<double> const& b ) {
    std::vector<double> result;
    for ( std::size_t i = 0; i < a.size(); ++i ) {
        result.push_back( a[i] / b[i] );
    }
    return result;
}

namespace {

/// Reads `--json FILE`, `--runs N` and `--quick`; false for anything else.
bool
readOptions( int argc, char** argv, std::string& json, Effort& effort ) {
    for ( int i = 1; i < argc; ++i ) {
        std::string_view const option = argv[i];
        if ( option == "--quick" ) {
            effort = { 3, true };
            continue;
        }
        std::string_view const value = i + 1 < argc ? argv[++i] : "";
        bool const isRuns =
            option == "--runs" &&
            std::from_chars( value.data(), value.data() + value.size(), effort.runs ).ec == std::errc() &&
            effort.runs != 0;
        if ( option == "--json" && !value.empty() ) {
            json = value;
        } else if ( !isRuns ) {
            return false;
        }
    }
    return true;
}

} // namespace

int
run( int argc, char** argv, std::string_view title,
     std::function<void( Figures&, Effort const& )> const& measure ) {
    std::string json;
    Effort effort;
    if ( !readOptions( argc, argv, json, effort ) ) {
        std::cerr << "usage: " << argv[0] << " [--json FILE] [--runs N] [--quick]\n";
        return 2;
    }
    try {
        Figures figures;
        measure( figures, effort );
        figures.print( title );
        if ( !json.empty() ) {
            figures.writeJson( json );
        }
        return figures.anyMissed() ? 3 : 0;
    } catch ( std::exception const& error ) {
        std::cerr << argv[0] << ": " << error.what() << '\n';
        return 1;
    }
}

} // namespace Bench
