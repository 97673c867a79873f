# Prepares the tree staged by CPack for Debian: strips the programs, and compresses manuals and
# changelogs.

set(prefix ${CPACK_TEMPORARY_INSTALL_DIRECTORY}${CPACK_PACKAGING_INSTALL_PREFIX})
set(doc ${prefix}/share/doc/velto)
set(debian ${CPACK_VELTO_SOURCE}/Packaging/debian)

execute_process(
  COMMAND strip --strip-unneeded --remove-section=.comment --remove-section=.note
    ${prefix}/bin/velto ${prefix}/bin/velto-lab
  COMMAND_ERROR_IS_FATAL ANY)
file(COPY_FILE ${debian}/changelog ${doc}/changelog.Debian)
execute_process(
  COMMAND gzip -9nf ${doc}/changelog ${doc}/changelog.Debian ${prefix}/share/man/man1/velto.1
    ${prefix}/share/man/man1/velto-lab.1
  COMMAND_ERROR_IS_FATAL ANY)
file(MAKE_DIRECTORY ${prefix}/share/lintian/overrides)
file(COPY_FILE ${debian}/lintian-overrides ${prefix}/share/lintian/overrides/velto)
