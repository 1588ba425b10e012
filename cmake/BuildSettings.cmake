# How the project's own targets are compiled. Nothing here reaches a project that adds this one as a
# folder: variables end with the folder, and options are carried by targets.

set(CMAKE_CXX_STANDARD 23)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
# A shared library shows what QUILLBAY_EXPORT marks, and nothing else.
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

# Installed programs and libraries find each other wherever the prefix is moved to.
set(CMAKE_INSTALL_RPATH "$ORIGIN;$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")

# What every target of the project links.
add_library(QuillbayBuildSettings INTERFACE)

# The rest is for work on this project. One that adds it as a folder has settings of its own.
if(NOT PROJECT_IS_TOP_LEVEL)
  return()
endif()

set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_VERIFY_INTERFACE_HEADER_SETS ON)

# Off unless a preset says otherwise: through them, gcc 12 at -O3 takes strings for endless ones and
# warns; and no file comes to lean on a header that it does not include.
option(CMAKE_DISABLE_PRECOMPILE_HEADERS "Do not precompile headers" ON)

find_program(CCACHE ccache)
if(CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
endif()

# Warnings are errors in the presets alone: a new compiler that warns of more must not break what a
# packager builds. The presets have the sanitizers too: without the check of virtual tables, whose
# descriptor tests that run out of descriptors lack, and without a warning about optionals, which
# gcc 12 gets wrong in instrumented code.
target_compile_options(QuillbayBuildSettings INTERFACE
  # Precompiled headers are only shared between targets with the same options; some packages bring this.
  -pthread
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow
  # gcc 12 sees overlaps in the sum of two strings that cannot be.
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
  # What one file calls its own may shadow what another does, where both are compiled as one.
  $<$<BOOL:${CMAKE_UNITY_BUILD}>:-Wno-shadow>)
