# zan_precompile(TARGET)
#
# Compiles the Qt headers that most sources begin with once for all targets that link the same of
# Qt's modules. A target gets no header of a module that it does not link: what has to stand without
# Qt Widgets is still shown to. That each source includes what it uses shows in a build without
# precompiled headers (-DZAN_PRECOMPILE=OFF, ./run-tests --lint).
#
# Call it when the target's libraries are known.
function(zan_precompile target)
  if(NOT ZAN_PRECOMPILE)
    return()
  endif()
  zan_list_qt_modules(${target} modules)
  # Too rare for headers of their own.
  if(Gui IN_LIST modules AND NOT Widgets IN_LIST modules)
    return()
  endif()
  list(REMOVE_ITEM modules Gui)
  # The headers of the tests look at the network and the widgets, the others do not look around.
  if(NOT Test IN_LIST modules)
    list(REMOVE_ITEM modules Network)
  endif()
  list(JOIN modules "-" name)
  set(precompiled precompiled-${name})
  if(NOT TARGET ${precompiled})
    zan_add_precompiled(${precompiled} ${modules})
  endif()
  target_precompile_headers(${target} REUSE_FROM ${precompiled})
endfunction()

# Which of Qt's modules the target's sources may include, of those that make a difference here.
function(zan_list_qt_modules target result)
  get_target_property(pending ${target} LINK_LIBRARIES)
  set(seen "")
  while(pending)
    list(POP_FRONT pending library)
    # What is no target here is linked, but none of its headers are included.
    if(NOT TARGET "${library}" OR library IN_LIST seen)
      continue()
    endif()
    list(APPEND seen ${library})
    get_target_property(further ${library} INTERFACE_LINK_LIBRARIES)
    if(further)
      list(APPEND pending ${further})
    endif()
  endwhile()
  set(modules Core)
  foreach(module Gui Network Test Widgets)
    if(Qt5::${module} IN_LIST seen)
      list(APPEND modules ${module})
    endif()
  endforeach()
  set(${result} ${modules} PARENT_SCOPE)
endfunction()

# zan_add_precompiled(NAME MODULE...)
function(zan_add_precompiled name)
  set(headers
    <QByteArray> <QCoreApplication> <QDir> <QElapsedTimer> <QFile> <QHash> <QJsonArray>
    <QJsonDocument> <QJsonObject> <QMap> <QObject> <QPointer> <QRegularExpression> <QSet> <QString>
    <QStringList> <QTextStream> <QTimer> <QVector>
    <algorithm> <functional> <memory> <optional> <vector>)
  if(Widgets IN_LIST ARGN)
    list(APPEND headers
      <QAction> <QApplication> <QBoxLayout> <QCheckBox> <QComboBox> <QDialog> <QHeaderView> <QLabel>
      <QMenu> <QMenuBar> <QMessageBox> <QProgressBar> <QPushButton> <QStatusBar> <QStyle>
      <QTableWidget> <QTextEdit>)
  endif()
  if(Test IN_LIST ARGN)
    list(APPEND headers <QtTest>)
  endif()
  # A library needs a source.
  set(source ${CMAKE_BINARY_DIR}/${name}.cpp)
  file(CONFIGURE OUTPUT ${source} CONTENT "// For the precompiled headers alone.\n")
  add_library(${name} OBJECT ${source})
  list(TRANSFORM ARGN PREPEND Qt5:: OUTPUT_VARIABLE libraries)
  target_link_libraries(${name} PRIVATE ${libraries} project-options)
  target_precompile_headers(${name} PRIVATE ${headers})
endfunction()
