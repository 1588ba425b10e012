#include <QuillbayCloud/ui/HeaderTextField.h>

#include <QTextDocument>
#include <cmath>

namespace quillbay::cloud {

HeaderTextField::HeaderTextField() {
  setWordWrap(true);
  setTextFormat(Qt::RichText);
  setTextInteractionFlags(Qt::NoTextInteraction);
}

void HeaderTextField::setDocument(const QTextDocument& document) {
  setText(document.toHtml());
  setAccessibleName(document.toPlainText());
  // One more: half a pixel too few breaks the line.
  naturalWidth_ = static_cast<int>(std::ceil(document.idealWidth())) + 1;
}

}  // namespace quillbay::cloud
