#pragma once

#include <QuillbayCloud/model/SessionLinkType.h>
#include <QuillbayPlatform/ui/Mnemonics.h>

#include <QFrame>
#include <optional>
#include <string>

class QCheckBox;
class QComboBox;
class QGridLayout;
class QLabel;
class QLineEdit;

namespace quillbay::cloud {

class ImageView;
class SecureFirstRespondableTextField;

/// The form of the share sheet: title, password, expiration, kind of link, long link, and a preview
/// of the content. It keeps no copy of a configuration: its controls are the state. Lengths are in
/// device-independent pixels. Main thread only.
class SessionConfigurationView : public QFrame {
 public:
  SessionConfigurationView();

  QLineEdit& titleTextField() const { return titleTextField_; }
  SecureFirstRespondableTextField& passwordTextField() const { return passwordTextField_; }
  /// The item at index i is option i of `core::DateExpirationOption::defaultOptions`.
  QComboBox& linkExpirationButton() const { return linkExpirationButton_; }
  /// The item at index i is case i of `SessionLinkType::allCases`.
  QComboBox& linkTypeButton() const { return linkTypeButton_; }
  QCheckBox& generatesLongLinkButton() const { return generatesLongLinkButton_; }
  ImageView& imageView() const { return imageView_; }
  /// Five rows of label and control.
  QGridLayout& gridView() const { return gridView_; }
  QLabel& label(int row) const;

  SessionLinkType linkType() const;
  /// Absent for a direct link, which has none; else the field's text, which may be empty.
  std::optional<std::string> password() const;

  /// The letters that the form's controls have taken.
  platform::Mnemonics& mnemonics() { return mnemonics_; }

  /// Call it when the sheet has appeared. In the next turn of the event loop it gives the focus to
  /// the title, unless a direct link has none, and lets each control be used or not.
  void didAppear();

  /// Dims and disables what a direct link does not have: title, password and long link.
  void updateControlStates();

 protected:
  void changeEvent(QEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  QLabel* makeLabel(const char* key, QWidget& buddy);
  void setUpTextField(QLineEdit& field, const char* labelKey);
  void setUpMenu(QComboBox& menu, const char* labelKey);
  void setUpControls();
  void layOut();
  void updateColors();
  /// The colour of `role`, with at least this contrast (see `platform::withContrast`).
  QColor legible(QPalette::ColorRole role, double ratio) const;
  void paintLineBelow(const QLineEdit& field);

  platform::Mnemonics mnemonics_;
  // Children of this widget, made in the constructor.
  QLineEdit& titleTextField_;
  SecureFirstRespondableTextField& passwordTextField_;
  QComboBox& linkExpirationButton_;
  QComboBox& linkTypeButton_;
  QCheckBox& generatesLongLinkButton_;
  ImageView& imageView_;
  QGridLayout& gridView_;
};

}  // namespace quillbay::cloud
