# What to build. A project that adds this one as a folder gets the library alone, unless it asks for
# more.

option(QUILLBAY_UI "Build the share sheet, which needs Qt" ${PROJECT_IS_TOP_LEVEL})
option(QUILLBAY_HOSTS "Build the command-line program and, with the share sheet, the desktop program"
  ${PROJECT_IS_TOP_LEVEL})
option(QUILLBAY_SANDBOX "Build the local service" ${PROJECT_IS_TOP_LEVEL})
option(QUILLBAY_EXAMPLES "Build the examples" ${PROJECT_IS_TOP_LEVEL})
option(QUILLBAY_TESTS "Build the tests, which need the programs, the local service and the examples"
  ${PROJECT_IS_TOP_LEVEL})
option(QUILLBAY_DOCS "Offer the target docs, if Doxygen is found, and test the code in the pages"
  ${PROJECT_IS_TOP_LEVEL})
option(QUILLBAY_BENCHMARKS "Build the benchmarks, which need the programs and the local service" OFF)
option(QUILLBAY_FUZZERS "Build the fuzzers, which need clang, the programs and the local service" OFF)
if(PROJECT_IS_TOP_LEVEL)
  option(BUILD_SHARED_LIBS "Build the libraries shared" ON)
endif()
set(QUILLBAY_SERVICE_HOST cloud.quillbay.example CACHE STRING
  "Host name of the sharing service, compiled into the library")

if(QUILLBAY_TESTS)
  include(CTest)
  # CMake's own switch counts, too.
  if(NOT BUILD_TESTING)
    set(QUILLBAY_TESTS OFF)
  endif()
endif()

# quillbay_require(SWITCH OTHER...): SWITCH may only be on where the others are.
function(quillbay_require switch)
  foreach(other IN LISTS ARGN)
    if(${switch} AND NOT ${other})
      message(FATAL_ERROR "${switch} needs ${other}: switch both on, or ${switch} off")
    endif()
  endforeach()
endfunction()
quillbay_require(QUILLBAY_TESTS QUILLBAY_HOSTS QUILLBAY_SANDBOX QUILLBAY_EXAMPLES)
quillbay_require(QUILLBAY_BENCHMARKS QUILLBAY_HOSTS QUILLBAY_SANDBOX)
quillbay_require(QUILLBAY_FUZZERS QUILLBAY_HOSTS QUILLBAY_SANDBOX)
