#include "RowsView.h"

#include <QHeaderView>

namespace quillbay::desktop {
namespace {

constexpr int kNarrowestWidth = 240;
constexpr int kNarrowestStretch = 120;

}  // namespace

RowsView::RowsView(QAbstractItemModel& model, int stretchedColumn, int mostRows)
    : mostRows_(mostRows) {
  setModel(&model);
  setRootIsDecorated(false);
  setItemsExpandable(false);
  setAllColumnsShowFocus(true);
  setTextElideMode(Qt::ElideMiddle);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  // Tab leaves the list.
  setTabKeyNavigation(false);
  // The height of one row and the width of the rows in sight stand for all.
  setUniformRowHeights(true);
  header()->setResizeContentsPrecision(0);
  header()->setStretchLastSection(false);
  header()->setSectionResizeMode(QHeaderView::ResizeToContents);
  header()->setSectionResizeMode(stretchedColumn, QHeaderView::Stretch);
}

QSize RowsView::sizeHint() const { return sizeOf(qMin(model()->rowCount(), mostRows_)); }

QSize RowsView::minimumSizeHint() const {
  return sizeOf(qMin(model()->rowCount(), qMin(mostRows_, 2)));
}

QSize RowsView::sizeOf(int rows) const {
  const int rowHeight = qMax(sizeHintForRow(0), fontMetrics().height());
  const int headerHeight = isHeaderHidden() ? 0 : header()->sizeHint().height();
  return {narrowestWidth(), headerHeight + (qMax(rows, 1) * rowHeight) + (2 * frameWidth())};
}

int RowsView::narrowestWidth() const {
  int width = 2 * frameWidth();
  for (int column = 0; column < model()->columnCount(); ++column) {
    if (isColumnHidden(column)) continue;
    const bool isStretched = header()->sectionResizeMode(column) == QHeaderView::Stretch;
    const int headerWidth = isHeaderHidden() ? 0 : header()->sectionSizeHint(column);
    width += isStretched ? kNarrowestStretch : qMax(sizeHintForColumn(column), headerWidth);
  }
  return qMax(width, kNarrowestWidth);
}

}  // namespace quillbay::desktop
