#include "tests/agent/documentation/HelpPages.h"

#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>
#include <stdexcept>

#include "tests/support/Namespace.h"
#include "tests/support/Paths.h"

namespace Agent {

namespace {

/// Of one word of a line, such as "-h,--help", the long form; empty where it has none.
std::string
longOption( std::string const& word ) {
    static std::regex const form( "(?:-\\w,)?(--[\\w-]+)" );
    std::smatch found;
    return std::regex_match( word, found, form ) ? found[1].str() : "";
}

HelpPage
pageOf( std::string const& words ) {
    HelpPage page{ words, {}, {} };
    std::string const path = Support::agentBinary() + words.substr( words.find_first_of( ' ' ) );
    std::istringstream text( Support::outputOf( path + "--help" ) );
    std::string section;
    for ( std::string line; std::getline( text, line ); ) {
        if ( line.empty() || line[0] != ' ' ) {
            section = line;
            continue;
        }
        std::istringstream columns( line );
        std::string name;
        if ( line.find_first_not_of( ' ' ) == 2 && columns >> name ) {
            if ( section == "Subcommands:" ) {
                page.verbs.insert( name );
            } else if ( std::string const option = longOption( name ); !option.empty() ) {
                page.options.insert( option );
            }
        }
    }
    return page;
}

void
addPages( std::string const& words, std::vector<HelpPage>& pages ) {
    pages.push_back( pageOf( words ) );
    for ( std::string const& verb : std::set( pages.back().verbs ) ) {
        addPages( words + verb + " ", pages );
    }
}

} // namespace

std::vector<HelpPage>
helpPages() {
    std::vector<HelpPage> pages;
    addPages( "igmphost ", pages );
    for ( HelpPage& page : pages ) {
        page.words.pop_back();
    }
    return pages;
}

std::string
sourceFile( std::string const& path ) {
    std::ifstream file( Support::sourceFolder() + "/" + path );
    if ( !file ) {
        throw std::runtime_error( "cannot read " + path );
    }
    return { std::istreambuf_iterator<char>( file ), {} };
}

} // namespace Agent
