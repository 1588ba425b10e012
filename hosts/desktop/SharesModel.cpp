#include "SharesModel.h"

#include <QDateTime>
#include <QLocale>
#include <utility>

#include "Localized.h"
#include "ShownText.h"
#include "hosts/common/WholeSeconds.h"

namespace quillbay::desktop {
namespace {

using host::RememberedShare;
using State = RememberedShare::State;

/// In the user's time zone.
QString timeText(platform::Date date) {
  const auto time = QDateTime::fromSecsSinceEpoch(host::wholeSeconds(date));
  return QLocale().toString(time, QLocale::ShortFormat);
}

}  // namespace

QString shownTitle(const RememberedShare& share) {
  const std::string title = share.session.title().value_or("");
  return shownName(title.empty() ? share.session.url().absoluteString() : title);
}

void SharesModel::setShares(std::vector<RememberedShare> shares, platform::Date now) {
  beginResetModel();
  shares_ = std::move(shares);
  now_ = now;
  endResetModel();
}

int SharesModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(shares_.size());
}

int SharesModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : columnCount_;
}

QVariant SharesModel::data(const QModelIndex& index, int role) const {
  const RememberedShare& share = this->share(index.row());
  if (role == Qt::ToolTipRole && index.column() == title) {
    return tooltip(shownName(share.session.url().absoluteString()));
  }
  if (role == Qt::DisplayRole) return text(share, index.column());
  return {};
}

QVariant SharesModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  static constexpr const char* kKeys[] = {"shares.title", "shares.state", "shares.extent",
                                          "shares.created", "shares.expiration"};
  return localized(kKeys[section]);
}

QString SharesModel::text(const RememberedShare& share, int column) const {
  const auto& expirationDate = share.session.expirationDate();
  switch (column) {
    case title:
      return shownTitle(share);
    case state:
      return stateText(share);
    case extent:
      return extentText(share.fileCount, share.byteCount);
    case created:
      return timeText(share.created);
    default:
      return expirationDate ? timeText(*expirationDate) : localized("shares.never");
  }
}

QString SharesModel::stateText(const RememberedShare& share) const {
  if (share.isExpired(now_)) return localized("shares.expired");
  switch (share.state) {
    case State::uploading:
      return localized("shares.uploading");
    case State::unfinished:
      return localized("shares.unfinished").arg(share.arrivedFileCount).arg(share.fileCount);
    case State::complete:
    case State::deleted:
      break;
  }
  return localized("shares.complete");
}

}  // namespace quillbay::desktop
