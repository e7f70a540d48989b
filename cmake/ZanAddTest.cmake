# Seconds after which ctest ends a test: what hangs, and nothing that goes on, however busy the machine
# is. Sooner, Qt Test ends a function, and says which, and sooner still a test gives up what it waits
# for (patience.h).
set(zan_test_timeout 480)
set(zan_function_timeout 300)

# zan_add_test(NAME SOURCE... [OWN_FOLDER] [SHARDS COUNT] [LIBRARIES TARGET...] [TIMEOUT SECONDS])
#
# One Qt Test executable for one unit. It runs without a display and with a home and a temporary folder
# of its own below the build folder, so that no test finds or leaves anything in the user's. With OWN_FOLDER the
# program also stands in a folder of its own, for tests of what looks for files beside the program.
#
# With SHARDS there are so many tests, which run side by side: each is a copy of the program in a
# folder of its own and finds in SHARD which part of its rows to run ("2/4").
function(zan_add_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "OWN_FOLDER" "SHARDS;TIMEOUT" "LIBRARIES")
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT ${zan_test_timeout})
  endif()
  add_executable(${name} ${arg_UNPARSED_ARGUMENTS})
  zan_enable_qt_generators(${name})
  target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} test-main Qt5::Test project-options)
  zan_precompile(${name})
  # Most often empty, and so compiled sooner than the precompiled headers are read.
  set_source_files_properties(${CMAKE_CURRENT_BINARY_DIR}/${name}_autogen/mocs_compilation.cpp
    PROPERTIES SKIP_PRECOMPILE_HEADERS ON)

  file(RELATIVE_PATH part ${CMAKE_BINARY_DIR} ${CMAKE_CURRENT_BINARY_DIR})
  set(folder ${ZAN_PROGRAM_DIR}/${part}/${name})
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

# zan_run_test(NAME TIMEOUT ENVIRONMENT PROGRAM [ARGUMENT...])
#
# One ctest entry, with a home and a temporary folder of its own.
function(zan_run_test name timeout environment program)
  set(home ${CMAKE_BINARY_DIR}/test-home/${name})
  # The module reads update files here, too.
  set(temporary ${ZAN_PROGRAM_DIR}/test-tmp/${name})
  file(MAKE_DIRECTORY ${home} ${temporary})
  list(PREPEND environment QT_QPA_PLATFORM=offscreen HOME=${home} TMPDIR=${temporary}
    QTEST_FUNCTION_TIMEOUT=${zan_function_timeout}000
    LSAN_OPTIONS=print_suppressions=0:suppressions=${PROJECT_SOURCE_DIR}/tests/support/leaksofothers.txt)
  add_test(NAME ${name} COMMAND ${program} ${ARGN})
  set_tests_properties(${name} PROPERTIES
    ENVIRONMENT "${environment}"
    ENVIRONMENT_MODIFICATION "XDG_CONFIG_HOME=unset:;XDG_DATA_HOME=unset:;XDG_CACHE_HOME=unset:"
    TIMEOUT ${timeout})
endfunction()
