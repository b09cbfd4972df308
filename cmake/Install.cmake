# Library, headers and command. A user writes `find_package( igmphost )` and links igmphost::igmphost.

include( CMakePackageConfigHelpers )
set( packageFolder ${CMAKE_INSTALL_LIBDIR}/cmake/igmphost )

install( TARGETS igmphost_shared EXPORT igmphost )
install( EXPORT igmphost FILE igmphost-config.cmake NAMESPACE igmphost:: DESTINATION ${packageFolder} )
write_basic_package_version_file( igmphost-config-version.cmake COMPATIBILITY SameMinorVersion )
install( FILES ${CMAKE_CURRENT_BINARY_DIR}/igmphost-config-version.cmake DESTINATION ${packageFolder} )

foreach( folder IN ITEMS platform model engine vlan )
   install( DIRECTORY ${PROJECT_SOURCE_DIR}/src/${folder}
            DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/igmphost
            OPTIONAL FILES_MATCHING PATTERN "*.h" )
endforeach()
if( IGMPHOST_BUILD_AGENT AND TARGET igmphost_agent )
   install( TARGETS igmphost_agent )
endif()
