# zan_add_library(NAME SOURCE... [OBJECT] [GENERATORS] [PUBLIC TARGET...] [PRIVATE TARGET...])
#
# A static library whose headers stand beside its sources. Who links it sees those headers, and those
# of its PUBLIC targets: this is what keeps a room of the house from including another one that it
# must not know. With GENERATORS Qt's code generators run over it, for meta objects and resources.
# With OBJECT it is an object library, for what stands on one.
function(zan_add_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "OBJECT;GENERATORS" "" "PUBLIC;PRIVATE")
  set(type STATIC)
  if(arg_OBJECT)
    set(type OBJECT)
  endif()
  add_library(${name} ${type} ${arg_UNPARSED_ARGUMENTS})
  target_include_directories(${name} PUBLIC $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}>)
  target_link_libraries(${name}
    PUBLIC ${arg_PUBLIC}
    PRIVATE ${arg_PRIVATE} $<BUILD_INTERFACE:project-options>)
  zan_precompile(${name})
  if(arg_GENERATORS)
    zan_enable_qt_generators(${name})
  endif()
endfunction()
