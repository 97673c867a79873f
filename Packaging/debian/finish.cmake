# Turns the installed tree that CPack has staged into what Debian wants beyond it: compressed
# manuals and changelogs. Bytes do not depend on the time.

file(GLOB stages ${CPACK_TEMPORARY_INSTALL_DIRECTORY} ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*)
foreach(stage ${stages})
  set(share ${stage}${CPACK_PACKAGING_INSTALL_PREFIX}/share)
  if(EXISTS ${share}/doc/velto)
    file(COPY_FILE ${CPACK_VELTO_SOURCE}/Packaging/debian/changelog
      ${share}/doc/velto/changelog.Debian)
    execute_process(
      COMMAND gzip -9nf ${share}/doc/velto/changelog ${share}/doc/velto/changelog.Debian
        ${share}/man/man1/velto.1
      COMMAND_ERROR_IS_FATAL ANY)
  endif()
endforeach()
