# What Debian wants of packages and an installation elsewhere does not: compressed manuals, and a changelog in
# its own form beside ours. CPack runs this between staging the files and packing them.

file( GLOB_RECURSE manuals "${CPACK_TEMPORARY_DIRECTORY}/agent${CPACK_PACKAGING_INSTALL_PREFIX}/share/man/*.[1-9]" )
execute_process( COMMAND gzip -9n ${manuals} COMMAND_ERROR_IS_FATAL ANY )

string( TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC )
foreach( component IN LISTS CPACK_COMPONENTS_ALL )
   string( TOUPPER ${component} upper )
   set( package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME} )
   set( changelog
      "${CPACK_TEMPORARY_DIRECTORY}/${component}${CPACK_PACKAGING_INSTALL_PREFIX}/share/doc/${package}/changelog" )
   file( WRITE ${changelog}
      "${package} (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium\n\n"
      "  * CHANGELOG.md of the package igmphost tells what is new.\n\n"
      " -- ${CPACK_PACKAGE_CONTACT}  ${date}\n" )
   execute_process( COMMAND gzip -9n ${changelog} COMMAND_ERROR_IS_FATAL ANY )
endforeach()
