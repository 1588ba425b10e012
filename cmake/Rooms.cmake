# quillbay_add_room(ROOM LIBRARY SOURCES ... [HEADERS ...])
#
# A room is a folder that is compiled by itself, as objects, and becomes part of LIBRARY. HEADERS are
# those of its headers that hosts may include.
function(quillbay_add_room room library)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "" "SOURCES;HEADERS")
  add_library(${room} OBJECT ${arg_SOURCES})
  target_include_directories(${room} PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(${room} PRIVATE QuillbayBuildSettings)
  target_sources(${library}
    PRIVATE $<TARGET_OBJECTS:${room}>
    PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${arg_HEADERS})
endfunction()

# quillbay_set_up_library(LIBRARY NAME FILE): LIBRARY is Quillbay::NAME for CMake and libFILE on disk.
function(quillbay_set_up_library library name file)
  add_library(Quillbay::${name} ALIAS ${library})
  set_target_properties(${library} PROPERTIES
    EXPORT_NAME ${name}
    OUTPUT_NAME ${file}
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    LINKER_LANGUAGE CXX)
  target_compile_features(${library} PUBLIC cxx_std_23)
  target_include_directories(${library} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  get_target_property(type ${library} TYPE)
  if(type STREQUAL "SHARED_LIBRARY")
    set(exports ${PROJECT_SOURCE_DIR}/cmake/exports.map)
    target_link_options(${library} PRIVATE
      # Its threads, and work of its own in a host's queue, need its code until the process ends.
      LINKER:-z,nodelete
      LINKER:-z,defs
      LINKER:--version-script=${exports})
    set_target_properties(${library} PROPERTIES LINK_DEPENDS ${exports})
  endif()
endfunction()
