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
#include <vector>

#include "hosts/common/RunJournal.h"
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
    done,
    failed,
    cancelled,
  };

  /// `byteCounts` in the order of the context's files.
  ShareRun(cloud::SessionContext context, cloud::SessionConfiguration configuration,
           const std::vector<std::uint64_t>& byteCounts);
  ShareRun(const ShareRun&) = delete;
  ShareRun& operator=(const ShareRun&) = delete;

  /// Called after each change of the phase; may release the run.
  void setOnChange(std::function<void()> onChange) { onChange_ = std::move(onChange); }

  void start();
  /// Ends in `cancelled` within ten seconds; at once while the files are fingerprinted. Does
  /// nothing when the run is over.
  void cancel();

  Phase phase() const;
  bool isOver() const;
  /// The public link; empty until it exists.
  QString link() const;
  /// The service has not confirmed that the session of a cancelled or failed run is deleted.
  bool isSessionLeft() const { return isSessionLeft_; }
  /// What to tell the user of a failed run, as plain text.
  QString failureText() const { return failureText_; }

  /// The uploads so far: 0 to 1, by bytes.
  double fraction() const { return estimate_.fraction(); }
  std::size_t filesDone() const;
  std::size_t fileCount() const { return controller_->context().items().size(); }
  std::optional<std::chrono::seconds> remaining() const { return estimate_.remaining(); }
  /// Brings the four figures above up to date. Call it a few times a second.
  void updateEstimate();

 private:
  void sessionCreated(const cloud::Session& session);
  void completed(const std::expected<cloud::Session, cloud::QuillbayCloudError>& result);
  void cleanUp(Phase outcome);
  void finish(Phase outcome);
  void setPhase(Phase phase);

  const std::shared_ptr<cloud::SessionController> controller_;
  const std::vector<std::uint64_t> byteCounts_;
  std::function<void()> onChange_;
  Phase phase_ = Phase::fingerprinting;
  /// What a run that is cleaning up will have been.
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
