#include "NoticePanel.h"

#include <QFrame>
#include <QLabel>
#include <QVBoxLayout>

#include "Accessibility.h"

namespace quillbay::desktop {

NoticePanel::NoticePanel() : frame_(*new QFrame), title_(*new QLabel), text_(*new QLabel) {
  frame_.setFrameStyle(QFrame::StyledPanel | QFrame::Plain);
  setAccessibleRole(frame_, QAccessible::AlertMessage);
  QFont bold = title_.font();
  bold.setBold(true);
  title_.setFont(bold);
  auto* const content = new QVBoxLayout(&frame_);
  for (QLabel* const label : {&title_, &text_}) {
    // Texts of servers and names of files are no markup.
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    content->addWidget(label);
  }
  text_.setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  auto* const layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(&frame_);
  hide();
}

void NoticePanel::show(const std::optional<Notice>& notice) {
  setVisible(notice.has_value());
  if (!notice) return;
  title_.setText(notice->title);
  text_.setText(notice->text);
  text_.setAccessibleName(notice->text);
  announce(frame_, notice->title + " " + notice->text);
  // A layout does not ask its window for the room that wrapped lines need.
  const QWidget& page = *parentWidget();
  const int height = page.layout()->totalHeightForWidth(page.width());
  if (height > window()->height()) window()->resize(window()->width(), height);
}

}  // namespace quillbay::desktop
