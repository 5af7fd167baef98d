# The comparison and property views of import.
list(APPEND EXCHANGE_DIALOG_SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/compare_views.cpp ${CMAKE_CURRENT_LIST_DIR}/compare_views.h
  ${CMAKE_CURRENT_LIST_DIR}/compare_uss_dialog.cpp ${CMAKE_CURRENT_LIST_DIR}/compare_uss_dialog.h
  ${CMAKE_CURRENT_LIST_DIR}/show_prop_uss_dialog.cpp ${CMAKE_CURRENT_LIST_DIR}/show_prop_uss_dialog.h
  ${CMAKE_CURRENT_LIST_DIR}/resources/compare.qrc)
# The previews are drawn by the host, reached through its document wrappers. The library of
# the dialogs is made after the parts are read, hence the deferred call.
if(TARGET marlouss_frame)
  cmake_language(DEFER CALL target_link_libraries marlouss_exchange_dialogs PUBLIC marlouss_frame)
endif()

# Draws the view icons and the warning sign into resources/ again (run by hand after the
# drawing changes): cmake --build build --target compare_icon_painter && build/bin/compare_icon_painter
if(TARGET marlouss_editor)
  add_executable(compare_icon_painter EXCLUDE_FROM_ALL
    ${CMAKE_CURRENT_LIST_DIR}/resources/compare_icon_painter.cpp)
  target_include_directories(compare_icon_painter PRIVATE ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(compare_icon_painter PRIVATE marlouss_editor Qt6::Gui)
  target_compile_definitions(compare_icon_painter PRIVATE
    COMPARE_RESOURCES_FOLDER="${CMAKE_CURRENT_LIST_DIR}/resources")
endif()
