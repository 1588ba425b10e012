#pragma once

#include <QLabel>

class QTextDocument;

namespace quillbay::cloud {

/// A text with styles that cannot be edited or selected, as wide as its longest line if there is
/// room, else wrapped. Main thread.
class HeaderTextField : public QLabel {
 public:
  HeaderTextField();

  void setDocument(const QTextDocument& document);

  /// Of the text in one line a paragraph.
  int naturalWidth() const { return naturalWidth_; }

 private:
  int naturalWidth_ = 0;
};

}  // namespace quillbay::cloud
