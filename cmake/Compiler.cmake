# Language, warnings, instrumentation: the same for every target, so that test targets can share one
# precompiled header.

set( CMAKE_CXX_STANDARD 20 )
set( CMAKE_CXX_STANDARD_REQUIRED ON )
set( CMAKE_CXX_EXTENSIONS OFF )
set( CMAKE_EXPORT_COMPILE_COMMANDS ON )
set( CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin )
if( NOT CMAKE_BUILD_TYPE AND PROJECT_IS_TOP_LEVEL )
   set( CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE )
endif()

add_compile_options( -Wall -Wextra -Wpedantic -Wshadow -Wconversion )
if( IGMPHOST_WERROR )
   add_compile_options( -Werror )
endif()
if( CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13 )
   # g++ 12 sees overlapping copies in std::string's operator+ where there are none (GCC bug 105651).
   add_compile_options( -Wno-restrict )
endif()
# The C++ library checks itself wherever tests run, those of optimised builds too.
add_compile_definitions( $<$<OR:$<CONFIG:Debug>,$<BOOL:${IGMPHOST_BUILD_TESTS}>>:_GLIBCXX_ASSERTIONS> )

# Optimised builds, which read frames from strangers with privileges: what compiler and linker offer against
# memory faults is on. A sanitizer sees more by itself, and does not bear with the checked functions of the C
# library. Nobody replaces a function of the library from outside, so its own calls need no indirection.
if( CMAKE_BUILD_TYPE MATCHES "^Rel" AND NOT IGMPHOST_SANITIZE )
   include( CheckCXXCompilerFlag )
   include( CheckPIESupported )
   check_pie_supported()
   set( CMAKE_POSITION_INDEPENDENT_CODE ON )
   foreach( flag IN ITEMS -fstack-protector-strong -fstack-clash-protection -fcf-protection=full )
      string( MAKE_C_IDENTIFIER "IGMPHOST_HAS${flag}" known )
      check_cxx_compiler_flag( ${flag} ${known} )
      if( ${known} )
         add_compile_options( ${flag} )
      endif()
   endforeach()
   add_compile_options( -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3 -fno-semantic-interposition )
   add_link_options( LINKER:-z,relro,-z,now )
endif()

if( IGMPHOST_SANITIZE )
   add_compile_options( -fsanitize=${IGMPHOST_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer )
   add_link_options( -fsanitize=${IGMPHOST_SANITIZE} )
endif()
if( IGMPHOST_COVERAGE )
   # Only the project's own sources are counted: programs start and end faster, and reading the counts is quick.
   add_compile_options( --coverage -fprofile-filter-files=^${PROJECT_SOURCE_DIR}/src/ )
   add_link_options( --coverage )
endif()

# What most sources include of the standard library, read once for a target. Optimised builds go without, and so
# prove that each source includes what it needs.
function( igmphost_precompile target )
   if( CMAKE_BUILD_TYPE STREQUAL "Debug" )
      target_precompile_headers( ${target} PRIVATE <algorithm> <functional> <iostream> <map> <memory> <optional> <set>
         <sstream> <string> <vector> )
   endif()
endfunction()

# A compiler cache where there is one; the setting lets it cache what uses a precompiled header.
find_program( CCACHE_PROGRAM ccache )
if( CCACHE_PROGRAM AND ( NOT CMAKE_CXX_COMPILER_LAUNCHER OR CMAKE_CXX_COMPILER_LAUNCHER STREQUAL "ccache" ) )
   set( CMAKE_CXX_COMPILER_LAUNCHER env CCACHE_SLOPPINESS=pch_defines,time_macros ${CCACHE_PROGRAM} )
endif()
