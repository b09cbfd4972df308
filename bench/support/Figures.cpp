#include "bench/support/Figures.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <stdexcept>

namespace Bench {

void
Figures::add( std::string const& name, std::string const& unit, std::vector<double> samples ) {
    std::sort( samples.begin(), samples.end() );
    figures_.push_back( { name, unit, std::move( samples ) } );
}

void
Figures::print( std::string_view title ) const {
    std::cout << '\n' << title << '\n';
    std::printf( "  %-74s %12s %12s %12s  %s\n", "", "median", "least", "most", "unit" );
    for ( Figure const& figure : figures_ ) {
        std::printf(
            "  %-74s %12.4g %12.4g %12.4g  %s\n", figure.name.c_str(), figure.median(),
            figure.samples.front(), figure.samples.back(), figure.unit.c_str()
        );
    }
    std::fflush( stdout );
}

void
Figures::writeJson( std::string const& path ) const {
    std::ofstream out( path );
    out << "{";
    char const* separator = "\n";
    for ( Figure const& figure : figures_ ) {
        out << separator << "  \"" << figure.name << "\": { \"median\": " << figure.median()
            << ", \"least\": " << figure.samples.front() << ", \"most\": " << figure.samples.back()
            << ", \"unit\": \"" << figure.unit << "\" }";
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

std::vector<double>
ratios( std::vector<double> const& a, std::vector<double> const& b ) {
    std::vector<double> result;
    for ( std::size_t i = 0; i < a.size(); ++i ) {
        result.push_back( a[i] / b[i] );
    }
    return result;
}

int
run( int argc, char** argv, std::string_view title,
     std::function<void( Figures&, unsigned )> const& measure ) {
    std::string json;
    unsigned runs = 5;
    for ( int i = 1; i < argc; i += 2 ) {
        std::string_view const option = argv[i];
        std::string_view const value = i + 1 < argc ? argv[i + 1] : "";
        bool const isRuns =
            option == "--runs" &&
            std::from_chars( value.data(), value.data() + value.size(), runs ).ec == std::errc() && runs != 0;
        if ( option == "--json" && !value.empty() ) {
            json = value;
        } else if ( !isRuns ) {
            std::cerr << "usage: " << argv[0] << " [--json FILE] [--runs N]\n";
            return 2;
        }
    }
    try {
        Figures figures;
        measure( figures, runs );
        figures.print( title );
        if ( !json.empty() ) {
            figures.writeJson( json );
        }
    } catch ( std::exception const& error ) {
        std::cerr << argv[0] << ": " << error.what() << '\n';
        return 1;
    }
    return 0;
}

} // namespace Bench
