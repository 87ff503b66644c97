# panelry_add_module(NAME SOURCES file...): a module library for panelry's plug-in directory.
#
# The library is named NAME.so, sees Qt Widgets and the panelry SDK, hides everything but its two exports
# GetModuleInfo and CreateModule, and carries a note with the ABI it was built for. Used inside the
# repository and, through find_package(panelry), by panel authors.

set(PANELRY_MODULE_CMAKE_DIR "${CMAKE_CURRENT_LIST_DIR}")

function(panelry_add_module name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES")
  if(NOT arg_SOURCES)
    message(FATAL_ERROR "panelry_add_module(${name}): SOURCES is missing")
  endif()

  add_library(${name} MODULE ${arg_SOURCES} "${PANELRY_MODULE_CMAKE_DIR}/abi_note.cpp")
  target_link_libraries(${name} PRIVATE panelry::sdk Qt5::Widgets)
  set(script "${PANELRY_MODULE_CMAKE_DIR}/module.map")
  set_target_properties(${name} PROPERTIES
    PREFIX "" SUFFIX ".so" AUTOMOC ON
    CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON
    LINK_DEPENDS "${script}")
  target_compile_features(${name} PRIVATE cxx_std_20)
  target_compile_options(${name} PRIVATE
    $<$<AND:$<CXX_COMPILER_ID:GNU>,$<COMPILE_LANGUAGE:CXX>>:-fno-gnu-unique>)
  target_link_options(${name} PRIVATE "LINKER:--version-script=${script}" "LINKER:--exclude-libs,ALL"
                                      "LINKER:-Bsymbolic-functions")
  if(NOT PANELRY_SANITIZE)  # a module with a missing symbol would be skipped in silence at run time
    target_link_options(${name} PRIVATE "LINKER:--no-undefined")
  endif()
endfunction()
