# Most of the compile time goes into reading the standard library, and Qt. Two targets read them for
# all others, where CMAKE_DISABLE_PRECOMPILE_HEADERS is off.

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
target_precompile_headers(StandardHeaders PRIVATE ${standard_headers})
foreach(target QuillbayPlatform QuillbayCore QuillbayCloud QuillbayHost QuillbayCLI)
  target_precompile_headers(${target} REUSE_FROM StandardHeaders)
endforeach()

if(QUILLBAY_UI)
  add_library(QtHeaders OBJECT ${PROJECT_BINARY_DIR}/nothing.cpp)
  target_link_libraries(QtHeaders PRIVATE Qt6::Widgets)
  target_precompile_headers(QtHeaders PRIVATE ${qt_headers} ${standard_headers})
  foreach(target QuillbayPlatformUI QuillbayCoreUI QuillbayCloudUI QuillbayDesktop)
    target_precompile_headers(${target} REUSE_FROM QtHeaders)
  endforeach()
endif()
