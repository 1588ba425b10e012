#include <QuillbayCore/FormSheetContentView.h>

namespace quillbay::core {

FormSheetContentView::FormSheetContentView() {
  setBackgroundRole(QPalette::Window);
  setAutoFillBackground(true);
}

}  // namespace quillbay::core
