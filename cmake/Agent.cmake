# The command `igmphost`. All but main.cpp is a library of its own, which the tests link.

find_package( yaml-cpp REQUIRED )
find_package( nlohmann_json REQUIRED )
find_package( CLI11 REQUIRED )
find_package( PkgConfig REQUIRED )
pkg_check_modules( pcap REQUIRED IMPORTED_TARGET libpcap )
pkg_check_modules( prometheus REQUIRED IMPORTED_TARGET prometheus-cpp-pull prometheus-cpp-core )

igmphost_sources( agentSources src/agent )
list( REMOVE_ITEM agentSources ${PROJECT_SOURCE_DIR}/src/agent/main.cpp )
if( NOT agentSources )
   igmphost_sources( agentSources src/agent/none )
endif()
add_library( igmphost_agent_lib STATIC ${agentSources} )
igmphost_precompile( igmphost_agent_lib )
target_link_libraries( igmphost_agent_lib PUBLIC
   igmphost_lab yaml-cpp nlohmann_json::nlohmann_json CLI11::CLI11 PkgConfig::pcap PkgConfig::prometheus )
# By name alone: the flags of its package configuration would not suit the precompiled header of the tests.
target_link_libraries( igmphost_agent_lib PRIVATE ncursesw tinfo )
target_compile_definitions( igmphost_agent_lib PRIVATE IGMPHOST_VERSION="${PROJECT_VERSION}" )

if( EXISTS ${PROJECT_SOURCE_DIR}/src/agent/main.cpp )
   add_executable( igmphost_agent src/agent/main.cpp )
   set_target_properties( igmphost_agent PROPERTIES OUTPUT_NAME igmphost )
   if( NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr" ) # where the loader looks by itself
      set_target_properties( igmphost_agent PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}" )
   endif()
   target_link_libraries( igmphost_agent PRIVATE igmphost_agent_lib igmphost_shared )
endif()
