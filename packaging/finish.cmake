# Run by CPack after it has installed each component below a directory of its own: strips the binaries,
# compresses the manual pages, adds the files that only Debian packages have, and sets the times of all
# files and the modes of directories.

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

function(add_debian_files component package)
  set(share ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr/share)
  run(install -d -m 755 ${share}/lintian ${share}/lintian/overrides)
  run(install -m 644 ${CMAKE_CURRENT_LIST_DIR}/debian/${package}.lintian-overrides
    ${share}/lintian/overrides/${package})
  run(install -m 644 ${control}/${package}.changelog
    ${share}/doc/${package}/changelog.Debian)
  run(gzip -9n ${share}/doc/${package}/changelog.Debian)
endfunction()

set(tree ${CPACK_TEMPORARY_DIRECTORY})
set(control ${CPACK_PACKAGE_DIRECTORY}/_CPack_Packages/debian)
file(GLOB programs ${tree}/*/usr/bin/* ${tree}/*/usr/lib/akhostmgmt/*.so)
run(${CPACK_AKHOSTMGMT_STRIP} --remove-section=.comment --remove-section=.note ${programs})
file(GLOB pages ${tree}/*/usr/share/man/man?/*)
if(pages)
  run(gzip -9n ${pages})
endif()
if(CPACK_GENERATOR STREQUAL "DEB")
  add_debian_files(tool akhostmgmt)
  add_debian_files(devserver akdevserver)
endif()
# The caller's umask affects parent directories. Those of the logs have modes of their own.
run(find ${tree} -type d -not -path */zelvik/arkeon/logs* -exec chmod 755 {} +)
run(find ${tree} -exec touch -h -d @$ENV{SOURCE_DATE_EPOCH} {} +)
