#include "FileListView.h"

#include <QHeaderView>

#include "FileListModel.h"
#include "Localized.h"

namespace quillbay::desktop {
namespace {

constexpr int kNarrowestWidth = 240;

}  // namespace

FileListView::FileListView(FileListModel& model, int mostRows) : mostRows_(mostRows) {
  setModel(&model);
  setAccessibleName(localized("files.list"));
  setRootIsDecorated(false);
  setItemsExpandable(false);
  setAllColumnsShowFocus(true);
  setSelectionMode(ExtendedSelection);
  setTextElideMode(Qt::ElideMiddle);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  // Tab leaves the list.
  setTabKeyNavigation(false);
  // The height of one row and the width of the rows in sight stand for all.
  setUniformRowHeights(true);
  header()->setResizeContentsPrecision(0);
  header()->setStretchLastSection(false);
  header()->setSectionResizeMode(QHeaderView::ResizeToContents);
  header()->setSectionResizeMode(FileListModel::name, QHeaderView::Stretch);
  header()->hide();
}

QSize FileListView::sizeHint() const { return sizeOf(qMin(model()->rowCount(), mostRows_)); }

QSize FileListView::minimumSizeHint() const {
  return sizeOf(qMin(model()->rowCount(), qMin(mostRows_, 2)));
}

QSize FileListView::sizeOf(int rows) const {
  const int rowHeight = qMax(sizeHintForRow(0), fontMetrics().height());
  return {kNarrowestWidth, (qMax(rows, 1) * rowHeight) + (2 * frameWidth())};
}

}  // namespace quillbay::desktop
