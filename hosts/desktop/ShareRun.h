#pragma once

#include <QuillbayCloud/Classes/SessionController.h>

#include <QString>
#include <QTimer>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hosts/common/FileWatch.h"
#include "hosts/common/NetworkOptions.h"
#include "hosts/common/TransferEstimate.h"

namespace quillbay::desktop {

/// One share from the first fingerprint to its end, and what becomes of its session if it is
/// cancelled or fails: it is deleted. Main thread only, with a running event loop.
class ShareRun {
 public:
  enum class Phase {
    fingerprinting,
    creating,
    uploading,   ///< the link exists
    cleaningUp,  ///< cancelled or failed; the session is being deleted
    done,        ///< shared, whatever came of attempts to delete it since
    deleting,    ///< what is shared is being deleted
    failed,
    cancelled,
    deleted,
  };

  /// `paths` in the order of the context's files, of which there is one. `network`: how the service
  /// is reached, to tell why it is not.
  ShareRun(cloud::SessionContext context, cloud::SessionConfiguration configuration,
           std::vector<std::string> paths, host::NetworkOptions network);
  ShareRun(const ShareRun&) = delete;
  ShareRun& operator=(const ShareRun&) = delete;

  /// Called after each change of the phase; may release the run.
  void setOnChange(std::function<void()> onChange) { onChange_ = std::move(onChange); }

  void start();
  /// Ends in `cancelled` within five seconds; at once while the files are fingerprinted. Does
  /// nothing when the run is over.
  void cancel();
  /// Takes back what is shared: ends in `deleted`, or in `done` again with `isSessionLeft`, within
  /// five seconds. Only when done.
  void deleteShare();

  Phase phase() const;
  bool isOver() const;
  /// The public link; empty until it exists.
  QString link() const;
  /// Whether a run that is over or cleaning up has failed.
  bool hasFailed() const { return outcome_ == Phase::failed; }
  /// The service was asked to delete the session, and has not confirmed it.
  bool isSessionLeft() const { return isSessionLeft_; }
  /// What to tell the user of a failed run: what failed, and what to do about it.
  QString failureText() const { return failureText_; }

  /// The uploads so far: 0 to 1, by bytes.
  double fraction() const { return estimate_.fraction(); }
  /// Files that the service has confirmed.
  static std::size_t filesDone();
  std::size_t fileCount() const { return controller_->context().items().size(); }
  std::optional<std::chrono::seconds> remaining() const { return estimate_.remaining(); }
  /// Brings the four figures above up to date. Call it a few times a second.
  void updateEstimate();

 private:
  void sessionCreated(const cloud::Session& session);
  void completed(const std::expected<cloud::Session, cloud::QuillbayCloudError>& result);
  void cleanUp(Phase outcome);
  void deleteSession();
  void deletionEnded(bool isDeleted);
  void finish(Phase outcome);
  void setPhase(Phase phase);
  QString textOf(const cloud::QuillbayCloudError& error) const;
  std::vector<std::uint64_t> byteCounts() const;

  const std::shared_ptr<cloud::SessionController> controller_;
  const host::FileWatch watch_;
  const host::NetworkOptions network_;
  std::function<void()> onChange_;
  Phase phase_ = Phase::fingerprinting;
  /// What a run that is cleaning up or being deleted will have been.
  Phase outcome_ = Phase::done;
  bool isSessionLeft_ = false;
  QString failureText_;
  std::optional<cloud::Session> session_;
  host::TransferEstimate estimate_;
  QTimer deadline_;
  /// Callbacks of the library may come when this object has gone.
  const std::shared_ptr<ShareRun*> self_ = std::make_shared<ShareRun*>(this);
};

}  // namespace quillbay::desktop
