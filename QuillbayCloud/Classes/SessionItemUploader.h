#pragma once

#include <QuillbayCloud/Classes/ActivityMonitor.h>
#include <QuillbayCloud/model/Item.h>
#include <QuillbayCloud/model/QuillbayCloudError.h>
#include <QuillbayCloud/model/Session.h>
#include <QuillbayCloud/service/Webservice.h>
#include <QuillbayPlatform/HTTPURLResponse.h>
#include <QuillbayPlatform/Progress.h>
#include <QuillbayPlatform/URL.h>
#include <QuillbayPlatform/URLSession.h>

#include <cstddef>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace quillbay::cloud {

/// Internal: moves one file to the object store in three steps: asks the service for an upload
/// address, sends the file there, finalizes the item with the entity tag that the store returned.
///
/// Used and released on the main queue. Its callbacks hold it weakly; once started it cannot be
/// stopped, but when it is released it reports nothing.
class SessionItemUploader : public std::enable_shared_from_this<SessionItemUploader> {
 public:
  using Result = std::expected<Session, QuillbayCloudError>;
  using Completion = std::move_only_function<void(Result)>;

  /// `filePath`: the local file. `isInline`: whether the store is to serve it for showing.
  static std::shared_ptr<SessionItemUploader> create(std::shared_ptr<const Webservice> webservice,
                                                     const Session& session, Item item,
                                                     platform::URL filePath, bool isInline);

  /// Has the steps of the upload told to `activity`, as those of the run's file at `position`.
  /// Before `upload`.
  void reportTo(std::shared_ptr<RunActivity> activity, std::size_t position);

  /// Starts and returns at once. `progress`, which may be null, gets the transfer's progress as a
  /// child. `completion` is called at most once, on the main queue, with the session as the
  /// finalize call returned it.
  void upload(std::shared_ptr<platform::Progress> progress, Completion completion);

  /// What the reply to the PUT means: the entity tag of a success, or the failure. `url` does not
  /// matter. Any thread.
  static std::expected<std::string, QuillbayCloudError> uploadResult(
      std::optional<std::string> data, const std::optional<platform::HTTPURLResponse>& response,
      const platform::ErrorPtr& error, const platform::URL& url);

 private:
  SessionItemUploader(std::shared_ptr<const Webservice> webservice, const Session& session,
                      Item item, platform::URL filePath, bool isInline);

  void enter(SessionActivity::Step step) const;
  void requestUploadUrl();
  void uploadItem(const platform::URL& url);
  // On the upload session's queue; they read constants only.
  void noteUnanswered(const platform::ErrorPtr& error) const;
  void uploadEnded(const std::expected<std::string, QuillbayCloudError>& etag);
  void finalizeUpload(const std::string& etag);
  void fail(const QuillbayCloudError& error);
  void succeed(const Session& session);
  void report(Result result);
  std::string token() const { return session_.token().value_or(""); }

  const std::shared_ptr<const Webservice> webservice_;
  const Session session_;
  const Item item_;
  const platform::URL filePath_;
  const bool isInline_;
  std::shared_ptr<platform::URLSessionTask> uploadTask_;
  Completion completion_;
  std::shared_ptr<platform::Progress> progress_;
  std::shared_ptr<RunActivity> activity_;
  std::size_t position_ = 0;
  platform::Observation sentBytesObservation_;
};

}  // namespace quillbay::cloud
