#include "FilesPanel.h"

#include <QAction>
#include <QHBoxLayout>
#include <QItemSelectionModel>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "FileSelection.h"
#include "Localized.h"
#include "PageLayout.h"
#include "RowsView.h"

namespace quillbay::desktop {
namespace {

constexpr int kMostFileRows = 4;

}  // namespace

FilesPanel::FilesPanel(FileSelection& files, Actions actions)
    : files_(files),
      actions_(std::move(actions)),
      extent_(*new QLabel),
      list_(*new RowsView(model_, FileListModel::name, kMostFileRows)),
      removeButton_(*new QPushButton(localized("files.remove"))),
      undoButton_(*new QPushButton(localized("files.undo"))) {
  extent_.setTextFormat(Qt::PlainText);
  list_.setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  list_.setAccessibleName(localized("files.list"));
  list_.setHeaderHidden(true);
  list_.setSelectionMode(QAbstractItemView::ExtendedSelection);
  list_.setColumnHidden(FileListModel::state, true);
  auto* const addButton = new QPushButton(localized("files.add"));
  auto* const sharesButton = new QPushButton(localized("shares.show"));
  auto* const line = new QHBoxLayout;
  line->addWidget(&extent_, 1);
  for (QPushButton* const button : {&undoButton_, &removeButton_, addButton, sharesButton}) {
    line->addWidget(button);
  }
  auto* const layout = new QVBoxLayout(this);
  layout->setContentsMargins(kPageMargin, kPageMargin, kPageMargin, 0);
  layout->addLayout(line);
  layout->addWidget(&list_);

  connect(addButton, &QPushButton::clicked, this, actions_.add);
  connect(sharesButton, &QPushButton::clicked, this, actions_.showShares);
  connect(&undoButton_, &QPushButton::clicked, this, actions_.undoRemoval);
  connect(&removeButton_, &QPushButton::clicked, this, [this] { removeSelected(); });
  auto* const removal = new QAction(localized("files.remove").remove('&'), &list_);
  removal->setShortcut(QKeySequence::Delete);
  removal->setShortcutContext(Qt::WidgetShortcut);
  connect(removal, &QAction::triggered, this, [this] { removeSelected(); });
  list_.addAction(removal);
  list_.setContextMenuPolicy(Qt::ActionsContextMenu);
  connect(list_.selectionModel(), &QItemSelectionModel::selectionChanged, this,
          [this] { updateButtons(); });
  filesChanged();
}

void FilesPanel::filesChanged() {
  std::vector<FileListModel::File> rows;
  rows.reserve(files_.count());
  for (std::size_t row = 0; row < files_.count(); ++row) {
    rows.push_back({files_.name(row), files_.byteCount(row)});
  }
  model_.setFiles(std::move(rows));
  extent_.setText(files_.extent());
  list_.updateGeometry();
  updateButtons();
}

void FilesPanel::updateButtons() {
  removeButton_.setEnabled(list_.selectionModel()->hasSelection());
  undoButton_.setVisible(files_.canUndoRemoval());
}

void FilesPanel::removeSelected() {
  std::vector<std::size_t> rows;
  for (const QModelIndex& index : list_.selectionModel()->selectedRows()) {
    rows.push_back(static_cast<std::size_t>(index.row()));
  }
  if (rows.empty()) return;
  const int next = static_cast<int>(std::ranges::min(rows));
  // A button that is disabled while it has the focus hands it on to the next control.
  list_.setFocus();
  files_.remove(std::move(rows));
  actions_.removed();
  list_.setCurrentIndex(model_.index(qMin(next, model_.rowCount() - 1), 0));
}

}  // namespace quillbay::desktop
