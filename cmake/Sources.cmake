# igmphost_sources( <variable> <folder>... ): every C++ source below the folders, those without one left out.
# CMake refuses a library without sources; an empty one stands in until the first is written.
function( igmphost_sources variable )
   list( TRANSFORM ARGN PREPEND "${PROJECT_SOURCE_DIR}/" )
   list( TRANSFORM ARGN APPEND "/*.cpp" )
   file( GLOB_RECURSE sources CONFIGURE_DEPENDS ${ARGN} )
   if( NOT sources )
      set( sources ${PROJECT_BINARY_DIR}/empty.cpp )
      file( CONFIGURE OUTPUT ${sources} CONTENT "" )
   endif()
   set( ${variable} ${sources} PARENT_SCOPE )
endfunction()
