# `cpack` builds a Debian package of each component (see cmake/Install.cmake).
#
# zan_add_debian_package(COMPONENT NAME SECTION SUMMARY DESCRIPTION)
macro(zan_add_debian_package component name section summary description)
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name})
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
  set(CPACK_DEBIAN_${upper}_DESCRIPTION "${summary}\n${description}")
endmacro()

zan_add_debian_package(runtime zanupdate misc
  "controller and camera update module with its demo frontend"
  "The module keeps a camera-based tracking system current: it finds the
update files that are delivered beside the frontend, shows which apply to
which controller or camera, sends them and leads through the restart.
.
The demo frontend hosts the module; the simulated system stands in for
controllers and cameras, in the same process or over TCP.")
zan_add_debian_package(tools zanupdate-tools utils
  "writes, checks, proves and seals update files"
  "imagetool makes the update files that the controller and camera update
module finds beside its frontend. It checks them before anyone receives
them, proves where a delivery leads every controller, and seals it.")
zan_add_debian_package(dev zanupdate-dev libdevel
  "what hosts of the controller and camera update module are built with"
  "The headers of the contract between the update module and its hosts, the
files with which CMake and pkg-config find them, and the documents.")
# Of nobody but us: one of Debian itself would come after it.
set(revision 0zan1)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS
  "qtbase5-dev (>= 5.15), zanupdate (= ${PROJECT_VERSION}-${revision})")

# The packages' maintainer is who keeps the sources.
set(maintainer "")
execute_process(COMMAND git log -1 "--format=%an <%ae>"
  WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
  OUTPUT_VARIABLE maintainer OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
set(ZAN_MAINTAINER "${maintainer}" CACHE STRING "Maintainer of the packages: NAME <ADDRESS>")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has one
set(CPACK_PACKAGE_CONTACT "${ZAN_MAINTAINER}")
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${revision})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_STRIP_FILES ON)

string(TIMESTAMP changelog_date "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(${CMAKE_CURRENT_LIST_DIR}/finish.cmake.in ${CMAKE_CURRENT_BINARY_DIR}/finish.cmake @ONLY)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_BINARY_DIR}/finish.cmake)
include(CPack)
