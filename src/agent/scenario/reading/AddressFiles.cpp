#include "agent/scenario/reading/AddressFiles.h"

#include <system_error>

#include "agent/scenario/reading/TextFile.h"
#include "agent/scenario/reading/YamlReader.h"

namespace Agent {

namespace {

constexpr char blanks[] = " \t\r";

/// Adds the block; one that goes on where the last one ends makes it longer.
void
append( std::vector<AddressBlock>& blocks, AddressBlock const& block ) {
    bool const goesOn = !blocks.empty() && blocks.back().last().hostOrder() != 0xffffffff &&
                        blocks.back().last().hostOrder() + 1 == block.first.hostOrder();
    if ( goesOn ) {
        blocks.back().count += block.count;
    } else {
        blocks.push_back( block );
    }
}

} // namespace

std::optional<AddressList>
AddressFiles::addresses( std::string const& path, Position const& from ) {
    auto const known = read_.find( path );
    return known != read_.end() ? known->second : read_[path] = read( path, from );
}

std::optional<AddressList>
AddressFiles::read( std::string const& path, Position const& from ) {
    try {
        std::string const text = textOfFile( path );
        std::size_t const errorsBefore = errors_.size();
        files_.push_back( path );
        AddressList list( blocksIn( text, files_.size() - 1 ) );
        if ( list.count() > mostAddresses ) {
            errors_.add(
                from, "file: expected at most " + std::to_string( mostAddresses ) + " addresses in " + path +
                          ", found " + std::to_string( list.count() )
            );
        } else if ( list.empty() ) {
            errors_.add( from, "file: expected an address in " + path + ", found none" );
        }
        tellRepetitions( list.blocks(), "address", files_, errors_ );
        return errors_.size() == errorsBefore ? std::optional( list ) : std::nullopt;
    } catch ( std::system_error const& fault ) {
        errors_.add( from, "file: " + path + " cannot be read: " + fault.code().message() );
    }
    return {};
}

std::vector<AddressBlock>
AddressFiles::blocksIn( std::string const& text, std::size_t file ) {
    std::vector<AddressBlock> blocks;
    Position at{ file, 0, 0 };
    for ( std::size_t begin = 0; begin < text.size(); ) {
        std::size_t const end = std::min( text.find( '\n', begin ), text.size() );
        std::string_view line = std::string_view( text ).substr( begin, end - begin );
        begin = end + 1;
        line = line.substr( 0, line.find( '#' ) );
        line = line.substr( 0, line.find_last_not_of( blanks ) + 1 );
        std::size_t const indent = std::min( line.find_first_not_of( blanks ), line.size() );
        ++at.line;
        at.column = static_cast<int>( indent ) + 1;
        if ( indent == line.size() ) {
            continue;
        }
        try {
            AddressBlock block = addressBlock( line.substr( indent ) );
            block.at = at;
            append( blocks, block );
        } catch ( Kiv::RangeException const& fault ) {
            errors_.add( at, fault.what() );
        }
    }
    return blocks;
}

} // namespace Agent
