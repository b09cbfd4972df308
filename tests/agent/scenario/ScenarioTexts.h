#pragma once

#include <gmock/gmock.h>

#include <sstream>
#include <string>

#include "agent/scenario/ScenarioReader.h"
#include "agent/scenario/Warnings.h"

namespace Agent {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// The scenario in the text. The test fails where it has errors.
inline Scenario
scenarioOf( std::string const& text ) {
    Diagnostics errors;
    Scenario scenario = readScenarioText( "s.yaml", text, errors );
    std::ostringstream told;
    errors.print( told, scenario.files, "error" );
    EXPECT_EQ( told.str(), "" );
    return scenario;
}

inline std::string
linesOf( std::vector<std::string> const& files, Diagnostics const& diagnostics ) {
    std::ostringstream told;
    diagnostics.print( told, files, "error" );
    return told.str();
}

/// What is said of a text: a line for each error, without the name of the file.
inline std::string
linesOf( Diagnostics const& diagnostics ) {
    return linesOf( { "" }, diagnostics );
}

inline std::string
errorsOf( std::string const& text ) {
    Diagnostics errors;
    readScenarioText( "", text, errors );
    return linesOf( errors );
}

/// Every address of a list, with a blank between two.
inline std::string
textOf( AddressList const& list ) {
    std::string text;
    list.forEach( [&]( Zornet::IpAddr const& addr ) {
        text += ( text.empty() ? "" : " " ) + Kiv::ValueTraits<Zornet::IpAddr>::format( addr );
    } );
    return text;
}

/// The same for the warnings of a text without errors.
inline std::string
warningsOf( std::string const& text ) {
    return linesOf( scenarioWarnings( scenarioOf( text ) ) );
}

} // namespace Agent
