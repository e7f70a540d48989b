# zan_add_module_library(NAME SOURCE... [OBJECT] [FORMS] [FOLDER FOLDER] [PUBLIC TARGET...])
#
# A library of which plug-in modules are made: it shows nothing of itself to the host. Its headers
# stand in FOLDER, or else in the current one. With FORMS it has dialogs, whose headers hold their
# forms by value, and Qt's code generators run over it. With OBJECT it is an object library, whose
# pictures register themselves wherever it is linked.
function(zan_add_module_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "OBJECT;FORMS" "FOLDER" "PUBLIC")
  set(type STATIC)
  if(arg_OBJECT)
    set(type OBJECT)
  endif()
  add_library(${name} ${type} ${arg_UNPARSED_ARGUMENTS})
  target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/${arg_FOLDER})
  target_link_libraries(${name} PUBLIC ${arg_PUBLIC} PRIVATE project-options)
  set_target_properties(${name} PROPERTIES
    POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  if(arg_FORMS)
    target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_BINARY_DIR}/${name}_autogen/include)
    zan_enable_qt_generators(${name})
  endif()
endfunction()
