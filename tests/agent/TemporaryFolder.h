#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace Agent {

/// A folder for the files of one test, gone with it.
class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string pattern = ( std::filesystem::temp_directory_path() / "igmphost-XXXXXX" ).string();
        path_ = mkdtemp( pattern.data() );
    }
    ~TemporaryFolder() { std::filesystem::remove_all( path_ ); }
    TemporaryFolder( TemporaryFolder const& ) = delete;
    TemporaryFolder& operator=( TemporaryFolder const& ) = delete;

    std::filesystem::path const& path() const { return path_; }
    /// The path of a file in the folder, which need not exist.
    std::string file( std::string const& name ) const { return ( path_ / name ).string(); }
    std::string fileWith( std::string const& name, std::string const& contents ) const {
        std::ofstream( file( name ), std::ios::binary ) << contents;
        return file( name );
    }
    std::string contents( std::string const& name ) const {
        std::ifstream in( file( name ), std::ios::binary );
        return std::string( std::istreambuf_iterator<char>( in ), {} );
    }
    std::size_t files() const {
        return static_cast<std::size_t>( std::distance( std::filesystem::directory_iterator( path_ ), {} ) );
    }

  private:
    std::filesystem::path path_;
};

} // namespace Agent
