# zan_add_test(NAME SOURCE... [OWN_FOLDER] [SHARDS COUNT] [LIBRARIES TARGET...] [TIMEOUT SECONDS])
#
# One Qt Test executable for one unit. It runs without a display and with a home folder of its own
# below the build folder, so that no test finds or leaves anything in the user's. With OWN_FOLDER the
# program also stands in a folder of its own, for tests of what looks for files beside the program.
#
# With SHARDS there are so many tests, which run side by side: each is a copy of the program in a
# folder of its own and finds in SHARD which part of its rows to run ("2/4").
function(zan_add_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "OWN_FOLDER" "SHARDS;TIMEOUT" "LIBRARIES")
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 60)
  endif()
  add_executable(${name} ${arg_UNPARSED_ARGUMENTS})
  zan_enable_qt_generators(${name})
  target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} test-main Qt5::Test project-options)

  set(folder ${CMAKE_CURRENT_BINARY_DIR}/${name})
  if(arg_OWN_FOLDER OR arg_SHARDS)
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${folder})
  endif()

  if(NOT arg_SHARDS)
    zan_run_test(${name} ${arg_TIMEOUT} "" ${name})
    return()
  endif()
  foreach(shard RANGE 1 ${arg_SHARDS})
    set(copy ${folder}/${shard}/${name})
    add_custom_command(TARGET ${name} POST_BUILD
      COMMAND ${CMAKE_COMMAND} -E make_directory ${folder}/${shard}
      COMMAND ${CMAKE_COMMAND} -E copy $<TARGET_FILE:${name}> ${copy}
      VERBATIM)
    zan_run_test(${name}-${shard} ${arg_TIMEOUT} "SHARD=${shard}/${arg_SHARDS}" ${copy})
  endforeach()
endfunction()

# zan_run_test(NAME TIMEOUT ENVIRONMENT PROGRAM)
#
# One ctest entry, with a home folder of its own.
function(zan_run_test name timeout environment program)
  set(home ${CMAKE_BINARY_DIR}/test-home/${name})
  file(MAKE_DIRECTORY ${home})
  list(PREPEND environment QT_QPA_PLATFORM=offscreen HOME=${home})
  add_test(NAME ${name} COMMAND ${program})
  set_tests_properties(${name} PROPERTIES
    ENVIRONMENT "${environment}"
    ENVIRONMENT_MODIFICATION "XDG_CONFIG_HOME=unset:;XDG_DATA_HOME=unset:;XDG_CACHE_HOME=unset:"
    TIMEOUT ${timeout})
endfunction()
