#include <QuillbayCloud/ui/SecureFirstRespondableTextField.h>

namespace quillbay::cloud {

SecureFirstRespondableTextField::SecureFirstRespondableTextField() {
  setEchoMode(QLineEdit::Password);
  setFirstResponderForbidden(true);
}

void SecureFirstRespondableTextField::setFirstResponderForbidden(bool isForbidden) {
  isFirstResponderForbidden_ = isForbidden;
  setFocusPolicy(isForbidden ? Qt::NoFocus : Qt::StrongFocus);
  if (isForbidden) clearFocus();
}

}  // namespace quillbay::cloud
