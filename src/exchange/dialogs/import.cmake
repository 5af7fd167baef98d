# The import dialogs: decisions record by record, the progress of the writing, and the whole
# import as the library's export runs it.
list(APPEND EXCHANGE_DIALOG_SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/import_decision_model.cpp
  ${CMAKE_CURRENT_LIST_DIR}/import_decision_model.h
  ${CMAKE_CURRENT_LIST_DIR}/import_row_delegate.cpp
  ${CMAKE_CURRENT_LIST_DIR}/import_row_delegate.h
  ${CMAKE_CURRENT_LIST_DIR}/import_uss_dialog.cpp
  ${CMAKE_CURRENT_LIST_DIR}/import_uss_dialog.h
  ${CMAKE_CURRENT_LIST_DIR}/import_progress_dialog.cpp
  ${CMAKE_CURRENT_LIST_DIR}/import_progress_dialog.h
  ${CMAKE_CURRENT_LIST_DIR}/import_environment.cpp
  ${CMAKE_CURRENT_LIST_DIR}/import_environment.h)
