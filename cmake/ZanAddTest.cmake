# zan_add_test(NAME SOURCE... [OWN_FOLDER] [LIBRARIES TARGET...] [TIMEOUT SECONDS])
#
# One Qt Test executable for one unit. It runs without a display and with a home folder of its own
# below the build folder, so that no test finds or leaves anything in the user's. With OWN_FOLDER the
# program also stands in a folder of its own, for tests of what looks for files beside the program.
function(zan_add_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "OWN_FOLDER" "TIMEOUT" "LIBRARIES")
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 60)
  endif()
  add_executable(${name} ${arg_UNPARSED_ARGUMENTS})
  zan_enable_qt_generators(${name})
  target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} test-main Qt5::Test project-options)

  if(arg_OWN_FOLDER)
    set_target_properties(${name} PROPERTIES
      RUNTIME_OUTPUT_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/${name})
  endif()

  set(home ${CMAKE_BINARY_DIR}/test-home/${name})
  file(MAKE_DIRECTORY ${home})
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen;HOME=${home}"
    ENVIRONMENT_MODIFICATION "XDG_CONFIG_HOME=unset:;XDG_DATA_HOME=unset:;XDG_CACHE_HOME=unset:"
    TIMEOUT ${arg_TIMEOUT})
endfunction()
