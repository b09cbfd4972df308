#include "agent/scenario/Suggestion.h"

#include <algorithm>
#include <cctype>
#include <numeric>
#include <utility>
#include <vector>

namespace Agent {

namespace {

bool
sameLetter( char a, char b ) {
    return std::tolower( static_cast<unsigned char>( a ) ) == std::tolower( static_cast<unsigned char>( b ) );
}

/// How many letters have to be put in, taken out or replaced to make one word of the other.
std::size_t
distance( std::string_view a, std::string_view b ) {
    std::vector<std::size_t> row( b.size() + 1 );
    std::iota( row.begin(), row.end(), std::size_t{ 0 } );
    for ( std::size_t i = 0; i < a.size(); ++i ) {
        std::size_t diagonal = std::exchange( row[0], i + 1 );
        for ( std::size_t j = 0; j < b.size(); ++j ) {
            std::size_t const replaced = diagonal + ( sameLetter( a[i], b[j] ) ? 0 : 1 );
            diagonal = row[j + 1];
            row[j + 1] = std::min( { replaced, row[j] + 1, diagonal + 1 } );
        }
    }
    return row.back();
}

std::size_t
bearableDistance( std::string_view word ) {
    constexpr std::size_t shortWord = 4;
    return word.size() < shortWord ? 1 : std::max<std::size_t>( 2, word.size() / 3 );
}

/// "v3" of "v3ReportsSent"; empty where the word begins with no version of the protocol.
std::string_view
versionOf( std::string_view word ) {
    bool const hasVersion = word.size() > 2 && word[0] == 'v' && word[1] >= '1' && word[1] <= '3';
    return word.substr( 0, hasVersion ? 2 : 0 );
}

/// Of the known words those of the same version, where there are any: in what is said of one version no word
/// of another is meant.
std::vector<std::string_view>
ofSameVersion( std::string_view word, std::span<std::string_view const> known ) {
    std::string_view const version = versionOf( word );
    std::vector<std::string_view> same;
    for ( std::string_view const candidate : known ) {
        if ( versionOf( candidate ) == version ) {
            same.push_back( candidate );
        }
    }
    return version.empty() || same.empty() ? std::vector( known.begin(), known.end() ) : same;
}

} // namespace

std::string_view
nearest( std::string_view word, std::span<std::string_view const> known ) {
    std::string_view best;
    std::size_t least = bearableDistance( word ) + 1;
    for ( std::string_view const candidate : ofSameVersion( word, known ) ) {
        std::size_t const apart = distance( word, candidate );
        if ( apart < least && apart < candidate.size() ) {
            least = apart;
            best = candidate;
        }
    }
    return best;
}

std::string
suggestion( std::string_view word, std::span<std::string_view const> known ) {
    if ( std::string_view const near = nearest( word, known ); !near.empty() ) {
        return "; did you mean '" + std::string( near ) + "'?";
    }
    std::string text;
    for ( std::string_view const candidate : ofSameVersion( word, known ) ) {
        text += text.empty() ? "; expected one of " : ", ";
        text += candidate;
    }
    return text;
}

} // namespace Agent
