# A shared library hides its internal classes. Tests and benchmarks reach them through archives of the
# same objects. The pieces of the programs are linked both ways: into the programs with the libraries,
# as any host has them, and into tests with the archives.

define_property(TARGET PROPERTY QUILLBAY_INTERNALS
  BRIEF_DOCS "Whether an executable links the archives in place of the libraries"
  INITIALIZE_FROM_VARIABLE QUILLBAY_INTERNALS)

# quillbay_add_internals(LIBRARY ROOM...): LIBRARYInternals, the archive, and LIBRARYOrInternals, which
# is what the executable that links it says.
function(quillbay_add_internals library)
  set(internals ${library}Internals)
  add_library(${internals} STATIC EXCLUDE_FROM_ALL)
  foreach(room IN LISTS ARGN)
    target_sources(${internals} PRIVATE $<TARGET_OBJECTS:${room}>)
  endforeach()
  set_target_properties(${internals} PROPERTIES LINKER_LANGUAGE CXX)
  target_include_directories(${internals} PUBLIC ${PROJECT_SOURCE_DIR})
  add_library(${library}OrInternals INTERFACE)
  target_link_libraries(${library}OrInternals INTERFACE
    $<IF:$<BOOL:$<TARGET_PROPERTY:QUILLBAY_INTERNALS>>,${internals},${library}>)
endfunction()

if(NOT QUILLBAY_HOSTS AND NOT QUILLBAY_TESTS AND NOT QUILLBAY_BENCHMARKS)
  return()
endif()
quillbay_add_internals(QuillbayCloud QuillbayPlatformRoom QuillbayCoreRoom QuillbayCloudRoom)
target_link_libraries(QuillbayCloudInternals PRIVATE ${QUILLBAY_LINKED_LIBRARIES})
if(QUILLBAY_UI)
  quillbay_add_internals(QuillbayCloudUI
    QuillbayPlatformUIRoom QuillbayCoreUIRoom QuillbayCloudUIRoom)
  target_link_libraries(QuillbayCloudUIInternals PUBLIC QuillbayCloudInternals Qt6::Widgets)
endif()
