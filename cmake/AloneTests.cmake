# One more test per Qt Test program (label "alone"): each of its test functions run in a
# process of its own, then all of them in reverse order, so that a function depending on what
# another one did is found. A program's target property ALONE_ENVIRONMENT (a list of
# NAME=value) is added to its environment; dialogs run on the offscreen platform.
function(marlouss_add_alone_tests)
  foreach(dir ${ARGN})
    get_property(targets DIRECTORY ${dir} PROPERTY BUILDSYSTEM_TARGETS)
    foreach(target ${targets})
      get_target_property(type ${target} TYPE)
      if(NOT type STREQUAL "EXECUTABLE" OR NOT target MATCHES "^tst_")
        continue()
      endif()
      get_target_property(environment ${target} ALONE_ENVIRONMENT)
      if(NOT environment)
        set(environment "")
      endif()
      add_test(NAME alone_${target}
        COMMAND sh ${PROJECT_SOURCE_DIR}/cmake/run_functions_alone.sh $<TARGET_FILE:${target}>)
      set_tests_properties(alone_${target} PROPERTIES
        LABELS alone
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;${environment}")
    endforeach()
  endforeach()
endfunction()
