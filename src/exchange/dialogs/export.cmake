# The export dialog and the two ways of exporting that run it.
list(APPEND EXCHANGE_DIALOG_SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/export_selection.cpp ${CMAKE_CURRENT_LIST_DIR}/export_selection.h
  ${CMAKE_CURRENT_LIST_DIR}/export_uss_dialog.cpp ${CMAKE_CURRENT_LIST_DIR}/export_uss_dialog.h
  ${CMAKE_CURRENT_LIST_DIR}/export_entry.cpp ${CMAKE_CURRENT_LIST_DIR}/export_entry.h)
