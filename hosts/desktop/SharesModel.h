#pragma once

#include <QAbstractTableModel>
#include <vector>

#include "hosts/common/History.h"

namespace quillbay::desktop {

/// The shares of the history as rows. Main thread only.
class SharesModel : public QAbstractTableModel {
 public:
  enum Column { title, state, extent, created, expiration, columnCount_ };

  /// `now`: to tell which have expired.
  void setShares(std::vector<host::RememberedShare> shares, platform::Date now);
  const host::RememberedShare& share(int row) const {
    return shares_[static_cast<std::size_t>(row)];
  }

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  QString text(const host::RememberedShare& share, int column) const;
  QString stateText(const host::RememberedShare& share) const;

  std::vector<host::RememberedShare> shares_;
  platform::Date now_;
};

/// Its title, or its link without one, on one line.
QString shownTitle(const host::RememberedShare& share);

}  // namespace quillbay::desktop
