#pragma once

#include <filesystem>
#include <string>

namespace Bench {

/// The path of a program that was built with this one.
inline std::string
programBeside( std::string const& name ) {
    return std::filesystem::read_symlink( "/proc/self/exe" ).replace_filename( name ).string();
}

} // namespace Bench
