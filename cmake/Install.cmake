# Where things go that are installed, and the components they belong to:
#
#   runtime  the plug-in, the demo frontend with its files, the simulated system
#   tools    the image tool
#   dev      what hosts and modules of others are built with
include(GNUInstallDirs)

# Laid out as a delivered frontend: a plug-in looks for its files beside the program.
set(ZAN_FRONTEND_DIR ${CMAKE_INSTALL_LIBDIR}/zanupdate)
set(ZAN_MODULE_DIR ${ZAN_FRONTEND_DIR}/modules)
set(ZAN_INCLUDE_DIR ${CMAKE_INSTALL_INCLUDEDIR}/zanupdate)
set(ZAN_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/ZanUpdate)
set(ZAN_COMPLETION_DIR ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)

# zan_install_library(TARGET AS NAME [HEADERS FILE...])
#
# Others find the library as ZanUpdate::NAME, and its HEADERS with it. What a static library stands on
# has to be installed as well.
function(zan_install_library target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "AS" "HEADERS")
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${arg_AS} OUTPUT_NAME zanupdate-${target})
  install(TARGETS ${target} EXPORT ZanUpdateTargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev
    INCLUDES DESTINATION ${ZAN_INCLUDE_DIR})
  install(FILES ${arg_HEADERS} DESTINATION ${ZAN_INCLUDE_DIR} COMPONENT dev)
endfunction()

# zan_install_link(NAME FILE COMPONENT)
#
# Makes the program FILE, told from the prefix, known to users by a link beside all others.
function(zan_install_link name file component)
  file(RELATIVE_PATH target ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_PREFIX}/${file})
  set(link ${CMAKE_CURRENT_BINARY_DIR}/links/${name})
  file(MAKE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/links)
  file(CREATE_LINK ${target} ${link} SYMBOLIC)
  install(FILES ${link} DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT ${component})
endfunction()
