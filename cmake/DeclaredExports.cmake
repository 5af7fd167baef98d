# The exports declared in the public header, as a generated C++ list: every function declared
# with MARLOUSS_API in include/marlouss/marlouss.h. Regenerated whenever the header changes.
#
#   marlouss_declared_exports(<target>)
# gives <target> the include file "marlouss_declared_exports.h" defining
# marlouss_declared::exports (array of names) in the order of the header.
function(marlouss_declared_exports target)
  set(header ${PROJECT_SOURCE_DIR}/include/marlouss/marlouss.h)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${header})
  file(READ ${header} text)
  # Comments may mention names; only declarations count.
  string(REGEX REPLACE "/\\*([^*]|\\*+[^*/])*\\*+/" "" text "${text}")
  string(REGEX MATCHALL "MARLOUSS_API[^;(]*\\(" declarations "${text}")
  set(entries "")
  foreach(declaration ${declarations})
    string(REGEX MATCH "([A-Za-z_][A-Za-z0-9_]*)[ \t\r\n]*\\($" _ "${declaration}")
    string(APPEND entries "    \"${CMAKE_MATCH_1}\",\n")
  endforeach()
  set(out_dir ${CMAKE_CURRENT_BINARY_DIR}/declared_exports)
  file(CONFIGURE OUTPUT ${out_dir}/marlouss_declared_exports.h CONTENT
"// Generated from include/marlouss/marlouss.h by cmake/DeclaredExports.cmake; do not edit.
#pragma once

namespace marlouss_declared {
inline constexpr const char* exports[] = {
${entries}};
} // namespace marlouss_declared
" @ONLY)
  target_include_directories(${target} PRIVATE ${out_dir})
endfunction()
