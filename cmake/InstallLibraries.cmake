# Libraries, headers, and what CMake and pkg-config need to find them. The two export sets are apart,
# so that the share sheet can be installed later, or never.

include(CMakePackageConfigHelpers)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/QuillbayCloud)

# quillbay_install_library(COMPONENT EXPORT_SET TARGET...)
function(quillbay_install_library component export_set)
  install(TARGETS ${ARGN} EXPORT ${export_set}
    RUNTIME COMPONENT ${component}-runtime
    LIBRARY COMPONENT ${component}-runtime NAMELINK_COMPONENT ${component}-development
    ARCHIVE COMPONENT ${component}-development
    FILE_SET HEADERS COMPONENT ${component}-development)
  install(EXPORT ${export_set} NAMESPACE Quillbay::
    DESTINATION ${package_folder} COMPONENT ${component}-development)
endfunction()

# quillbay_install_module(COMPONENT NAME)
function(quillbay_install_module component name)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/${name}.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${name}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT ${component}-development)
endfunction()

# The way from the folder of a pkg-config file up to the prefix.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX
  BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig OUTPUT_VARIABLE prefix_from_modules)

get_target_property(quillbay_library_type QuillbayCloud TYPE)
quillbay_install_library(cloud QuillbayCloudTargets QuillbayCloud QuillbayPlatform QuillbayCore)
quillbay_install_module(cloud quillbay-cloud)
if(QUILLBAY_UI)
  quillbay_install_library(ui QuillbayCloudUITargets QuillbayCloudUI)
  quillbay_install_module(ui quillbay-cloud-ui)
endif()

configure_file(${PROJECT_SOURCE_DIR}/cmake/QuillbayCloudConfig.cmake.in
  ${PROJECT_BINARY_DIR}/QuillbayCloudConfig.cmake @ONLY)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/QuillbayCloudConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/QuillbayCloudConfig.cmake
    ${PROJECT_BINARY_DIR}/QuillbayCloudConfigVersion.cmake
  DESTINATION ${package_folder} COMPONENT cloud-development)
