# quillbay_add_string_table(TARGET TABLE FOLDER)
#
# Compiles FOLDER/<language>/TABLE.json, one JSON object of key to text a language, into TARGET (see
# docs/languages.md).
# Its sources find them with `#include "TABLEStrings.h"` as `quillbay::strings::TABLE()`, a map of
# language tag to JSON text. A file that is no JSON object stops the configuration.
function(quillbay_add_string_table target table folder)
  file(GLOB files CONFIGURE_DEPENDS ${folder}/*/${table}.json)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${files})
  set(entries "")
  foreach(file IN LISTS files)
    cmake_path(GET file PARENT_PATH language)
    cmake_path(GET language FILENAME language)
    file(READ ${file} json)
    string(JSON type ERROR_VARIABLE error TYPE "${json}")
    if(NOT type STREQUAL "OBJECT")
      message(FATAL_ERROR "${file} is no JSON object: ${error}")
    endif()
    string(APPEND entries "      {\"${language}\", R\"json(${json})json\"},\n")
  endforeach()

  set(header "#pragma once

#include <map>
#include <string>
#include <string_view>

namespace quillbay::strings {

inline std::map<std::string, std::string_view> ${table}() {
  return {
${entries}  };
}

}  // namespace quillbay::strings
")
  file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/strings/${table}Strings.h
    CONTENT "@header@" @ONLY)
  target_include_directories(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/strings)
endfunction()
