# The packages, made by CPack. The version is the project's.
set(CPACK_PACKAGE_NAME akhostmgmt)
set(CPACK_PACKAGE_VENDOR "akhostmgmt maintainers")
set(CPACK_PACKAGE_CONTACT "maintainers <maintainers@users.noreply.c-seed-367a0c45.example>")
set(CPACK_GENERATOR DEB RPM)
set(CPACK_COMPONENTS_ALL tool devserver)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS ${CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS})
# Some paths are absolute, so everything is installed below a directory of CPack's (DESTDIR).
set(CPACK_SET_DESTDIR ON)
set(CPACK_PACKAGE_RELOCATABLE OFF)
set(CPACK_INSTALL_PREFIX /usr)
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_CURRENT_SOURCE_DIR}/configure.cmake)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/finish.cmake)
# Used by these two scripts.
set(CPACK_AKHOSTMGMT_SOURCES ${CMAKE_SOURCE_DIR})
set(CPACK_AKHOSTMGMT_BUILD ${CMAKE_BINARY_DIR})
set(CPACK_AKHOSTMGMT_STRIP ${CMAKE_STRIP})

set(tool_summary "Host database administration for Arkeon primary servers")
set(tool_description
"akhostmgmt lists and changes which host names and addresses belong to which
host ID of an Arkeon data-protection domain. One run performs one operation:
it asks the primary server over HTTPS, prints a message or a listing, and
exits with a status that scripts can rely on.")
set(devserver_summary "Local Arkeon primary server to try out akhostmgmt")
set(devserver_description
"akdevserver answers the requests of akhostmgmt over HTTPS from a small host
database of samples, and misbehaves as it is told. It is for trying out and
testing only, and no substitute for a primary server.")

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_TOOL_PACKAGE_NAME akhostmgmt)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_TOOL_DESCRIPTION "${tool_summary}\n${tool_description}")
set(CPACK_DEBIAN_TOOL_PACKAGE_RECOMMENDS logrotate)
set(CPACK_DEBIAN_TOOL_PACKAGE_SUGGESTS akdevserver)
set(CPACK_DEBIAN_TOOL_PACKAGE_CONTROL_EXTRA
  ${CMAKE_CURRENT_SOURCE_DIR}/debian/conffiles ${CMAKE_CURRENT_SOURCE_DIR}/debian/postrm)
set(CPACK_DEBIAN_DEVSERVER_PACKAGE_NAME akdevserver)
set(CPACK_DEBIAN_DEVSERVER_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_DEVSERVER_DESCRIPTION "${devserver_summary}\n${devserver_description}")
set(CPACK_DEBIAN_DEVSERVER_PACKAGE_ENHANCES akhostmgmt)

set(CPACK_RPM_COMPONENT_INSTALL ON)
set(CPACK_RPM_PACKAGE_RELEASE 1)
set(CPACK_RPM_FILE_NAME RPM-DEFAULT)
set(CPACK_RPM_PACKAGE_LICENSE "All rights reserved")
set(CPACK_RPM_TOOL_PACKAGE_NAME akhostmgmt)
set(CPACK_RPM_TOOL_PACKAGE_SUMMARY "${tool_summary}")
set(CPACK_RPM_TOOL_PACKAGE_DESCRIPTION "${tool_description}")
set(CPACK_RPM_TOOL_PACKAGE_GROUP "Applications/System")
set(CPACK_RPM_TOOL_USER_FILELIST "%config(noreplace) /etc/logrotate.d/akhostmgmt")
file(STRINGS ${CMAKE_SOURCE_DIR}/po/LINGUAS languages)
foreach(language IN LISTS languages)
  list(APPEND CPACK_RPM_TOOL_USER_FILELIST
    "%lang(${language}) ${platform_root}/locale/${language}/LC_MESSAGES/akhostmgmt.mo")
endforeach()
set(CPACK_RPM_DEVSERVER_PACKAGE_NAME akdevserver)
set(CPACK_RPM_DEVSERVER_PACKAGE_SUMMARY "${devserver_summary}")
set(CPACK_RPM_DEVSERVER_PACKAGE_DESCRIPTION "${devserver_description}")
set(CPACK_RPM_DEVSERVER_PACKAGE_GROUP "Development/Tools")
# Packages do not contain the host and the time of the build, or links named by build IDs.
set(CPACK_RPM_SPEC_MORE_DEFINE
"%define _buildhost localhost
%define use_source_date_epoch_as_buildtime 1
%define clamp_mtime_to_source_date_epoch 1
%define _build_id_links none
%define packager ${CPACK_PACKAGE_CONTACT}")
# Directories that other packages own.
set(CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION
  /etc /etc/logrotate.d /usr/bin /usr/lib /usr/share /usr/share/doc
  /usr/share/man /usr/share/man/man1 /usr/share/man/man5
  /usr/share/bash-completion /usr/share/bash-completion/completions
  /usr/share/fish /usr/share/fish/vendor_completions.d /usr/share/zsh)

include(CPack)
