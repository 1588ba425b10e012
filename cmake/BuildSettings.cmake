# How the project's own targets are compiled. Warnings are errors in the presets alone: a new compiler
# that warns of more must not break what a packager builds.

set(CMAKE_CXX_STANDARD 23)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(THREADS_PREFER_PTHREAD_FLAG ON)

# The rest is for work on this project. One that adds it as a folder has settings of its own.
if(NOT PROJECT_IS_TOP_LEVEL)
  return()
endif()

set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_VERIFY_INTERFACE_HEADER_SETS ON)
# For all targets: precompiled headers are only shared between targets with the same options.
add_compile_options(-pthread)

# Off unless a preset says otherwise: through them, gcc 12 at -O3 takes strings for endless ones and
# warns; and no file comes to lean on a header that it does not include.
option(CMAKE_DISABLE_PRECOMPILE_HEADERS "Do not precompile headers" ON)

find_program(CCACHE ccache)
if(CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
endif()

add_compile_options(-Wall -Wextra -Wpedantic -Wconversion -Wshadow)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # gcc 12 sees overlaps in the sum of two strings that cannot be.
  add_compile_options(-Wno-restrict)
endif()

# What one file calls its own may shadow what another does, where both are compiled as one.
if(CMAKE_UNITY_BUILD)
  add_compile_options(-Wno-shadow)
endif()

# "address" (with undefined) or "thread"; see the presets.
set(QUILLBAY_SANITIZE "" CACHE STRING "Sanitizer to build with: address, thread or none")
if(QUILLBAY_SANITIZE STREQUAL "address")
  # Instrumented, gcc 12 no longer sees that an optional is set before it is read.
  # The check of virtual tables needs a descriptor of its own, and tests run without any.
  add_compile_options(-fsanitize=address,undefined -fno-sanitize=vptr -fno-sanitize-recover=all -fno-omit-frame-pointer
    -Wno-maybe-uninitialized)
  add_link_options(-fsanitize=address,undefined)
elseif(QUILLBAY_SANITIZE STREQUAL "thread")
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer -Wno-maybe-uninitialized)
  add_link_options(-fsanitize=thread)
endif()
