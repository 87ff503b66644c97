# The embedded resources: sets PANELRY_RESOURCE_SOURCES to the generated C++ files of two units,
# `panelry` (style sheet and icons) and `panelry_language` (translation catalogues).
#
# A custom command serves only targets of the directory that declares it, so include this file in the
# CMakeLists.txt that compiles the list. In a static library the units are linked and registered
# only by Q_INIT_RESOURCE(panelry) and Q_INIT_RESOURCE(panelry_language).
# Needs Qt5 Core and LinguistTools.

set(panelry_resources_build_dir "${CMAKE_CURRENT_BINARY_DIR}/resources")
set(panelry_catalogues
  "${CMAKE_CURRENT_LIST_DIR}/language/DealdeskLanguage_en.ts"
  "${CMAKE_CURRENT_LIST_DIR}/language/DealdeskLanguage_zh_CN.ts")

# The catalogues are compiled into the build tree, and their resource list has to stand beside them.
set_source_files_properties(${panelry_catalogues} PROPERTIES OUTPUT_LOCATION "${panelry_resources_build_dir}")
qt5_add_translation(panelry_compiled_catalogues ${panelry_catalogues} OPTIONS -silent)
configure_file("${CMAKE_CURRENT_LIST_DIR}/panelry_language.qrc"
  "${panelry_resources_build_dir}/panelry_language.qrc" COPYONLY)

set(PANELRY_RESOURCE_SOURCES)
qt5_add_resources(PANELRY_RESOURCE_SOURCES
  "${CMAKE_CURRENT_LIST_DIR}/panelry.qrc"
  "${panelry_resources_build_dir}/panelry_language.qrc")
