# What `cmake --install` puts where, in three components that are packages too (Packages.cmake): runtime, the
# shared library; dev, what a program is built with, which writes `find_package( igmphost )` and links
# igmphost::igmphost; agent, the command with its manual, completions, unit and examples.

include( CMakePackageConfigHelpers )
set( packageFolder ${CMAKE_INSTALL_LIBDIR}/cmake/igmphost )

install( TARGETS igmphost_shared EXPORT igmphost
         LIBRARY COMPONENT runtime NAMELINK_COMPONENT dev )
install( EXPORT igmphost FILE igmphost-config.cmake NAMESPACE igmphost:: DESTINATION ${packageFolder}
         COMPONENT dev )
write_basic_package_version_file( igmphost-config-version.cmake COMPATIBILITY SameMinorVersion )
install( FILES ${CMAKE_CURRENT_BINARY_DIR}/igmphost-config-version.cmake DESTINATION ${packageFolder}
         COMPONENT dev )

# The prefix is told relative to the file, so that an installed tree can be moved.
set( pkgconfigFolder ${CMAKE_INSTALL_LIBDIR}/pkgconfig )
file( RELATIVE_PATH pcPrefix /${pkgconfigFolder} / )
configure_file( packaging/igmphost.pc.in igmphost.pc @ONLY )
install( FILES ${CMAKE_CURRENT_BINARY_DIR}/igmphost.pc DESTINATION ${pkgconfigFolder} COMPONENT dev )

foreach( folder IN ITEMS platform model engine vlan )
   install( DIRECTORY ${PROJECT_SOURCE_DIR}/src/${folder}
            DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/igmphost COMPONENT dev
            FILES_MATCHING PATTERN "*.h" )
endforeach()
install( DIRECTORY examples/embed DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples COMPONENT dev )
install( FILES docs/reference.md docs/behaviour.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT dev )

if( NOT IGMPHOST_BUILD_AGENT )
   return()
endif()
install( TARGETS igmphost_agent RUNTIME COMPONENT agent )
install( FILES docs/man/igmphost.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT agent )
install( FILES docs/man/igmphost-scenario.5 DESTINATION ${CMAKE_INSTALL_MANDIR}/man5 COMPONENT agent )
install( FILES packaging/completions/igmphost DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
         COMPONENT agent )
install( FILES packaging/completions/_igmphost DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions
         COMPONENT agent )
configure_file( packaging/igmphost@.service.in igmphost@.service @ONLY )
install( FILES ${CMAKE_CURRENT_BINARY_DIR}/igmphost@.service DESTINATION lib/systemd/system COMPONENT agent )
install( DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT agent PATTERN "embed" EXCLUDE )
install( FILES CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT agent )
