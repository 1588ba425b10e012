#include "SharesPage.h"

#include <QAction>
#include <QDesktopServices>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QLabel>
#include <QUrl>
#include <QVBoxLayout>
#include <algorithm>
#include <chrono>
#include <utility>

#include "CopyButton.h"
#include "Localized.h"
#include "PageLayout.h"
#include "RowsView.h"
#include "ShownText.h"

namespace quillbay::desktop {
namespace {

using host::RememberedShare;
using State = RememberedShare::State;

constexpr int kMostShareRows = 10;

platform::Date now() { return std::chrono::system_clock::now(); }

bool canBeContinued(const RememberedShare& share) {
  return share.state == State::unfinished && !share.isExpired(now());
}

}  // namespace

SharesPage::SharesPage(host::History& history, Actions actions)
    : history_(history),
      actions_(std::move(actions)),
      notice_(*new NoticePanel),
      headline_(*new QLabel),
      list_(*new RowsView(model_, SharesModel::title, kMostShareRows)),
      copyButton_(*new CopyButton),
      openButton_(*new QPushButton(localized("run.open"))),
      resumeButton_(*new QPushButton(localized("shares.continue"))),
      deleteButton_(*new QPushButton(localized("run.delete"))),
      backButton_(*new QPushButton(localized("shares.back"))) {
  setUpList();
  setUpButtons();
  layOut();
  setFocusProxy(&list_);
}

void SharesPage::setUpList() {
  QFont bold = headline_.font();
  bold.setBold(true);
  headline_.setFont(bold);
  headline_.setTextFormat(Qt::PlainText);
  list_.setAccessibleName(localized("shares.list"));
  connect(list_.selectionModel(), &QItemSelectionModel::currentChanged, this,
          [this] { updateButtons(); });
  connect(&list_, &QAbstractItemView::doubleClicked, this, [this] { copyLink(); });
  addKey("run.copy", QKeySequence::Copy, [this] { copyLink(); });
  addKey("run.delete", QKeySequence::Delete, [this] { deleteButton_.click(); });
  list_.setContextMenuPolicy(Qt::ActionsContextMenu);
}

/// The list would take the key for itself, as it does with the one for copying.
void SharesPage::addKey(const char* textKey, QKeySequence::StandardKey key,
                        const std::function<void()>& perform) {
  auto* const action = new QAction(localized(textKey).remove('&'), &list_);
  action->setShortcut(key);
  action->setShortcutContext(Qt::WidgetShortcut);
  connect(action, &QAction::triggered, this, perform);
  list_.addAction(action);
}

void SharesPage::setUpButtons() {
  connect(&copyButton_, &QPushButton::clicked, this, &SharesPage::copyLink);
  connect(&openButton_, &QPushButton::clicked, this,
          [this] { QDesktopServices::openUrl(QUrl(link())); });
  connect(&resumeButton_, &QPushButton::clicked, this, [this] {
    if (const auto* const share = current()) actions_.resume(RememberedShare(*share));
  });
  connect(&deleteButton_, &QPushButton::clicked, this, [this] {
    if (const auto* const share = current()) actions_.deleteShare(RememberedShare(*share));
  });
  connect(&backButton_, &QPushButton::clicked, this, [this] { actions_.back(); });
}

void SharesPage::layOut() {
  auto* const ofShare = new QHBoxLayout;
  for (QPushButton* const button :
       {static_cast<QPushButton*>(&copyButton_), &openButton_, &resumeButton_, &deleteButton_}) {
    ofShare->addWidget(button);
  }
  ofShare->addStretch();
  auto* const end = new QHBoxLayout;
  end->addStretch();
  end->addWidget(&backButton_);

  auto* const layout = new QVBoxLayout(this);
  layout->setContentsMargins(kPageMargin, kPageMargin, kPageMargin, kPageMargin);
  layout->setSpacing(kPageSpacing);
  layout->addWidget(&notice_);
  layout->addWidget(&headline_);
  layout->addWidget(&list_, 1);
  layout->addLayout(ofShare);
  layout->addLayout(end);
  for (QPushButton* const button : findChildren<QPushButton*>()) {
    // Return presses the button that has the focus.
    button->setAutoDefault(true);
  }
}

void SharesPage::reload() {
  const auto* const before = current();
  const std::int64_t identifier = before == nullptr ? 0 : before->identifier;
  auto shares = history_.shares();
  std::erase_if(shares, [](const auto& share) { return share.state == State::deleted; });
  headline_.setText(localized(shares.empty() ? "shares.none" : "shares.headline"));
  model_.setShares(std::move(shares), now());
  list_.updateGeometry();
  select(identifier);
}

void SharesPage::select(std::int64_t identifier) {
  int chosen = 0;
  for (int row = 0; row < model_.rowCount(); ++row) {
    if (model_.share(row).identifier == identifier) chosen = row;
  }
  list_.setCurrentIndex(model_.index(chosen, 0));
  updateButtons();
}

void SharesPage::setBusy(bool isBusy) {
  isBusy_ = isBusy;
  // A button that is disabled while it has the focus hands it on to the next control.
  if (isBusy) list_.setFocus();
  updateButtons();
}

void SharesPage::updateButtons() {
  const auto* const share = current();
  const bool hasLink = share != nullptr && !isBusy_;
  for (QPushButton* const button :
       {static_cast<QPushButton*>(&copyButton_), &openButton_, &deleteButton_}) {
    button->setEnabled(hasLink);
  }
  resumeButton_.setEnabled(hasLink && canBeContinued(*share));
  backButton_.setEnabled(!isBusy_);
}

const RememberedShare* SharesPage::current() const {
  const QModelIndex index = list_.currentIndex();
  return index.isValid() ? &model_.share(index.row()) : nullptr;
}

QString SharesPage::link() const { return textOf(current()->session.url()); }

void SharesPage::copyLink() {
  if (current() != nullptr && !isBusy_) copyButton_.copy(link());
}

void SharesPage::keyPressEvent(QKeyEvent* event) {
  const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (event->matches(QKeySequence::Cancel)) return backButton_.click();
  if (isReturn) return copyLink();
  QWidget::keyPressEvent(event);
}

}  // namespace quillbay::desktop
