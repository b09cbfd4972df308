# One libFuzzer program per tests/fuzz/*.cpp, over a library of its own: everything in it must be instrumented.

if( NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang" )
   message( FATAL_ERROR "IGMPHOST_BUILD_FUZZ needs clang" )
endif()
add_library( igmphost_fuzz_support STATIC
   ${PROJECT_SOURCE_DIR}/tests/support/Frames.cpp ${PROJECT_SOURCE_DIR}/tests/support/HostChecks.cpp )
target_include_directories( igmphost_fuzz_support PUBLIC ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/src )
file( GLOB fuzzSources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/fuzz/*.cpp )
foreach( source IN LISTS fuzzSources )
   cmake_path( GET source STEM name )
   add_executable( fuzz_${name} ${source} )
   target_link_options( fuzz_${name} PRIVATE -fsanitize=fuzzer )
   target_link_libraries( fuzz_${name} PRIVATE igmphost_fuzz_support igmphost_objects igmphost_lab )
   if( TARGET igmphost_agent_lib )
      target_link_libraries( fuzz_${name} PRIVATE igmphost_agent_lib )
   endif()
endforeach()
