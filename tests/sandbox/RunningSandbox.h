#pragma once

#include <TemporaryFolder.h>
#include <gtest/gtest.h>
#include <httplib.h>

#include <atomic>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "sandbox/SandboxServer.h"

namespace quillbay::sandbox {

struct TestFile {
  std::string name;
  std::string bytes;
  std::string contentType = "text/plain";
};

using test::TemporaryFolder;

/// A real server on a free port, a client that trusts it, and a clock to move.
class RunningSandbox : public testing::Test {
 protected:
  using json = nlohmann::json;

  RunningSandbox();

  void restart();
  void advanceClock(std::chrono::seconds by) { clockOffset_ += by.count(); }
  Instant now() const;

  /// The body of a create request as a client sends it.
  static json announcement(const std::vector<TestFile>& files, json config = json::object());
  /// Fails the test unless the service answers 201.
  json createSession(const std::vector<TestFile>& files, json config = json::object());
  httplib::Result requestUploadUrl(const json& session, std::size_t item);
  /// The start of an upload up to its body, for a RawClient.
  std::string uploadHead(const std::string& target, std::size_t byteCount,
                         const std::string& more = "") const;
  /// Path and query of a fresh presigned address.
  std::string uploadTarget(const json& session, std::size_t item);
  httplib::Result put(const std::string& target, const TestFile& file,
                      const std::string& disposition = "attachment");
  httplib::Result finalize(const json& session, std::size_t item, const std::string& entityTag);
  /// All steps for one item; fails the test unless each succeeds.
  void upload(const json& session, std::size_t item, const TestFile& file,
              const std::string& disposition = "attachment");
  /// A session with all its files uploaded.
  json share(const std::vector<TestFile>& files, json config = json::object());

  static std::string itemPath(const json& session, std::size_t item, const std::string& action);
  static httplib::Headers tokenOf(const json& session);
  static std::string pathOf(const json& session);
  /// The path of an absolute address of this server.
  static std::string target(const std::string& url);
  static std::string linkOf(const json& session) { return target(session["url"]); }
  /// "404", or "404 NoSuchKey" for the store's error documents.
  static std::string outcome(const httplib::Result& result);
  std::size_t filesOnDisk(const std::string& below) const;

  TemporaryFolder folder_;
  std::atomic<std::int64_t> clockOffset_ = 0;
  std::unique_ptr<SandboxServer> server_;
  std::unique_ptr<httplib::SSLClient> client_;
};

}  // namespace quillbay::sandbox
