# Looks for what the project needs, and stops with one message that says what to install.

# quillbay_find_package(DEBIAN_PACKAGE NAME [arguments of find_package])
macro(quillbay_find_package debian_package name)
  set(wanted ${name} ${ARGN})
  find_package(${wanted} QUIET)
  if(NOT ${name}_FOUND)
    list(JOIN wanted " " wanted)
    message(FATAL_ERROR "QuillbayCloud needs ${wanted}; on Debian, install ${debian_package}")
  endif()
endmacro()

# quillbay_find_module(DEBIAN_PACKAGE NAME): what only pkg-config knows, as PkgConfig::NAME.
function(quillbay_find_module debian_package name)
  pkg_check_modules(${name} QUIET IMPORTED_TARGET ${name})
  if(NOT ${name}_FOUND)
    message(FATAL_ERROR "QuillbayCloud needs ${name}; on Debian, install ${debian_package}")
  endif()
endfunction()
