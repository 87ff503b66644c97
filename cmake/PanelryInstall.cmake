# What an installation holds: the library, the SDK with its CMake package, and the desk with its panels.
include(CMakePackageConfigHelpers)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/panelry")

# The headers for module authors and hosts; all others are the library's own.
set(public_headers
  base/host_text.h
  base/number_text.h
  base/singleton.h
  base/wake_up.h
  bridge/exports.h
  bridge/host_callback.h
  hosting/frame_width_event.h
  hosting/message_ids.h
  hosting/module_library.h
  hosting/module_manager_spi.h
  hosting/sdk_version.h
  hosting/widget_properties.h
  input/hook_subscription.h
  input/key_names.h
  services/host_table.h
  services/interval_timer.h
  services/module_base.h
  services/module_info.h
  services/quote_observer.h
  services/quote_provider.h
  services/quote_records.h
  services/records.h
  services/resource_manager.h
  services/trade_observer.h
  services/trade_provider.h
  services/trade_records.h
  services/virtual_enable_shared_from_this.h
  tables/column_dictionary.h
  tables/rzrq_zi_jin_info.h
  tables/table_form_info.h
  tables/zi_jin_info.h
  ticket/data_deal_base.h
  ticket/ticket_session.h
  watchlist/watchlist_listener.h
  watchlist/watchlist_request.h
  watchlist/watchlist_subscription.h)
foreach(header IN LISTS public_headers)
  cmake_path(GET header PARENT_PATH folder)
  install(FILES "${PROJECT_SOURCE_DIR}/src/${header}" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/panelry/${folder}"
          COMPONENT sdk)
endforeach()

add_library(panelry::panelry ALIAS panelry)
target_include_directories(panelry INTERFACE
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/src> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/panelry>)
target_compile_features(panelry INTERFACE cxx_std_20)

install(TARGETS panelry panelry_sdk EXPORT panelryTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT library NAMELINK_COMPONENT sdk
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT sdk)
install(EXPORT panelryTargets NAMESPACE panelry:: DESTINATION "${package_dir}" COMPONENT sdk)

configure_package_config_file(cmake/panelryConfig.cmake.in panelryConfig.cmake INSTALL_DESTINATION "${package_dir}"
  NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(panelryConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/panelryConfig.cmake" "${PROJECT_BINARY_DIR}/panelryConfigVersion.cmake"
              cmake/PanelryModule.cmake cmake/module.map cmake/abi_note.cpp
        DESTINATION "${package_dir}" COMPONENT sdk)

install(FILES NOTICES.md DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT library)

# The desk installs itself (desk/CMakeLists.txt); its panels lie beside it, where a host's module libraries lie.
if(PANELRY_BUILD_DESK)
  get_property(panels DIRECTORY "${PROJECT_SOURCE_DIR}/panels" PROPERTY BUILDSYSTEM_TARGETS)
  foreach(panel IN LISTS panels)
    get_target_property(type ${panel} TYPE)
    if(type STREQUAL "MODULE_LIBRARY")
      install(TARGETS ${panel} LIBRARY DESTINATION "${PANELRY_DESK_INSTALL_DIR}/adsplugins" COMPONENT desk)
    endif()
  endforeach()
endif()
