# Read by CPack before it makes the packages of one kind: their date, their changelogs, and the
# dependencies of the Debian packages.

# SOURCE_DATE_EPOCH defaults to the time of the last commit, or without git to that of the top
# CMakeLists.txt.
if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
  execute_process(
    COMMAND git -c safe.directory=* -C ${CPACK_AKHOSTMGMT_SOURCES} log -1 --format=%ct
    OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  if(NOT date)
    file(TIMESTAMP ${CPACK_AKHOSTMGMT_SOURCES}/CMakeLists.txt date "%s" UTC)
  endif()
  set(ENV{SOURCE_DATE_EPOCH} ${date})
endif()

set(control ${CPACK_PACKAGE_DIRECTORY}/_CPack_Packages/debian)
string(TIMESTAMP debian_date "%a, %d %b %Y %H:%M:%S +0000" UTC)
string(TIMESTAMP rpm_date "%a %b %d %Y" UTC)
foreach(package akhostmgmt akdevserver)
  file(WRITE ${control}/${package}.changelog
"${package} (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) unstable; urgency=medium

  * Version ${CPACK_PACKAGE_VERSION}.

 -- ${CPACK_PACKAGE_CONTACT}  ${debian_date}
")
endforeach()
set(CPACK_RPM_CHANGELOG_FILE ${control}/rpm.changelog)
file(WRITE ${CPACK_RPM_CHANGELOG_FILE}
"* ${rpm_date} ${CPACK_PACKAGE_CONTACT} - ${CPACK_PACKAGE_VERSION}-${CPACK_RPM_PACKAGE_RELEASE}
- Version ${CPACK_PACKAGE_VERSION}.
")

# The packages that provide the shared libraries of these built files. CPack's SHLIBDEPS would find
# them too, but would also make dpkg run ldconfig, which a private module does not need.
function(find_dependencies result)
  file(WRITE ${control}/control
    "Source: akhostmgmt\n\nPackage: akhostmgmt\nArchitecture: any\n")
  execute_process(
    COMMAND dpkg-shlibdeps -O ${ARGN}
    WORKING_DIRECTORY ${control}/..
    OUTPUT_VARIABLE found OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_VARIABLE ignored
    COMMAND_ERROR_IS_FATAL ANY)
  string(REPLACE "shlibs:Depends=" "" found "${found}")
  set(${result} "${found}" PARENT_SCOPE)
endfunction()

if(CPACK_GENERATOR STREQUAL "DEB")
  # CPack would put it before each package's own description.
  set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
  find_dependencies(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS
    ${CPACK_AKHOSTMGMT_BUILD}/bin/akhostmgmt
    ${CPACK_AKHOSTMGMT_BUILD}/lib/akhostmgmt/libarkeon-https.so)
  find_dependencies(CPACK_DEBIAN_DEVSERVER_PACKAGE_DEPENDS
    ${CPACK_AKHOSTMGMT_BUILD}/bin/akdevserver)
endif()
