#pragma once

#include <TemporaryFolder.h>
#include <Waiting.h>
#include <gtest/gtest.h>
#include <httplib.h>

#include <deque>
#include <future>
#include <nlohmann/json.hpp>
#include <regex>

#include "sandbox/SandboxServer.h"
#include "sandbox/support/Digest.h"
#include "sandbox/support/Hex.h"
#include "tests/sandbox/RawClient.h"

namespace quillbay::sandbox {

using nlohmann::json;
using test::TemporaryFolder;

struct TestFile {
  std::string name;
  std::string bytes;
  std::string contentType = "text/plain";
};

inline const TestFile letter{"letter.txt", "Dear all"};

/// A real server on a free port, a client that trusts it, and a clock to move.
class RunningSandbox : public testing::Test {
 protected:
  RunningSandbox() { restart(); }

  void restart(std::size_t connectionLimit = 100) {
    client_.reset();
    server_.reset();
    server_ = std::make_unique<SandboxServer>(SandboxOptions{.dataFolder = folder_.path(),
                                                             .connectionLimit = connectionLimit,
                                                             .clock = [this] { return now(); }});
    server_->start();
    client_ = std::make_unique<httplib::SSLClient>("localhost", server_->port());
    client_->set_ca_cert_path(server_->authorityFile());
    client_->set_keep_alive(true);
    client_->set_read_timeout(20);
  }

  void advanceClock(std::chrono::seconds by) { clockOffset_ += by.count(); }
  Instant now() const { return systemTime() + std::chrono::seconds(clockOffset_.load()); }

  /// Fails the test unless the service answers 201.
  json createSession(const std::vector<TestFile>& files, json config = json::object()) {
    json items = json::array();
    for (const TestFile& file : files) {
      items.push_back({{"file_name", file.name},
                       {"content_length", std::to_string(file.bytes.size())},
                       {"content_type", file.contentType},
                       {"f", hexEncode(sha256(file.bytes))}});
    }
    if (!config.contains("link_type")) config["link_type"] = "page";
    const json body{{"items", items}, {"config", config}};
    const auto reply = client_->Post("/cloud/test-instance/session", body.dump(), "");
    EXPECT_EQ(outcome(reply), "201");
    return json::parse(reply->body);
  }

  httplib::Result requestUploadUrl(const json& session, std::size_t item) {
    return client_->Put(itemPath(session, item, "upload_url"),
                        tokenOf(session, {{"X-QUILLBAY-CLOUD-SCP", "1"}}), "", "");
  }

  /// Path and query of a fresh presigned address.
  std::string uploadTarget(const json& session, std::size_t item) {
    const auto reply = requestUploadUrl(session, item);
    EXPECT_EQ(outcome(reply), "200");
    return target(json::parse(reply->body)["url"]);
  }

  /// The start of an upload of plain text up to its body, for a RawClient.
  std::string uploadHead(const std::string& target, std::size_t byteCount,
                         const std::string& more = "") const {
    return "PUT " + target + " HTTP/1.1\r\nHost: localhost:" + std::to_string(server_->port()) +
           "\r\nContent-Type: text/plain\r\nContent-Length: " + std::to_string(byteCount) + "\r\n" +
           more + "\r\n";
  }

  httplib::Result put(const std::string& target, const TestFile& file,
                      const std::string& disposition = "attachment") {
    return client_->Put(target, {{"Content-Disposition", disposition}}, file.bytes,
                        file.contentType);
  }

  httplib::Result finalize(const json& session, std::size_t item, const std::string& entityTag,
                           const httplib::Headers& more = {}) {
    return client_->Put(itemPath(session, item, "finalize"), tokenOf(session, more),
                        json{{"etag", entityTag}}.dump(), "");
  }

  /// All steps for one item; fails the test unless each succeeds.
  void upload(const json& session, std::size_t item, const TestFile& file,
              const std::string& disposition = "attachment") {
    const auto stored = put(uploadTarget(session, item), file, disposition);
    ASSERT_EQ(outcome(stored), "200");
    ASSERT_EQ(outcome(finalize(session, item, stored->get_header_value("ETag"))), "200");
  }

  /// A session with all its files uploaded.
  json share(const std::vector<TestFile>& files, json config = json::object()) {
    const char* disposition = config.value("link_type", "") == "direct" ? "inline" : "attachment";
    json session = createSession(files, std::move(config));
    for (std::size_t i = 0; i < files.size(); ++i) upload(session, i, files[i], disposition);
    return session;
  }

  /// The link's page once `text` is on it, for what a thread of the server has yet to do.
  std::string pageWith(const std::string& text, const std::string& target) {
    std::string page;
    EXPECT_TRUE(test::waitUntil([&] {
      page = client_->Get(target)->body;
      return page.contains(text);
    })) << text
        << "\n"
        << page;
    return page;
  }

  static std::string pathOf(const json& session) {
    return "/cloud/test-instance/session/" + session["id"].get<std::string>();
  }
  static std::string itemPath(const json& session, std::size_t item, const std::string& action) {
    const std::string identifier = session["items"][item]["id"];
    return pathOf(session) + "/items/" + identifier + "/" + action;
  }
  static httplib::Headers tokenOf(const json& session, httplib::Headers more = {}) {
    more.emplace("X-QUILLBAY-SESSION-TOKEN", session["token"].get<std::string>());
    return more;
  }
  /// The path of an absolute address of this server.
  static std::string target(const std::string& url) {
    return url.substr(url.find('/', std::string_view("https://").size()));
  }
  static std::string linkOf(const json& session) { return target(session["url"]); }
  static std::string filePath(const json& session, std::size_t item) {
    return linkOf(session) + "/files/" + session["items"][item]["id"].get<std::string>();
  }

  /// "404", or "404 NoSuchKey" for the store's error documents.
  static std::string outcome(const httplib::Result& result) {
    if (!result) return httplib::to_string(result.error());
    std::smatch code;
    const bool hasCode = std::regex_search(result->body, code, std::regex("<Code>(\\w+)"));
    return std::to_string(result->status) + (hasCode ? " " + code.str(1) : "");
  }

  std::ptrdiff_t filesOnDisk(const std::string& below) const {
    return std::ranges::count_if(std::filesystem::recursive_directory_iterator(folder_ / below),
                                 [](const auto& entry) { return entry.is_regular_file(); });
  }

  TemporaryFolder folder_;
  std::atomic<std::int64_t> clockOffset_ = 0;
  std::unique_ptr<SandboxServer> server_;
  std::unique_ptr<httplib::SSLClient> client_;
};

}  // namespace quillbay::sandbox
