#include <QuillbayCloud/ui/ImageView.h>
#include <QuillbayCloud/ui/LocalizedText.h>
#include <QuillbayCloud/ui/OutlinedCheckBox.h>
#include <QuillbayCloud/ui/SecureFirstRespondableTextField.h>
#include <QuillbayCloud/ui/SessionConfigurationView.h>
#include <QuillbayCore/DateExpirationOption.h>
#include <QuillbayCore/Localized.h>
#include <QuillbayPlatform/StringTable.h>
#include <QuillbayPlatform/ui/Contrast.h>
#include <QuillbayPlatform/ui/Graphemes.h>

#include <QComboBox>
#include <QEvent>
#include <QGraphicsOpacityEffect>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QSignalBlocker>
#include <algorithm>
#include <array>
#include <ranges>

namespace quillbay::cloud {
namespace {

using core::DateExpirationOption;

constexpr int kControlWidth = 145;
constexpr int kPreviewSize = 80;
constexpr int kRowSpacing = 14;
constexpr int kColumnSpacing = 8;
constexpr int kPreviewSpacing = 24;
constexpr int kFormInset = 16;
constexpr qsizetype kMaximumFieldLength = 30;
constexpr qreal kUnavailableOpacity = 0.4;
constexpr std::array kRowsWithoutDirectLink = {0, 1, 4};

QString unitText(const char* key, const DateExpirationOption& option) {
  const int count = option.count();
  return QString::fromStdString(platform::formatted(core::Localized(key, count), count));
}

QString expirationText(const DateExpirationOption& option) {
  using Unit = DateExpirationOption::Unit;
  switch (option.unit()) {
    case Unit::minutes:
      return unitText("date.minutes", option);
    case Unit::hours:
      return unitText("date.hours", option);
    case Unit::days:
      return unitText("date.days", option);
    case Unit::months:
      return unitText("date.months", option);
    case Unit::never:
      break;
  }
  return localizedText("expiration.never");
}

QString linkTypeText(SessionLinkType::Case linkType) {
  switch (linkType) {
    case SessionLinkType::directDownload:
      return localizedText("link-type.direct-download");
    case SessionLinkType::directLink:
      return localizedText("link-type.direct");
    case SessionLinkType::page:
      break;
  }
  return localizedText("link-type.page");
}

/// What a screen reader says for a control beside a label: "Title" for "Title:".
QString spokenName(const char* labelKey) {
  QString name = localizedText(labelKey);
  if (name.endsWith(':')) name.chop(1);
  return name;
}

void setOpacity(QWidget& widget, qreal opacity) {
  if (widget.graphicsEffect() == nullptr) {
    widget.setGraphicsEffect(new QGraphicsOpacityEffect(&widget));
  }
  auto& effect = *static_cast<QGraphicsOpacityEffect*>(widget.graphicsEffect());
  effect.setOpacity(opacity);
  // An effect paints through a pixmap: only where it changes anything.
  effect.setEnabled(opacity < 1);
}

/// Replaces what differs between the field's text and `text`, as one edit.
void edit(QLineEdit& field, const QString& text) {
  const QString before = field.text();
  const auto sameLength = [](auto one, auto other) {
    return static_cast<int>(std::ranges::mismatch(one, other).in1 - one.begin());
  };
  const int start = sameLength(QStringView(before), QStringView(text));
  const int end = sameLength(QStringView(before).sliced(start) | std::views::reverse,
                             QStringView(text).sliced(start) | std::views::reverse);
  field.setSelection(start, static_cast<int>(before.size()) - start - end);
  field.insert(text.sliced(start, text.size() - start - end));
}

/// Cuts what goes beyond the limit. The edit that went too far is taken back and made again within
/// the limit: so undo and redo never pass through a text that is too long.
void limitLength(QLineEdit& field) {
  if (platform::graphemeCount(field.text()) <= kMaximumFieldLength) return;
  const QString kept = platform::firstGraphemes(field.text(), kMaximumFieldLength);
  const int cursor = std::min(field.cursorPosition(), static_cast<int>(kept.size()));
  const QSignalBlocker oneEdit(field);
  field.undo();
  edit(field, kept);
  field.setCursorPosition(cursor);
}

/// Starts from the colours that `widget` gets from around it, and keeps them while it is disabled:
/// what is unavailable is dimmed once, by its opacity, and not by the style as well.
QPalette undimmedPalette(QWidget& widget) {
  widget.setPalette({});
  QPalette palette = widget.palette();
  for (int role = 0; role < QPalette::NColorRoles; ++role) {
    const auto colorRole = static_cast<QPalette::ColorRole>(role);
    palette.setBrush(QPalette::Disabled, colorRole, palette.brush(QPalette::Active, colorRole));
  }
  return palette;
}

}  // namespace

SessionConfigurationView::SessionConfigurationView()
    : titleTextField_(*new QLineEdit),
      passwordTextField_(*new SecureFirstRespondableTextField),
      linkExpirationButton_(*new QComboBox),
      linkTypeButton_(*new QComboBox),
      generatesLongLinkButton_(*new OutlinedCheckBox),
      imageView_(*new ImageView),
      gridView_(*new QGridLayout) {
  setFrameStyle(QFrame::StyledPanel | QFrame::Plain);
  setUpControls();
  layOut();
  updateColors();
}

void SessionConfigurationView::setUpControls() {
  setUpTextField(titleTextField_, "title-label.title");
  setUpTextField(passwordTextField_, "password-label.title");
  const QString passwordRule = localizedText("alert.invalid-password.message");
  passwordTextField_.setToolTip(passwordRule);
  passwordTextField_.setAccessibleDescription(passwordRule);

  for (const DateExpirationOption& option : DateExpirationOption::defaultOptions()) {
    linkExpirationButton_.addItem(expirationText(option));
  }
  setUpMenu(linkExpirationButton_, "expiration-label.title");

  for (const SessionLinkType linkType : SessionLinkType::allCases) {
    linkTypeButton_.addItem(linkTypeText(linkType));
  }
  setUpMenu(linkTypeButton_, "link-type-label.title");
  connect(&linkTypeButton_, &QComboBox::activated, this,
          &SessionConfigurationView::updateControlStates);

  imageView_.setFixedSize(kPreviewSize, kPreviewSize);
}

void SessionConfigurationView::setUpTextField(QLineEdit& field, const char* labelKey) {
  field.setFrame(false);
  field.setPlaceholderText(localizedText("title-text-field.placeholder"));
  field.setFixedWidth(kControlWidth);
  field.setAccessibleName(spokenName(labelKey));
  field.installEventFilter(this);
  connect(&field, &QLineEdit::textEdited, &field, [&field] { limitLength(field); });
}

void SessionConfigurationView::setUpMenu(QComboBox& menu, const char* labelKey) {
  menu.setMinimumWidth(kControlWidth);
  menu.setAccessibleName(spokenName(labelKey));
  // Scrolling over it neither gives it the focus nor, without the focus, changes what it shows.
  menu.setFocusPolicy(Qt::StrongFocus);
  menu.installEventFilter(this);
}

void SessionConfigurationView::layOut() {
  gridView_.setVerticalSpacing(kRowSpacing);
  gridView_.setHorizontalSpacing(kColumnSpacing);
  struct Row {
    const char* labelKey;
    QWidget& control;
  };
  const std::array rows = {Row{"title-label.title", titleTextField_},
                           Row{"password-label.title", passwordTextField_},
                           Row{"expiration-label.title", linkExpirationButton_},
                           Row{"link-type-label.title", linkTypeButton_}};
  int index = 0;
  for (const Row& row : rows) {
    gridView_.addWidget(makeLabel(row.labelKey, row.control), index, 0,
                        Qt::AlignRight | Qt::AlignVCenter);
    gridView_.addWidget(&row.control, index, 1, Qt::AlignLeft | Qt::AlignVCenter);
    ++index;
  }
  generatesLongLinkButton_.setText(mnemonics_.assign(localizedText("long-links.title")));
  gridView_.addWidget(&generatesLongLinkButton_, index, 1, Qt::AlignLeft | Qt::AlignVCenter);
  gridView_.setColumnStretch(1, 1);

  auto* const stack = new QHBoxLayout(this);
  // The frame is a part of the form, and of its margin.
  const int margin = kFormInset - frameWidth();
  stack->setContentsMargins(margin, margin, margin, margin);
  stack->setSpacing(kPreviewSpacing);
  stack->addLayout(&gridView_);
  stack->setAlignment(&gridView_, Qt::AlignTop);
  stack->addWidget(&imageView_, 0, Qt::AlignTop);

  setTabOrder(&titleTextField_, &passwordTextField_);
  setTabOrder(&passwordTextField_, &linkExpirationButton_);
  setTabOrder(&linkExpirationButton_, &linkTypeButton_);
  setTabOrder(&linkTypeButton_, &generatesLongLinkButton_);
}

QLabel* SessionConfigurationView::makeLabel(const char* key, QWidget& buddy) {
  auto* const label = new QLabel;
  // A text without a letter left would be taken for markup, should it look like it.
  label->setTextFormat(Qt::PlainText);
  label->setText(mnemonics_.assign(localizedText(key)));
  label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  label->setBuddy(&buddy);
  return label;
}

QLabel& SessionConfigurationView::label(int row) const {
  return *static_cast<QLabel*>(gridView_.itemAtPosition(row, 0)->widget());
}

SessionLinkType SessionConfigurationView::linkType() const {
  return SessionLinkType::allCases.at(static_cast<std::size_t>(linkTypeButton_.currentIndex()));
}

std::optional<std::string> SessionConfigurationView::password() const {
  if (linkType() == SessionLinkType::directLink) return std::nullopt;
  return passwordTextField_.text().toStdString();
}

void SessionConfigurationView::didAppear() {
  QMetaObject::invokeMethod(
      this,
      [this] {
        if (linkType() != SessionLinkType::directLink && window()->isVisible()) {
          titleTextField_.setFocus(Qt::TabFocusReason);
        }
        updateControlStates();
      },
      Qt::QueuedConnection);
}

void SessionConfigurationView::updateControlStates() {
  const bool isDirect = linkType() == SessionLinkType::directLink;
  for (const int row : kRowsWithoutDirectLink) {
    for (const int column : {0, 1}) {
      const QLayoutItem* const cell = gridView_.itemAtPosition(row, column);
      if (cell == nullptr) continue;
      setOpacity(*cell->widget(), isDirect ? kUnavailableOpacity : 1);
      cell->widget()->setEnabled(!isDirect);
    }
  }
  passwordTextField_.setFirstResponderForbidden(isDirect);
  update();
}

void SessionConfigurationView::updateColors() {
  const QColor grey = legible(QPalette::PlaceholderText, platform::kTextContrast);
  for (int row = 0; row < gridView_.rowCount(); ++row) {
    const QLayoutItem* const cell = gridView_.itemAtPosition(row, 0);
    if (cell == nullptr) continue;
    QPalette palette = undimmedPalette(*cell->widget());
    palette.setColor(QPalette::WindowText, grey);
    cell->widget()->setPalette(palette);
  }
  for (QLineEdit* const field : {&titleTextField_, static_cast<QLineEdit*>(&passwordTextField_)}) {
    QPalette palette = undimmedPalette(*field);
    palette.setColor(QPalette::Base, Qt::transparent);
    palette.setColor(QPalette::PlaceholderText, grey);
    field->setPalette(palette);
  }
  generatesLongLinkButton_.setPalette(undimmedPalette(generatesLongLinkButton_));
}

QColor SessionConfigurationView::legible(QPalette::ColorRole role, double ratio) const {
  return platform::withContrast(palette().color(role), palette().color(QPalette::Window), ratio);
}

void SessionConfigurationView::changeEvent(QEvent* event) {
  QFrame::changeEvent(event);
  if (event->type() == QEvent::PaletteChange) updateColors();
}

bool SessionConfigurationView::eventFilter(QObject* watched, QEvent* event) {
  // The line below a field tells where the focus is.
  if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) update();
  if (event->type() == QEvent::Wheel && !static_cast<QWidget*>(watched)->hasFocus()) {
    // Not for the menu, perhaps for what the form is in.
    event->ignore();
    return true;
  }
  return QFrame::eventFilter(watched, event);
}

void SessionConfigurationView::paintEvent(QPaintEvent* event) {
  QFrame::paintEvent(event);
  paintLineBelow(titleTextField_);
  paintLineBelow(passwordTextField_);
}

void SessionConfigurationView::paintLineBelow(const QLineEdit& field) {
  const bool hasFocus = field.hasFocus();
  // The colour of a text that is not there yet: seen on light and on dark ground.
  const auto role = hasFocus ? QPalette::Highlight : QPalette::PlaceholderText;
  QPainter painter(this);
  if (!field.isEnabled()) painter.setOpacity(kUnavailableOpacity);
  const QRect area = field.geometry();
  painter.fillRect(area.left(), area.bottom() + 1, area.width(), hasFocus ? 2 : 1,
                   legible(role, platform::kOutlineContrast));
}

}  // namespace quillbay::cloud
