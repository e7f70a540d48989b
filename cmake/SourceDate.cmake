# The moment that whatever is built tells as its date, so that the same sources give the same bytes: that
# of SOURCE_DATE_EPOCH if the environment has it, else of the last commit, else of the change log. In
# seconds since 1970, in ZAN_SOURCE_DATE.
set(ZAN_SOURCE_DATE "$ENV{SOURCE_DATE_EPOCH}")
if(NOT ZAN_SOURCE_DATE)
  execute_process(COMMAND git log -1 --format=%ct
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
    OUTPUT_VARIABLE ZAN_SOURCE_DATE OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
endif()
if(NOT ZAN_SOURCE_DATE)
  file(TIMESTAMP ${PROJECT_SOURCE_DIR}/CHANGELOG.md ZAN_SOURCE_DATE "%s" UTC)
endif()
# For what CMake itself writes.
set(ENV{SOURCE_DATE_EPOCH} ${ZAN_SOURCE_DATE})
