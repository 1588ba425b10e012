#pragma once

#include <QLineEdit>

namespace quillbay::cloud {

/// A masked text field that can refuse the keyboard focus. Main thread.
class SecureFirstRespondableTextField : public QLineEdit {
 public:
  SecureFirstRespondableTextField();

  /// While true, neither Tab, nor a click, nor its label's mnemonic gives it the focus. Starts
  /// true.
  bool isFirstResponderForbidden() const { return isFirstResponderForbidden_; }
  void setFirstResponderForbidden(bool isForbidden);

  bool acceptsFirstResponder() const { return focusPolicy() != Qt::NoFocus; }

 private:
  bool isFirstResponderForbidden_ = true;
};

}  // namespace quillbay::cloud
