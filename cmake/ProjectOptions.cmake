# How every target of the project is compiled: link it PRIVATE to `project-options`.
add_library(project-options INTERFACE)
target_compile_features(project-options INTERFACE cxx_std_17)
target_compile_options(project-options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow=local -Wformat=2 -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-qual
  -Wundef
  $<$<BOOL:${ZAN_WERROR}>:-Werror>)
target_compile_definitions(project-options INTERFACE QT_DEPRECATED_WARNINGS)
# What is delivered does not tell where it was built.
target_compile_options(project-options INTERFACE
  $<$<CONFIG:Release>:-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.>)

if(ZAN_SANITIZE)
  target_compile_options(project-options INTERFACE
    -fsanitize=${ZAN_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(project-options INTERFACE -fsanitize=${ZAN_SANITIZE})
endif()

if(ZAN_COVERAGE)
  target_compile_options(project-options INTERFACE --coverage)
  target_link_options(project-options INTERFACE --coverage)
endif()

# Qt's code generators for a target with meta objects, forms or resources.
function(zan_enable_qt_generators target)
  set_target_properties(${target} PROPERTIES AUTOMOC ON AUTOUIC ON)
  # AUTORCC breaks where the folder's name has a quote.
  get_target_property(resources ${target} SOURCES)
  list(FILTER resources INCLUDE REGEX "[.]qrc$")
  # Without the times of the files, which differ from clone to clone.
  qt5_add_resources(compiled_resources ${resources} OPTIONS --format-version 1)
  target_sources(${target} PRIVATE ${compiled_resources})
endfunction()
