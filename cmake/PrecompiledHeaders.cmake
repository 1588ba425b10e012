# Most of the compile time goes into reading the standard library, and Qt. Two targets read them for
# all others.

if(CMAKE_DISABLE_PRECOMPILE_HEADERS OR NOT PROJECT_IS_TOP_LEVEL)
  return()
endif()

file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/nothing.cpp CONTENT "")

set(standard_headers
  <algorithm> <atomic> <chrono> <cstddef> <cstdint> <expected> <functional> <memory> <mutex>
  <optional> <span> <string> <string_view> <thread> <utility> <vector>)
set(qt_headers
  <QApplication> <QBoxLayout> <QComboBox> <QLabel> <QLineEdit> <QMessageBox> <QPainter>
  <QPushButton>)

# The compiler takes such a file only where every macro is defined that was defined for it: what
# makes it must be no library of its own.
add_library(StandardHeaders OBJECT ${PROJECT_BINARY_DIR}/nothing.cpp)
target_link_libraries(StandardHeaders PRIVATE QuillbayBuildSettings)
target_precompile_headers(StandardHeaders PRIVATE ${standard_headers})
set(targets QuillbayPlatformRoom QuillbayCoreRoom QuillbayCloudRoom)
if(QUILLBAY_HOSTS)
  list(APPEND targets QuillbayHost QuillbayCLI)
endif()
foreach(target IN LISTS targets)
  target_precompile_headers(${target} REUSE_FROM StandardHeaders)
endforeach()

if(QUILLBAY_UI)
  add_library(QtHeaders OBJECT ${PROJECT_BINARY_DIR}/nothing.cpp)
  target_link_libraries(QtHeaders PRIVATE QuillbayBuildSettings Qt6::Widgets)
  target_precompile_headers(QtHeaders PRIVATE ${qt_headers} ${standard_headers})
  set(targets QuillbayPlatformUIRoom QuillbayCoreUIRoom QuillbayCloudUIRoom)
  if(QUILLBAY_HOSTS)
    list(APPEND targets QuillbayDesktop)
  endif()
  foreach(target IN LISTS targets)
    target_precompile_headers(${target} REUSE_FROM QtHeaders)
  endforeach()
endif()
