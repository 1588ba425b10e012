#pragma once

#include <QuillbayCloud/Classes/SessionController.h>

#include <QString>
#include <QTimer>
#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <string>

#include "hosts/common/NetworkOptions.h"

namespace quillbay::host {
class History;
}

namespace quillbay::desktop {

/// Deletes one session on the service, and tells the history. Main thread only, with a running
/// event loop; it may be released at any time.
class LinkDeletion {
 public:
  struct Share {
    cloud::Session session;
    std::string instanceIdentifier;
    /// In the history; 0 if it is not remembered.
    std::int64_t historyIdentifier = 0;
  };

  struct Result {
    bool isDeleted = false;
    /// The service answered that it does not delete it; else it did not answer clearly.
    bool isRefused = false;
    /// Sentences for people; empty if it is deleted, or if nothing is known.
    QString reason = {};
  };

  /// `history` outlives the deletion. `completion` is called once, within five seconds of `start`,
  /// and may release the deletion.
  LinkDeletion(Share share, host::NetworkOptions network, host::History& history,
               std::function<void(const Result&)> completion);
  LinkDeletion(const LinkDeletion&) = delete;
  LinkDeletion& operator=(const LinkDeletion&) = delete;

  void start();
  const Share& share() const { return share_; }

 private:
  void answered(const std::expected<void, cloud::QuillbayCloudError>& result);
  void end(const Result& result);

  const Share share_;
  const host::NetworkOptions network_;
  host::History& history_;
  std::function<void(const Result&)> completion_;
  QTimer deadline_;
  /// Callbacks of the library may come when this object has gone.
  const std::shared_ptr<LinkDeletion*> self_ = std::make_shared<LinkDeletion*>(this);
};

}  // namespace quillbay::desktop
