# Where the sanitizers read what isn't our fault.
set(panelry_sanitizer_environment
  "LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/suppressions/lsan.txt:print_suppressions=0"
  "TSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/suppressions/tsan.txt:ignore_noninstrumented_modules=1"
  "UBSAN_OPTIONS=print_stacktrace=1")

# panelry_add_test(NAME SOURCES file... [LIBS target...] [DEPENDS target...] [DESKTOP])
#
# One test executable a folder: Qt Test classes that register themselves (tests/support/test.h), on the offscreen
# platform, with warnings as errors. DESKTOP runs it under an X server of its own with a window manager.
# DEPENDS names what must have been built although it isn't linked (modules, the shared library).
function(panelry_add_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "DESKTOP" "" "SOURCES;LIBS;DEPENDS")
  add_executable(${name} ${arg_SOURCES})
  panelry_target(${name})
  target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}/tests")
  target_link_libraries(${name} PRIVATE panelry_test_support ${arg_LIBS})
  if(arg_DEPENDS)
    add_dependencies(${name} ${arg_DEPENDS})
  endif()
  set(environment ${panelry_sanitizer_environment})
  if(arg_DESKTOP)
    add_test(NAME ${name} COMMAND "${PROJECT_SOURCE_DIR}/tests/support/with_desktop" $<TARGET_FILE:${name}>)
    list(APPEND environment "QT_QPA_PLATFORM=xcb")
  else()
    add_test(NAME ${name} COMMAND ${name})
    list(APPEND environment "QT_QPA_PLATFORM=offscreen")
  endif()
  set_tests_properties(${name} PROPERTIES ENVIRONMENT "${environment}")
endfunction()
